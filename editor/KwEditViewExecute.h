// Internal to the column and line tasks of KwEditView (editor/KwEditViewExecute*.cpp): reading the
// lines of a task's area, the terms' inputs per line, the progress pane and the collected changes that
// a task applies in one pass at its end.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"
#include "platform/KwProgress.h"

namespace kw {

class KwEditView;
class KwMathTerm;
class KwLogiTerm;

namespace execute {

// A task over this many lines or more shows a progress pane.
inline constexpr int64_t kPaneLines = 20000;

// The lines a task works on: [first, last], only the marked ones for the marked-lines area.
struct TaskLines {
  unsigned area = 0;
  Line first = 0;
  Line last = 0;
  int64_t count = 0;  // lines that will be visited
  bool markedOnly = false;
  // Lines of the view's selection (fly, else fix), -1 and -2 when there is none; the terms' "selected
  // line" value is 1 inside it.
  Line selFirst = -1;
  Line selLast = -2;
};

// Resolves the task's area on `view`; false (after a beep) when the area does not exist now.
bool ResolveArea(KwEditView& view, int area, TaskLines* lines);
// Narrows the lines to the 1-based range [from, to] (0 and 0: no narrowing; 0 as `to`: to the end).
// Returns false when nothing is left.
bool NarrowLines(TaskLines* lines, int64_t from, int64_t to);

// One reused buffer holding the current line, zero-terminated, read without a copy per call beyond
// the line itself.
class LineReader {
 public:
  explicit LineReader(KwEditBase& doc) : m_Doc(doc) {}
  // The line's units (zero-terminated) and its length into `*length`.
  const char16_t* Read(Line line, int64_t* length);

 private:
  KwEditBase& m_Doc;
  std::vector<char16_t> m_Buffer;
};

// The progress pane of a long task, made only when the task visits kPaneLines lines or more. Step
// returns false once the user stopped.
class TaskPane {
 public:
  TaskPane(const std::u16string& title, int64_t total);
  ~TaskPane();
  bool Step(int64_t done);

 private:
  std::unique_ptr<KwProgress> m_Pane;
  int64_t m_Total;
  int m_Last = -1;
};

// The changes a task collects, sorted by index, applied at its end as one undo step.
class SpliceList {
 public:
  // Room for `count` splices with `units` units of text, so that a task over many lines does not
  // copy the list while it grows.
  void Reserve(int64_t count, int64_t units) {
    m_Entries.reserve(static_cast<size_t>(count));
    m_Offsets.reserve(static_cast<size_t>(count));
    m_Units.reserve(static_cast<size_t>(units));
  }
  // `at` must not lie before the end of the previous splice.
  void Add(Index at, int64_t removed, const char16_t* text, int64_t length);
  void Add(Index at, int64_t removed, const std::u16string& text) {
    Add(at, removed, text.data(), static_cast<int64_t>(text.size()));
  }
  int64_t size() const { return static_cast<int64_t>(m_Entries.size()); }
  // Applies the changes to `doc` as one undo step; the result of ReplaceRanges.
  int64_t Apply(KwEditBase& doc);

 private:
  // The splices' texts are set from the offsets when they are applied: the texts move while they grow.
  std::vector<KwTextSplice> m_Entries;
  std::vector<size_t> m_Offsets;
  std::u16string m_Units;  // the texts, one after the other
};

// The inputs of a term on one line: the five caller values, and for a term that names other lines
// one field text per reference.
class TermInput {
 public:
  // The references of the term (from GetTextNumberAreas); their field texts are made per line only
  // when the term names other lines (`otherRows`). The caller values are always filled: line number
  // (from 1), line length, 1 for a marked line, 1 for a line of the selection, and the line's ordinal
  // in the task (from 1).
  TermInput(KwEditBase& doc, const TaskLines& lines, bool otherRows, const int64_t* firsts, const int64_t* lasts,
            const int64_t* rowOffsets, const int64_t* absRows, int64_t referenceCount);
  // Fills the values (and fields) for `line`, of length `length`, the `ordinal`-th line of the task
  // (from 1).
  void Prepare(Line line, int64_t length, int64_t ordinal);
  const int64_t* values() const { return m_Values; }
  bool otherRows() const { return m_OtherRows; }
  const std::vector<std::u16string>& fields() const { return m_Fields; }

 private:
  KwEditBase& m_Doc;
  const TaskLines& m_Lines;
  bool m_OtherRows;
  std::vector<int64_t> m_First, m_Last, m_RowOffset, m_AbsRow;
  std::vector<std::u16string> m_Fields;
  int64_t m_Values[5] = {0, 0, 0, 0, 0};
};

// Visits the lines of a task in order: calls `visit(line, text, length, ordinal)` for each (the
// marked ones only for the marked-lines area) with the line read into a reused zero-terminated
// buffer, counting them in `result.lines`. A stopped pane ends the walk; what was collected stays.
template <class Visit>
void ForTaskLines(KwEditBase& doc, const TaskLines& lines, const std::u16string& title, int64_t& visited,
                  Visit&& visit) {
  TaskPane pane(title, lines.count);
  LineReader reader(doc);
  int64_t ordinal = 0;
  for (Line line = lines.first; line <= lines.last; ++line) {
    if (lines.markedOnly && doc.GetLineMark(line) == 0) continue;
    if (!pane.Step(ordinal)) break;
    ++ordinal;
    ++visited;
    int64_t length = 0;
    const char16_t* text = reader.Read(line, &length);
    visit(line, text, length, ordinal);
  }
}

// Input of an arithmetic or logical term for the current line.
TermInput MakeInput(KwEditBase& doc, const TaskLines& lines, const KwMathTerm& term);
TermInput MakeInput(KwEditBase& doc, const TaskLines& lines, const KwLogiTerm& term);

// Decimals written in a number text: the digits behind its last point or comma (0 without one).
int NumberDecimals(const char16_t* text, int64_t length);
// The most decimals of the numeric constants of a term as typed (references and quoted texts are
// not constants).
int TermDecimals(const std::u16string& term);
// The most decimals of the referenced fields (columns `firsts[k]`..`lasts[k]`, 1-based) in a line.
int FieldDecimals(const char16_t* line, int64_t length, const int64_t* firsts, const int64_t* lasts,
                  int64_t count);

// The text a result is written as: `value` through `picture` (empty: "#"s over `width` with
// `decimals` decimals), right-aligned in `width` units. Leading blanks of a longer picture are cut.
// Returns false when the value does not fit; `*out` then holds the overflow mark ("*" over the width).
bool FormatResult(double value, const std::u16string& picture, int64_t width, int decimals, int roundMode,
                  std::u16string* out);

}  // namespace execute
}  // namespace kw
