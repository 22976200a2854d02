// kw sort: sorts the lines of a text file in the library collation, stably, and writes them in the
// file's own encoding, byte-order mark and line end.
#include <algorithm>
#include <cctype>
#include <cstring>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

#include "Command.h"
#include "base/CodePages.h"
#include "base/IndexSort.h"
#include "base/KwFile.h"
#include "base/Text.h"
#include "platform/Platform.h"

namespace kwtool {

namespace {

constexpr size_t kProgressLines = 100000;  // fewer lines sort too fast for a progress bar
constexpr char16_t kCtrlZ = 26;
constexpr size_t kReadUnits = size_t{1} << 17;  // decoded and split per step
constexpr size_t kTypicalLineUnits = 40;        // for a first guess of the number of lines

struct SortOptions {
  int caseSensitive = 0;
  int numeric = 0;
  int skipBlanks = 0;
  int reverse = 0;
  size_t columnFrom = 0;  // 0-based first character of the key
  size_t columnTo = std::u16string_view::npos;  // 0-based end (exclusive)
  int encoding = -1;  // -1: from the byte-order mark
};

// "FROM-TO" or "FROM-", 1-based and inclusive.
bool ParseColumns(const std::string& text, SortOptions& options) {
  const size_t dash = text.find('-');
  if (dash == std::string::npos || dash == 0) return false;
  try {
    size_t used = 0;
    const unsigned long from = std::stoul(text.substr(0, dash), &used);
    if (used != dash || from < 1) return false;
    options.columnFrom = from - 1;
    if (dash + 1 < text.size()) {
      const unsigned long to = std::stoul(text.substr(dash + 1), &used);
      if (used != text.size() - dash - 1 || to < from) return false;
      options.columnTo = to;
    }
  } catch (const std::exception&) {
    return false;
  }
  return true;
}

// A block for the decoded text of a file. On Linux it asks for transparent huge pages: filling a
// hundred megabytes of fresh 4 KB pages, one page fault each, costs more than decoding into them.
// The advice is only advice; without it the block is the same.
std::unique_ptr<char16_t[]> AllocateText(size_t units) {
  std::unique_ptr<char16_t[]> block(new char16_t[units]);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr uintptr_t kHugePage = uintptr_t{1} << 21;
  const auto begin = reinterpret_cast<uintptr_t>(block.get());
  const uintptr_t first = (begin + kHugePage - 1) & ~(kHugePage - 1);
  const uintptr_t last = (begin + units * sizeof(char16_t)) & ~(kHugePage - 1);
  if (last > first) madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
  return block;
}

// Finds the lines of a text as it arrives block by block: CR LF, CR and LF end a line. The text stays
// where it is; each line is a view of it.
class LineSplitter {
 public:
  // Takes the lines that end in text[0, size) beyond those taken before. A CR at the very end waits
  // for the next call, since an LF may follow it. With `final` the text is complete: the rest up to
  // `size` is the last line, also without a line end.
  void Scan(const char16_t* text, size_t size, bool final, std::vector<std::u16string_view>& lines) {
    while (pos_ < size) {
      // Units that cannot end a line are skipped four at a time; only a unit below 14 (tabs among
      // them) is looked at on its own.
      while (pos_ + 4 <= size) {
        uint64_t w;
        std::memcpy(&w, text + pos_, sizeof w);
        if (((w - 0x000E000E000E000EULL) & ~w & 0x8000800080008000ULL) != 0) break;
        pos_ += 4;
      }
      if (pos_ >= size) break;
      const char16_t c = text[pos_];
      if (c != u'\r' && c != u'\n') {
        ++pos_;
        continue;
      }
      if (c == u'\r' && pos_ + 1 >= size && !final) return;
      lines.emplace_back(text + start_, pos_ - start_);
      if (c == u'\r' && pos_ + 1 < size && text[pos_ + 1] == u'\n') ++pos_;
      start_ = ++pos_;
    }
    if (final && start_ < size) {
      lines.emplace_back(text + start_, size - start_);
      start_ = pos_ = size;
    }
  }

 private:
  size_t start_ = 0;  // where the line being scanned starts
  size_t pos_ = 0;    // the next unit to look at; invariant start_ <= pos_
};

// Writes UTF-16 text to a stream in one of the five encodings (standard output has no file name
// for KwFile).
class EncodedStream {
 public:
  EncodedStream(std::FILE* out, int encoding) : out_(out), codePage_(static_cast<unsigned>(kw::GetCodePageID(encoding))) {}
  bool Write(std::u16string_view text) {
    while (!text.empty()) {
      int64_t used = 0, written = 0;
      const uint32_t rc = kw::EncodeUnits(codePage_, text.data(), static_cast<int64_t>(text.size()), bytes_,
                                          sizeof bytes_, 0, nullptr, nullptr, true, &used, &written);
      if ((rc != 0 && rc != kw::kErrorInsufficientBuffer) || used == 0) return false;
      if (std::fwrite(bytes_, 1, static_cast<size_t>(written), out_) != static_cast<size_t>(written)) return false;
      text.remove_prefix(static_cast<size_t>(used));
    }
    return true;
  }

 private:
  std::FILE* out_;
  unsigned codePage_;
  char bytes_[1 << 16];
};

int RunSort(const std::vector<std::string>& argv) {
  Args args(argv);
  SortOptions options;
  std::string output, columns, encoding;
  const bool hasOutput = args.Option("output", output, "-o");
  const bool hasColumns = args.Option("column", columns);
  const bool hasEncoding = args.Option("encoding", encoding);
  options.numeric = args.Flag("numeric") ? 1 : 0;
  options.caseSensitive = args.Flag("case") ? 1 : 0;
  options.skipBlanks = args.Flag("skip-blanks") ? 1 : 0;
  options.reverse = args.Flag("reverse") ? 1 : 0;
  const std::vector<std::string> files = args.Positional();
  if (!args.error.empty()) return Fail(args.error, 2);
  if (files.size() != 1) return Fail("sort needs exactly one FILE", 2);
  if (hasColumns && !ParseColumns(columns, options)) return Fail("--column wants FROM-TO, counted from 1", 2);
  if (hasEncoding && (options.encoding = ParseEncoding(encoding)) < 0)
    return Fail("sort: unknown encoding '" + encoding + "' (ansi, utf-8, utf-16le, utf-16be, dos)", 2);

  // Read the whole text in the file's encoding.
  const std::u16string name = kw::FromUtf8(files[0]);
  unsigned char lineEnd = 13;
  kw::GetFileEncoding(name, &lineEnd);
  kw::KwFile in;
  if (!in.Open(name, kw::KwFile::kRead, lineEnd, 0, options.encoding)) return Fail("cannot open " + files[0]);
  const int fileEncoding = in.GetEncoding();
  const bool mark = in.HasByteOrderMark();
  // Decoded straight into one buffer (no encoding gives more UTF-16 units than the file has bytes)
  // and split into lines block by block, while each block is fresh in the cache.
  std::error_code sizeError;
  const auto fileBytes = std::filesystem::file_size(std::filesystem::path(files[0]), sizeError);
  size_t capacity = sizeError ? (size_t{1} << 20) : static_cast<size_t>(fileBytes) + 1;
  std::unique_ptr<char16_t[]> buffer = AllocateText(capacity);
  std::vector<std::u16string_view> lines;
  lines.reserve(capacity / kTypicalLineUnits);
  LineSplitter splitter;
  size_t size = 0;
  for (int64_t got; (got = in.ReadBlock(buffer.get() + size, static_cast<int64_t>(std::min(kReadUnits, capacity - size)))) > 0;) {
    size += static_cast<size_t>(got);
    splitter.Scan(buffer.get(), size, false, lines);
    if (size == capacity) {  // the file grew while being read: a larger buffer, the lines moved along
      std::unique_ptr<char16_t[]> larger = AllocateText(capacity * 2);
      std::copy(buffer.get(), buffer.get() + size, larger.get());
      for (auto& line : lines) line = {larger.get() + (line.data() - buffer.get()), line.size()};
      buffer.swap(larger);
      capacity *= 2;
    }
  }
  in.Close();
  // DOS text may end in Ctrl-Z; it stays at the end rather than being sorted as a line.
  const bool endsWithCtrlZ = size > 0 && buffer[size - 1] == kCtrlZ;
  splitter.Scan(buffer.get(), endsWithCtrlZ ? size - 1 : size, true, lines);

  // The keys: the lines themselves, or the columns asked for.
  std::vector<std::u16string_view> columnKeys;
  if (hasColumns) {
    columnKeys.resize(lines.size());
    for (size_t i = 0; i < lines.size(); ++i)
      columnKeys[i] = options.columnFrom >= lines[i].size()
                          ? std::u16string_view()
                          : lines[i].substr(options.columnFrom, options.columnTo == std::u16string_view::npos
                                                                    ? std::u16string_view::npos
                                                                    : options.columnTo - options.columnFrom);
  }
  const std::vector<std::u16string_view>& keys = hasColumns ? columnKeys : lines;

  std::unique_ptr<kw::KwProgress> progress;
  if (lines.size() >= kProgressLines) progress = kw::GetPlatform().CreateProgress(u"Sort");
  std::vector<int64_t> order;
  if (!kw::SortTextsStable(keys, options.caseSensitive, options.numeric, options.skipBlanks, options.reverse, order,
                           progress.get()))
    return Fail("sort stopped");
  progress.reset();

  // Out in blocks: one converter call per block rather than per line.
  const std::u16string_view end = lineEnd == 10 ? std::u16string_view(u"\n") : std::u16string_view(u"\r\n");
  auto writeAll = [&](auto&& write) {
    constexpr size_t kBlock = 1 << 20;
    std::u16string block;
    block.reserve(kBlock + 4096);
    // The lines come in sorted order from anywhere in the text: their memory is asked for a few
    // lines ahead.
    constexpr size_t kAhead = 16;
    for (size_t k = 0; k < order.size(); ++k) {
      if (k + kAhead < order.size()) __builtin_prefetch(lines[static_cast<size_t>(order[k + kAhead])].data());
      const std::u16string_view line = lines[static_cast<size_t>(order[k])];
      if (line.size() > kBlock) {
        if (!write(block) || !write(line)) return false;
        block.clear();
      } else {
        block += line;
      }
      block += end;
      if (block.size() >= kBlock) {
        if (!write(block)) return false;
        block.clear();
      }
    }
    if (endsWithCtrlZ) block += kCtrlZ;
    return block.empty() || write(block);
  };
  if (hasOutput) {
    kw::KwFile out;
    if (!out.Open(kw::FromUtf8(output), kw::KwFile::kWrite, lineEnd, 0, fileEncoding))
      return Fail("cannot create " + output);
    out.SetEncoding(fileEncoding, mark);
    const bool ok = writeAll([&out](std::u16string_view s) { return out.Write(s); });
    if (!out.Close() || !ok) return Fail("cannot write " + output);
    return 0;
  }
  EncodedStream out(stdout, fileEncoding);
  bool ok = !mark || fileEncoding < 1 || fileEncoding > 3 || out.Write(u"\uFEFF");
  ok = ok && writeAll([&out](std::u16string_view s) { return out.Write(s); });
  if (std::fflush(stdout) != 0 || !ok) return Fail("cannot write to standard output");
  return 0;
}

}  // namespace

KW_COMMAND("sort",
            "kw sort FILE [-o OUT] [--numeric] [--case] [--skip-blanks] [--column FROM-TO] [--reverse] [--encoding ENC]",
            "sort the lines of a file in the library collation (stable), keeping its encoding and line end",
            &RunSort);

}  // namespace kwtool
