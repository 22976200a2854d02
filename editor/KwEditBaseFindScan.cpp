// Prepared search texts and the unit scanners of the find and replace operations.
#include "editor/KwEditBaseFindScan.h"

#include <algorithm>
#include <array>

#include "base/Text.h"

namespace kw::findscan {

const char16_t* UpperTable() {
  static const std::array<char16_t, 65536> table = [] {
    std::array<char16_t, 65536> t{};
    for (uint32_t u = 0; u < 65536; ++u) t[u] = ToUpper(static_cast<char16_t>(u));
    return t;
  }();
  return table.data();
}

void UnitSet::Add(char16_t u) {
  if (Contains(u)) return;
  bits_[u >> 6] |= uint64_t{1} << (u & 63);
  units_.push_back(u);
}

namespace {

// The scanners compare blocks of 16 units against up to four units at once; only a block that holds
// a hit is looked at unit by unit.
#if defined(__SSE2__)
inline unsigned BlockMask(const char16_t* p, const __m128i* keys, size_t k) {
  const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 8));
  __m128i ea = _mm_cmpeq_epi16(a, keys[0]);
  __m128i eb = _mm_cmpeq_epi16(b, keys[0]);
  for (size_t i = 1; i < k; ++i) {
    ea = _mm_or_si128(ea, _mm_cmpeq_epi16(a, keys[i]));
    eb = _mm_or_si128(eb, _mm_cmpeq_epi16(b, keys[i]));
  }
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(ea, eb)));
}
#else
inline unsigned BlockMask(const char16_t* p, const char16_t* keys, size_t k) {
  unsigned m = 0;
  for (int j = 0; j < 16; ++j) {
    bool hit = false;
    for (size_t i = 0; i < k; ++i) hit |= p[j] == keys[i];
    m |= static_cast<unsigned>(hit) << j;
  }
  return m;
}
#endif

}  // namespace

int64_t UnitSet::FindFirst(const char16_t* p, int64_t n) const {
  const size_t k = units_.size();
  if (k == 0) return n;
  if (k > 4) {
    for (int64_t i = 0; i < n; ++i)
      if (Contains(p[i])) return i;
    return n;
  }
#if defined(__SSE2__)
  __m128i keys[4];
  for (size_t i = 0; i < k; ++i) keys[i] = _mm_set1_epi16(static_cast<short>(units_[i]));
#else
  const char16_t* keys = units_.data();
#endif
  int64_t i = 0;
  for (; i + 16 <= n; i += 16) {
    const unsigned m = BlockMask(p + i, keys, k);
    if (m) return i + __builtin_ctz(m);
  }
  for (; i < n; ++i)
    if (Contains(p[i])) return i;
  return n;
}

int64_t UnitSet::FindLast(const char16_t* p, int64_t n) const {
  const size_t k = units_.size();
  if (k == 0) return -1;
  if (k > 4) {
    for (int64_t i = n - 1; i >= 0; --i)
      if (Contains(p[i])) return i;
    return -1;
  }
#if defined(__SSE2__)
  __m128i keys[4];
  for (size_t i = 0; i < k; ++i) keys[i] = _mm_set1_epi16(static_cast<short>(units_[i]));
#else
  const char16_t* keys = units_.data();
#endif
  int64_t end = n;
  for (; end >= 16; end -= 16) {
    const unsigned m = BlockMask(p + end - 16, keys, k);
    if (m) return end - 16 + (31 - __builtin_clz(m));
  }
  for (int64_t i = end - 1; i >= 0; --i)
    if (Contains(p[i])) return i;
  return -1;
}

bool Patterns::Prepare(const std::vector<std::u16string>& alternatives, int caseFlag, int wildcardFlag) {
  texts.clear();
  first = UnitSet();
  last = UnitSet();
  matchCase = caseFlag != 0;
  wildcards = false;
  shortest = INT64_MAX;
  longest = 0;
  if (alternatives.empty()) return false;
  const char16_t* upper = UpperTable();
  for (std::u16string t : alternatives) {
    if (t.empty()) return false;
    if (!matchCase)
      for (char16_t& u : t) u = upper[u];
    if (wildcardFlag && t.find_first_of(u"?*") != std::u16string::npos) wildcards = true;
    shortest = std::min<int64_t>(shortest, static_cast<int64_t>(t.size()));
    longest = std::max<int64_t>(longest, static_cast<int64_t>(t.size()));
    texts.push_back(std::move(t));
  }
  // Every unit whose comparison key is the text's first (last) unit can start (end) a match.
  for (const std::u16string& t : texts) {
    const char16_t f = t.front(), l = t.back();
    if (matchCase) {
      first.Add(f);
      last.Add(l);
      continue;
    }
    for (uint32_t u = 0; u < 65536; ++u) {
      if (upper[u] == f) first.Add(static_cast<char16_t>(u));
      if (upper[u] == l) last.Add(static_cast<char16_t>(u));
    }
  }
  return true;
}

bool Patterns::Prepare(const char16_t* all, const int64_t* ends, int64_t count, int caseFlag, int wildcardFlag) {
  std::vector<std::u16string> alternatives;
  int64_t from = 0;
  for (int64_t i = 0; i < count; ++i) {
    if (ends[i] < from) return false;
    alternatives.emplace_back(all + from, static_cast<size_t>(ends[i] - from));
    from = ends[i];
  }
  return Prepare(alternatives, caseFlag, wildcardFlag);
}

int64_t Patterns::MatchAt(const char16_t* text, int64_t avail, int64_t* length) const {
  const char16_t* upper = UpperTable();
  for (size_t k = 0; k < texts.size(); ++k) {
    const std::u16string& t = texts[k];
    const auto n = static_cast<int64_t>(t.size());
    if (wildcards) {
      const int64_t found = Joker(t.data(), n, text, avail, matchCase);
      if (found > 0) {
        *length = found;
        return static_cast<int64_t>(k);
      }
      continue;
    }
    if (n > avail) continue;
    int64_t i = 0;
    if (matchCase) {
      while (i < n && text[i] == t[static_cast<size_t>(i)]) ++i;
    } else {
      while (i < n && upper[text[i]] == t[static_cast<size_t>(i)]) ++i;
    }
    if (i == n) {
      *length = n;
      return static_cast<int64_t>(k);
    }
  }
  return -1;
}

int64_t Joker(const char16_t* pattern, int64_t patLen, const char16_t* text, int64_t avail, bool matchCase) {
  const char16_t* upper = UpperTable();
  auto key = [&](char16_t u) { return matchCase ? u : upper[u]; };
  // Does the piece pattern[from, to) match at text[at]?
  auto pieceAt = [&](int64_t from, int64_t to, int64_t at) {
    if (at + (to - from) > avail) return false;
    for (int64_t i = from; i < to; ++i) {
      const char16_t t = text[at + i - from];
      if (pattern[i] == u'?') {
        if (t == 13 || t == 10) return false;
      } else if (key(pattern[i]) != key(t)) {
        return false;
      }
    }
    return true;
  };
  int64_t pos = 0;       // where the next piece may start
  bool firstPiece = true;
  int64_t i = 0;
  while (i < patLen) {
    if (pattern[i] == u'*') {
      ++i;
      continue;
    }
    int64_t j = i;
    while (j < patLen && pattern[j] != u'*') ++j;
    if (firstPiece) {
      if (!pieceAt(i, j, 0)) return 0;
      pos = j - i;
      firstPiece = false;
    } else {
      int64_t at = pos;
      while (at + (j - i) <= avail && !pieceAt(i, j, at)) ++at;
      if (at + (j - i) > avail) return 0;
      pos = at + (j - i);
    }
    i = j;
  }
  return pos;  // 0 when the pattern held no piece
}

}  // namespace kw::findscan
