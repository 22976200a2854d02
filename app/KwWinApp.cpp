#include "app/KwWinApp.h"

#include <chrono>
#include <filesystem>
#include <new>

#include "app/KwCommandLineInfo.h"
#include "app/KwDocManager.h"
#include "app/QueryBox.h"
#include "app/StringTable.h"
#include "base/Assert.h"
#include "base/FileOps.h"
#include "base/KwFile.h"
#include "base/KwFolders.h"
#include "base/KwTime.h"
#include "base/Text.h"
#include "data/KwPersistence.h"
#include "editor/KwFindData.h"
#include "platform/Platform.h"

namespace kw {
namespace {

KwWinApp* g_app = nullptr;  // the current application object; set and cleared only by KwWinApp itself

double NowMilliseconds() {
  using namespace std::chrono;
  return duration<double, std::milli>(steady_clock::now().time_since_epoch()).count();
}

// The debugger's output takes at most this many characters of a trace text.
constexpr size_t kDebugTraceChars = 500;

constexpr char16_t kSender[] = u"WinApp";
constexpr uint32_t kPictureWarning = 1085;
constexpr char16_t kAppSection[] = u"WinApp";     // the application's own settings in the user file
constexpr char16_t kFolderSection[] = u"Folders";  // the folder set's root paths in the user file
constexpr int kQXAdminSlots = 32;
constexpr uint32_t kIdsUnregisterDone = 61700;
constexpr uint32_t kIdsUnregisterFailed = 61701;

}  // namespace

KwWinApp* GetKwWinApp() { return g_app; }
bool IsKwWinApp() { return g_app != nullptr; }

KwWinApp::KwWinApp() : traceStart_(NowMilliseconds()) {
  KW_ASSERT(g_app == nullptr);
  g_app = this;
}

// The order matters: the files to remove may include settings files that the saves below write anew,
// the persistence table reports elements still bound when it goes, and the trace runs to the end.
KwWinApp::~KwWinApp() {
  Trace(u"WinApp.Destructor");
  if (filesToRemove_) {
    for (const std::u16string& name : *filesToRemove_)
      if (IsExisting(name)) DeleteTheFile(name);
    filesToRemove_.reset();
  }
  SaveEditParams();
  if (folders_) SaveFolders();
  cmdInfo_.reset();
  docManager_.reset();
  findData_.reset();
  persist_.reset();
  folders_ = nullptr;  // the folder service's set outlives the application object
  // No system image lists are attached in this port; the line keeps the trace comparable.
  Trace(u"WinApp.Destructor: Now detaching system image list");
  if (traceOn_ && traceFile_) traceFile_->Close();
  traceOn_ = false;
  traceFile_.reset();
  if (g_app == this) g_app = nullptr;
}

std::u16string KwWinApp::GetAppName(int withSuffix) const {
  std::u16string name = LoadString(kIdsAppTitle);
  KW_ASSERT_AT("WINAPP", 362, !name.empty());
  if (withSuffix) name += u"_W";
  return name;
}

std::u16string KwWinApp::GetAppVersion() const {
  KW_ASSERT_AT("WINAPP", 372, !"GetAppVersion must be overridden by the application");
  return std::u16string();
}

// --- Flight recorder ---

std::u16string KwWinApp::GetTraceFileName() const {
  return traceFile_ ? traceFile_->GetName() : std::u16string();
}

void KwWinApp::StartInitalTrace() {
  if (traceFile_) return;
  traceFile_ = std::make_unique<KwFile>();
  traceFile_->Open(u"AUTO.REC", KwFile::kWrite, 13, 26);
  traceFile_->SetEncoding(1);
  traceOn_ = traceFile_->IsOpen();
}

void KwWinApp::SetTraceMode() {
  if (traceOn_) {
    if (traceFile_) traceFile_->Close();
    traceOn_ = false;
    return;
  }
  if (traceLines_ == 0 || !traceFile_) {
    const std::u16string name = ::kw::GetFolders().GetUserFolder() + GetAppName(0) + u".REC";
    if (QueryBox(LoadString(1025), 0, 1050, 0, 1023u, name) != 1) return;
    if (SizeOf(name) > 0.5) DeleteTheFile(name);
    traceFile_ = std::make_unique<KwFile>();
    traceFile_->Open(name, KwFile::kWrite, 13, 26);
  } else {
    // Lines were written before in this process: go on in the same file.
    const std::u16string name = traceFile_->GetName();
    traceFile_->Close();
    traceFile_->Open(name, KwFile::kAppend, 13, 26);
  }
  traceFile_->SetEncoding(1);
  traceOn_ = traceFile_->IsOpen();
  if (traceOn_) Trace(u"WinApp.SetTraceMode: %Id trace lines written before; tracing started", traceLines_);
}

void KwWinApp::TraceArgs(std::u16string_view format, std::span<const FormatArg> args) {
  std::u16string text;
  if (!TryFormatArgs(text, format, args)) text.assign(format);
  if (traceOn_) {
    KW_ASSERT_AT("WINAPP", 2010, traceFile_ != nullptr);
    if (traceFile_) {
      const double days = (NowMilliseconds() - traceStart_) / 1000 / 60 / 60 / 24;
      std::u16string line = KwTime(days).Format(u"%2H:%2M:%S");
      line += u"  ";
      line += text;
      traceFile_->WriteLine(line);
      ++traceLines_;
    }
  }
  GetPlatform().DebugOutput(text.substr(0, kDebugTraceChars) + u"\n");
}

// --- Edit parameters ---

const KwEditParams& KwWinApp::GetEditParams() {
  if (!editParamsLoaded_) LoadEditParams();
  return editParams_;
}

void KwWinApp::SetEditParams(const KwEditParams& params) {
  if (!editParamsLoaded_) LoadEditParams();
  editParams_ = params;
  editParamsChanged_ = true;
}

void KwWinApp::LoadEditParams() {
  KwPersistence* persist = GetPersist();
  int backups = editParams_.makeBackups, eolChar = editParams_.eolDisplayChar, option = editParams_.eolDisplayOption;
  persist->LoadKey(kPersistUser, kAppSection, u"MakeBackups", &backups);
  persist->LoadKey(kPersistUser, kAppSection, u"EolDisplayChar", &eolChar);
  persist->LoadKey(kPersistUser, kAppSection, u"EolDisplayOption", &option);
  editParams_.makeBackups = backups;
  if (eolChar > 0 && eolChar <= 0xFFFF) editParams_.eolDisplayChar = static_cast<char16_t>(eolChar);
  editParams_.eolDisplayOption = option;
  editParamsLoaded_ = true;
  editParamsChanged_ = false;
}

// Only changed values are written, so that a program that merely reads the parameters leaves the
// user's settings file as it was.
void KwWinApp::SaveEditParams() {
  if (!editParamsLoaded_ || !editParamsChanged_) return;
  KwPersistence* persist = GetPersist();
  const int eolChar = editParams_.eolDisplayChar;
  persist->SaveKey(kPersistUser, kAppSection, u"MakeBackups", &editParams_.makeBackups);
  persist->SaveKey(kPersistUser, kAppSection, u"EolDisplayChar", &eolChar);
  persist->SaveKey(kPersistUser, kAppSection, u"EolDisplayOption", &editParams_.eolDisplayOption);
  editParamsChanged_ = false;
}

// --- Shared objects ---

KwFolders* KwWinApp::GetFolders() {
  if (!folders_) folders_ = &::kw::GetFolders();
  return folders_;
}

int KwWinApp::LoadFolders() {
  KwFolders* folders = GetFolders();
  KwPersistence* persist = GetPersist();
  int found = 0;
  std::u16string folder;
  if (persist->LoadKey(kPersistUser, kFolderSection, u"Data", &folder) && !folder.empty())
    folders->SetDataFolder(folder), ++found;
  folder.clear();
  if (persist->LoadKey(kPersistUser, kFolderSection, u"Regional", &folder) && !folder.empty())
    folders->SetRegionalFolder(folder), ++found;
  folder.clear();
  if (persist->LoadKey(kPersistUser, kFolderSection, u"Project", &folder) && !folder.empty())
    folders->SetProjectFolder(folder), ++found;
  persist->InitChain();  // the project file moves with its folder
  return found;
}

void KwWinApp::SaveFolders() {
  KwPersistence* persist = GetPersist();
  persist->SaveKey(kPersistUser, kFolderSection, u"Data", &folders_->GetDataFolder());
  persist->SaveKey(kPersistUser, kFolderSection, u"Regional", &folders_->GetRegionalFolder());
  persist->SaveKey(kPersistUser, kFolderSection, u"Project", &folders_->GetProjectFolder());
}

KwPersistence* KwWinApp::GetPersist() {
  if (!persist_) persist_ = std::make_unique<KwPersistence>();
  return persist_.get();
}

KwFindData* KwWinApp::GetFindData() {
  if (!findData_) findData_ = std::make_unique<KwFindData>();
  return findData_.get();
}

KwDocManager* KwWinApp::GetDocManager() {
  if (!docManager_) docManager_ = std::make_unique<KwDocManager>();
  return docManager_.get();
}

int KwWinApp::AddFileToRemove(const std::u16string& name) {
  try {
    if (!filesToRemove_) filesToRemove_ = std::make_unique<std::vector<std::u16string>>();
    for (const std::u16string& listed : *filesToRemove_)
      if (listed == name) return 1;
    filesToRemove_->push_back(name);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

// --- Help ---

std::u16string KwWinApp::PackHelpKeyword(uint32_t topic) {
  std::string bytes = std::to_string(topic);
  const bool odd = bytes.size() % 2 != 0;
  bytes += '\0';
  if (odd) bytes += '\0';
  if (bytes.size() % 2 != 0) bytes += '\0';  // the buffer's last unit is whole
  std::u16string packed;
  for (size_t i = 0; i < bytes.size(); i += 2)
    packed += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                    static_cast<unsigned char>(bytes[i + 1]) << 8);
  return packed;
}

void KwWinApp::ShowHelp(WindowId window, uint32_t topic) {
  (void)window;  // the help viewer is a window of its own
  const std::u16string exeFolder = ::kw::GetFolders().GetExecutableFolder();
  std::u16string helpFolder = exeFolder;
  if (IsNetworkDrive(exeFolder)) {
    // A help file on a network drive does not open: work from local copies.
    helpFolder = FolderByEnvironment(u"$TEMP$");
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(exeFolder), ec)) {
      const std::u16string name = entry.path().filename().u16string();
      if (name.size() < 4 || CompareFileNames(name.substr(name.size() - 4), u".CHM") != 0) continue;
      const std::u16string from = entry.path().u16string(), to = helpFolder + name;
      if (!IsExisting(to) || GetLastWriteTime(to) < GetLastWriteTime(from)) CopyTheFile(from, to);
    }
  }
  const std::u16string helpFile = helpFolder + u"QUORIX.CHM";
  if (!IsExisting(helpFile)) {
    QueryBox(kSender, 0, kPictureWarning, 0, 1021u, helpFile);
    return;
  }
  Platform& platform = GetPlatform();
  if (platform.IsCtrlKeyDown()) topic = 0;
  if (topic != 0 && platform.ShowHelp(helpFile, PackHelpKeyword(topic))) return;
  if (!platform.ShowHelp(helpFile, std::u16string())) QueryBox(kSender, 0, kPictureWarning, 0, 1020u);
}

// --- The auxiliary program ---

int KwWinApp::GetQXAdminID() const {
  for (int i = 0; i < kQXAdminSlots; ++i)
    if ((qxAdminMask_ & (1u << i)) == 0) return i + 1;
  return kQXAdminSlots + 1;
}

void KwWinApp::UpdateQXAdminStatus(int id) {
  if (id < 1 || id > kQXAdminSlots) return;
  qxAdminMask_ ^= 1u << (id - 1);
}

int KwWinApp::RunQXAdmin(int id, int report) {
  const std::u16string program = ::kw::GetFolders().GetExecutableFolder() + u"QXADMIN.EXE";
  if (GetPlatform().ShellOpen(program, Format(u"%d", id)) > 32) {
    UpdateQXAdminStatus(id);
    return 1;
  }
  if (report) QueryBox(kSender, 0, kPictureWarning, 0, 1028u);
  return 0;
}

int KwWinApp::SendToQXAdmin(int id, const std::u16string& text) {
  Platform& platform = GetPlatform();
  const std::u16string title = Format(u"QXADMIN%d", id);
  // The instance may still be starting: look again at once until it is there or the time is up.
  const auto start = std::chrono::steady_clock::now();
  bool found = false;
  for (;;) {
    if (platform.FindPeer(title)) {
      found = true;
      break;
    }
    if (std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() > qxAdminSearchSeconds_) break;
  }
  if (found && platform.SendToPeer(title, 0, text) == 1) return 1;
  QueryBox(kSender, 0, kPictureWarning, 0, 1029u);
  UpdateQXAdminStatus(id);
  return 0;
}

int KwWinApp::RegisterApps(const std::u16string& folder, int report) {
  std::u16string base = folder;
  if (!base.empty() && (base.back() == u'\\' || base.back() == u'/')) base.pop_back();
  Platform& platform = GetPlatform();
  const bool quorix = platform.ShellOpen(base + u"/QUORIX_W.EXE", u"/RegServer") > 32;
  const bool toprax = platform.ShellOpen(base + u"/TOPRAX_W.EXE", u"/RegServer") > 32;
  if (quorix && toprax) return 1;
  if (report) QueryBox(kSender, 0, kPictureWarning, 0, 1027u);
  return 0;
}

// --- Command line ---

int KwWinApp::ProcessShellCommand(KwCommandLineInfo& info) {
  if (info.m_nShellCommand != KwCommandLineInfo::AppUnregister) return OnShellCommand(info);
  GetDocManager()->UnregisterShellFileTypes();
  const int ok = Unregister();
  if (!info.m_bRunEmbedded && !info.m_bRunAutomated)
    QueryBox(kSender, 0, ok ? 1050u : kPictureWarning, 0, ok ? kIdsUnregisterDone : kIdsUnregisterFailed);
  if (!cmdInfo_) {
    cmdInfo_ = std::make_unique<KwCommandLineInfo>();
    cmdInfo_->m_nShellCommand = KwCommandLineInfo::AppUnregister;
  }
  return 0;
}

int KwWinApp::OnShellCommand(KwCommandLineInfo& info) {
  if (info.m_nShellCommand == KwCommandLineInfo::AppRegister) {
    GetDocManager()->RegisterShellFileTypes(1);
    return 0;
  }
  return 1;
}

// --- Date and time formats ---

void KwWinApp::LoadDateTimeFormat() {
  dateFormat_ = u"%d.%m.%Y";
  timeFormat_ = u"%2H:%2M:%S";
  KwPersistence* persist = GetPersist();
  std::u16string value;
  if (persist->LoadKey(kPersistUser, kAppSection, u"DateFormat", &value) && !value.empty()) dateFormat_ = value;
  value.clear();
  if (persist->LoadKey(kPersistUser, kAppSection, u"TimeFormat", &value) && !value.empty()) timeFormat_ = value;
  dateTimeLoaded_ = true;
}

const std::u16string& KwWinApp::GetDateFormatW() {
  if (!dateTimeLoaded_) LoadDateTimeFormat();
  return dateFormat_;
}

const std::u16string& KwWinApp::GetTimeFormatW() {
  if (!dateTimeLoaded_) LoadDateTimeFormat();
  return timeFormat_;
}

namespace {
// Where the conversion `letters` (any of them) first appears in `format`; npos when it does not.
size_t FieldAt(const std::u16string& format, std::u16string_view letters) {
  for (size_t i = 0; i + 1 < format.size(); ++i) {
    if (format[i] != u'%') continue;
    size_t j = i + 1;
    if (format[j] == u'%') {
      i = j;
      continue;
    }
    if (format[j] >= u'0' && format[j] <= u'9' && j + 1 < format.size()) ++j;
    if (letters.find(format[j]) != std::u16string_view::npos) return i;
  }
  return std::u16string::npos;
}
}  // namespace

int KwWinApp::GetDateOrder() {
  const std::u16string& f = GetDateFormatW();
  const size_t day = FieldAt(f, u"d"), month = FieldAt(f, u"m"), year = FieldAt(f, u"Yy");
  if (year != std::u16string::npos && year < day && year < month) return 2;
  return month < day ? 0 : 1;
}

int KwWinApp::GetTimeOrder() { return FieldAt(GetTimeFormatW(), u"H") != std::u16string::npos ? 1 : 0; }

}  // namespace kw
