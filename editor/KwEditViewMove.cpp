// The editor view's caret movements and selection commands.
#include <algorithm>

#include "base/Assert.h"
#include "editor/KwEditView.h"
#include "platform/Platform.h"

namespace kw {

namespace {

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }

void Beep() { GetPlatform().Beep(BeepClass::Exclamation); }

}  // namespace

int KwEditView::MoveCaret(Line line, int64_t column, int select, bool keepGoal) {
  const int64_t goal = m_GoalCol;
  int moved = 0;
  if (select != 0) {
    const Line oldLine = m_CaretLine;
    const int64_t oldCol = m_CaretCol;
    const int kind = m_ColumnMode ? kStickColumn : kStickStream;
    if (m_FlyKind == 0) {
      m_AnchorLine = m_CaretLine;
      m_AnchorCol = m_CaretCol;
    }
    SetSel(m_AnchorLine, m_AnchorCol, line, column, kind, 1);
    moved = (m_CaretLine != oldLine || m_CaretCol != oldCol) ? 1 : 0;
  } else {
    moved = GotoLineCol(line, column, 0, 1);
  }
  if (keepGoal) m_GoalCol = goal;
  return moved;
}

int KwEditView::DoEditLeft(int select) {
  int64_t col = m_CaretCol;
  if (!FreeCaret()) col = std::min(col, m_Doc->LineLength(m_CaretLine));
  if (col > 0) return MoveCaret(m_CaretLine, col - 1, select);
  if (m_CaretLine == 0) return 0;
  return MoveCaret(m_CaretLine - 1, m_Doc->LineLength(m_CaretLine - 1), select);
}

int KwEditView::DoEditRight(int select) {
  const int64_t length = m_Doc->LineLength(m_CaretLine);
  if (FreeCaret() || m_CaretCol < length) return MoveCaret(m_CaretLine, m_CaretCol + 1, select);
  if (m_CaretLine >= m_Doc->GetLinesInDoc()) return 0;
  return MoveCaret(m_CaretLine + 1, 0, select);
}

namespace {

// The caret column on `line` for a vertical movement aiming at `goal`.
int64_t GoalColumn(KwEditBase* doc, Line line, int64_t goal, bool free) {
  return free ? goal : std::min(goal, doc->LineLength(line));
}

}  // namespace

int KwEditView::DoEditUp(int select) {
  if (m_CaretLine == 0) return 0;
  if (m_GoalCol < 0) m_GoalCol = m_CaretCol;
  return MoveCaret(m_CaretLine - 1, GoalColumn(m_Doc, m_CaretLine - 1, m_GoalCol, FreeCaret()), select, true);
}

int KwEditView::DoEditDown(int select) {
  if (m_CaretLine >= m_Doc->GetLinesInDoc()) return 0;
  if (m_GoalCol < 0) m_GoalCol = m_CaretCol;
  return MoveCaret(m_CaretLine + 1, GoalColumn(m_Doc, m_CaretLine + 1, m_GoalCol, FreeCaret()), select, true);
}

int KwEditView::DoEditHome(int select) { return MoveCaret(m_CaretLine, 0, select); }

int KwEditView::DoEditEnd(int select) { return MoveCaret(m_CaretLine, m_Doc->LineLength(m_CaretLine), select); }

int KwEditView::DoEditTop(int select) { return MoveCaret(0, 0, select); }

int KwEditView::DoEditBottom(int select) {
  const Line last = m_Doc->GetLinesInDoc();
  return MoveCaret(last, m_Doc->LineLength(last), select);
}

int KwEditView::DoEditPgUp(int select) {
  if (m_CaretLine == 0) return 0;
  if (m_GoalCol < 0) m_GoalCol = m_CaretCol;
  const Line target = std::max<Line>(0, m_CaretLine - m_PageLines);
  m_TopLine = std::max<Line>(0, m_TopLine - m_PageLines);
  return MoveCaret(target, GoalColumn(m_Doc, target, m_GoalCol, FreeCaret()), select, true);
}

int KwEditView::DoEditPgDn(int select) {
  const Line last = m_Doc->GetLinesInDoc();
  if (m_CaretLine >= last) return 0;
  if (m_GoalCol < 0) m_GoalCol = m_CaretCol;
  const Line target = std::min<Line>(last, m_CaretLine + m_PageLines);
  m_TopLine = std::clamp<Line>(m_TopLine + m_PageLines, 0, std::max<Line>(0, last - m_PageLines + 1));
  return MoveCaret(target, GoalColumn(m_Doc, target, m_GoalCol, FreeCaret()), select, true);
}

// The word moves read the caret's line once; a caret beyond the end counts as at the end. Each passes
// over two runs: to the next word's start, blanks after the word; to a word's end, the word after the
// blanks; leftwards the same mirrored. At the end (start) of a line they go to the next (previous) line.
int KwEditView::QuickMove(bool right, bool blanksFirst, int select) {
  const std::u16string s = m_Doc->GetLineText(m_CaretLine);
  const auto n = static_cast<int64_t>(s.size());
  int64_t c = std::min<int64_t>(m_CaretCol, n);
  if (right ? c >= n : c == 0) {
    if (right ? m_CaretLine >= m_Doc->GetLinesInDoc() : m_CaretLine == 0) return 0;
    return right ? MoveCaret(m_CaretLine + 1, 0, select)
                 : MoveCaret(m_CaretLine - 1, m_Doc->LineLength(m_CaretLine - 1), select);
  }
  for (const bool blank : {blanksFirst, !blanksFirst}) {
    if (right) {
      while (c < n && IsBlank(s[static_cast<size_t>(c)]) == blank) ++c;
    } else {
      while (c > 0 && IsBlank(s[static_cast<size_t>(c - 1)]) == blank) --c;
    }
  }
  return MoveCaret(m_CaretLine, c, select);
}

int KwEditView::DoQuickRight(int select) { return QuickMove(true, false, select); }
int KwEditView::DoQuickRightEnd(int select) { return QuickMove(true, true, select); }
int KwEditView::DoQuickLeft(int select) { return QuickMove(false, true, select); }
int KwEditView::DoQuickLeftEnd(int select) { return QuickMove(false, false, select); }

void KwEditView::OnGotoLine() {
  Line line = 0;
  if (QueryGotoLine(&line) == 0) return;
  if (line < 1 || line > GetLineCount()) {
    Beep();
    return;
  }
  MoveCaret(line - 1, 0, 0);
}

int KwEditView::DoGotoBrace(int select) {
  Index partner = -1;
  if (m_CaretCol >= m_Doc->LineLength(m_CaretLine) || m_Doc->MatchBrace(m_CaretLine, m_CaretCol, &partner) == 0) {
    Beep();
    return 0;
  }
  int64_t column = 0;
  const Line line = m_Doc->LineFromIndex(partner, &column);
  return MoveCaret(line, column, select);
}

// ---- Selection ------------------------------------------------------------------------------------------

void KwEditView::OnSelectAll() {
  const Line last = m_Doc->GetLinesInDoc();
  SetSel(0, 0, last, m_Doc->LineLength(last), kStickStream, 1);
}

void KwEditView::OnSelectColumn() {
  m_ColumnMode = !m_ColumnMode;
  if (m_FlyKind != 0) m_FlyKind = m_ColumnMode ? kStickColumn : kStickStream;
  if (!m_ColumnMode) {
    // Back in stream mode the caret and the anchor may not stand beyond their line ends.
    m_CaretCol = std::min(m_CaretCol, m_Doc->LineLength(m_CaretLine));
    m_AnchorCol = std::min(m_AnchorCol, m_Doc->LineLength(m_AnchorLine));
    if (m_FlyKind == kStickStream && m_AnchorLine == m_CaretLine && m_AnchorCol == m_CaretCol) m_FlyKind = 0;
  }
}

void KwEditView::OnSelectStick() {
  if (m_FlyKind == 0) {
    Beep();
    return;
  }
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  if (m_FlyKind == kStickColumn) {
    GetSel(&l1, &c1, &l2, &c2);
  } else {
    OrderedFly(&l1, &c1, &l2, &c2);
  }
  m_Doc->SetStickSelection(m_FlyKind, l1, c1, l2, c2);
  m_FlyKind = 0;
}

void KwEditView::OnSelectRecall() {
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  const int kind = m_Doc->GetStickSelection(&l1, &c1, &l2, &c2);
  if (kind == kStickNone) {
    Beep();
    return;
  }
  SetSel(l1, c1, l2, c2, kind, 1);
}

void KwEditView::OnSelectRemove() {
  m_FlyKind = 0;
  m_Doc->UnstickSelection();
}

void KwEditView::OnSelectLineMark() {
  if (LineMarksOff()) return;
  const Line first = m_Doc->MinLineMark();
  const Line last = std::min(m_Doc->MaxLineMark(), m_Doc->GetLinesInDoc());
  if (first < 0 || first > last) {
    Beep();
    return;
  }
  if (last < m_Doc->GetLinesInDoc()) {
    SetSel(first, 0, last + 1, 0, kStickStream, 1);
  } else {
    SetSel(first, 0, last, m_Doc->LineLength(last), kStickStream, 1);
  }
}

void KwEditView::OnSelectBrace() {
  Index partner = -1;
  if (m_CaretCol >= m_Doc->LineLength(m_CaretLine) || m_Doc->MatchBrace(m_CaretLine, m_CaretCol, &partner) == 0) {
    Beep();
    return;
  }
  const Index here = m_Doc->LineStart(m_CaretLine) + m_CaretCol;
  const Index from = std::min(here, partner);
  const Index to = std::max(here, partner) + 1;
  int64_t c1 = 0, c2 = 0;
  const Line l1 = m_Doc->LineFromIndex(from, &c1);
  const Line l2 = m_Doc->LineFromIndex(to, &c2);
  SetSel(l1, c1, l2, c2, kStickStream, 1);
}

int KwEditView::OrderedFly(Line* line1, int64_t* column1, Line* line2, int64_t* column2) {
  if (m_FlyKind == 0) return 0;
  if (m_FlyKind == kStickColumn) {
    GetSel(line1, column1, line2, column2);
    return kStickColumn;
  }
  const bool anchorFirst =
      m_AnchorLine < m_CaretLine || (m_AnchorLine == m_CaretLine && m_AnchorCol <= m_CaretCol);
  *line1 = anchorFirst ? m_AnchorLine : m_CaretLine;
  *column1 = std::min(anchorFirst ? m_AnchorCol : m_CaretCol, m_Doc->LineLength(*line1));
  *line2 = anchorFirst ? m_CaretLine : m_AnchorLine;
  *column2 = std::min(anchorFirst ? m_CaretCol : m_AnchorCol, m_Doc->LineLength(*line2));
  return kStickStream;
}

int KwEditView::CurrentSelection(Line* line1, int64_t* column1, Line* line2, int64_t* column2) {
  const int fly = OrderedFly(line1, column1, line2, column2);
  if (fly != 0) return fly;
  const int kind = m_Doc->GetStickSelection(line1, column1, line2, column2);
  if (kind == kStickStream) {
    *column1 = std::min(*column1, m_Doc->LineLength(*line1));
    *column2 = std::min(*column2, m_Doc->LineLength(*line2));
  }
  return kind;
}

}  // namespace kw
