// The editor view's clipboard commands and undo and redo.
#include <algorithm>

#include "base/Assert.h"
#include "editor/KwEditView.h"
#include "platform/Platform.h"

namespace kw {

namespace {

void Beep() { GetPlatform().Beep(BeepClass::Exclamation); }

bool IsColumnText(const std::u16string& text) {
  const std::u16string marker(KwEditBase::kColumnMarker);
  if (text.compare(0, marker.size(), marker) != 0) return false;
  return text.size() == marker.size() || text[marker.size()] == u'\r' || text[marker.size()] == u'\n';
}

// Puts `text` on the clipboard, behind what it holds when `append` is set.
void ToClipboard(const std::u16string& text, int append) {
  std::u16string put = text;
  if (append != 0) {
    std::u16string held;
    if (GetPlatform().GetClipboardText(held)) put = held + text;
  }
  GetPlatform().SetClipboardText(put);
}

}  // namespace

std::u16string KwEditView::LinesText(Line line1, Line line2) {
  std::u16string text;
  const Index start = m_Doc->LineStart(line1);
  const Index end = m_Doc->LineStart(line2) + m_Doc->LineLength(line2, 1);
  if (start < 0 || end < start) return text;
  text.resize(static_cast<size_t>(end - start));
  const int64_t got = m_Doc->GetText(start, text.data(), end - start);
  text.resize(static_cast<size_t>(std::max<int64_t>(got, 0)));
  return text;
}

int KwEditView::CopyToClipboard(int cut, int append) {
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  const bool fly = m_FlyKind != 0;
  const int kind = CurrentSelection(&l1, &c1, &l2, &c2);
  if (kind == kStickNone) {
    Beep();
    return 0;
  }
  std::u16string text;
  if (kind == kStickColumn) {
    if (m_Doc->GetColumnText(l1, l2, c1, c2, &text, 0, nullptr) < 0) return 0;
  } else {
    const Index start = m_Doc->LineStart(l1) + c1;
    const Index end = m_Doc->LineStart(l2) + c2;
    text.resize(static_cast<size_t>(std::max<Index>(end - start, 0)));
    text.resize(static_cast<size_t>(std::max<int64_t>(m_Doc->GetText(start, text.data(), end - start), 0)));
  }
  // A column text appended to another clipboard text would lose its marker's meaning: it starts anew.
  ToClipboard(text, kind == kStickColumn ? 0 : append);
  if (cut == 0) return 1;
  if (kind == kStickColumn) {
    if (c2 > c1) m_Doc->DeleteColumn(l1, l2, c1, c2, nullptr, 0, 0, nullptr);
  } else {
    m_Doc->SelReplace(l1, c1, l2, c2, nullptr, 0, 1);
  }
  if (!fly) m_Doc->UnstickSelection();
  GotoLineCol(l1, c1);
  return 1;
}

int KwEditView::OnEditPaste() {
  std::u16string text;
  if (!GetPlatform().GetClipboardText(text) || text.empty()) {
    Beep();
    return 0;
  }
  if (!IsColumnText(text)) return InsertText(text);
  // A column: its lines go in at the caret's column, one per line from the caret's line on.
  std::u16string body = ToDocumentEOL(text);
  char16_t eolText[3] = {0, 0, 0};
  const int eolLength = m_Doc->GetEOLText(eolText, 0);
  const std::u16string eol(eolText, static_cast<size_t>(eolLength));
  const size_t bodyStart = body.find(eol);
  body = bodyStart == std::u16string::npos ? std::u16string() : body.substr(bodyStart + eol.size());
  std::vector<std::u16string> pieces;
  for (size_t at = 0; at < body.size();) {
    size_t end = body.find(eol, at);
    if (end == std::u16string::npos) end = body.size();
    pieces.push_back(body.substr(at, end - at));
    at = end + eol.size();
  }
  if (pieces.empty()) return 0;
  int64_t width = 0;
  std::u16string perLine;
  for (const auto& piece : pieces) {
    width = std::max<int64_t>(width, static_cast<int64_t>(piece.size()));
    perLine += piece;
    perLine.push_back(u'\n');
  }
  if (width == 0) return 0;
  m_FlyKind = 0;
  const Line line1 = m_CaretLine;
  const int64_t column = m_CaretCol;
  const Line line2 = line1 + static_cast<Line>(pieces.size()) - 1;
  const bool group = m_Doc->StartUndoGroup(0) != 0;
  int done = 1;
  if (line2 > m_Doc->GetLinesInDoc()) done = m_Doc->AppendLines(line2 - m_Doc->GetLinesInDoc(), 1, nullptr);
  if (done != 0) done = m_Doc->InsertColumn(line1, line2, column, column + width, perLine, 1, 0, nullptr);
  if (group) m_Doc->CloseUndoGroup();
  if (done != 0) GotoLineCol(line1, column + width);
  return done;
}

int KwEditView::OnUpdateEditPaste() {
  std::u16string text;
  return GetPlatform().GetClipboardText(text) && !text.empty() ? kUpdateEnabled : 0;
}

void KwEditView::OnClipCls() { GetPlatform().SetClipboardText(std::u16string()); }

int KwEditView::OnLineMarkCopy() {
  if (LineMarksOff()) return 0;
  const Line first = m_Doc->MinLineMark();
  const Line last = std::min(m_Doc->MaxLineMark(), m_Doc->GetLinesInDoc());
  if (first < 0 || first > last) {
    Beep();
    return 0;
  }
  std::u16string text;
  for (Line line = first; line <= last; ++line) {
    if (m_Doc->GetLineMark(line) != 0) text += LinesText(line, line);
  }
  ToClipboard(text, 0);
  return 1;
}

int KwEditView::OnLineMarkCut() {
  if (OnLineMarkCopy() == 0) return 0;
  return OnLineMarkDelete();
}

int KwEditView::OnLineCopyPlus() {
  ToClipboard(LinesText(m_CaretLine, m_CaretLine), 1);
  return 1;
}

int KwEditView::OnLineCutPlus() {
  OnLineCopyPlus();
  return OnLineDelete();
}

// ---- Undo -----------------------------------------------------------------------------------------------

namespace {

// Puts the caret of `view` at the position of the undo step that ran at `at`; beeps when none ran.
int CaretToStep(KwEditView& view, KwEditBase& doc, Index at) {
  if (at < 0) {
    Beep();
    return 0;
  }
  int64_t column = 0;
  const Line caret = doc.LineFromIndex(at, &column);
  view.GotoLineCol(caret, column);
  return 1;
}

}  // namespace

int KwEditView::OnEditUndo() { return CaretToStep(*this, *m_Doc, m_Doc->UndoEdit(nullptr)); }

int KwEditView::OnEditRedo() { return CaretToStep(*this, *m_Doc, m_Doc->RedoEdit(nullptr)); }

}  // namespace kw
