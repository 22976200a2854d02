// KwEditBase: line contents, the last line, the end-of-line type, comparisons, tab positions and the
// column text.
#include <algorithm>

#include "app/KwWinApp.h"
#include "base/Assert.h"
#include "base/Text.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditBaseScan.h"

namespace kw {

namespace {

constexpr char16_t kCR = 13;
constexpr char16_t kLF = 10;
constexpr char16_t kTab = 9;

bool IsBlank(char16_t c) { return c == u' ' || c == kTab; }

}  // namespace

// ---- Line contents ------------------------------------------------------------------------------

std::u16string KwEditBase::GetLineText(Line line) {
  const LinePos* p = StartOfLine(line);
  if (p == nullptr) return {};
  std::u16string s(static_cast<size_t>(p->length), u'\0');
  GetText(p->index, s.data(), p->length);
  return s;
}

std::u16string KwEditBase::GetAllText() {
  std::u16string s;
  s.reserve(static_cast<size_t>(m_TotalChars));
  for (const tagTEXTDESC* c = m_Head; c; c = c->next) s.append(c->text, c->used);
  return s;
}

int64_t KwEditBase::TextOfLine(Line line, char16_t* buffer, int64_t max, int64_t startColumn, int withEOL,
                               int terminate, int showEOL) {
  KW_ASSERT(buffer != nullptr && max >= 0 && startColumn >= 0);
  if (buffer == nullptr || max < 0 || startColumn < 0) return -1;
  const LinePos* found = StartOfLine(line);
  if (found == nullptr) return -1;
  const LinePos p = *found;
  const int64_t end = p.length + (withEOL ? p.eolLength : 0);
  if (startColumn > end) return -1;
  const int64_t room = terminate ? max - 1 : max;
  if (room < 0) return -1;
  const int64_t n = std::min(end - startColumn, room);
  GetText(p.index + startColumn, buffer, n);
  if (showEOL)
    for (int64_t i = std::max<int64_t>(0, p.length - startColumn); i < n; ++i) buffer[i] = m_EOLDisplayChar;
  if (terminate) buffer[n] = 0;
  return n;
}

int64_t KwEditBase::ReducedLineLength(Line line) {
  const std::u16string s = GetLineText(line);
  if (line < 0 || line > m_LinesInDoc) return -1;
  size_t n = s.size();
  while (n > 0 && IsBlank(s[n - 1])) --n;
  return static_cast<int64_t>(n);
}

int64_t KwEditBase::IndentOfLine(Line line) {
  const std::u16string s = GetLineText(line);
  size_t n = 0;
  while (n < s.size() && IsBlank(s[n])) ++n;
  return static_cast<int64_t>(n);
}

char16_t KwEditBase::GetChar(Line line, int64_t column) {
  const bool trace = IsKwWinApp() && GetKwWinApp()->GetTraceMode();
  if (line < 0 || line > m_LinesInDoc) {
    if (trace)
      GetKwWinApp()->Trace(u"EditBase::GetChar: WARNING! Attempt to get a wrong Line=%Id m_LinesInDoc=%Id", line,
                           m_LinesInDoc);
    return 0;
  }
  const LinePos* p = StartOfLine(line);
  if (column < 0 || column >= p->length + p->eolLength) {
    if (trace)
      GetKwWinApp()->Trace(u"EditBase::GetChar: WARNING! Attempt to get a wrong Column=%Id m_LineLen=%Id", column,
                           p->length);
    return 0;
  }
  char16_t c = 0;
  GetText(p->index + column, &c, 1);
  return c;
}

int KwEditBase::IsTabFormatted() {
  for (const tagTEXTDESC* c = m_Head; c; c = c->next)
    if (scan::Find(c->text, c->used, kTab) < c->used) return 1;
  return 0;
}

// ---- The last line ------------------------------------------------------------------------------

int KwEditBase::TestLastLine(int kind) {
  const Index start = LineStart(m_LinesInDoc);
  if (start < 0) return 0;
  std::u16string rest(static_cast<size_t>(m_TotalChars - start), u'\0');
  GetText(start, rest.data(), m_TotalChars - start);
  for (const char16_t c : rest) {
    if (kind == 1 && c == kCtrlZ) return 1;
    if (kind == 2 && c != kCtrlZ) return 1;
    if (kind == 3 && c >= 33) return 1;
  }
  return 0;
}

int KwEditBase::AppendEOL() {
  return SelReplaceAt(m_TotalChars, m_TotalChars, m_EOLText, m_EOLLength, 1);
}

int KwEditBase::RemoveLastEOL() {
  if (m_LinesInDoc == 0 || LineLength(m_LinesInDoc, 0) != 0) return 0;
  const int64_t eolLength = LineLength(m_LinesInDoc - 1, 1) - LineLength(m_LinesInDoc - 1, 0);
  return SelReplaceAt(m_TotalChars - eolLength, m_TotalChars, nullptr, 0, 1);
}

// ---- Adding text ----------------------------------------------------------------------------------

int KwEditBase::AddText(const std::u16string& text, int recordUndo, int markNewLines) {
  if (text.empty()) return 1;
  std::vector<Line> marks;
  if (markNewLines) {
    int64_t column = 0;
    const Line line = LineFromIndex(m_TotalChars, &column);
    const int64_t eols = scan::Count(text.data(), static_cast<int64_t>(text.size()), m_EOLText[0]);
    // The lines that hold some of the new text: the present last line only when the text begins it.
    const Line first = column == 0 ? line : line + 1;
    const bool endsWithEOL = text.back() == m_EOLText[0] ||
                             (m_EOLText[0] == kCR && text.size() >= 2 && text.back() == kLF && text[text.size() - 2] == kCR);
    const Line last = line + eols - (endsWithEOL ? 1 : 0);
    for (Line l = first; l <= last; ++l) marks.push_back(l);
  }
  marks.push_back(-1);
  return SelReplaceAt(m_TotalChars, m_TotalChars, text.data(), static_cast<int64_t>(text.size()),
                      recordUndo ? 1 : 0, marks.data());
}

int KwEditBase::AppendLines(int64_t count, int recordUndo, KwProgress* /*progress: one step*/) {
  KW_ASSERT(count >= 0);
  if (count < 0) return 0;
  std::u16string text;
  text.reserve(static_cast<size_t>(count * m_EOLLength));
  for (int64_t i = 0; i < count; ++i) text.append(m_EOLText, static_cast<size_t>(m_EOLLength));
  return AddText(text, recordUndo, 0);
}

// ---- End of line ------------------------------------------------------------------------------------

int KwEditBase::SetEOLType(char16_t eol) {
  if (eol == m_EOLText[0]) return 0;
  m_EOLText[0] = eol;
  m_EOLText[1] = eol == kCR ? kLF : 0;
  m_EOLText[2] = 0;
  m_EOLLength = eol == kCR ? 2 : 1;
  InitText(0);
  if (!m_FFTable.empty()) BuildFFTable();
  return 1;
}

int KwEditBase::GetEOLText(char16_t* buffer, int displayFlag) const {
  for (int i = 0; i < m_EOLLength; ++i) buffer[i] = displayFlag ? m_EOLDisplayChar : m_EOLText[i];
  buffer[m_EOLLength] = 0;
  return m_EOLLength;
}

// ---- Comparison ---------------------------------------------------------------------------------------

int KwEditBase::HasEqualText(KwEditBase& other) {
  if (m_TotalChars != other.m_TotalChars || m_EOLText[0] != other.m_EOLText[0]) return 0;
  std::u16string a(static_cast<size_t>(std::min<int64_t>(m_TotalChars, kChunkUnits)), u'\0');
  std::u16string b(a.size(), u'\0');
  for (Index at = 0; at < m_TotalChars;) {
    const int64_t n = std::min<int64_t>(static_cast<int64_t>(a.size()), m_TotalChars - at);
    GetText(at, a.data(), n);
    other.GetText(at, b.data(), n);
    if (!std::equal(a.begin(), a.begin() + n, b.begin())) return 0;
    at += n;
  }
  return 1;
}

namespace {

// A line as the comparison flags see it: 1 upper case, 2 without blanks and tabs.
std::u16string Normalised(const std::u16string& s, int flags) {
  std::u16string out;
  out.reserve(s.size());
  for (const char16_t c : s) {
    if ((flags & 2) && IsBlank(c)) continue;
    out.push_back((flags & 1) ? ToUpper(c) : c);
  }
  return out;
}

uint64_t Hash(const std::u16string& s) {
  uint64_t h = 14695981039346656037ull;  // 64-bit FNV-1a over the units
  for (const char16_t c : s) {
    h ^= static_cast<uint64_t>(c);
    h *= 1099511628211ull;
  }
  return h;
}

}  // namespace

int KwEditBase::IsEqualLine(Line line, KwEditBase& other, Line otherLine, int ignoreCase, int ignoreBlanks) {
  if (line < 0 || line > m_LinesInDoc || otherLine < 0 || otherLine > other.m_LinesInDoc) return 0;
  const int flags = (ignoreCase ? 1 : 0) | (ignoreBlanks ? 2 : 0);
  return Normalised(GetLineText(line), flags) == Normalised(other.GetLineText(otherLine), flags) ? 1 : 0;
}

std::vector<uint64_t> KwEditBase::GetHashTable(int flags) {
  std::vector<uint64_t> table;
  table.reserve(static_cast<size_t>(m_LinesInDoc + 1));
  for (Line l = 0; l <= m_LinesInDoc; ++l) {
    const std::u16string s = GetLineText(l);
    table.push_back(Hash(flags ? Normalised(s, flags) : s));
  }
  return table;
}

// ---- Tab positions ----------------------------------------------------------------------------------

int64_t KwEditBase::GetTabbedPos(Line line, int64_t column, const int64_t* tabStops, int count) {
  const std::u16string s = GetLineText(line);
  int64_t pos = 0;
  for (int64_t i = 0; i < column; ++i) {
    if (i < static_cast<int64_t>(s.size()) && s[static_cast<size_t>(i)] == kTab)
      pos = scan::NextTabStop(pos, tabStops, count);
    else
      ++pos;
  }
  return pos;
}

int64_t KwEditBase::AdjustCol(Line line, int64_t* column, const int64_t* tabStops, int count) {
  KW_ASSERT(column != nullptr);
  if (column == nullptr) return 0;
  const std::u16string s = GetLineText(line);
  const int64_t target = std::max<int64_t>(*column, 0);
  int64_t pos = 0;
  int64_t i = 0;
  for (; i < static_cast<int64_t>(s.size()); ++i) {
    const int64_t next = s[static_cast<size_t>(i)] == kTab ? scan::NextTabStop(pos, tabStops, count) : pos + 1;
    if (next > target) break;
    pos = next;
  }
  if (i == static_cast<int64_t>(s.size())) {  // behind the text every column is one unit
    i += target - pos;
    pos = target;
  }
  *column = i;
  return pos;
}

// ---- Column text ------------------------------------------------------------------------------------

int64_t KwEditBase::GetColumnText(Line line1, Line line2, int64_t column1, int64_t column2, std::u16string* buffer,
                                  int flags, KwProgress* progress) {
  const bool ok = buffer != nullptr && line1 >= 0 && line1 <= line2 && line2 <= m_LinesInDoc && column1 >= 0 &&
                  column1 <= column2;
  KW_ASSERT(ok);
  if (!ok) return -1;
  const std::u16string eol(m_EOLText, static_cast<size_t>(m_EOLLength));
  buffer->assign(kColumnMarker);
  buffer->append(eol);
  const int64_t width = column2 - column1;
  const int64_t lines = line2 - line1 + 1;
  for (Line l = line1; l <= line2; ++l) {
    const std::u16string s = GetLineText(l);
    std::u16string part;
    if (column1 < static_cast<int64_t>(s.size())) part = s.substr(static_cast<size_t>(column1), static_cast<size_t>(width));
    if ((flags & 1) && static_cast<int64_t>(part.size()) < width) part.append(static_cast<size_t>(width) - part.size(), u' ');
    buffer->append(part);
    buffer->append(eol);
    if (progress && !progress->Step(static_cast<int>(100 * (l - line1 + 1) / lines))) return -1;
  }
  return lines;
}

}  // namespace kw
