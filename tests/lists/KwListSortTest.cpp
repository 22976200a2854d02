// Sorting a list: the compare rule, header clicks, Sort and their contract checks, the shared
// tables, and the prepared comparison agreeing with the rule read straight from the row texts.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "ListSupport.h"
#include "app/StringTable.h"
#include "base/Format.h"

namespace {

using Cells = std::vector<std::u16string>;

class ListSort : public kwtest::ListTest {};

TEST_F(ListSort, ClicksSortAscendingThenTurnAndAnotherColumnStartsAscending) {
  Fill(2, {u"x|10", u"y|", u"z|9"});
  list_.SetSortModus(1, kw::kListSortNumber, 1);
  const Cells up{u"", u"9", u"10"}, down{u"10", u"9", u""};  // empty cells first
  for (const auto& [cells, key] : {std::pair{up, 2}, std::pair{down, -2}, std::pair{up, 2}}) {
    EXPECT_TRUE(list_.OnColumnClick(1));
    EXPECT_EQ(Column(1), cells);
    EXPECT_EQ(list_.GetSortedColumn(), key);
  }
  list_.OnColumnClick(0);  // rows are y, z, x now
  EXPECT_EQ(Column(0), (Cells{u"x", u"y", u"z"}));
  EXPECT_EQ(list_.GetSortedColumn(), 1);
}

TEST_F(ListSort, AnOrderFlagOtherThanOneSortsDescendingOnTheFirstClick) {
  Fill(1, {u"2", u"", u"3", u"1"});
  list_.SetSortModus(0, kw::kListSortNumber, 0);
  list_.OnColumnClick(0);
  EXPECT_EQ(Column(0), (Cells{u"3", u"2", u"1", u""}));
  EXPECT_EQ(list_.GetSortedColumn(), 1);  // the key still says ascending
}

TEST_F(ListSort, ClicksAreIgnoredOnOneRowListsAndUnsortableColumns) {
  Fill(2, {u"b|1"});
  EXPECT_FALSE(list_.OnColumnClick(0));
  EXPECT_EQ(list_.GetSortedColumn(), 0);
  list_.InsertItem(-1, u"a|2");
  list_.SetSortModus(1, kw::kListSortNone, 1);
  EXPECT_FALSE(list_.OnColumnClick(1));
  EXPECT_EQ(Column(0), (Cells{u"b", u"a"}));
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(ListSort, AClickOutsideTheColumnsIsClampedAndReported) {
  Fill(2, {u"b|2", u"a|1"});
  EXPECT_TRUE(list_.OnColumnClick(7));
  EXPECT_TRUE(asserts_.Fired("ListCore", 2864));
  EXPECT_EQ(list_.GetSortedColumn(), 2);  // sorted by the last column
  EXPECT_EQ(Column(1), (Cells{u"1", u"2"}));
}

TEST_F(ListSort, NumbersCloserThanTheToleranceKeepTheControlsOrder) {
  // 1e-21 apart: equal, the stable sort keeps them; 1e-19 apart is far enough to order on a value
  // where the double has room for it (near zero).
  Fill(2, {u"first|0.000000000000000000001", u"second|0", u"third|-0.0000000000000000001"});
  list_.SetSortModus(1, kw::kListSortNumber, 1);
  list_.Sort(1, 0);
  EXPECT_EQ(Column(0), (Cells{u"third", u"first", u"second"}));
  list_.Sort(1, 0);  // descending: the equal pair still keeps its order
  EXPECT_EQ(Column(0), (Cells{u"first", u"second", u"third"}));
}

TEST_F(ListSort, TextModesFollowTheCollationAndCallersFunctions) {
  Fill(1, {u"b", u"B", u"10", u"9", u"M\u00fcller", u"Mueller", u"a"});
  list_.SetSortModus(0, kw::kListSortTextCase, 1);
  list_.Sort(0, 1);
  // Numbers first by value, then the case-blind primary order, case only as the tie-break.
  EXPECT_EQ(Column(0), (Cells{u"9", u"10", u"a", u"B", u"b", u"Mueller", u"M\u00fcller"}));

  // A caller's function replaces the collation: here by length, then reversed.
  list_.SetSortModus(0, kw::kListSortText, 1, nullptr, [](const std::u16string& a, const std::u16string& b) {
    return static_cast<int>(a.size()) - static_cast<int>(b.size()) < 0 ? 1000 : a.size() == b.size() ? 0 : -1000;
  });
  list_.Sort(0, 1);
  EXPECT_EQ(Column(0).front().size(), 7u);
  EXPECT_EQ(Column(0).back().size(), 1u);
}

TEST_F(ListSort, DatesAreReadWithTheColumnsFormat) {
  Fill(1, {u"03.01.2024", u"", u"31.12.2023", u"15.06.2023"});
  list_.SetSortModus(0, kw::kListSortTime, 1, u"%d.%m.%Y");
  list_.Sort(0, 1);
  EXPECT_EQ(Column(0), (Cells{u"", u"15.06.2023", u"31.12.2023", u"03.01.2024"}));
}

TEST_F(ListSort, FormatsAndFunctionsAreSharedByAllListsButModesAreNot) {
  kw::KwListCtrl other;
  other.InsertColumn(0, u"D", 50);
  other.SetSortModus(0, kw::kListSortTime, 1, u"%Y-%m-%d");
  EXPECT_EQ(kw::GetListSortTables().format[0], u"%Y-%m-%d");
  Fill(1, {u"2024-01-02", u"2023-12-31"});
  list_.SetSortModus(0, kw::kListSortTime, 1);  // no format of its own: the shared one holds
  list_.Sort(0, 1);
  EXPECT_EQ(Column(0), (Cells{u"2023-12-31", u"2024-01-02"}));
  EXPECT_EQ(other.GetSortModus(0), kw::kListSortTime);
  EXPECT_EQ(kw::KwListCtrl().GetSortModus(0), kw::kListSortText);
}

TEST_F(ListSort, SortChecksItsColumnAndReSortsByTheKey) {
  Fill(2, {u"b|2", u"a|3", u"c|1"});
  list_.SetSortModus(0, kw::kListSortNone, 1);
  list_.Sort(0, 1);
  EXPECT_TRUE(asserts_.Fired("ListCore", 4598));
  asserts_.Clear();
  EXPECT_EQ(list_.Sort(5, 1), 1);  // clamped to the last column
  EXPECT_TRUE(asserts_.Fired("ListCore", 4599));
  EXPECT_EQ(list_.GetSortedColumn(), 2);
  EXPECT_EQ(Column(1), (Cells{u"1", u"2", u"3"}));

  list_.Sort(1, 1);  // keepDirection: still ascending
  EXPECT_EQ(list_.GetSortedColumn(), 2);
  list_.SetColToSort(-2);
  list_.InsertItem(0, u"d|0");
  list_.Sort(-1, 0);  // again by the present key, which stays
  EXPECT_EQ(list_.GetSortedColumn(), -2);
  EXPECT_EQ(Column(1), (Cells{u"3", u"2", u"1", u"0"}));

  asserts_.Clear();
  list_.SetColToSort(0);
  EXPECT_TRUE(asserts_.Fired("ListCore", 4078));
  EXPECT_EQ(list_.GetColToSort(), -2);
}

TEST_F(ListSort, ColumnsOutsideTheTablesAreContractErrors) {
  EXPECT_EQ(list_.SetSortModus(100, kw::kListSortNumber), 0);
  EXPECT_TRUE(asserts_.Fired("ListCore", 4442));
  asserts_.Clear();
  EXPECT_EQ(list_.SetSortModus(-1, kw::kListSortNumber), 0);
  EXPECT_TRUE(asserts_.Fired("ListCore", 4442));

  asserts_.Clear();
  kw::tagLISTROW a, b;
  a.text = u"1";
  b.text = u"2";
  EXPECT_EQ(kw::ListCompareRows(a, b, 0, u'|'), 0);
  EXPECT_TRUE(asserts_.Fired("ListCore", 607));
  EXPECT_EQ(kw::ListCompareRows(a, b, 101, u'|'), 0);
}

TEST_F(ListSort, RowsWithoutTheSortedCellCompareEqual) {
  kw::GetListSortTables().modus[1] = kw::kListSortNumber;
  kw::GetListSortTables().order[1] = 1;
  kw::tagLISTROW shortRow, empty, full;
  shortRow.text = u"x";
  empty.text = u"x|";
  full.text = u"x|5";
  EXPECT_EQ(kw::ListCompareRows(shortRow, full, 2, u'|'), 0);
  EXPECT_EQ(kw::ListCompareRows(full, shortRow, -2, u'|'), 0);
  EXPECT_EQ(kw::ListCompareRows(empty, full, 2, u'|'), -1);
  EXPECT_EQ(kw::ListCompareRows(empty, full, -2, u'|'), 1);
  kw::GetListSortTables().order[1] = 2;  // descending and a reversing flag cancel out
  EXPECT_EQ(kw::ListCompareRows(empty, full, -2, u'|'), -1);
}

// The prepared keys must give the rule's result for every pair: numbers, texts with umlauts, case,
// underscores and commas, empty and missing cells, in every mode and direction.
// A row `first` with a random cell 1 made of pieces that try the collation: umlauts and their
// expansions, sharp s, case, underscores, blanks and numbers; one row in eight has no cell 1.
std::u16string RandomRow(std::mt19937& random, const std::u16string& first) {
  static const char16_t* const pieces[] = {u"a", u"A", u"B", u"\u00e4", u"\u00c4", u"ae", u"Ae", u"\u00df", u"ss",
                                           u"sz", u"_", u" ", u"1", u"2", u"12", u"1,5", u",5", u"-3", u"x",
                                           u"\u00dc", u"U", u"ue", u"E"};
  if (random() % 8 == 0) return first;
  std::u16string text = first + u"|";
  for (int n = static_cast<int>(random() % 7); n > 0; --n) text += pieces[random() % std::size(pieces)];
  return text;
}

TEST_F(ListSort, PreparedComparisonAgreesWithTheRule) {
  std::mt19937 random(5);
  std::vector<kw::tagLISTROW> rows(300);
  for (auto& row : rows) row.text = RandomRow(random, u"k");
  // Where one primary stream ends inside the other's expansion, the tie-break decides, not the length.
  for (const char16_t* text : {u"k|aU", u"k|A\u00dc", u"k|U", u"k|\u00dc", u"k|bss", u"k|B\u00df"})
    rows.push_back(kw::tagLISTROW{0, 0, 0, text, -1, 0, {}});
  kw::KwListSortTables& tables = kw::GetListSortTables();
  for (const uint32_t mode : {kw::kListSortText, kw::kListSortTextCase, kw::kListSortNumber}) {
    for (const int key : {2, -2}) {
      tables.modus[1] = mode;
      tables.order[1] = 1;
      for (auto& row : rows) kw::ListPrepareSortKey(row, key, u'|');
      kw::tagLISTSORT sort{key, u'|', true};
      int mismatches = 0;
      for (const auto& a : rows)
        for (const auto& b : rows)
          if (kw::ListCompareItems(reinterpret_cast<uintptr_t>(&a), reinterpret_cast<uintptr_t>(&b),
                                   reinterpret_cast<uintptr_t>(&sort)) != kw::ListCompareRows(a, b, key, u'|'))
            ++mismatches;
      EXPECT_EQ(mismatches, 0) << "mode " << mode << " key " << key;
    }
  }
}

// A control that cannot take an order from the list: it is sorted through the compare callback.
class CallbackOnlyControl : public kw::HeadlessListControl {
 public:
  bool SetItemOrder(const std::vector<int>&) override { return false; }
};

// Whole lists sorted three ways must come out alike: by the list (prepared keys in one array, the
// order handed to the control), by the control's own sort through the callback, and by a stable
// sort with the rule read from the row texts.
TEST_F(ListSort, BothSortPathsFollowTheRule) {
  std::mt19937 random(11);
  std::vector<std::u16string> texts;
  for (int i = 0; i < 400; ++i) texts.push_back(RandomRow(random, kw::Format(u"%d", i)));
  struct Case {
    uint32_t mode;
    uint32_t order;
    int key;
  };
  for (const Case c : {Case{kw::kListSortText, 1, 2}, Case{kw::kListSortTextCase, 1, -2}, Case{kw::kListSortNumber, 1, 2},
                       Case{kw::kListSortTextCase, 0, 2}, Case{kw::kListSortNumber, 0, -2}}) {
    kw::KwListCtrl fast;
    kw::KwListCtrl slow(std::make_unique<CallbackOnlyControl>());
    std::vector<kw::tagLISTROW> reference;
    for (kw::KwListCtrl* list : {&fast, &slow}) {
      list->InsertColumn(0, u"N", 40);
      list->InsertColumn(1, u"T", 80);
      for (const auto& text : texts) list->InsertItem(-1, text);
      list->SetSortModus(1, c.mode, c.order);
      list->SetColToSort(-c.key);  // the next sort turns it to c.key
      list->Sort(1, 0);
      ASSERT_EQ(list->GetSortedColumn(), c.key);
    }
    for (const auto& text : texts) reference.push_back(kw::tagLISTROW{0, 0, 0, text, -1, 0, {}});
    std::stable_sort(reference.begin(), reference.end(), [&](const kw::tagLISTROW& a, const kw::tagLISTROW& b) {
      return kw::ListCompareRows(a, b, c.key, u'|') < 0;
    });
    int differences = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
      differences += fast.GetRowText(static_cast<int>(i)) != reference[i].text;
      differences += slow.GetRowText(static_cast<int>(i)) != reference[i].text;
    }
    EXPECT_EQ(differences, 0) << "mode " << c.mode << " order " << c.order << " key " << c.key;
  }
}

TEST_F(ListSort, TheFocusedRowTravelsAndIsShown) {
  Headless().SetClientRect({0, 0, 400, 48});  // three rows per page
  for (int c = 0; c < 1; ++c) list_.InsertColumn(c, u"N", 80);
  for (int i = 0; i < 10; ++i) list_.InsertItem(-1, kw::Format(u"%d", i), static_cast<uint64_t>(i));
  list_.SetSortModus(0, kw::kListSortNumber);
  list_.SetCurSel(0);
  EXPECT_EQ(Headless().GetTopIndex(), 0);
  list_.Sort(0, 1);
  list_.Sort(0, 0);  // descending: the row with key 0 is now the last
  EXPECT_EQ(Headless().GetFocusedItem(), 9);
  EXPECT_EQ(list_.GetKey(9), 0u);
  EXPECT_EQ(list_.GetCurSel(), 9);
  EXPECT_EQ(Headless().GetTopIndex(), 7);
}

}  // namespace
