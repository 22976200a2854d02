// The selection filter: parts and ranges by column type, the refused texts with their messages, and
// selecting and deselecting the matching rows of a list.
#include <gtest/gtest.h>

#include "ListSupport.h"
#include "app/StringTable.h"
#include "base/Format.h"
#include "lists/KwUniFilters.h"
#include "base/CodePages.h"

namespace {

using kw::KwUniFilters;

class UniFilters : public kwtest::ListTest {
 protected:
  // The cells among `cells` that the filter matches.
  static std::vector<std::u16string> Matches(const KwUniFilters& filter, const std::vector<std::u16string>& cells) {
    std::vector<std::u16string> matched;
    for (const auto& cell : cells)
      if (filter.Match(cell)) matched.push_back(cell);
    return matched;
  }
  using Cells = std::vector<std::u16string>;
};

TEST_F(UniFilters, NumberRangesAndSingleValues) {
  const KwUniFilters filter(3, u"", u"1,5;10");
  ASSERT_TRUE(filter.IsValid());
  EXPECT_EQ(filter.GetPartCount(), 2);
  EXPECT_EQ(Matches(filter, {u"1", u"3.5", u"5", u"7", u"10", u"0.999", u"10.001", u"3,5", u"", u"x"}),
            (Cells{u"1", u"3.5", u"5", u"10", u"3,5"}));
  EXPECT_EQ(Matches(KwUniFilters(3, u"", u" 2 - 4 "), {u"1.9", u"2", u"4", u"4.1"}), (Cells{u"2", u"4"}));
  EXPECT_TRUE(platform_.boxes.empty());
}

TEST_F(UniFilters, TextRangesInTheCollationAndPlainNumbersByValue) {
  EXPECT_EQ(Matches(KwUniFilters(1, u"", u"a-c"), {u"a", u"b", u"B", u"c", u"d", u"ca", u""}),
            (Cells{u"a", u"b", u"B", u"c"}));
  // In a text column a range of plain numbers compares numerically: 9 lies between 8 and 10.
  EXPECT_EQ(Matches(KwUniFilters(1, u"", u"8,10"), {u"9", u"10", u"100", u"8.5", u"abc"}),
            (Cells{u"9", u"10", u"8.5"}));
  EXPECT_EQ(Matches(KwUniFilters(1, u"", u"Haus"), {u"Haus", u"haus", u"Hausen"}), (Cells{u"Haus", u"haus"}));
}

TEST_F(UniFilters, WildcardMasksCountCase) {
  const KwUniFilters filter(1, u"", u"K*;?b");
  EXPECT_EQ(Matches(filter, {u"Koeln", u"koeln", u"K", u"ab", u"b", u"abc"}), (Cells{u"Koeln", u"K", u"ab"}));
  // A mask in a number column matches the cell text; the hyphen inside a mask does not separate.
  EXPECT_EQ(Matches(KwUniFilters(3, u"", u"1*-2"), {u"10-2", u"1-2", u"12"}), (Cells{u"10-2", u"1-2"}));
}

struct Refused {
  int type;
  const char16_t* text;
  uint32_t message;
};

TEST_F(UniFilters, RefusedPartsTellTheUserAndInvalidateTheFilter) {
  const Refused cases[] = {
      {3, u"-5", 2814}, {3, u"5-", 2814}, {1, u",a", 2814}, {1, u"1;a,", 2814},
      {3, u"1-2-3", 2815}, {1, u"a,b-c", 2815}, {3, u"5,1", 2816}, {1, u"c-a", 2816}, {1, u"10,9", 2816},
  };
  for (const auto& c : cases) {
    platform_.boxes.clear();
    const KwUniFilters filter(c.type, u"", c.text);
    EXPECT_FALSE(filter.IsValid()) << kw::ToUtf8(c.text);
    EXPECT_EQ(filter.GetError(), c.message) << kw::ToUtf8(c.text);
    EXPECT_FALSE(filter.Match(u"1"));
    ASSERT_EQ(platform_.boxes.size(), 1u) << kw::ToUtf8(c.text);
    EXPECT_EQ(platform_.boxes[0].message, kw::LoadString(c.message));
    EXPECT_EQ(platform_.boxes[0].helpId, 2810u);
    EXPECT_EQ(platform_.boxes[0].pictureId, 1090u);
  }
}

TEST_F(UniFilters, EmptyTextsAndEmptyParts) {
  const KwUniFilters empty(3, u"", u"");
  EXPECT_TRUE(empty.IsValid());
  EXPECT_EQ(Matches(empty, {u"", u"0", u"a"}), (Cells{u""}));
  const KwUniFilters trailing(3, u"", u"4;;");
  EXPECT_EQ(trailing.GetPartCount(), 1);
  EXPECT_EQ(Matches(trailing, {u"", u"4"}), (Cells{u"4"}));
}

TEST_F(UniFilters, AtMostFiftyPartsCount) {
  std::u16string text;
  for (int i = 1; i <= 60; ++i) text += kw::Format(u"%d;", i);
  const KwUniFilters filter(3, u"", text);
  EXPECT_EQ(filter.GetPartCount(), 50);
  EXPECT_TRUE(filter.Match(u"50"));
  EXPECT_FALSE(filter.Match(u"51"));
}

TEST_F(UniFilters, DatesReadWithTheColumnsFormat) {
  const KwUniFilters dots(4, u"%d.%m.%Y", u"01.02.2024-29.02.2024");
  ASSERT_TRUE(dots.IsValid());
  EXPECT_EQ(Matches(dots, {u"01.02.2024", u"15.02.2024", u"29.02.2024", u"01.03.2024", u"31.01.2024", u"x"}),
            (Cells{u"01.02.2024", u"15.02.2024", u"29.02.2024"}));
  // With hyphens in the format only the comma separates.
  const KwUniFilters iso(4, u"%Y-%m-%d", u"2024-02-01,2024-02-29;2023-12-24");
  ASSERT_TRUE(iso.IsValid());
  EXPECT_EQ(Matches(iso, {u"2024-02-10", u"2024-03-01", u"2023-12-24"}), (Cells{u"2024-02-10", u"2023-12-24"}));
  EXPECT_EQ(KwUniFilters(4, u"%d.%m.%Y", u"29.02.2024-01.02.2024").GetError(), 2816u);
}

TEST_F(UniFilters, TheListSelectsAndDeselectsTheMatchingRows) {
  Fill(2, {u"P1|1", u"P2|3.5", u"P3|5", u"P4|7", u"P5|10"});
  list_.SetSortModus(1, kw::kListSortNumber);
  EXPECT_EQ(list_.SelectByFilter(1, u"1,5;10", 1), 4);
  EXPECT_EQ(list_.GetSelectedRows(), (std::vector<int>{0, 1, 2, 4}));
  EXPECT_EQ(list_.SelectByFilter(0, u"P?;P5", 0), 5);  // text column: deselects every row
  EXPECT_TRUE(list_.GetSelectedRows().empty());
  EXPECT_EQ(list_.SelectByFilter(1, u"-5", 1), -1);
  EXPECT_TRUE(list_.GetSelectedRows().empty());
  EXPECT_EQ(platform_.boxes.size(), 1u);
}

}  // namespace
