#include "data/KwData.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "app/StringTable.h"
#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/Format.h"
#include "base/KwFile.h"
#include "base/KwFolders.h"
#include "base/Text.h"
#include "platform/Platform.h"

namespace kw {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kHelpData = 3040;
constexpr uint32_t kPicWarning = 1085;
constexpr uint32_t kPicNote = 1090;
constexpr uint32_t kPicError = 1105;
constexpr uint32_t kPicQuestion = 1050;

bool ValidScope(int scope) { return scope >= 0 && scope < kScopeCount; }

fs::path PathOf(const std::u16string& name) { return fs::path(ToUtf8(name)); }

// "|" separates button labels in a message; user text must not open a button.
std::u16string Guard(std::u16string text) {
  std::replace(text.begin(), text.end(), u'|', u'\u00A6');
  return text;
}

std::u16string JoinPath(const std::u16string& folder, const std::u16string& file) {
  if (folder.empty()) return {};
  std::u16string path = folder;
  if (path.back() != u'/' && path.back() != u'\\') path += u'/';
  return path + file;
}

char16_t Fold(char16_t c) {
  if ((c >= u'a' && c <= u'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) return static_cast<char16_t>(c - 32);
  return c;
}

// Splits "a|b|c" at the bars.
std::vector<std::u16string> SplitBars(const std::u16string& text) {
  std::vector<std::u16string> parts(1);
  for (char16_t c : text) {
    if (c == u'|')
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
KwDataKey::KwDataKey(const std::u16string& name, int scope, const KwData* owner)
    : m_Name(name), m_Scope(scope), m_pOwner(owner) {
  KW_ASSERT(owner != nullptr);
}

int KwDataKey::CompareTo(const KwDataKey& other) const {
  KW_ASSERT(m_pOwner != nullptr);
  if (m_pOwner != nullptr) {
    const int c = m_pOwner->CompareKeys(m_Name, other.m_Name);
    if (c != 0) return c < 0 ? -1 : 1;
  }
  return m_Scope < other.m_Scope ? -1 : (m_Scope > other.m_Scope ? 1 : 0);
}

KwDataSet::KwDataSet(KwData* owner, const std::u16string& name, int scope, void* data)
    : m_Name(name), m_Scope(scope), m_pData(data), m_pOwner(owner) {
  KW_ASSERT(owner != nullptr);
}

int KwDataSet::CompareTo(const KwDataSet& other, int full) const {
  KW_ASSERT(m_pOwner != nullptr);
  if (m_pOwner == nullptr) return 0;
  return m_pOwner->CompareDataSet(*this, other, full);
}

KwDataIterator::KwDataIterator(KwData* owner, int scope) : m_pOwner(owner), m_Scope(scope) {
  KW_ASSERT(owner != nullptr);
}

KwDataSet* KwDataIterator::Next() { return m_pOwner ? m_pOwner->NextOf(m_Last, m_Scope) : nullptr; }

// ---------------------------------------------------------------------------------------------
KwData::KwData() = default;

KwData::~KwData() { RemoveAll(); }

KwDataSet* KwData::AddTempDataSet(const std::u16string& name, void* data) {
  return AddDataSet(name, kScopeTemporary, data, 1);
}

KwDataSet* KwData::AddDataSet(const KwDataSet& set) {
  KW_ASSERT(ValidScope(set.GetScope()));
  if (!ValidScope(set.GetScope()) || !m_Enabled[set.GetScope()]) return nullptr;
  KwDataSet value(this, set.GetName(), set.GetScope(), set.GetData());
  auto [it, added] = m_Map.emplace(KwDataKey(set.GetName(), set.GetScope(), this), value);
  if (!added) return nullptr;
  UpdateVisibilityOfKey(set.GetName());
  if (set.GetScope() < kFileScopeCount) SetModified(1);
  return &it->second;
}

KwDataSet* KwData::AddDataSet(const std::u16string& name, int scope, void* data, int replace) {
  KW_ASSERT(ValidScope(scope));
  if (!ValidScope(scope)) return nullptr;
  if (replace) {
    auto it = m_Map.find(KwDataKey(name, scope, this));
    if (it != m_Map.end()) {
      if (it->second.GetData() != data) DeleteData(it->second.GetData());
      it->second.SetData(data);
      if (scope < kFileScopeCount) SetModified(1);
      return &it->second;
    }
  }
  return AddDataSet(KwDataSet(this, name, scope, data));
}

int KwData::GetDefaultScope(int includeTemp) const {
  for (int scope = includeTemp ? kScopeTemporary : kScopeLocal; scope >= 0; --scope)
    if (m_Enabled[scope] && m_Writable[scope]) return scope;
  return -1;
}

void KwData::DeleteData(void* data) { KW_ASSERT(data == nullptr); }

void* KwData::CopyData(const void* data) {
  KW_ASSERT(data == nullptr);
  return nullptr;
}

int KwData::CompareDataSet(const KwDataSet& a, const KwDataSet& b, int full) const {
  const int c = KwDataKey(a.GetName(), a.GetScope(), this).CompareTo(KwDataKey(b.GetName(), b.GetScope(), this));
  if (c != 0 || !full) return c;
  const int d = CompareData(a.GetData(), b.GetData());
  return d < 0 ? -1 : (d > 0 ? 1 : 0);
}

int KwData::CompareData(const void* a, const void* b) const { return a == b ? 0 : (a < b ? -1 : 1); }

int KwData::LoadDataSet(KwFile& /*file*/, KwDataSet& /*set*/, int64_t& line) {
  KW_ASSERT(!"LoadDataSet of a store without a format");
  line = -1;
  return 0;
}

int KwData::SaveDataSet(KwFile& /*file*/, const KwDataSet& /*set*/) {
  KW_ASSERT(!"SaveDataSet of a store without a format");
  return 0;
}

int64_t KwData::LoadComment(KwFile& /*file*/, int64_t line) { return line; }

int KwData::SaveComment(KwFile& /*file*/, int /*scope*/) { return 1; }

int KwData::ReportEqual(const KwDataSet& /*source*/, const KwDataSet& /*existing*/) { return 1; }

void KwData::RenameData(void* /*data*/, const std::u16string& /*newName*/) {}

int KwData::IsReservedName(const std::u16string& /*name*/) const { return 0; }

std::u16string KwData::GetOriginText(int scope, int width) const {
  KW_ASSERT(ValidScope(scope));
  if (!ValidScope(scope)) return {};
  if (scope == kScopeTemporary) return LoadString(3029);
  uint32_t id = 3024 + static_cast<uint32_t>(scope);
  if (scope == kScopeLocal && !m_ProjectBound) id = 3028;
  const std::u16string format = LoadString(id);
  std::u16string file = m_FileNames[scope];
  std::u16string text = Format(format.c_str(), file);
  if (width <= 0 || static_cast<int64_t>(text.size()) <= width) return text;
  // Shorten the file name in its middle: keep its start and its last component, "..." between.
  const int64_t fixed = static_cast<int64_t>(text.size() - file.size());
  const int64_t room = width - fixed;
  const size_t slash = file.find_last_of(u"/\\");
  const std::u16string last = slash == std::u16string::npos ? file : file.substr(slash);
  std::u16string shortened;
  if (room > static_cast<int64_t>(last.size()) + 3) {
    shortened = file.substr(0, static_cast<size_t>(room) - last.size() - 3) + u"..." + last;
  } else {
    shortened = u"..." + last;  // never less than the file's own name
  }
  return Format(format.c_str(), shortened);
}

// ---------------------------------------------------------------------------------------------
void KwData::SetScopes(int mask) {
  for (int i = 0; i < kScopeCount; ++i) m_Enabled[i] = (mask >> i) & 1;
  UpdateVisibility();
}

int KwData::GetScopes() const {
  int mask = 0;
  for (int i = 0; i < kScopeCount; ++i)
    if (m_Enabled[i]) mask |= 1 << i;
  return mask;
}

void KwData::SetWrite(int mask) {
  for (int i = 0; i < kScopeCount; ++i) m_Writable[i] = (mask >> i) & 1;
}

int KwData::GetWrite() const {
  int mask = 0;
  for (int i = 0; i < kScopeCount; ++i)
    if (m_Writable[i]) mask |= 1 << i;
  return mask;
}

int KwData::IsScopeEnabled(int scope) const {
  KW_ASSERT(ValidScope(scope));
  return ValidScope(scope) ? m_Enabled[scope] : 0;
}

int KwData::IsScopeWritable(int scope) const {
  KW_ASSERT(ValidScope(scope));
  return ValidScope(scope) ? m_Writable[scope] : 0;
}

void KwData::SetFileNames(const std::u16string& fileName, int projectBound, int createFolders) {
  const KwFolders& folders = GetFolders();
  const std::u16string names[kFileScopeCount] = {
      JoinPath(folders.GetProgramFolder(), fileName), JoinPath(folders.GetDataFolder(), fileName),
      JoinPath(folders.GetRegionalFolder(), fileName),
      JoinPath(projectBound ? folders.GetProjectFolder() : folders.GetUserFolder(), fileName)};
  SetFileNames(names, projectBound, createFolders);
}

void KwData::SetFileNames(const std::u16string (&names)[kFileScopeCount], int projectBound, int createFolders) {
  for (int i = 0; i < kFileScopeCount; ++i) {
    m_FileNames[i] = names[i];
    m_Stamps[i][0] = m_Stamps[i][1] = 0;
  }
  m_ProjectBound = projectBound;
  m_CreateFolders = createFolders;
  CheckFileNames();
}

void KwData::CheckFileNames() {
  for (int i = 0; i < kFileScopeCount; ++i) {
    if (m_FileNames[i].empty()) continue;
    for (int j = i + 1; j < kFileScopeCount; ++j) {
      if (m_FileNames[j].empty()) continue;
      std::error_code ec;
      const bool same = m_FileNames[i] == m_FileNames[j] ||
                        fs::weakly_canonical(PathOf(m_FileNames[i]), ec) ==
                            fs::weakly_canonical(PathOf(m_FileNames[j]), ec);
      if (same) {
        if (IsKwWinApp() && GetKwWinApp()->GetTraceMode())
          GetKwWinApp()->Trace(u"Data.CheckFileNames: i=%d j=%d Filename=%s", i, j, m_FileNames[i]);
        m_FileNames[i].clear();
        m_Writable[i] = 0;  // what is stored there could never be written
        break;
      }
    }
  }
}

std::u16string KwData::GetFileName(int scope) const {
  KW_ASSERT(ValidScope(scope));
  if (!ValidScope(scope) || scope == kScopeTemporary) return {};
  return m_FileNames[scope];
}

void KwData::GetFileNames(std::u16string (&names)[kFileScopeCount]) const {
  for (int i = 0; i < kFileScopeCount; ++i) names[i] = m_FileNames[i];
}

std::u16string KwData::GetScopeName(int scope) {
  KW_ASSERT(ValidScope(scope));
  if (!ValidScope(scope)) return {};
  const auto names = SplitBars(LoadString(3032));
  return static_cast<size_t>(scope) < names.size() ? names[static_cast<size_t>(scope)] : std::u16string();
}

// ---------------------------------------------------------------------------------------------
void KwData::GetFileStamps(const std::u16string& name, double stamps[2]) {
  stamps[0] = stamps[1] = 0;
  if (name.empty()) return;
  std::error_code ec;
  const fs::path path = PathOf(name);
  if (!fs::is_regular_file(path, ec)) return;
  const auto time = fs::last_write_time(path, ec);
  if (ec) return;
  stamps[0] = std::chrono::duration<double>(time.time_since_epoch()).count();
  if (stamps[0] == 0) stamps[0] = 1;  // a stamp of 0 means "no file"
  const auto size = fs::file_size(path, ec);
  stamps[1] = ec ? 1.0 : static_cast<double>(size) + 1.0;
}

int KwData::GuessFileEncoding(const std::u16string& name) {
  std::ifstream in(PathOf(name), std::ios::binary);
  if (!in) return -1;
  std::string bytes(1 << 20, '\0');
  in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(in.gcount()));
  const bool whole = bytes.size() < (1u << 20);
  auto at = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  if (bytes.size() >= 2 && ((at(0) == 0xFF && at(1) == 0xFE) || (at(0) == 0xFE && at(1) == 0xFF))) return -1;
  if (bytes.size() >= 3 && at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF) return -1;
  bool wide = false;
  for (size_t i = 0; i < bytes.size();) {
    const unsigned char c = at(i);
    if (c < 0x80) {
      ++i;
      continue;
    }
    const size_t n = c >= 0xC2 && c <= 0xDF ? 2 : c >= 0xE0 && c <= 0xEF ? 3 : c >= 0xF0 && c <= 0xF4 ? 4 : 0;
    if (n == 0) return -1;
    if (i + n > bytes.size()) return whole ? -1 : (wide ? 1 : -1);  // cut off by the sample's end
    for (size_t k = 1; k < n; ++k)
      if ((at(i + k) & 0xC0) != 0x80) return -1;
    wide = true;
    i += n;
  }
  return wide ? 1 : -1;
}

int64_t KwData::Report(uint32_t id, uint32_t pictureId, uint32_t style, const std::vector<std::u16string>& args) const {
  if (m_Silent) return 2;
  switch (args.size()) {
    case 0:
      return QueryBox(u"Data", kHelpData, pictureId, style, id);
    case 1:
      return QueryBox(u"Data", kHelpData, pictureId, style, id, Guard(args[0]));
    default:
      return QueryBox(u"Data", kHelpData, pictureId, style, id, Guard(args[0]), Guard(args[1]));
  }
}

int KwData::LoadData(int progressKind) {
  m_LoadCounter = 0;
  const int modified = GetModified();
  std::unique_ptr<KwProgress> progress;
  if (progressKind > 0) progress = GetPlatform().CreateProgress(m_InfoText);
  int result = 1;
  for (int scope = 0; scope < kFileScopeCount && result; ++scope) {
    if (!m_Enabled[scope] || m_FileNames[scope].empty()) continue;
    if (progress && !progress->Step(scope * 100 / kFileScopeCount)) {
      result = 0;
      break;
    }
    KwFile file;
    if (!file.Open(m_FileNames[scope], 0, 13, 26, GuessFileEncoding(m_FileNames[scope]))) continue;  // a missing file adds nothing
    if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"KwData.Load(): From file %s", m_FileNames[scope]);
    GetFileStamps(m_FileNames[scope], m_Stamps[scope]);
    int64_t line = LoadComment(file, 0);
    int64_t sets = 0;
    while (line >= 0) {
      KwDataSet set(this, u"", scope, nullptr);
      const int64_t before = line;
      if (LoadDataSet(file, set, line)) {
        set.SetScope(scope);
        if (!AddDataSet(set)) DeleteData(set.GetData());
      }
      if (line >= 0 && line <= before) break;  // a format that does not advance would loop forever
      if (progress && (++sets % 64) == 0 && !progress->Step(scope * 100 / kFileScopeCount)) {
        result = 0;
        break;
      }
    }
    file.Close();
  }
  if (progress && result) progress->Step(100);
  SetModified(modified);
  return result;
}

int KwData::SaveScope(int scope) {
  const std::u16string& name = m_FileNames[scope];
  double now[2];
  GetFileStamps(name, now);
  double* recorded = m_Stamps[scope];
  if (recorded[0] != 0 && recorded[1] != 0 && (now[0] != recorded[0] || now[1] != recorded[1])) {
    const int64_t answer = Report(3023, kPicWarning, 1, {name});
    if (answer == -2) return 1;      // No: left as it is
    if (answer != 1) return 0;       // Cancel, or no box: never overwrite unasked
  }
  std::vector<const KwDataSet*> sets;
  for (const auto& [key, set] : m_Map)
    if (key.GetScope() == scope) sets.push_back(&set);
  std::stable_sort(sets.begin(), sets.end(),
                   [this](const KwDataSet* a, const KwDataSet* b) { return CompareDataSet(*a, *b, 0) < 0; });
  std::error_code ec;
  const fs::path path = PathOf(name);
  // A file marked read-only is left alone, even where the process could write it anyway.
  const auto status = fs::status(path, ec);
  if (fs::exists(status) && (status.permissions() & fs::perms::owner_write) == fs::perms::none) {
    Report(3020, kPicError, 1, {name});
    return 0;
  }
  if (sets.empty()) {
    if (fs::exists(path, ec) && !fs::remove(path, ec)) {
      Report(3020, kPicError, 1, {name});
      return 0;
    }
    recorded[0] = recorded[1] = 0;
    return 1;
  }
  if (m_CreateFolders && path.has_parent_path()) fs::create_directories(path.parent_path(), ec);
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(u"Data.SaveData: i=%d file=%s", scope, name);
  KwFile file;
  if (!file.Open(name, 4, 13, 26)) {
    Report(3020, kPicError, 1, {name});
    return 0;
  }
  file.SetEncoding(1);
  int written = 0;
  int ok = SaveComment(file, scope);
  for (const KwDataSet* set : sets) {
    if (!ok) break;
    ok = SaveDataSet(file, *set);
    if (ok) ++written;
  }
  file.SetEOF();
  file.Close();
  if (written == 0) {
    fs::remove(path, ec);
    recorded[0] = recorded[1] = 0;
  } else {
    GetFileStamps(name, recorded);
  }
  if (!ok) {
    Report(3020, kPicError, 1, {name});
    return 0;
  }
  return 1;
}

int KwData::SaveData() {
  int result = 1;
  for (int scope = 0; scope < kFileScopeCount; ++scope) {
    if (!m_Enabled[scope] || !m_Writable[scope] || m_FileNames[scope].empty()) continue;
    if (!SaveScope(scope)) result = 0;
  }
  if (result) SetModified(0);
  return result;
}

int KwData::SaveModified() {
  if (!GetModified()) return 1;
  if (m_Silent) return SaveData();
  const int64_t answer = Report(3021, kPicQuestion, 1);
  if (answer == 1) return SaveData();
  return answer == -2 ? 1 : 0;
}

int KwData::IsEqual(const KwData& other) const {
  if (m_Map.size() != other.m_Map.size()) return 0;
  for (auto a = m_Map.begin(), b = other.m_Map.begin(); a != m_Map.end(); ++a, ++b)
    if (CompareDataSet(a->second, b->second, 1) != 0) return 0;
  return 1;
}

int KwData::Copy(const KwData& other) {
  if (&other == this) return 1;
  RemoveAll();
  for (int i = 0; i < kScopeCount; ++i) {
    m_Enabled[i] = other.m_Enabled[i];
    m_Writable[i] = other.m_Writable[i];
  }
  for (int i = 0; i < kFileScopeCount; ++i) {
    m_FileNames[i] = other.m_FileNames[i];
    m_Stamps[i][0] = other.m_Stamps[i][0];
    m_Stamps[i][1] = other.m_Stamps[i][1];
  }
  m_ProjectBound = other.m_ProjectBound;
  m_CreateFolders = other.m_CreateFolders;
  m_IgnoreCase = other.m_IgnoreCase;
  m_Silent = other.m_Silent;
  m_InfoText = other.m_InfoText;
  for (const auto& [key, set] : other.m_Map) {
    KwDataSet copy(this, set.GetName(), set.GetScope(), CopyData(set.GetData()));
    if (!AddDataSet(copy)) DeleteData(copy.GetData());
  }
  SetModified(other.GetModified());
  return 1;
}

// ---------------------------------------------------------------------------------------------
KwDataSet* KwData::CopyDataSet(const std::u16string& name, int fromScope, int toScope) {
  KW_ASSERT(ValidScope(fromScope) && ValidScope(toScope));
  if (!ValidScope(fromScope) || !ValidScope(toScope)) return nullptr;
  KwDataSet* source = GetDataSet(name, fromScope);
  if (source == nullptr || fromScope == toScope) return source;
  if (!m_Enabled[toScope] || !m_Writable[toScope]) {
    Report(3022, kPicNote, 1);
    return nullptr;
  }
  if (KwDataSet* existing = GetDataSet(name, toScope)) {
    if (CompareData(source->GetData(), existing->GetData()) == 0 && ReportEqual(*source, *existing)) return existing;
    if (!m_Silent && Report(3033, kPicWarning, 1) != 1) return nullptr;
  }
  return AddDataSet(name, toScope, CopyData(source->GetData()), 1);
}

int KwData::DeleteDataSet(const std::u16string& name, int scope) {
  KW_ASSERT(ValidScope(scope));
  auto it = m_Map.find(KwDataKey(name, scope, this));
  if (it == m_Map.end()) return 0;
  const std::u16string key = it->second.GetName();
  DeleteData(it->second.GetData());
  m_Map.erase(it);
  UpdateVisibilityOfKey(key);
  if (scope < kFileScopeCount) SetModified(1);
  return 1;
}

int KwData::DeleteDataSet(KwDataSet* set) {
  if (set == nullptr) return 0;
  KW_ASSERT(set->GetOwner() == this);
  if (set->GetOwner() != this) return 0;
  return DeleteDataSet(std::u16string(set->GetName()), set->GetScope());
}

int KwData::DeleteDataSetsOfKey(const std::u16string& name) {
  int count = 0;
  for (int scope = 0; scope < kScopeCount; ++scope) count += DeleteDataSet(name, scope);
  return count;
}

int KwData::DeleteDataSetsOfScope(int scope) {
  KW_ASSERT(ValidScope(scope));
  std::vector<std::u16string> names;
  for (const auto& [key, set] : m_Map)
    if (key.GetScope() == scope) names.push_back(key.GetName());
  int count = 0;
  for (const auto& name : names) count += DeleteDataSet(name, scope);
  return count;
}

void KwData::RemoveAll() {
  for (auto& [key, set] : m_Map) DeleteData(set.GetData());
  m_Map.clear();
  m_Cursor.reset();
}

int KwData::UpdateDataSet(KwDataSet* set, void* data) {
  if (set == nullptr) return 0;
  KW_ASSERT(set->GetOwner() == this);
  if (set->GetOwner() != this) return 0;
  if (set->GetData() != data) DeleteData(set->GetData());
  set->SetData(data);
  if (set->GetScope() < kFileScopeCount) SetModified(1);
  return 1;
}

KwDataSet* KwData::RenameDataSet(const std::u16string& name, int scope, const std::u16string& newName) {
  KW_ASSERT(ValidScope(scope));
  KwDataSet* set = GetDataSet(name, scope);
  if (set == nullptr || newName.empty()) return nullptr;
  if (name == newName) return set;
  KwDataSet* taken = GetDataSet(newName, scope);
  if (taken != nullptr && taken != set) {
    Report(3043, kPicNote, 1, {newName, GetScopeName(scope)});
    return nullptr;
  }
  void* data = set->GetData();
  m_Map.erase(KwDataKey(name, scope, this));  // only the payload pointer lives on
  UpdateVisibilityOfKey(name);
  RenameData(data, newName);
  return AddDataSet(KwDataSet(this, newName, scope, data));
}

KwDataSet* KwData::SearchDataSet(const std::u16string& name, int scope) {
  KW_ASSERT(ValidScope(scope));
  for (int s = std::min(scope, kScopeCount - 1); s >= 0; --s)
    if (KwDataSet* set = GetDataSet(name, s)) return set;
  return nullptr;
}

KwDataSet* KwData::ChangeScope(const std::u16string& name, int fromScope, int toScope) {
  KW_ASSERT(ValidScope(fromScope) && ValidScope(toScope));
  if (!ValidScope(fromScope) || !ValidScope(toScope)) return nullptr;
  if (GetDataSet(name, fromScope) == nullptr) return nullptr;
  if (fromScope == toScope) return GetDataSet(name, fromScope);
  if (!m_Writable[fromScope] || !m_Enabled[toScope] || !m_Writable[toScope]) {
    Report(3022, kPicNote, 1);
    return nullptr;
  }
  if (CopyDataSet(name, fromScope, toScope) == nullptr) return nullptr;
  DeleteDataSet(name, fromScope);
  return GetDataSet(name, toScope);
}

KwDataSet* KwData::GetDataSet(const std::u16string& name, int scope) {
  if (scope == -1) {
    for (int s = kScopeCount - 1; s >= 0; --s) {
      auto it = m_Map.find(KwDataKey(name, s, this));
      if (it != m_Map.end() && it->second.IsVisible()) return &it->second;
    }
    return nullptr;
  }
  KW_ASSERT(ValidScope(scope));
  auto it = m_Map.find(KwDataKey(name, scope, this));
  return it == m_Map.end() ? nullptr : &it->second;
}

void* KwData::GetData(const std::u16string& name, int scope) {
  KwDataSet* set = GetDataSet(name, scope);
  return set ? set->GetData() : nullptr;
}

int KwData::GetDataSetsOfKey(const std::u16string& name, std::vector<KwDataSet*>& sets) {
  sets.clear();
  for (int s = 0; s < kScopeCount; ++s) {
    auto it = m_Map.find(KwDataKey(name, s, this));
    if (it != m_Map.end()) sets.push_back(&it->second);
  }
  return static_cast<int>(sets.size());
}

int KwData::GetScopesOfKey(const std::u16string& name) const {
  int mask = 0;
  for (int s = 0; s < kScopeCount; ++s)
    if (m_Map.count(KwDataKey(name, s, this))) mask |= 1 << s;
  return mask;
}

int64_t KwData::GetCount(int scope) const {
  if (scope == -1) return static_cast<int64_t>(m_Map.size());
  int64_t count = 0;
  for (const auto& [key, set] : m_Map) count += key.GetScope() == scope;
  return count;
}

int64_t KwData::GetCompareCount(const std::u16string& a, const std::u16string& b) {
  const size_t n = std::min(a.size(), b.size());
  size_t i = 0;
  while (i < n && Fold(a[i]) == Fold(b[i])) ++i;
  return static_cast<int64_t>(i);
}

KwDataSet* KwData::SeekBestDataSet(const std::u16string& name) {
  KwDataSet* best = nullptr;
  int64_t bestCount = 0;
  for (auto& [key, set] : m_Map) {
    if (set.IsVisible() && CompareKeys(set.GetName(), name) == 0) return &set;
    const int64_t count = GetCompareCount(set.GetName(), name);
    if (count > bestCount) {
      best = &set;
      bestCount = count;
    }
  }
  return best;
}

KwDataSet* KwData::NextOf(std::optional<KwDataKey>& last, int scope) {
  auto it = last ? m_Map.upper_bound(*last) : m_Map.begin();
  for (; it != m_Map.end(); ++it) {
    const bool wanted = scope == -1 ? it->second.IsVisible() != 0 : it->first.GetScope() == scope;
    if (wanted) {
      last = it->first;
      return &it->second;
    }
  }
  last = std::nullopt;
  return nullptr;
}

KwDataSet* KwData::GetNextDataSet(int first, int scope) {
  if (first) m_Cursor.reset();
  KwDataSet* set = NextOf(m_Cursor, scope);
  return set;
}

void* KwData::GetNextData(int first, int scope) {
  KwDataSet* set = GetNextDataSet(first, scope);
  return set ? set->GetData() : nullptr;
}

int KwData::CompareKeys(const std::u16string& a, const std::u16string& b) const {
  const int c = StrCompare(a, b, m_IgnoreCase ? 0 : 1, 0, 0);
  // Two different names must never become one key (one of the sets would be dropped at load):
  // should the collation call them equal, their code units decide.
  if (c == 0 && !m_IgnoreCase && a != b) return a < b ? -1 : 1;
  return c;
}

// ---------------------------------------------------------------------------------------------
int KwData::EditLocation(const std::u16string& name, int scope) {
  KW_ASSERT(ValidScope(scope));
  KwDataSet* set = ValidScope(scope) ? GetDataSet(name, scope) : nullptr;
  if (set == nullptr) return 0;
  int target = GetDefaultScope(0);
  if (target == scope || target < 0) {
    target = -1;
    for (int s = scope - 1; s >= 0; --s)
      if (m_Enabled[s] && m_Writable[s]) {
        target = s;
        break;
      }
  }
  const auto parts = SplitBars(LoadString(3031));  // "Data location: ", "Copy to ", "Remove", "Cancel / ESC"
  if (parts.size() < 4) return 0;
  std::u16string text = parts[0] + u"%s";  // the origin text goes in as an argument
  std::vector<int> actions;  // 1 copy, 2 remove, 0 cancel, one per button
  if (target >= 0) {
    text += u"|" + parts[1] + GetScopeName(target);
    actions.push_back(1);
  }
  if (m_Writable[scope]) {
    text += u"|" + parts[2];
    actions.push_back(2);
  }
  text += u"|" + parts[3];
  actions.push_back(0);
  if (m_Silent) return 0;
  const int64_t answer = QueryBox(u"Data", kHelpData, kPicQuestion, 0, text, Guard(GetOriginText(scope, 0)));
  const int64_t index = answer == 1 ? 0 : (answer < 0 ? -answer - 1 : -1);
  if (index < 0 || index >= static_cast<int64_t>(actions.size())) return 0;
  switch (actions[static_cast<size_t>(index)]) {
    case 1:
      return CopyDataSet(name, scope, target) != nullptr ? 1 : 0;
    case 2:
      if (Report(3034, kPicWarning, 10) != 1) return 0;
      return DeleteDataSet(name, scope) ? 2 : 0;
    default:
      return 0;
  }
}

int KwData::QueryNewDataSet(const std::u16string& name, int scope) {
  KW_ASSERT(ValidScope(scope));
  if (!ValidScope(scope)) return 0;
  if (name.empty() || IsReservedName(name)) {
    Report(3044, kPicNote, 1, {name});
    return 0;
  }
  if (GetDataSet(name, scope) != nullptr) {
    Report(3043, kPicNote, 1, {name, GetScopeName(scope)});
    return 0;
  }
  return 1;
}

int KwData::MakeVisibilityPersistent(const std::u16string& name, int scope) {
  KW_ASSERT(ValidScope(scope));
  if (!ValidScope(scope) || GetDataSet(name, scope) == nullptr) return 0;
  const int target = GetDefaultScope(0);
  if (target < 0) {
    Report(3022, kPicNote, 1);
    return 0;
  }
  if (target != scope) {
    const int64_t answer = Report(3030, kPicQuestion, 1, {name, GetScopeName(target)});
    if (!m_Silent && answer != 1) return 0;
    // The answer to 3030 covers replacing the set there: no second question.
    if (!AddDataSet(name, target, CopyData(GetDataSet(name, scope)->GetData()), 1)) return 0;
  }
  for (int s = target + 1; s < kScopeCount; ++s) DeleteDataSet(name, s);
  return 1;
}

void KwData::UpdateVisibility() {
  const KwDataSet* previous = nullptr;
  for (auto& [key, set] : m_Map) {
    if (previous == nullptr || CompareKeys(previous->GetName(), set.GetName()) != 0) UpdateVisibilityOfKey(set.GetName());
    previous = &set;
  }
}

void KwData::UpdateVisibilityOfKey(const std::u16string& name) {
  bool found = false;
  for (int s = kScopeCount - 1; s >= 0; --s) {
    auto it = m_Map.find(KwDataKey(name, s, this));
    if (it == m_Map.end()) continue;
    const bool visible = !found && m_Enabled[s];
    it->second.SetVisible(visible ? 1 : 0);
    found = found || visible;
  }
}

bool KwData::ReadDataLine(KwFile& file, std::u16string& text) {
  if (m_HasPushBack) {
    text = std::move(m_PushBack);
    m_HasPushBack = false;
    return true;
  }
  return file.ReadLine(text) != 0;
}

}  // namespace kw
