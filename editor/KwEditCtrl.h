// KwEditCtrl: the editor as a text field inside a dialog. It is a KwEditView over a document that it
// owns, with these differences from the view of an editor window:
//   - Tab and Shift+Tab leave the control (the dialog moves the focus) instead of editing;
//   - there are no line marks and no bookmarks: their commands beep and change nothing;
//   - it never records: SetRecording is ignored, so no task is handed to RecordEvent;
//   - the text is set and read as a whole (SetText, GetText), and setting it starts a new undo memory.
// Everything else (movement, selection, typing, clipboard, undo) works as in the view.
#pragma once

#include <string>

#include "editor/KwEditBase.h"
#include "editor/KwEditView.h"

namespace kw {

// Holds the control's document; a base listed before KwEditView, so the document is made before the
// view that borrows it and goes after it.
struct KwEditCtrlDocument {
  KwEditBase m_OwnDocument;
};

class KwEditCtrl : private KwEditCtrlDocument, public KwEditView {
 public:
  KwEditCtrl();
  ~KwEditCtrl() override;

  // Replaces the text (its line ends, CR LF, CR or LF, become CR LF); the undo memory starts empty,
  // the document is unmodified and the caret goes to the start.
  void SetText(const std::u16string& text);
  std::u16string GetText() { return GetDocument()->GetAllText(); }

  // Tab leaves the control forwards, Shift+Tab backwards: LeaveControl is called, the text stays.
  // Both return 0 (no text changed).
  int OnEditTab() override;
  int OnEditBackTab() override;
  // Called when the focus should move to the next (`direction` 1) or previous (-1) control of the
  // dialog. This version counts the requests (GetLeaveCount) for a dialog that polls.
  virtual void LeaveControl(int direction);
  int64_t GetLeaveCount(int direction) const { return direction > 0 ? m_LeaveForward : m_LeaveBackward; }

  void SetRecording(int /*flag*/) override {}
  void RecordEvent(KwRecordEvent* /*event*/, int /*flags*/) override {}

 protected:
  bool UsesLineMarks() const override { return false; }

 private:
  int64_t m_LeaveForward = 0;
  int64_t m_LeaveBackward = 0;
};

}  // namespace kw
