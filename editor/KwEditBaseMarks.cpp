// KwEditBase: what is attached to lines: line marks, bookmarks, form-feed lines, syntax flags and the
// stick selection, and how they follow lines that are inserted or deleted.
#include <algorithm>
#include <bit>

#include "base/Assert.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditBaseScan.h"

namespace kw {

// ---- Line marks: bit (line % 64) of word (line / 64) ------------------------------------------------

void KwEditBase::InitLineMarks(int64_t capacity) {
  // At least one step; always whole steps, so that growing never reallocates for every line.
  const int64_t lines = std::max<int64_t>(kMarkGrowLines, (capacity + kMarkGrowLines - 1) / kMarkGrowLines * kMarkGrowLines);
  if (lines <= m_LineMarkCapacity) return;
  m_LineMarks.resize(static_cast<size_t>(lines / m_BitsPerWord), 0);
  m_LineMarkCapacity = lines;
}

void KwEditBase::FreeLineMarks() {
  std::vector<uint64_t>().swap(m_LineMarks);
  m_LineMarkCapacity = 0;
}

int KwEditBase::GetLineMark(Line line) const {
  if (line < 0 || line >= m_LineMarkCapacity) return 0;
  return static_cast<int>((m_LineMarks[static_cast<size_t>(line / 64)] >> (line % 64)) & 1u);
}

int KwEditBase::SetLineMark(Line line, int flag) {
  KW_ASSERT(line >= 0 && line <= m_LinesInDoc);
  if (line < 0 || line > m_LinesInDoc) return 0;
  const int old = GetLineMark(line);
  if (flag && line >= m_LineMarkCapacity) InitLineMarks(line + 1);
  if (line >= m_LineMarkCapacity) return old;
  uint64_t& word = m_LineMarks[static_cast<size_t>(line / 64)];
  const uint64_t bit = uint64_t{1} << (line % 64);
  word = flag ? (word | bit) : (word & ~bit);
  return old;
}

int64_t KwEditBase::GetLineMarkCount(Line first, Line last) const {
  first = std::max<Line>(first, 0);
  last = std::min<Line>(last, m_LineMarkCapacity - 1);
  int64_t n = 0;
  for (Line l = first; l <= last;) {
    if (l % 64 == 0 && l + 63 <= last) {
      n += std::popcount(m_LineMarks[static_cast<size_t>(l / 64)]);
      l += 64;
    } else {
      n += GetLineMark(l);
      ++l;
    }
  }
  return n;
}

Line KwEditBase::MinLineMark() const { return GetNextLineMark(-1); }
Line KwEditBase::MaxLineMark() const { return GetPrevLineMark(m_LineMarkCapacity); }

void KwEditBase::ClearLineMarks() { std::fill(m_LineMarks.begin(), m_LineMarks.end(), 0); }

void KwEditBase::InvertLineMark() {
  InitLineMarks(m_LinesInDoc + 1);
  for (Line l = 0; l <= m_LinesInDoc; ++l) {
    if (l % 64 == 0 && l + 63 <= m_LinesInDoc) {
      m_LineMarks[static_cast<size_t>(l / 64)] = ~m_LineMarks[static_cast<size_t>(l / 64)];
      l += 63;
    } else {
      SetLineMark(l, !GetLineMark(l));
    }
  }
}

Line KwEditBase::GetNextLineMark(Line line) const {
  Line l = std::max<Line>(line + 1, 0);
  while (l < m_LineMarkCapacity) {
    const uint64_t word = m_LineMarks[static_cast<size_t>(l / 64)] >> (l % 64);
    if (word) return l + std::countr_zero(word);
    l = (l / 64 + 1) * 64;
  }
  return kNone;
}

Line KwEditBase::GetPrevLineMark(Line line) const {
  Line l = std::min<Line>(line - 1, m_LineMarkCapacity - 1);
  while (l >= 0) {
    const int shift = 63 - static_cast<int>(l % 64);
    const uint64_t word = m_LineMarks[static_cast<size_t>(l / 64)] << shift;
    if (word) return l - std::countl_zero(word);
    l = (l / 64) * 64 - 1;
  }
  return kNone;
}

// Lines [line, line - delta) are gone (delta < 0) or delta unmarked lines come in at `line`
// (delta > 0); the marks behind move with their lines.
void KwEditBase::MoveLineMarks(Line line, int64_t delta) {
  if (delta == 0 || m_LineMarks.empty()) return;
  const Line last = MaxLineMark();
  if (last < line) return;
  if (delta > 0) {
    InitLineMarks(last + delta + 1);
    for (Line l = last; l >= line; --l) {
      const int m = GetLineMark(l);
      SetLineMarkBit(l + delta, m);
      SetLineMarkBit(l, 0);
    }
  } else {
    for (Line l = line; l <= last; ++l) {
      const int m = l - delta <= last ? GetLineMark(l - delta) : 0;
      SetLineMarkBit(l, m);
    }
  }
}

void KwEditBase::SetLineMarkBit(Line line, int flag) {
  if (line < 0 || line >= m_LineMarkCapacity) return;
  uint64_t& word = m_LineMarks[static_cast<size_t>(line / 64)];
  const uint64_t bit = uint64_t{1} << (line % 64);
  word = flag ? (word | bit) : (word & ~bit);
}

// ---- Bookmarks (sorted line numbers) --------------------------------------------------------------

int KwEditBase::ToggleBookMark(Line line) {
  KW_ASSERT(line >= 0 && line <= m_LinesInDoc);
  if (line < 0 || line > m_LinesInDoc) return 0;
  auto it = std::lower_bound(m_BookMarks.begin(), m_BookMarks.end(), line);
  if (it != m_BookMarks.end() && *it == line) {
    m_BookMarks.erase(it);
    return 0;
  }
  m_BookMarks.insert(it, line);
  return 1;
}

void KwEditBase::RemoveBookMarks(Line line) {
  if (line < 0) {
    m_BookMarks.clear();
    return;
  }
  auto it = std::lower_bound(m_BookMarks.begin(), m_BookMarks.end(), line);
  if (it != m_BookMarks.end() && *it == line) m_BookMarks.erase(it);
}

int KwEditBase::IsBookMarkInLine(Line line) const {
  return std::binary_search(m_BookMarks.begin(), m_BookMarks.end(), line) ? 1 : 0;
}

Line KwEditBase::GetNextBookMark(Line line) const {
  auto it = std::upper_bound(m_BookMarks.begin(), m_BookMarks.end(), line);
  return it == m_BookMarks.end() ? kNone : *it;
}

Line KwEditBase::GetPrevBookMark(Line line) const {
  auto it = std::lower_bound(m_BookMarks.begin(), m_BookMarks.end(), line);
  return it == m_BookMarks.begin() ? kNone : *(it - 1);
}

Line KwEditBase::GetBookMark(int64_t index) const {
  if (index < 0 || index >= GetBookMarkCount()) return kNone;
  return m_BookMarks[static_cast<size_t>(index)];
}

// Shared by bookmarks and form feeds: a sorted list of lines follows an insertion or deletion.
static void MoveSortedLines(std::vector<Line>& lines, Line line, int64_t delta) {
  auto from = std::lower_bound(lines.begin(), lines.end(), line);
  if (delta < 0) {
    auto to = std::lower_bound(from, lines.end(), line - delta);
    from = lines.erase(from, to);
  }
  for (auto it = from; it != lines.end(); ++it) *it += delta;
}

void KwEditBase::MoveBookMarks(Line line, int64_t delta) { MoveSortedLines(m_BookMarks, line, delta); }

// ---- Form feeds ------------------------------------------------------------------------------------

void KwEditBase::BuildFFTable() {
  m_FFTable.clear();
  const char16_t eol = m_EOLText[0];
  Line line = 0;
  for (const tagTEXTDESC* c = m_Head; c; c = c->next) {
    const char16_t* p = c->text;
    const int64_t n = c->used;
    if (scan::Count(p, n, kFormFeed) == 0) {
      line += c->eols;
      continue;
    }
    for (int64_t i = 0; i < n; ++i) {
      if (p[i] == eol) ++line;
      else if (p[i] == kFormFeed && (m_FFTable.empty() || m_FFTable.back() != line)) m_FFTable.push_back(line);
    }
  }
}

const Line* KwEditBase::GetFFTable(int64_t* count) const {
  if (count) *count = static_cast<int64_t>(m_FFTable.size());
  return m_FFTable.empty() ? nullptr : m_FFTable.data();
}

void KwEditBase::AddFF(Line line) {
  auto it = std::lower_bound(m_FFTable.begin(), m_FFTable.end(), line);
  if (it == m_FFTable.end() || *it != line) m_FFTable.insert(it, line);
}

void KwEditBase::RemoveFF(Line line) {
  auto it = std::lower_bound(m_FFTable.begin(), m_FFTable.end(), line);
  if (it != m_FFTable.end() && *it == line) m_FFTable.erase(it);
}

void KwEditBase::MoveFFs(Line line, int64_t delta) { MoveSortedLines(m_FFTable, line, delta); }

bool KwEditBase::LineHasFF(Line line) { return GetFFPosInLine(line, nullptr, 0, 0) > 0; }

void KwEditBase::RecheckFFs(Line first, Line last) {
  for (Line l = std::max<Line>(first, 0); l <= std::min(last, m_LinesInDoc); ++l) {
    if (LineHasFF(l))
      AddFF(l);
    else
      RemoveFF(l);
  }
}

int64_t KwEditBase::GetFFPosInLine(Line line, int64_t* columns, int64_t max, int64_t from) {
  const int64_t length = LineLength(line, 0);
  if (length < 0) return 0;
  const LinePos p = *StartOfLine(line);
  int64_t found = 0;
  const tagTEXTDESC* c = p.chunk;
  int64_t off = p.offset;
  int64_t column = 0;
  while (c && column < length) {
    const int64_t n = std::min<int64_t>(c->used - off, length - column);
    for (int64_t i = 0; i < n; ++i) {
      if (c->text[off + i] == kFormFeed && column + i >= from) {
        if (columns && found < max) columns[found] = column + i;
        ++found;
      }
    }
    column += n;
    c = c->next;
    off = 0;
  }
  return found;
}

Line KwEditBase::GetFirstFFInInterval(Line line1, Line line2) const {
  auto it = std::lower_bound(m_FFTable.begin(), m_FFTable.end(), line1);
  return it != m_FFTable.end() && *it <= line2 ? *it : kNone;
}

// ---- Syntax-colour flags ---------------------------------------------------------------------------

void KwEditBase::SetSyntaxColoring(int on) {
  m_SyntaxColoring = on ? 1 : 0;
  if (!on)
    std::vector<uint32_t>().swap(m_SyntaxFlags);
  else if (static_cast<int64_t>(m_SyntaxFlags.size()) < m_LinesInDoc + 1)
    m_SyntaxFlags.assign(static_cast<size_t>(m_LinesInDoc + 1001), 0);
}

uint32_t KwEditBase::GetSyntaxFlags(Line line) const {
  if (line < 0 || line >= static_cast<int64_t>(m_SyntaxFlags.size())) return 0;
  return m_SyntaxFlags[static_cast<size_t>(line)];
}

void KwEditBase::SetSyntaxFlags(Line line, uint32_t flags) {
  KW_ASSERT(line >= 0 && line <= m_LinesInDoc);
  if (line < 0 || line > m_LinesInDoc || !m_SyntaxColoring) return;
  if (line >= static_cast<int64_t>(m_SyntaxFlags.size())) m_SyntaxFlags.resize(static_cast<size_t>(line + 1001), 0);
  m_SyntaxFlags[static_cast<size_t>(line)] = flags;
}

void KwEditBase::MoveSyntaxColorFlags(Line line, int64_t delta) {
  if (m_SyntaxFlags.empty() || line >= static_cast<int64_t>(m_SyntaxFlags.size())) return;
  const auto at = m_SyntaxFlags.begin() + line;
  if (delta < 0) {
    const int64_t n = std::min<int64_t>(-delta, static_cast<int64_t>(m_SyntaxFlags.end() - at));
    m_SyntaxFlags.erase(at, at + n);
  } else {
    m_SyntaxFlags.insert(at, static_cast<size_t>(delta), 0u);
  }
}

// ---- Stick selection -------------------------------------------------------------------------------

void KwEditBase::SetStickSelection(int kind, Line line1, int64_t column1, Line line2, int64_t column2) {
  m_StickKind = kind;
  m_StickLine1 = line1;
  m_StickColumn1 = column1;
  m_StickLine2 = line2;
  m_StickColumn2 = column2;
}

int KwEditBase::GetStickSelection(Line* line1, int64_t* column1, Line* line2, int64_t* column2) {
  if (m_StickKind == 1 && m_StickColumn1 < 0) {
    const Index start = m_StickLine1, end = m_StickLine2;
    m_StickLine1 = LineFromIndex(start, &m_StickColumn1);
    m_StickLine2 = LineFromIndex(end, &m_StickColumn2);
  }
  if (line1) *line1 = m_StickLine1;
  if (column1) *column1 = m_StickColumn1;
  if (line2) *line2 = m_StickLine2;
  if (column2) *column2 = m_StickColumn2;
  return m_StickKind;
}

}  // namespace kw
