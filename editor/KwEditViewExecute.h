// Internal to the column and line tasks of KwEditView (editor/KwEditViewExecute*.cpp): reading the
// lines of a task's area, the terms' inputs per line, the progress pane and the collected changes that
// a task applies in one pass at its end.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"
#include "editor/KwLineWalker.h"
#include "platform/KwProgress.h"
#include "platform/Memory.h"
#include "terms/KwTerm.h"

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

// The lines of a task in order, read by one walk over the text: every line of [first, last], or only
// the marked ones for the marked-lines area (the walk then jumps from mark to mark).
class TaskWalk {
 public:
  TaskWalk(KwEditBase& doc, const TaskLines& lines) : m_Doc(doc), m_Lines(lines), m_Walker(doc) {}
  // Moves to the task's next line (the first one on the first call); false when there is none left.
  bool Next();
  KwLineWalker& Current() { return m_Walker; }

 private:
  KwEditBase& m_Doc;
  const TaskLines& m_Lines;
  KwLineWalker m_Walker;
  bool m_Started = false;
};

// The progress pane of a long task, made only when the task visits kPaneLines lines or more. Step
// returns false once the user stopped.
class TaskPane {
 public:
  TaskPane(const std::u16string& title, int64_t total);
  ~TaskPane();
  // Called for every line: the pane is stepped only when the percentage changes.
  bool Step(int64_t done) { return done < m_Next || Advance(done); }

 private:
  bool Advance(int64_t done);

  std::unique_ptr<KwProgress> m_Pane;
  int64_t m_Total;
  int64_t m_Next = 0;  // the first count of done lines at which the percentage changes
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
  // `removedEOLs`: the ends of line in the removed text when known, else -1 (see KwTextSplice).
  void Add(Index at, int64_t removed, const char16_t* text, int64_t length, int64_t removedEOLs = -1);
  void Add(Index at, int64_t removed, const std::u16string& text) {
    Add(at, removed, text.data(), static_cast<int64_t>(text.size()));
  }
  int64_t size() const { return static_cast<int64_t>(m_Entries.size()); }
  // Applies the changes to `doc`; the result of ReplaceRanges. A task makes them one undo step by
  // applying them inside one undo group (ApplyBefore may have applied parts already).
  int64_t Apply(KwEditBase& doc);
  // Whether ApplyBefore(doc, limit) would apply now.
  bool Due(Index limit) const { return m_Entries.size() >= kEarlyBatch && m_End < limit; }
  // Applies the changes collected so far ahead of Apply, once there are many of them and all end
  // before `limit` (an index of the text as the task found it): a task that reads each line once and
  // changes no end of line keeps its list short so, instead of holding a change for every line of a
  // large text. Indexes added later are moved by what these changes added. False when ReplaceRanges
  // failed.
  bool ApplyBefore(KwEditBase& doc, Index limit);

 private:
  static constexpr size_t kEarlyBatch = 8192;
  int64_t m_Shift = 0;    // units that the changes applied early added to the text
  int64_t m_Pending = 0;  // units that the changes in the list add
  Index m_End = 0;        // end of the last change added, as an index of the text the task found
  // The splices' texts are set from the offsets when they are applied: the texts move while they grow.
  // A task over millions of lines collects hundreds of megabytes here: large blocks.
  template <class T>
  using LargeVector = std::vector<T, LargeBlockAllocator<T>>;
  LargeVector<KwTextSplice> m_Entries;
  LargeVector<size_t> m_Offsets;
  std::basic_string<char16_t, std::char_traits<char16_t>, LargeBlockAllocator<char16_t>> m_Units;  // the texts
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

// Visits the lines of a task in order: calls `visit(line, ordinal)` for each with the walker on the
// line (its text is not zero-terminated) and its ordinal in the task (from 1), counting them in
// `visited`. A stopped pane ends the walk; what was collected stays.
template <class Visit>
void ForTaskLines(KwEditBase& doc, const TaskLines& lines, const std::u16string& title, int64_t& visited,
                  Visit&& visit) {
  TaskPane pane(title, lines.count);
  TaskWalk walk(doc, lines);
  int64_t ordinal = 0;
  while (walk.Next()) {
    if (!pane.Step(ordinal)) break;
    ++ordinal;
    ++visited;
    visit(walk.Current(), ordinal);
  }
}

// What a line selection (kLineAction...) does with the lines it selects, done while the lines are
// walked: marks are set or cleared at once; lines to delete are gathered as runs of adjacent lines,
// each one splice taken from the walker's indexes, and deleted as one undo step. When nothing the walk
// still reads moves with the deletions (every line of the area is walked, no line marks exist and the
// selection reads only its own line) the runs are deleted in parts behind the walk inside one undo
// group, so that a large text never holds a run for each of its lines; else all at the end. Either way
// the undo memory asks about a large deletion once, before anything is deleted.
class LineAction {
 public:
  // `lines`: the task's lines; `readsOtherLines`: the selection reads lines other than the current one.
  LineAction(KwEditBase& doc, int action, const TaskLines& lines, bool readsOtherLines);
  ~LineAction();
  LineAction(const LineAction&) = delete;
  LineAction& operator=(const LineAction&) = delete;
  // The current line of the walk, selected (`hit`) or not.
  void Take(const KwLineWalker& line, bool hit);
  // Deletes the gathered lines. Returns 1 (also when there was nothing to delete), 0 when the change
  // could not be made or the user declined the undo memory's question (nothing was deleted then);
  // `*deleted` tells whether lines went.
  int Finish(bool* deleted);

 private:
  void CloseRun();
  // Deletes the runs that end before m_Limit, opening the undo group first.
  void DeleteEarly();

  KwEditBase& m_Doc;
  int m_Action;
  int64_t m_Lines;        // lines the task visits at most
  Line m_LinesInDoc;      // as the task found the text: the runs' line numbers are of that text
  bool m_Early = false;   // runs are deleted behind the walk
  bool m_Group = false;   // an undo group is open for them
  bool m_Failed = false;  // deleting a part failed
  bool m_Declined = false;  // the user declined the undo memory's question: nothing is deleted
  bool m_Deleted = false;
  int64_t m_Taken = 0;  // lines walked
  // The line visited before the current one, and the length of its end of line.
  Line m_PrevLine = -1;
  int m_PrevEOL = 0;
  // The open run of lines to delete: lines [m_RunFirst, m_RunLast] at [m_RunStart, m_RunEnd).
  Line m_RunFirst = -1;
  Line m_RunLast = -1;
  Index m_RunStart = 0;
  Index m_RunEnd = 0;
  int64_t m_RunLastLength = 0;  // of line m_RunLast, end of line excluded
  bool m_RunLastEnded = false;  // line m_RunLast has an end of line
  int m_RunEOLBefore = -1;      // end-of-line length of the line before the run, -1 when not visited
  Index m_Limit = 0;            // chunk start of the current line: runs ending before it may go
  SpliceList m_Changes;
};

// A task's own angle unit (0..2; any other value leaves the user's unit) for `term` while this lives.
// A term writes its unit back into the user's settings when it goes away, and a task, a replayed
// event above all, must not change them: the term's own unit is put back first. Made after the term,
// so that it goes away before it.
class TaskAngleUnit {
 public:
  TaskAngleUnit(KwTerm& term, int unit) : m_Term(term), m_Saved(term.GetAngleUnit()) {
    if (unit >= kTermRadians && unit <= kTermGon) m_Term.SetAngleUnit(unit);
  }
  ~TaskAngleUnit() { m_Term.SetAngleUnit(m_Saved); }
  TaskAngleUnit(const TaskAngleUnit&) = delete;
  TaskAngleUnit& operator=(const TaskAngleUnit&) = delete;

 private:
  KwTerm& m_Term;
  int m_Saved;
};

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
