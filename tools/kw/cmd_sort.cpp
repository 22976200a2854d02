// kw sort: sorts the lines of a text file in the library collation, stably, and writes them in the
// file's own encoding, byte-order mark and line end.
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

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
constexpr size_t kTwoHalvesFrom = 200000;  // from here two halves are sorted at once

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

// "ansi", "utf-8", "utf-16le", "utf-16be", "dos" or the numbers 0..4, case-blind; -1 when unknown.
// The lines of a text: CR LF, CR and LF end a line; a last line without a line end counts.
std::vector<std::u16string_view> SplitLines(std::u16string_view text) {
  std::vector<std::u16string_view> lines;
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c != u'\r' && c != u'\n') continue;
    lines.push_back(text.substr(start, i - start));
    if (c == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
    start = i + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

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

// Sorts the keys stably. Large inputs are sorted in two halves at once, the second on a thread of its
// own (each half is an independent library call; the collation functions are pure), and then merged
// with StrCompare, the second half's line going first only when it is strictly less.
bool SortKeys(const std::vector<std::u16string_view>& keys, const SortOptions& o, std::vector<int64_t>& order,
              kw::KwProgress* progress) {
  const size_t n = keys.size();
  if (n < kTwoHalvesFrom || std::thread::hardware_concurrency() < 2)
    return kw::SortTextsStable(keys, o.caseSensitive, o.numeric, o.skipBlanks, o.reverse, order, progress) != 0;
  const size_t half = n / 2;
  const std::vector<std::u16string_view> low(keys.begin(), keys.begin() + static_cast<std::ptrdiff_t>(half));
  const std::vector<std::u16string_view> high(keys.begin() + static_cast<std::ptrdiff_t>(half), keys.end());
  std::vector<int64_t> lowOrder, highOrder;
  std::thread second([&] { kw::SortTextsStable(high, o.caseSensitive, o.numeric, o.skipBlanks, o.reverse, highOrder, nullptr); });
  const int done = kw::SortTextsStable(low, o.caseSensitive, o.numeric, o.skipBlanks, o.reverse, lowOrder, progress);
  second.join();
  if (!done || highOrder.size() != n - half) return false;
  order.clear();
  order.reserve(n);
  size_t i = 0, j = 0;
  while (i < lowOrder.size() && j < highOrder.size()) {
    const std::u16string_view a = keys[static_cast<size_t>(lowOrder[i])];
    const std::u16string_view b = keys[half + static_cast<size_t>(highOrder[j])];
    const int c = kw::StrCompare(b.data(), static_cast<int64_t>(b.size()), a.data(), static_cast<int64_t>(a.size()),
                                 o.caseSensitive, o.numeric, o.skipBlanks);
    if (o.reverse ? c > 0 : c < 0)
      order.push_back(static_cast<int64_t>(half) + highOrder[j++]);
    else
      order.push_back(lowOrder[i++]);
  }
  while (i < lowOrder.size()) order.push_back(lowOrder[i++]);
  while (j < highOrder.size()) order.push_back(static_cast<int64_t>(half) + highOrder[j++]);
  return true;
}

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
  // Decoded straight into one buffer: no encoding gives more UTF-16 units than the file has bytes.
  std::error_code sizeError;
  const auto fileBytes = std::filesystem::file_size(std::filesystem::path(files[0]), sizeError);
  size_t capacity = sizeError ? (size_t{1} << 20) : static_cast<size_t>(fileBytes) + 1;
  std::unique_ptr<char16_t[]> buffer(new char16_t[capacity]);
  size_t size = 0;
  for (int64_t got; (got = in.ReadBlock(buffer.get() + size, static_cast<int64_t>(capacity - size))) > 0;) {
    size += static_cast<size_t>(got);
    if (size == capacity) {  // the file grew while being read
      std::unique_ptr<char16_t[]> larger(new char16_t[capacity * 2]);
      std::copy(buffer.get(), buffer.get() + size, larger.get());
      buffer.swap(larger);
      capacity *= 2;
    }
  }
  std::u16string_view text(buffer.get(), size);
  in.Close();
  // DOS text may end in Ctrl-Z; it stays at the end rather than being sorted as a line.
  const bool endsWithCtrlZ = !text.empty() && text.back() == kCtrlZ;
  if (endsWithCtrlZ) text.remove_suffix(1);

  const std::vector<std::u16string_view> lines = SplitLines(text);
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
  if (!SortKeys(keys, options, order, progress.get())) return Fail("sort stopped");
  progress.reset();

  // Out in blocks: one converter call per block rather than per line.
  const std::u16string_view end = lineEnd == 10 ? std::u16string_view(u"\n") : std::u16string_view(u"\r\n");
  auto writeAll = [&](auto&& write) {
    constexpr size_t kBlock = 1 << 20;
    std::u16string block;
    block.reserve(kBlock + 4096);
    for (const int64_t i : order) {
      const std::u16string_view line = lines[static_cast<size_t>(i)];
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
