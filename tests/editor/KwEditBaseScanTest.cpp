// The buffer's unit scans against plain loops, at every length and alignment that decides between
// their vector and unit-by-unit parts, and over runs long enough to fill a counter lane.
#include "editor/KwEditBaseScan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

namespace scan = kw::scan;

int64_t NaiveCount(const char16_t* p, int64_t n, char16_t c) {
  int64_t k = 0;
  for (int64_t i = 0; i < n; ++i) k += p[i] == c;
  return k;
}

int64_t NaiveFind(const char16_t* p, int64_t n, char16_t c, int64_t nth) {
  for (int64_t i = 0; i < n; ++i)
    if (p[i] == c && --nth == 0) return i;
  return n;
}

TEST(BufferScan, CountAndFindAgreeWithPlainLoops) {
  std::mt19937 rng(5);
  // Few distinct units, so that hits are dense; one that shares its low byte with the needle.
  const char16_t alphabet[] = {u'a', u'\r', u'\n', u'\f', 0x0D0D, 0xFF0D};
  std::u16string text(700, u'a');
  for (char16_t& u : text) u = alphabet[rng() % 6];
  for (int64_t from = 0; from < 9; ++from) {
    for (int64_t n = 0; n + from <= 300; ++n) {
      const char16_t* p = text.data() + from;
      for (char16_t c : {u'\r', u'\f', u'z'}) {
        ASSERT_EQ(scan::Count(p, n, c), NaiveCount(p, n, c)) << from << " " << n;
        ASSERT_EQ(scan::Find(p, n, c), NaiveFind(p, n, c, 1)) << from << " " << n;
        ASSERT_EQ(scan::FindNth(p, n, c, 3), NaiveFind(p, n, c, 3)) << from << " " << n;
      }
    }
  }
}

TEST(BufferScan, CountsRunsOfOneUnitBeyondALanesRange) {
  // Every unit a hit: 2^17 + 5 of them pass any 16-bit lane many times over.
  const std::u16string run((1 << 17) + 5, u'\n');
  EXPECT_EQ(scan::Count(run.data(), static_cast<int64_t>(run.size()), u'\n'), (1 << 17) + 5);
  EXPECT_EQ(scan::Count(run.data() + 3, 40000, u'\n'), 40000);
  EXPECT_EQ(scan::Count(run.data(), static_cast<int64_t>(run.size()), u'\r'), 0);
}

}  // namespace
