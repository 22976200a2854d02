// The shared search parameters: entries, options under a mask, the broadcast to registered windows,
// the settings section and the prepared entries.
#include "editor/KwFindData.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/AppFixture.h"
#include "app/KwWinApp.h"
#include "data/KwPersistence.h"

namespace {

using kw::KwFindData;

struct Window : kw::KwFindObserver {
  int calls = 0;
  std::u16string entries;
  std::vector<int> options;
  void UpdateFindEntries(const std::u16string& e, const int* o) override {
    ++calls;
    entries = e;
    options.assign(o, o + KwFindData::kOptionCount);
  }
};

class FindData : public kwtest::AppTest {
 protected:
  kwtest::TestApp app_;
};

TEST_F(FindData, EntriesOptionsMaskAndBroadcast) {
  KwFindData data;
  EXPECT_EQ(data.GetChanged(), 1);
  EXPECT_EQ(data.GetLoaded(), 1);
  EXPECT_EQ(data.HasEntries(), 0);
  Window a, b, c;
  data.AddFindInst(&a);
  data.AddFindInst(&b);
  data.AddFindInst(&c);
  data.AddFindInst(&a);  // once only
  EXPECT_EQ(data.GetFindInstCount(), 3);
  const std::u16string entries = std::u16string(u"neu") + u'\x7f' + u"alt" + u'\x7f' + u"älter";
  const int options[6] = {1, 0, 1, 5, 0, 0};
  data.SetChanged(0);
  EXPECT_EQ(data.SetFindEntries(entries, options, nullptr, &b), 1);
  EXPECT_EQ(data.GetChanged(), 1);
  EXPECT_EQ(a.calls, 1);
  EXPECT_EQ(b.calls, 0);  // the sender
  EXPECT_EQ(c.calls, 1);
  EXPECT_EQ(a.entries, entries);
  EXPECT_EQ(a.options, (std::vector<int>{1, 0, 1, 5, 0, 0}));
  EXPECT_EQ(data.GetEntry(0), u"neu");
  EXPECT_EQ(data.GetEntry(2), u"älter");
  EXPECT_EQ(data.GetEntry(3), u"");
  // Same text, a different option outside the mask: nothing changes, nobody is told.
  const int other[6] = {0, 0, 1, 5, 0, 0};
  const int mask[6] = {0, 1, 1, 1, 1, 1};
  EXPECT_EQ(data.SetFindEntries(entries, other, mask, nullptr), 0);
  EXPECT_EQ(a.calls, 1);
  int out[6] = {};
  data.GetFindEntries(nullptr, out);
  EXPECT_EQ(out[0], 1);
  // Inside the mask it does; only masked options are taken.
  const int more[6] = {0, 1, 0, 0, 0, 9};
  const int mask2[6] = {0, 1, 0, 0, 0, 0};
  EXPECT_EQ(data.SetFindEntries(entries, more, mask2, nullptr), 1);
  data.GetFindEntries(nullptr, out);
  EXPECT_EQ(std::vector<int>(out, out + 6), (std::vector<int>{1, 1, 1, 5, 0, 0}));
  EXPECT_EQ(b.calls, 1);
  data.RemoveFindInst(&b);
  data.Broadcast(nullptr);
  EXPECT_EQ(b.calls, 1);
  EXPECT_EQ(a.calls, 3);
  data.RemoveAllFindInst();
  EXPECT_EQ(data.GetFindInstCount(), 0);
  // The optional entry is taken once.
  std::u16string taken;
  EXPECT_EQ(data.AcceptOptionalEntry(&taken), 0);
  data.SetOptionalEntry(u"ersatz");
  EXPECT_EQ(data.AcceptOptionalEntry(&taken), 1);
  EXPECT_EQ(taken, u"ersatz");
  EXPECT_EQ(data.AcceptOptionalEntry(&taken), 0);
}

TEST_F(FindData, SettingsSectionIsSavedAndLoaded) {
  const std::u16string entries = std::u16string(u"x y") + u'\x7f' + u"z";
  {
    KwFindData data;
    const int options[6] = {1, 1, 0, 1, 1, 1};
    data.SetFindEntries(entries, options, nullptr, nullptr);
  }
  const std::string file = ReadBytes(std::filesystem::path(app_.GetPersist()->GetUserFile()));
  EXPECT_NE(file.find("[FindDlg]"), std::string::npos);
  EXPECT_NE(file.find("CASE=1"), std::string::npos);
  EXPECT_NE(file.find("JOKER=1"), std::string::npos);
  EXPECT_NE(file.find("ASCII=0"), std::string::npos);
  KwFindData again;
  std::u16string text;
  int out[6] = {};
  again.GetFindEntries(&text, out);
  EXPECT_EQ(text, entries);
  // Options 3-5 belong to the dialogs and are not kept.
  EXPECT_EQ(std::vector<int>(out, out + 6), (std::vector<int>{1, 1, 0, 0, 0, 0}));
  // The application object owns one shared instance.
  EXPECT_EQ(app_.GetFindData(), app_.GetFindData());
  EXPECT_EQ(app_.GetFindData()->GetEntry(1), u"z");
}

TEST_F(FindData, LoadTellsTheWindowsOnlyWhenSomethingDiffers) {
  KwFindData data;
  Window w;
  data.AddFindInst(&w);
  data.LoadINI();
  EXPECT_EQ(w.calls, 0);
  KwFindData other;
  const int options[6] = {0, 0, 1, 0, 0, 0};
  other.SetFindEntries(u"neu", options, nullptr, nullptr);
  data.LoadINI();
  EXPECT_EQ(w.calls, 1);
  EXPECT_EQ(w.entries, u"neu");
}

TEST_F(FindData, PreparedEntries) {
  KwFindData data;
  std::u16string text;
  const int plain[6] = {0, 0, 0, 0, 0, 0};
  data.SetFindEntries(std::u16string(u"\"<#65>b c \"") + u'\x7f' + u"old", plain, nullptr, nullptr);
  EXPECT_EQ(data.GetPreparedFindEntry(&text, nullptr, 4), 1);
  EXPECT_EQ(text, u"Ab c ");  // quotes gone, case kept
  // With the ASCII option the number goes through the code page (437: 132 is "ä").
  const int ascii[6] = {0, 0, 1, 0, 0, 0};
  data.SetFindEntries(u"<#132>", ascii, nullptr, nullptr);
  EXPECT_EQ(data.GetPreparedFindEntry(&text, nullptr, 4), 1);
  EXPECT_EQ(text, u"ä");
  data.SetFindEntries(u"<#132>", plain, nullptr, nullptr);
  EXPECT_EQ(data.GetPreparedFindEntry(&text, nullptr, 4), 1);
  EXPECT_EQ(text, std::u16string(1, char16_t(132)));
  // A sequence out of range fails without a message; an empty entry shows 1401.
  data.SetFindEntries(u"<#70000>", plain, nullptr, nullptr);
  EXPECT_EQ(data.GetPreparedFindEntry(&text, nullptr, 4), 0);
  EXPECT_TRUE(platform_.boxes.empty());
  data.SetFindEntries(std::u16string() + u'\x7f' + u"old", plain, nullptr, nullptr);
  EXPECT_EQ(data.GetPreparedFindEntry(&text, nullptr, 4), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_NE(platform_.boxes[0].message.find(u"No search text"), std::u16string::npos);
  // A replacement may be empty.
  EXPECT_EQ(data.GetPreparedReplEntry(u"", &text, 4), 1);
  EXPECT_EQ(text, u"");
  EXPECT_EQ(data.GetPreparedReplEntry(u"x<#66>", &text, 4), 1);
  EXPECT_EQ(text, u"xB");
  EXPECT_EQ(platform_.boxes.size(), 1u);
}

}  // namespace
