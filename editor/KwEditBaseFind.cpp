// KwEditBase: finding text. Two paths: the stream search compares in place over the chunks (literal
// texts, no line restriction), the line search copies each line in slices and serves wildcards, marked
// lines and the column kind of the fix selection.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "app/QueryBox.h"
#include "base/Assert.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditBaseFindScan.h"
#include "platform/Platform.h"

namespace kw {

namespace {

// Shows the wait cursor while it lives.
class FindWaitCursor {
 public:
  FindWaitCursor() { GetPlatform().SetWaitCursor(true); }
  ~FindWaitCursor() { GetPlatform().SetWaitCursor(false); }
  FindWaitCursor(const FindWaitCursor&) = delete;
  FindWaitCursor& operator=(const FindWaitCursor&) = delete;
};

}  // namespace

int64_t KwEditBase::FindJoker(const char16_t* pattern, int64_t patLen, const char16_t* text, int64_t avail,
                              int matchCase) {
  KW_ASSERT(pattern != nullptr && text != nullptr);
  if (pattern == nullptr || text == nullptr || patLen < 1 || avail < 1) return 0;
  // The pattern is compared upper-cased when the case does not count, like the text.
  std::u16string p(pattern, static_cast<size_t>(patLen));
  if (!matchCase)
    for (char16_t& u : p) u = findscan::UpperTable()[u];
  return findscan::Joker(p.data(), patLen, text, avail, matchCase != 0);
}

int KwEditBase::MatchText(const tagTEXTDESC* c, int64_t off, const char16_t* pattern, int64_t length,
                          int caseBlind) const {
  const char16_t* upper = findscan::UpperTable();
  int64_t i = 0;
  while (c && i < length) {
    const int64_t n = std::min<int64_t>(length - i, static_cast<int64_t>(c->used) - off);
    const char16_t* p = c->text + off;
    if (caseBlind) {
      for (int64_t j = 0; j < n; ++j)
        if (upper[p[j]] != pattern[i + j]) return 0;
    } else if (n > 0 && std::memcmp(p, pattern + i, static_cast<size_t>(n) * sizeof(char16_t)) != 0) {
      return 0;
    }
    i += n;
    c = c->next;
    off = 0;
  }
  return i == length ? 1 : 0;
}

int KwEditBase::MatchTextBack(const tagTEXTDESC* c, int64_t off, const char16_t* pattern, int64_t length,
                              int caseBlind) const {
  const char16_t* upper = findscan::UpperTable();
  int64_t i = length;  // pattern[0, i) is still to compare, ending at c->text[off]
  while (c && i > 0) {
    const int64_t n = std::min<int64_t>(i, off + 1);
    const char16_t* p = c->text + off + 1 - n;
    const char16_t* q = pattern + i - n;
    if (caseBlind) {
      for (int64_t j = n - 1; j >= 0; --j)
        if (upper[p[j]] != q[j]) return 0;
    } else if (n > 0 && std::memcmp(p, q, static_cast<size_t>(n) * sizeof(char16_t)) != 0) {
      return 0;
    }
    i -= n;
    c = c->prev;
    if (c) off = static_cast<int64_t>(c->used) - 1;
  }
  return i == 0 ? 1 : 0;
}

int64_t KwEditBase::FindTextW(Line* line, int64_t* column, const char16_t* texts, const int64_t* ends,
                              int64_t count, int direction, int matchCase, int fixSelOnly, int markedOnly,
                              int wildcards, int64_t* length, std::vector<int64_t>* positions,
                              std::vector<int64_t>* lengths) {
  const bool ok = line != nullptr && column != nullptr && length != nullptr && texts != nullptr && ends != nullptr &&
                  count >= 1 && *line >= 0 && *line <= m_LinesInDoc && *column >= 0 &&
                  (positions == nullptr || count == 1);
  KW_ASSERT(ok);
  if (!ok) return -1;
  FindRequest r;
  if (!r.pat.Prepare(texts, ends, count, matchCase, wildcards)) {
    KW_ASSERT(!"an empty search text");
    return -1;
  }
  const int stickKind = GetStickSelection(nullptr, nullptr, nullptr, nullptr);
  if (fixSelOnly && stickKind == 0) {
    KW_ASSERT(!"a fix-selection search without a fix selection");
    return -1;
  }
  r.forward = direction != 0;
  r.markedOnly = markedOnly != 0;
  r.fixSel = fixSelOnly != 0;
  r.line = *line;
  r.column = std::min(*column, LineLength(*line, 0));
  r.start = LineStart(*line) + r.column;
  r.positions = positions;
  r.lengths = lengths;
  if (positions) positions->clear();
  if (lengths) lengths->clear();

  // Marked lines only, for one literal text without an end of line and no fix selection, is the
  // stream search passing over unmarked lines: a match cannot span lines.
  const bool markedStream = r.markedOnly && !r.fixSel && !r.pat.wildcards && r.pat.texts.size() == 1 &&
                            r.pat.longest < kFindSlice &&
                            r.pat.texts[0].find_first_of(u"\r\n") == std::u16string::npos;
  const bool stream = (!r.pat.wildcards && !r.markedOnly && !(r.fixSel && stickKind == 2)) || markedStream;
  const int64_t result = stream ? FindStream(r) : FindLines(r);
  if (result < -1) return result;
  if (r.found >= 0) {
    *line = LineFromIndex(r.index, column);
    *length = r.length;
  }
  if (r.Collecting()) return r.collected;
  return r.found;
}

int64_t KwEditBase::FindStream(FindRequest& r) {
  const findscan::Patterns& pat = r.pat;
  const int caseBlind = pat.matchCase ? 0 : 1;
  Index lo = 0, hi = m_TotalChars;
  if (r.fixSel) {
    // The stream kind: the match lies between the selection's two ends.
    Line l1, l2;
    int64_t c1, c2;
    GetStickSelection(&l1, &c1, &l2, &c2);
    lo = LineStart(l1) + c1;
    hi = LineStart(l2) + c2;
    if (lo > hi) std::swap(lo, hi);
  }
  if (r.rangeEnd >= 0) hi = std::min(hi, r.rangeEnd);
  if (pat.texts.size() == 1) return FindStreamLiteral(r, lo, hi);
  if (r.forward) {
    const Index from = std::max(r.start, lo);
    if (from >= hi) return -1;
    Index cs;
    const tagTEXTDESC* c = SeekElement(from, &cs, nullptr);
    int64_t off = from - cs;
    while (c) {
      const auto used = static_cast<int64_t>(c->used);
      while (off < used) {
        const int64_t i = pat.first.FindFirst(c->text + off, used - off);
        if (i == used - off) {
          off = used;
          break;
        }
        off += i;
        const Index at = cs + off;
        if (at + pat.shortest > hi) return -1;
        bool hit = false;
        for (size_t k = 0; k < pat.texts.size(); ++k) {
          const auto len = static_cast<int64_t>(pat.texts[k].size());
          if (at + len <= hi && MatchText(c, off, pat.texts[k].data(), len, caseBlind)) {
            if (!r.Hit(static_cast<int64_t>(k), at, len)) return r.found;
            off += len;
            hit = true;
            break;
          }
        }
        if (!hit) ++off;
      }
      off -= used;
      cs += used;
      c = c->next;
    }
    return -1;
  }
  // Backwards: candidates are the units that can end a match, from the start position down.
  const Index to = std::min(r.start, hi);
  if (to <= lo) return -1;
  Index cs;
  const tagTEXTDESC* c = SeekElement(to - 1, &cs, nullptr);
  int64_t off = to - cs;  // units c->text[0, off) are candidates
  while (c) {
    while (off > 0) {
      const int64_t j = pat.last.FindLast(c->text, off);
      if (j < 0) {
        off = 0;
        break;
      }
      const Index endAt = cs + j;
      if (endAt - pat.shortest + 1 < lo) return -1;
      bool hit = false;
      for (size_t k = 0; k < pat.texts.size(); ++k) {
        const auto len = static_cast<int64_t>(pat.texts[k].size());
        if (endAt - len + 1 >= lo && MatchTextBack(c, j, pat.texts[k].data(), len, caseBlind)) {
          if (!r.Hit(static_cast<int64_t>(k), endAt - len + 1, len)) return r.found;
          off = j - len + 1;
          hit = true;
          break;
        }
      }
      if (!hit) off = j;
    }
    c = c->prev;
    if (c) {
      cs -= c->used;
      off += c->used;
    }
  }
  return -1;
}

int64_t KwEditBase::FindStreamLiteral(FindRequest& r, Index lo, Index hi) {
  // One text: the kernel finds the matches lying wholly inside a chunk; the few candidates that
  // straddle the border to the next (forwards) or previous (backwards) chunk are compared in place.
  const findscan::Literal& lit = r.pat.lead;
  const char16_t* text = lit.Data();
  const int64_t m = lit.Size();
  const int caseBlind = r.pat.matchCase ? 0 : 1;
  constexpr Index kDone = -1, kTake = -2;
  // Marked lines only (the text holds no end of line, so a match lies in one line): a match in an
  // unmarked line is passed over and the search goes on at the next (forwards) or previous
  // (backwards) marked line. kTake for a match to take, else where to go on from, or kDone.
  auto markCheck = [&](Index at) -> Index {
    if (!r.markedOnly) return kTake;
    const Line l = LineFromIndex(at, nullptr);
    if (GetLineMark(l)) return kTake;
    const Line next = r.forward ? GetNextLineMark(l) : GetPrevLineMark(l);
    if (next < 0 || next > m_LinesInDoc) return kDone;
    return r.forward ? LineStart(next) : LineStart(next) + LineLength(next, 0);
  };
  // Forwards from `from`; kDone at the end or when the request is satisfied, else where to go on.
  auto forward = [&](Index from) -> Index {
    if (from + m > hi) return kDone;
    Index cs;
    const tagTEXTDESC* c = SeekElement(from, &cs, nullptr);
    int64_t off = from - cs;  // may lie behind the chunk's end after a match across its border
    for (; c; cs += static_cast<int64_t>(c->used), c = c->next) {
      const auto used = static_cast<int64_t>(c->used);
      if (cs + off + m > hi) return kDone;
      const int64_t inside = std::min(used, hi - cs);  // matches lie wholly in text[off, inside)
      while (off + m <= inside) {
        const int64_t i = lit.FindFirst(c->text + off, inside - off);
        if (i < 0) break;
        const Index go = markCheck(cs + off + i);
        if (go != kTake) return go;
        if (!r.Hit(0, cs + off + i, m)) return kDone;
        off += i + m;
      }
      for (int64_t s = std::max(off, used - m + 1); s < used && cs + s + m <= hi; ++s) {
        if (MatchText(c, s, text, m, caseBlind)) {
          const Index go = markCheck(cs + s);
          if (go != kTake) return go;
          if (!r.Hit(0, cs + s, m)) return kDone;
          s += m - 1;
          off = s + 1;
        }
      }
      off = std::max(off, used) - used;
    }
    return kDone;
  };
  // Backwards: matches end at or before `to`.
  auto backward = [&](Index to) -> Index {
    if (to - m < lo) return kDone;
    Index cs;
    const tagTEXTDESC* c = SeekElement(to - 1, &cs, nullptr);
    int64_t off = to - cs;  // matches end before c->text[off]; below 0 after a match across the border
    while (c) {
      if (cs + off - m < lo) return kDone;
      const int64_t base = std::max<int64_t>(0, lo - cs);  // matches lie wholly in text[base, off)
      while (off - base >= m) {
        const int64_t i = lit.FindLast(c->text + base, off - base);
        if (i < 0) break;
        const Index go = markCheck(cs + base + i);
        if (go != kTake) return go;
        if (!r.Hit(0, cs + base + i, m)) return kDone;
        off = base + i;
      }
      for (int64_t j = std::min(off, m - 1) - 1; j >= 0 && cs + j - m + 1 >= lo; --j) {
        if (MatchTextBack(c, j, text, m, caseBlind)) {
          const Index go = markCheck(cs + j - m + 1);
          if (go != kTake) return go;
          if (!r.Hit(0, cs + j - m + 1, m)) return kDone;
          j -= m - 1;
          off = j;
        }
      }
      off = std::min<int64_t>(off, 0);
      c = c->prev;
      if (c) {
        cs -= static_cast<int64_t>(c->used);
        off += static_cast<int64_t>(c->used);
      }
    }
    return kDone;
  };
  if (r.forward) {
    for (Index go = std::max(r.start, lo); go != kDone;) go = forward(go);
  } else {
    for (Index go = std::min(r.start, hi); go != kDone;) go = backward(go);
  }
  return -1;
}

int64_t KwEditBase::FindInLine(FindRequest& r, Line line, int64_t from, int64_t limit, int64_t* column,
                               int64_t* length) {
  const findscan::Patterns& pat = r.pat;
  char16_t* buf = r.buffer;
  const int64_t lead = pat.lead.Size();
  auto check = [&](int64_t p, const char16_t* at, int64_t avail) -> int64_t {
    int64_t len = 0;
    const int64_t k = pat.MatchAt(at, avail, &len);
    if (k < 0 || (r.fixSel && !InStickArea(line, p, len))) return -1;
    *column = p;
    *length = len;
    return k;
  };
  if (r.forward) {
    int64_t sliceStart = from;
    while (sliceStart < limit) {
      const int64_t n = TextOfLine(line, buf, std::min(kFindSlice, limit - sliceStart), sliceStart, 0, 0, 0);
      if (n <= 0) break;
      const bool last = sliceStart + n >= limit;
      // Consecutive slices overlap by the longest text less one unit: a match that does not fit into
      // this slice starts in the overlap and is found in the next one.
      const int64_t candEnd = last ? sliceStart + n : sliceStart + n - (pat.longest - 1);
      for (int64_t p = sliceStart; p < candEnd; ++p) {
        if (lead > 0) {
          // Every match begins with the lead, lying wholly in this slice.
          const int64_t i = pat.lead.FindFirst(buf + (p - sliceStart), sliceStart + n - p);
          if (i < 0) break;
          p += i;
          if (p >= candEnd) break;
        } else if (!pat.wildcards) {
          p += pat.first.FindFirst(buf + (p - sliceStart), candEnd - p);
          if (p >= candEnd) break;
        }
        const int64_t k = check(p, buf + (p - sliceStart), n - (p - sliceStart));
        if (k >= 0) return k;
      }
      if (last) break;
      sliceStart = candEnd;
    }
    return -1;
  }
  int64_t sliceEnd = limit;
  int64_t candHi = limit;  // candidates below this start
  while (candHi > from) {
    const int64_t sliceStart = std::max(from, sliceEnd - kFindSlice);
    const int64_t n = TextOfLine(line, buf, sliceEnd - sliceStart, sliceStart, 0, 0, 0);
    if (n < sliceEnd - sliceStart) break;
    for (int64_t p = candHi - 1; p >= sliceStart; --p) {
      if (lead > 0) {
        const int64_t i = pat.lead.FindLast(buf, std::min(n, p - sliceStart + lead));
        if (i < 0) break;
        p = sliceStart + i;
      } else if (!pat.wildcards) {
        p = sliceStart + pat.first.FindLast(buf, p - sliceStart + 1);
        if (p < sliceStart) break;
      }
      const int64_t k = check(p, buf + (p - sliceStart), sliceEnd - p);
      if (k >= 0) return k;
    }
    candHi = sliceStart;
    sliceEnd = std::min(limit, sliceStart + pat.longest - 1);
  }
  return -1;
}

int64_t KwEditBase::FindLines(FindRequest& r) {
  if (r.pat.longest >= kFindSlice) {
    if (m_Interactive) QueryBox(u"EditBase", 0, 1090, 1, 1910u);
    return -1;
  }
  std::unique_ptr<char16_t[]> buffer(new (std::nothrow) char16_t[static_cast<size_t>(kFindSlice + 1)]);
  if (!buffer) return -2;
  r.buffer = buffer.get();
  FindWaitCursor wait;
  Line l1 = 0, l2 = m_LinesInDoc;
  if (r.fixSel) {
    Line s1, s2;
    GetStickSelection(&s1, nullptr, &s2, nullptr);
    l1 = std::max<Line>(0, std::min(s1, s2));
    l2 = std::min(m_LinesInDoc, std::max(s1, s2));
  }
  auto skip = [&](Line l) { return (r.markedOnly && !GetLineMark(l)) || l < l1 || l > l2; };
  int64_t column = 0, length = 0;
  if (r.forward) {
    for (Line l = r.line; l <= m_LinesInDoc; ++l) {
      if (skip(l)) continue;
      int64_t from = l == r.line ? r.column : 0;
      const int64_t limit = LineLength(l, 0);
      int64_t k;
      while ((k = FindInLine(r, l, from, limit, &column, &length)) >= 0) {
        if (!r.Hit(k, LineStart(l) + column, length)) return k;
        from = column + length;
      }
    }
    return -1;
  }
  for (Line l = r.line; l >= 0; --l) {
    if (skip(l)) continue;
    int64_t limit = LineLength(l, 0);
    if (l == r.line) limit = std::min(limit, r.column);
    int64_t k;
    while ((k = FindInLine(r, l, 0, limit, &column, &length)) >= 0) {
      if (!r.Hit(k, LineStart(l) + column, length)) return k;
      limit = column;
    }
  }
  return -1;
}

// ---- Brackets --------------------------------------------------------------------------------------------

int KwEditBase::MatchBrace(Line line, int64_t column, Index* position) {
  static constexpr char16_t kOpen[] = u"([{<";
  static constexpr char16_t kClose[] = u")]}>";
  const bool ok = position != nullptr && line >= 0 && line <= m_LinesInDoc && column >= 0;
  KW_ASSERT(ok);
  if (!ok || column >= LineLength(line, 0)) return 0;
  const Index at = LineStart(line) + column;
  char16_t here = 0;
  GetText(at, &here, 1);
  const char16_t* o = std::char_traits<char16_t>::find(kOpen, 4, here);
  const char16_t* cl = std::char_traits<char16_t>::find(kClose, 4, here);
  if (o == nullptr && cl == nullptr) return 0;
  const bool forward = o != nullptr;
  const char16_t open = forward ? here : kOpen[cl - kClose];
  const char16_t close = forward ? kClose[o - kOpen] : here;
  Index cs;
  const tagTEXTDESC* c = SeekElement(at, &cs, nullptr);
  int64_t off = at - cs;
  int64_t depth = 0;
  while (c) {
    const auto used = static_cast<int64_t>(c->used);
    if (forward) {
      for (; off < used; ++off) {
        const char16_t u = c->text[off];
        if (u == open) ++depth;
        else if (u == close && --depth == 0) {
          *position = cs + off;
          return 1;
        }
      }
      cs += used;
      c = c->next;
      off = 0;
    } else {
      for (; off >= 0; --off) {
        const char16_t u = c->text[off];
        if (u == close) ++depth;
        else if (u == open && --depth == 0) {
          *position = cs + off;
          return 1;
        }
      }
      c = c->prev;
      if (c) {
        cs -= c->used;
        off = static_cast<int64_t>(c->used) - 1;
      }
    }
  }
  return 0;
}

}  // namespace kw
