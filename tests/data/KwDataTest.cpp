#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/KwFolders.h"
#include "data/KwConfigData.h"
#include "data/ScopeFiles.h"

namespace {

using kw::KwCfgSection;
using kw::KwConfigData;
using kw::KwDataSet;

class DataStore : public kwtest::ScopeFilesTest {
 protected:
  static KwCfgSection* Section(const std::u16string& name, const std::u16string& line) {
    auto* s = new KwCfgSection(name, KwConfigData::GetIniProjIndex(name));
    s->AddLine(line);
    return s;
  }
  static std::string First(kw::KwData& store, const std::u16string& name, int scope) {
    auto* s = static_cast<KwCfgSection*>(store.GetData(name, scope));
    return s ? kw::ToUtf8(s->GetLineText(0)) : "<none>";
  }
  // Makes the file's stamps differ from those recorded at load.
  void ChangeExternally(const std::string& file, const std::string& text) {
    WriteBytes(Temp(file), text);
    std::filesystem::last_write_time(Temp(file), std::filesystem::last_write_time(Temp(file)) + std::chrono::seconds(5));
  }
};

TEST_F(DataStore, SameNameInTwoScopesStandsTwiceAndIsVisibleOnce) {
  WriteBytes(Temp("g.ini"), "[Shared]\nV=global\n[OnlyGlobal]\nA=1\n");
  WriteBytes(Temp("l.ini"), "[Shared]\nV=local\n");
  KwConfigData store;
  Load(store);
  EXPECT_EQ(store.GetCount(), 3);
  EXPECT_EQ(store.GetScopesOfKey(u"Shared"), 0b1010);
  std::vector<KwDataSet*> sets;
  ASSERT_EQ(store.GetDataSetsOfKey(u"Shared", sets), 2);
  EXPECT_EQ(sets[0]->GetScope(), 1);  // ordered by scope
  EXPECT_EQ(sets[1]->GetScope(), 3);
  EXPECT_FALSE(sets[0]->IsVisible());
  EXPECT_TRUE(sets[1]->IsVisible());
  EXPECT_EQ(First(store, u"Shared", -1), "V=local");

  std::vector<std::u16string> visible;
  for (KwDataSet* s = store.GetNextDataSet(1, -1); s; s = store.GetNextDataSet(0, -1)) visible.push_back(s->GetName());
  EXPECT_EQ(visible, (std::vector<std::u16string>{u"OnlyGlobal", u"Shared"}));
  int inGlobal = 0;
  for (auto it = store.GetIterator(1); it.Next();) ++inGlobal;
  EXPECT_EQ(inGlobal, 2);

  // A temporary set hides both; deleting the local one leaves the global one visible.
  store.AddTempDataSet(u"Shared", Section(u"Shared", u"V=temp"));
  EXPECT_EQ(First(store, u"Shared", -1), "V=temp");
  store.DeleteDataSet(u"Shared", 4);
  store.DeleteDataSet(u"Shared", 3);
  EXPECT_EQ(First(store, u"Shared", -1), "V=global");
  EXPECT_EQ(store.SearchDataSet(u"Shared", 3)->GetScope(), 1);  // nearest lower scope
  EXPECT_EQ(store.SearchDataSet(u"Shared", 0), nullptr);
}

TEST_F(DataStore, IterationSurvivesDeletingTheCurrentSet) {
  WriteBytes(Temp("g.ini"), "[A]\nx=1\n[B]\nx=1\n[C]\nx=1\n");
  KwConfigData store;
  Load(store);
  int seen = 0;
  for (KwDataSet* s = store.GetNextDataSet(1, 1); s; s = store.GetNextDataSet(0, 1)) {
    ++seen;
    store.DeleteDataSet(s);
  }
  EXPECT_EQ(seen, 3);
  EXPECT_EQ(store.GetCount(), 0);
}

TEST_F(DataStore, OriginTexts) {
  KwConfigData store;
  std::u16string names[4] = {u"/p/a.ini", u"/d/a.ini", u"/r/a.ini", u"/very/long/folder/name/a.ini"};
  store.SetFileNames(names, 1);
  EXPECT_EQ(store.GetOriginText(0), u"Project-independent (write protected) data location is the file /p/a.ini");
  EXPECT_EQ(store.GetOriginText(2), u"Department related data location is the file /r/a.ini");
  EXPECT_EQ(store.GetOriginText(3), u"Project related data location is the file /very/long/folder/name/a.ini");
  EXPECT_EQ(store.GetOriginText(4), u"No permanent data location");
  EXPECT_EQ(store.GetFileName(4), u"");
  const std::u16string shortText = store.GetOriginText(3, 55);
  EXPECT_EQ(shortText, u"Project related data location is the file /ver.../a.ini");
  EXPECT_EQ(shortText.size(), 55u);
  EXPECT_EQ(store.GetOriginText(3, 10), u"Project related data location is the file .../a.ini");
  store.SetFileNames(names, 0);
  EXPECT_EQ(store.GetOriginText(3), u"User related data location is the file /very/long/folder/name/a.ini");
  EXPECT_EQ(kw::KwData::GetScopeName(2), u"Regional");

  EXPECT_EQ(store.GetOriginText(7), u"");
  EXPECT_EQ(asserts_.count(), 1u);
}

TEST_F(DataStore, FileNamesFromTheFoldersAndOneFileInTwoScopes) {
  kw::KwFolders saved = kw::GetFolders();
  kw::GetFolders().SetProgramFolder(u"/prog");
  kw::GetFolders().SetDataFolder(u"/data/");
  kw::GetFolders().SetRegionalFolder(u"/data");  // same folder as the data folder
  kw::GetFolders().SetProjectFolder(u"/proj");
  kw::GetFolders().SetUserFolder(u"/user");
  KwConfigData store;
  store.SetFileNames(u"X.INI", 1);
  EXPECT_EQ(store.GetFileName(0), u"/prog/X.INI");
  EXPECT_EQ(store.GetFileName(1), u"");  // the regional scope keeps the shared file
  EXPECT_EQ(store.IsScopeWritable(1), 0);
  EXPECT_EQ(store.IsScopeWritable(2), 1);
  EXPECT_EQ(store.GetFileName(2), u"/data/X.INI");
  EXPECT_EQ(store.GetFileName(3), u"/proj/X.INI");
  store.SetFileNames(u"X.INI", 0);
  EXPECT_EQ(store.GetFileName(3), u"/user/X.INI");
  kw::GetFolders() = saved;
}

TEST_F(DataStore, EmptiedScopeFileIsDeleted) {
  WriteBytes(Temp("g.ini"), "[A]\nx=1\n");
  WriteBytes(Temp("l.ini"), "[B]\nx=1\n");
  KwConfigData store;
  Load(store);
  EXPECT_EQ(store.DeleteDataSetsOfScope(1), 1);
  EXPECT_EQ(store.GetModified(), 1);
  ASSERT_EQ(store.Save(), 1);
  EXPECT_FALSE(std::filesystem::exists(Temp("g.ini")));
  EXPECT_TRUE(std::filesystem::exists(Temp("l.ini")));
  EXPECT_FALSE(std::filesystem::exists(Temp("r.ini")));  // nothing to write, nothing created
  EXPECT_EQ(store.GetModified(), 0);
}

TEST_F(DataStore, ExternallyChangedFileAsksBeforeOverwriting) {
  struct Row {
    int answer;
    int result;
    bool overwritten;
  } rows[] = {{1, 1, true}, {-2, 1, false}, {-3, 0, false}, {2, 0, false}};
  for (const Row& row : rows) {
    WriteBytes(Temp("g.ini"), "[A]\nx=1\n");
    KwConfigData store;
    Load(store);
    store.GetCfgSection(u"A")->SetLine(u"x=mine");
    ChangeExternally("g.ini", "[A]\nx=theirs\n");
    platform_.boxes.clear();
    platform_.answers = {row.answer};
    EXPECT_EQ(store.Save(), row.result) << row.answer;
    ASSERT_EQ(platform_.boxes.size(), 1u) << row.answer;
    EXPECT_EQ(platform_.boxes[0].caption, u"Question from Data");
    EXPECT_EQ(platform_.boxes[0].helpId, 3040u);
    EXPECT_EQ(platform_.boxes[0].pictureId, 1085u);
    EXPECT_NE(platform_.boxes[0].text.find(TempName("g.ini") + u" was changed"), std::u16string::npos);
    EXPECT_EQ(ReadBytes(Temp("g.ini")).find("x=mine") != std::string::npos, row.overwritten) << row.answer;
    // After a write the new stamps are recorded: the next save asks nothing.
    if (row.overwritten) {
      platform_.boxes.clear();
      EXPECT_EQ(store.Save(), 1);
      EXPECT_TRUE(platform_.boxes.empty());
    }
  }
}

TEST_F(DataStore, SilentModeNeverOverwritesAChangedOrVanishedFile) {
  WriteBytes(Temp("g.ini"), "[A]\nx=1\n");
  KwConfigData store;
  Load(store);
  store.SetSilentMode(1);
  ChangeExternally("g.ini", "[A]\nx=theirs\n");
  EXPECT_EQ(store.Save(), 0);
  EXPECT_TRUE(platform_.boxes.empty());
  EXPECT_EQ(ReadBytes(Temp("g.ini")), "[A]\nx=theirs\n");

  store.SetSilentMode(0);
  std::filesystem::remove(Temp("g.ini"));
  platform_.answers = {-2};
  EXPECT_EQ(store.Save(), 1);  // "No": the vanished file stays away
  EXPECT_EQ(platform_.boxes.size(), 1u);
  EXPECT_FALSE(std::filesystem::exists(Temp("g.ini")));
}

TEST_F(DataStore, ReadOnlyAndUnwritableFilesAreReported) {
  WriteBytes(Temp("g.ini"), "[A]\nx=1\n");
  KwConfigData store;
  Load(store);
  std::filesystem::permissions(Temp("g.ini"), std::filesystem::perms::owner_read | std::filesystem::perms::group_read);
  store.GetCfgSection(u"A")->SetLine(u"x=2");
  EXPECT_EQ(store.Save(), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].text, u"No write permission given for the file " + TempName("g.ini") + u".");
  EXPECT_EQ(ReadBytes(Temp("g.ini")), "[A]\nx=1\n");
  EXPECT_EQ(store.GetModified(), 0);  // as loaded; the failed save did not clear anything it should not

  // A scope file in a folder that does not exist: reported, unless the store may create folders.
  KwConfigData other;
  std::u16string names[4] = {u"", TempName("missing/g.ini"), u"", u""};
  other.SetFileNames(names, 0, 0);
  other.AddDataSet(u"A", 1, Section(u"A", u"x=1"), 0);
  EXPECT_EQ(other.SaveData(), 0);
  EXPECT_EQ(platform_.boxes.size(), 2u);
  other.SetFileNames(names, 0, 1);
  EXPECT_EQ(other.SaveData(), 1);
  EXPECT_TRUE(std::filesystem::exists(Temp("missing/g.ini")));
}

TEST_F(DataStore, SaveModifiedAsksAndFollowsTheAnswer) {
  KwConfigData store;
  std::u16string names[4];
  Names(names);
  store.SetFileNames(names, 0);
  EXPECT_EQ(store.SaveModified(), 1);  // unmodified: nothing asked
  EXPECT_TRUE(platform_.boxes.empty());
  store.AddDataSet(u"A", 1, Section(u"A", u"x=1"), 0);
  platform_.answers = {-2, -3, 1};
  EXPECT_EQ(store.SaveModified(), 1);
  EXPECT_EQ(store.SaveModified(), 0);
  EXPECT_FALSE(std::filesystem::exists(Temp("g.ini")));
  EXPECT_EQ(store.SaveModified(), 1);
  EXPECT_TRUE(std::filesystem::exists(Temp("g.ini")));
  EXPECT_EQ(platform_.boxes.size(), 3u);
}

TEST_F(DataStore, CopyChangeScopeAndReadOnlyScopes) {
  KwConfigData store;
  store.SetWrite(0b11110);  // the standard scope is write protected
  store.AddDataSet(u"A", 0, Section(u"A", u"x=std"), 0);
  store.AddDataSet(u"A", 3, Section(u"A", u"x=local"), 0);

  EXPECT_EQ(store.ChangeScope(u"A", 0, 1), nullptr);  // cannot leave a read-only scope
  EXPECT_EQ(store.CopyDataSet(u"A", 3, 0), nullptr);  // cannot enter one
  ASSERT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(platform_.boxes[1].text, u"The storage location you desired has read only status.");

  ASSERT_NE(store.CopyDataSet(u"A", 0, 1), nullptr);
  EXPECT_EQ(First(store, u"A", 1), "x=std");
  EXPECT_EQ(platform_.boxes.size(), 2u);  // nothing there: no question

  platform_.answers = {-2};
  EXPECT_EQ(store.CopyDataSet(u"A", 3, 1), nullptr);  // "No" to overwriting
  EXPECT_EQ(First(store, u"A", 1), "x=std");
  EXPECT_NE(platform_.boxes.back().text.find(u"overwrite the existing data set"), std::u16string::npos);
  const size_t asked = platform_.boxes.size();
  EXPECT_NE(store.CopyDataSet(u"A", 0, 1), nullptr);  // equal content: accepted without a question
  EXPECT_EQ(platform_.boxes.size(), asked);

  platform_.answers = {1};
  KwDataSet* moved = store.ChangeScope(u"A", 3, 2);
  ASSERT_NE(moved, nullptr);
  EXPECT_EQ(moved->GetScope(), 2);
  EXPECT_EQ(store.GetScopesOfKey(u"A"), 0b0111);
  EXPECT_EQ(First(store, u"A", -1), "x=local");
}

TEST_F(DataStore, MakeVisibilityPersistentCopiesIntoTheDefaultScope) {
  KwConfigData store;
  store.SetWrite(0b11110);
  store.AddDataSet(u"A", 1, Section(u"A", u"x=global"), 0);
  store.AddDataSet(u"A", 3, Section(u"A", u"x=local"), 0);
  store.AddTempDataSet(u"A", Section(u"A", u"x=temp"));
  EXPECT_EQ(store.GetDefaultScope(0), 3);
  EXPECT_EQ(store.GetDefaultScope(1), 4);

  platform_.answers = {-2};
  EXPECT_EQ(store.MakeVisibilityPersistent(u"A", 1), 0);
  EXPECT_EQ(First(store, u"A", -1), "x=temp");
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_NE(platform_.boxes[0].text.find(u"-A-"), std::u16string::npos);
  EXPECT_NE(platform_.boxes[0].text.find(u"Local"), std::u16string::npos);

  platform_.answers = {1};
  EXPECT_EQ(store.MakeVisibilityPersistent(u"A", 1), 1);
  EXPECT_EQ(First(store, u"A", -1), "x=global");
  EXPECT_EQ(store.GetDataSet(u"A", -1)->GetScope(), 3);
  EXPECT_EQ(store.GetDataSet(u"A", 4), nullptr);
}

TEST_F(DataStore, SeekBestDataSet) {
  KwConfigData store;
  store.AddDataSet(u"Alpha", 1, Section(u"Alpha", u"x=1"), 0);
  store.AddDataSet(u"Alpine", 1, Section(u"Alpine", u"x=1"), 0);
  store.AddDataSet(u"Beta", 3, Section(u"Beta", u"x=1"), 0);
  EXPECT_EQ(kw::KwData::GetCompareCount(u"ALPs", u"alpine"), 3);
  EXPECT_EQ(store.SeekBestDataSet(u"Beta")->GetName(), u"Beta");
  EXPECT_EQ(store.SeekBestDataSet(u"alpin")->GetName(), u"Alpine");
  EXPECT_EQ(store.SeekBestDataSet(u"alp")->GetName(), u"Alpha");  // equal counts: the first wins
  EXPECT_EQ(store.SeekBestDataSet(u"Gamma"), nullptr);
  EXPECT_EQ(store.SeekBestDataSet(u""), nullptr);
}

TEST_F(DataStore, EditLocationCopiesOrRemoves) {
  KwConfigData store;
  std::u16string names[4] = {u"/s.ini", u"/g|x.ini", u"/r.ini", u"/l.ini"};
  store.SetFileNames(names, 0);
  store.AddDataSet(u"A", 1, Section(u"A", u"x=1"), 0);

  platform_.answers = {1};  // "Copy to Local"
  EXPECT_EQ(store.EditLocation(u"A", 1), 1);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].text,
            u"Data location: Project-independent data location is the file /g\u00A6x.ini|Copy to Local|Remove|Cancel / ESC");
  EXPECT_EQ(store.GetScopesOfKey(u"A"), 0b1010);

  platform_.answers = {-2, -2};  // "Remove", then "No"
  EXPECT_EQ(store.EditLocation(u"A", 1), 0);
  platform_.answers = {-2, 1};  // "Remove", then "Yes"
  EXPECT_EQ(store.EditLocation(u"A", 1), 2);
  EXPECT_EQ(store.GetScopesOfKey(u"A"), 0b1000);

  // In the default scope the copy goes to the next writable scope below.
  platform_.answers = {-3};  // "Cancel / ESC"
  EXPECT_EQ(store.EditLocation(u"A", 3), 0);
  EXPECT_NE(platform_.boxes.back().text.find(u"|Copy to Regional|"), std::u16string::npos);
}

TEST_F(DataStore, QueryNewDataSetChecksTheName) {
  KwConfigData store;
  store.AddDataSet(u"A", 3, Section(u"A", u"x=1"), 0);
  EXPECT_EQ(store.QueryNewDataSet(u"B", 3), 1);
  EXPECT_EQ(store.QueryNewDataSet(u"A", 1), 1);
  EXPECT_EQ(store.QueryNewDataSet(u"A", 3), 0);
  EXPECT_EQ(platform_.boxes.back().text,
            u"The data set -A- already exists at the location -Local-!\n\nPlease change your input.");
  EXPECT_EQ(store.QueryNewDataSet(u"", 3), 0);
  EXPECT_EQ(platform_.boxes.size(), 2u);
  store.SetSilentMode(1);
  EXPECT_EQ(store.QueryNewDataSet(u"A", 3), 0);
  EXPECT_EQ(platform_.boxes.size(), 2u);
}

TEST_F(DataStore, ContractsAndCopies) {
  KwConfigData store;
  EXPECT_EQ(store.AddDataSet(u"A", 5, nullptr, 0), nullptr);
  EXPECT_EQ(asserts_.count(), 1u);
  store.SetScopes(0b01011);  // the regional scope is off
  auto* s = Section(u"A", u"x=1");
  EXPECT_EQ(store.AddDataSet(u"A", 2, s, 0), nullptr);
  delete s;
  EXPECT_EQ(store.GetScopes(), 0b01011);
  ASSERT_NE(store.AddDataSet(u"A", 1, Section(u"A", u"x=1"), 0), nullptr);
  EXPECT_EQ(store.AddDataSet(u"A", 1, Section(u"A", u"x=2"), 1)->GetScope(), 1);  // replaces
  EXPECT_EQ(First(store, u"A", 1), "x=2");

  KwConfigData copy;
  copy.Copy(store);
  EXPECT_EQ(copy.IsEqual(store), 1);
  EXPECT_EQ(copy.GetScopes(), 0b01011);
  static_cast<KwCfgSection*>(copy.GetData(u"A", 1))->SetLine(u"x=3");
  EXPECT_EQ(copy.IsEqual(store), 0);
  EXPECT_EQ(First(store, u"A", 1), "x=2");  // deep copy
}

TEST_F(DataStore, LoadingShowsProgressAndStopsWhenAsked) {
  WriteBytes(Temp("g.ini"), "[A]\nx=1\n");
  WriteBytes(Temp("l.ini"), "[B]\nx=1\n");
  std::u16string names[4];
  Names(names);
  KwConfigData store;
  store.SetFileNames(names, 0);
  store.SetInfoText(u"Settings");
  EXPECT_EQ(store.LoadData(1), 1);
  EXPECT_EQ(store.GetCount(), 2);
  ASSERT_FALSE(platform_.progressSteps.empty());
  EXPECT_EQ(platform_.progressSteps.back(), 100);
  EXPECT_EQ(platform_.progressTitles.front(), u"Settings");

  KwConfigData stopped;
  stopped.SetFileNames(names, 0);
  platform_.stepCalls = 0;
  platform_.stopProgressAtStep = 3;  // scopes 0 and 1 are read, then the user stops
  EXPECT_EQ(stopped.LoadData(1), 0);
  EXPECT_EQ(stopped.GetCount(), 1);

  KwConfigData quiet;  // no progress kind: no pane
  quiet.SetFileNames(names, 0);
  const size_t panes = platform_.progressTitles.size();
  EXPECT_EQ(quiet.LoadData(0), 1);
  EXPECT_EQ(platform_.progressTitles.size(), panes);
}

}  // namespace
