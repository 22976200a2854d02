// kw list: reads a delimited file into a list without a window, sorts and filters it as the list
// engine does for a header click and the selection filter, and prints the rows as a report aligned in
// columns (UTF-8).
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "Command.h"
#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/KwFile.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "lists/KwListCtrl.h"
#include "lists/KwUniFilters.h"

namespace kwtool {

namespace {

constexpr int kCharWidth = 8;        // pixels per character of the report
constexpr const char16_t* kGap = u"  ";   // between two columns of the report

struct ListOptions {
  char16_t separator = 0;  // 0: guessed from the first line
  bool header = false;
  int encoding = -1;
};

// A column number counted from 1, within 1..columns; -1 otherwise.
int ParseColumn(const std::string& text, int columns) {
  if (text.empty() || text.size() > 3 || !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; })) return -1;
  const int column = std::stoi(text);
  return column >= 1 && column <= columns ? column - 1 : -1;
}

std::string ColumnError(const std::string& text, int columns) {
  return "list: bad column number '" + text + "' (the file has " + std::to_string(columns) + " column" +
         (columns == 1 ? "" : "s") + ", counted from 1)";
}

// Splits "COL=REST" at the first "=".
bool SplitAssignment(const std::string& text, std::string& column, std::string& rest) {
  const size_t eq = text.find('=');
  if (eq == std::string::npos) return false;
  column = text.substr(0, eq);
  rest = text.substr(eq + 1);
  return true;
}

size_t Width(std::u16string_view s) {
  size_t n = 0;
  for (const char16_t c : s) n += (c < 0xDC00 || c > 0xDFFF) ? 1 : 0;  // a surrogate pair is one
  return n;
}

// Appends the cell fitted to `width` characters: cut when longer, padded on the aligned side (the
// last column is not padded on the right).
void AppendFitted(std::u16string& out, std::u16string_view cell, size_t width, int align, bool last) {
  while (Width(cell) > width) cell.remove_suffix(1);
  const size_t pad = width - Width(cell);
  const size_t before = align == kw::kListAlignRight ? pad : align == kw::kListAlignCenter ? pad / 2 : 0;
  out.append(before, u' ');
  out += cell;
  if (!last) out.append(pad - before, u' ');
}

// Appends one report line: the cells in their columns, blanks at the end removed.
template <class Cells>
void AppendLine(std::u16string& out, const Cells& cells, const std::vector<size_t>& widths, const std::vector<int>& align) {
  for (size_t c = 0; c < widths.size(); ++c) {
    if (c > 0) out += kGap;
    AppendFitted(out, c < cells.size() ? std::u16string_view(cells[c]) : std::u16string_view(), widths[c], align[c],
                 c + 1 == widths.size());
  }
  out.erase(out.find_last_not_of(u' ') + 1);
  out += u'\n';
}

int RunList(const std::vector<std::string>& argv) {
  Args args(argv);
  ListOptions options;
  std::string separator, sort, widthsText, encoding, value;
  std::vector<std::string> types, filters;
  const bool hasSeparator = args.Option("separator", separator);
  while (args.Option("type", value)) types.push_back(value);
  const bool hasSort = args.Option("sort", sort);
  while (args.Option("filter", value)) filters.push_back(value);
  const bool hasWidths = args.Option("widths", widthsText);
  const bool hasEncoding = args.Option("encoding", encoding);
  options.header = args.Flag("header");
  const std::vector<std::string> files = args.Positional();
  if (!args.error.empty()) return Fail(args.error, 2);
  if (files.size() != 1) return Fail("list needs exactly one FILE", 2);
  if (hasSeparator) {
    const std::u16string s = separator == "tab" ? std::u16string(u"\t") : kw::FromUtf8(separator);
    if (s.size() != 1 || s[0] == u'\r' || s[0] == u'\n') return Fail("list: --separator wants one character (or 'tab')", 2);
    options.separator = s[0];
  }
  if (hasEncoding && (options.encoding = ParseEncoding(encoding)) < 0)
    return Fail("list: unknown encoding '" + encoding + "' (ansi, utf-8, utf-16le, utf-16be, dos)", 2);

  // The rows go into the list as they are read; blank lines carry no row. The columns follow
  // from the widest row, their widths from the longest cell, as a window sizes them to content.
  kw::KwFile in;
  if (!in.Open(kw::FromUtf8(files[0]), kw::KwFile::kRead, 13, 26, options.encoding))
    return Fail("list: cannot open " + files[0]);
  kw::KwListCtrl list;
  list.GetHeadless()->SetClientRect({0, 0, 0, 1 << 30});  // every row on one page: no scroll bar
  std::vector<std::u16string> headings;
  std::vector<size_t> chars;
  bool first = true;
  uint64_t lineNumber = 0;
  for (std::u16string line; in.ReadLine(line);) {
    ++lineNumber;
    if (line.find_first_not_of(u" \t") == std::u16string::npos) continue;
    if (first) {
      if (options.separator == 0) options.separator = kw::StrDelimOf(line, u"\t;|,", u'"');
      if (options.separator == 0) options.separator = u'\t';
      list.SetSeparator(options.separator);
    }
    size_t c = 0;
    for (size_t start = 0;; ++c) {
      const size_t end = line.find(options.separator, start);
      const size_t width = Width(std::u16string_view(line).substr(start, end == std::u16string::npos ? end : end - start));
      if (c >= chars.size()) chars.push_back(1);
      chars[c] = std::max(chars[c], width);
      if (first && options.header) headings.push_back(line.substr(start, end == std::u16string::npos ? end : end - start));
      if (end == std::u16string::npos) break;
      start = end + 1;
    }
    if (chars.size() > static_cast<size_t>(kw::kListMaxColumns))
      return Fail("list: line " + std::to_string(lineNumber) + " has " + std::to_string(chars.size()) +
                  " columns; a list has at most " + std::to_string(kw::kListMaxColumns));
    if (!(first && options.header)) list.InsertItem(-1, line, lineNumber);
    first = false;
  }
  in.Close();
  const int columns = static_cast<int>(chars.size());
  headings.resize(chars.size());
  int total = 0;
  for (int c = 0; c < columns; ++c) {
    list.InsertColumn(c, headings[c], static_cast<int>(chars[c]) * kCharWidth);
    total += static_cast<int>(chars[c]) * kCharWidth;
  }
  list.GetHeadless()->SetClientRect({0, 0, total, 1 << 30});

  for (const auto& type : types) {
    std::string column, kind;
    if (!SplitAssignment(type, column, kind)) return Fail("list: --type wants COL=text|textcase|number|date:FORMAT", 2);
    const int c = ParseColumn(column, columns);
    if (c < 0) return Fail(ColumnError(column, columns), 2);
    if (kind == "text") {
      list.SetSortModus(c, kw::kListSortText);
    } else if (kind == "textcase") {
      list.SetSortModus(c, kw::kListSortTextCase);
    } else if (kind == "number") {
      list.SetSortModus(c, kw::kListSortNumber);
      list.SetTextAlign(c, kw::kListAlignRight);
    } else if (kind.rfind("date:", 0) == 0 && kind.size() > 5) {
      list.SetSortModus(c, kw::kListSortTime, 1, kw::FromUtf8(kind.substr(5)).c_str());
    } else {
      return Fail("list: bad type '" + kind + "' (text, textcase, number or date:FORMAT such as date:%d.%m.%Y)", 2);
    }
  }

  if (hasSort) {
    const size_t comma = sort.find(',');
    const std::string column = sort.substr(0, comma);
    const std::string direction = comma == std::string::npos ? "" : sort.substr(comma + 1);
    const int c = ParseColumn(column, columns);
    if (c < 0) return Fail(ColumnError(column, columns), 2);
    if (direction != "" && direction != "asc" && direction != "desc")
      return Fail("list: --sort wants COL or COL,desc", 2);
    if (direction == "desc") list.SetColToSort(c + 1);  // the sort below turns it
    list.Sort(c, direction == "desc" ? 0 : 1);
  }

  // Every filter must match: each selects its rows, and only rows chosen by all are shown.
  std::vector<bool> shown(static_cast<size_t>(list.GetItemCount()), true);
  for (const auto& filter : filters) {
    std::string column, text;
    if (!SplitAssignment(filter, column, text)) return Fail("list: --filter wants COL=TEXT", 2);
    const int c = ParseColumn(column, columns);
    if (c < 0) return Fail(ColumnError(column, columns), 2);
    const kw::KwUniFilters check(static_cast<int>(list.GetSortModus(c)), kw::GetListSortTables().format[c],
                                 kw::FromUtf8(text));
    if (!check.IsValid())
      return Fail("list: filter '" + text + "': " + kw::ToUtf8(kw::LoadString(check.GetError())), 2);
    list.SetCurSel(-1);
    list.SelectByFilter(c, kw::FromUtf8(text), 1);
    for (int i = 0; i < list.GetItemCount(); ++i)
      if (!list.Control().IsSelected(i)) shown[static_cast<size_t>(i)] = false;
  }

  if (hasWidths && !widthsText.empty()) {
    const std::u16string text = kw::FromUtf8(widthsText);
    if (std::count(text.begin(), text.end(), u'|') < columns)
      return Fail("list: --widths wants W|w1|...| with a width for each of the " + std::to_string(columns) +
                  " columns", 2);
    list.SetColumnWidths(text);
  }
  std::vector<size_t> widths(static_cast<size_t>(columns));
  for (int c = 0; c < columns; ++c)
    widths[c] = static_cast<size_t>(std::max(0, list.Control().GetColumnWidth(c)) / kCharWidth);

  std::vector<int> align(static_cast<size_t>(columns));
  for (int c = 0; c < columns; ++c) align[static_cast<size_t>(c)] = list.GetTextAlign(c);
  // Lines gather in one block, converted to UTF-8 and written about a megabyte at a time.
  std::u16string block;
  static char bytes[1 << 16];
  const unsigned utf8 = static_cast<unsigned>(kw::GetCodePageID(1));
  auto flush = [&]() {
    std::u16string_view text(block);
    bool written = true;
    while (written && !text.empty()) {
      int64_t used = 0, made = 0;
      const uint32_t rc = kw::EncodeUnits(utf8, text.data(), static_cast<int64_t>(text.size()), bytes, sizeof bytes, 0,
                                          nullptr, nullptr, true, &used, &made);
      written = (rc == 0 || rc == kw::kErrorInsufficientBuffer) && used > 0 &&
                std::fwrite(bytes, 1, static_cast<size_t>(made), stdout) == static_cast<size_t>(made);
      text.remove_prefix(static_cast<size_t>(used));
    }
    block.clear();
    return written;
  };
  bool ok = true;
  if (options.header) {
    AppendLine(block, headings, widths, align);
    std::vector<std::u16string> rule;
    for (const size_t w : widths) rule.emplace_back(w, u'-');
    AppendLine(block, rule, widths, align);
  }
  std::vector<std::u16string_view> cells(static_cast<size_t>(columns));
  for (int i = 0; i < list.GetItemCount(); ++i) {
    if (!shown[static_cast<size_t>(i)]) continue;
    const std::u16string_view row = list.GetRowView(i);
    for (int c = 0; c < columns; ++c)
      cells[static_cast<size_t>(c)] = kw::ListCell(row, c, options.separator).value_or(std::u16string_view());
    AppendLine(block, cells, widths, align);
    if (block.size() >= (1u << 19)) ok = flush() && ok;
  }
  ok = flush() && ok;
  if (std::fflush(stdout) != 0 || !ok) return Fail("cannot write to standard output");
  return 0;
}

}  // namespace

KW_COMMAND("list",
           "kw list FILE [--separator C] [--type COL=text|textcase|number|date:FORMAT]... [--sort COL[,desc]] "
           "[--filter COL=TEXT]... [--widths TEXT] [--header] [--encoding ENC]",
           "print a delimited file as a report aligned in columns, sorted and filtered by the list engine",
           &RunList);

}  // namespace kwtool
