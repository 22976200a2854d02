// Sorting by index: a caller gets the order of its data as an array of original positions and may
// then reorder the data itself with an apply function. Build functions end in I (SortDI doubles,
// SortUI unsigned values, SortCI fixed-width text records, qsort strings); apply functions begin
// with I (SortID, SortIU, SortIC, SortIS).
//
// Index array: signed 64-bit original positions, one per element; after a build, index[0] is the
// position of the smallest element. Text keys are ordered by the library collation (StrCompare).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KwProgress.h"

namespace kw {

// ---- Build sorts ------------------------------------------------------------------------------
// Fill index[i] = i and sort it by key ascending with a quicksort that gathers the keys equal to
// each pivot into one run, ordered by original position: equal keys keep their original order and
// a run of equal keys is never sorted again. n below 2 only fills the index (n below 1: nothing).

void SortDI(const double* keys, int64_t* index, int64_t n);
void SortUI(const uint64_t* keys, int64_t* index, int64_t n);
// A text table: one buffer of n records of exactly `width` UTF-16 units, no terminating zeros.
// Records are compared over `width` units with StrCompare(case tie-break 1, numeric 0, blanks 0).
void SortCI(const char16_t* table, int64_t width, int64_t* index, int64_t n);

// Compares two file names (paths with "/" or "\" separators) as the library collation orders
// folders and names: the folder parts first, component by component (a folder sorts before its
// own subfolders, and a separator ends a component rather than being compared as a character),
// then the names; each component with StrCompare(case tie-break 1, numeric 0, blanks 0).
// Returns -1, 0 or 1.
int CollateFileNames(const std::u16string& a, const std::u16string& b);

// Sorts index[first..last] by strings[index[k]]; the caller fills the index. Compares with
// CollateFileNames when `fileNames` is nonzero, else with StrCompare(case tie-break 1, numeric 0,
// blanks 0). A plain quicksort (middle element as pivot, no gathering of equal keys, so it is not
// stable). With a progress pane, every 501 comparisons of the whole call step the pane by 5 percent
// (wrapping to 0 above 100); a step that returns 0 ends the sort. Returns 1 when done, 0 when the
// user stopped it (the index is then partly sorted). Not to be confused with ::qsort: call it as
// kw::qsort.
int qsort(int64_t* index, int64_t first, int64_t last, const std::vector<std::u16string>& strings, int fileNames,
          KwProgress* progress);

// ---- Apply sorts ------------------------------------------------------------------------------
// Reorder the data in place so that element i becomes the old element index[i] (index must be a
// permutation of 0..n-1; a broken one is a contract fault and stops the walk). With `reverse`
// nonzero the same walk runs from n-1 down in steps of two, visiting only every second position:
// this is the library's own rule and callers depend on its result. With an odd count, where the
// walk would never meet -1, it ends after position 0.

void SortID(double* values, const int64_t* index, int64_t n, int reverse);
void SortIU(uint64_t* values, const int64_t* index, int64_t n, int reverse);
// Moves records through a scratch buffer of one record; nothing happens when it cannot be had.
void SortIC(char16_t* table, int64_t width, const int64_t* index, int64_t n, int reverse);
void SortIS(std::vector<std::u16string>& strings, const int64_t* index, int64_t n, int reverse);

// After the key of the entry at index position p changed, moves it to its sorted place step by
// step: left while its left neighbour is greater, right while its right neighbour is smaller. An
// entry out of order on both sides stays where it is.
void SortDM(const double* keys, int64_t* index, int64_t n, int64_t p);

// Sorts a string array itself (qsort, collation order) and a 64-bit unsigned array (SortUI, stable).
void SortStrArray(std::vector<std::u16string>& strings);
void SortUIntArray(std::vector<uint64_t>& values);
// Nonzero when `value` is an element of `values`.
int IsUIntInArray(uint64_t value, const std::vector<uint64_t>& values);

// ---- Sorting many texts ----------------------------------------------------------------------

// A stable sort of many texts in the library collation, for large inputs such as the lines of a
// file. The order equals a stable sort of 0..n-1 by
//   StrCompare(texts[a], texts[b], caseSensitive, numeric, skipLeadingBlanks) < 0
// (by the reverse of it when `reverse` is nonzero; equal texts keep their order either way). The
// collation's primary characters (upper case, umlauts and "ß" expanded, "_" as a blank) and, in
// numeric mode, the numbers are computed once per text, so that most comparisons are a comparison
// of machine words; only texts whose primary characters agree up to the shorter one's end are
// decided by StrCompare itself. `texts` are views that must stay valid during the call. `index`
// receives the order. `progress` (may be null) is stepped after each merge pass; a step that returns
// 0 stops the sort. Returns 1 when done, 0 when stopped (the index is then not meaningful).
int SortTextsStable(const std::vector<std::u16string_view>& texts, int caseSensitive, int numeric,
                    int skipLeadingBlanks, int reverse, std::vector<int64_t>& index, KwProgress* progress);

}  // namespace kw
