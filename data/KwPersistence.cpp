#include "data/KwPersistence.h"

#include <algorithm>
#include <filesystem>
#include <functional>

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/Format.h"
#include "base/KwFile.h"
#include "base/KwFolders.h"
#include "base/Numbers.h"
#include "data/KwCfgSection.h"
#include "data/KwConfigData.h"
#include "platform/Platform.h"

namespace kw {
namespace {

// The one way this file writes a trace line: through the current application, when it traces.
template <class... A>
void PersistTrace(std::u16string_view format, const A&... args) {
  if (IsKwWinApp() && GetKwWinApp()->GetTraceMode()) GetKwWinApp()->Trace(format, args...);
}

constexpr const char16_t* kUserFileName = u"KwUser.INI";
constexpr const char16_t* kProjectFileName = u"CONFIG.INI";

std::u16string TrimRightBlanks(const std::u16string& text) {
  size_t end = text.size();
  while (end > 0 && (text[end - 1] == u' ' || text[end - 1] == u'\t')) --end;
  return text.substr(0, end);
}

bool IsBlankLine(const std::u16string& line) {
  return line.find_first_not_of(u" \t") == std::u16string::npos;
}

// Whether `line` is the header of `section`: "[" + section + "]" at its start, case counting.
bool IsHeaderOf(const std::u16string& line, const std::u16string& section) {
  const size_t n = section.size();
  return line.size() >= n + 2 && line[0] == u'[' && line.compare(1, n, section) == 0 && line[n + 1] == u']';
}

// Lines the reader of the settings files does not take as entries.
bool IsIgnoredLine(const std::u16string& line) { return line.size() < 2 || line[0] == u'!'; }

// Calls `visit(key, value, line)` for each entry line of every occurrence of `section` in `file`.
// False when the file cannot be opened.
bool ReadSection(const std::u16string& file, const std::u16string& section,
                 const std::function<void(const std::u16string&, const std::u16string&, const std::u16string&)>& visit) {
  KwFile in;
  if (!in.Open(file, KwFile::kRead, 13, 26, KwData::GuessFileEncoding(file))) return false;
  bool inside = false;
  std::u16string line;
  while (in.ReadLine(line)) {
    if (!line.empty() && line[0] == u'[') {
      inside = IsHeaderOf(line, section);
      continue;
    }
    if (!inside || IsIgnoredLine(line)) continue;
    const size_t eq = line.find(u'=');
    visit(KwCfgSection::ExtractKey(line), eq == std::u16string::npos ? std::u16string() : line.substr(eq + 1), line);
  }
  return true;
}

// A settings file held as lines with their own line ends, so that it can be written back with every
// untouched line byte for byte as it was.
class IniText {
 public:
  bool Read(const std::u16string& file) {
    name_ = file;
    if (!IsExisting(file)) return true;  // a new file
    KwFile in;
    if (!in.Open(file, KwFile::kRead, 13, 0, KwData::GuessFileEncoding(file))) return false;
    std::u16string text;
    char16_t block[4096];
    for (int64_t got; (got = in.ReadBlock(block, 4096)) > 0;) text.append(block, static_cast<size_t>(got));
    encoding_ = in.GetEncoding();
    byteOrderMark_ = in.HasByteOrderMark();
    in.Close();
    size_t start = 0;
    while (start < text.size()) {
      size_t end = text.find_first_of(u"\r\n", start);
      if (end == std::u16string::npos) {
        lines_.push_back(text.substr(start));
        ends_.emplace_back();
        break;
      }
      const size_t endLength = (text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n') ? 2 : 1;
      lines_.push_back(text.substr(start, end - start));
      ends_.push_back(text.substr(end, endLength));
      if (lineEnd_.empty()) lineEnd_ = ends_.back();
      start = end + endLength;
    }
    return true;
  }

  // The first line of the section's header, or -1.
  int64_t FindHeader(const std::u16string& section) const {
    for (size_t i = 0; i < lines_.size(); ++i)
      if (IsHeaderOf(lines_[i], section)) return static_cast<int64_t>(i);
    return -1;
  }
  // The line after the section that starts at `header`: the next "[" line or the end.
  int64_t SectionEnd(int64_t header) const {
    size_t i = static_cast<size_t>(header) + 1;
    while (i < lines_.size() && (lines_[i].empty() || lines_[i][0] != u'[')) ++i;
    return static_cast<int64_t>(i);
  }
  // The line after the last non-blank line of the section that starts at `header`.
  int64_t ContentEnd(int64_t header) const {
    int64_t end = SectionEnd(header);
    while (end > header + 1 && IsBlankLine(lines_[static_cast<size_t>(end - 1)])) --end;
    return end;
  }

  void Replace(int64_t at, const std::u16string& line) {
    if (lines_[static_cast<size_t>(at)] == line) return;
    lines_[static_cast<size_t>(at)] = line;
    changed_ = true;
  }
  void Insert(int64_t at, const std::u16string& line) {
    // The line before a new one must end; only the last line of a file may lack its line end.
    if (at > 0 && ends_[static_cast<size_t>(at - 1)].empty()) ends_[static_cast<size_t>(at - 1)] = LineEnd();
    lines_.insert(lines_.begin() + at, line);
    ends_.insert(ends_.begin() + at, LineEnd());
    changed_ = true;
  }
  void Erase(int64_t from, int64_t to) {
    if (from >= to) return;
    lines_.erase(lines_.begin() + from, lines_.begin() + to);
    ends_.erase(ends_.begin() + from, ends_.begin() + to);
    changed_ = true;
  }
  int64_t Count() const { return static_cast<int64_t>(lines_.size()); }
  const std::u16string& Line(int64_t at) const { return lines_[static_cast<size_t>(at)]; }
  bool Changed() const { return changed_; }

  // Writes the lines to a temporary file beside the file, which then replaces the file in one step.
  bool Write() const {
    if (IsExisting(name_) && IsReadOnly(name_)) return false;  // a protected file stays as it is
    const std::filesystem::path path(ToUtf8(name_));
    if (path.has_parent_path()) {
      std::error_code error;
      std::filesystem::create_directories(path.parent_path(), error);
    }
    const std::u16string temp = name_ + u".~tmp";
    KwFile out;
    bool ok = out.Open(temp, KwFile::kWrite, 13, 0, encoding_) && out.SetEncoding(encoding_, byteOrderMark_);
    for (size_t i = 0; ok && i < lines_.size(); ++i) ok = out.Write(lines_[i]) && out.Write(ends_[i]);
    ok = out.Close() && ok;
    if (ok) ok = RenameTheFile(temp, name_, true);
    if (!ok) DeleteTheFile(temp);
    return ok;
  }

 private:
  std::u16string LineEnd() const { return lineEnd_.empty() ? std::u16string(u"\r\n") : lineEnd_; }

  std::u16string name_;
  std::vector<std::u16string> lines_;
  std::vector<std::u16string> ends_;  // the line end of each line; empty only for a last line without one
  std::u16string lineEnd_;            // the file's first line end, for new lines
  int encoding_ = kEncodingUtf8;      // a new file: UTF-8 with a byte-order mark
  bool byteOrderMark_ = true;
  bool changed_ = false;
};

// A value as it can stand in one line: line ends inside a text become blanks.
std::u16string OneLine(std::u16string value) {
  for (char16_t& c : value)
    if (c == u'\r' || c == u'\n') c = u' ';
  return value;
}

// Reads an integer with GetInt. GetInt refuses magnitudes from about 2^63 on, which 64-bit variables
// hold and are written with; a plain decimal ("-" and digits) that GetInt refuses is therefore read
// exactly. `negative` receives its sign; the result is the magnitude's bits (0 beyond 64 bits).
uint64_t ReadInteger(const std::u16string& text, bool& negative) {
  const std::u16string t = TrimRightBlanks(text);
  int error = 0;
  const int64_t value = GetInt(t.c_str(), 0, static_cast<int64_t>(t.size()), &error);
  negative = value < 0;
  const size_t digits = !t.empty() && t[0] == u'-' ? 1 : 0;
  if (error != kIntEmptyOrRange || t.size() == digits || t.find_first_not_of(u"0123456789", digits) != std::u16string::npos)
    return negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  negative = digits == 1;
  uint64_t result = 0;
  for (size_t i = digits; i < t.size(); ++i) {
    const uint64_t digit = static_cast<uint64_t>(t[i] - u'0');
    if (result > (UINT64_MAX - digit) / 10) return 0;
    result = result * 10 + digit;
  }
  return result;
}

int64_t ReadInt(const std::u16string& text) {
  bool negative = false;
  const uint64_t magnitude = ReadInteger(text, negative);
  if (magnitude > (negative ? uint64_t{1} << 63 : uint64_t{INT64_MAX})) return 0;  // beyond 64 bits
  return negative ? static_cast<int64_t>(0 - magnitude) : static_cast<int64_t>(magnitude);
}

uint64_t ReadUInt64(const std::u16string& text) {
  bool negative = false;
  const uint64_t magnitude = ReadInteger(text, negative);
  return negative ? 0 - magnitude : magnitude;  // "-1" is all bits, as the C library reads it
}

double ReadDouble(const std::u16string& text) {
  const std::u16string t = TrimRightBlanks(text);
  return GetDoubleExp(t.c_str(), 0, static_cast<int64_t>(t.size()), 0);
}

size_t BufferLength(const char16_t* buffer) {
  size_t n = 0;
  while (buffer[n] != 0) ++n;
  return n;
}

}  // namespace

// ---- construction and the chain --------------------------------------------------------------------

KwPersistence::KwPersistence(int maxElements)
    : m_MaxElements(maxElements > 0 ? maxElements : kDefaultMaxElements),
      m_Spots(new tagPERSIST[static_cast<size_t>(m_MaxElements)]) {
  InitChain();
}

KwPersistence::~KwPersistence() {
  for (const tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext)
    PersistTrace(u"Persis.Destructor: Element Section=%s IDname=%s was still allocated", e->Section, e->IDname);
}

int KwPersistence::Register(const std::u16string& IDname, int type, void* variable) {
  if (variable == nullptr || m_Count >= m_MaxElements) return 0;
  // The next free spot after the one used last: spots are mostly taken and freed in order.
  tagPERSIST* spot = nullptr;
  for (int k = 0; k < m_MaxElements && spot == nullptr; ++k) {
    const int i = (m_NextSpot + k) % m_MaxElements;
    if (m_Spots[static_cast<size_t>(i)].pVariable == nullptr) {
      spot = &m_Spots[static_cast<size_t>(i)];
      m_NextSpot = (i + 1) % m_MaxElements;
    }
  }
  if (spot == nullptr) return 0;
  *spot = tagPERSIST();
  spot->IDname = IDname;
  spot->Type = type;
  spot->pVariable = variable;
  if (m_pLast != nullptr) m_pLast->pNext = spot; else m_pFirst = spot;
  m_pLast = spot;
  ++m_Count;
  return 1;
}

template <class Pred>
int KwPersistence::RemoveIf(Pred drop) {
  int removed = 0;
  tagPERSIST* previous = nullptr;
  for (tagPERSIST* e = m_pFirst; e != nullptr;) {
    tagPERSIST* next = e->pNext;
    if (drop(*e)) {
      if (previous != nullptr) previous->pNext = next; else m_pFirst = next;
      if (m_pLast == e) m_pLast = previous;
      *e = tagPERSIST();  // the spot is free again
      ++removed;
    } else {
      previous = e;
    }
    e = next;
  }
  m_Count -= removed;
  return removed;
}

tagPERSIST* KwPersistence::Find(const std::u16string& section, const std::u16string& IDname) const {
  for (tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext)
    if (e->Scope != kPersistUnbound && !e->Remove && e->Section == section && e->IDname == IDname) return e;
  return nullptr;
}

int KwPersistence::LoadINI(const std::u16string& IDname, std::u16string* value) { return Register(IDname, kPersistText, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, char16_t* buffer) { return Register(IDname, kPersistBuffer, buffer); }
int KwPersistence::LoadINI(const std::u16string& IDname, int* value) { return Register(IDname, kPersistInt, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, unsigned int* value) { return Register(IDname, kPersistUInt, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, long* value) { return Register(IDname, kPersistLong, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, unsigned long* value) { return Register(IDname, kPersistULong, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, float* value) { return Register(IDname, kPersistFloat, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, double* value) { return Register(IDname, kPersistDouble, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, long long* value) { return Register(IDname, kPersistInt64, value); }
int KwPersistence::LoadINI(const std::u16string& IDname, unsigned long long* value) { return Register(IDname, kPersistUInt64, value); }

bool KwPersistence::CheckScope(int scope, const std::u16string& section) const {
  return (scope == kPersistUser || scope == kPersistProject) && scope == GetSectionScope(section);
}

int KwPersistence::LoadINI(int scope, const std::u16string& section) {
  const std::u16string name = GetName(section);
  m_LastSection = name;
  if (!CheckScope(scope, name) || name.empty()) {
    KW_ASSERT(CheckScope(scope, name) && !name.empty());
    RemoveIf([](const tagPERSIST& e) { return e.Scope == kPersistUnbound; });
    return 0;
  }
  m_Released.erase(name);
  int bound = 0;
  for (tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext) {
    if (e->Scope != kPersistUnbound) continue;
    const tagPERSIST* shared = Find(name, e->IDname);
    e->Scope = scope;
    if (shared != nullptr) {
      // Another object bound this key before: share its current value, keep only its element.
      StringToValue(e->Type, e->pVariable, ValueToString(shared->Type, shared->pVariable));
      e->Remove = 1;
    } else {
      e->Section = name;
      e->Loaded = 0;
      ++bound;
    }
    PersistTrace(u"Persist.LoadINI: Section=%s IDname=%s", name, e->IDname);
  }
  RemoveIf([](const tagPERSIST& e) { return e.Remove != 0; });
  return bound > 0 ? LoadProfileStrings(GetFile(scope), name) : 1;
}

int KwPersistence::SaveINI(const std::u16string& section, int scope) {
  const std::u16string name = GetName(section);
  std::vector<std::pair<std::u16string, std::u16string>> values;
  int fileScope = kPersistUnbound;
  for (const tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext) {
    if (e->Scope == kPersistUnbound || e->Section != name) continue;
    values.emplace_back(e->IDname, ValueToString(e->Type, e->pVariable));
    fileScope = e->Scope;
  }
  if (values.empty()) {
    if (m_Released.count(name) != 0)
      PersistTrace(u"Persist.SaveINI: WARNING! Section %s was already released earlier!", name);
    return 0;
  }
  // A scope that is not the section's own is a broken contract; the values still go to their file.
  KW_ASSERT(scope == fileScope);
  const int result = SaveProfileStrings(GetFile(fileScope), name, values);
  Release(name);
  return result;
}

int KwPersistence::Release(const std::u16string& section) {
  const std::u16string name = GetName(section);
  const int removed = RemoveIf([&](const tagPERSIST& e) { return e.Scope != kPersistUnbound && e.Section == name; });
  if (removed > 0) m_Released.insert(name);
  return removed;
}

int KwPersistence::ResetChain() {
  m_Released.clear();
  return RemoveIf([](const tagPERSIST&) { return true; });
}

void KwPersistence::InitChain() {
  ResetChain();
  m_LastSection.clear();
  m_ProjectFile = GetFolders().GetProjectFolder() + kProjectFileName;
  InitUser();
}

void KwPersistence::InitUser() { m_UserFile = GetFolders().GetUserFolder() + kUserFileName; }

const std::u16string& KwPersistence::GetFile(int scope) const {
  static const std::u16string none;
  return scope == kPersistUser ? m_UserFile : scope == kPersistProject ? m_ProjectFile : none;
}

// ---- values ----------------------------------------------------------------------------------------

std::u16string KwPersistence::ValueToString(int type, const void* v) {
  switch (type) {
    case kPersistText: return *static_cast<const std::u16string*>(v);
    case kPersistBuffer: return std::u16string(static_cast<const char16_t*>(v));
    case kPersistInt: return Format(u"%d", *static_cast<const int*>(v));
    case kPersistUInt: return Format(u"%u", *static_cast<const unsigned int*>(v));
    case kPersistLong: return Format(u"%ld", *static_cast<const long*>(v));
    case kPersistULong: return Format(u"%u", *static_cast<const unsigned long*>(v));
    case kPersistFloat: return Format(u"%-25.15g", *static_cast<const float*>(v));
    case kPersistDouble: return Format(u"%-25.15g", *static_cast<const double*>(v));
    case kPersistInt64: return Format(u"%Id", *static_cast<const long long*>(v));
    case kPersistUInt64: return Format(u"%Iu", *static_cast<const unsigned long long*>(v));
    default: KW_ASSERT(type >= kPersistText && type <= kPersistUInt64); return {};
  }
}

int KwPersistence::StringToValue(int type, void* v, const std::u16string& text) {
  switch (type) {
    case kPersistText: *static_cast<std::u16string*>(v) = text; return 1;
    case kPersistBuffer: {
      char16_t* buffer = static_cast<char16_t*>(v);
      const size_t capacity = BufferLength(buffer);
      if (text.size() > capacity) {
        PersistTrace(u"Persist.StringToValue: WARNING! Buffer-Overflow OldLen=%Id NewLen=%Id",
                     static_cast<int64_t>(capacity), static_cast<int64_t>(text.size()));
        KW_ASSERT(text.size() <= capacity);
      }
      const size_t n = std::min(capacity, text.size());
      std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(n), buffer);
      std::fill(buffer + n, buffer + capacity, u' ');
      return 1;
    }
    case kPersistInt: *static_cast<int*>(v) = static_cast<int>(ReadInt(text)); return 1;
    case kPersistUInt: *static_cast<unsigned int*>(v) = static_cast<unsigned int>(ReadInt(text)); return 1;
    case kPersistLong: *static_cast<long*>(v) = static_cast<long>(ReadInt(text)); return 1;
    case kPersistULong: *static_cast<unsigned long*>(v) = static_cast<unsigned long>(ReadUInt64(text)); return 1;
    case kPersistFloat: *static_cast<float*>(v) = static_cast<float>(ReadDouble(text)); return 1;
    case kPersistDouble: *static_cast<double*>(v) = ReadDouble(text); return 1;
    case kPersistInt64: *static_cast<long long*>(v) = ReadInt(text); return 1;
    case kPersistUInt64: *static_cast<unsigned long long*>(v) = ReadUInt64(text); return 1;
    default: KW_ASSERT(type >= kPersistText && type <= kPersistUInt64); return 0;
  }
}

// ---- files -----------------------------------------------------------------------------------------

int KwPersistence::LoadProfileStrings(const std::u16string& file, const std::u16string& section) {
  ReadSection(file, section, [&](const std::u16string& key, const std::u16string& value, const std::u16string&) {
    for (tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext) {
      if (e->Scope == kPersistUnbound || e->Loaded || e->Section != section || e->IDname != key) continue;
      StringToValue(e->Type, e->pVariable, value);
      e->Loaded = 1;
    }
  });
  for (const tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext)
    if (e->Scope != kPersistUnbound && e->Section == section && !e->Loaded) return 0;
  return 1;
}

int KwPersistence::SaveProfileStrings(const std::u16string& file, const std::u16string& section,
                                      const std::vector<std::pair<std::u16string, std::u16string>>& values) {
  if (file.empty() || section.empty()) return 0;
  IniText text;
  if (!text.Read(file)) return 0;
  int64_t header = text.FindHeader(section);
  if (header < 0) {
    header = text.Count();
    text.Insert(header, u"[" + section + u"]");
  }
  int64_t insertAt = text.ContentEnd(header);
  for (const auto& [key, value] : values) {
    const std::u16string line = key + u"=" + OneLine(value);
    int64_t at = -1;
    for (int64_t i = header + 1; i < insertAt && at < 0; ++i)
      if (!IsIgnoredLine(text.Line(i)) && KwCfgSection::ExtractKey(text.Line(i)) == key) at = i;
    if (at >= 0) {
      text.Replace(at, line);
    } else {
      text.Insert(insertAt, line);
      ++insertAt;
    }
  }
  return !text.Changed() || text.Write() ? 1 : 0;
}

// ---- single keys -----------------------------------------------------------------------------------

int KwPersistence::LoadOne(int scope, const std::u16string& section, const std::u16string& IDname, int type, void* variable) {
  const std::u16string name = GetName(section);
  if (!CheckScope(scope, name) || variable == nullptr) {
    KW_ASSERT(CheckScope(scope, name) && variable != nullptr);
    return 0;
  }
  bool found = false;
  ReadSection(GetFile(scope), name, [&](const std::u16string& key, const std::u16string& value, const std::u16string&) {
    if (found || key != IDname) return;
    StringToValue(type, variable, value);
    found = true;
  });
  return found ? 1 : 0;
}

int KwPersistence::SaveOne(int scope, const std::u16string& section, const std::u16string& IDname, int type, const void* variable) {
  const std::u16string name = GetName(section);
  if (!CheckScope(scope, name) || variable == nullptr) {
    KW_ASSERT(CheckScope(scope, name) && variable != nullptr);
    return 0;
  }
  return SaveProfileStrings(GetFile(scope), name, {{IDname, ValueToString(type, variable)}});
}

int KwPersistence::LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, long long* value) {
  return LoadOne(scope, section, IDname, kPersistInt64, value);
}
int KwPersistence::LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, unsigned long long* value) {
  return LoadOne(scope, section, IDname, kPersistUInt64, value);
}
int KwPersistence::LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, int* value) {
  return LoadOne(scope, section, IDname, kPersistInt, value);
}
int KwPersistence::LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, unsigned long* value) {
  // Kept as an int, unlike the bound unsigned long (code 6).
  if (value == nullptr) return LoadOne(scope, section, IDname, kPersistInt, nullptr);
  int asInt = static_cast<int>(*value);
  const int found = LoadOne(scope, section, IDname, kPersistInt, &asInt);
  if (found) *value = static_cast<uint32_t>(asInt);
  return found;
}
int KwPersistence::LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, char16_t* buffer) {
  return LoadOne(scope, section, IDname, kPersistBuffer, buffer);
}
int KwPersistence::LoadKey(int scope, const std::u16string& section, const std::u16string& IDname, std::u16string* value) {
  return LoadOne(scope, section, IDname, kPersistText, value);
}

int KwPersistence::SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const long long* value) {
  return SaveOne(scope, section, IDname, kPersistInt64, value);
}
int KwPersistence::SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const unsigned long long* value) {
  return SaveOne(scope, section, IDname, kPersistUInt64, value);
}
int KwPersistence::SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const int* value) {
  return SaveOne(scope, section, IDname, kPersistInt, value);
}
int KwPersistence::SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const unsigned long* value) {
  if (value == nullptr) return SaveOne(scope, section, IDname, kPersistInt, nullptr);
  const int asInt = static_cast<int>(static_cast<uint32_t>(*value));
  return SaveOne(scope, section, IDname, kPersistInt, &asInt);
}
int KwPersistence::SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const char16_t* buffer) {
  return SaveOne(scope, section, IDname, kPersistBuffer, buffer);
}
int KwPersistence::SaveKey(int scope, const std::u16string& section, const std::u16string& IDname, const std::u16string* value) {
  return SaveOne(scope, section, IDname, kPersistText, value);
}

// ---- lookup ----------------------------------------------------------------------------------------

void* KwPersistence::GetPointer(const std::u16string& section, const std::u16string& IDname) {
  const std::u16string name = GetName(section);
  if (const tagPERSIST* e = Find(name, IDname)) return e->pVariable;
  for (const tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext) {
    if (e->Scope == kPersistUnbound && e->IDname == IDname) {
      // Registered but not bound yet: its section and file are still open.
      PersistTrace(u"Persist.GetPointer: WARNING! Only constant Scope in Section %s allowed", name);
      return nullptr;
    }
  }
  PersistTrace(u"Persist.GetPointer: WARNING! Pointer of Section=%s IDname=%s not found", name, IDname);
  return nullptr;
}

const tagPERSIST* KwPersistence::GetElement(const std::u16string& section, const std::u16string& IDname) const {
  const std::u16string name = GetName(section);
  if (const tagPERSIST* e = Find(name, IDname)) return e;
  PersistTrace(u"Persist.GetElement: List Element section=%s Key=%s not found", name, IDname);
  return nullptr;
}

// ---- sections --------------------------------------------------------------------------------------

bool KwPersistence::IsIniProj(const std::u16string& section) { return KwConfigData::GetIniProjIndex(section) >= 0; }

std::u16string KwPersistence::GetName(const std::u16string& section) {
  std::u16string name = section.substr(0, section.find_first_of(u"]\r\n"));
  const size_t first = name.find_first_not_of(u" \t");
  if (first == std::u16string::npos) return {};
  const size_t last = name.find_last_not_of(u" \t");
  return name.substr(first, last - first + 1);
}

std::unique_ptr<KwConfigData> KwPersistence::CreateCollection(const std::u16string& name) {
  const std::u16string section = GetName(name);
  auto store = std::make_unique<KwConfigData>(section.c_str());
  const std::u16string files[kFileScopeCount] = {u"", u"", u"", GetFile(GetSectionScope(section))};
  store->Load(files);
  return store;
}

int KwPersistence::LoadData(const std::u16string& section, StringArray& lines) {
  lines.clear();
  const std::u16string name = GetName(section);
  ReadSection(GetFile(GetSectionScope(name)), name,
              [&](const std::u16string&, const std::u16string&, const std::u16string& line) { lines.push_back(line); });
  return static_cast<int>(lines.size());
}

int KwPersistence::SaveData(const std::u16string& section, const StringArray& lines) {
  const std::u16string name = GetName(section);
  if (name.empty()) return 0;
  IniText text;
  if (!text.Read(GetFile(GetSectionScope(name)))) return 0;
  int64_t header = text.FindHeader(name);
  if (header < 0) {
    if (lines.empty()) return 1;
    header = text.Count();
    text.Insert(header, u"[" + name + u"]");
  }
  const int64_t end = text.ContentEnd(header);
  // Unchanged lines are left as they are, so that an unchanged section does not rewrite the file.
  int64_t at = header + 1;
  size_t next = 0;
  while (at < end && next < lines.size() && text.Line(at) == lines[next]) ++at, ++next;
  if (at == end && next == lines.size()) return 1;
  text.Erase(lines.empty() ? header : at, end);
  for (int64_t i = at; next < lines.size(); ++next) {
    // A line that would open a section of its own cannot be part of this one.
    if (!lines[next].empty() && lines[next][0] == u'[') continue;
    text.Insert(i++, OneLine(lines[next]));
  }
  return text.Write() ? 1 : 0;
}

// ---- listings --------------------------------------------------------------------------------------

std::u16string KwPersistence::ShowSections() const {
  std::vector<std::pair<std::u16string, int>> sections;  // in chain order
  std::vector<int> counts;
  for (const tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext) {
    size_t i = 0;
    while (i < sections.size() && (sections[i].first != e->Section || sections[i].second != e->Scope)) ++i;
    if (i == sections.size()) {
      sections.emplace_back(e->Section, e->Scope);
      counts.push_back(0);
    }
    ++counts[i];
  }
  std::u16string text = Format(u"Persistence sections: %d\n", static_cast<int>(sections.size()));
  for (size_t i = 0; i < sections.size(); ++i)
    text += Format(u"Section=%s Scope=%d Elements=%d File=%s\n", sections[i].first, sections[i].second, counts[i],
                   GetFile(sections[i].second));
  GetPlatform().DebugOutput(text);
  return text;
}

std::u16string KwPersistence::Table(const std::u16string& title) const {
  std::u16string text = Format(u"================== Persistence-Table with a maximum of %d elements - %s\n", m_MaxElements, title);
  text += u"Element  pSpot   pNext   Scope Section  IDname Type Pointer\n";
  text += std::u16string(79, u'=') + u"\n";
  auto spotOf = [&](const tagPERSIST* e) { return e == nullptr ? -1 : static_cast<int>(e - m_Spots.get()); };
  int n = 0;
  for (const tagPERSIST* e = m_pFirst; e != nullptr; e = e->pNext)
    text += Format(u"%7d  %-6d  %-6d  %5d %s  %s %4d %p\n", n++, spotOf(e), spotOf(e->pNext), e->Scope, e->Section,
                   e->IDname, e->Type, static_cast<const void*>(e->pVariable));
  GetPlatform().DebugOutput(text);
  return text;
}

}  // namespace kw
