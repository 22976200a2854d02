// The editor view's line selection by a logical term (mark, unmark, delete or keep the lines for which
// it holds), the line transformation, and the replay of a recorded event through its task.
#include <algorithm>
#include <vector>

#include "app/QueryBox.h"
#include "editor/KwEditView.h"
#include "editor/KwEditViewExecute.h"
#include "platform/Platform.h"
#include "terms/KwLogiTerm.h"

namespace kw {

using execute::LineReader;
using execute::SpliceList;
using execute::TaskLines;
using execute::TaskPane;

namespace {

bool IsBlank(const std::u16string& text) { return text.find_first_not_of(u" \t") == std::u16string::npos; }

}  // namespace

// Deletes the given lines (ascending) as one undo step: each run of adjacent lines goes with its
// ends of line; a run that ends the text takes the end of line before it instead.
int KwEditView::DeleteTaskLines(const std::vector<Line>& doomed) {
  if (doomed.empty()) return 1;
  SpliceList changes;
  for (size_t i = 0; i < doomed.size();) {
    const Line a = doomed[i];
    size_t j = i;
    while (j + 1 < doomed.size() && doomed[j + 1] == doomed[j] + 1) ++j;
    const Line b = doomed[j];
    Index start = m_Doc->LineStart(a);
    const Index end = m_Doc->LineStart(b) + m_Doc->LineLength(b, 1);
    // A run up to a last line with text takes the end of line before it along, so that the text ends as
    // it did, without one. The empty line behind a final end of line is no text: deleting it and the
    // lines before it keeps the final end of line of the lines that stay.
    if (b == m_Doc->GetLinesInDoc() && a > 0 && m_Doc->LineLength(b, 0) > 0)
      start = m_Doc->LineStart(a - 1) + m_Doc->LineLength(a - 1, 0);
    if (end > start) changes.Add(start, end - start, nullptr, 0);
    i = j + 1;
  }
  if (changes.Apply(*m_Doc) < 0) return 0;
  // The caret and the selection may point behind the shorter text.
  const Line caret = ClampLine(m_CaretLine);
  SetSel(caret, m_CaretCol, caret, m_CaretCol, 0, 1);
  return 1;
}

int KwEditView::ExecuteLineMark(KwLineSelectEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwLineSelectEvent*>(GetDialogParams(kEventLineSelect));
  if (p == nullptr) return 0;
  if (p->m_Action < kLineActionMark || p->m_Action > kLineActionKeep) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  // An empty term selects every line of the area (to set or clear the marks of a line range).
  const bool everyLine = IsBlank(p->m_Term);
  KwLogiTerm term;
  if (!everyLine) {
    if (p->m_AngleUnit >= kTermRadians && p->m_AngleUnit <= kTermGon) term.SetAngleUnit(p->m_AngleUnit);
    if (term.SetTerm(p->m_Term, 1) == 0) return 0;
  }
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  if (!execute::NarrowLines(&lines, p->m_FirstLine, p->m_LastLine)) return 0;

  KwExecuteResult& r = m_LastExecute;
  TaskPane pane(u"EditLineSelect", lines.count);
  LineReader reader(*m_Doc);
  execute::TermInput input = execute::MakeInput(*m_Doc, lines, term);
  std::vector<Line> selected, others;
  int64_t ordinal = 0;
  for (Line line = lines.first; line <= lines.last; ++line) {
    if (lines.markedOnly && m_Doc->GetLineMark(line) == 0) continue;
    if (!pane.Step(ordinal)) break;
    ++ordinal;
    ++r.lines;
    bool hit = true;
    if (!everyLine) {
      int64_t length = 0;
      const char16_t* text = reader.Read(line, &length);
      input.Prepare(line, length, ordinal);
      hit = (input.otherRows() ? term.CalculateResult(input.fields(), input.values(), 0)
                               : term.CalculateResult(text, input.values(), 0)) != 0;
    }
    if (p->m_Invert != 0) hit = !hit;
    (hit ? selected : others).push_back(line);
  }
  r.changed = static_cast<int64_t>(selected.size());
  if (ApplyLineAction(p->m_Action, selected, others) == 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteLineUmform(KwUmfEvent* /*event*/) {
  // The transformation rules this task applies are not defined in this library yet.
  m_LastExecute = KwExecuteResult();
  NotYetImplemented(u"EditView");
  return 0;
}

int KwEditView::ExecuteRecordEvent(KwRecordEvent* event) {
  if (event == nullptr) return 0;
  // The kind is told by the class, not only by the letter: an application's own kind may share one.
  switch (event->GetType()) {
    case kEventFind:
      if (auto* e = dynamic_cast<KwFindEvent*>(event)) return ExecuteFind(e);
      break;
    case kEventRepl:
      if (auto* e = dynamic_cast<KwReplEvent*>(event)) return ExecuteReplace(e);
      break;
    case kEventBChar:
      if (auto* e = dynamic_cast<KwBCharEvent*>(event)) return ExecuteBinChar(e);
      break;
    case kEventXChar:
      if (auto* e = dynamic_cast<KwXCharEvent*>(event)) return ExecuteExtChar(e);
      break;
    case kEventAlign:
      if (auto* e = dynamic_cast<KwAlignEvent*>(event)) return ExecuteColAlign(e);
      break;
    case kEventTableRep:
      if (auto* e = dynamic_cast<KwTableRepEvent*>(event)) return ExecuteTableRep(e);
      break;
    case kEventColWrite:
      if (auto* e = dynamic_cast<KwColWriteEvent*>(event)) return ExecuteColReplace(e);
      break;
    case kEventColForm:
      if (auto* e = dynamic_cast<KwColFormEvent*>(event)) return ExecuteColForm(e);
      break;
    case kEventSort:
      if (auto* e = dynamic_cast<KwSortEvent*>(event)) return ExecuteLineSort(e);
      break;
    case kEventUmf:
      if (auto* e = dynamic_cast<KwUmfEvent*>(event)) return ExecuteLineUmform(e);
      break;
    case kEventLineBreak:
      if (auto* e = dynamic_cast<KwLineBreakEvent*>(event)) return ExecuteLineUmb(e);
      break;
    case kEventLineSelect:
      if (auto* e = dynamic_cast<KwLineSelectEvent*>(event)) return ExecuteLineMark(e);
      break;
    case kEventLine2:
      if (auto* e = dynamic_cast<KwLine2Event*>(event)) return ExecuteLine2(e);
      break;
    case kEventColCalc:
      if (auto* e = dynamic_cast<KwColCalcEvent*>(event)) return ExecuteColCalc(e);
      break;
    case kEventColSum:
      if (auto* e = dynamic_cast<KwColSumEvent*>(event)) return ExecuteColSum(e);
      break;
    case kEventAutoInsert:
      if (auto* e = dynamic_cast<KwAutoInsertEvent*>(event)) return ExecuteAutoInsert(e);
      break;
    case kEventGotoSelectedLine:
      if (auto* e = dynamic_cast<KwGotoSelectedLineEvent*>(event)) return ExecuteGotoMarkedLine(e);
      break;
    default:
      break;
  }
  return 0;
}

}  // namespace kw
