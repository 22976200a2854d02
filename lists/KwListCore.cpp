#include "lists/KwListCore.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "app/QueryBox.h"
#include "base/Assert.h"
#include "base/Format.h"
#include "base/KwTime.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "data/KwMapData.h"
#include "lists/KwUniFilters.h"
#include "platform/Platform.h"

namespace kw {

namespace {

constexpr double kTolerance = 1e-20;          // numbers and times closer than this compare equal
constexpr double kCollationTolerance = 1e-7;  // the collation's tolerance for numeric texts
constexpr const char16_t* kSender = u"ListCore";
constexpr uint32_t kHelpId = 2810, kPicture = 1090;
constexpr const char16_t* kExchangeSet = u"List";  // the data set of an exchange file

// Text a user typed, inserted into a message: its bars would split the message's button labels.
std::u16string BarSafe(const std::u16string& text) { return StrReplace(text, u"|", u"\u00A6", 1); }

int Sign(int value) { return (value > 0) - (value < 0); }

int CompareValues(double x, double y) {
  if (x < y - kTolerance) return -1;
  if (x > y + kTolerance) return 1;
  return 0;
}

// A cell as the collation's numeric mode reads it: comma as the point; level 0 or 1 is a number.
bool ReadCollationNumber(std::u16string_view cell, double& value) {
  int error = 0;
  value = GetDouble(cell.data(), 0, static_cast<int64_t>(cell.size()), 1, &error);
  return error == kNumberOk || error == kNumberEmpty;
}

// Calls put(c) with each primary character of the collation, upper-cased: the underscore reads as
// a blank, umlauts and the sharp s expand to two letters.
template <class Put>
void ForEachPrimary(std::u16string_view cell, Put&& put) {
  for (const char16_t c : cell) {
    switch (c) {
      case u'_': put(u' '); break;
      case u'\u00C4': case u'\u00E4': put(u'A'); put(u'E'); break;
      case u'\u00D6': case u'\u00F6': put(u'O'); put(u'E'); break;
      case u'\u00DC': case u'\u00FC': put(u'U'); put(u'E'); break;
      case u'\u00DF': put(u'S'); put(u'Z'); break;
      default: put(ToUpper(c)); break;
    }
  }
}

// The first four primary characters, packed high-first; unused slots are 0.
uint64_t PrimaryPrefix(std::u16string_view cell) {
  uint64_t prefix = 0;
  int slots = 0;
  ForEachPrimary(cell.substr(0, 4), [&](char16_t c) {
    if (slots < 4) prefix |= static_cast<uint64_t>(c) << (16 * (3 - slots++));
  });
  return prefix;
}

// The collation with numeric mode and no blank skipping, for two non-empty cells.
int CollateCells(std::u16string_view a, std::u16string_view b, int caseSensitive) {
  return StrCompare(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size()),
                    caseSensitive, 1, 0);
}

// The same from prepared keys. Numbers first (by value, ties by text); between two texts the
// first differing primary slot of the prefixes decides when both slots hold a character, since the
// collation returns at the first primary difference; otherwise the whole collation runs.
int CollatePrepared(const tagLISTSORTKEY& a, const tagLISTROW& ra, const tagLISTSORTKEY& b, const tagLISTROW& rb,
                    int caseSensitive) {
  const std::u16string_view ca(ra.text.data() + a.cellStart, a.cellLength);
  const std::u16string_view cb(rb.text.data() + b.cellStart, b.cellLength);
  if (a.state == tagLISTSORTKEY::kNumber || b.state == tagLISTSORTKEY::kNumber) {
    if (a.state != b.state) return a.state == tagLISTSORTKEY::kNumber ? -1 : 1;
    if (a.number < b.number - kCollationTolerance) return -1;
    if (a.number > b.number + kCollationTolerance) return 1;
  } else if (const uint64_t diff = a.prefix ^ b.prefix) {
    const int shift = (63 - std::countl_zero(diff)) / 16 * 16;
    const uint64_t pa = (a.prefix >> shift) & 0xFFFF, pb = (b.prefix >> shift) & 0xFFFF;
    if (pa != 0 && pb != 0) return pa < pb ? -1 : 1;
  }
  return StrCompare(ca.data(), static_cast<int64_t>(ca.size()), cb.data(), static_cast<int64_t>(cb.size()),
                    caseSensitive, 0, 0);
}

int SortColumnOf(int key) { return std::abs(key) - 1; }

// Steps 5 and 6 of the rule: descending and the order flag each turn the result.
int Direct(int result, int key, int column) {
  if (key < 0) result = -result;
  if (GetListSortTables().order[column] != 1) result = -result;
  return result;
}

}  // namespace

KwListSortTables& GetListSortTables() {
  static KwListSortTables tables;
  return tables;
}

int MulDiv(int number, int numerator, int denominator) {
  if (denominator == 0) return -1;
  const int64_t product = static_cast<int64_t>(number) * numerator;
  const bool negative = (product < 0) != (denominator < 0);
  const int64_t p = product < 0 ? -product : product;
  const int64_t d = denominator < 0 ? -static_cast<int64_t>(denominator) : denominator;
  const int64_t q = (p + d / 2) / d;
  return static_cast<int>(negative ? -q : q);
}

std::optional<std::u16string_view> ListCell(std::u16string_view text, int column, char16_t separator) {
  if (column < 0) return std::nullopt;
  size_t start = 0;
  for (int part = 0; part < column; ++part) {
    const size_t next = text.find(separator, start);
    if (next == std::u16string_view::npos) return std::nullopt;
    start = next + 1;
  }
  const size_t end = text.find(separator, start);
  return text.substr(start, end == std::u16string_view::npos ? std::u16string_view::npos : end - start);
}

int ListCompareRows(const tagLISTROW& a, const tagLISTROW& b, int key, char16_t separator) {
  const int column = SortColumnOf(key);
  if (column < 0 || column >= kListMaxColumns) {
    KW_ASSERT_AT("ListCore", 607, column >= 0 && column < kListMaxColumns);
    return 0;
  }
  const auto ca = ListCell(a.text, column, separator), cb = ListCell(b.text, column, separator);
  if (!ca || !cb) return 0;
  if (ca->empty() || cb->empty()) return Direct(ca->empty() == cb->empty() ? 0 : ca->empty() ? -1 : 1, key, column);
  const KwListSortTables& tables = GetListSortTables();
  int result = 0;
  switch (tables.modus[column]) {
    case kListSortText:
    case kListSortTextCase:
      result = tables.compare[column] != nullptr
                   ? Sign(tables.compare[column](std::u16string(*ca), std::u16string(*cb)))
                   : CollateCells(*ca, *cb, tables.modus[column] == kListSortTextCase ? 1 : 0);
      break;
    case kListSortNumber:
      result = CompareValues(GetDouble(ca->data(), 0, static_cast<int64_t>(ca->size()), 1),
                             GetDouble(cb->data(), 0, static_cast<int64_t>(cb->size()), 1));
      break;
    case kListSortTime: {
      KwTime x, y;
      x.SetTime(std::u16string(*ca), tables.format[column]);
      y.SetTime(std::u16string(*cb), tables.format[column]);
      result = CompareValues(x.GetTime(), y.GetTime());
      break;
    }
    default:
      break;
  }
  return Direct(result, key, column);
}

void ListPrepareSortKey(tagLISTROW& row, int key, char16_t separator) {
  tagLISTSORTKEY& k = row.sort;
  k = tagLISTSORTKEY();
  const int column = SortColumnOf(key);
  if (column < 0 || column >= kListMaxColumns) return;
  const auto cell = ListCell(row.text, column, separator);
  if (!cell) return;
  k.cellStart = static_cast<uint32_t>(cell->data() - row.text.data());
  k.cellLength = static_cast<uint32_t>(cell->size());
  if (cell->empty()) {
    k.state = tagLISTSORTKEY::kEmpty;
    return;
  }
  const KwListSortTables& tables = GetListSortTables();
  k.state = tagLISTSORTKEY::kText;
  switch (tables.modus[column]) {
    case kListSortText:
    case kListSortTextCase:
      if (tables.compare[column] != nullptr) break;
      if (ReadCollationNumber(*cell, k.number))
        k.state = tagLISTSORTKEY::kNumber;
      else
        k.prefix = PrimaryPrefix(*cell);
      break;
    case kListSortNumber:
      k.number = GetDouble(cell->data(), 0, static_cast<int64_t>(cell->size()), 1);
      k.state = tagLISTSORTKEY::kNumber;
      break;
    case kListSortTime: {
      KwTime time;
      time.SetTime(std::u16string(*cell), tables.format[column]);  // unreadable: time 0
      k.number = time.GetTime();
      k.state = tagLISTSORTKEY::kNumber;
      break;
    }
    default:
      break;
  }
}

int ListComparePrepared(const tagLISTSORTKEY& ka, const tagLISTROW& a, const tagLISTSORTKEY& kb,
                        const tagLISTROW& b, int key) {
  const int column = SortColumnOf(key);
  if (column < 0 || column >= kListMaxColumns) {
    KW_ASSERT_AT("ListCore", 607, column >= 0 && column < kListMaxColumns);
    return 0;
  }
  if (ka.state == tagLISTSORTKEY::kNoCell || kb.state == tagLISTSORTKEY::kNoCell) return 0;
  const bool ea = ka.state == tagLISTSORTKEY::kEmpty, eb = kb.state == tagLISTSORTKEY::kEmpty;
  if (ea || eb) return Direct(ea == eb ? 0 : ea ? -1 : 1, key, column);
  const KwListSortTables& tables = GetListSortTables();
  int result = 0;
  switch (tables.modus[column]) {
    case kListSortText:
    case kListSortTextCase:
      if (tables.compare[column] != nullptr)
        result = Sign(tables.compare[column](a.text.substr(ka.cellStart, ka.cellLength),
                                             b.text.substr(kb.cellStart, kb.cellLength)));
      else
        result = CollatePrepared(ka, a, kb, b, tables.modus[column] == kListSortTextCase ? 1 : 0);
      break;
    case kListSortNumber:
    case kListSortTime:
      result = CompareValues(ka.number, kb.number);
      break;
    default:
      break;
  }
  return Direct(result, key, column);
}

int ListCompareItems(uintptr_t item1, uintptr_t item2, uintptr_t context) {
  const auto* sort = reinterpret_cast<const tagLISTSORT*>(context);
  const auto* a = reinterpret_cast<const tagLISTROW*>(item1);
  const auto* b = reinterpret_cast<const tagLISTROW*>(item2);
  if (sort == nullptr || a == nullptr || b == nullptr) return 0;
  if (!sort->cached) return ListCompareRows(*a, *b, sort->key, sort->separator);
  return ListComparePrepared(a->sort, *a, b->sort, *b, sort->key);
}

// ---- KwListEngine ---------------------------------------------------------------------------

KwListEngine::KwListEngine(ListControl& control) : m_Ctrl(control) {
  std::fill(std::begin(m_SortModus), std::end(m_SortModus), kListSortText);
  std::fill(std::begin(m_SortOrder), std::end(m_SortOrder), 1u);
  m_Factor = m_Ctrl.GetWidthFactor();
}

KwListEngine::~KwListEngine() {
  ClearUndo();
  for (int i = 0; i < m_Ctrl.GetItemCount(); ++i) delete Row(i);
  m_Ctrl.DeleteAllItems();
}

tagLISTROW* KwListEngine::Row(int row) const { return reinterpret_cast<tagLISTROW*>(m_Ctrl.GetItemData(row)); }

bool KwListEngine::CheckColumn(int column) const {
  if (column >= 0 && column < kListMaxColumns) return true;
  KW_ASSERT_AT("ListCore", 4442, column >= 0 && column < kListMaxColumns);
  return false;
}

int KwListEngine::SetSeparator(char16_t separator) {
  if (GetItemCount() != 0) {
    KW_ASSERT(GetItemCount() == 0);
    return 0;
  }
  m_Separator = separator;
  return 1;
}

std::u16string KwListEngine::CheckItemText(const std::u16string& text) const {
  std::u16string checked = text;
  const char16_t replacement = m_Separator == u'|' ? u'\u00A6' : u' ';
  for (char16_t& c : checked) {
    if (c == m_Separator)
      c = replacement;
    else if (c == u'\r' || c == u'\n')
      c = u' ';
  }
  return checked;
}

// ---- Columns

int KwListEngine::InsertColumn(int index, const std::u16string& heading, int width, int align) {
  if (GetColumnCount() >= kListMaxColumns) {
    KW_ASSERT_AT("ListCore", 4442, GetColumnCount() < kListMaxColumns);
    return -1;
  }
  const int at = m_Ctrl.InsertColumn(index, heading, width);
  if (at < 0) return -1;
  // Per-column settings move with the columns behind the new one.
  const int last = GetColumnCount() - 1;
  for (int c = last; c > at; --c) {
    m_SortModus[c] = m_SortModus[c - 1];
    m_SortOrder[c] = m_SortOrder[c - 1];
    m_Align[c] = m_Align[c - 1];
    m_Hyperlink[c] = m_Hyperlink[c - 1];
  }
  m_SortModus[at] = kListSortText;
  m_SortOrder[at] = 1;
  m_Align[at] = std::clamp(align, kListAlignLeft, kListAlignCenter);
  m_Hyperlink[at] = false;
  return at;
}

std::u16string KwListEngine::GetColumnWidths() const {
  const int count = GetColumnCount();
  const int clientWidth = m_Ctrl.GetClientRect().Width();
  const int scroll = (m_Ctrl.GetStyle() & kListStyleVScroll) ? m_Ctrl.GetVScrollBarWidth() : 0;
  int sum = 0;
  for (int c = 0; c < count; ++c) sum += m_Ctrl.GetColumnWidth(c);
  std::u16string text = Format(u"%d|", clientWidth);
  for (int c = 0; c < count; ++c) {
    int w = m_Ctrl.GetColumnWidth(c);
    if (scroll > 0 && clientWidth - scroll <= sum) w = MulDiv(w, clientWidth, clientWidth - scroll);
    text += Format(u"%d|", w);
  }
  return text;
}

int KwListEngine::SetColumnWidths(const std::u16string& text) {
  if (text.empty()) return 0;
  const int count = GetColumnCount();
  if (std::count(text.begin(), text.end(), u'|') < count) {
    KW_ASSERT_AT("ListCore", 4101, std::count(text.begin(), text.end(), u'|') >= count);
    return 0;
  }
  auto part = [&](int n) { return ListCell(text, n, u'|').value_or(std::u16string_view()); };
  const std::u16string_view first = part(0);
  int stored = static_cast<int>(GetInt(first.data(), 0, static_cast<int64_t>(first.size())));
  std::vector<int> widths;
  int sum = 0;
  for (int n = 1;; ++n) {
    const std::u16string_view p = part(n);
    if (p.empty()) break;
    widths.push_back(static_cast<int>(GetInt(p.data(), 0, static_cast<int64_t>(p.size()))));
    sum += widths.back();
  }
  if (stored < 1) stored = m_Factor > 0 ? static_cast<int>(sum / m_Factor) : sum;
  m_RefWidth = stored;
  const int scroll = (m_Ctrl.GetStyle() & kListStyleVScroll) ? m_Ctrl.GetVScrollBarWidth() : 0;
  for (int c = 0; c < count && c < static_cast<int>(widths.size()); ++c) {
    int w = widths[static_cast<size_t>(c)];
    if (scroll > 0 && stored - scroll < sum) w = MulDiv(w, stored - scroll, stored);
    m_Ctrl.SetColumnWidth(c, w);
  }
  return 1;
}

void KwListEngine::AdjustFirstFill() {
  m_ColumnsAdjusted = true;
  const int count = GetColumnCount();
  int sum = 0;
  for (int c = 0; c < count; ++c) sum += m_Ctrl.GetColumnWidth(c);
  const int width = m_RefWidth > 0 ? m_RefWidth : static_cast<int>(m_Factor > 0 ? sum / m_Factor : sum);
  const int scroll = m_Ctrl.GetVScrollBarWidth();
  if (width <= 0 || sum <= width - scroll) return;
  for (int c = 0; c < count; ++c) m_Ctrl.SetColumnWidth(c, MulDiv(m_Ctrl.GetColumnWidth(c), width - scroll, width));
}

// ---- Rows

int KwListEngine::InsertItem(int index, const std::u16string& text, uint64_t key, uint32_t flags, uint32_t value,
                             int enabled) {
  auto row = std::make_unique<tagLISTROW>();
  row->key = key;
  row->flags = enabled ? (flags | kListRowEnabled) : (flags & ~kListRowEnabled);
  row->value = value;
  // Each cell passes CheckItemText; split at the separator a cell holds none, so only its line ends
  // change, and the whole text can be checked at once.
  row->text = text;
  for (char16_t& c : row->text)
    if (c == u'\r' || c == u'\n') c = u' ';
  const int count = GetItemCount();
  if (index < 0 || index > count) index = count;
  const int at = m_Ctrl.InsertItem(index, reinterpret_cast<uintptr_t>(row.get()));
  if (at < 0) return -1;
  row.release();
  const int threshold = m_RowThreshold >= 0 ? m_RowThreshold : m_Ctrl.GetCountPerPage();
  if (!m_ColumnsAdjusted && GetItemCount() > threshold) AdjustFirstFill();
  return at;
}

int KwListEngine::SetItemInfo(int row, uint64_t key, uint32_t flags, uint32_t value) {
  tagLISTROW* r = Row(row);
  if (r == nullptr) return 0;
  r->key = key;
  r->flags = flags;
  r->value = value;
  return 1;
}

int KwListEngine::SetItemText(int row, int column, const std::u16string& text) {
  tagLISTROW* r = Row(row);
  if (r == nullptr || column < 0) return 0;
  StrSetPart(r->text, column, m_Separator, CheckItemText(text));
  m_Ctrl.RedrawItems(row, row);
  return 1;
}

std::u16string KwListEngine::GetItemText(int row, int column) const {
  const tagLISTROW* r = Row(row);
  if (r == nullptr) return {};
  return std::u16string(ListCell(r->text, column, m_Separator).value_or(std::u16string_view()));
}

std::u16string_view KwListEngine::GetRowView(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? std::u16string_view(r->text) : std::u16string_view();
}

std::u16string KwListEngine::GetRowText(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? r->text : std::u16string();
}

uint64_t KwListEngine::GetKey(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? r->key : 0;
}

int KwListEngine::SetKey(int row, uint64_t key) {
  tagLISTROW* r = Row(row);
  if (r == nullptr) return 0;
  r->key = key;
  return 1;
}

uint32_t KwListEngine::GetFlags(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? r->flags : 0;
}

uint32_t KwListEngine::GetValue(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? r->value : 0;
}

int KwListEngine::DeleteItem(int row) {
  tagLISTROW* r = Row(row);
  if (r == nullptr) return 0;
  ClearUndo();  // undo records may name this row
  m_Ctrl.DeleteItem(row);
  delete r;
  return 1;
}

int KwListEngine::DeleteAllItems() {
  ClearUndo();
  for (int i = 0; i < GetItemCount(); ++i) delete Row(i);
  m_Ctrl.DeleteAllItems();
  return 1;  // the sort key stays: rows filled in again sort the same way
}

int KwListEngine::SeekIndexOfKey(uint64_t key) const {
  for (int i = 0; i < GetItemCount(); ++i)
    if (Row(i)->key == key) return i;
  return -1;
}

int KwListEngine::SeekIndexOfText(const std::u16string& text, int column, int start) const {
  for (int i = std::max(0, start); i < GetItemCount(); ++i) {
    const auto cell = ListCell(Row(i)->text, column, m_Separator);
    if (cell && StrCompare(cell->data(), static_cast<int64_t>(cell->size()), text.data(),
                           static_cast<int64_t>(text.size()), 0, 0, 0) == 0)
      return i;
  }
  return -1;
}

// ---- Selection

int KwListEngine::GetCurSel() const {
  for (int i = 0; i < GetItemCount(); ++i)
    if (m_Ctrl.IsSelected(i)) return i;
  return -1;
}

int KwListEngine::SetCurSel(int row) {
  if (row < -1 || row >= GetItemCount()) return 0;
  for (int i = 0; i < GetItemCount(); ++i) m_Ctrl.SetSelected(i, i == row);
  m_Ctrl.SetFocusedItem(row);
  if (row >= 0) m_Ctrl.EnsureVisible(row);
  return 1;
}

std::vector<int> KwListEngine::GetSelectedRows() const {
  std::vector<int> rows;
  for (int i = 0; i < GetItemCount(); ++i)
    if (m_Ctrl.IsSelected(i)) rows.push_back(i);
  return rows;
}

int KwListEngine::SelectByFilter(int column, const std::u16string& filterText, int select) {
  if (!CheckColumn(column)) return -1;
  const KwUniFilters filter(static_cast<int>(m_SortModus[column]), GetListSortTables().format[column], filterText);
  if (!filter.IsValid()) return -1;
  int matched = 0;
  for (int i = 0; i < GetItemCount(); ++i) {
    const auto cell = ListCell(Row(i)->text, column, m_Separator);
    if (filter.Match(std::u16string(cell.value_or(std::u16string_view())))) {
      m_Ctrl.SetSelected(i, select != 0);
      ++matched;
    }
  }
  return matched;
}

// ---- Row states

int KwListEngine::GetCheck(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? r->check : 0;
}

int KwListEngine::SetCheck(int row, int check) {
  tagLISTROW* r = Row(row);
  if (r == nullptr) return 0;
  r->check = check ? 1 : 0;
  m_Ctrl.RedrawItems(row, row);
  return 1;
}

int KwListEngine::GetEnabled(int row) const { return (GetFlags(row) & kListRowEnabled) ? 1 : 0; }

int KwListEngine::SetEnabled(int row, int enabled) {
  tagLISTROW* r = Row(row);
  if (r == nullptr) return 0;
  r->flags = enabled ? (r->flags | kListRowEnabled) : (r->flags & ~kListRowEnabled);
  m_Ctrl.RedrawItems(row, row);
  return 1;
}

int KwListEngine::GetImageNo(int row) const {
  const tagLISTROW* r = Row(row);
  return r != nullptr ? r->image : -1;
}

int KwListEngine::SetImageNo(int row, int image) {
  tagLISTROW* r = Row(row);
  if (r == nullptr || image < -1) return 0;
  r->image = image;
  m_Ctrl.RedrawItems(row, row);
  return 1;
}

int KwListEngine::SetColorMode(int mode) {
  if (mode < kListColorSystem || mode > kListColorBands) return 0;
  m_ColorMode = mode;
  return 1;
}

void KwListEngine::GetItemColors(int row, uint32_t& text, uint32_t& back) const {
  text = kListColorText;
  back = kListColorBack;
  if (Row(row) == nullptr) return;
  if (m_ColorMode >= kListColorGreyDisabled && !GetEnabled(row)) text = kListColorGrey;
  if (m_ColorMode == kListColorBands && row % 2 == 1) back = kListColorBand;
}

int KwListEngine::GetTextAlign(int column) const { return CheckColumn(column) ? m_Align[column] : kListAlignLeft; }

int KwListEngine::SetTextAlign(int column, int align) {
  if (!CheckColumn(column) || align < kListAlignLeft || align > kListAlignCenter) return 0;
  m_Align[column] = align;
  return 1;
}

// ---- Hyperlinks

int KwListEngine::EnableHyperlinks(int column, int enable) {
  if (!CheckColumn(column)) return 0;
  m_Hyperlink[column] = enable != 0;
  return 1;
}

int KwListEngine::IsHyperlinkColumn(int column) const {
  return column >= 0 && column < kListMaxColumns && m_Hyperlink[column] ? 1 : 0;
}

int KwListEngine::ExecuteHyperlink(int row, int column) {
  if (!IsHyperlinkColumn(column) || Row(row) == nullptr) return 0;
  const std::u16string target = GetItemText(row, column);
  if (target.empty()) return 0;
  return GetPlatform().ShellOpen(target, u"") > 32 ? 1 : 0;
}

// ---- Sorting

int KwListEngine::SetSortModus(int column, uint32_t mode, uint32_t orderFlag, const char16_t* formatText,
                               KwListCompareFunc compareFunction) {
  if (!CheckColumn(column)) return 0;
  m_SortModus[column] = mode;
  m_SortOrder[column] = orderFlag;
  KwListSortTables& tables = GetListSortTables();
  if (formatText != nullptr) tables.format[column] = formatText;
  tables.compare[column] = compareFunction;
  return 1;
}

uint32_t KwListEngine::GetSortModus(int column) const { return CheckColumn(column) ? m_SortModus[column] : 0; }
uint32_t KwListEngine::GetSortOrder(int column) const { return CheckColumn(column) ? m_SortOrder[column] : 1; }

void KwListEngine::SetColToSort(int key) {
  if (key == 0) {
    KW_ASSERT_AT("ListCore", 4078, key != 0);
    return;
  }
  m_ColToSort = key;
}

void KwListEngine::DoSort(int key) {
  KwListSortTables& tables = GetListSortTables();
  std::copy(std::begin(m_SortModus), std::end(m_SortModus), std::begin(tables.modus));
  std::copy(std::begin(m_SortOrder), std::end(m_SortOrder), std::begin(tables.order));
  const int count = GetItemCount();
  const int column = SortColumnOf(key);
  // Texts in the collation also get their whole primary stream, upper-cased, in one buffer: the
  // first position where two streams differ decides, as in the collation; only texts whose streams
  // are equal, or one a start of the other, go to the collation itself.
  const bool textKeys = column >= 0 && column < kListMaxColumns &&
                        (tables.modus[column] == kListSortText || tables.modus[column] == kListSortTextCase) &&
                        tables.compare[column] == nullptr;
  const int caseSensitive = textKeys && tables.modus[column] == kListSortTextCase ? 1 : 0;
  const bool numberKeys = column >= 0 && column < kListMaxColumns &&
                          (tables.modus[column] == kListSortNumber || tables.modus[column] == kListSortTime);
  const int flip = (key < 0 ? -1 : 1) * (column >= 0 && column < kListMaxColumns && tables.order[column] != 1 ? -1 : 1);
  // The prepared keys side by side in one small array, so that most comparisons touch no row; the
  // control then takes the new order. Equal rows keep their order, as the control's sort does.
  struct Entry {
    uint64_t prefix;
    double number;
    uint32_t primaryStart, primaryLength;  // in `primaries`
    int index;
    uint8_t state;
  };
  std::vector<Entry> entries(static_cast<size_t>(count));
  std::vector<const tagLISTROW*> rows(static_cast<size_t>(count));
  std::vector<char16_t> primaries;
  for (int i = 0; i < count; ++i) {
    tagLISTROW* row = Row(i);
    ListPrepareSortKey(*row, key, m_Separator);
    const tagLISTSORTKEY& k = row->sort;
    rows[static_cast<size_t>(i)] = row;
    Entry& e = entries[static_cast<size_t>(i)];
    e = Entry{k.prefix, k.number, 0, 0, i, k.state};
    if (textKeys && k.state == tagLISTSORTKEY::kText) {
      e.primaryStart = static_cast<uint32_t>(primaries.size());
      ForEachPrimary(std::u16string_view(row->text).substr(k.cellStart, k.cellLength),
                     [&](char16_t c) { primaries.push_back(c); });
      e.primaryLength = static_cast<uint32_t>(primaries.size()) - e.primaryStart;
    }
  }
  const char16_t* const primary = primaries.data();
  // The collation of two text cells from their entries (the rows only when the entries tie).
  auto collate = [&](const Entry& a, const Entry& b) {
    if (a.state == tagLISTSORTKEY::kNumber || b.state == tagLISTSORTKEY::kNumber) {
      if (a.state != b.state) return a.state == tagLISTSORTKEY::kNumber ? -1 : 1;
      if (a.number < b.number - kCollationTolerance) return -1;
      if (a.number > b.number + kCollationTolerance) return 1;
    } else {
      const uint32_t n = std::min(a.primaryLength, b.primaryLength);
      uint32_t i = 0;
      if (a.prefix != b.prefix) {
        i = static_cast<uint32_t>(std::countl_zero(a.prefix ^ b.prefix) / 16);
      } else {
        i = std::min(n, 4u);
        const char16_t* pa = primary + a.primaryStart;
        const char16_t* pb = primary + b.primaryStart;
        while (i < n && pa[i] == pb[i]) ++i;
      }
      if (i < n) return primary[a.primaryStart + i] < primary[b.primaryStart + i] ? -1 : 1;
    }
    const tagLISTROW& ra = *rows[static_cast<size_t>(a.index)];
    const tagLISTROW& rb = *rows[static_cast<size_t>(b.index)];
    return StrCompare(ra.text.data() + ra.sort.cellStart, ra.sort.cellLength, rb.text.data() + rb.sort.cellStart,
                      rb.sort.cellLength, caseSensitive, 0, 0);
  };
  std::stable_sort(entries.begin(), entries.end(), [&](const Entry& a, const Entry& b) {
    if (a.state == tagLISTSORTKEY::kNoCell || b.state == tagLISTSORTKEY::kNoCell) return false;
    const bool ea = a.state == tagLISTSORTKEY::kEmpty, eb = b.state == tagLISTSORTKEY::kEmpty;
    int result;
    if (ea || eb) {
      result = ea == eb ? 0 : ea ? -1 : 1;
    } else if (numberKeys) {
      result = CompareValues(a.number, b.number);
    } else if (textKeys) {
      result = collate(a, b);
    } else {
      const tagLISTROW& ra = *rows[static_cast<size_t>(a.index)];
      const tagLISTROW& rb = *rows[static_cast<size_t>(b.index)];
      return ListComparePrepared(ra.sort, ra, rb.sort, rb, key) < 0;
    }
    return result * flip < 0;
  });
  primaries = {};
  rows = {};
  std::vector<int> order(static_cast<size_t>(count));
  for (int k = 0; k < count; ++k) order[static_cast<size_t>(k)] = entries[static_cast<size_t>(k)].index;
  entries = {};
  if (!m_Ctrl.SetItemOrder(order)) {
    tagLISTSORT sort;
    sort.key = key;
    sort.separator = m_Separator;
    sort.cached = true;
    m_Ctrl.SortItems(&ListCompareItems, reinterpret_cast<uintptr_t>(&sort));
  }
  m_ColToSort = key;
  const int focus = m_Ctrl.GetFocusedItem();
  if (focus >= 0) m_Ctrl.EnsureVisible(focus);
}

bool KwListEngine::OnColumnClick(int column) {
  const int count = GetColumnCount();
  if (column < 0 || column >= count) {
    KW_ASSERT_AT("ListCore", 2864, column >= 0 && column < count);
    column = std::clamp(column, 0, std::max(0, count - 1));
  }
  if (column >= kListMaxColumns || m_SortModus[column] == kListSortNone || GetItemCount() < 2) return false;
  int key = column + 1;
  if (m_ColToSort == key) key = -key;
  DoSort(key);
  return true;
}

int KwListEngine::Sort(int column, int keepDirection) {
  const int count = GetColumnCount();
  if (column >= 0) {
    KW_ASSERT_AT("ListCore", 4598, column >= kListMaxColumns || m_SortModus[column] != kListSortNone);
    KW_ASSERT_AT("ListCore", 4599, column < count);
  }
  if (GetItemCount() < 2) return 0;
  if (column < 0) {
    if (m_ColToSort == 0) return 0;
    DoSort(m_ColToSort);
    return 1;
  }
  column = std::min(column, count - 1);
  if (column < 0) return 0;
  int key = column + 1;
  if (key == m_ColToSort && keepDirection == 0) key = -key;
  DoSort(key);
  return 1;
}

// ---- Editing, clipboard, undo

int KwListEngine::IndexOfRow(const tagLISTROW* row) const {
  for (int i = 0; i < GetItemCount(); ++i)
    if (Row(i) == row) return i;
  return -1;
}

void KwListEngine::PushUndo(UndoStep step) {
  m_Undo.resize(m_UndoPos);  // a new command drops what could be redone
  m_Undo.push_back(std::move(step));
  m_UndoPos = m_Undo.size();
  m_Modified = true;
}

void KwListEngine::ClearUndo() {
  m_Undo.clear();
  m_UndoPos = 0;
}

int KwListEngine::EditItem(int row, int column, const std::u16string& text) {
  tagLISTROW* r = Row(row);
  if (!m_EditEnabled || r == nullptr || column < 0 || !(r->flags & kListRowEnabled)) return 0;
  UndoStep step;
  step.push_back(UndoRecord{UndoRecord::kSetText, r, row, r->text, nullptr});
  SetItemText(row, column, text);
  if (r->text == step.back().text) return 1;  // nothing changed, nothing to undo
  PushUndo(std::move(step));
  return 1;
}

int KwListEngine::DeleteSelectedItems() {
  if (!m_EditEnabled) return 0;
  UndoStep step;
  // From the end, so that the indexes of the rows still to go stay valid.
  for (int i = GetItemCount() - 1; i >= 0; --i) {
    if (!m_Ctrl.IsSelected(i)) continue;
    tagLISTROW* r = Row(i);
    m_Ctrl.DeleteItem(i);
    step.push_back(UndoRecord{UndoRecord::kDelete, r, i, {}, std::unique_ptr<tagLISTROW>(r)});
  }
  const int deleted = static_cast<int>(step.size());
  if (deleted > 0) PushUndo(std::move(step));
  return deleted;
}

int KwListEngine::CopyToClipboard() const {
  std::vector<int> rows = GetSelectedRows();
  if (rows.empty() && m_Ctrl.GetFocusedItem() >= 0) rows.push_back(m_Ctrl.GetFocusedItem());
  if (rows.empty()) return 0;
  std::u16string text;
  for (const int i : rows) {
    std::u16string line = Row(i)->text;
    if (m_Separator != u'\t') std::replace(line.begin(), line.end(), m_Separator, u'\t');
    text += line;
    text += u"\r\n";
  }
  return GetPlatform().SetClipboardText(text) ? static_cast<int>(rows.size()) : 0;
}

int KwListEngine::PasteFromClipboard() {
  std::u16string text;
  if (!m_EditEnabled || !GetPlatform().GetClipboardText(text)) return 0;
  int at = m_Ctrl.GetFocusedItem();
  if (at < 0) at = GetItemCount();
  UndoStep step;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find_first_of(u"\r\n", start);
    if (end == std::u16string::npos) end = text.size();
    std::u16string line = text.substr(start, end - start);
    start = end + ((end + 1 < text.size() && text[end] == u'\r' && text[end + 1] == u'\n') ? 2 : 1);
    // Cells come tab-separated; a separator inside a cell is made harmless first.
    std::u16string row;
    size_t cellStart = 0;
    for (;;) {
      const size_t tab = line.find(u'\t', cellStart);
      row += CheckItemText(line.substr(cellStart, tab == std::u16string::npos ? std::u16string::npos : tab - cellStart));
      if (tab == std::u16string::npos) break;
      row += m_Separator;
      cellStart = tab + 1;
    }
    const int index = InsertItem(at, row);
    if (index < 0) break;
    step.push_back(UndoRecord{UndoRecord::kInsert, Row(index), index, {}, nullptr});
    ++at;
  }
  const int inserted = static_cast<int>(step.size());
  if (inserted > 0) PushUndo(std::move(step));
  return inserted;
}

// Undo walks a step's records backwards, redo forwards; each record turns into its opposite.
int KwListEngine::ApplyUndo(UndoStep& step, bool undo) {
  const int n = static_cast<int>(step.size());
  for (int k = 0; k < n; ++k) {
    UndoRecord& rec = step[static_cast<size_t>(undo ? n - 1 - k : k)];
    const bool remove = (rec.kind == UndoRecord::kInsert) == undo;
    if (rec.kind == UndoRecord::kSetText) {
      const int index = IndexOfRow(rec.row);
      if (index < 0) return 0;
      std::swap(rec.row->text, rec.text);
      m_Ctrl.RedrawItems(index, index);
    } else if (remove) {
      const int index = IndexOfRow(rec.row);
      if (index < 0) return 0;
      m_Ctrl.DeleteItem(index);
      rec.index = index;
      rec.owned.reset(rec.row);
    } else {
      if (m_Ctrl.InsertItem(std::min(rec.index, GetItemCount()), reinterpret_cast<uintptr_t>(rec.row)) < 0) return 0;
      rec.owned.release();
    }
  }
  m_Modified = true;
  return 1;
}

int KwListEngine::Undo() {
  if (m_UndoPos == 0) return 0;
  --m_UndoPos;
  return ApplyUndo(m_Undo[m_UndoPos], true);
}

int KwListEngine::Redo() {
  if (m_UndoPos >= m_Undo.size()) return 0;
  return ApplyUndo(m_Undo[m_UndoPos++], false);
}

// ---- List exchange files

int KwListEngine::EnableExchange(const std::u16string& identification, const std::vector<int>& keyColumns,
                                 const std::vector<int>& valueColumns) {
  for (const std::vector<int>* columns : {&keyColumns, &valueColumns})
    for (const int c : *columns)
      if (!CheckColumn(c)) return 0;
  if (keyColumns.empty()) {
    KW_ASSERT(!keyColumns.empty());
    return 0;
  }
  m_Exchange = true;
  m_FileImEx = 3;
  m_ExchangeId = identification;
  m_KeyColumns = keyColumns;
  m_ValueColumns = valueColumns;
  return 1;
}

int KwListEngine::ImportList(const std::u16string& fileName) {
  if (!(GetFileImEx() & 1)) return 0;
  KwMapData map(m_ExchangeId, static_cast<int>(m_KeyColumns.size()), static_cast<int>(m_ValueColumns.size()));
  map.SetSilentMode(1);
  const int result = map.LoadFile(fileName);
  if (result == -2) {
    QueryBox(kSender, kHelpId, kPicture, 0, 2855u, BarSafe(fileName));
    return -2;
  }
  if (result == -3) {
    QueryBox(kSender, kHelpId, kPicture, 0, 2856u, BarSafe(fileName), BarSafe(m_ExchangeId));
    return -3;
  }
  if (result != 1) return 0;
  DeleteAllItems();
  if (const KwMapRecords* records = map.GetRecords(kExchangeSet)) {
    for (const auto& [keys, values] : *records) {
      std::u16string text;
      for (size_t k = 0; k < m_KeyColumns.size(); ++k) StrSetPart(text, m_KeyColumns[k], m_Separator, CheckItemText(keys[k]));
      for (size_t v = 0; v < m_ValueColumns.size() && v < values.size(); ++v)
        StrSetPart(text, m_ValueColumns[v], m_Separator, CheckItemText(values[v]));
      InsertItem(-1, text);
    }
  }
  m_Modified = false;
  return 1;
}

int KwListEngine::ExportList(const std::u16string& fileName) {
  if (!(GetFileImEx() & 2)) return 0;
  KwMapData map(m_ExchangeId, static_cast<int>(m_KeyColumns.size()), static_cast<int>(m_ValueColumns.size()));
  map.SetSilentMode(1);
  KwMapRecords* records = map.MakeRecords(kExchangeSet, kScopeGlobal);
  if (records == nullptr) return 0;
  for (int i = 0; i < GetItemCount(); ++i) {
    KwMapFields keys, values;
    for (const int c : m_KeyColumns) keys.push_back(GetItemText(i, c));
    for (const int c : m_ValueColumns) values.push_back(GetItemText(i, c));
    map.SetRecord(*records, keys, values);
  }
  if (map.SaveFile(fileName) != 1) {
    QueryBox(kSender, kHelpId, kPicture, 0, 2857u, BarSafe(fileName));
    return 0;
  }
  m_Modified = false;
  return 1;
}

}  // namespace kw
