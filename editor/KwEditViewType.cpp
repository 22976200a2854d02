// The editor view's typing and deleting commands, and InsertText.
#include <algorithm>

#include "base/Assert.h"
#include "editor/KwEditView.h"
#include "platform/Platform.h"

namespace kw {

namespace {

void Beep() { GetPlatform().Beep(BeepClass::Exclamation); }

// Opens an undo group for a command made of several document steps, so that it undoes as one.
class UndoGroup {
 public:
  explicit UndoGroup(KwEditBase* doc) : m_Doc(doc) { m_Open = m_Doc->StartUndoGroup(0) != 0; }
  ~UndoGroup() {
    if (m_Open) m_Doc->CloseUndoGroup();
  }
  UndoGroup(const UndoGroup&) = delete;
  UndoGroup& operator=(const UndoGroup&) = delete;
  bool open() const { return m_Open; }

 private:
  KwEditBase* m_Doc;
  bool m_Open;
};

// The document's end of line.
std::u16string EolOf(KwEditBase& doc) {
  char16_t eolText[3] = {0, 0, 0};
  const int eolLength = doc.GetEOLText(eolText, 0);
  return std::u16string(eolText, static_cast<size_t>(eolLength));
}

// The view's column block, lines and columns in order.
struct ColumnBlock {
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
};

ColumnBlock GetColumnBlock(KwEditView& view) {
  ColumnBlock b;
  view.GetSel(&b.l1, &b.c1, &b.l2, &b.c2);
  return b;
}

// Whether a delete key takes the fly selection as a whole: a stream, or a column block of some width
// (one of no width loses a unit on each of its lines instead).
bool DeletesWholeFly(int flyKind, const ColumnBlock& b) {
  return flyKind == kStickStream || (flyKind == kStickColumn && b.c2 > b.c1);
}

// Leaves the block's lines as a column of no width at `column`, the anchor at the end it had (the
// caret is on the last line exactly when the anchor is not below it).
void CollapseColumn(KwEditView& view, const ColumnBlock& b, int64_t column) {
  const bool anchorFirst = view.GetCurrentLine() == b.l2;
  view.SetSel(anchorFirst ? b.l1 : b.l2, column, anchorFirst ? b.l2 : b.l1, column, kStickColumn, 1);
}

}  // namespace

std::u16string KwEditView::ToDocumentEOL(const std::u16string& text) const {
  const std::u16string eol = EolOf(*m_Doc);
  std::u16string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (c == u'\r') {
      if (i + 1 < text.size() && text[i + 1] == u'\n') ++i;
      out += eol;
    } else if (c == u'\n') {
      out += eol;
    } else {
      out.push_back(c);
    }
  }
  return out;
}

int KwEditView::ReplaceAtPadded(Line line, int64_t column, int64_t remove, const std::u16string& text) {
  const int64_t length = m_Doc->LineLength(line);
  if (length < 0) return 0;
  std::u16string put;
  if (column > length) {
    put.assign(static_cast<size_t>(column - length), u' ');
    column = length;
    remove = 0;
  }
  put += text;
  remove = std::clamp<int64_t>(remove, 0, length - column);
  if (put.empty() && remove == 0) return 0;
  const int record = remove == 0 ? 4 : 1;
  return m_Doc->SelReplace(line, column, line, column + remove, put.data(), static_cast<int64_t>(put.size()), record);
}

int KwEditView::DeleteFly() {
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  const int kind = OrderedFly(&l1, &c1, &l2, &c2);
  if (kind == kStickStream) {
    m_Doc->SelReplace(l1, c1, l2, c2, nullptr, 0, 1);
    GotoLineCol(l1, c1);
    return 1;
  }
  if (kind == kStickColumn) {
    if (c2 > c1) m_Doc->DeleteColumn(l1, l2, c1, c2, nullptr, 0, 0, nullptr);
    // The block stays as a column of no width, so that typing goes on in each of its lines.
    CollapseColumn(*this, {l1, l2, c1, c2}, c1);
    return 1;
  }
  return 0;
}

int KwEditView::OnChar(char16_t ch) {
  if (ch == u'\r' || ch == u'\n') {
    UndoGroup group(m_Doc);
    if (m_FlyKind == kStickStream) DeleteFly();
    m_FlyKind = 0;
    const Line line = m_CaretLine;
    const int64_t column = std::min(m_CaretCol, m_Doc->LineLength(line));
    if (ReplaceAtPadded(line, column, 0, EolOf(*m_Doc)) == 0) return 0;
    GotoLineCol(line + 1, 0);
    return 1;
  }
  const std::u16string unit(1, ch);
  if (m_FlyKind == kStickStream) {
    Line l1 = 0, l2 = 0;
    int64_t c1 = 0, c2 = 0;
    OrderedFly(&l1, &c1, &l2, &c2);
    if (m_Doc->SelReplace(l1, c1, l2, c2, unit.data(), 1, 1) == 0) return 0;
    GotoLineCol(l1, c1 + 1);
    return 1;
  }
  if (m_FlyKind == kStickColumn) {
    const ColumnBlock b = GetColumnBlock(*this);
    UndoGroup group(m_Doc);
    int64_t removeTo = b.c2;
    if (b.c2 == b.c1 && m_InsertMode == 0) removeTo = b.c1 + 1;  // overwrite the unit at the column
    if (removeTo > b.c1) m_Doc->DeleteColumn(b.l1, b.l2, b.c1, removeTo, nullptr, 0, 0, nullptr);
    if (m_Doc->InsertColumn(b.l1, b.l2, b.c1, b.c1 + 1, unit, 0, 0, nullptr) == 0) return 0;
    CollapseColumn(*this, b, b.c1 + 1);
    return 1;
  }
  const Line line = m_CaretLine;
  const int64_t column = m_CaretCol;
  const int64_t remove = (m_InsertMode == 0 && column < m_Doc->LineLength(line)) ? 1 : 0;
  if (ReplaceAtPadded(line, column, remove, unit) == 0) return 0;
  GotoLineCol(line, column + 1);
  return 1;
}

int KwEditView::OnBackSpace() {
  const ColumnBlock b = GetColumnBlock(*this);
  if (DeletesWholeFly(m_FlyKind, b)) return DeleteFly();
  if (m_FlyKind == kStickColumn) {
    if (b.c1 == 0) {
      Beep();
      return 0;
    }
    m_Doc->DeleteColumn(b.l1, b.l2, b.c1 - 1, b.c1, nullptr, 0, 0, nullptr);
    CollapseColumn(*this, b, b.c1 - 1);
    return 1;
  }
  const Line line = m_CaretLine;
  const int64_t column = m_CaretCol;
  const int64_t length = m_Doc->LineLength(line);
  if (column > length) {
    GotoLineCol(line, column - 1);
    return 0;
  }
  if (column > 0) {
    m_Doc->SelReplace(line, column - 1, line, column, nullptr, 0, 1);
    GotoLineCol(line, column - 1);
    return 1;
  }
  if (line == 0) {
    Beep();
    return 0;
  }
  const int64_t joinAt = m_Doc->LineLength(line - 1);
  m_Doc->SelReplace(line - 1, joinAt, line, 0, nullptr, 0, 1);
  GotoLineCol(line - 1, joinAt);
  return 1;
}

int KwEditView::OnCharDelete() {
  const ColumnBlock b = GetColumnBlock(*this);
  if (DeletesWholeFly(m_FlyKind, b)) return DeleteFly();
  if (m_FlyKind == kStickColumn) {
    m_Doc->DeleteColumn(b.l1, b.l2, b.c1, b.c1 + 1, nullptr, 0, 0, nullptr);
    return 1;
  }
  const Line line = m_CaretLine;
  const int64_t column = m_CaretCol;
  const int64_t length = m_Doc->LineLength(line);
  if (column < length) {
    m_Doc->SelReplace(line, column, line, column + 1, nullptr, 0, 1);
    return 1;
  }
  if (line >= m_Doc->GetLinesInDoc()) {
    Beep();
    return 0;
  }
  // Joins the next line at the caret: the end of line becomes the blanks up to the caret.
  const std::u16string pad(static_cast<size_t>(column - length), u' ');
  m_Doc->SelReplace(line, length, line + 1, 0, pad.data(), static_cast<int64_t>(pad.size()), 1);
  return 1;
}

int KwEditView::OnEditTab() {
  if (m_FlyKind != 0 && m_AnchorLine != m_CaretLine) return OnIndent();
  m_FlyKind = 0;
  const Line line = m_CaretLine;
  const int64_t column = m_CaretCol;
  const int64_t next = NextTabStop(column);
  const int64_t length = m_Doc->LineLength(line);
  int changed = 0;
  if (m_InsertMode != 0) {
    changed = ReplaceAtPadded(line, column, 0, std::u16string(static_cast<size_t>(next - column), u' '));
  } else if (next > length && !FreeCaret()) {
    changed = ReplaceAtPadded(line, next, 0, std::u16string());
  }
  GotoLineCol(line, next);
  return changed;
}

int KwEditView::OnEditBackTab() {
  int64_t target = PrevTabStop(m_CaretCol);
  if (!FreeCaret()) target = std::min(target, m_Doc->LineLength(m_CaretLine));
  return MoveCaret(m_CaretLine, target, 0);
}

int KwEditView::OnIndent() {
  Line l1 = m_CaretLine, l2 = m_CaretLine;
  int64_t c1 = 0, c2 = 0;
  if (OrderedFly(&l1, &c1, &l2, &c2) == kStickStream && l2 > l1 && c2 == 0) --l2;  // not the line it ends at
  const int64_t width = m_IndentWidth;
  if (m_Doc->InsertColumn(l1, l2, 0, width, std::u16string(), 0, 0, nullptr) == 0) return 0;
  m_CaretCol += width;
  if (m_FlyKind != 0) m_AnchorCol += width;
  return 1;
}

int KwEditView::OnLineInsert() {
  m_FlyKind = 0;
  const Line line = m_CaretLine;
  if (ReplaceAtPadded(line, m_Doc->LineLength(line), 0, EolOf(*m_Doc)) == 0) return 0;
  GotoLineCol(line + 1, 0);
  return 1;
}

int KwEditView::OnLineBefore() {
  m_FlyKind = 0;
  const Line line = m_CaretLine;
  const std::u16string eol = EolOf(*m_Doc);
  if (m_Doc->SelReplace(line, 0, line, 0, eol.data(), static_cast<int64_t>(eol.size()), 4) == 0) return 0;
  GotoLineCol(line, 0);
  return 1;
}

int KwEditView::OnLineDelete() {
  m_FlyKind = 0;
  const Line line = m_CaretLine;
  const Line last = m_Doc->GetLinesInDoc();
  int done = 0;
  if (line < last) {
    done = m_Doc->SelReplace(line, 0, line + 1, 0, nullptr, 0, 1);
  } else if (line > 0) {
    done = m_Doc->SelReplace(line - 1, m_Doc->LineLength(line - 1), line, m_Doc->LineLength(line), nullptr, 0, 1);
  } else if (m_Doc->LineLength(0) > 0) {
    done = m_Doc->SelReplace(0, 0, 0, m_Doc->LineLength(0), nullptr, 0, 1);
  }
  if (done == 0) {
    Beep();
    return 0;
  }
  const Line now = std::min(line, m_Doc->GetLinesInDoc());
  GotoLineCol(now, FreeCaret() ? m_CaretCol : std::min(m_CaretCol, m_Doc->LineLength(now)));
  return 1;
}

int KwEditView::OnLineCutOff() {
  m_FlyKind = 0;
  const int64_t length = m_Doc->LineLength(m_CaretLine);
  if (m_CaretCol >= length) return 0;
  return m_Doc->SelReplace(m_CaretLine, m_CaretCol, m_CaretLine, length, nullptr, 0, 1);
}

int KwEditView::OnCharInsert() {
  m_FlyKind = 0;
  if (m_CaretCol >= m_Doc->LineLength(m_CaretLine)) return 0;  // a blank at the end changes nothing visible
  return ReplaceAtPadded(m_CaretLine, m_CaretCol, 0, u" ");
}

int KwEditView::InsertText(const std::u16string& text, int flags) {
  const std::u16string put = ToDocumentEOL(text);
  Line line = m_CaretLine;
  int64_t column = m_CaretCol;
  Line l1 = 0, l2 = 0;
  int64_t c1 = 0, c2 = 0;
  if (OrderedFly(&l1, &c1, &l2, &c2) == kStickStream) {
    if (m_Doc->SelReplace(l1, c1, l2, c2, put.data(), static_cast<int64_t>(put.size()), 1) == 0) return 0;
    line = l1;
    column = c1;
  } else if (ReplaceAtPadded(line, column, 0, put) == 0) {
    return 0;
  }
  const Index start = m_Doc->LineStart(line) + column;
  int64_t endColumn = 0;
  const Line endLine = m_Doc->LineFromIndex(start + static_cast<Index>(put.size()), &endColumn);
  if ((flags & 1) != 0 && !put.empty()) {
    SetSel(line, column, endLine, endColumn, kStickStream, 1);
  } else {
    GotoLineCol(endLine, endColumn);
  }
  return 1;
}

}  // namespace kw
