// Rows and their states: cell texts, editing with undo and redo, the clipboard, check boxes, enabled
// rows, images, colours, alignment and hyperlinks; and the same engine bound to a view.
#include <gtest/gtest.h>

#include "ListSupport.h"
#include "lists/KwListView.h"

namespace {

using Cells = std::vector<std::u16string>;

class ListRows : public kwtest::ListTest {};

TEST_F(ListRows, CellTextsCannotSplitTheirRow) {
  EXPECT_EQ(list_.CheckItemText(u"a|b\r\nc"), u"a\u00A6b  c");
  Fill(3, {u"a|line\nbreak|c"});
  EXPECT_EQ(list_.GetRowText(0), u"a|line break|c");
  list_.SetItemText(0, 1, u"x|y");
  EXPECT_EQ(list_.GetItemText(0, 1), u"x\u00A6y");
  EXPECT_EQ(list_.GetItemText(0, 2), u"c");
  list_.SetItemText(0, 4, u"far");  // cells are added up to the column
  EXPECT_EQ(list_.GetRowText(0), u"a|x\u00A6y|c||far");

  kw::KwListCtrl tabs;
  EXPECT_EQ(tabs.SetSeparator(u'\t'), 1);
  EXPECT_EQ(tabs.CheckItemText(u"a\tb|c"), u"a b|c");
  tabs.InsertItem(-1, u"1\t2");
  EXPECT_EQ(tabs.GetItemText(0, 1), u"2");
  EXPECT_EQ(tabs.SetSeparator(u';'), 0);  // not once rows exist
  EXPECT_EQ(tabs.GetSeparator(), u'\t');
}

TEST_F(ListRows, KeysFlagsAndSearches) {
  Fill(2, {});
  list_.InsertItem(-1, u"Köln|1", 70, 0x3, 9, 1);
  list_.InsertItem(-1, u"Bonn|2", 71, 0x8 | 0x10, 0, 0);
  list_.InsertItem(0, u"Aachen|3", 72);
  EXPECT_EQ(list_.GetFlags(1), 0x3u | kw::kListRowEnabled);
  EXPECT_EQ(list_.GetFlags(2), 0x10u);  // disabled: the enabled bit goes
  EXPECT_EQ(list_.GetValue(1), 9u);
  EXPECT_EQ(list_.SeekIndexOfKey(71), 2);
  EXPECT_EQ(list_.SeekIndexOfKey(5), -1);
  EXPECT_EQ(list_.SeekIndexOfText(u"K\u00d6LN"), 1);  // the collation, case ignored
  EXPECT_EQ(list_.SeekIndexOfText(u"2", 1, 0), 2);
  EXPECT_EQ(list_.SeekIndexOfText(u"Aachen", 0, 1), -1);
  EXPECT_EQ(list_.SetItemInfo(0, 99, 0, 4), 1);
  EXPECT_EQ(list_.GetKey(0), 99u);
  EXPECT_EQ(list_.GetEnabled(0), 0);
  EXPECT_EQ(list_.SetKey(7, 1), 0);
  EXPECT_EQ(list_.DeleteItem(1), 1);
  EXPECT_EQ(Column(0), (Cells{u"Aachen", u"Bonn"}));
}

TEST_F(ListRows, EditsUndoAndRedoAsCommands) {
  Fill(2, {u"a|1", u"b|2", u"c|3"});
  EXPECT_EQ(list_.EditItem(0, 1, u"x"), 0);  // editing not enabled
  list_.EnableEdit(1);
  EXPECT_EQ(list_.EditItem(0, 1, u"x"), 1);
  EXPECT_EQ(list_.GetModified(), 1);
  list_.SetEnabled(2, 0);
  EXPECT_EQ(list_.EditItem(2, 1, u"y"), 0);  // a disabled row cannot be edited
  list_.SetCurSel(1);
  Headless().SetSelected(2, true);
  EXPECT_EQ(list_.DeleteSelectedItems(), 2);
  EXPECT_EQ(Column(0), (Cells{u"a"}));

  EXPECT_EQ(list_.Undo(), 1);  // the deletion, both rows in place
  EXPECT_EQ(Column(0), (Cells{u"a", u"b", u"c"}));
  EXPECT_EQ(list_.Undo(), 1);
  EXPECT_EQ(list_.GetRowText(0), u"a|1");
  EXPECT_EQ(list_.CanUndo(), 0);
  EXPECT_EQ(list_.Undo(), 0);
  EXPECT_EQ(list_.Redo(), 1);
  EXPECT_EQ(list_.GetRowText(0), u"a|x");
  EXPECT_EQ(list_.Redo(), 1);
  EXPECT_EQ(Column(0), (Cells{u"a"}));
  EXPECT_EQ(list_.CanRedo(), 0);

  // Undo finds rows by identity, so a sort in between does not confuse it.
  list_.Undo();
  list_.SetSortModus(0, kw::kListSortText);
  list_.Sort(0, 1);
  list_.Sort(0, 0);
  list_.Undo();
  EXPECT_EQ(Column(1), (Cells{u"3", u"2", u"1"}));
  // A new command drops what could be redone.
  list_.EditItem(1, 0, u"z");
  EXPECT_EQ(list_.CanRedo(), 0);
}

TEST_F(ListRows, DeletingRowsDirectlyForgetsTheUndoSteps) {
  Fill(1, {u"a", u"b"});
  list_.EnableEdit(1);
  list_.EditItem(0, 0, u"x");
  list_.DeleteItem(0);
  EXPECT_EQ(list_.CanUndo(), 0);
  EXPECT_EQ(list_.Undo(), 0);
}

TEST_F(ListRows, TheClipboardCarriesTabSeparatedRows) {
  Fill(2, {u"a|1", u"b|2", u"c|3"});
  EXPECT_EQ(list_.CopyToClipboard(), 0);  // nothing selected, no focus
  Headless().SetSelected(0, true);
  Headless().SetSelected(2, true);
  EXPECT_EQ(list_.CopyToClipboard(), 2);
  EXPECT_EQ(platform_.clipboard, u"a\t1\r\nc\t3\r\n");

  EXPECT_EQ(list_.PasteFromClipboard(), 0);  // editing not enabled
  list_.EnableEdit(1);
  platform_.clipboard = u"x\t9\r\ny|z\n";
  Headless().SetFocusedItem(1);
  EXPECT_EQ(list_.PasteFromClipboard(), 2);
  EXPECT_EQ(Column(0), (Cells{u"a", u"x", u"y\u00A6z", u"b", u"c"}));
  EXPECT_EQ(list_.GetItemText(1, 1), u"9");
  list_.Undo();
  EXPECT_EQ(Column(0), (Cells{u"a", u"b", u"c"}));
}

TEST_F(ListRows, ChecksImagesColoursAndAlignment) {
  Fill(2, {u"a", u"b", u"c"});
  EXPECT_EQ(list_.GetCheck(1), 0);
  list_.SetCheck(1, 5);
  EXPECT_EQ(list_.GetCheck(1), 1);
  EXPECT_EQ(list_.GetImageNo(0), -1);
  EXPECT_EQ(list_.SetImageNo(0, 4), 1);
  EXPECT_EQ(list_.GetImageNo(0), 4);
  EXPECT_EQ(list_.SetImageNo(9, 4), 0);
  EXPECT_GT(Headless().GetRedrawCount(), 0);

  list_.SetEnabled(1, 0);
  uint32_t text = 0, back = 0;
  list_.GetItemColors(1, text, back);
  EXPECT_EQ(text, kw::kListColorText);  // system colours: disabled rows look the same
  EXPECT_EQ(list_.SetColorMode(kw::kListColorGreyDisabled), 1);
  list_.GetItemColors(1, text, back);
  EXPECT_EQ(text, kw::kListColorGrey);
  EXPECT_EQ(back, kw::kListColorBack);
  list_.SetColorMode(kw::kListColorBands);
  list_.GetItemColors(1, text, back);
  EXPECT_EQ(back, kw::kListColorBand);
  list_.GetItemColors(2, text, back);
  EXPECT_EQ(text, kw::kListColorText);
  EXPECT_EQ(back, kw::kListColorBack);
  EXPECT_EQ(list_.SetColorMode(7), 0);
  EXPECT_EQ(list_.GetColorMode(), kw::kListColorBands);

  EXPECT_EQ(list_.SetTextAlign(1, kw::kListAlignRight), 1);
  EXPECT_EQ(list_.GetTextAlign(1), kw::kListAlignRight);
  list_.InsertColumn(0, u"new", 10);  // settings move with their column
  EXPECT_EQ(list_.GetTextAlign(2), kw::kListAlignRight);
  EXPECT_EQ(list_.GetTextAlign(1), kw::kListAlignLeft);
  EXPECT_EQ(list_.SetTextAlign(1, 3), 0);
}

TEST_F(ListRows, HyperlinksOpenTheirCellWithTheShell) {
  Fill(2, {u"site|https://example.org/a", u"none|"});
  EXPECT_EQ(list_.ExecuteHyperlink(0, 1), 0);  // not a hyperlink column yet
  list_.EnableHyperlinks(1, 1);
  EXPECT_EQ(list_.IsHyperlinkColumn(1), 1);
  EXPECT_EQ(list_.IsHyperlinkColumn(0), 0);
  EXPECT_EQ(list_.ExecuteHyperlink(0, 1), 1);
  ASSERT_EQ(platform_.shellOpens.size(), 1u);
  EXPECT_EQ(platform_.shellOpens[0].first, u"https://example.org/a");
  EXPECT_EQ(list_.ExecuteHyperlink(1, 1), 0);  // empty cell
  platform_.shellResult = 2;  // the shell failed
  EXPECT_EQ(list_.ExecuteHyperlink(0, 1), 0);
}

TEST_F(ListRows, TheViewRunsTheSameEngine) {
  struct Points : kw::KwListView {
    void OnUpdate(int) override {
      DeleteAllItems();
      InsertItem(-1, u"3");
      InsertItem(-1, u"1");
      InsertItem(-1, u"2");
    }
  } view;
  view.InsertColumn(0, u"N", 40);
  view.SetSortModus(0, kw::kListSortNumber);
  view.SetColToSort(-1);
  view.OnInitialUpdate();
  EXPECT_EQ(view.GetItemText(0, 0), u"3");
  EXPECT_EQ(view.GetItemText(2, 0), u"1");
  EXPECT_EQ(view.GetSortedColumn(), -1);
  EXPECT_EQ(view.GetColumnWidths(), u"400|40|");
}

}  // namespace
