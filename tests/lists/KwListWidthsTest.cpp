// The column-width text both ways, with and without the vertical scroll bar, and the one-time fit
// of the columns when the first rows bring the scroll bar.
#include <gtest/gtest.h>

#include "ListSupport.h"

namespace {

class ListWidths : public kwtest::ListTest {
 protected:
  void Columns(std::initializer_list<int> widths) {
    int c = 0;
    for (const int w : widths) list_.InsertColumn(c++, u"C", w);
  }
  std::vector<int> Widths() {
    std::vector<int> widths;
    for (int c = 0; c < list_.GetColumnCount(); ++c) widths.push_back(Headless().GetColumnWidth(c));
    return widths;
  }
};

TEST(MulDiv, RoundsHalfAwayFromZero) {
  EXPECT_EQ(kw::MulDiv(200, 400, 383), 209);
  EXPECT_EQ(kw::MulDiv(183, 400, 383), 191);
  EXPECT_EQ(kw::MulDiv(1, 3, 2), 2);
  EXPECT_EQ(kw::MulDiv(-1, 3, 2), -2);
  EXPECT_EQ(kw::MulDiv(5, 1, -2), -3);
  EXPECT_EQ(kw::MulDiv(1, 1, 0), -1);
  EXPECT_EQ(kw::MulDiv(2000000000, 2, 4), 1000000000);  // no overflow in between
}

TEST_F(ListWidths, GetScalesOnlyWhileTheScrollBarTakesRoom) {
  Headless().SetClientRect({0, 0, 400, 300});
  Columns({200, 183});
  EXPECT_EQ(list_.GetColumnWidths(), u"400|200|183|");  // no scroll bar
  Headless().SetStyle(kw::kListStyleVScroll);
  EXPECT_EQ(list_.GetColumnWidths(), u"400|209|191|");  // 383 = 400 - 17: scaled by 400 / 383
  Headless().SetColumnWidth(1, 182);  // the columns leave room: as they are
  EXPECT_EQ(list_.GetColumnWidths(), u"400|200|182|");
}

TEST_F(ListWidths, SetScalesDownWhenTheStoredWidthsNeedTheScrollBarsRoom) {
  Columns({10, 10});
  EXPECT_EQ(list_.SetColumnWidths(u"400|209|191|"), 1);
  EXPECT_EQ(Widths(), (std::vector<int>{209, 191}));
  Headless().SetStyle(kw::kListStyleVScroll);
  EXPECT_EQ(list_.SetColumnWidths(u"400|209|191|"), 1);
  EXPECT_EQ(Widths(), (std::vector<int>{200, 183}));  // MulDiv(w, 383, 400)
  EXPECT_EQ(list_.SetColumnWidths(u"400|100|50|"), 1);
  EXPECT_EQ(Widths(), (std::vector<int>{100, 50}));  // room enough
  // Round trip under the scroll bar.
  Headless().SetClientRect({0, 0, 400, 100});
  EXPECT_EQ(list_.SetColumnWidths(u"400|209|191|"), 1);
  EXPECT_EQ(list_.GetColumnWidths(), u"400|209|191|");
}

TEST_F(ListWidths, SetReadsUntilTheFirstEmptyPartAndChecksTheBars) {
  Columns({10, 20, 30});
  EXPECT_EQ(list_.SetColumnWidths(u""), 0);
  EXPECT_EQ(asserts_.count(), 0u);
  EXPECT_EQ(list_.SetColumnWidths(u"400|1|2"), 0);  // two bars for three columns
  EXPECT_TRUE(asserts_.Fired("ListCore", 4101));
  EXPECT_EQ(Widths(), (std::vector<int>{10, 20, 30}));
  EXPECT_EQ(list_.SetColumnWidths(u"400|50||70|"), 1);
  EXPECT_EQ(Widths(), (std::vector<int>{50, 20, 30}));
}

TEST_F(ListWidths, AMissingClientWidthComesFromTheColumnsAndTheFactor) {
  Columns({10, 10});
  Headless().SetStyle(kw::kListStyleVScroll);
  Headless().SetVScrollBarWidth(20);
  Headless().SetWidthFactor(2.0);
  list_.UpdateFactor();
  // W' = (300 + 100) / 2 = 200; 200 - 20 < 400: scaled by 180 / 200.
  EXPECT_EQ(list_.SetColumnWidths(u"0|300|100|"), 1);
  EXPECT_EQ(Widths(), (std::vector<int>{270, 90}));
}

TEST_F(ListWidths, TheFirstFillMakesRoomForTheScrollBarOnce) {
  Headless().SetClientRect({0, 0, 383, 48});  // three rows per page
  Columns({200, 200});
  list_.SetColumnWidths(u"400|200|200|");  // the reference client width: 400
  for (int i = 0; i < 3; ++i) list_.InsertItem(-1, u"a|b");
  EXPECT_FALSE(list_.GetColumnsAdjusted());
  EXPECT_EQ(Widths(), (std::vector<int>{200, 200}));
  list_.InsertItem(-1, u"a|b");  // the fourth row passes the page
  EXPECT_TRUE(list_.GetColumnsAdjusted());
  EXPECT_EQ(Widths(), (std::vector<int>{192, 192}));  // MulDiv(200, 383, 400)
  Headless().SetColumnWidth(0, 300);
  list_.DeleteAllItems();
  for (int i = 0; i < 5; ++i) list_.InsertItem(-1, u"a|b");
  EXPECT_EQ(Widths(), (std::vector<int>{300, 192}));  // once per list
}

TEST_F(ListWidths, TheFirstFillLeavesNarrowColumnsAlone) {
  list_.SetRowThreshold(1);
  Columns({100, 100});
  // Unknown reference width: the column sum (200); the columns need more than 200 - 17.
  list_.InsertItem(-1, u"a");
  list_.InsertItem(-1, u"b");
  EXPECT_EQ(Widths(), (std::vector<int>{92, 92}));  // MulDiv(100, 183, 200)

  kw::KwListCtrl wide;
  wide.InsertColumn(0, u"C", 100);
  wide.SetRowThreshold(0);
  wide.SetColumnWidths(u"400|100|");
  wide.InsertItem(-1, u"x");
  EXPECT_TRUE(wide.GetColumnsAdjusted());
  EXPECT_EQ(wide.GetHeadless()->GetColumnWidth(0), 100);
}

}  // namespace
