#include "app/KwWinApp.h"

#include <chrono>

#include "app/QueryBox.h"
#include "app/StringTable.h"
#include "base/Assert.h"
#include "base/FileOps.h"
#include "base/KwFile.h"
#include "base/KwFolders.h"
#include "base/KwTime.h"
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

}  // namespace

KwWinApp* GetKwWinApp() { return g_app; }
bool IsKwWinApp() { return g_app != nullptr; }

KwWinApp::KwWinApp() : traceStart_(NowMilliseconds()) {
  KW_ASSERT(g_app == nullptr);
  g_app = this;
}

KwWinApp::~KwWinApp() {
  Trace(u"WinApp.Destructor");
  SaveEditParams();
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
  editParams_ = params;
  editParamsLoaded_ = true;
}

void KwWinApp::LoadEditParams() {
  // Kept in memory only for now; the settings file stores them once the persistence table is wired in.
  editParamsLoaded_ = true;
}

void KwWinApp::SaveEditParams() {}

}  // namespace kw
