// The editor as a text field inside a dialog.
#include "editor/KwEditCtrl.h"

namespace kw {

KwEditCtrl::KwEditCtrl() : KwEditView(&m_OwnDocument) {
  m_OwnDocument.InitEdit();
  m_OwnDocument.SetEOLType(13);
  m_OwnDocument.SetInteractive(0);
}

KwEditCtrl::~KwEditCtrl() = default;

void KwEditCtrl::SetText(const std::u16string& text) {
  m_OwnDocument.InitEdit();
  m_OwnDocument.SetEOLType(13);
  m_OwnDocument.AddText(ToDocumentEOL(text), 0, 0);
  m_OwnDocument.SetModified(0);
  SetSel(0, 0, 0, 0, 0);
}

int KwEditCtrl::OnEditTab() {
  LeaveControl(1);
  return 0;
}

int KwEditCtrl::OnEditBackTab() {
  LeaveControl(-1);
  return 0;
}

void KwEditCtrl::LeaveControl(int direction) {
  if (direction > 0) {
    ++m_LeaveForward;
  } else {
    ++m_LeaveBackward;
  }
}

}  // namespace kw
