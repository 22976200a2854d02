// The vocabulary of the editor's selections and area operations: area kinds, selection flags and their
// masks, the undo record types of the area operations and the sort keys of KwEditBase::SortLines.
#pragma once

#include <cstdint>

namespace kw {

// Area kind: the first argument of the area operations of KwEditBase.
inline constexpr unsigned kAreaText = 0;     // the whole text
inline constexpr unsigned kAreaStream = 1;   // from (line1, column1) up to (line2, column2)
inline constexpr unsigned kAreaColumn = 2;   // lines line1..line2, columns [column1, column2) of each
inline constexpr unsigned kAreaMarked = 16;  // the marked lines of line1..line2, each whole

// Selection flags: the fly selection (the view's) in bits 0-1, the fix (stick) selection of the document
// times 4 in bits 2-3, marked lines in bit 4. Commands test them with the masks.
inline constexpr unsigned kSelFlyStream = 1;
inline constexpr unsigned kSelFlyColumn = 2;
inline constexpr unsigned kSelFixStream = 4;
inline constexpr unsigned kSelFixColumn = 8;
inline constexpr unsigned kSelMarkedLines = 16;
inline constexpr unsigned kSelMaskColumn = 10;  // a column selection of either kind
inline constexpr unsigned kSelMaskFix = 12;     // any fix selection
inline constexpr unsigned kSelMaskFly = 3;      // any fly selection
inline constexpr unsigned kSelMaskAny = 15;     // any selection

// Stick selection kinds (KwEditBase::SetStickSelection). A stream stick selection may be stored by
// character indexes: a negative first column says that line1 and line2 hold the start and end indexes;
// GetStickSelection turns it into lines and columns on first use.
inline constexpr int kStickNone = 0;
inline constexpr int kStickStream = 1;
inline constexpr int kStickColumn = 2;

// Undo records of the area operations; each is undone by the inverse operation applied to exactly the
// places the operation changed.
//   8           SortLines: data = the sorted places (line numbers) then the permutation
//   12, 14, 15  LowerUpper, BlankOver (blank, other character): data = indexes then the old units
//   18          RemoveZeros: data = indexes (each was a zero)
//   5-7, 9-11, 16, 17  ReduceLines, InsertColumn, DeleteColumn, BlankToTab, TabToBlank, InflateLines,
//               CharToEol, EolToChar: data = a list of replacements (index, removed, inserted units), each
//               index valid once the earlier replacements are made
inline constexpr uint32_t kUndoReduceLines = 5;
inline constexpr uint32_t kUndoInsertColumn = 6;
inline constexpr uint32_t kUndoDeleteColumn = 7;
inline constexpr uint32_t kUndoSortLines = 8;
inline constexpr uint32_t kUndoBlankToTab = 9;
inline constexpr uint32_t kUndoTabToBlank = 10;
inline constexpr uint32_t kUndoInflateLines = 11;
inline constexpr uint32_t kUndoLowerUpper = 12;
inline constexpr uint32_t kUndoNothing = 13;
inline constexpr uint32_t kUndoBlankOver = 14;
inline constexpr uint32_t kUndoCharOver = 15;
inline constexpr uint32_t kUndoCharToEol = 16;
inline constexpr uint32_t kUndoEolToChar = 17;
inline constexpr uint32_t kUndoRemoveZeros = 18;

// RemoveZeros modes and ReduceLines flags.
inline constexpr int kZerosLeading = 1;
inline constexpr int kZerosTrailing = 2;
inline constexpr int kReduceTabs = 1;
inline constexpr int kReduceMarkedOnly = 2;

// One sort key: the units [column1, column2) of a line (column2 -1: to the line end; a short line gives
// what it has there). Text keys compare with StrCompare; numeric keys compare the numbers that
// GetDouble reads (comma as point) by value, and put keys that are no number behind them in StrCompare
// order.
struct tagSORTKEY {
  int64_t column1 = 0;
  int64_t column2 = -1;
  int numeric = 0;
  int descending = 0;
  int caseSensitive = 0;
};

}  // namespace kw
