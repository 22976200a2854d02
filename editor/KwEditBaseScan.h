// The tight loops of the text buffer: counting and finding one UTF-16 unit in a run of units. They work
// in fixed blocks whose inner loops have no early exit, so that the compiler turns them into vector
// code; only the block that holds the hit is scanned unit by unit (Find compares eight units at once
// with SSE2 instead).
#pragma once

#include <bit>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kw::scan {

inline constexpr int64_t kBlock = 64;

// Units equal to `c` in p[0, n). It also runs over the few dozen units between two changes of a bulk
// edit, so short runs are compared eight units at a time as well (SSE2), not only whole blocks.
inline int64_t Count(const char16_t* p, int64_t n, char16_t c) {
  int64_t total = 0;
  int64_t i = 0;
#if defined(__SSE2__)
  const __m128i needle = _mm_set1_epi16(static_cast<short>(c));
  const __m128i ones = _mm_set1_epi16(1);
  while (i + 8 <= n) {
    // Each 16-bit lane counts at most 4096 hits before it is summed, far below its limit.
    const int64_t end = i + 8 * 4096 < n ? i + 8 * 4096 : n;
    __m128i lanes = _mm_setzero_si128();
    for (; i + 8 <= end; i += 8) {
      const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
      lanes = _mm_sub_epi16(lanes, _mm_cmpeq_epi16(units, needle));
    }
    const __m128i pairs = _mm_madd_epi16(lanes, ones);  // four 32-bit sums
    const __m128i two = _mm_add_epi32(pairs, _mm_shuffle_epi32(pairs, 0x4E));
    const __m128i one = _mm_add_epi32(two, _mm_shuffle_epi32(two, 0xB1));
    total += _mm_cvtsi128_si32(one);
  }
#else
  for (; i + 1024 <= n; i += 1024) {
    unsigned k = 0;
    for (int j = 0; j < 1024; ++j) k += p[i + j] == c;
    total += k;
  }
#endif
  unsigned k = 0;
  for (; i < n; ++i) k += p[i] == c;
  return total + k;
}

#if defined(__SSE2__)
// One bit per unit of p[0, 16) that equals the unit repeated in `needle`, the first unit lowest.
inline unsigned Mask16(const char16_t* p, __m128i needle) {
  const __m128i a = _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), needle);
  const __m128i b = _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 8)), needle);
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(a, b)));
}
#endif

// Offset of the first unit equal to `c` in p[0, n), or n. Most searches end within a line of a few
// dozen units: with SSE2 eight units are compared at once and the hit is taken from the compare mask,
// with no block to rescan unit by unit.
inline int64_t Find(const char16_t* p, int64_t n, char16_t c) {
  int64_t i = 0;
#if defined(__SSE2__)
  const __m128i needle = _mm_set1_epi16(static_cast<short>(c));
  // Sixteen units a round: a line of a few dozen units is passed in two or three.
  for (; i + 16 <= n; i += 16) {
    const unsigned mask = Mask16(p + i, needle);
    if (mask != 0) return i + std::countr_zero(mask);
  }
  for (; i + 8 <= n; i += 8) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, needle)));
    if (mask != 0) return i + std::countr_zero(mask) / 2;
  }
#else
  for (; i + kBlock <= n; i += kBlock) {
    unsigned any = 0;
    for (int j = 0; j < kBlock; ++j) any |= p[i + j] == c;
    if (any) break;
  }
#endif
  for (; i < n; ++i)
    if (p[i] == c) return i;
  return n;
}

// Offset of the k-th (from 1) unit equal to `c` in p[0, n), or n when there are fewer.
inline int64_t FindNth(const char16_t* p, int64_t n, char16_t c, int64_t k) {
  int64_t i = 0;
  for (; i + kBlock <= n; i += kBlock) {
    unsigned m = 0;
    for (int j = 0; j < kBlock; ++j) m += p[i + j] == c;
    if (static_cast<int64_t>(m) >= k) break;
    k -= m;
  }
  for (; i < n; ++i)
    if (p[i] == c && --k == 0) return i;
  return n;
}

// Offset of the k-th (from 1) unit equal to `c` counted backward from p[n - 1], or -1 when there are
// fewer.
inline int64_t FindNthBack(const char16_t* p, int64_t n, char16_t c, int64_t k) {
  int64_t i = n;
  for (; i - kBlock >= 0; i -= kBlock) {
    unsigned m = 0;
    for (int j = 0; j < kBlock; ++j) m += p[i - kBlock + j] == c;
    if (static_cast<int64_t>(m) >= k) break;
    k -= m;
  }
  while (i > 0)
    if (p[--i] == c && --k == 0) return i;
  return -1;
}

// The tab stop after display column `pos`: `stops` are distances, the first stop at the first distance,
// each further one the next distance beyond, the last distance repeating; none: every 8 columns.
// Shared by the tab positions of lines and the tab conversions of the area operations.
inline int64_t NextTabStop(int64_t pos, const int64_t* stops, int count) {
  if (stops == nullptr || count < 1) return (pos / 8 + 1) * 8;
  int64_t stop = 0;
  for (int i = 0; i < count; ++i) {
    stop += stops[i];
    if (stop > pos) return stop;
  }
  const int64_t d = stops[count - 1];
  if (d <= 0) return pos + 1;
  return stop + ((pos - stop) / d + 1) * d;
}

}  // namespace kw::scan
