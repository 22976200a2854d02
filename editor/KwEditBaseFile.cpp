// KwEditBase: reading, merging and saving files, the backup, the encoding and the external-change watch.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <string>

#include "app/KwWinApp.h"
#include "app/QueryBox.h"
#include "app/StringTable.h"
#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "base/KwFile.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditBaseRecount.h"
#include "editor/KwEditUndo.h"
#include "platform/Memory.h"
#include "platform/Platform.h"

namespace kw {

namespace {

constexpr char16_t kCR = 13;
constexpr char16_t kLF = 10;
const std::u16string kSender = u"EditBase";
constexpr uint32_t kQuestionPicture = 1085;
constexpr uint32_t kIdsEncodingNames = 1148;
constexpr uint32_t kIdsConvertEncoding = 1156;
constexpr uint32_t kIdsAppendEOL = 1900;
constexpr uint32_t kIdsEmptySave = 1929;
constexpr uint32_t kIdsReadOnly = 1933;

// Clears a flag on every way out.
class FlagGuard {
 public:
  explicit FlagGuard(int& flag) : flag_(flag) { flag_ = 1; }
  ~FlagGuard() { flag_ = 0; }
  FlagGuard(const FlagGuard&) = delete;
  FlagGuard& operator=(const FlagGuard&) = delete;

 private:
  int& flag_;
};

// Fills `buf` with up to `max` units; fewer only at the end of the file.
int64_t ReadFull(KwFile& file, char16_t* buf, int64_t max) {
  int64_t got = 0;
  while (got < max) {
    const int64_t n = file.ReadBlock(buf + got, max - got);
    if (n <= 0) break;
    got += n;
  }
  return got;
}

std::u16string EncodingName(int encoding) {
  const std::u16string names = LoadString(kIdsEncodingNames);
  size_t from = 0;
  for (int i = 0; i < encoding; ++i) {
    const size_t bar = names.find(u'|', from);
    if (bar == std::u16string::npos) return {};
    from = bar + 1;
  }
  return names.substr(from, names.find(u'|', from) - from);
}

std::u16string LastErrorText() { return GetPlatform().GetErrorText(GetPlatform().GetLastError()); }

std::filesystem::path PathOf(const std::u16string& name) {
  const std::string utf8 = ToUtf8(name);
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

// A name for the temporary file beside `target`, unique within this process and, by the time and the
// process's address space, practically across processes.
std::u16string TempNameFor(const std::u16string& target) {
  static std::atomic<uint64_t> counter{0};
  const auto now = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  const uint64_t tag = now ^ (reinterpret_cast<uintptr_t>(&counter) << 7) ^ (++counter * 0x9E3779B97F4A7C15ull);
  const std::filesystem::path path = PathOf(target);
  const std::u8string file = path.filename().u8string();
  const std::string stem(file.begin(), file.end());
  const std::u8string parent = path.parent_path().u8string();
  std::u16string dir = FromUtf8(std::string(parent.begin(), parent.end()));
  if (!dir.empty() && dir.back() != u'/') dir.push_back(u'/');
  std::string hex;
  for (int i = 0; i < 12; ++i) hex.push_back("0123456789abcdef"[(tag >> (4 * i)) & 15]);
  return dir + FromUtf8("." + stem + "." + hex + ".kwtmp");
}

}  // namespace

// Without an application object: make backups 1, EOL display character a blank, option 0.
KwEditParams KwEditBase::EditParameters() { return IsKwWinApp() ? GetKwWinApp()->GetEditParams() : KwEditParams(); }

// ---- Reading ---------------------------------------------------------------------------------------

int KwEditBase::ReadFile(const std::u16string& name, int mode, KwProgress* progress, double fromPercent,
                         double toPercent) {
  KW_ASSERT(mode >= 0 && mode <= 2);
  if (mode < 0 || mode > 2) return 0;
  return ReadBlocks(name, mode, progress, fromPercent, toPercent);
}

int KwEditBase::ReadBlocks(const std::u16string& name, int mode, KwProgress* progress, double fromPercent,
                           double toPercent) {
  unsigned char lineEnd = 13;
  int encoding = GetFileEncoding(name, &lineEnd);
  if (encoding == 0 && m_ReadEncoding >= 0 && m_ReadEncoding <= 4) encoding = m_ReadEncoding;
  KwFile file;
  if (!file.Open(name, KwFile::kRead, 13, 0, encoding)) {
    if (IsKwWinApp() && GetKwWinApp()->GetTraceMode())
      GetKwWinApp()->Trace(u"EditBase.ReadFile: NotOpened: Name=%s", name);
    return 0;
  }
  const int64_t size = SizeOf(name);
  const int unitBytes = encoding == 2 || encoding == 3 ? 2 : 1;
  if (mode != 2) InitEdit();

  int64_t read = 0;  // characters read so far, the skipped first block included
  if (mode == 2) {
    std::u16string skip(static_cast<size_t>(m_ChunkUnits), u'\0');
    read = ReadFull(file, skip.data(), m_ChunkUnits);
    if (read < m_ChunkUnits) return 1;  // nothing lies behind the first block
  }
  m_EOLText[0] = lineEnd == 10 ? kLF : kCR;
  m_EOLText[1] = lineEnd == 10 ? 0 : kLF;
  m_EOLText[2] = 0;
  m_EOLLength = lineEnd == 10 ? 1 : 2;
  // Each chunk is counted as soon as it is read, while its units are still in the cache; appending
  // counts the chunks already there first.
  Recount recount(*this);
  bool whole = true;  // nothing was cut at the maximum characters
  tagTEXTDESC* tail = m_Head;
  if (mode == 2) {
    for (tagTEXTDESC* c = m_Head; c && whole;) {
      tagTEXTDESC* next = c->next;  // Add may free an empty chunk
      whole = recount.Add(c);
      c = next;
    }
    while (tail->next) tail = tail->next;
  }
  int result = 1;
  for (bool first = true; whole; first = false) {
    tagTEXTDESC* chunk = first && mode != 2 ? m_Head : NewElement(m_ChunkUnits);
    if (chunk == nullptr) break;  // out of memory: keep what was read
    if (chunk->capacity < m_ChunkUnits) break;
    // Where the system gives no huge page, a fresh chunk takes one page fault per 4 KB at its first
    // writes, and on a big file those cost more than the decoding: while at least a block of the file
    // is left, the chunk's pages are asked for in one call.
    if (size - read * unitBytes >= m_ChunkUnits * unitBytes)
      PrefaultForWriting(chunk->text, static_cast<size_t>(m_ChunkUnits) * sizeof(char16_t));
    const int64_t n = ReadFull(file, chunk->text, m_ChunkUnits);
    chunk->used = static_cast<uint32_t>(n);
    if (chunk != m_Head) {
      if (n == 0) {
        FreeText(chunk);
        delete chunk;
        break;
      }
      InsertAfter(tail, chunk);
      tail = chunk;
    }
    whole = recount.Add(chunk);  // a cut keeps nothing behind it: reading stops below
    read += n;
    if (n < m_ChunkUnits) break;
    if (mode == 1) {
      result = 2;
      break;
    }
    if (progress && size > 0) {
      const double done = std::min(1.0, static_cast<double>(read) * unitBytes / static_cast<double>(size));
      if (!progress->Step(static_cast<int>(fromPercent + (toPercent - fromPercent) * done))) break;
    }
  }
  recount.Finish(1);
  // The form-feed lines are looked for only when the count met a form feed.
  if (recount.SawFormFeed())
    BuildFFTable();
  else
    m_FFTable.clear();
  m_Encoding = encoding;
  m_ByteOrderMark = file.HasByteOrderMark();
  m_DocName = name;
  ClearDocChange();
  m_Undo->Clear(0);
  m_Undo->SetModified(0);
  return result;
}

int KwEditBase::MergeFile(Line line, int64_t column, const std::u16string& name, int64_t firstLine,
                          int64_t lineCount, int recordUndo) {
  if (line < 0 || line > m_LinesInDoc || column < 0 || column > LineLength(line, 0) || firstLine < 0) {
    KW_ASSERT(!"MergeFile: wrong position");
    return 0;
  }
  int encoding = GetFileEncoding(name, nullptr);
  if (encoding == 0 && m_ReadEncoding >= 0 && m_ReadEncoding <= 4) encoding = m_ReadEncoding;
  KwFile file;
  if (!file.Open(name, KwFile::kRead, 13, 0, encoding)) return 0;
  std::u16string all;
  std::u16string block(static_cast<size_t>(kChunkUnits), u'\0');
  for (;;) {
    const int64_t n = file.ReadBlock(block.data(), kChunkUnits);
    if (n <= 0) break;
    all.append(block.data(), static_cast<size_t>(n));
  }
  // Cut into lines at CR LF, CR or LF; keep the wanted ones with the document's end of line.
  const std::u16string eol(m_EOLText, static_cast<size_t>(m_EOLLength));
  std::u16string text;
  int64_t number = 0;
  size_t at = 0;
  while (at < all.size() && (lineCount < 0 || number < firstLine + lineCount)) {
    size_t end = at;
    while (end < all.size() && all[end] != kCR && all[end] != kLF) ++end;
    const bool terminated = end < all.size();
    if (number >= firstLine) {
      text.append(all, at, end - at);
      if (terminated) text.append(eol);
    }
    ++number;
    at = end;
    if (terminated) at += all[end] == kCR && end + 1 < all.size() && all[end + 1] == kLF ? 2 : 1;
  }
  const Index where = LineStart(line) + column;
  return SelReplaceAt(where, where, text.data(), static_cast<int64_t>(text.size()), recordUndo ? 1 : 0);
}

// ---- Saving ------------------------------------------------------------------------------------------

int KwEditBase::WriteFile(const std::u16string& name, int flags, std::u16string* errorText) {
  if (m_Busy) return 0;
  FlagGuard busy(m_Busy);
  const std::u16string target = name.empty() ? m_DocName : name;
  KW_ASSERT(!target.empty());
  if (target.empty()) return 0;
  if (errorText) errorText->clear();

  // Questions, in this order: empty text (Cancel is the first button), read-only target, no final EOL.
  if (m_TotalChars == 0 && m_Interactive && QueryBox(kSender, 0, kQuestionPicture, 0, kIdsEmptySave) != -2) return 0;
  if (IsExisting(target) && IsReadOnly(target)) {
    if (!m_Interactive || QueryBox(kSender, 0, kQuestionPicture, 0, kIdsReadOnly) != 1) {
      if (errorText && !m_Interactive) *errorText = LoadString(kIdsReadOnly);
      return 0;
    }
    if (!SetReadOnly(target, false)) {
      if (errorText) *errorText = LastErrorText();
      return 0;
    }
  }
  if (GetModified() && TestLastLine(2) && m_Interactive) {
    const int64_t answer = QueryBox(kSender, 0, kQuestionPicture, 0, kIdsAppendEOL);
    if (answer == 1)
      AppendEOL();
    else if (answer != -2)
      return 0;
  }

  if (!WriteText(target, flags, errorText)) return 0;
  if (!(flags & 1)) {
    m_DocName = target;
    ClearDocChange();
    SetModified(0);
  }
  return 1;
}

// Writes the text to a temporary file beside `target`, then moves the old file to its backup and the
// temporary file to `target`. Every failure removes the temporary file and leaves the old file in place
// (or, when only the last rename failed, moves the backup back).
int KwEditBase::WriteText(const std::u16string& target, int flags, std::u16string* errorText) {
  const std::u16string temp = TempNameFor(target);
  auto fail = [&]() {
    if (errorText && errorText->empty()) *errorText = LastErrorText();
    DeleteTheFile(temp);
    return 0;
  };
  {
    KwFile out;
    if (!out.Open(temp, KwFile::kWrite, m_EOLText[0], 0, m_Encoding)) return fail();
    bool ok = out.SetEncoding(m_Encoding, m_ByteOrderMark);
    for (const tagTEXTDESC* c = m_Head; c && ok; c = c->next) ok = out.Write(c->text, c->used);
    ok = ok && out.SetEOF();
    ok = out.Close() && ok;
    if (!ok) return fail();
  }
  std::error_code ec;
  const std::filesystem::path targetPath = PathOf(target);
  const bool existed = IsExisting(target);
  if (existed) {
    const auto perms = std::filesystem::status(targetPath, ec).permissions();
    if (!ec) std::filesystem::permissions(PathOf(temp), perms, ec);  // a copy without them is still the text
  }
  std::u16string backup;
  if (existed && !(flags & 1)) {
    if (!MakeBackup(target, &backup)) return fail();
  }
  if (!RenameTheFile(temp, target, true)) {
    const std::u16string reason = LastErrorText();
    if (!backup.empty() && !IsExisting(target)) RenameTheFile(backup, target, false);
    if (errorText) *errorText = reason;
    DeleteTheFile(temp);
    return 0;
  }
  m_FileTime = GetLastWriteTime(target);
  return 1;
}

int KwEditBase::SaveBakFile() { return MakeBackup(m_DocName, nullptr); }

int KwEditBase::MakeBackup(const std::u16string& name, std::u16string* backupName) {
  if (backupName) backupName->clear();
  if (!EditParameters().makeBackups || name.empty()) return 1;
  const std::filesystem::path path = PathOf(name);
  const std::u8string ext = path.extension().u8string();
  if (CompareFileNames(FromUtf8(std::string(ext.begin(), ext.end())), u".BAK") == 0) return 1;
  if (!IsExisting(name)) return 1;
  const std::u16string backup = ReplaceExtension(name, u"BAK");
  if (IsExisting(backup) && !DeleteTheFile(backup)) return 0;
  if (!RenameTheFile(name, backup, false)) return 0;
  if (backupName) *backupName = backup;
  return 1;
}

// ---- Encoding -----------------------------------------------------------------------------------

int KwEditBase::SetEncoding(int encoding, int flags) {
  KW_ASSERT(encoding >= 0 && encoding <= 4);
  if (encoding < 0 || encoding > 4) return 0;
  const bool mark = !(flags & 2) && encoding >= 1 && encoding <= 3;
  if (encoding == m_Encoding && mark == m_ByteOrderMark) return 1;
  if ((flags & 1) && encoding != m_Encoding) {
    const std::u16string now = EncodingName(m_Encoding);
    const std::u16string next = EncodingName(encoding);
    if (QueryBox(kSender, 0, kQuestionPicture, 0, kIdsConvertEncoding, now, next) != 1) return 0;
  }
  m_Encoding = encoding;
  m_ByteOrderMark = mark;
  SetModified(1);
  return 1;
}

// ---- External changes ---------------------------------------------------------------------------

int KwEditBase::DidDocChange() {
  if (m_DetectChange && !m_DocChanged && !m_DocName.empty()) {
    // A stored time and a present time that differ in any way mean that another program wrote the file
    // (or removed it); equal times are no change.
    if (GetLastWriteTime(m_DocName) != m_FileTime) m_DocChanged = 1;
  }
  return m_DocChanged;
}

void KwEditBase::ClearDocChange() {
  m_DocChanged = 0;
  m_FileTime = m_DocName.empty() ? 0 : GetLastWriteTime(m_DocName);
}

}  // namespace kw
