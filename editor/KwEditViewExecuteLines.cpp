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

using execute::SpliceList;
using execute::TaskLines;
using execute::TaskPane;

namespace {

bool IsBlank(const std::u16string& text) { return text.find_first_not_of(u" \t") == std::u16string::npos; }

}  // namespace

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
  const execute::TaskAngleUnit unit(term, p->m_AngleUnit);
  if (!everyLine && term.SetTerm(p->m_Term, 1) == 0) return 0;
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  if (!execute::NarrowLines(&lines, p->m_FirstLine, p->m_LastLine)) return 0;

  KwExecuteResult& r = m_LastExecute;
  TaskPane pane(u"EditLineSelect", lines.count);
  execute::TaskWalk walk(*m_Doc, lines);
  execute::TermInput input = execute::MakeInput(*m_Doc, lines, term);
  execute::LineAction action(*m_Doc, p->m_Action, lines, input.otherRows());
  int64_t ordinal = 0;
  while (walk.Next()) {
    if (!pane.Step(ordinal)) break;
    ++ordinal;
    ++r.lines;
    KwLineWalker& line = walk.Current();
    bool hit = true;
    if (!everyLine) {
      input.Prepare(line.GetLine(), line.GetLength(), ordinal);
      hit = (input.otherRows() ? term.CalculateResult(input.fields(), input.values(), 0)
                               : term.CalculateResult(line.GetText(), line.GetLength(), input.values(), 0)) != 0;
    }
    if (p->m_Invert != 0) hit = !hit;
    if (hit) ++r.changed;
    action.Take(line, hit);
  }
  if (!FinishLineAction(action)) return 0;
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
