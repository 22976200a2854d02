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

// Transformation rules are not available in this library.
void KwEditView::OnEditMenu() { NotYetImplemented(u"EditView"); }

}  // namespace kw
