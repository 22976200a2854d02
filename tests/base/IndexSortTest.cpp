// Index sorting: build sorts (stability), qsort (progress and stop), apply sorts, SortDM.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/IndexSort.h"
#include "base/Text.h"
#include "support/TestSupport.h"

namespace {

using Index = std::vector<int64_t>;

// The order a stable sort by `less` gives, as the reference for the build sorts.
template <class Less>
Index StableOrder(int64_t n, Less less) {
  Index order(static_cast<size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), less);
  return order;
}

Index Identity(size_t n) {
  Index index(n);
  std::iota(index.begin(), index.end(), 0);
  return index;
}
bool IsPermutation(const Index& index) {
  return std::is_permutation(index.begin(), index.end(), Identity(index.size()).begin());
}

TEST(BuildSorts, AreStableOnManyDuplicates) {
  const double example[] = {3, 1, 3, 2};
  Index index(4, -1);
  kw::SortDI(example, index.data(), 4);
  EXPECT_EQ(index, (Index{1, 3, 0, 2}));  // the two 3s keep their order
  std::mt19937_64 random(7);
  for (int n : {2, 3, 10, 257, 5000}) {
    std::vector<double> d(static_cast<size_t>(n));
    std::vector<uint64_t> u(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
      d[i] = static_cast<double>(random() % 13) - 6.0;
      u[i] = (random() % 50) << 58;  // large values: no signed confusion
    }
    Index di(static_cast<size_t>(n)), ui(static_cast<size_t>(n));
    kw::SortDI(d.data(), di.data(), n);
    kw::SortUI(u.data(), ui.data(), n);
    EXPECT_EQ(di, StableOrder(n, [&](int64_t a, int64_t b) { return d[a] < d[b]; })) << n;
    EXPECT_EQ(ui, StableOrder(n, [&](int64_t a, int64_t b) { return u[a] < u[b]; })) << n;
  }
  std::vector<double> same(1000, 4.0);  // one run of equal keys
  kw::SortDI(same.data(), index.data(), 0);  // n below 1: nothing
  EXPECT_EQ(index, (Index{1, 3, 0, 2}));
  Index all(1000);
  kw::SortDI(same.data(), all.data(), 1000);
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
  kw::SortDI(same.data(), all.data(), 1);  // n of 1 only fills
  EXPECT_EQ(all[0], 0);
}

TEST(SortCI, SortsFixedWidthRecordsByTheCollation) {
  const std::u16string records[] = {u"dog ", u"Cat ", u"cat ", u"ant ", u"Cat ", u"b_x "};
  std::u16string table;
  for (const auto& r : records) table += r;
  const int64_t n = 6, width = 4;
  Index index(n);
  kw::SortCI(table.data(), width, index.data(), n);
  EXPECT_EQ(index, StableOrder(n, [&](int64_t a, int64_t b) {
              return kw::StrCompare(records[a].data(), width, records[b].data(), width, 1, 0, 0) < 0;
            }));
  // The two identical "Cat " records keep their order.
  EXPECT_LT(std::find(index.begin(), index.end(), 1), std::find(index.begin(), index.end(), 4));
}

TEST(ApplySorts, ForwardMakesElementIOldElementIndexI) {
  std::mt19937 random(3);
  for (int n : {1, 2, 7, 100, 1001}) {
    Index index = Identity(static_cast<size_t>(n));
    std::shuffle(index.begin(), index.end(), random);
    std::vector<double> d(static_cast<size_t>(n));
    std::vector<uint64_t> u(static_cast<size_t>(n));
    std::vector<std::u16string> s(static_cast<size_t>(n));
    std::u16string table;
    for (int i = 0; i < n; ++i) {
      d[i] = i * 1.5;
      u[i] = static_cast<uint64_t>(i) * 3;
      s[i] = u"s" + std::u16string(static_cast<size_t>(i % 5), u'x') + static_cast<char16_t>(u'A' + i % 26);
      table += static_cast<char16_t>(u'a' + i % 26);
      table += static_cast<char16_t>(u'0' + i % 10);
      table += static_cast<char16_t>(u'A' + i / 26 % 26);
    }
    const auto d0 = d;
    const auto u0 = u;
    const auto s0 = s;
    const auto t0 = table;
    kw::SortID(d.data(), index.data(), n, 0);
    kw::SortIU(u.data(), index.data(), n, 0);
    kw::SortIS(s, index.data(), n, 0);
    kw::SortIC(table.data(), 3, index.data(), n, 0);
    for (int i = 0; i < n; ++i) {
      const auto j = static_cast<size_t>(index[i]);
      ASSERT_EQ(d[i], d0[j]) << n << " " << i;
      ASSERT_EQ(u[i], u0[j]) << n << " " << i;
      ASSERT_EQ(s[i], s0[j]) << n << " " << i;
      ASSERT_EQ(table.substr(i * 3, 3), t0.substr(j * 3, 3)) << n << " " << i;
    }
  }
}

TEST(ApplySorts, ReverseWalkVisitsEverySecondPosition) {
  // Even count: positions 3 and 1 are visited, ending at -1.
  double values[] = {3, 1, 3, 2};
  const int64_t index[] = {1, 3, 0, 2};
  kw::SortID(values, index, 4, 1);
  EXPECT_EQ(std::vector<double>(values, values + 4), (std::vector<double>{3, 2, 3, 1}));
  uint64_t pair[] = {10, 20};
  const int64_t swapIndex[] = {1, 0};
  kw::SortIU(pair, swapIndex, 2, 1);  // only position 1 is visited, and its cycle starts before it
  EXPECT_EQ(pair[0], 10u);
  EXPECT_EQ(pair[1], 20u);
  // Odd count: positions 2 and 0 are visited and the walk ends after 0.
  std::vector<std::u16string> s{u"a", u"b", u"c"};
  const int64_t rotate[] = {2, 0, 1};
  kw::SortIS(s, rotate, 3, 1);
  EXPECT_EQ(s, (std::vector<std::u16string>{u"c", u"b", u"a"}));
  std::u16string table = u"aaabbbccc";
  kw::SortIC(table.data(), 3, rotate, 3, 1);
  EXPECT_EQ(table, u"cccbbbaaa");
}

using ApplyContract = kwtest::PlatformTest;

TEST_F(ApplyContract, ABrokenIndexStopsTheWalk) {
  double values[] = {1, 2, 3};
  const int64_t broken[] = {0, 7, 1};
  kw::SortID(values, broken, 3, 0);
  EXPECT_GE(asserts_.count(), 1u);
  EXPECT_EQ(asserts_.fired()[0].source, "IndexSort");
  EXPECT_EQ(values[0], 1.0);
}

TEST(SortDM, MovesAChangedEntryToItsPlace) {
  std::vector<double> keys{1, 2, 3, 4, 5};
  Index index{0, 1, 2, 3, 4};
  keys[4] = 0;  // the last entry became the smallest: it walks left to the front
  kw::SortDM(keys.data(), index.data(), 5, 4);
  EXPECT_EQ(index, (Index{4, 0, 1, 2, 3}));
  keys[4] = 2.5;  // now at index position 0, it walks right to between 2 and 3
  kw::SortDM(keys.data(), index.data(), 5, 0);
  EXPECT_EQ(index, (Index{0, 1, 4, 2, 3}));
  kw::SortDM(keys.data(), index.data(), 5, 2);  // already in place
  EXPECT_EQ(index, (Index{0, 1, 4, 2, 3}));
  // Out of order on both sides: it stays.
  const double worse[] = {5, 3, 1};
  Index three{0, 1, 2};
  kw::SortDM(worse, three.data(), 3, 1);
  EXPECT_EQ(three, (Index{0, 1, 2}));
}

// A pane that counts steps and stops the operation at a given step (0: never).
class CountingPane : public kw::KwProgress {
 public:
  explicit CountingPane(int stopAt = 0) : stopAt_(stopAt) {}
  int Step(int percent) override {
    percents.push_back(percent);
    percent_ = percent;
    return stopAt_ != 0 && static_cast<int>(percents.size()) >= stopAt_ ? 0 : 1;
  }
  int GetPercent() const override { return percent_; }
  std::vector<int> percents;

 private:
  int stopAt_;
  int percent_ = 0;
};

std::vector<std::u16string> RandomWords(int n, unsigned seed) {
  std::mt19937 random(seed);
  const std::u16string letters = u"aAbBeE_\u00e4\u00c4\u00f6\u00dfsSzZ ";
  std::vector<std::u16string> words(static_cast<size_t>(n));
  for (auto& w : words)
    for (size_t k = 1 + random() % 6; k > 0; --k) w += letters[random() % letters.size()];
  return words;
}

TEST(QSort, SortsTheRangeByTheCollation) {
  const auto words = RandomWords(400, 5);
  Index index = Identity(words.size());
  EXPECT_EQ(kw::qsort(index.data(), 0, 399, words, 0, nullptr), 1);
  EXPECT_TRUE(std::is_sorted(index.begin(), index.end(), [&](int64_t a, int64_t b) {
    return kw::StrCompare(words[a], words[b], 1, 0, 0) < 0;
  }));
  EXPECT_TRUE(IsPermutation(index));
  // Only first..last is touched.
  Index part{3, 2, 1, 0};
  const std::vector<std::u16string> four{u"a", u"b", u"c", u"d"};
  EXPECT_EQ(kw::qsort(part.data(), 1, 2, four, 0, nullptr), 1);
  EXPECT_EQ(part, (Index{3, 1, 2, 0}));
  EXPECT_EQ(kw::qsort(part.data(), 2, 2, four, 0, nullptr), 1);
}

TEST(QSort, StepsThePaneEvery501ComparisonsAndStops) {
  // All-equal strings: no entry is ever less, so n strings cost n(n-1)/2 comparisons, and a step
  // comes before comparisons 502, 1003, 1504, ...
  struct Case {
    int n;
    size_t steps;
  };
  for (const Case c : {Case{32, 0}, Case{33, 1}, Case{45, 1}, Case{46, 2}}) {
    const std::vector<std::u16string> same(static_cast<size_t>(c.n), u"x");
    Index index = Identity(same.size());
    CountingPane pane;
    EXPECT_EQ(kw::qsort(index.data(), 0, c.n - 1, same, 0, &pane), 1);
    EXPECT_EQ(pane.percents.size(), c.steps) << c.n;
  }
  // The percentage grows by 5 and wraps to 0 above 100.
  const auto words = RandomWords(3000, 9);
  Index index = Identity(words.size());
  CountingPane pane;
  EXPECT_EQ(kw::qsort(index.data(), 0, 2999, words, 0, &pane), 1);
  ASSERT_GE(pane.percents.size(), 22u);
  EXPECT_EQ(pane.percents[0], 5);
  EXPECT_EQ(pane.percents[19], 100);
  EXPECT_EQ(pane.percents[20], 0);
  EXPECT_EQ(pane.percents[21], 5);
  // A stop ends the sort at once, and the index is still a permutation.
  for (int stopAt : {1, 4}) {
    index = Identity(index.size());
    CountingPane stopper(stopAt);
    EXPECT_EQ(kw::qsort(index.data(), 0, 2999, words, 0, &stopper), 0);
    EXPECT_EQ(stopper.percents.size(), static_cast<size_t>(stopAt));  // no step after the stop
    EXPECT_TRUE(IsPermutation(index));
  }
}

TEST(QSort, FileNamesSortByFolderThenName) {
  const std::vector<std::u16string> names{u"b/a.txt", u"a/z.txt", u"a\\b\\c.txt", u"A/y.txt", u"a-b/x.txt",
                                          u"z.txt"};
  Index index = Identity(names.size());
  EXPECT_EQ(kw::qsort(index.data(), 0, 5, names, 1, nullptr), 1);
  std::vector<std::u16string> order;
  for (int64_t i : index) order.push_back(names[i]);
  EXPECT_EQ(order, (std::vector<std::u16string>{u"z.txt", u"A/y.txt", u"a/z.txt", u"a\\b\\c.txt", u"a-b/x.txt",
                                                 u"b/a.txt"}));
  EXPECT_EQ(kw::CollateFileNames(u"x/M\u00fcller", u"x/Mueller"), kw::StrCompare(u"M\u00fcller", u"Mueller", 1, 0, 0));
  EXPECT_EQ(kw::CollateFileNames(u"a/b", u"a\\b"), 0);  // both separators
}

TEST(ArraySorts, SortStrArraySortUIntArrayAndMembership) {
  std::vector<std::u16string> s{u"pear", u"Apple", u"apple", u"fig"};
  kw::SortStrArray(s);
  EXPECT_TRUE(std::is_sorted(s.begin(), s.end(), [](const auto& a, const auto& b) {
    return kw::StrCompare(a, b, 1, 0, 0) < 0;
  }));
  EXPECT_EQ(s.size(), 4u);
  EXPECT_EQ(s.back(), u"pear");
  std::vector<uint64_t> u{5, UINT64_MAX, 0, 5, 3};
  kw::SortUIntArray(u);
  EXPECT_EQ(u, (std::vector<uint64_t>{0, 3, 5, 5, UINT64_MAX}));
  EXPECT_EQ(kw::IsUIntInArray(3, u), 1);
  EXPECT_EQ(kw::IsUIntInArray(4, u), 0);
  EXPECT_EQ(kw::IsUIntInArray(4, {}), 0);
}

// Texts that exercise the collation: umlauts and their expansions, "ß", "_", case, blanks, numbers.
std::vector<std::u16string> CollationTexts(int n, unsigned seed) {
  std::mt19937 random(seed);
  const std::u16string pieces[] = {u"a",  u"A",  u"\u00e4", u"\u00c4", u"ae", u"AE", u"Ae", u"o",  u"\u00f6",
                                   u"oe", u"u",  u"\u00fc", u"\u00dc", u"ue", u"s",  u"ss", u"sz", u"\u00df",
                                   u"z",  u"_",  u" ",      u"1",      u"12", u"2",  u",5", u".5", u"-",
                                   u"M\u00fcller", u"Mueller", u"Masse", u"Ma\u00dfe", u"\u00ff", u"\u00f7", u"x",
                                   u"\u00fe", u"\u0100", u"\uffff", u"Vermessungsgrenzsteine"};
  std::vector<std::u16string> texts(static_cast<size_t>(n));
  for (auto& t : texts)
    for (size_t k = random() % 5; k > 0; --k) t += pieces[random() % std::size(pieces)];
  return texts;
}

// Every comparison of the fast path agrees with StrCompare: two texts come out in StrCompare's order.
TEST(SortTextsStable, ComparesAsStrCompareDoes) {
  const auto texts = CollationTexts(110, 17);
  for (int flags = 0; flags < 16; ++flags) {
    const int caseSensitive = flags & 1, numeric = flags >> 1 & 1, skip = flags >> 2 & 1, reverse = flags >> 3 & 1;
    for (const auto& a : texts)
      for (const auto& b : texts) {
        Index index;
        kw::SortTextsStable({a, b}, caseSensitive, numeric, skip, reverse, index, nullptr);
        const int c = kw::StrCompare(a, b, caseSensitive, numeric, skip);
        ASSERT_EQ(index[0] == 1, reverse ? c < 0 : c > 0)
            << kw::ToUtf8(a) << " | " << kw::ToUtf8(b) << " flags " << flags;
      }
  }
}

// Where the collation is transitive, the whole order is the stable one. (It is not transitive when a
// text ends in an expanded umlaut or "\u00df": " \u00e4" < "_A" < "_A\u00c4" < " \u00e4"; so every text
// here ends in "x".) The second set has texts that agree far beyond the packed start of a key, so
// that they are ordered by its next parts, and characters above U+00FE, which take three bytes
// there, at every offset, also where one part ends and the next begins.
TEST(SortTextsStable, EqualsAStableSortByStrCompare) {
  auto mixed = CollationTexts(6000, 21);  // enough for the first-characters buckets
  for (auto& t : mixed) t += u'x';
  mixed[17].clear();  // an empty text precedes all others
  mixed[18] = u"   ";
  std::mt19937 random(5);
  const std::u16string starts[] = {u"", u"Vermessungsgrenzstein ", u"VERMESSUNGSGRENZSTEIN\u00c4_der Gemarkung "};
  const std::u16string pieces[] = {u"a", u"A", u"\u00e4", u"ss", u"\u00df", u"\u00fe", u"\u00ff", u"\u0100",
                                   u"\u01ff", u"\u0300", u"\u20ac", u"\uffff", u"_", u" ", u"z"};
  std::vector<std::u16string> wide(6000);
  for (auto& t : wide) {
    t = starts[random() % std::size(starts)] + std::u16string(random() % 30, u'x');
    for (size_t k = 1 + random() % 5; k > 0; --k) t += pieces[random() % std::size(pieces)];
    t += u'x';
  }
  for (auto* texts : {&mixed, &wide}) {
    const std::vector<std::u16string_view> views(texts->begin(), texts->end());
    for (int flags = 0; flags < 16; ++flags) {
      const int caseSensitive = flags & 1, numeric = flags >> 1 & 1, skip = flags >> 2 & 1, reverse = flags >> 3 & 1;
      Index index;
      ASSERT_EQ(kw::SortTextsStable(views, caseSensitive, numeric, skip, reverse, index, nullptr), 1);
      const Index expected = StableOrder(6000, [&](int64_t a, int64_t b) {
        return reverse ? kw::StrCompare((*texts)[b], (*texts)[a], caseSensitive, numeric, skip) < 0
                       : kw::StrCompare((*texts)[a], (*texts)[b], caseSensitive, numeric, skip) < 0;
      });
      EXPECT_EQ(index, expected) << "flags " << flags;
    }
  }
}

TEST(SortTextsStable, StepsThePaneAndStops) {
  // 3000 texts are one range: runs of 32 and 7 merge passes, the last one at 100 percent. 5000 texts
  // (and numeric mode) go by buckets of the first character, stepped by the share done.
  for (const int n : {3000, 5000}) {
    const auto texts = CollationTexts(n, 4);
    const std::vector<std::u16string_view> views(texts.begin(), texts.end());
    Index index;
    CountingPane pane;
    EXPECT_EQ(kw::SortTextsStable(views, 0, 0, 0, 0, index, &pane), 1);
    if (n == 3000) {
      EXPECT_EQ(pane.percents.size(), 7u);
    }
    ASSERT_GE(pane.percents.size(), 2u);
    EXPECT_EQ(pane.percents.back(), 100);
    EXPECT_TRUE(std::is_sorted(pane.percents.begin(), pane.percents.end()));
    CountingPane stopper(2);
    EXPECT_EQ(kw::SortTextsStable(views, 0, 0, 0, 0, index, &stopper), 0);
    EXPECT_EQ(stopper.percents.size(), 2u);
  }
  Index none;
  CountingPane idle;
  EXPECT_EQ(kw::SortTextsStable({}, 0, 0, 0, 0, none, &idle), 1);
  EXPECT_TRUE(none.empty());
}

}  // namespace
