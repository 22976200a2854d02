// The editor view: queries on the caret and the selections, state keeping, and the recording hooks.
// The command handlers and the column and line tasks live in the KwEditView*.cpp files beside it.
#include "editor/KwEditView.h"

#include <algorithm>

#include "base/Assert.h"
#include "platform/Platform.h"

namespace kw {

KwEditView::KwEditView(KwEditBase* document) : m_Doc(document) { KW_ASSERT(document != nullptr); }

KwEditView::~KwEditView() = default;

Line KwEditView::ClampLine(Line line) const {
  return std::clamp<Line>(line, 0, m_Doc->GetLinesInDoc());
}

// ---- Queries -----------------------------------------------------------------------------------------

void KwEditView::GetSel(Line* line1, int64_t* column1, Line* line2, int64_t* column2) {
  Line l1 = m_CaretLine, l2 = m_CaretLine;
  int64_t c1 = m_CaretCol, c2 = m_CaretCol;
  if (m_FlyKind == kStickColumn) {
    l1 = std::min(m_AnchorLine, m_CaretLine);
    l2 = std::max(m_AnchorLine, m_CaretLine);
    c1 = std::min(m_AnchorCol, m_CaretCol);
    c2 = std::max(m_AnchorCol, m_CaretCol);
  } else if (m_FlyKind == kStickStream) {
    const bool anchorFirst =
        m_AnchorLine < m_CaretLine || (m_AnchorLine == m_CaretLine && m_AnchorCol <= m_CaretCol);
    l1 = anchorFirst ? m_AnchorLine : m_CaretLine;
    c1 = anchorFirst ? m_AnchorCol : m_CaretCol;
    l2 = anchorFirst ? m_CaretLine : m_AnchorLine;
    c2 = anchorFirst ? m_CaretCol : m_AnchorCol;
    m_Doc->ReportStreamEnd(l1, c1, &l2, &c2);
  }
  if (line1 != nullptr) *line1 = l1;
  if (column1 != nullptr) *column1 = c1;
  if (line2 != nullptr) *line2 = l2;
  if (column2 != nullptr) *column2 = c2;
}

void KwEditView::SetSel(Line line1, int64_t column1, Line line2, int64_t column2, int kind, int scroll) {
  KW_ASSERT(kind >= 0 && kind <= 2);
  m_AnchorLine = ClampLine(line1);
  m_AnchorCol = std::max<int64_t>(column1, 0);
  m_CaretLine = ClampLine(line2);
  m_CaretCol = std::max<int64_t>(column2, 0);
  m_FlyKind = (kind == 1 || kind == 2) ? kind : 0;
  // An empty stream selection is no selection.
  if (m_FlyKind == kStickStream && m_AnchorLine == m_CaretLine && m_AnchorCol == m_CaretCol) m_FlyKind = 0;
  m_GoalCol = -1;
  if (scroll != 0) {
    if (m_CaretLine < m_TopLine) m_TopLine = m_CaretLine;
    if (m_CaretLine >= m_TopLine + m_PageLines) m_TopLine = m_CaretLine - m_PageLines + 1;
  }
}

unsigned KwEditView::GetSelFlags(int64_t* values) {
  unsigned flags = m_Doc->GetDocSelFlags();
  if (m_FlyKind == kStickStream) flags |= kSelFlyStream;
  if (m_FlyKind == kStickColumn) flags |= kSelFlyColumn;
  if (values != nullptr) {
    std::fill(values, values + kSelValues, int64_t{-1});
    if (m_FlyKind != 0) GetSel(&values[0], &values[1], &values[2], &values[3]);
    if ((flags & kSelMaskFix) != 0) m_Doc->GetStickSelection(&values[4], &values[5], &values[6], &values[7]);
    values[8] = m_Doc->GetLineMarkCount(0, m_Doc->GetLinesInDoc());
    values[9] = GetLineCount();
  }
  return flags;
}

int KwEditView::CheckSelection(unsigned mask) {
  if ((GetSelFlags() & mask) != 0) return 1;
  GetPlatform().Beep(BeepClass::Exclamation);
  return 0;
}

Line KwEditView::GetCurrentLine(int64_t* column) const {
  if (column != nullptr) *column = m_CaretCol;
  return m_CaretLine;
}

int64_t KwEditView::GetLineCount() const { return m_Doc->GetLinesInDoc() + 1; }

int KwEditView::GotoLineCol(Line line, int64_t column, int select, int scroll) {
  const Line oldLine = m_CaretLine;
  const int64_t oldCol = m_CaretCol;
  line = ClampLine(line);
  column = std::max<int64_t>(column, 0);
  if (select != 0) {
    if (m_FlyKind != kStickStream) {
      m_AnchorLine = m_CaretLine;
      m_AnchorCol = m_CaretCol;
    }
    SetSel(m_AnchorLine, m_AnchorCol, line, column, kStickStream, scroll);
  } else {
    SetSel(line, column, line, column, 0, scroll);
  }
  return (m_CaretLine != oldLine || m_CaretCol != oldCol) ? 1 : 0;
}

int KwEditView::GetArea(unsigned area, Line* line1, int64_t* column1, Line* line2, int64_t* column2) {
  Line l1 = 0, l2 = m_Doc->GetLinesInDoc();
  int64_t c1 = 0, c2 = m_Doc->LineLength(l2);
  if (area == kAreaStream || area == kAreaColumn) {
    const int kind = static_cast<int>(area);
    if (m_FlyKind == kind) {
      GetSel(&l1, &c1, &l2, &c2);
    } else if (m_Doc->GetStickSelection(&l1, &c1, &l2, &c2) != kind) {
      return 0;
    } else if (kind == kStickStream) {
      m_Doc->ReportStreamEnd(l1, c1, &l2, &c2);
    }
  } else if (area == kAreaMarked) {
    l1 = m_Doc->MinLineMark();
    l2 = std::min(m_Doc->MaxLineMark(), m_Doc->GetLinesInDoc());
    if (l1 < 0 || l1 > l2) return 0;
    c1 = 0;
    c2 = m_Doc->GetLongestLine();
  } else if (area != kAreaText) {
    KW_ASSERT(area == kAreaText);
    return 0;
  }
  if (line1 != nullptr) *line1 = l1;
  if (column1 != nullptr) *column1 = c1;
  if (line2 != nullptr) *line2 = l2;
  if (column2 != nullptr) *column2 = c2;
  return 1;
}

int64_t KwEditView::GetExecuteCount(unsigned area, Line* first, Line* last, int flags) {
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  if (GetArea(area, &l1, &c1, &l2, &c2) == 0) {
    if ((flags & 1) != 0) GetPlatform().Beep(BeepClass::Exclamation);
    return 0;
  }
  if (first != nullptr) *first = l1;
  if (last != nullptr) *last = l2;
  if (area == kAreaMarked) return m_Doc->GetLineMarkCount(l1, l2);
  return l2 - l1 + 1;
}

int64_t KwEditView::MaxLineLength(unsigned area) {
  Line l1 = 0, l2 = 0;
  if (GetExecuteCount(area, &l1, &l2) == 0) return 0;
  if (area == kAreaText) return m_Doc->GetLongestLine();
  int64_t longest = 0;
  for (Line line = l1; line <= l2; ++line) {
    if (area == kAreaMarked && m_Doc->GetLineMark(line) == 0) continue;
    longest = std::max(longest, m_Doc->LineLength(line));
  }
  return longest;
}

void KwEditView::RememberState(int64_t* state, int flags) {
  KW_ASSERT(state != nullptr);
  if (state == nullptr) return;
  state[0] = m_CaretLine;
  state[1] = m_CaretCol;
  state[2] = m_FlyKind;
  state[3] = m_AnchorLine;
  state[4] = m_AnchorCol;
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  state[5] = m_Doc->GetStickSelection(&l1, &c1, &l2, &c2);
  state[6] = l1;
  state[7] = c1;
  state[8] = l2;
  state[9] = c2;
  state[10] = m_TopLine;
  state[11] = m_GoalCol;
  if ((flags & 1) != 0) m_FlyKind = 0;
}

void KwEditView::RestoreState(const int64_t* state) {
  KW_ASSERT(state != nullptr);
  if (state == nullptr) return;
  SetSel(state[3], state[4], state[0], state[1], static_cast<int>(state[2]), 0);
  if (state[5] != kStickNone) {
    m_Doc->SetStickSelection(static_cast<int>(state[5]), ClampLine(state[6]), std::max<int64_t>(state[7], 0),
                             ClampLine(state[8]), std::max<int64_t>(state[9], 0));
  } else {
    m_Doc->UnstickSelection();
  }
  m_TopLine = ClampLine(state[10]);
  m_GoalCol = state[11];
}

void KwEditView::UnstickSelection() { m_Doc->UnstickSelection(); }

// ---- Recorded command events ---------------------------------------------------------------------------

void KwEditView::RecordEvent(KwRecordEvent* /*event*/, int /*flags*/) {
  // The application records; a view that reaches this version was set recording without a store.
  KW_ASSERT(!"KwEditView::RecordEvent must be overridden by a recording application");
}

void KwEditView::RecordIfRecording(KwRecordEvent* event, int flags) {
  if (m_Recording != 0 && m_Replaying == 0 && event != nullptr) RecordEvent(event, flags);
}

KwRecordEvent* KwEditView::GetDialogParams(int letter) {
  if (letter < kEventFirstCode || letter > kEventLastCode) {
    KW_ASSERT(letter >= kEventFirstCode && letter <= kEventLastCode);
    return nullptr;
  }
  if (m_DialogParams.empty()) m_DialogParams.resize(kEventLastCode - kEventFirstCode + 1);
  auto& slot = m_DialogParams[static_cast<size_t>(letter - kEventFirstCode)];
  if (slot == nullptr) slot = AllocRecordEvent(letter);
  return slot.get();
}

}  // namespace kw
