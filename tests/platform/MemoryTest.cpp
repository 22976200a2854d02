// The text-buffer pool: buffers of every size class stay apart and keep their contents while others
// come and go, also from two threads at once; the prefault hint leaves memory as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "platform/Memory.h"

namespace {

struct Buffer {
  unsigned char* p;
  size_t bytes;
  unsigned char tag;
};

Buffer Make(size_t bytes, unsigned char tag) {
  auto* p = static_cast<unsigned char*>(kw::AllocateTextBuffer(bytes));
  if (p) std::memset(p, tag, bytes);
  return {p, bytes, tag};
}

bool Intact(const Buffer& b) {
  return std::all_of(b.p, b.p + b.bytes, [&](unsigned char c) { return c == b.tag; });
}

// Allocates and frees buffers of the sizes in `sizes` at random for `rounds` steps; every live buffer
// must keep its own fill and no two may overlap. Returns the number of faults found.
int Churn(const std::vector<size_t>& sizes, int rounds, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<Buffer> live;
  int faults = 0;
  for (int r = 0; r < rounds; ++r) {
    if (live.empty() || rng() % 3 != 0) {
      Buffer b = Make(sizes[rng() % sizes.size()], static_cast<unsigned char>(1 + r % 250));
      if (b.p == nullptr) ++faults;
      else live.push_back(b);
    } else {
      const size_t k = rng() % live.size();
      if (!Intact(live[k])) ++faults;
      kw::FreeTextBuffer(live[k].p);
      live[k] = live.back();
      live.pop_back();
    }
  }
  std::sort(live.begin(), live.end(), [](const Buffer& a, const Buffer& b) { return a.p < b.p; });
  for (size_t k = 0; k < live.size(); ++k) {
    if (!Intact(live[k])) ++faults;
    if (k + 1 < live.size() && live[k].p + live[k].bytes > live[k + 1].p) ++faults;
  }
  for (const Buffer& b : live) kw::FreeTextBuffer(b.p);
  return faults;
}

// The usual chunk (64256 units), the class limits on both sides, and sizes that never use the regions.
const std::vector<size_t> kSizes = {
    64256 * 2, kw::kTextSlotBytes, kw::kTextSlotBytes + 1, kw::kTextSlotBytes / 4,
    kw::kTextSlotBytes / 4 - 1, 100, 128256 * 2, 2 * kw::kTextSlotBytes, 2 * kw::kTextSlotBytes + 1};

TEST(TextBufferPool, BuffersOfEverySizeStayApartAndKeepTheirContents) {
  // Enough rounds to fill and empty many regions of 16 slots.
  EXPECT_EQ(Churn(kSizes, 3000, 1), 0);
  // A whole region's worth and more at once, then freed in allocation order and again.
  std::vector<Buffer> all;
  for (int k = 0; k < 40; ++k) all.push_back(Make(64256 * 2, static_cast<unsigned char>(k + 1)));
  for (const Buffer& b : all) {
    ASSERT_NE(b.p, nullptr);
    EXPECT_TRUE(Intact(b));
    kw::FreeTextBuffer(b.p);
  }
  kw::FreeTextBuffer(nullptr);  // allowed, does nothing
  EXPECT_EQ(Churn({64256 * 2}, 500, 2), 0);
}

TEST(TextBufferPool, TwoThreadsAtOnce) {
  int faults[2] = {0, 0};
  std::thread a([&] { faults[0] = Churn(kSizes, 1500, 3); });
  std::thread b([&] { faults[1] = Churn(kSizes, 1500, 4); });
  a.join();
  b.join();
  EXPECT_EQ(faults[0], 0);
  EXPECT_EQ(faults[1], 0);
}

TEST(TextBufferPool, PrefaultKeepsTheContents) {
  Buffer b = Make(64256 * 2, 0x5A);
  ASSERT_NE(b.p, nullptr);
  kw::PrefaultForWriting(b.p + 3, b.bytes - 3);  // unaligned start: only whole pages inside are hinted
  EXPECT_TRUE(Intact(b));
  EXPECT_FALSE(kw::PrefaultForWriting(nullptr, 1 << 20));
  EXPECT_FALSE(kw::PrefaultForWriting(b.p, 10));  // less than a page
  kw::FreeTextBuffer(b.p);
}

// Vectors on large blocks keep their contents while they grow past the size that maps blocks of
// their own, and give them back.
TEST(LargeBlocks, VectorsGrowAcrossTheMappingSize) {
  std::vector<int64_t, kw::LargeBlockAllocator<int64_t>> v;
  for (int64_t i = 0; i < 400000; ++i) v.push_back(i * 7);  // 3.2 MB, through several blocks
  bool intact = true;
  for (int64_t i = 0; i < 400000; ++i) intact = intact && v[static_cast<size_t>(i)] == i * 7;
  EXPECT_TRUE(intact);
  v.clear();
  v.shrink_to_fit();
  for (size_t bytes : {size_t{16}, size_t{1} << 20, (size_t{5} << 20) + 3}) {
    auto* p = static_cast<unsigned char*>(kw::AllocateLargeBlock(bytes));
    ASSERT_NE(p, nullptr);
    std::memset(p, 0xA5, bytes);
    EXPECT_EQ(p[bytes - 1], 0xA5);
    kw::FreeLargeBlock(p, bytes);
  }
  kw::FreeLargeBlock(nullptr, 10);  // allowed, does nothing
}

}  // namespace
