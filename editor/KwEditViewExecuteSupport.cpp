// The helpers shared by the column and line tasks of KwEditView (see editor/KwEditViewExecute.h).
#include <algorithm>
#include <cstring>

#include "base/Assert.h"
#include "base/Numbers.h"
#include "editor/KwEditView.h"
#include "editor/KwEditViewExecute.h"
#include "platform/Platform.h"
#include "terms/KwLogiTerm.h"
#include "terms/KwMathTerm.h"

namespace kw::execute {

bool ResolveArea(KwEditView& view, int area, TaskLines* lines) {
  const auto kind = static_cast<unsigned>(area);
  if (kind != kAreaText && kind != kAreaStream && kind != kAreaColumn && kind != kAreaMarked) {
    GetPlatform().Beep(BeepClass::Exclamation);
    return false;
  }
  Line first = 0, last = 0;
  const int64_t count = view.GetExecuteCount(kind, &first, &last, 1);
  if (count <= 0) return false;
  lines->area = kind;
  lines->first = first;
  lines->last = last;
  lines->count = count;
  lines->markedOnly = kind == kAreaMarked;
  // The empty line behind a final end of line holds no text: a task does not visit it (an area of
  // nothing else holds no line to work on).
  const Line end = view.GetDocument()->GetLinesInDoc();
  if (last == end && end > 0 && view.GetDocument()->LineLength(end, 0) == 0) {
    if (first == last) return false;
    lines->last = last - 1;
    lines->count -= lines->markedOnly ? view.GetDocument()->GetLineMark(end) : 1;
    if (lines->count <= 0) return false;
  }
  int64_t v[KwEditView::kSelValues];
  const unsigned flags = view.GetSelFlags(v);
  if ((flags & kSelMaskFly) != 0) {
    lines->selFirst = v[0];
    lines->selLast = v[2];
  } else if ((flags & kSelMaskFix) != 0) {
    lines->selFirst = std::min(v[4], v[6]);
    lines->selLast = std::max(v[4], v[6]);
  }
  return true;
}

bool NarrowLines(TaskLines* lines, int64_t from, int64_t to) {
  if (from <= 0 && to <= 0) return true;
  if (from > 0) lines->first = std::max(lines->first, from - 1);
  if (to > 0) lines->last = std::min(lines->last, to - 1);
  if (lines->first > lines->last) return false;
  lines->count = lines->last - lines->first + 1;
  return true;
}

bool TaskWalk::Next() {
  Line next;
  if (!m_Started) {
    m_Started = true;
    next = m_Lines.first;
    if (m_Lines.markedOnly && m_Doc.GetLineMark(next) == 0) next = m_Doc.GetNextLineMark(next);
  } else if (m_Walker.Done()) {
    return false;
  } else if (!m_Lines.markedOnly) {
    return m_Walker.GetLine() < m_Lines.last && m_Walker.Next();
  } else {
    next = m_Doc.GetNextLineMark(m_Walker.GetLine());
  }
  if (next < 0 || next > m_Lines.last) return false;
  if (!m_Walker.Done() && next == m_Walker.GetLine() + 1) return m_Walker.Next();
  return m_Walker.Start(next);
}

TaskPane::TaskPane(const std::u16string& title, int64_t total) : m_Total(total) {
  if (total >= kPaneLines) m_Pane = GetPlatform().CreateProgress(title);
}

TaskPane::~TaskPane() = default;

bool TaskPane::Advance(int64_t done) {
  if (m_Pane == nullptr || m_Total <= 0) {
    m_Next = INT64_MAX;
    return true;
  }
  const int64_t percent = 100 * done / m_Total;
  m_Next = ((percent + 1) * m_Total + 99) / 100;
  return m_Pane->Step(static_cast<int>(percent)) != 0;
}

LineAction::LineAction(KwEditBase& doc, int action, const TaskLines& lines, bool readsOtherLines)
    : m_Doc(doc), m_Action(action), m_Lines(lines.count), m_LinesInDoc(doc.GetLinesInDoc()) {
  const bool deletes = action == kLineActionDelete || action == kLineActionKeep;
  m_Early = deletes && !lines.markedOnly && !readsOtherLines && doc.MinLineMark() < 0;
  // Runs of deleted lines are parted by kept ones: at most one run for every two lines. The room is
  // only reserved, so the memory of runs that do not come is never touched.
  if (deletes && !m_Early) m_Changes.Reserve(lines.count / 2 + 1, 0);
}

LineAction::~LineAction() {
  if (m_Group) m_Doc.CloseUndoGroup();
}

void LineAction::Take(const KwLineWalker& line, bool hit) {
  if (m_Declined) return;
  ++m_Taken;
  const Line previous = m_PrevLine;
  const int previousEOL = m_PrevEOL;
  m_PrevLine = line.GetLine();
  m_PrevEOL = line.GetEOLLength();
  switch (m_Action) {
    case kLineActionMark:
      if (hit) m_Doc.SetLineMark(line.GetLine(), 1);
      return;
    case kLineActionUnmark:
      if (hit) m_Doc.SetLineMark(line.GetLine(), 0);
      return;
    case kLineActionDelete:
      break;
    default:  // keep: the lines not selected go
      hit = !hit;
      break;
  }
  if (!hit) return;
  if (m_RunFirst < 0 || line.GetLine() != m_RunLast + 1) {
    m_Limit = line.GetChunkStart();
    CloseRun();
    m_RunFirst = line.GetLine();
    m_RunStart = line.GetStart();
    m_RunEOLBefore = previous == m_RunFirst - 1 ? previousEOL : -1;
  }
  m_RunLast = line.GetLine();
  m_RunEnd = line.GetStart() + line.GetLengthWithEOL();
  m_RunLastLength = line.GetLength();
  m_RunLastEnded = line.GetEOLLength() > 0;
}

void LineAction::CloseRun() {
  if (m_RunFirst < 0) return;
  Index start = m_RunStart;
  // Each line of the run ends with one end-of-line character, but for a last line without one.
  int64_t eols = m_RunLast - m_RunFirst + (m_RunLastEnded ? 1 : 0);
  // A run up to a last line with text takes the end of line before it along, so that the text ends as
  // it did, without one. The empty line behind a final end of line is no text: deleting the lines
  // before it keeps the final end of line of the lines that stay.
  if (m_RunLast == m_LinesInDoc && m_RunFirst > 0 && m_RunLastLength > 0) {
    if (m_RunEOLBefore >= 0) {
      start -= m_RunEOLBefore;
    } else {
      // The line before was not walked, so no run came before this one and the text is unchanged.
      KW_ASSERT(m_Changes.size() == 0 && !m_Deleted);
      start = m_Doc.LineStart(m_RunFirst - 1) + m_Doc.LineLength(m_RunFirst - 1, 0);
    }
    ++eols;  // the end of line before the run
  }
  if (m_RunEnd > start) {
    m_Changes.Add(start, m_RunEnd - start, nullptr, 0, eols);
    m_Deleted = true;
  }
  m_RunFirst = -1;
  if (m_Early && m_Changes.Due(m_Limit)) DeleteEarly();
}

void LineAction::DeleteEarly() {
  if (!m_Group) {
    // Sized by the runs to expect at this rate, so that the question comes as it would for the
    // deletion made in one.
    const int64_t expected = m_Changes.size() * m_Lines / std::max<int64_t>(m_Taken, 1);
    if (m_Doc.StartUndoGroup(expected) == 0) {
      m_Declined = true;
      return;
    }
    m_Group = true;
  }
  if (!m_Changes.ApplyBefore(m_Doc, m_Limit)) m_Failed = true;
}

int LineAction::Finish(bool* deleted) {
  *deleted = false;
  if (m_Declined) return 0;
  m_Limit = 0;  // nothing more early: the rest goes in one
  CloseRun();
  *deleted = m_Deleted;
  const bool ok = m_Changes.Apply(m_Doc) >= 0 && !m_Failed;
  if (m_Group) {
    m_Doc.CloseUndoGroup();
    m_Group = false;
  }
  return ok ? 1 : 0;
}

void SpliceList::Add(Index at, int64_t removed, const char16_t* text, int64_t length, int64_t removedEOLs) {
  m_End = at + removed;
  at += m_Shift;
  KW_ASSERT(m_Entries.empty() || at >= m_Entries.back().at + m_Entries.back().removed);
  m_Entries.push_back({at, removed, nullptr, length, removedEOLs});
  m_Offsets.push_back(m_Units.size());
  m_Pending += length - removed;
  if (length > 0) m_Units.append(text, static_cast<size_t>(length));
}

int64_t SpliceList::Apply(KwEditBase& doc) {
  if (m_Entries.empty()) return 0;
  for (size_t i = 0; i < m_Entries.size(); ++i) m_Entries[i].text = m_Units.data() + m_Offsets[i];
  const int64_t made = doc.ReplaceRanges(m_Entries.data(), static_cast<int64_t>(m_Entries.size()), 1);
  // The lists keep their memory for the changes still to come.
  m_Entries.clear();
  m_Offsets.clear();
  m_Units.clear();
  m_Shift += m_Pending;
  m_Pending = 0;
  return made;
}

bool SpliceList::ApplyBefore(KwEditBase& doc, Index limit) {
  if (!Due(limit)) return true;
  return Apply(doc) >= 0;
}

TermInput::TermInput(KwEditBase& doc, const TaskLines& lines, bool otherRows, const int64_t* firsts,
                     const int64_t* lasts, const int64_t* rowOffsets, const int64_t* absRows,
                     int64_t referenceCount)
    : m_Doc(doc), m_Lines(lines), m_OtherRows(otherRows) {
  if (otherRows) {
    m_First.assign(firsts, firsts + referenceCount);
    m_Last.assign(lasts, lasts + referenceCount);
    m_RowOffset.assign(rowOffsets, rowOffsets + referenceCount);
    m_AbsRow.assign(absRows, absRows + referenceCount);
    m_Fields.resize(static_cast<size_t>(referenceCount));
  }
}

void TermInput::Prepare(Line line, int64_t length, int64_t ordinal) {
  m_Values[0] = line + 1;
  m_Values[1] = length;
  m_Values[2] = m_Doc.GetLineMark(line);
  m_Values[3] = (line >= m_Lines.selFirst && line <= m_Lines.selLast) ? 1 : 0;
  m_Values[4] = ordinal;
  if (!m_OtherRows) return;
  // A reference to another line reads that line as it stands before the task changes anything.
  for (size_t k = 0; k < m_Fields.size(); ++k) {
    m_Fields[k].clear();
    if (m_First[k] <= 0) continue;  // a line variable: taken from the values
    const Line target = m_AbsRow[k] > 0 ? m_AbsRow[k] - 1 : line + m_RowOffset[k];
    if (target < 0 || target > m_Doc.GetLinesInDoc()) continue;
    const std::u16string text = m_Doc.GetLineText(target);
    const auto from = static_cast<size_t>(m_First[k] - 1);
    if (from >= text.size()) continue;
    m_Fields[k] = text.substr(from, static_cast<size_t>(std::max<int64_t>(m_Last[k] - m_First[k] + 1, 0)));
  }
}

namespace {

template <class Term>
TermInput MakeInputOf(KwEditBase& doc, const TaskLines& lines, const Term& term) {
  int64_t firsts[kTermMaxReferences], lasts[kTermMaxReferences], rows[kTermMaxReferences],
      abs[kTermMaxReferences];
  const bool other = term.HasDifferentRow() != 0;
  const int64_t n = other ? term.GetTextNumberAreas(firsts, lasts, rows, abs) : 0;
  return TermInput(doc, lines, other, firsts, lasts, rows, abs, n);
}

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

}  // namespace

TermInput MakeInput(KwEditBase& doc, const TaskLines& lines, const KwMathTerm& term) {
  return MakeInputOf(doc, lines, term);
}

TermInput MakeInput(KwEditBase& doc, const TaskLines& lines, const KwLogiTerm& term) {
  return MakeInputOf(doc, lines, term);
}

int NumberDecimals(const char16_t* text, int64_t length) {
  int64_t point = -1;
  for (int64_t i = 0; i < length; ++i)
    if (text[i] == u'.' || text[i] == u',') point = i;
  if (point < 0) return 0;
  int decimals = 0;
  for (int64_t i = point + 1; i < length && IsDigit(text[i]); ++i) ++decimals;
  return decimals;
}

int TermDecimals(const std::u16string& term) {
  int best = 0;
  int depth = 0;
  char16_t quote = 0;
  for (size_t i = 0; i < term.size(); ++i) {
    const char16_t c = term[i];
    if (quote != 0) {
      if (c == quote) quote = 0;
      continue;
    }
    if (c == u'\'' || c == u'"') {
      quote = c;
    } else if (c == u'[') {
      ++depth;
    } else if (c == u']') {
      depth = std::max(depth - 1, 0);
    } else if (depth == 0 && (IsDigit(c) || c == u'.' || c == u',')) {
      size_t j = i;
      while (j < term.size() && (IsDigit(term[j]) || term[j] == u'.' || term[j] == u',')) ++j;
      best = std::max(best, NumberDecimals(term.data() + i, static_cast<int64_t>(j - i)));
      i = j - 1;
    }
  }
  return best;
}

int FieldDecimals(const char16_t* line, int64_t length, const int64_t* firsts, const int64_t* lasts,
                  int64_t count) {
  int best = 0;
  for (int64_t k = 0; k < count; ++k) {
    if (firsts[k] <= 0 || firsts[k] > length) continue;
    const int64_t end = std::min(lasts[k], length);
    best = std::max(best, NumberDecimals(line + firsts[k] - 1, end - firsts[k] + 1));
  }
  return best;
}

bool FormatResult(double value, const std::u16string& picture, int64_t width, int decimals, int roundMode,
                  std::u16string* out) {
  // Made in `*out`, whose memory a task reuses from line to line.
  std::u16string& field = *out;
  field = picture;
  if (field.empty()) {
    // Room for the sign and one integral digit stays; decimals that do not fit are given up.
    const int64_t d = std::min<int64_t>(decimals, std::max<int64_t>(width - 2, 0));
    if (d > 0) {
      field.assign(static_cast<size_t>(width - d - 1), u'#');
      field += u'.';
      field.append(static_cast<size_t>(d), u'#');
    } else {
      field.assign(static_cast<size_t>(width), u'#');
    }
  }
  bool fits = SetDouble(value, field, 0, static_cast<int64_t>(field.size()), roundMode) != 0;
  if (fits && static_cast<int64_t>(field.size()) > width) {
    const size_t cut = field.size() - static_cast<size_t>(width);
    fits = field.find_first_not_of(u' ') >= cut;
    field.erase(0, cut);
  }
  if (!fits) {
    out->assign(static_cast<size_t>(width), u'*');
    return false;
  }
  if (static_cast<int64_t>(field.size()) < width) field.insert(0, static_cast<size_t>(width) - field.size(), u' ');
  return true;
}

}  // namespace kw::execute
