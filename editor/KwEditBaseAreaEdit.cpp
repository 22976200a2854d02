// The area operations of KwEditBase that change the length of lines or their number: tabs and blanks,
// characters and ends of line, columns, line lengths and the removal of marked lines. Each collects
// its replacements in a first pass (EditList) and makes them in a second.
#include <algorithm>
#include <climits>

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "editor/KwEditBaseArea.h"
#include "editor/KwEditBaseScan.h"
#include "editor/KwEditUndo.h"
#include "platform/Platform.h"

namespace kw {

namespace {

constexpr char16_t kTabUnit = 9;
constexpr int64_t kAllColumns = INT64_MAX;

class EditWait {
 public:
  EditWait() { GetPlatform().SetWaitCursor(true); }
  ~EditWait() { GetPlatform().SetWaitCursor(false); }
  EditWait(const EditWait&) = delete;
  EditWait& operator=(const EditWait&) = delete;
};

int64_t IndentEnd(const std::u16string& s) {
  size_t i = 0;
  while (i < s.size() && (s[i] == u' ' || s[i] == kTabUnit)) ++i;
  return static_cast<int64_t>(i);
}

}  // namespace

// Makes the record of an edit list and runs the second pass.
static tagUNDORECORD ListRecord(const EditList& list, uint32_t type, int64_t value1) {
  tagUNDORECORD r;
  r.position = static_cast<uint64_t>(list.first());
  r.value1 = value1;
  r.value2 = list.size();
  r.data = list.Block();
  r.type = type;
  return r;
}

int KwEditBase::TabToBlank(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2,
                           const int64_t* tabStops, int count, int reverse, KwProgress* progress, double fromPercent,
                           double toPercent, int leadingOnly) {
  EditWait wait;
  EditList list;
  std::u16string s;
  PaneSteps steps(progress, fromPercent, toPercent);
  AreaWalk w{area, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    if (a.to <= a.from) return;
    a.Copy(0, a.length, s);
    const int64_t limit = leadingOnly ? std::min(a.to, IndentEnd(s)) : a.to;
    int64_t d = 0;  // display column of unit i
    if (!reverse) {
      for (int64_t i = 0; i < limit; ++i) {
        const char16_t u = s[static_cast<size_t>(i)];
        const int64_t next = u == kTabUnit ? scan::NextTabStop(d, tabStops, count) : d + 1;
        if (u == kTabUnit && i >= a.from) list.Add(a.start + i, &s[static_cast<size_t>(i)], 1, nullptr, next - d);
        d = next;
      }
      return;
    }
    int64_t segStart = -1, segDisplay = 0;  // the blanks collected since the last stop
    for (int64_t i = 0; i < limit; ++i) {
      const char16_t u = s[static_cast<size_t>(i)];
      const int64_t next = u == kTabUnit ? scan::NextTabStop(d, tabStops, count) : d + 1;
      if (u == u' ' && i >= a.from) {
        if (segStart < 0) {
          segStart = i;
          segDisplay = d;
        }
        if (next == scan::NextTabStop(segDisplay, tabStops, count)) {
          if (i - segStart + 1 >= 2) list.Add(a.start + segStart, &s[static_cast<size_t>(segStart)], i - segStart + 1, u"\t", 1);
          segStart = -1;
        }
      } else {
        segStart = -1;
      }
      d = next;
    }
  };
  const int walked = WalkArea(w);
  if (walked == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, reverse ? kUndoBlankToTab : kUndoTabToBlank, 0);
  return FinishArea(r, reverse ? u"EditBase.BlankUpper: WARNING! Internal error detected"
                               : u"EditBase.TabToBlank: WARNING! Internal error detected",
                    &steps);
}

int KwEditBase::BlankToTab(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2,
                           const int64_t* tabStops, int count, KwProgress* progress, double fromPercent,
                           double toPercent, int leadingOnly) {
  return TabToBlank(area, line1, column1, line2, column2, tabStops, count, 1, progress, fromPercent, toPercent,
                    leadingOnly);
}

int KwEditBase::CharToEol(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2,
                          char16_t character, KwProgress* progress) {
  const bool ok = character != m_EOLText[0];
  KW_ASSERT(ok);
  if (!ok) return 0;
  EditWait wait;
  EditList list;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{area, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    a.ForPieces(a.from, a.to, [&](const char16_t* p, int64_t n, Index at) {
      for (int64_t i = 0; i < n; ++i)
        if (p[i] == character) list.Add(at + i, p + i, 1, m_EOLText, m_EOLLength);
    });
  };
  if (WalkArea(w) == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, kUndoCharToEol, character);
  return FinishArea(r, u"EditBase.CharToEol: WARNING! Internal error detected", &steps);
}

int KwEditBase::EolToChar(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2,
                          char16_t character, KwProgress* progress) {
  // The character must not itself end a line or complete a CR before it to an end of line.
  const bool ok = character != m_EOLText[0] && !(m_EOLText[0] == 13 && character == 10);
  KW_ASSERT(ok);
  if (!ok) return 0;
  EditWait wait;
  EditList list;
  std::u16string eol;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{area, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    const bool take = area == kAreaColumn ? a.eolLength > 0 : a.eol;
    if (!take) return;
    a.Copy(a.length, a.length + a.eolLength, eol);
    list.Add(a.start + a.length, eol.data(), a.eolLength, &character, 1);
  };
  if (WalkArea(w) == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, kUndoEolToChar, character);
  return FinishArea(r, u"EditBase.EolToChar: WARNING! Internal error detected", &steps);
}

int KwEditBase::InsertColumn(Line line1, Line line2, int64_t column1, int64_t column2, const std::u16string& text,
                             int perLine, int markedOnly, KwProgress* progress) {
  const bool ok = column1 >= 0 && column2 > column1;
  KW_ASSERT(ok);
  if (!ok) return 0;
  EditWait wait;
  const int64_t width = column2 - column1;
  // The pieces of the column.
  std::vector<std::u16string> pieces;
  if (perLine) {
    size_t at = 0;
    while (at <= text.size()) {
      size_t lf = text.find(u'\n', at);
      if (lf == std::u16string::npos) lf = text.size();
      std::u16string piece = text.substr(at, lf - at);
      if (!piece.empty() && piece.back() == u'\r') piece.pop_back();
      pieces.push_back(std::move(piece));
      at = lf + 1;
    }
  } else {
    pieces.push_back(text);
  }
  EditList list;
  std::u16string ins;
  size_t visited = 0;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{markedOnly ? kAreaMarked : kAreaColumn, line1, 0, line2, kAllColumns, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    const size_t k = perLine ? visited++ : 0;
    const std::u16string* piece = k < pieces.size() ? &pieces[k] : nullptr;
    const int64_t pad = std::max<int64_t>(0, column1 - a.length);
    ins.assign(static_cast<size_t>(pad), u' ');
    const int64_t take = piece ? std::min<int64_t>(width, static_cast<int64_t>(piece->size())) : 0;
    if (piece) ins.append(*piece, 0, static_cast<size_t>(take));
    ins.append(static_cast<size_t>(width - take), u' ');
    list.Add(a.start + std::min(column1, a.length), nullptr, 0, ins.data(), static_cast<int64_t>(ins.size()));
  };
  if (WalkArea(w) == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, kUndoInsertColumn, 0);
  return FinishArea(r, u"EditBase.InsertColumn: WARNING! Internal error detected", &steps);
}

int KwEditBase::DeleteColumn(Line line1, Line line2, int64_t column1, int64_t column2, std::u16string* buffer,
                             int padCopy, int markedOnly, KwProgress* progress) {
  const bool ok = column1 >= 0 && column2 > column1;
  KW_ASSERT(ok);
  if (!ok) return 0;
  EditWait wait;
  if (buffer) buffer->clear();
  EditList list;
  std::u16string piece;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{markedOnly ? kAreaMarked : kAreaColumn, line1, column1, line2, column2, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    a.Copy(a.from, a.to, piece);
    if (!piece.empty()) list.Add(a.start + a.from, piece.data(), static_cast<int64_t>(piece.size()), nullptr, 0);
    if (buffer) {
      buffer->append(piece);
      if (padCopy) buffer->append(static_cast<size_t>(column2 - column1) - piece.size(), u' ');
      buffer->push_back(u'\n');
    }
  };
  if (markedOnly) {  // marked lines are walked whole: cut each to the columns
    w.visit = [&, inner = w.visit](const AreaLine& a) {
      AreaLine b = a;
      b.from = std::min(column1, a.length);
      b.to = std::min(column2, a.length);
      inner(b);
    };
  }
  if (WalkArea(w) == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, kUndoDeleteColumn, 0);
  return FinishArea(r, u"EditBase.DeleteColumn: WARNING! Internal error detected", &steps);
}

int KwEditBase::InflateLines(Line line1, Line line2, int64_t length, int markedOnly, KwProgress* progress) {
  KW_ASSERT(length >= 0);
  if (length < 0) return 0;
  EditWait wait;
  EditList list;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{markedOnly ? kAreaMarked : kAreaColumn, line1, 0, line2, kAllColumns, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    if (a.length < length) list.Add(a.start + a.length, nullptr, 0, nullptr, length - a.length);
  };
  if (WalkArea(w) == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, kUndoInflateLines, length);
  return FinishArea(r, u"EditBase.InflateLines: WARNING! Internal error detected", &steps);
}

int KwEditBase::ReduceLines(Line line1, Line line2, int flags, KwProgress* progress) {
  EditWait wait;
  EditList list;
  std::u16string s;
  const bool tabs = (flags & kReduceTabs) != 0;
  PaneSteps steps(progress, 0, 100);
  AreaWalk w{(flags & kReduceMarkedOnly) ? kAreaMarked : kAreaColumn, line1, 0, line2, kAllColumns, &steps, {}};
  w.visit = [&](const AreaLine& a) {
    a.Copy(0, a.length, s);
    size_t k = s.size();
    while (k > 0 && (s[k - 1] == u' ' || (tabs && s[k - 1] == kTabUnit))) --k;
    if (k < s.size())
      list.Add(a.start + static_cast<int64_t>(k), s.data() + k, static_cast<int64_t>(s.size() - k), nullptr, 0);
  };
  if (WalkArea(w) == 0) return 0;
  if (list.size() == 0) return 1;
  tagUNDORECORD r = ListRecord(list, kUndoReduceLines, flags);
  return FinishArea(r, u"EditBase.ReduceLines: WARNING! Internal error detected", &steps);
}

int KwEditBase::RemoveMarkedLines(int inverse, KwProgress* progress) {
  EditWait wait;
  // Runs of consecutive lines to delete, first to last.
  std::vector<std::pair<Line, Line>> runs;
  for (Line l = 0; l <= m_LinesInDoc;) {
    const bool marked = GetLineMark(l) != 0;
    if (marked == (inverse != 0)) {
      ++l;
      continue;
    }
    Line e = l;
    while (e + 1 <= m_LinesInDoc && (GetLineMark(e + 1) != 0) == marked) ++e;
    runs.emplace_back(l, e);
    l = e + 1;
  }
  if (runs.empty()) return 1;
  if (!m_Undo->StartGroup(static_cast<int64_t>(runs.size()), 0)) return 0;
  PaneSteps steps(progress, 0, 100);
  int result = 1;
  // From the last run back, so that the earlier lines keep their numbers.
  for (size_t k = runs.size(); k-- > 0;) {
    const auto [a, b] = runs[k];
    Index start = LineStart(a);
    const Index end = LineStart(b) + LineLength(b, 1);
    if (b == m_LinesInDoc && LineLength(b, 1) == LineLength(b, 0) && a > 0) {
      // The last line has no end of line: the one before the run goes instead.
      start = LineStart(a - 1) + LineLength(a - 1, 0);
    }
    if (end > start) SelReplaceAt(start, end, nullptr, 0, 1);
    if (!steps.Step(static_cast<int64_t>(runs.size() - k), static_cast<int64_t>(runs.size()))) {
      result = 0;
      break;
    }
  }
  m_Undo->CloseGroup();
  return result;
}

}  // namespace kw
