// The editor view's logic without a window: the caret, the fly selection, the view's settings, the
// commands that turn user input into edits of the document, and the column and line tasks that can be
// recorded and replayed. A window adapter paints what this class holds and routes keys and menu
// commands to its handlers; `kw` drives it directly.
//
// The view borrows its document (`KwEditBase`); several views may show one document. The document
// keeps the fix (stick) selection and the line marks, the view the caret and the fly selection.
//
// Positions are (line, column) pairs counted from 0; a column counts UTF-16 units of the line, not
// display cells. The caret may stand beyond the end of a line (column editing); edits there first
// fill the line with blanks.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "editor/KwEditArea.h"
#include "editor/KwEditBase.h"
#include "editor/KwRecordEvent.h"

namespace kw {

class KwProgress;

// What the last Execute... task did, for reports ("12 lines changed, 3 too short").
struct KwExecuteResult {
  int64_t lines = 0;    // lines of the area that the task visited
  int64_t changed = 0;  // lines (or matches, for find and replace) that it changed or selected
  int64_t skipped = 0;  // lines it had to leave alone (too short for the term, no number in the column)
  int64_t overflow = 0; // results that did not fit their picture and were written as overflow marks
  double value = 0;     // the sum of a column sum (whatever its output)
};

class KwEditView {
 public:
  // Number of entries of a RememberState array.
  static constexpr int kStateSize = 12;
  // Number of values that GetSelFlags fills.
  static constexpr int kSelValues = 10;

  explicit KwEditView(KwEditBase* document);
  virtual ~KwEditView();
  KwEditView(const KwEditView&) = delete;
  KwEditView& operator=(const KwEditView&) = delete;

  KwEditBase* GetDocument() const { return m_Doc; }

  // ---- Queries --------------------------------------------------------------------------------------
  // The fly selection ordered from first to last position, or the caret twice when there is none. A
  // stream selection ending at column 0 of a later line is reported as ending at the end of the line
  // before it, its end of line included. A column selection reports its smaller column first.
  void GetSel(Line* line1, int64_t* column1, Line* line2, int64_t* column2);
  // Sets the fly selection from (line1, column1), the anchor, to (line2, column2), where the caret
  // goes. `kind` 1 stream, 2 column, 0 none (the caret goes to (line2, column2)). Lines are clamped to
  // the document, columns to 0 and above. `scroll` nonzero brings the caret into view.
  void SetSel(Line line1, int64_t column1, Line line2, int64_t column2, int kind = 1, int scroll = 1);
  // The selection flags: the fly kind (1, 2), the fix kind times 4 (4, 8), 16 when the document has
  // marked lines (masks in editor/KwEditArea.h). When `values` is given it receives kSelValues entries:
  // fly first line, first column, last line, last column; fix the same (-1 when absent); the number of
  // marked lines; the number of lines.
  unsigned GetSelFlags(int64_t* values = nullptr);
  // Nonzero when the selection flags have any bit of `mask`; otherwise a beep and 0 (a command that
  // needs a selection does nothing).
  int CheckSelection(unsigned mask);
  // The caret's line, and its column into `*column` when given.
  Line GetCurrentLine(int64_t* column = nullptr) const;
  // Number of lines of the document (at least 1).
  int64_t GetLineCount() const;
  // Moves the caret to (line, column), clamped to the document. `select` nonzero extends the fly
  // selection (stream) from its anchor, otherwise the fly selection goes. Returns 1 when it moved.
  int GotoLineCol(Line line, int64_t column, int select = 0, int scroll = 1);
  // The area of kind `area` as the area operations take it: 0 the whole text; 1 and 2 the fly
  // selection of that kind, else the fix selection of that kind; 16 the lines from the first to the
  // last marked one (columns 0 and the longest line). Returns 0 when the area does not exist now (no
  // such selection, no marked line) and leaves the outputs alone.
  int GetArea(unsigned area, Line* line1, int64_t* column1, Line* line2, int64_t* column2);
  // The lines a line task over `area` works on: sets the first and last line and returns how many lines
  // it visits (the marked ones for area 16); 0 when the area does not exist. A stream selection ending
  // at column 0 does not count that line. `flags` 1: with no such area, beep.
  int64_t GetExecuteCount(unsigned area, Line* first, Line* last, int flags = 0);
  // The length of the longest line (end of line excluded) of the lines of `area`; 0 without the area.
  int64_t MaxLineLength(unsigned area);
  // Stores the caret, the fly selection, the fix selection and the first shown line in `state`
  // (kStateSize entries); `flags` 1 also clears the fly selection afterwards. RestoreState puts them back,
  // clamped to the document as it is now. Used around tasks that move the caret.
  void RememberState(int64_t* state, int flags = 0);
  void RestoreState(const int64_t* state);
  // Removes the document's fix selection.
  void UnstickSelection();

  // Lines one page holds (page up and down); the window adapter sets it from its height.
  void SetPageLines(int64_t lines) { m_PageLines = lines > 1 ? lines : 1; }
  int64_t GetPageLines() const { return m_PageLines; }
  Line GetFirstVisibleLine() const { return m_TopLine; }

  // ---- Recorded command events ---------------------------------------------------------------------
  static std::unique_ptr<KwRecordEvent> AllocRecordEvent(int letter) { return kw::AllocRecordEvent(letter); }
  static std::unique_ptr<KwRecordEvent> ParseRecordEvent(const std::u16string& line,
                                                         const std::u16string& baseFolder = std::u16string()) {
    return kw::ParseRecordEvent(line, baseFolder);
  }
  int IsRecording() const { return m_Recording; }
  // The application switches recording on and off; while on, every executed recordable task hands its
  // event to RecordEvent.
  void SetRecording(int flag) { m_Recording = flag ? 1 : 0; }
  // While replaying, tasks take their parameters from the given events and are not recorded again.
  void SetReplaying(int flag) { m_Replaying = flag ? 1 : 0; }
  int IsReplaying() const { return m_Replaying; }
  // Called with each executed recordable task while recording. The application overrides it to store
  // the event (it does not own it; copy it with CopyTo or Format it). This version is an internal
  // error: a view that records must be given a place to record to.
  virtual void RecordEvent(KwRecordEvent* event, int flags);
  // The parameters of a task's dialog, one event per kind (letter as for AllocRecordEvent), created on
  // first use and kept for the view's life. A dialog (or `kw`) fills it; an Execute... task called
  // without an event takes its parameters from here. Null for a letter without a kind.
  KwRecordEvent* GetDialogParams(int letter);
  // What the last Execute... task did.
  const KwExecuteResult& GetLastExecute() const { return m_LastExecute; }

  // ==== Column and line tasks ==========================================================================
  // Each task takes its parameters from `event`, or, when it is null (run from the dialog), from
  // GetDialogParams of its kind. Columns in events count from 1 and include the last one. The area
  // is the event's area kind as the view has it now (GetArea); a task whose area does not exist beeps
  // and returns 0. A task that changes text does so as one undo step and, while recording, hands the
  // parameters it ran with to RecordEvent. Long tasks show a progress pane; stopping it keeps what was
  // done. Failures are reported through QueryBox. Each returns 1 when it ran (even when it changed
  // nothing) and 0 when it failed or found nothing to work on; GetLastExecute tells what it did.
  int ExecuteFind(KwFindEvent* event = nullptr);
  int ExecuteReplace(KwReplEvent* event = nullptr);
  int ExecuteBinChar(KwBCharEvent* event = nullptr);
  int ExecuteExtChar(KwXCharEvent* event = nullptr);
  int ExecuteColAlign(KwAlignEvent* event = nullptr);
  int ExecuteTableRep(KwTableRepEvent* event = nullptr);
  int ExecuteColReplace(KwColWriteEvent* event = nullptr);  // column write
  int ExecuteLineSort(KwSortEvent* event = nullptr);
  int ExecuteLineUmform(KwUmfEvent* event = nullptr);  // transformation rules: not available
  int ExecuteLineUmb(KwLineBreakEvent* event = nullptr);  // line break
  int ExecuteLineMark(KwLineSelectEvent* event = nullptr);
  int ExecuteLine2(KwLine2Event* event = nullptr);
  int ExecuteGotoMarkedLine(KwGotoSelectedLineEvent* event = nullptr);
  int ExecuteColForm(KwColFormEvent* event = nullptr);
  int ExecuteColCalc(KwColCalcEvent* event = nullptr);
  int ExecuteColSum(KwColSumEvent* event = nullptr);
  int ExecuteAutoInsert(KwAutoInsertEvent* event = nullptr);
  // Runs the task of `event`'s kind with it (the replay loop of an application or of `kw run`).
  // Returns the task's result; 0 for an event of a kind without a task.
  int ExecuteRecordEvent(KwRecordEvent* event);

 protected:
  // Deletes `lines` (ascending, no repeats) with their ends of line as one undo step and clamps the
  // caret; the fly selection goes. Returns 1, 0 when the change could not be made.
  int DeleteTaskLines(const std::vector<Line>& lines);

 public:
  // ==== End of the column and line tasks ===============================================================

 protected:
  // Hands `event` to RecordEvent when recording and not replaying.
  void RecordIfRecording(KwRecordEvent* event, int flags = 0);
  // Clamps a line to the document.
  Line ClampLine(Line line) const;

  KwEditBase* m_Doc;  // borrowed; outlives the view
  // The caret and the fly selection: the selection runs between the anchor and the caret.
  Line m_CaretLine = 0;
  int64_t m_CaretCol = 0;
  int m_FlyKind = 0;  // 0 none, 1 stream, 2 column
  Line m_AnchorLine = 0;
  int64_t m_AnchorCol = 0;
  // The column that up and down movements keep aiming at, -1 none.
  int64_t m_GoalCol = -1;
  Line m_TopLine = 0;  // first line shown
  int64_t m_PageLines = 25;
  int m_Recording = 0;
  int m_Replaying = 0;
  std::vector<std::unique_ptr<KwRecordEvent>> m_DialogParams;  // by letter - kEventFirstCode
  KwExecuteResult m_LastExecute;
};

}  // namespace kw
