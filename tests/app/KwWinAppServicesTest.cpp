#include <gtest/gtest.h>

#include "app/AppFixture.h"
#include "app/KwCommandLineInfo.h"
#include "app/KwDocManager.h"
#include "app/KwWinApp.h"
#include "data/KwPersistence.h"

namespace {

using kwtest::TestApp;
using Strings = std::vector<std::u16string>;

class AppServices : public kwtest::AppTest {
 protected:
  // The last box's message, or a note that there was none.
  std::u16string LastMessage() const {
    return platform_.boxes.empty() ? u"(no box)" : platform_.boxes.back().message;
  }
  std::filesystem::path UserFile() const { return dir_ / "KwUser.INI"; }
};

TEST_F(AppServices, QXAdminSlotMask) {
  TestApp app;
  EXPECT_EQ(app.GetQXAdminID(), 1);
  app.UpdateQXAdminStatus(1);
  app.UpdateQXAdminStatus(2);
  EXPECT_EQ(app.GetQXAdminMask(), 3u);
  EXPECT_EQ(app.GetQXAdminID(), 3);
  app.UpdateQXAdminStatus(1);  // freed: the lowest free id again
  EXPECT_EQ(app.GetQXAdminID(), 1);
  app.UpdateQXAdminStatus(7);
  app.UpdateQXAdminStatus(7);  // twice: as before
  EXPECT_EQ(app.GetQXAdminMask(), 2u);
  for (int id : {0, 33, -1}) app.UpdateQXAdminStatus(id);
  EXPECT_EQ(app.GetQXAdminMask(), 2u);
  for (int id = 1; id <= 32; ++id)
    if (id != 2) app.UpdateQXAdminStatus(id);
  EXPECT_EQ(app.GetQXAdminMask(), 0xFFFFFFFFu);
  EXPECT_EQ(app.GetQXAdminID(), 33);
  app.UpdateQXAdminStatus(32);
  EXPECT_EQ(app.GetQXAdminID(), 32);
}

TEST_F(AppServices, RunQXAdminStartsFromTheExecutableFolder) {
  TestApp app;
  platform_.shellResults = {33, 32, 2};
  EXPECT_EQ(app.RunQXAdmin(5, 1), 1);
  ASSERT_EQ(platform_.shellOpens.size(), 1u);
  EXPECT_EQ(platform_.shellOpens[0].first, Folder() + u"QXADMIN.EXE");
  EXPECT_EQ(platform_.shellOpens[0].second, u"5");
  EXPECT_EQ(app.GetQXAdminMask(), 1u << 4);
  EXPECT_TRUE(platform_.boxes.empty());

  EXPECT_EQ(app.RunQXAdmin(6, 1), 0);  // 32 is not above 32
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].caption, u"Message from WinApp");
  EXPECT_EQ(platform_.boxes[0].message, u"An error occured while starting QXADMIN.exe.");
  EXPECT_EQ(platform_.boxes[0].pictureId, 1085u);
  EXPECT_TRUE(platform_.beeps.empty());
  EXPECT_EQ(app.RunQXAdmin(6, 0), 0);  // no report
  EXPECT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(app.GetQXAdminMask(), 1u << 4);
}

TEST_F(AppServices, SendToQXAdminSearchesAndFreesTheSlotOnFailure) {
  TestApp app;
  app.UpdateQXAdminStatus(3);
  platform_.peers[u"QXADMIN3"] = 1;
  platform_.peerHiddenSearches = 4;  // still starting for four looks
  EXPECT_EQ(app.SendToQXAdmin(3, u"copy a b"), 1);
  EXPECT_EQ(platform_.peerSearches, 5);
  ASSERT_EQ(platform_.sent.size(), 1u);
  EXPECT_EQ(platform_.sent[0].first, u"QXADMIN3");
  EXPECT_EQ(platform_.sent[0].second, u"copy a b");
  EXPECT_EQ(platform_.sentTags, std::vector<uint32_t>{0});
  EXPECT_TRUE(platform_.boxes.empty());
  EXPECT_EQ(app.GetQXAdminMask(), 1u << 2);

  platform_.peers[u"QXADMIN3"] = 7;  // any answer but 1 is a failure
  EXPECT_EQ(app.SendToQXAdmin(3, u"x"), 0);
  EXPECT_EQ(LastMessage(),
            u"An error occured while communicating with the auxiliary program QXADMIN. A possible cause is a very "
            u"high system load.\n\nThe task was not started.");
  EXPECT_EQ(app.GetQXAdminMask(), 0u);

  app.SetQXAdminSearchSeconds(0.05);
  platform_.peerSearches = 0;
  app.UpdateQXAdminStatus(4);
  EXPECT_EQ(app.SendToQXAdmin(4, u"x"), 0);  // nobody listens
  EXPECT_GT(platform_.peerSearches, 1);      // looked again and again until the time was up
  EXPECT_EQ(platform_.sent.size(), 2u);
  EXPECT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(app.GetQXAdminMask(), 0u);
}

TEST_F(AppServices, RegisterAppsStartsBothProgramsEvenAfterAFailure) {
  TestApp app;
  platform_.shellResults = {33, 42};
  EXPECT_EQ(app.RegisterApps(u"/opt/kw/", 1), 1);
  EXPECT_EQ(platform_.shellOpens,
            (std::vector<std::pair<std::u16string, std::u16string>>{{u"/opt/kw/QUORIX_W.EXE", u"/RegServer"},
                                                                    {u"/opt/kw/TOPRAX_W.EXE", u"/RegServer"}}));
  platform_.shellOpens.clear();
  platform_.shellResults = {2, 33};
  EXPECT_EQ(app.RegisterApps(u"/opt/kw", 1), 0);
  EXPECT_EQ(platform_.shellOpens.size(), 2u);
  EXPECT_EQ(platform_.shellOpens[1].first, u"/opt/kw/TOPRAX_W.EXE");
  EXPECT_EQ(LastMessage().substr(0, 60), u"Registration of the file types specific for TOPRAX and QUORI");
}

TEST_F(AppServices, HelpKeywordIsPackedToWholeUnits) {
  struct Row {
    uint32_t topic;
    std::u16string packed;
  };
  const Row rows[] = {
      {7, {u'7', 0}},                                // "7", zero, second zero, filled up
      {12, {0x3231, 0}},                             // "12", zero, filled up
      {123, {0x3231, 0x0033, 0}},                    // odd: two zero bytes, filled up
  };
  for (const auto& row : rows) EXPECT_EQ(kw::KwWinApp::PackHelpKeyword(row.topic), row.packed) << row.topic;
}

TEST_F(AppServices, ShowHelpLooksUpTheTopicThenFallsBack) {
  TestApp app;
  const std::u16string helpFile = Folder() + u"QUORIX.CHM";
  app.ShowHelp(0, 1234);  // no help file
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(LastMessage(), u"No help could be found.\n\nThe compiled HTML Help file " + helpFile + u" is missing.");
  EXPECT_TRUE(platform_.helpShown.empty());

  WriteBytes(dir_ / "QUORIX.CHM", "help");
  app.ShowHelp(0, 1234);
  ASSERT_EQ(platform_.helpShown.size(), 1u);
  EXPECT_EQ(platform_.helpShown[0].first, helpFile);
  EXPECT_EQ(platform_.helpShown[0].second, kw::KwWinApp::PackHelpKeyword(1234));

  platform_.helpShown.clear();
  platform_.ctrlDown = true;  // the start page
  app.ShowHelp(0, 1234);
  ASSERT_EQ(platform_.helpShown.size(), 1u);
  EXPECT_EQ(platform_.helpShown[0].second, u"");

  platform_.helpShown.clear();
  platform_.ctrlDown = false;
  platform_.helpResult = false;  // neither the topic nor the start page
  app.ShowHelp(0, 99);
  ASSERT_EQ(platform_.helpShown.size(), 2u);
  EXPECT_EQ(platform_.helpShown[1].second, u"");
  ASSERT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(LastMessage().substr(0, 28), u"Unable to display any help.\n");
  EXPECT_EQ(platform_.boxes.back().pictureId, 1085u);
}

// Removal first, then the saves, then the shared objects, with the trace running to the end: a
// settings file on the removal list is written anew afterwards, and an element still bound in the
// persistence table is reported between the destructor's two trace lines.
TEST_F(AppServices, DestructorRemovesFilesBeforeSavingAndTracesToTheEnd) {
  WriteBytes(UserFile(), "[Old]\r\nX=1\r\n");
  WriteBytes(dir_ / "scratch.tmp", "temporary");
  int width = 80;  // bound by a "dialog" that never saves it; outlives the application object
  {
    TestApp app;
    app.StartInitalTrace();
    EXPECT_EQ(app.AddFileToRemove(UserFile().u16string()), 1);
    EXPECT_EQ(app.AddFileToRemove((dir_ / "scratch.tmp").u16string()), 1);
    EXPECT_EQ(app.AddFileToRemove((dir_ / "never-there.tmp").u16string()), 1);
    EXPECT_EQ(app.AddFileToRemove((dir_ / "scratch.tmp").u16string()), 1);
    ASSERT_NE(app.GetFilesToRemove(), nullptr);
    EXPECT_EQ(app.GetFilesToRemove()->size(), 3u);  // each name once
    app.SetEditParams({0, u'#', 1});
    app.GetFolders();
    kw::KwPersistence* persist = app.GetPersist();
    ASSERT_EQ(persist->LoadINI(u"Width", &width), 1);
    persist->LoadINI(kw::kPersistUser, u"Dialog");
  }
  EXPECT_FALSE(std::filesystem::exists(dir_ / "scratch.tmp"));
  const std::string user = ReadBytes(UserFile());
  EXPECT_EQ(user.find("[Old]"), std::string::npos) << user;  // deleted before the save wrote it anew
  EXPECT_NE(user.find("MakeBackups=0"), std::string::npos) << user;
  EXPECT_NE(user.find("EolDisplayChar=35"), std::string::npos) << user;
  EXPECT_NE(user.find("[Folders]"), std::string::npos) << user;
  EXPECT_NE(user.find("Project=" + dir_.string() + "/"), std::string::npos) << user;

  kw::GetFolders().SetProjectFolder(u"/elsewhere/");
  TestApp next;
  EXPECT_EQ(next.LoadFolders(), 3);
  EXPECT_EQ(next.GetFolders()->GetProjectFolder(), Folder());
  EXPECT_EQ(next.GetPersist()->GetProjectFile(), Folder() + u"CONFIG.INI");

  const auto texts = TraceTexts(dir_ / "AUTO.REC");
  ASSERT_GE(texts.size(), 3u);
  auto at = [&](const std::string& text) {
    for (size_t i = 0; i < texts.size(); ++i)
      if (texts[i].rfind(text, 0) == 0) return static_cast<int>(i);
    return -1;
  };
  const int first = at("WinApp.Destructor"), element = at("Persis.Destructor: Element Section=Dialog IDname=Width");
  const int last = at("WinApp.Destructor: Now detaching system image list");
  EXPECT_GE(first, 0);
  EXPECT_GT(element, first);
  EXPECT_GT(last, element);
  EXPECT_EQ(last, static_cast<int>(texts.size()) - 1);
}

TEST_F(AppServices, EditParamsSurviveTheApplicationObject) {
  {
    TestApp app;
    EXPECT_EQ(app.GetEditParams().makeBackups, 1);  // defaults, nothing stored
  }
  EXPECT_FALSE(std::filesystem::exists(UserFile())) << "reading alone writes nothing";
  {
    TestApp app;
    app.SetEditParams({0, u'\u00B6', 2});
  }
  TestApp app;
  const kw::KwEditParams& p = app.GetEditParams();
  EXPECT_EQ(p.makeBackups, 0);
  EXPECT_EQ(p.eolDisplayChar, u'\u00B6');
  EXPECT_EQ(p.eolDisplayOption, 2);
}

TEST_F(AppServices, DateAndTimeFormatsAndTheirOrder) {
  {
    TestApp app;
    EXPECT_EQ(app.GetDateFormatW(), u"%d.%m.%Y");
    EXPECT_EQ(app.GetTimeFormatW(), u"%2H:%2M:%S");
    EXPECT_EQ(app.GetDateOrder(), 1);
    EXPECT_EQ(app.GetTimeOrder(), 1);
  }
  struct Row {
    const char* format;
    int order;
  };
  for (const Row& row : {Row{"%Y-%m-%d", 2}, Row{"%m/%d/%Y", 0}, Row{"%%m %d.%m.%Y", 1}}) {
    WriteBytes(UserFile(), std::string("[WinApp]\r\nDateFormat=") + row.format + "\r\nTimeFormat=%M:%S\r\n");
    TestApp app;
    EXPECT_EQ(app.GetDateOrder(), row.order) << row.format;
    EXPECT_EQ(app.GetTimeOrder(), 0) << row.format;
  }
}

// A derived application whose own unregistering fails.
class StubbornApp : public TestApp {
 public:
  int Unregister() override { return 0; }
};

TEST_F(AppServices, ProcessShellCommandUnregistersAndReports) {
  const kw::DocumentType type{u"Kw.Text", u"Text file", u".kwt", u"/usr/bin/kw"};
  {
    TestApp app;
    app.GetDocManager()->AddDocTemplate(type);
    kw::KwCommandLineInfo reg;
    reg.ParseCommandLine({u"/RegServer"});
    EXPECT_EQ(app.ProcessShellCommand(reg), 0);
    EXPECT_TRUE(app.GetDocManager()->IsRegistered());

    kw::KwCommandLineInfo unreg;
    unreg.ParseCommandLine({u"-Unregister"});
    EXPECT_EQ(app.ProcessShellCommand(unreg), 0);
    EXPECT_FALSE(app.GetDocManager()->IsRegistered());
    EXPECT_TRUE(platform_.registered.empty());
    EXPECT_EQ(LastMessage(), u"The application's document types were unregistered.");
    ASSERT_NE(app.GetCmdInfo(), nullptr);
    EXPECT_EQ(app.GetCmdInfo()->m_nShellCommand, kw::KwCommandLineInfo::AppUnregister);
  }
  StubbornApp app;
  kw::KwCommandLineInfo unreg;
  unreg.ParseCommandLine({u"-UnregServer"});
  EXPECT_EQ(app.ProcessShellCommand(unreg), 0);
  EXPECT_EQ(LastMessage(), u"The application's document types could not be unregistered.");
  const size_t boxes = platform_.boxes.size();
  kw::KwCommandLineInfo silent;
  silent.ParseCommandLine({u"-Embedding", u"-Unregister"});
  EXPECT_EQ(app.ProcessShellCommand(silent), 0);
  EXPECT_EQ(platform_.boxes.size(), boxes);  // asked for silence
}

}  // namespace
