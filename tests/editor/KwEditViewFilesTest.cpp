// The view's commands that need the application object: settings kept per document, and the reload
// of a document whose file changed on disk.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "app/AppFixture.h"
#include "editor/KwEditView.h"

namespace {

using kw::KwEditBase;
using kw::KwEditView;

class EditViewFiles : public kwtest::AppTest {
 protected:
  kwtest::TestApp app_;
};

TEST_F(EditViewFiles, DocumentSettingsComeBackInANewView) {
  KwEditBase doc;
  doc.InitEdit();
  doc.AddText(u"line one\r\nline two\r\nthree", 0, 0);
  KwEditView view(&doc);
  EXPECT_EQ(view.SaveDocSettings(), 0);  // a document without a name keeps nothing
  doc.SetDocName(Folder() + u"a.txt");
  view.OnViewBigger();
  view.OnViewEol();
  view.OnEditInsert();
  view.AddTabStop(4);
  view.AddTabStop(12);
  view.SetTabWidth(3);
  view.GotoLineCol(1, 5);
  ASSERT_EQ(view.SaveDocSettings(), 1);
  KwEditView other(&doc);
  ASSERT_EQ(other.LoadDocSettings(), 1);
  EXPECT_EQ(other.GetSettings().fontSize, view.GetSettings().fontSize);
  EXPECT_TRUE(other.GetSettings().showEOL);
  EXPECT_FALSE(other.GetSettings().showBinary);
  EXPECT_EQ(other.GetInsertMode(), 0);
  EXPECT_EQ(other.GetTabStops(), (std::vector<int64_t>{4, 12}));
  EXPECT_EQ(other.NextTabStop(12), 15);
  int64_t column = 0;
  EXPECT_EQ(other.GetCurrentLine(&column), 1);
  EXPECT_EQ(column, 5);
  // Another document has no settings yet.
  doc.SetDocName(Folder() + u"b.txt");
  EXPECT_EQ(other.LoadDocSettings(), 0);
}

TEST_F(EditViewFiles, ChangedFileIsReloadedOnlyWhenTheUserSaysYes) {
  const auto file = Temp("doc.txt");
  WriteBytes(file, "old\r\ntext\r\n");
  KwEditBase doc;
  doc.InitEdit();
  ASSERT_EQ(doc.ReadFile(file.u16string(), 0, nullptr), 1);
  doc.DetectDocChange(1);
  doc.ClearDocChange();
  KwEditView view(&doc);
  EXPECT_EQ(view.ReloadChangedDoc(), 0);  // unchanged: no question
  EXPECT_TRUE(platform_.boxes.empty());
  WriteBytes(file, "new\r\n");
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(5));
  platform_.answers = {-2};  // No
  EXPECT_EQ(view.ReloadChangedDoc(), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_NE(platform_.boxes[0].message.find(u"Reload the file?"), std::u16string::npos);
  EXPECT_EQ(doc.GetAllText(), u"old\r\ntext\r\n");
  // Modified: the other question; Yes reloads and leaves the document unmodified.
  WriteBytes(file, "newer\r\n");
  std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::seconds(10));
  view.GotoLineCol(0, 3);
  view.OnChar(u'!');
  platform_.answers = {1};
  EXPECT_EQ(view.ReloadChangedDoc(), 1);
  ASSERT_EQ(platform_.boxes.size(), 2u);
  EXPECT_NE(platform_.boxes[1].message.find(u"discard your modifications"), std::u16string::npos);
  EXPECT_EQ(doc.GetAllText(), u"newer\r\n");
  EXPECT_EQ(doc.GetModified(), 0);
}

}  // namespace
