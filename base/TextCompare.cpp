// Case mapping and the library collation.
#include <array>
#include <cstdint>
#include <cstring>

#include "base/Assert.h"
#include "base/CodePages.h"
#include "base/Numbers.h"
#include "base/Text.h"
#include "base/Types.h"

namespace kw {

namespace {

// Per-character tables for the Latin-1 range; characters above U+00FF map to themselves and
// never expand, so the tables cover everything the rules touch.
struct CollationTables {
  std::array<char16_t, 256> upper{};    // ToUpper without code-page check
  std::array<char16_t, 256> lower{};    // ToLower without code-page check
  std::array<char16_t, 256> primary{};  // first primary character of a source character
  std::array<char16_t, 256> pending{};  // second primary character of an expansion, or 0
};

constexpr CollationTables MakeTables() {
  CollationTables t;
  for (int c = 0; c < 256; ++c) {
    const auto ch = static_cast<char16_t>(c);
    t.upper[c] = ((c >= u'a' && c <= u'z') || (c >= 0xE0 && c <= 0xFE)) ? static_cast<char16_t>(c - 32) : ch;
    t.lower[c] = ((c >= u'A' && c <= u'Z') || (c >= 0xC0 && c <= 0xDE)) ? static_cast<char16_t>(c + 32) : ch;
    t.primary[c] = ch;
    t.pending[c] = 0;
  }
  t.primary[u'_'] = u' ';
  const char16_t expansions[][3] = {{0xC4, u'A', u'E'}, {0xD6, u'O', u'E'}, {0xDC, u'U', u'E'},
                                    {0xE4, u'a', u'e'}, {0xF6, u'o', u'e'}, {0xFC, u'u', u'e'},
                                    {0xDF, u's', u'z'}};
  for (const auto& e : expansions) {
    t.primary[e[0]] = e[1];
    t.pending[e[0]] = e[2];
  }
  return t;
}

constexpr CollationTables kTables = MakeTables();

inline char16_t Upper(char16_t c) { return c < 256 ? kTables.upper[c] : c; }
inline char16_t Lower(char16_t c) { return c < 256 ? kTables.lower[c] : c; }
inline int Sign(char16_t x, char16_t y) { return x < y ? -1 : (x > y ? 1 : 0); }

// Whether a mapped letter can be written in the OEM code page (no best-fit substitutes); the
// mapping is refused otherwise, so that a file in that code page keeps every letter it can store.
bool FitsOemPage(char16_t mapped) {
  int used = 0;
  const int code = GetCodePageCodePoint(mapped, kEncodingOem, kNoBestFitChars, nullptr, &used);
  return code >= 0 && used == 0;
}

// The numeric reading of one text: its value and whether it counts as a number (GetDouble level 0
// or 1, so an empty or all-blank text is the number 0).
bool ReadNumber(const char16_t* s, int64_t len, double* value) {
  int level = kNumberEmpty;
  *value = len > 0 ? GetDouble(s, 0, len, 1, &level) : 0.0;
  return level == kNumberOk || level == kNumberEmpty;
}

// Texts closer than this are equal numbers, and the text order decides between them.
constexpr double kNumericTolerance = 1e-7;

template <typename Map>
void MapBuffer(char16_t* s, int64_t from, int64_t to, int* encoding, Map map) {
  KW_ASSERT(s != nullptr && from >= 0);
  if (s == nullptr || from < 0) return;
  if (to < 1) to = StrSize(s);
  for (int64_t i = from; i < to; ++i) s[i] = map(s[i], encoding);
}

template <typename Map>
void MapString(std::u16string& s, int from, int to, int* encoding, Map map) {
  KW_ASSERT(from >= 0);
  if (from < 0) return;
  const int64_t size = static_cast<int64_t>(s.size());
  const int64_t end = (to < 1 || to > size) ? size : to;
  for (int64_t i = from; i < end; ++i) s[i] = map(s[i], encoding);
}

}  // namespace

char16_t ToUpper(char16_t ch, int* encoding) {
  const char16_t mapped = Upper(ch);
  if (mapped != ch && encoding != nullptr && *encoding == kEncodingOem && !FitsOemPage(mapped))
    return ch;
  return mapped;
}

char16_t ToLower(char16_t ch, int* encoding) {
  const char16_t mapped = Lower(ch);
  if (mapped != ch && encoding != nullptr && *encoding == kEncodingOem && !FitsOemPage(mapped))
    return ch;
  return mapped;
}

void ToUpper(std::u16string& s, int from, int to, int* encoding) {
  MapString(s, from, to, encoding, [](char16_t c, int* e) { return ToUpper(c, e); });
}
void ToLower(std::u16string& s, int from, int to, int* encoding) {
  MapString(s, from, to, encoding, [](char16_t c, int* e) { return ToLower(c, e); });
}
void ToUpper(char16_t* s, int64_t from, int64_t to, int* encoding) {
  MapBuffer(s, from, to, encoding, [](char16_t c, int* e) { return ToUpper(c, e); });
}
void ToLower(char16_t* s, int64_t from, int64_t to, int* encoding) {
  MapBuffer(s, from, to, encoding, [](char16_t c, int* e) { return ToLower(c, e); });
}

char16_t ToCompare(char16_t ch, int caseSensitive) { return caseSensitive ? ch : Upper(ch); }

int StrCompare(const char16_t* a, int64_t lenA, const char16_t* b, int64_t lenB, int caseSensitive, int numeric,
               int skipLeadingBlanks) {
  if (lenA < 1 && lenB < 1) return 0;
  if (lenA < 0) lenA = 0;
  if (lenB < 0) lenB = 0;
  if (numeric) {
    double va = 0, vb = 0;
    const bool na = ReadNumber(a, lenA, &va), nb = ReadNumber(b, lenB, &vb);
    if (na && nb) {
      if (va < vb - kNumericTolerance) return -1;
      if (va > vb + kNumericTolerance) return 1;
    } else if (na != nb) {
      return na ? -1 : 1;  // numbers sort before other texts
    }
  }

  int64_t ia = 0, ib = 0;
  if (skipLeadingBlanks) {
    while (ia < lenA && a[ia] == u' ') ++ia;
    while (ib < lenB && b[ib] == u' ') ++ib;
  }

  char16_t pendA = 0, pendB = 0;  // second half of an expansion, delivered before the source advances
  int tie = 0;                    // first raw difference; decides between primary-equal texts
  for (;;) {
    // Equal raw characters change neither the tie-break nor the primary order, and an equal
    // expanding pair leaves equal pending halves that would be compared next, just as neutrally:
    // skip them in one tight run (the common prefix of sorted neighbours).
    if ((pendA | pendB) == 0) {
      while (ia + 4 <= lenA && ib + 4 <= lenB) {  // four units at a time
        uint64_t wa, wb;
        std::memcpy(&wa, a + ia, sizeof wa);
        std::memcpy(&wb, b + ib, sizeof wb);
        if (wa != wb) break;
        ia += 4;
        ib += 4;
      }
      while (ia < lenA && ib < lenB && a[ia] == b[ib]) {
        ++ia;
        ++ib;
      }
    }
    if ((pendA == 0 && ia >= lenA) || (pendB == 0 && ib >= lenB)) break;

    char16_t ra = 0, pa, rb = 0, pb;
    if (pendA) {
      pa = pendA;
      pendA = 0;
    } else {
      ra = a[ia++];
      if (ra < 256) {
        pa = kTables.primary[ra];
        pendA = kTables.pending[ra];
      } else {
        pa = ra;
      }
    }
    if (pendB) {
      pb = pendB;
      pendB = 0;
    } else {
      rb = b[ib++];
      if (rb < 256) {
        pb = kTables.primary[rb];
        pendB = kTables.pending[rb];
      } else {
        pb = rb;
      }
    }

    if (tie == 0) {
      if (ra != 0 && rb != 0) tie = caseSensitive ? Sign(ra, rb) : Sign(Upper(ra), Upper(rb));
      if (caseSensitive && tie == 0) tie = Sign(pa, pb);
    }
    const char16_t ua = Upper(pa), ub = Upper(pb);
    if (ua != ub) return ua < ub ? -1 : 1;
  }

  const int64_t leftA = lenA - ia, leftB = lenB - ib;
  if (leftA != leftB) return leftA > leftB ? 1 : -1;
  return tie;
}

int StrCompare(const std::u16string& a, const std::u16string& b, int caseSensitive, int numeric,
               int skipLeadingBlanks) {
  return StrCompare(a.data(), static_cast<int64_t>(a.size()), b.data(), static_cast<int64_t>(b.size()),
                    caseSensitive, numeric, skipLeadingBlanks);
}

}  // namespace kw
