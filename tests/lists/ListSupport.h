// A list fixture for the list engine's tests: a headless KwListCtrl under the scripted platform, with
// the library-wide sort tables cleared before each test.
#pragma once

#include <string>
#include <vector>

#include "lists/KwListCtrl.h"
#include "support/TestSupport.h"

namespace kwtest {

class ListTest : public PlatformTest {
 protected:
  ListTest() { kw::GetListSortTables() = kw::KwListSortTables{}; }
  ~ListTest() override { kw::GetListSortTables() = kw::KwListSortTables{}; }

  kw::HeadlessListControl& Headless() { return *list_.GetHeadless(); }

  // Columns of width 100 and the rows, in order.
  void Fill(int columns, const std::vector<std::u16string>& rows) {
    for (int c = 0; c < columns; ++c) list_.InsertColumn(c, u"C", 100);
    for (const auto& row : rows) list_.InsertItem(-1, row);
  }
  // Cell `column` of every row, in display order.
  std::vector<std::u16string> Column(int column) {
    std::vector<std::u16string> cells;
    for (int i = 0; i < list_.GetItemCount(); ++i) cells.push_back(list_.GetItemText(i, column));
    return cells;
  }

  kw::KwListCtrl list_;
};

}  // namespace kwtest
