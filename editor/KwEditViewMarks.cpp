// The editor view's line-mark and bookmark commands.
#include <algorithm>

#include "editor/KwEditView.h"
#include "platform/Platform.h"

namespace kw {

namespace {

void Beep() { GetPlatform().Beep(BeepClass::Exclamation); }

}  // namespace

namespace {

// The lines a mark command works on: those of the fly selection (a stream ending at column 0 of a
// later line leaves that line out), else the caret's line. Returns whether a fly selection gave them.
bool MarkRange(KwEditView& view, Line* first, Line* last) {
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  if ((view.GetSelFlags() & kSelMaskFly) == 0) {
    *first = *last = view.GetCurrentLine();
    return false;
  }
  view.GetSel(&l1, &c1, &l2, &c2);
  // GetSel reports an end at column 0 as the end of the previous line: that is the line left out.
  *first = l1;
  *last = l2;
  return true;
}

}  // namespace

bool KwEditView::LineMarksOff() {
  if (UsesLineMarks()) return false;
  Beep();
  return true;
}

void KwEditView::SaveMarksForRecall() {
  m_RecallMarks.clear();
  for (Line line = m_Doc->MinLineMark(); line >= 0 && line <= m_Doc->GetLinesInDoc();
       line = m_Doc->GetNextLineMark(line)) {
    m_RecallMarks.push_back(line);
  }
  m_HasRecallMarks = true;
}

void KwEditView::OnMarkLines() {
  if (LineMarksOff()) return;
  Line first = 0, last = 0;
  if (!MarkRange(*this, &first, &last)) {
    m_Doc->SetLineMark(first, m_Doc->GetLineMark(first) ? 0 : 1);
    return;
  }
  for (Line line = first; line <= last; ++line) m_Doc->SetLineMark(line, 1);
}

void KwEditView::OnMarkRemove() {
  if (LineMarksOff()) return;
  Line first = 0, last = 0;
  MarkRange(*this, &first, &last);
  for (Line line = first; line <= last; ++line) m_Doc->SetLineMark(line, 0);
}

void KwEditView::OnMarkRecall() {
  if (LineMarksOff()) return;
  if (!m_HasRecallMarks) {
    Beep();
    return;
  }
  const std::vector<Line> previous = m_RecallMarks;
  SaveMarksForRecall();
  m_Doc->ClearLineMarks();
  for (Line line : previous) {
    if (line <= m_Doc->GetLinesInDoc()) m_Doc->SetLineMark(line, 1);
  }
}

void KwEditView::OnLineMarkClear() {
  if (LineMarksOff()) return;
  SaveMarksForRecall();
  m_Doc->ClearLineMarks();
}

void KwEditView::OnLineMarkInvert() {
  if (LineMarksOff()) return;
  SaveMarksForRecall();
  m_Doc->InvertLineMark();
}

int KwEditView::OnLineMarkDelete() {
  if (LineMarksOff()) return 0;
  if (m_Doc->MinLineMark() < 0) {
    Beep();
    return 0;
  }
  m_FlyKind = 0;
  const int done = m_Doc->RemoveMarkedLines(0, nullptr);
  const Line line = std::min(m_CaretLine, m_Doc->GetLinesInDoc());
  GotoLineCol(line, std::min(m_CaretCol, m_Doc->LineLength(line)));
  return done;
}

int KwEditView::DoNextLineMark(int select) {
  if (LineMarksOff()) return 0;
  const Line line = m_Doc->GetNextLineMark(m_CaretLine);
  if (line < 0 || line > m_Doc->GetLinesInDoc()) {
    Beep();
    return 0;
  }
  return MoveCaret(line, 0, select);
}

int KwEditView::DoPrevLineMark(int select) {
  if (LineMarksOff()) return 0;
  const Line line = m_Doc->GetPrevLineMark(m_CaretLine);
  if (line < 0) {
    Beep();
    return 0;
  }
  return MoveCaret(line, 0, select);
}



int KwEditView::DoNextBookMark(int select) {
  if (LineMarksOff()) return 0;
  const Line line = m_Doc->GetNextBookMark(m_CaretLine);
  if (line < 0) {
    Beep();
    return 0;
  }
  return MoveCaret(line, 0, select);
}

int KwEditView::DoPrevBookMark(int select) {
  if (LineMarksOff()) return 0;
  const Line line = m_Doc->GetPrevBookMark(m_CaretLine);
  if (line < 0) {
    Beep();
    return 0;
  }
  return MoveCaret(line, 0, select);
}

void KwEditView::OnSetBookMark() {
  if (LineMarksOff()) return;
  m_Doc->ToggleBookMark(m_CaretLine);
}

void KwEditView::OnClearBookMarks() {
  if (LineMarksOff()) return;
  m_Doc->RemoveBookMarks(-1);
}

}  // namespace kw
