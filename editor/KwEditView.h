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
namespace execute {
class LineAction;
}

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

  // ==== Commands ======================================================================================
  // The handlers of the view's commands, grouped as the menus group them. A handler named On... runs
  // its command; a Do... function is the same step callable with a flag (`select` nonzero extends the
  // fly selection instead of removing it) and returns 1 when the caret moved; an OnUpdate... enabler
  // returns a state word: bit 0 (kUpdateEnabled) the command can run now, bit 1 (kUpdateChecked) its
  // switch is on. Commands that change text do so through the document, one undo step each. A command
  // that cannot run now beeps and changes nothing.
  static constexpr int kUpdateEnabled = 1;
  static constexpr int kUpdateChecked = 2;

  // ---- Caret movement (KwEditViewMove.cpp) -----------------------------------------------------------
  // Left at column 0 goes to the end of the previous line; right at the end of a line goes to the start
  // of the next one (with the free caret, right goes on beyond the end instead). Up and down keep
  // aiming at the column where the vertical movement started (the goal column): a shorter line puts
  // the caret at its end, the next longer one back at the goal. Page up and down move by the page's
  // lines and scroll the first shown line with them. Quick moves go by words, a word being a run of
  // units other than blank and tab: QuickRight to the start of the next word, QuickRightEnd to the end
  // of the present or next word, QuickLeft to the start of the present or previous word, QuickLeftEnd
  // to the end of the previous word; where the line has no such word they stop at its end (right) or
  // column 0 (left), and from there they go on to the next line's start or the previous line's end.
  int DoEditLeft(int select = 0);
  int DoEditRight(int select = 0);
  int DoEditUp(int select = 0);
  int DoEditDown(int select = 0);
  int DoEditHome(int select = 0);
  int DoEditEnd(int select = 0);
  int DoEditTop(int select = 0);
  int DoEditBottom(int select = 0);
  int DoEditPgUp(int select = 0);
  int DoEditPgDn(int select = 0);
  int DoQuickLeft(int select = 0);
  int DoQuickRight(int select = 0);
  int DoQuickLeftEnd(int select = 0);
  int DoQuickRightEnd(int select = 0);
  void OnEditLeft() { DoEditLeft(0); }
  void OnEditRight() { DoEditRight(0); }
  void OnEditUp() { DoEditUp(0); }
  void OnEditDown() { DoEditDown(0); }
  void OnEditHome() { DoEditHome(0); }
  void OnEditEnd() { DoEditEnd(0); }
  void OnEditTop() { DoEditTop(0); }
  void OnEditBottom() { DoEditBottom(0); }
  void OnEditPgUp() { DoEditPgUp(0); }
  void OnEditPgDn() { DoEditPgDn(0); }
  void OnQuickLeft() { DoQuickLeft(0); }
  void OnQuickRight() { DoQuickRight(0); }
  void OnQuickLeftEnd() { DoQuickLeftEnd(0); }
  void OnQuickRightEnd() { DoQuickRightEnd(0); }
  // Asks for a line number (QueryGotoLine, counted from 1) and moves the caret to its start.
  void OnGotoLine();
  // Runs ExecuteGotoMarkedLine with the dialog's parameters.
  void OnGotoMarkedLine();
  // Moves the caret to the partner of the bracket at the caret (MatchBrace); beeps when there is none.
  int DoGotoBrace(int select = 0);
  void OnGotoBrace() { DoGotoBrace(0); }

  // ---- Selection (KwEditViewMove.cpp) ----------------------------------------------------------------
  // The shifted movements extend the fly selection from its anchor: a stream selection, or a column
  // block while the column mode (OnSelectColumn) is on.
  void OnSelectLeft() { DoEditLeft(1); }
  void OnSelectRight() { DoEditRight(1); }
  void OnSelectUp() { DoEditUp(1); }
  void OnSelectDown() { DoEditDown(1); }
  void OnSelectHome() { DoEditHome(1); }
  void OnSelectEnd() { DoEditEnd(1); }
  void OnSelectTop() { DoEditTop(1); }
  void OnSelectBottom() { DoEditBottom(1); }
  void OnSelectPgUp() { DoEditPgUp(1); }
  void OnSelectPgDn() { DoEditPgDn(1); }
  void OnSelectQLeft() { DoQuickLeft(1); }
  void OnSelectQRight() { DoQuickRight(1); }
  void OnSelectQLeftEnd() { DoQuickLeftEnd(1); }
  void OnSelectQRightEnd() { DoQuickRightEnd(1); }
  // The whole text as a stream selection, the caret at its end.
  void OnSelectAll();
  // Switches the column mode: while it is on, selecting makes column blocks and the caret may stand
  // beyond the line ends. A present fly selection changes its kind with it.
  void OnSelectColumn();
  int OnUpdateSelectColumn() const { return kUpdateEnabled | (m_ColumnMode ? kUpdateChecked : 0); }
  // Makes the fly selection the document's fix selection (the fly selection goes); beeps without one.
  void OnSelectStick();
  // Makes the fix selection the fly selection again, the caret at its end; beeps without one.
  void OnSelectRecall();
  // Removes the fly and the fix selection.
  void OnSelectRemove();
  int OnUpdateSelectRemove() { return (GetSelFlags() & kSelMaskAny) != 0 ? kUpdateEnabled : 0; }
  // Selects the lines from the first to the last marked one as a stream, ends of line included.
  void OnSelectLineMark();
  // Selects from the bracket at the caret to its partner, both included.
  void OnSelectBrace();

  // ---- Typing and deleting (KwEditViewType.cpp) ------------------------------------------------------
  // Types one unit. 13 or 10 breaks the line (the document's end of line is inserted). A stream fly
  // selection is replaced by the unit. In a column block the unit is typed on every line of the block:
  // the block's columns are replaced by it (a block of no width takes it at its column, in insert mode
  // pushing the rest to the right, in overwrite mode over the unit there), and the block shrinks to no
  // width behind it, so that further typing goes on in every line. Without a selection: insert mode
  // inserts at the caret, overwrite mode replaces the unit under the caret (at the line end it
  // inserts: an end of line is never overwritten). A caret beyond the line end first pads the line
  // with blanks. Returns 1 when the text changed.
  int OnChar(char16_t ch);
  // Switches between insert and overwrite mode.
  void OnEditInsert() { m_InsertMode = m_InsertMode ? 0 : 1; }
  int GetInsertMode() const { return m_InsertMode; }
  void SetInsertMode(int insert) { m_InsertMode = insert ? 1 : 0; }
  int OnUpdateEditInsert() const { return kUpdateEnabled | (m_InsertMode ? kUpdateChecked : 0); }
  // Deletes the selection; else the unit before the caret; at column 0 joins the line to the previous
  // one. A caret beyond the line end only moves left. A column block of no width deletes the column
  // before it on each line.
  int OnBackSpace();
  // Deletes the selection; else the unit at the caret; at (or beyond) the line end joins the next line
  // to this one (padding to the caret first). A column block of no width deletes the column behind it.
  int OnCharDelete();
  // Goes to the next tab stop (the view's tab stops, beyond them every GetTabWidth columns); in insert
  // mode the way there is filled with blanks. With a fly selection over several lines: OnIndent.
  virtual int OnEditTab();
  // Goes back to the previous tab stop (column 0 at the latest); no text changes.
  virtual int OnEditBackTab();
  // Puts GetIndentWidth blanks in front of each line of the fly selection (or the caret's line), one
  // undo step.
  int OnIndent();
  // Inserts an empty line after (OnLineInsert) or before (OnLineBefore) the caret's line; the caret
  // goes to it.
  int OnLineInsert();
  int OnLineBefore();
  // Deletes the caret's line with its end of line (the last line: its text and the end of line before
  // it).
  int OnLineDelete();
  // Deletes from the caret to the line end.
  int OnLineCutOff();
  // Inserts a form feed (12) at the caret.
  int OnInsertFF() { return OnChar(KwEditBase::kFormFeed); }
  // Inserts a blank at the caret; the caret stays.
  int OnCharInsert();
  // The tasks with their dialog's parameters: ExecuteAutoInsert, ExecuteBinChar, ExecuteExtChar.
  void OnAutoInsert();
  void OnBinChar();
  void OnExtChar();
  // Inserts `text` as one undo step: a stream fly selection is replaced by it, otherwise it goes in at
  // the caret (padding a caret beyond the line end). Its ends of line (CR LF, CR or LF) become the
  // document's. The caret goes behind it; `flags` 1 selects it instead. Returns 1, 0 when nothing
  // could be inserted.
  int InsertText(const std::u16string& text, int flags = 0);

  // ---- Clipboard (KwEditViewClip.cpp) ---------------------------------------------------------------
  // Copies the fly selection, or else the fix selection, to the clipboard: a stream as it stands, a
  // column block as a column text (GetColumnText with its marker line) so that pasting inserts it as a
  // column again. Cut removes it afterwards. The ...Plus variants append to what the clipboard holds.
  // Without a selection: a beep.
  int OnEditCopy() { return CopyToClipboard(0, 0); }
  int OnEditCut() { return CopyToClipboard(1, 0); }
  int OnCopyPlus() { return CopyToClipboard(0, 1); }
  int OnCutPlus() { return CopyToClipboard(1, 1); }
  // Pastes: a column text goes in as a column at the caret (lines are appended when the text runs out
  // of lines), any other text as InsertText.
  int OnEditPaste();
  int OnUpdateEditPaste();
  // Copy and cut need a fly or a fix selection.
  int OnUpdateEditCopy() { return (GetSelFlags() & kSelMaskAny) != 0 ? kUpdateEnabled : 0; }
  // Empties the clipboard.
  void OnClipCls();
  // The marked lines (each with its end of line) to the clipboard; Cut deletes them.
  int OnLineMarkCopy();
  int OnLineMarkCut();
  // Appends the caret's line (with its end of line) to the clipboard; Cut deletes it.
  int OnLineCopyPlus();
  int OnLineCutPlus();

  // ---- Undo (KwEditViewClip.cpp) --------------------------------------------------------------------
  // Undo and redo one step; the caret goes to the step's position. Beep when there is none.
  int OnEditUndo();
  int OnEditRedo();
  int OnUpdateEditUndo() const { return m_Doc->CanUndo() ? kUpdateEnabled : 0; }
  int OnUpdateEditRedo() const { return m_Doc->CanRedo() ? kUpdateEnabled : 0; }

  // ---- Line marks and bookmarks (KwEditViewMarks.cpp) -----------------------------------------------
  // Marks the lines of the fly selection; without one toggles the caret line's mark.
  void OnMarkLines();
  // Runs ExecuteLine2 (line selection by a field) with its dialog's parameters.
  void OnMarkLine2();
  // Unmarks the lines of the fly selection, or the caret's line.
  void OnMarkRemove();
  // Puts back the marks as they were before the last command that changed all marks at once (clear,
  // invert, select, recall itself).
  void OnMarkRecall();
  void OnLineMarkClear();
  void OnLineMarkInvert();
  // Deletes the marked lines, one undo step.
  int OnLineMarkDelete();
  // To the next (previous) marked or bookmarked line; the ...Sel variants extend the selection.
  int DoNextLineMark(int select = 0);
  int DoPrevLineMark(int select = 0);
  void OnNextLineMark() { DoNextLineMark(0); }
  void OnPrevLineMark() { DoPrevLineMark(0); }
  void OnNextLineMarkSel() { DoNextLineMark(1); }
  void OnPrevLineMarkSel() { DoPrevLineMark(1); }
  // Toggles the bookmark of the caret's line.
  void OnSetBookMark();
  int DoNextBookMark(int select = 0);
  int DoPrevBookMark(int select = 0);
  void OnNextBookMark() { DoNextBookMark(0); }
  void OnPrevBookMark() { DoPrevBookMark(0); }
  void OnNextBookMarkSel() { DoNextBookMark(1); }
  void OnPrevBookMarkSel() { DoPrevBookMark(1); }
  void OnClearBookMarks();
  int OnUpdateLineMarks() const { return m_Doc->MinLineMark() >= 0 ? kUpdateEnabled : 0; }
  int OnUpdateBookMarks() const { return m_Doc->GetBookMarkCount() > 0 ? kUpdateEnabled : 0; }

  // ---- Column and line tasks, find and replace (KwEditViewTasks.cpp) ---------------------------------
  // Each runs its Execute... task with the parameters of its dialog (GetDialogParams): the dialog is
  // the event's ShowDialog, which edits nothing here, so the task runs with the parameters as they
  // are. The find commands set the dialog's find event's command (next, previous, first, last) and
  // whether matches must lie in the fix selection (the ...Sel variants).
  void OnEditCalcCol();
  void OnEditColSum();
  void OnEditFormLin();   // line selection by a logical term
  void OnEditFormLr();    // column align
  void OnEditFormNum();   // column form (numbers through a picture)
  void OnEditLineUmb();   // line break
  void OnEditSort();
  void OnColAssist();     // line selection by a field (the column assistant)
  void OnColWrite();
  void OnEditMenu();      // transformation rules: not available (NotYetImplemented)
  void OnEditFind();
  void OnEditReplace();
  void OnEditReplTab();
  void OnFindNext() { FindNext(0, 0); }
  void OnFindPrev() { FindNext(1, 0); }
  void OnFindFirst() { FindNext(2, 0); }
  void OnFindLast() { FindNext(3, 0); }
  void OnFindNextSel() { FindNext(0, 1); }
  void OnFindPrevSel() { FindNext(1, 1); }
  void OnFindFirstSel() { FindNext(2, 1); }
  void OnFindLastSel() { FindNext(3, 1); }
  // Finds again with the dialog's find parameters: `command` 0 next, 1 previous, 2 first, 3 last;
  // `inSelection` 1 only inside the fix selection. Returns the task's result.
  int FindNext(int command, int inSelection);

  // ---- Tab stops (KwEditViewSettings.cpp) -----------------------------------------------------------
  // The view's tab stops are columns (from 0, ascending, each once) where OnEditTab stops; beyond the
  // last one stops follow every GetTabWidth columns.
  int AddTabStop(int64_t column);     // 1 when added, 0 when it was there or is not above 0
  int RemoveTabStop(int64_t column);  // 1 when removed
  void ClearTabStops() { m_TabStops.clear(); }
  const std::vector<int64_t>& GetTabStops() const { return m_TabStops; }
  // The next tab stop after `column`.
  int64_t NextTabStop(int64_t column) const;
  // The last tab stop before `column` (0 at the latest).
  int64_t PrevTabStop(int64_t column) const;
  // Toggles the tab stop at the caret's column.
  void OnTabStop();
  void OnTabStopsRemove() { ClearTabStops(); }
  // Shows or hides the ruler line of the tab stops.
  void ToggleTabLine() { m_ShowTabLine = !m_ShowTabLine; }
  int GetShowTabLine() const { return m_ShowTabLine ? 1 : 0; }
  int GetTabWidth() const { return m_TabWidth; }
  void SetTabWidth(int width) { m_TabWidth = width > 0 ? width : 1; }
  int GetIndentWidth() const { return m_IndentWidth; }
  void SetIndentWidth(int width) { m_IndentWidth = width > 0 ? width : 1; }

  // ---- View settings (KwEditViewSettings.cpp) -------------------------------------------------------
  // Kept for the window that paints the view; nothing here paints.
  struct Settings {
    int fontSize = 10;     // points; kFontSizes lists the steps
    bool showBinary = false;  // control units shown as their codes
    bool showEOL = false;     // the end-of-line display character shown
    bool unixMode = false;    // LF shown as a line end in a CR LF document
    bool showMaxWidth = false;  // a line at the longest line's width
    bool traceEdit = false;   // the window traces every edit command
    int64_t repaints = 0;     // repaint requests since the view was made
  };
  static constexpr int kFontSizes[] = {6, 7, 8, 9, 10, 11, 12, 14, 16, 18, 20, 24, 28, 36, 48, 72};
  const Settings& GetSettings() const { return m_Settings; }
  // One font size step bigger (smaller); 0 at the last step.
  int OnViewBigger();
  int OnViewSmaller();
  void OnViewBin() { m_Settings.showBinary = !m_Settings.showBinary; }
  void OnViewEol() { m_Settings.showEOL = !m_Settings.showEOL; }
  void OnViewUnix() { m_Settings.unixMode = !m_Settings.unixMode; }
  void OnViewMaxWidth() { m_Settings.showMaxWidth = !m_Settings.showMaxWidth; }
  void OnTraceEdit() { m_Settings.traceEdit = !m_Settings.traceEdit; }
  void OnRepaint() { ++m_Settings.repaints; }
  // Syntax colours are not available: NotYetImplemented.
  void OnViewColors();
  // Lets the user edit the settings through QueryViewSettings; 1 when they changed.
  int OnViewSet();

  // ---- Files and printing (KwEditViewSettings.cpp) --------------------------------------------------
  // Inserts a file (asked for through QueryFileName) at the caret, one undo step.
  int OnFileImport();
  // Writes the fly or fix selection (the whole text without one) to a file asked for through
  // QueryFileName, in the document's encoding; the document stays as it is.
  int OnFileExport();
  // When the document's file changed on disk: asks 1902 (unmodified) or 1903 (modified) and on Yes
  // reads the file again. Returns 1 when it reloaded.
  int ReloadChangedDoc();
  // Stores the view's settings, tab stops and caret in the user settings, section "EditView" and the
  // document's name as key; LoadDocSettings reads them back. Without an application object: 0.
  int SaveDocSettings();
  int LoadDocSettings();
  // Printing is not available: NotYetImplemented.
  void OnViewPrintPage();
  void DoFilePrint();
  void DoFilePrintPreview();

  // ---- Questions a window asks the user --------------------------------------------------------------
  // There are no dialogs here; a window adapter (or a test) overrides these. Each returns 1 with the
  // answer filled in, 0 when the user cancelled; these versions cancel.
  virtual int QueryGotoLine(Line* line);
  // `exportFile` 1: the name of a file to write, 0: of a file to read.
  virtual int QueryFileName(int exportFile, std::u16string* name);
  virtual int QueryViewSettings(Settings* settings);

  // ---- Recorded command events ---------------------------------------------------------------------
  static std::unique_ptr<KwRecordEvent> AllocRecordEvent(int letter) { return kw::AllocRecordEvent(letter); }
  static std::unique_ptr<KwRecordEvent> ParseRecordEvent(const std::u16string& line,
                                                         const std::u16string& baseFolder = std::u16string()) {
    return kw::ParseRecordEvent(line, baseFolder);
  }
  int IsRecording() const { return m_Recording; }
  // The application switches recording on and off; while on, every executed recordable task hands its
  // event to RecordEvent.
  virtual void SetRecording(int flag) { m_Recording = flag ? 1 : 0; }
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
  // Ends a line selection: deletes the lines `action` gathered as one undo step and then clamps the
  // caret (the fly selection goes). Returns 1, 0 when the change could not be made.
  int FinishLineAction(execute::LineAction& action);
  // Inserts `count` copies of `unit` at the caret (a caret beyond the line's end first fills the line
  // with blanks) as one undo step; the caret goes behind them. Returns 1, 0 when it failed.
  int InsertUnitsAtCaret(char16_t unit, int64_t count);
  // Finds `text` for a find command (0 next from the caret, 1 previous from the selection's start,
  // 2 first, 3 last) under `options`; 1 and the match, or 0.
  int FindFrom(const std::u16string& text, const KwFindEventOptions& options, int command, Line* line,
               int64_t* column, int64_t* length);
  // Selects the match at (line, column) of `length` units as a stream, the caret behind it.
  void SelectMatch(Line line, int64_t column, int64_t length);

 public:
  // ==== End of the column and line tasks ===============================================================

 protected:
  // Hands `event` to RecordEvent when recording and not replaying.
  void RecordIfRecording(KwRecordEvent* event, int flags = 0);
  // Clamps a line to the document.
  Line ClampLine(Line line) const;

  // Moves the caret to (line, column) (line clamped, column at least 0). `select` nonzero extends the
  // fly selection from its anchor (a column block in column mode), else the fly selection goes.
  // `keepGoal` leaves the goal column of up and down alone. Returns 1 when the caret moved.
  int MoveCaret(Line line, int64_t column, int select, bool keepGoal = false);
  // The four word moves: rightwards or leftwards, passing blanks first or the word first.
  int QuickMove(bool right, bool blanksFirst, int select);
  // Whether the caret may stand beyond the line end now (column mode).
  bool FreeCaret() const { return m_ColumnMode; }
  // The fly selection ordered, without the reporting rule of GetSel; columns of a stream are cut to
  // their line's length. 0 without a fly selection.
  int OrderedFly(Line* line1, int64_t* column1, Line* line2, int64_t* column2);
  // Deletes the fly selection (one undo step), the caret to its start. 1 when there was one.
  int DeleteFly();
  // Replaces (line, column)..(line, column) padded: puts `text` at a column that may lie beyond the
  // line end (blanks fill the gap), replacing `remove` units there. One undo step.
  int ReplaceAtPadded(Line line, int64_t column, int64_t remove, const std::u16string& text);
  // The fly selection, else the fix selection, as (kind, lines, columns); 0 without either.
  int CurrentSelection(Line* line1, int64_t* column1, Line* line2, int64_t* column2);
  int CopyToClipboard(int cut, int append);
  // The lines `line1`..`line2`, each with its end of line, as text.
  std::u16string LinesText(Line line1, Line line2);
  void SaveMarksForRecall();
  // Whether the commands of line marks and bookmarks work here (a beep otherwise).
  virtual bool UsesLineMarks() const { return true; }
  bool LineMarksOff();
  // The document's line ends in `text` made the document's.
  std::u16string ToDocumentEOL(const std::u16string& text) const;

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
  int m_InsertMode = 1;     // 1 insert, 0 overwrite
  bool m_ColumnMode = false;  // selecting makes column blocks; the caret may stand beyond line ends
  std::vector<int64_t> m_TabStops;  // invariant: ascending, unique, each above 0
  int m_TabWidth = 8;
  int m_IndentWidth = 2;
  bool m_ShowTabLine = false;
  Settings m_Settings;
  std::vector<Line> m_RecallMarks;  // the marked lines before the last command that changed them all
  bool m_HasRecallMarks = false;
  std::vector<std::unique_ptr<KwRecordEvent>> m_DialogParams;  // by letter - kEventFirstCode
  KwExecuteResult m_LastExecute;
};

}  // namespace kw
