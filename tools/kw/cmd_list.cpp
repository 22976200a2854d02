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
constexpr const char* kGap = "  ";   // between two columns of the report

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

size_t Width(const std::u16string& s) {
  size_t n = 0;
  for (const char16_t c : s) n += (c < 0xDC00 || c > 0xDFFF) ? 1 : 0;  // a surrogate pair is one
  return n;
}

// The cell fitted to `width` characters: cut when longer, padded on the aligned side.
std::u16string Fit(const std::u16string& cell, size_t width, int align, bool last) {
  std::u16string text = cell;
  while (Width(text) > width) text.pop_back();
  const size_t pad = width - Width(text);
  if (align == kw::kListAlignRight) return std::u16string(pad, u' ') + text;
  if (align == kw::kListAlignCenter) return std::u16string(pad / 2, u' ') + text + std::u16string(pad - pad / 2, u' ');
  if (!last) text += std::u16string(pad, u' ');
  return text;
}

std::string Line(const std::vector<std::u16string>& cells, const std::vector<size_t>& widths,
                 const kw::KwListCtrl& list) {
  std::u16string line;
  for (size_t c = 0; c < widths.size(); ++c) {
    if (c > 0) line += kw::FromUtf8(kGap);
    line += Fit(c < cells.size() ? cells[c] : std::u16string(), widths[c], list.GetTextAlign(static_cast<int>(c)),
                c + 1 == widths.size());
  }
  line.erase(line.find_last_not_of(u' ') + 1);
  return kw::ToUtf8(line) + "\n";
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

  // The lines of the file; blank lines carry no row.
  kw::KwFile in;
  if (!in.Open(kw::FromUtf8(files[0]), kw::KwFile::kRead, 13, 26, options.encoding))
    return Fail("list: cannot open " + files[0]);
  std::vector<std::u16string> lines;
  for (std::u16string line; in.ReadLine(line);)
    if (line.find_first_not_of(u" \t") != std::u16string::npos) lines.push_back(line);
  in.Close();
  if (options.separator == 0)
    options.separator = lines.empty() ? u'\t' : kw::StrDelimOf(lines[0], u"\t;|,", u'"');
  if (options.separator == 0) options.separator = u'\t';

  kw::KwListCtrl list;
  list.SetSeparator(options.separator);
  std::vector<std::u16string> headings;
  if (options.header && !lines.empty()) {
    for (int c = 0;; ++c) {
      const auto cell = kw::ListCell(lines[0], c, options.separator);
      if (!cell) break;
      headings.emplace_back(*cell);
    }
    lines.erase(lines.begin());
  }
  int columns = static_cast<int>(headings.size());
  for (const auto& line : lines)
    columns = std::max(columns, static_cast<int>(kw::StrCountOf(line, options.separator, 0)) + 1);
  if (columns > kw::kListMaxColumns)
    return Fail("list: " + std::to_string(columns) + " columns; a list has at most " +
                std::to_string(kw::kListMaxColumns));
  headings.resize(static_cast<size_t>(columns));

  // Column widths from the longest cell, as a window would size them to their content.
  std::vector<size_t> chars(static_cast<size_t>(columns), 1);
  for (int c = 0; c < columns; ++c) chars[c] = std::max(chars[c], Width(headings[c]));
  for (const auto& line : lines)
    for (int c = 0; c < columns; ++c)
      if (const auto cell = kw::ListCell(line, c, options.separator)) chars[c] = std::max(chars[c], cell->size());
  int total = 0;
  for (int c = 0; c < columns; ++c) {
    list.InsertColumn(c, headings[c], static_cast<int>(chars[c]) * kCharWidth);
    total += static_cast<int>(chars[c]) * kCharWidth;
  }
  list.GetHeadless()->SetClientRect({0, 0, total, 1 << 30});  // every row on one page: no scroll bar
  for (size_t i = 0; i < lines.size(); ++i) list.InsertItem(-1, lines[i], i);

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

  std::string out;
  if (options.header) {
    out += Line(headings, widths, list);
    std::vector<std::u16string> rule;
    for (const size_t w : widths) rule.emplace_back(w, u'-');
    out += Line(rule, widths, list);
  }
  for (int i = 0; i < list.GetItemCount(); ++i) {
    if (!shown[static_cast<size_t>(i)]) continue;
    std::vector<std::u16string> cells;
    for (int c = 0; c < columns; ++c) cells.push_back(list.GetItemText(i, c));
    out += Line(cells, widths, list);
  }
  if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size() || std::fflush(stdout) != 0)
    return Fail("cannot write to standard output");
  return 0;
}

}  // namespace

KW_COMMAND("list",
           "kw list FILE [--separator C] [--type COL=text|textcase|number|date:FORMAT]... [--sort COL[,desc]] "
           "[--filter COL=TEXT]... [--widths TEXT] [--header] [--encoding ENC]",
           "print a delimited file as a report aligned in columns, sorted and filtered by the list engine",
           &RunList);

}  // namespace kwtool
