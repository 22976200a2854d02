// Prepared search texts and the unit scanners of the find and replace operations.
#include "editor/KwEditBaseFindScan.h"

#include <algorithm>
#include <array>

#include "base/Text.h"

#if KW_FIND_AVX2
#include <immintrin.h>
#endif

namespace kw::findscan {

const char16_t* UpperTable() {
  static const std::array<char16_t, 65536> table = [] {
    std::array<char16_t, 65536> t{};
    for (uint32_t u = 0; u < 65536; ++u) t[u] = ToUpper(static_cast<char16_t>(u));
    return t;
  }();
  return table.data();
}

const char16_t* FormsOf(char16_t key, int* count) {
  // The units grouped by their upper-case form: the forms of k are units[start[k], start[k + 1]).
  struct Classes {
    std::vector<uint32_t> start = std::vector<uint32_t>(65537, 0);
    std::vector<char16_t> units = std::vector<char16_t>(65536);
  };
  static const Classes classes = [] {
    Classes c;
    const char16_t* upper = UpperTable();
    for (uint32_t u = 0; u < 65536; ++u) ++c.start[upper[u] + 1];
    for (uint32_t k = 0; k < 65536; ++k) c.start[k + 1] += c.start[k];
    std::vector<uint32_t> fill(c.start.begin(), c.start.end() - 1);
    for (uint32_t u = 0; u < 65536; ++u) c.units[fill[upper[u]]++] = static_cast<char16_t>(u);
    return c;
  }();
  *count = static_cast<int>(classes.start[key + 1] - classes.start[key]);
  return classes.units.data() + classes.start[key];
}

// ---- Literal ----------------------------------------------------------------------------------------------

void Literal::Prepare(const std::u16string& text, bool matchCase) {
  text_ = text;
  matchCase_ = matchCase;
  vector_ = fold_ = false;
  a_ = b_ = 0;
  const int64_t m = Size();
  const auto cap = [](int64_t v) { return static_cast<uint16_t>(std::min<int64_t>(v, 65535)); };
  std::fill(std::begin(nextShift_), std::end(nextShift_), cap(m));
  std::fill(std::begin(backShift_), std::end(backShift_), cap(m));
  if (m == 0) return;
  // The units text_[k] stands for: itself, or all its forms when the case does not count.
  auto formsOf = [&](int64_t k, char16_t* one, int* count) -> const char16_t* {
    if (matchCase_) {
      *one = text_[static_cast<size_t>(k)];
      *count = 1;
      return one;
    }
    return FormsOf(text_[static_cast<size_t>(k)], count);
  };
  // Horspool tables: the smallest distance wins, so later (forwards) or earlier (backwards) units
  // overwrite.
  char16_t one = 0;
  int count = 0;
  for (int64_t k = 0; k + 1 < m; ++k) {
    const char16_t* f = formsOf(k, &one, &count);
    for (int i = 0; i < count; ++i) nextShift_[f[i] & 255] = cap(m - 1 - k);
  }
  for (int64_t k = m - 1; k >= 1; --k) {
    const char16_t* f = formsOf(k, &one, &count);
    for (int i = 0; i < count; ++i) backShift_[f[i] & 255] = cap(k);
  }
  // The pair: units whose forms the vector code can compare as one (one form, or two differing in a
  // single bit). The first such unit, and the last one that differs from it.
  auto usable = [&](int64_t k, char16_t* key, char16_t* bit) {
    const char16_t* f = formsOf(k, &one, &count);
    if (count == 1 || count == 0) {
      *key = count ? f[0] : text_[static_cast<size_t>(k)];
      *bit = 0;
      return true;
    }
    if (count != 2) return false;
    const auto diff = static_cast<char16_t>(f[0] ^ f[1]);
    if ((diff & (diff - 1)) != 0) return false;
    *key = static_cast<char16_t>(f[0] | diff);
    *bit = diff;
    return true;
  };
  int64_t first = -1, last = -1;
  char16_t key = 0, bit = 0;
  for (int64_t k = 0; k < m && first < 0; ++k)
    if (usable(k, &key, &bit)) first = k;
  if (first < 0) return;
  for (int64_t k = m - 1; k > first && last < 0; --k)
    if (usable(k, &key, &bit) && text_[static_cast<size_t>(k)] != text_[static_cast<size_t>(first)]) last = k;
  if (last < 0) last = first;
  a_ = first;
  b_ = last;
  usable(a_, &aKey_, &aBit_);
  usable(b_, &bKey_, &bBit_);
  fold_ = (aBit_ | bBit_) != 0;
#if defined(__SSE2__)
  vector_ = true;
#endif
}

bool Literal::Same(const char16_t* p) const {
  const size_t m = text_.size();
  if (matchCase_) return std::memcmp(p, text_.data(), m * sizeof(char16_t)) == 0;
  const char16_t* upper = UpperTable();
  for (size_t i = 0; i < m; ++i)
    if (upper[p[i]] != text_[i]) return false;
  return true;
}

template <bool Blind>
int64_t Literal::FirstHorspool(const char16_t* p, int64_t n) const {
  const int64_t m = Size();
  const char16_t* upper = UpperTable();
  const char16_t lastUnit = text_.back();
  for (int64_t s = 0; s + m <= n;) {
    const char16_t u = p[s + m - 1];
    if ((Blind ? upper[u] : u) == lastUnit && Same(p + s)) return s;
    s += nextShift_[u & 255];
  }
  return -1;
}

template <bool Blind>
int64_t Literal::LastHorspool(const char16_t* p, int64_t n) const {
  const int64_t m = Size();
  const char16_t* upper = UpperTable();
  const char16_t firstUnit = text_.front();
  for (int64_t s = n - m; s >= 0;) {
    const char16_t u = p[s];
    if ((Blind ? upper[u] : u) == firstUnit && Same(p + s)) return s;
    s -= backShift_[u & 255];
  }
  return -1;
}

#if defined(__SSE2__)
namespace {

// Per 16-bit lane: whether the unit is a form of the pair unit (key, bit).
template <bool Fold>
inline __m128i Forms(const char16_t* p, __m128i key, __m128i bit) {
  __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  if constexpr (Fold) x = _mm_or_si128(x, bit);
  return _mm_cmpeq_epi16(x, key);
}

}  // namespace

// Candidates s .. s + 31 at once: lanes where both pair units agree. Most blocks hold none, so the
// four comparisons are merged before the one test; only then is a bit mask (bit i: start s + i) made.
#define KW_PAIR_BLOCK(pa, pb)                                                                                   \
  const __m128i e0 = _mm_and_si128(Forms<Fold>(pa, ka, ba), Forms<Fold>(pb, kb, bb));                         \
  const __m128i e1 = _mm_and_si128(Forms<Fold>((pa) + 8, ka, ba), Forms<Fold>((pb) + 8, kb, bb));             \
  const __m128i e2 = _mm_and_si128(Forms<Fold>((pa) + 16, ka, ba), Forms<Fold>((pb) + 16, kb, bb));           \
  const __m128i e3 = _mm_and_si128(Forms<Fold>((pa) + 24, ka, ba), Forms<Fold>((pb) + 24, kb, bb));           \
  const __m128i any = _mm_or_si128(_mm_or_si128(e0, e1), _mm_or_si128(e2, e3))

template <bool Fold>
int64_t Literal::FirstVector(const char16_t* p, int64_t n) const {
  const int64_t m = Size();
  const int64_t lastStart = n - m;
  const __m128i ka = _mm_set1_epi16(static_cast<short>(aKey_)), ba = _mm_set1_epi16(static_cast<short>(aBit_));
  const __m128i kb = _mm_set1_epi16(static_cast<short>(bKey_)), bb = _mm_set1_epi16(static_cast<short>(bBit_));
  int64_t s = 0;
  for (; s + 31 <= lastStart; s += 32) {
    KW_PAIR_BLOCK(p + s + a_, p + s + b_);
    if (_mm_movemask_epi8(any) == 0) continue;
    auto mask = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(e0, e1))) |
                (static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(e2, e3))) << 16);
    while (mask) {
      const int64_t i = s + __builtin_ctz(mask);
      if (Same(p + i)) return i;
      mask &= mask - 1;
    }
  }
  for (; s <= lastStart; ++s)
    if (PairAt(p + s) && Same(p + s)) return s;
  return -1;
}

template <bool Fold>
int64_t Literal::LastVector(const char16_t* p, int64_t n) const {
  const int64_t m = Size();
  const __m128i ka = _mm_set1_epi16(static_cast<short>(aKey_)), ba = _mm_set1_epi16(static_cast<short>(aBit_));
  const __m128i kb = _mm_set1_epi16(static_cast<short>(bKey_)), bb = _mm_set1_epi16(static_cast<short>(bBit_));
  int64_t top = n - m;  // the highest start still to look at
  for (; top >= 31; top -= 32) {
    const int64_t s = top - 31;
    KW_PAIR_BLOCK(p + s + a_, p + s + b_);
    if (_mm_movemask_epi8(any) == 0) continue;
    auto mask = static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(e0, e1))) |
                (static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(e2, e3))) << 16);
    while (mask) {
      const int bitIndex = 31 - __builtin_clz(mask);
      if (Same(p + s + bitIndex)) return s + bitIndex;
      mask &= ~(uint32_t{1} << bitIndex);
    }
  }
  for (; top >= 0; --top)
    if (PairAt(p + top) && Same(p + top)) return top;
  return -1;
}
#undef KW_PAIR_BLOCK
#endif

#if KW_FIND_AVX2
namespace {

template <bool Fold>
__attribute__((target("avx2"))) inline __m256i Forms256(const char16_t* p, __m256i key, __m256i bit) {
  __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  if constexpr (Fold) x = _mm256_or_si256(x, bit);
  return _mm256_cmpeq_epi16(x, key);
}

// Bit i set when lane i of e0:e1 (32 lanes) is set. The pack works per 128-bit half; the permute
// puts the halves back in order.
__attribute__((target("avx2"))) inline uint32_t Lanes256(__m256i e0, __m256i e1) {
  return static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_permute4x64_epi64(_mm256_packs_epi16(e0, e1), 0xD8)));
}

}  // namespace

#define KW_PAIR_BLOCK256(pa, pb)                                                                                \
  const __m256i e0 = _mm256_and_si256(Forms256<Fold>(pa, ka, ba), Forms256<Fold>(pb, kb, bb));                \
  const __m256i e1 = _mm256_and_si256(Forms256<Fold>((pa) + 16, ka, ba), Forms256<Fold>((pb) + 16, kb, bb))

template <bool Fold>
__attribute__((target("avx2"))) int64_t Literal::FirstAvx2(const char16_t* p, int64_t n) const {
  const int64_t lastStart = n - Size();
  const __m256i ka = _mm256_set1_epi16(static_cast<short>(aKey_)), ba = _mm256_set1_epi16(static_cast<short>(aBit_));
  const __m256i kb = _mm256_set1_epi16(static_cast<short>(bKey_)), bb = _mm256_set1_epi16(static_cast<short>(bBit_));
  int64_t s = 0;
  for (; s + 31 <= lastStart; s += 32) {
    KW_PAIR_BLOCK256(p + s + a_, p + s + b_);
    const __m256i any = _mm256_or_si256(e0, e1);
    if (_mm256_testz_si256(any, any)) continue;
    for (uint32_t mask = Lanes256(e0, e1); mask; mask &= mask - 1) {
      const int64_t i = s + __builtin_ctz(mask);
      if (Same(p + i)) return i;
    }
  }
  for (; s <= lastStart; ++s)
    if (PairAt(p + s) && Same(p + s)) return s;
  return -1;
}

template <bool Fold>
__attribute__((target("avx2"))) int64_t Literal::LastAvx2(const char16_t* p, int64_t n) const {
  const __m256i ka = _mm256_set1_epi16(static_cast<short>(aKey_)), ba = _mm256_set1_epi16(static_cast<short>(aBit_));
  const __m256i kb = _mm256_set1_epi16(static_cast<short>(bKey_)), bb = _mm256_set1_epi16(static_cast<short>(bBit_));
  int64_t top = n - Size();
  for (; top >= 31; top -= 32) {
    const int64_t s = top - 31;
    KW_PAIR_BLOCK256(p + s + a_, p + s + b_);
    const __m256i any = _mm256_or_si256(e0, e1);
    if (_mm256_testz_si256(any, any)) continue;
    for (uint32_t mask = Lanes256(e0, e1); mask;) {
      const int bitIndex = 31 - __builtin_clz(mask);
      if (Same(p + s + bitIndex)) return s + bitIndex;
      mask &= ~(uint32_t{1} << bitIndex);
    }
  }
  for (; top >= 0; --top)
    if (PairAt(p + top) && Same(p + top)) return top;
  return -1;
}
#undef KW_PAIR_BLOCK256
#endif

bool Literal::Available(Kernel kernel) {
  switch (kernel) {
    case Kernel::kScalar:
    case Kernel::kBest:
      return true;
    case Kernel::kSse2:
#if defined(__SSE2__)
      return true;
#else
      return false;
#endif
    case Kernel::kAvx2:
#if KW_FIND_AVX2
    {
      static const bool yes = __builtin_cpu_supports("avx2");
      return yes;
    }
#else
      return false;
#endif
  }
  return false;
}

Literal::Kernel Literal::Choose(Kernel kernel, int64_t n) const {
  if (text_.empty() || !vector_ || n < Size()) return Kernel::kScalar;
  if (kernel == Kernel::kBest) kernel = Available(Kernel::kAvx2) ? Kernel::kAvx2 : Kernel::kSse2;
  return Available(kernel) ? kernel : Kernel::kScalar;
}

int64_t Literal::FindFirst(const char16_t* p, int64_t n, Kernel kernel) const {
  switch (Choose(kernel, n)) {
#if KW_FIND_AVX2
    case Kernel::kAvx2:
      return fold_ ? FirstAvx2<true>(p, n) : FirstAvx2<false>(p, n);
#endif
#if defined(__SSE2__)
    case Kernel::kSse2:
      return fold_ ? FirstVector<true>(p, n) : FirstVector<false>(p, n);
#endif
    default:
      if (text_.empty()) return -1;
      return matchCase_ ? FirstHorspool<false>(p, n) : FirstHorspool<true>(p, n);
  }
}

int64_t Literal::FindLast(const char16_t* p, int64_t n, Kernel kernel) const {
  switch (Choose(kernel, n)) {
#if KW_FIND_AVX2
    case Kernel::kAvx2:
      return fold_ ? LastAvx2<true>(p, n) : LastAvx2<false>(p, n);
#endif
#if defined(__SSE2__)
    case Kernel::kSse2:
      return fold_ ? LastVector<true>(p, n) : LastVector<false>(p, n);
#endif
    default:
      if (text_.empty()) return -1;
      return matchCase_ ? LastHorspool<false>(p, n) : LastHorspool<true>(p, n);
  }
}

// ---- UnitSet ----------------------------------------------------------------------------------------------

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
    int count = 0;
    const char16_t* forms = FormsOf(f, &count);
    for (int i = 0; i < count; ++i) first.Add(forms[i]);
    forms = FormsOf(l, &count);
    for (int i = 0; i < count; ++i) last.Add(forms[i]);
  }
  lead.Prepare(std::u16string(), true);
  if (texts.size() == 1 && !wildcards) {
    lead.Prepare(texts[0], matchCase);
  } else if (texts.size() == 1) {
    // Joker upper-cases the (already upper-cased) pattern once more; the lead compares the same way.
    const std::u16string& t = texts[0];
    size_t from = t.find_first_not_of(u'*');
    if (from == std::u16string::npos) from = t.size();
    std::u16string start = t.substr(from, t.find_first_of(u"?*", from) - from);
    if (!matchCase)
      for (char16_t& u : start) u = upper[u];
    lead.Prepare(start, matchCase);
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
