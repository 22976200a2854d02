// List exchange files: a list goes out and comes back through a file; refused files leave the list as
// it was and tell the user why.
#include <gtest/gtest.h>

#include "ListSupport.h"
#include "app/StringTable.h"
#include "base/Format.h"
#include "base/CodePages.h"
#include <filesystem>

namespace {

class ListExchange : public kwtest::ListTest {
 protected:
  std::u16string File(const std::string& name) { return kw::FromUtf8(Temp(name).string()); }
};

TEST_F(ListExchange, RowsGoOutAndComeBackInKeyOrder) {
  Fill(4, {u"P2|ignored|2.5|B", u"P1|ignored|1.5|A|", u"P3|x|3,5|"});
  ASSERT_EQ(list_.EnableExchange(u"POINTS", {0}, {2, 3}), 1);
  list_.SetModified(1);
  ASSERT_EQ(list_.ExportList(File("p.ldx")), 1);
  EXPECT_EQ(list_.GetModified(), 0);

  kw::KwListCtrl back;
  for (int c = 0; c < 4; ++c) back.InsertColumn(c, u"C", 50);
  back.InsertItem(-1, u"old|row");
  back.EnableExchange(u"POINTS", {0}, {2, 3});
  ASSERT_EQ(back.ImportList(File("p.ldx")), 1);
  ASSERT_EQ(back.GetItemCount(), 3);
  EXPECT_EQ(back.GetRowText(0), u"P1||1.5|A");
  EXPECT_EQ(back.GetRowText(1), u"P2||2.5|B");
  EXPECT_EQ(back.GetRowText(2), u"P3||3,5|");
  EXPECT_TRUE(platform_.boxes.empty());
}

TEST_F(ListExchange, FilesWithoutTheIdentificationOrKeysAreRefused) {
  Fill(2, {u"keep|me"});
  list_.EnableExchange(u"POINTS", {0, 1}, {});
  WriteBytes(Temp("other.ldx"), "!KWMAP LINES\n[List]\na\tb\n");
  EXPECT_EQ(list_.ImportList(File("other.ldx")), -3);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].message,
            kw::Format(kw::LoadString(2856).c_str(), File("other.ldx"), std::u16string(u"POINTS")));
  EXPECT_EQ(platform_.boxes[0].helpId, 2810u);
  EXPECT_EQ(platform_.boxes[0].pictureId, 1090u);

  WriteBytes(Temp("short.ldx"), "!KWMAP POINTS\n[List]\na\tb\nlonely\n");
  EXPECT_EQ(list_.ImportList(File("short.ldx")), -2);
  ASSERT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(platform_.boxes[1].message, kw::Format(kw::LoadString(2855).c_str(), File("short.ldx")));
  EXPECT_EQ(list_.GetRowText(0), u"keep|me");  // both times unchanged
  EXPECT_EQ(list_.GetItemCount(), 1);

  EXPECT_EQ(list_.ImportList(File("missing.ldx")), 0);
  EXPECT_EQ(list_.GetItemCount(), 1);
}

TEST_F(ListExchange, AWriteErrorIsReported) {
  Fill(1, {u"a"});
  list_.EnableExchange(u"X", {0}, {});
  const std::u16string file = File("no-such-folder/x.ldx");
  EXPECT_EQ(list_.ExportList(file), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].message, kw::Format(kw::LoadString(2857).c_str(), file));
}

TEST_F(ListExchange, OnlyWhenEnabledAndAllowed) {
  Fill(1, {u"a"});
  EXPECT_EQ(list_.ExportList(File("x.ldx")), 0);
  EXPECT_EQ(list_.GetFileImEx(), 0);
  EXPECT_EQ(list_.EnableExchange(u"X", {100}, {}), 0);
  EXPECT_TRUE(asserts_.Fired("ListCore", 4442));
  ASSERT_EQ(list_.EnableExchange(u"X", {0}, {}), 1);
  list_.AllowFileImEx(1);  // import only
  EXPECT_EQ(list_.ExportList(File("x.ldx")), 0);
  EXPECT_FALSE(std::filesystem::exists(Temp("x.ldx")));
  list_.AllowFileImEx(3);
  EXPECT_EQ(list_.ExportList(File("x.ldx")), 1);
  EXPECT_TRUE(platform_.boxes.empty());
}

}  // namespace
