// The editor view's line sort, line break, line selection by a field, binary and extended characters
// and the move to a marked line.
#include <algorithm>
#include <cmath>
#include <vector>

#include "base/Numbers.h"
#include "base/Text.h"
#include "base/CodePages.h"
#include "editor/KwEditView.h"
#include "editor/KwEditViewExecute.h"
#include "platform/Platform.h"

namespace kw {

using execute::SpliceList;
using execute::TaskLines;

namespace {

void Beep() { GetPlatform().Beep(BeepClass::Exclamation); }

// Breaks `text` into lines of at most `width` units: after the last blank that still fits (the
// blanks at the break are dropped), or hard at the width when a word is longer. Lines after the
// first start with `indent` blanks.
std::vector<std::u16string> BreakText(const std::u16string& text, int64_t width, int64_t indent) {
  std::vector<std::u16string> out;
  const std::u16string pad(static_cast<size_t>(indent), u' ');
  size_t from = 0;
  bool first = true;
  while (true) {
    const auto room = static_cast<size_t>(first ? width : width - indent);
    if (text.size() - from <= room) {
      out.push_back((first ? std::u16string() : pad) + text.substr(from));
      break;
    }
    size_t cut = text.rfind(u' ', from + room);
    size_t next;
    if (cut == std::u16string::npos || cut <= from) {
      cut = from + room;
      next = cut;
    } else {
      next = cut + 1;
      while (cut > from && text[cut - 1] == u' ') --cut;
    }
    while (next < text.size() && text[next] == u' ') ++next;
    out.push_back((first ? std::u16string() : pad) + text.substr(from, cut - from));
    first = false;
    from = next;
    if (from >= text.size()) break;
  }
  return out;
}

}  // namespace

int KwEditView::ExecuteLineSort(KwSortEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwSortEvent*>(GetDialogParams(kEventSort));
  if (p == nullptr) return 0;
  tagSORTKEY key;
  if (p->m_FirstCol > 0 || p->m_LastCol > 0) {
    key.column1 = std::max<int64_t>(p->m_FirstCol - 1, 0);
    key.column2 = p->m_LastCol > 0 ? p->m_LastCol : -1;
    if (key.column2 >= 0 && key.column2 <= key.column1) {
      Beep();
      return 0;
    }
  }
  key.numeric = p->m_Numeric;
  key.descending = p->m_Descending;
  key.caseSensitive = p->m_CaseSensitive;
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  m_LastExecute.lines = lines.count;
  // Lines with equal keys keep their order.
  std::unique_ptr<KwProgress> pane;
  if (lines.count >= execute::kPaneLines) pane = GetPlatform().CreateProgress(u"EditSort");
  if (m_Doc->SortLines(lines.first, {key}, lines.last - lines.first + 1, 1, lines.markedOnly ? 1 : 0, pane.get()) ==
      0)
    return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteLineUmb(KwLineBreakEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwLineBreakEvent*>(GetDialogParams(kEventLineBreak));
  if (p == nullptr) return 0;
  if (p->m_Width < 1 || p->m_Indent < 0 || p->m_Indent >= p->m_Width) {
    Beep();
    return 0;
  }
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  char16_t eol[3];
  const std::u16string eolText(eol, static_cast<size_t>(m_Doc->GetEOLText(eol, 0)));
  KwExecuteResult& r = m_LastExecute;
  SpliceList changes;
  // A paragraph (mode 1) is a run of adjacent non-empty lines of the task, joined by single blanks
  // before it is broken; in mode 0 each line is its own paragraph.
  Line runFirst = -1, runLast = -1;
  Index runStart = 0, runEnd = 0;  // the run's text, ends of line between its lines included
  std::u16string joined;
  auto flush = [&] {
    if (runFirst < 0) return;
    if (static_cast<int64_t>(joined.size()) > p->m_Width || runLast > runFirst) {
      const std::vector<std::u16string> pieces = BreakText(joined, p->m_Width, p->m_Indent);
      std::u16string text;
      for (size_t i = 0; i < pieces.size(); ++i) {
        if (i > 0) text += eolText;
        text += pieces[i];
      }
      std::u16string old(static_cast<size_t>(runEnd - runStart), u'\0');
      m_Doc->GetText(runStart, old.data(), runEnd - runStart);
      if (old != text) {
        changes.Add(runStart, runEnd - runStart, text);
        r.changed += runLast - runFirst + 1;
      }
    }
    runFirst = runLast = -1;
    joined.clear();
  };
  execute::ForTaskLines(*m_Doc, lines, u"EditLineBreak", r.lines,
                        [&](KwLineWalker& walker, int64_t) {
                          const Line line = walker.GetLine();
                          const int64_t length = walker.GetLength();
                          std::u16string_view view(walker.GetText(), static_cast<size_t>(length));
                          if (p->m_Mode == 0 || length == 0 || (runFirst >= 0 && line != runLast + 1)) flush();
                          if (length == 0) return;
                          if (runFirst < 0) {
                            runFirst = line;
                            runStart = walker.GetStart();
                            joined.assign(view);
                          } else {
                            const size_t lead = view.find_first_not_of(u' ');
                            while (!joined.empty() && joined.back() == u' ') joined.pop_back();
                            joined += u' ';
                            joined.append(view.substr(lead == std::u16string_view::npos ? view.size() : lead));
                          }
                          runLast = line;
                          runEnd = walker.GetStart() + length;
                        });
  flush();
  if (changes.Apply(*m_Doc) < 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::FinishLineAction(execute::LineAction& action) {
  bool deleted = false;
  if (action.Finish(&deleted) == 0) return 0;
  if (deleted) {
    // The caret and the selection may point behind the shorter text.
    const Line caret = ClampLine(m_CaretLine);
    SetSel(caret, m_CaretCol, caret, m_CaretCol, 0, 1);
  }
  return 1;
}

int KwEditView::ExecuteLine2(KwLine2Event* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwLine2Event*>(GetDialogParams(kEventLine2));
  if (p == nullptr) return 0;
  if (p->m_Action < kLineActionMark || p->m_Action > kLineActionKeep || p->m_FirstCol < 1 ||
      p->m_LastCol < p->m_FirstCol) {
    Beep();
    return 0;
  }
  TaskLines lines;
  if (!execute::ResolveArea(*this, p->m_Area, &lines)) return 0;
  const int64_t c0 = p->m_FirstCol - 1, c1 = p->m_LastCol;
  const double tolerance = std::fabs(p->m_Tolerance);
  int fromError = kNumberOk, toError = kNumberOk;
  const double from = GetDouble(p->m_From.c_str(), 0, 0, 1, &fromError);
  const double to = GetDouble(p->m_To.c_str(), 0, 0, 1, &toError);
  auto trimmed = [](const char16_t* text, int64_t a, int64_t b) {
    while (a < b && text[a] == u' ') ++a;
    while (b > a && text[b - 1] == u' ') --b;
    return std::u16string(text + a, static_cast<size_t>(b - a));
  };
  execute::LineAction action(*m_Doc, p->m_Action, lines, false);
  std::u16string previous;
  bool havePrevious = false;
  KwExecuteResult& r = m_LastExecute;
  execute::ForTaskLines(*m_Doc, lines, u"EditLine2", r.lines,
                        [&](KwLineWalker& line, int64_t) {
                          const char16_t* text = line.GetText();
                          const int64_t length = line.GetLength();
                          const std::u16string field = trimmed(text, std::min(c0, length), std::min(c1, length));
                          bool hit = false;
                          int error = kNumberOk;
                          const double value = p->m_Numeric != 0 ? GetDouble(field.c_str(), 0, 0, 1, &error) : 0.0;
                          const bool number = p->m_Numeric == 0 || error == kNumberOk;
                          if (p->m_Duplicates != 0) {
                            // Equal to the field of the line before it in the task.
                            if (havePrevious && number) {
                              if (p->m_Numeric != 0) {
                                int e2 = kNumberOk;
                                const double before = GetDouble(previous.c_str(), 0, 0, 1, &e2);
                                hit = e2 == kNumberOk && std::fabs(value - before) <= tolerance;
                              } else {
                                hit = StrCompare(field, previous, 1, 0, 0) == 0;
                              }
                            }
                          } else if (number) {
                            if (p->m_Numeric != 0) {
                              hit = (p->m_From.empty() || (fromError == kNumberOk && value >= from - tolerance)) &&
                                    (p->m_To.empty() || (toError == kNumberOk && value <= to + tolerance));
                            } else {
                              hit = (p->m_From.empty() || StrCompare(field, p->m_From, 0, 0, 0) >= 0) &&
                                    (p->m_To.empty() || StrCompare(field, p->m_To, 0, 0, 0) <= 0);
                            }
                          }
                          previous = field;
                          havePrevious = true;
                          if (hit) ++r.changed;
                          action.Take(line, hit);
                        });
  if (FinishLineAction(action) == 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::InsertUnitsAtCaret(char16_t unit, int64_t count) {
  const int64_t length = m_Doc->LineLength(m_CaretLine);
  const int64_t pad = std::max<int64_t>(m_CaretCol - length, 0);
  std::u16string text(static_cast<size_t>(pad), u' ');
  text.append(static_cast<size_t>(count), unit);
  const int64_t at = std::min(m_CaretCol, length);
  if (m_Doc->SelReplace(m_CaretLine, at, m_CaretLine, at, text.data(), static_cast<int64_t>(text.size()), 1) == 0)
    return 0;
  int64_t column = 0;
  const Line line = m_Doc->LineFromIndex(m_Doc->LineStart(m_CaretLine) + at + static_cast<int64_t>(text.size()), &column);
  SetSel(line, column, line, column, 0, 1);
  m_LastExecute.changed = 1;
  m_LastExecute.lines = 1;
  return 1;
}

int KwEditView::ExecuteBinChar(KwBCharEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwBCharEvent*>(GetDialogParams(kEventBChar));
  if (p == nullptr) return 0;
  // The byte read through the code page of the encoding (ANSI, or OEM for encoding 4).
  const int unit = GetUnicodeCodePoint(p->m_Code, p->m_Encoding == 4 ? 4 : 0);
  if (p->m_Code < 0 || p->m_Code > 255 || unit < 0) {
    Beep();
    return 0;
  }
  if (InsertUnitsAtCaret(static_cast<char16_t>(unit), 1) == 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteExtChar(KwXCharEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p = event != nullptr ? event : static_cast<KwXCharEvent*>(GetDialogParams(kEventXChar));
  if (p == nullptr) return 0;
  if (p->m_Code < 0 || p->m_Code > 0xFFFF || p->m_Count < 1) {
    Beep();
    return 0;
  }
  if (InsertUnitsAtCaret(static_cast<char16_t>(p->m_Code), p->m_Count) == 0) return 0;
  RecordIfRecording(p);
  return 1;
}

int KwEditView::ExecuteGotoMarkedLine(KwGotoSelectedLineEvent* event) {
  m_LastExecute = KwExecuteResult();
  auto* p =
      event != nullptr ? event : static_cast<KwGotoSelectedLineEvent*>(GetDialogParams(kEventGotoSelectedLine));
  if (p == nullptr) return 0;
  Line low = 0, high = m_Doc->GetLinesInDoc();
  if (p->m_InSelection != 0) {
    Line l1 = 0, l2 = 0;
    if (m_Doc->GetStickSelection(&l1, nullptr, &l2, nullptr) == kStickNone) {
      Beep();
      return 0;
    }
    low = std::min(l1, l2);
    high = std::max(l1, l2);
  }
  Line target = -1;
  switch (p->m_Direction) {
    case 1:
      target = m_Doc->GetPrevLineMark(std::min(m_CaretLine, high + 1));
      break;
    case 2:
      target = m_Doc->GetNextLineMark(low - 1);
      break;
    case 3:
      target = m_Doc->GetPrevLineMark(high + 1);
      break;
    default:
      target = m_Doc->GetNextLineMark(std::max(m_CaretLine, low - 1));
      break;
  }
  if (target < low || target > high) {
    Beep();
    return 0;
  }
  GotoLineCol(target, 0);
  m_LastExecute.lines = 1;
  RecordIfRecording(p);
  return 1;
}

}  // namespace kw
