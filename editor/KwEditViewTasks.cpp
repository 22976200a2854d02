// The editor view's commands that run column and line tasks and find and replace: each shows the
// task's dialog (the event's ShowDialog, which edits nothing in this library) and runs the task with
// the dialog's parameters.
#include "app/QueryBox.h"
#include "editor/KwEditView.h"

namespace kw {

namespace {

// The dialog's event of `letter` after its dialog was shown; null only for a letter without a kind.
template <class Event>
Event* ShownParams(KwEditView& view, char letter) {
  auto* event = static_cast<Event*>(view.GetDialogParams(letter));
  if (event != nullptr) event->ShowDialog();
  return event;
}

}  // namespace

void KwEditView::OnEditCalcCol() {
  ShownParams<KwColCalcEvent>(*this, kEventColCalc);
  ExecuteColCalc(nullptr);
}

void KwEditView::OnEditColSum() {
  ShownParams<KwColSumEvent>(*this, kEventColSum);
  ExecuteColSum(nullptr);
}

void KwEditView::OnEditFormLin() {
  ShownParams<KwLineSelectEvent>(*this, kEventLineSelect);
  ExecuteLineMark(nullptr);
}

void KwEditView::OnEditFormLr() {
  ShownParams<KwAlignEvent>(*this, kEventAlign);
  ExecuteColAlign(nullptr);
}

void KwEditView::OnEditFormNum() {
  ShownParams<KwColFormEvent>(*this, kEventColForm);
  ExecuteColForm(nullptr);
}

void KwEditView::OnEditLineUmb() {
  ShownParams<KwLineBreakEvent>(*this, kEventLineBreak);
  ExecuteLineUmb(nullptr);
}

void KwEditView::OnEditSort() {
  ShownParams<KwSortEvent>(*this, kEventSort);
  ExecuteLineSort(nullptr);
}

void KwEditView::OnColAssist() {
  ShownParams<KwLine2Event>(*this, kEventLine2);
  ExecuteLine2(nullptr);
}

void KwEditView::OnColWrite() {
  ShownParams<KwColWriteEvent>(*this, kEventColWrite);
  ExecuteColReplace(nullptr);
}

// Transformation rules are not available in this library.
void KwEditView::OnEditMenu() { NotYetImplemented(u"EditView"); }

void KwEditView::OnEditFind() {
  ShownParams<KwFindEvent>(*this, kEventFind);
  ExecuteFind(nullptr);
}

void KwEditView::OnEditReplace() {
  ShownParams<KwReplEvent>(*this, kEventRepl);
  ExecuteReplace(nullptr);
}

void KwEditView::OnEditReplTab() {
  ShownParams<KwTableRepEvent>(*this, kEventTableRep);
  ExecuteTableRep(nullptr);
}

int KwEditView::FindNext(int command, int inSelection) {
  auto* event = static_cast<KwFindEvent*>(GetDialogParams(kEventFind));
  if (event == nullptr) return 0;
  event->m_Command = command;
  event->m_Find.m_InSelection = inSelection ? 1 : 0;
  return ExecuteFind(nullptr);
}

void KwEditView::OnGotoMarkedLine() {
  ShownParams<KwGotoSelectedLineEvent>(*this, kEventGotoSelectedLine);
  ExecuteGotoMarkedLine(nullptr);
}

void KwEditView::OnMarkLine2() {
  if (LineMarksOff()) return;
  ShownParams<KwLine2Event>(*this, kEventLine2);
  ExecuteLine2(nullptr);
}

void KwEditView::OnAutoInsert() {
  ShownParams<KwAutoInsertEvent>(*this, kEventAutoInsert);
  ExecuteAutoInsert(nullptr);
}

void KwEditView::OnBinChar() {
  ShownParams<KwBCharEvent>(*this, kEventBChar);
  ExecuteBinChar(nullptr);
}

void KwEditView::OnExtChar() {
  ShownParams<KwXCharEvent>(*this, kEventXChar);
  ExecuteExtChar(nullptr);
}

}  // namespace kw
