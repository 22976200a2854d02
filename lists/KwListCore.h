// The library's multi-column report list: rows of its own (the whole row text, a key, flags),
// column sorting by per-column modes, column widths saved and restored as one text, a selection
// filter, editing with undo and redo, the clipboard and list exchange files.
//
// KwListEngine holds the rules and works on a ListControl that only shows and orders the items;
// KwListCore<Base> binds the engine to the control of a host class (a control or a view that
// contains one). KwListCtrl and KwListView are the two bindings.
//
// Row ownership: each item's data value points to a tagLISTROW that the list allocated and owns
// while the item is in the control; a row removed by an undoable command is owned by the undo
// memory until it goes back into the control or the undo memory drops it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ListControl.h"

namespace kw {

inline constexpr int kListMaxColumns = 100;       // columns 0..99 have sort settings
inline constexpr uint32_t kListRowEnabled = 8;    // bit of a row's flags: the row is enabled

// Sort modes of a column.
inline constexpr uint32_t kListSortNone = 0;      // the column is not sortable
inline constexpr uint32_t kListSortText = 1;      // text, case ignored
inline constexpr uint32_t kListSortTextCase = 2;  // text, case as tie-break
inline constexpr uint32_t kListSortNumber = 3;
inline constexpr uint32_t kListSortTime = 4;      // date and time, read with the column's format

// Colour modes (GetItemColors).
inline constexpr int kListColorSystem = 0;        // window colours for every row
inline constexpr int kListColorGreyDisabled = 1;  // disabled rows in grey text
inline constexpr int kListColorBands = 2;         // as 1, and every second row on a light band
inline constexpr uint32_t kListColorText = 0x000000, kListColorBack = 0xFFFFFF;
inline constexpr uint32_t kListColorGrey = 0x808080, kListColorBand = 0xF0F0F0;

// Text alignment of a column.
inline constexpr int kListAlignLeft = 0, kListAlignRight = 1, kListAlignCenter = 2;

// A caller's text order for a text column: negative, zero or positive.
using KwListCompareFunc = int (*)(const std::u16string& a, const std::u16string& b);

// What a sort reads from a row, prepared once per row before the control sorts so that no
// comparison splits a row or reads a number again. Valid only while a sort runs.
struct tagLISTSORTKEY {
  static constexpr uint8_t kNoCell = 0, kEmpty = 1, kText = 2, kNumber = 3;
  double number = 0;        // kNumber: the cell's value (a time for date columns)
  uint64_t prefix = 0;      // kText: the first four primary characters of the collation, upper-cased
  uint32_t cellStart = 0;   // the cell within the row text
  uint32_t cellLength = 0;
  uint8_t state = kNoCell;
};

// One row. The control item's data value points to it.
struct tagLISTROW {
  uint64_t key = 0;          // the caller's key
  uint32_t flags = 0;        // InsertItem's 4th argument; kListRowEnabled when the row is enabled
  uint32_t value = 0;        // InsertItem's 5th argument, stored for the caller
  std::u16string text;       // all cells joined by the list's separator
  int image = -1;            // image number, -1 none
  int check = 0;             // check box state: 0 unchecked, 1 checked
  tagLISTSORTKEY sort;
};

// The tables shared by all lists, indexed by column: format texts and compare functions are set
// through any list (SetSortModus) and hold for that column of every list; modes and order flags are
// copied into them from the sorting list at the start of each sort. Single-threaded by design.
struct KwListSortTables {
  uint32_t modus[kListMaxColumns] = {};
  uint32_t order[kListMaxColumns] = {};
  std::u16string format[kListMaxColumns];
  KwListCompareFunc compare[kListMaxColumns] = {};
};
KwListSortTables& GetListSortTables();

// The sort in progress: the sort key (column + 1, negative for descending) and the separator.
// `cached` says that every row's tagLISTSORTKEY was prepared for this key.
struct tagLISTSORT {
  int key = 0;
  char16_t separator = u'|';
  bool cached = false;
};

// The item compare callback; `context` is a tagLISTSORT*.
int ListCompareItems(uintptr_t item1, uintptr_t item2, uintptr_t context);
// The comparison of two rows by their prepared keys for a sort by `key` (the rows give the cell
// texts when the keys do not decide).
int ListComparePrepared(const tagLISTSORTKEY& ka, const tagLISTROW& a, const tagLISTSORTKEY& kb,
                        const tagLISTROW& b, int key);
// The comparison of two rows straight from their texts (what the callback does without the prepared
// keys): the reference the prepared comparison must agree with.
int ListCompareRows(const tagLISTROW& a, const tagLISTROW& b, int key, char16_t separator);
// Fills row.sort for a sort by `key`; uses the shared tables.
void ListPrepareSortKey(tagLISTROW& row, int key, char16_t separator);

// number * numerator / denominator in 64 bits, rounded half away from zero; -1 when the
// denominator is 0 (the window system's MulDiv).
int MulDiv(int number, int numerator, int denominator);

// Cell `column` of a row text, or nothing when the text has fewer parts.
std::optional<std::u16string_view> ListCell(std::u16string_view text, int column, char16_t separator);

class KwListEngine {
 public:
  explicit KwListEngine(ListControl& control);
  virtual ~KwListEngine();
  KwListEngine(const KwListEngine&) = delete;
  KwListEngine& operator=(const KwListEngine&) = delete;

  ListControl& Control() { return m_Ctrl; }

  // ---- Separator and cell texts
  char16_t GetSeparator() const { return m_Separator; }
  // Only while the list has no rows (else 0, contract error).
  int SetSeparator(char16_t separator);
  // A cell text as it may be stored: the separator becomes "¦" (U+00A6) when it is "|" and a blank
  // otherwise, since it would split the row; line ends become blanks, since a row shows one line.
  std::u16string CheckItemText(const std::u16string& text) const;

  // ---- Columns
  int InsertColumn(int index, const std::u16string& heading, int width, int align = kListAlignLeft);
  int GetColumnCount() const { return m_Ctrl.GetColumnCount(); }
  // The column widths as "W|w0|w1|...|": W the client width; with the vertical scroll bar showing and
  // the columns filling the rest, each width is scaled up to the whole client width.
  std::u16string GetColumnWidths() const;
  // Restores a GetColumnWidths text; 1 when applied, 0 when empty or refused.
  int SetColumnWidths(const std::u16string& text);
  double GetFactor() const { return m_Factor; }
  void UpdateFactor() { m_Factor = m_Ctrl.GetWidthFactor(); }
  // The row count above which the first insert that passes it fits the columns to the room left by
  // the vertical scroll bar, once per list; -1 (default): the rows that fit in the client area.
  void SetRowThreshold(int rows) { m_RowThreshold = rows; }
  bool GetColumnsAdjusted() const { return m_ColumnsAdjusted; }

  // ---- Rows
  // Inserts a row before `index` (-1 or past the end: at the end). `text` holds all cells joined by
  // the separator; each cell passes CheckItemText. Returns the row's index, -1 on failure.
  int InsertItem(int index, const std::u16string& text, uint64_t key = 0, uint32_t flags = 0,
                 uint32_t value = 0, int enabled = 1);
  int SetItemInfo(int row, uint64_t key, uint32_t flags, uint32_t value);
  int SetItemText(int row, int column, const std::u16string& text);
  std::u16string GetItemText(int row, int column) const;
  std::u16string GetRowText(int row) const;  // the whole row text
  // The same without a copy; valid until the row changes or goes.
  std::u16string_view GetRowView(int row) const;
  uint64_t GetKey(int row) const;
  int SetKey(int row, uint64_t key);
  uint32_t GetFlags(int row) const;
  uint32_t GetValue(int row) const;
  int DeleteItem(int row);
  int DeleteAllItems();
  int GetItemCount() const { return m_Ctrl.GetItemCount(); }
  int SeekIndexOfKey(uint64_t key) const;                 // the first row with the key, or -1
  // The first row from `start` whose cell equals `text` in the library collation, case ignored.
  int SeekIndexOfText(const std::u16string& text, int column = 0, int start = 0) const;

  // ---- Selection
  int GetCurSel() const;       // the first selected row, or -1
  int SetCurSel(int row);      // selects only `row`, gives it the focus and shows it; -1 clears
  std::vector<int> GetSelectedRows() const;
  // The selection filter: selects (`select` 1) or deselects (0) the rows whose cell in `column`
  // matches `filterText` as a filter of the column's type. Returns the number of matching rows, or
  // -1 when the filter text was refused (the user has been told why).
  int SelectByFilter(int column, const std::u16string& filterText, int select);

  // ---- Row states
  int GetCheck(int row) const;           // 0 or 1; 0 for a bad row
  int SetCheck(int row, int check);
  int GetEnabled(int row) const;         // 1 when the row's flags have kListRowEnabled
  int SetEnabled(int row, int enabled);
  int GetImageNo(int row) const;         // -1 none or a bad row
  int SetImageNo(int row, int image);
  int GetColorMode() const { return m_ColorMode; }
  int SetColorMode(int mode);            // kListColor...; 0 for an unknown mode
  // The text and background colours (0xRRGGBB) of a row in the present colour mode.
  void GetItemColors(int row, uint32_t& text, uint32_t& back) const;
  int GetTextAlign(int column) const;
  int SetTextAlign(int column, int align);

  // ---- Hyperlinks: cells of a hyperlink column are opened with the shell ("open").
  int EnableHyperlinks(int column, int enable);
  int IsHyperlinkColumn(int column) const;
  // Opens the cell's text; 1 when the shell started it, 0 otherwise (not a hyperlink column, empty).
  int ExecuteHyperlink(int row, int column);

  // ---- Sorting
  // Mode and order flag go to the list; a non-null format text and the compare function (null
  // clears it) go to the shared tables for this column of every list.
  int SetSortModus(int column, uint32_t mode, uint32_t orderFlag = 1, const char16_t* formatText = nullptr,
                   KwListCompareFunc compareFunction = nullptr);
  uint32_t GetSortModus(int column) const;
  uint32_t GetSortOrder(int column) const;
  int GetSortedColumn() const { return m_ColToSort; }
  int GetColToSort() const { return m_ColToSort; }
  void SetColToSort(int key);
  // A header click: true when it sorted (the click is consumed).
  bool OnColumnClick(int column);
  // Sorts by `column` (-1: again by the present key); without `keepDirection` a sort by the present
  // column turns its direction. 1 when it sorted.
  int Sort(int column, int keepDirection);

  // ---- Editing, clipboard, undo
  void EnableEdit(int enable) { m_EditEnabled = enable != 0; }
  int IsEditEnabled() const { return m_EditEnabled ? 1 : 0; }
  // The user's edit of one cell; needs editing enabled and an enabled row. Undoable.
  int EditItem(int row, int column, const std::u16string& text);
  // Deletes the selected rows (needs editing enabled). Undoable; returns the rows deleted.
  int DeleteSelectedItems();
  // Copies the selected rows (the focused row when none is selected) as lines of tab-separated
  // cells; returns the rows copied.
  int CopyToClipboard() const;
  // Inserts the clipboard's lines (tab-separated cells) before the focused row, or at the end.
  // Needs editing enabled. Undoable; returns the rows inserted.
  int PasteFromClipboard();
  int CanUndo() const { return m_UndoPos > 0 ? 1 : 0; }
  int CanRedo() const { return m_UndoPos < m_Undo.size() ? 1 : 0; }
  int Undo();
  int Redo();
  void ClearUndo();
  int GetModified() const { return m_Modified ? 1 : 0; }
  void SetModified(int modified) { m_Modified = modified != 0; }

  // ---- List exchange files
  // Maps the key columns and the value columns of the list to the records of an exchange file that
  // carries `identification`. 0 for a bad column.
  int EnableExchange(const std::u16string& identification, const std::vector<int>& keyColumns,
                     const std::vector<int>& valueColumns);
  // Whether the user may import (bit 1) and export (bit 2) files; both after EnableExchange.
  void AllowFileImEx(int allow) { m_FileImEx = allow; }
  int GetFileImEx() const { return m_Exchange ? m_FileImEx : 0; }
  // Replaces the rows by the file's records: 1 done; 0 exchange not enabled or allowed, or the file
  // unreadable; -2 a record with too few key fields; -3 not the expected identification (both
  // reported to the user, the list unchanged).
  int ImportList(const std::u16string& fileName);
  // Writes the rows to the file: 1 done; 0 not enabled or allowed, or a write error (reported).
  int ExportList(const std::u16string& fileName);

 protected:
  tagLISTROW* Row(int row) const;
  // Runs a sort by `key`: copies modes and order flags to the shared tables, prepares the rows,
  // sorts, stores the key and shows the focused row.
  void DoSort(int key);

 private:
  struct UndoRecord {
    enum Kind { kSetText, kInsert, kDelete } kind;
    tagLISTROW* row;                    // the row concerned (in the control, or owned below)
    int index;                          // kInsert / kDelete: where the row stood
    std::u16string text;                // kSetText: the other text of the row
    std::unique_ptr<tagLISTROW> owned;  // a row out of the control
  };
  using UndoStep = std::vector<UndoRecord>;  // one user command
  void PushUndo(UndoStep step);
  int ApplyUndo(UndoStep& step, bool undo);
  int IndexOfRow(const tagLISTROW* row) const;
  void AdjustFirstFill();
  bool CheckColumn(int column) const;  // 0..99, else the contract error

  ListControl& m_Ctrl;
  char16_t m_Separator = u'|';
  uint32_t m_SortModus[kListMaxColumns];  // default kListSortText
  uint32_t m_SortOrder[kListMaxColumns];  // default 1
  int m_Align[kListMaxColumns] = {};
  bool m_Hyperlink[kListMaxColumns] = {};
  int m_ColToSort = 0;  // column + 1 ascending, -(column + 1) descending, 0 not sorted
  double m_Factor = 1.0;
  int m_RefWidth = 0;   // the reference client width, 0 until known
  int m_RowThreshold = -1;
  bool m_ColumnsAdjusted = false;
  int m_ColorMode = kListColorSystem;
  bool m_EditEnabled = false;
  bool m_Modified = false;
  // invariant: m_UndoPos <= m_Undo.size(); steps below m_UndoPos are undoable, the rest redoable.
  std::vector<UndoStep> m_Undo;
  size_t m_UndoPos = 0;
  bool m_Exchange = false;
  int m_FileImEx = 0;
  std::u16string m_ExchangeId;
  std::vector<int> m_KeyColumns, m_ValueColumns;
};

// Binds the engine to the control of a host: a class that owns or wraps a ListControl and gives it
// out through GetListCtrl(). Constructor arguments go to the host.
template <class Base>
class KwListCore : public Base, public KwListEngine {
 public:
  template <class... A>
  explicit KwListCore(A&&... args) : Base(std::forward<A>(args)...), KwListEngine(Base::GetListCtrl()) {}
};

}  // namespace kw
