#include "app/KwCommandLineInfo.h"

#include <gtest/gtest.h>

#include "app/AppFixture.h"
#include "app/KwAboutDlg.h"
#include "app/KwDocManager.h"

namespace {

using kw::KwCommandLineInfo;
using Args = std::vector<std::u16string>;

class CommandLine : public kwtest::AppTest {};

TEST_F(CommandLine, SwitchesAndParametersFillTheirFields) {
  struct Row {
    Args args;
    int mode, count;
    std::u16string f1, f2, f3, c1, c2;
    bool trace, v;
  };
  const Row rows[] = {
      {{}, 0, 0, u"", u"", u"", u"", u"", false, false},
      {{u"a.txt"}, 1, 1, u"a.txt", u"", u"", u"", u"", false, false},
      {{u"a.txt", u"b.txt", u"c.txt", u"d.txt"}, 1, 4, u"a.txt", u"b.txt", u"c.txt", u"", u"", false, false},
      {{u"-T", u"a.txt", u"-v"}, 1, 1, u"a.txt", u"", u"", u"", u"", true, true},
      {{u"/C", u"x", u"y", u"z"}, 2, 4, u"", u"", u"", u"x", u"y", false, false},
      {{u"-c", u"x"}, 2, 2, u"", u"", u"", u"x", u"", false, false},
      {{u"a.txt", u"-C"}, 1, 2, u"a.txt", u"C", u"", u"", u"", false, false},  // C only counts first
      {{u"-X", u"a"}, 1, 2, u"X", u"a", u"", u"", u"", false, false},          // any other switch counts
      {{u"/t", u"/V", u"-L=/tmp/x.ini"}, 0, 0, u"", u"", u"", u"", u"", true, true},
  };
  for (const Row& row : rows) {
    KwCommandLineInfo info;
    info.ParseCommandLine(row.args);
    SCOPED_TRACE(::testing::PrintToString(row.args.size()) + " args, first " +
                 (row.args.empty() ? std::string() : std::string(row.args[0].begin(), row.args[0].end())));
    EXPECT_EQ(info.m_nMode, row.mode);
    EXPECT_EQ(info.m_nParam, row.count);
    EXPECT_EQ(info.m_strFile1, row.f1);
    EXPECT_EQ(info.m_strFile2, row.f2);
    EXPECT_EQ(info.m_strFile3, row.f3);
    EXPECT_EQ(info.m_strC1, row.c1);
    EXPECT_EQ(info.m_strC2, row.c2);
    EXPECT_EQ(info.m_bTrace, row.trace);
    EXPECT_EQ(info.m_bV, row.v);
  }
}

TEST_F(CommandLine, SlashStartsASwitchOnlyWithoutAFurtherSlash) {
  KwCommandLineInfo info;
  info.ParseCommandLine({u"/home/me/data.txt", u"/R=/home/me/proj/CONFIG.INI", u"/T"});
  EXPECT_EQ(info.m_strFile1, u"/home/me/data.txt");
  EXPECT_EQ(info.m_strFileName, u"/home/me/data.txt");
  EXPECT_EQ(info.m_nShellCommand, KwCommandLineInfo::FileOpen);
  EXPECT_EQ(info.m_strRFolder, u"/home/me/proj/");
  EXPECT_EQ(info.m_strRName, u"CONFIG.INI");
  EXPECT_TRUE(info.m_bTrace);
  EXPECT_EQ(info.m_nParam, 1);
}

TEST_F(CommandLine, ParseInitFileSplitsFolderAndName) {
  std::filesystem::create_directories(dir_ / "settings");
  const std::u16string folder = Folder() + u"settings";
  struct Row {
    std::u16string text;
    std::u16string folder, name;
  };
  const Row rows[] = {
      {u"\"/my folder/set/\"", u"/my folder/set/", u""},  // quoted folder with its separator
      {u"  /data/KwUser.INI  ", u"/data/", u"KwUser.INI"},
      {u"\"/data/\"\"x.ini\"", u"/data/", u"x.ini"},       // every quote goes
      {folder, folder, u""},                                 // an existing folder without separator
      {folder + u"/KwUser.INI", folder + u"/", u"KwUser.INI"},
      {u"plain.ini", u"", u"plain.ini"},
      {u"", u"", u""},
  };
  for (const Row& row : rows) {
    KwCommandLineInfo left, right;
    left.ParseInitFile(row.text, 1);
    right.ParseParam(u"R=" + row.text, true, true);
    const std::string label(row.text.begin(), row.text.end());
    EXPECT_EQ(left.m_strLFolder, row.folder) << label;
    EXPECT_EQ(left.m_strLName, row.name) << label;
    EXPECT_EQ(left.m_strRFolder, u"") << label;
    EXPECT_EQ(right.m_strRFolder, row.folder) << label;
    EXPECT_EQ(right.m_strRName, row.name) << label;
  }
  EXPECT_EQ(asserts_.count(), 0u);
  KwCommandLineInfo info;
  info.ParseInitFile(u"/data/x.ini", 3);
  EXPECT_TRUE(asserts_.Fired("WINAPP", 2228));
  EXPECT_EQ(info.m_strLFolder, u"");
  EXPECT_EQ(info.m_strRFolder, u"");
}

class DocTypes : public kwtest::AppTest {};

TEST_F(DocTypes, RegistrationGoesThroughThePlatformAndReportsFailures) {
  kw::KwDocManager docs;
  docs.AddDocTemplate({u"Kw.Text", u"Text", u".kwt", u"/usr/bin/kw"});
  docs.AddDocTemplate({u"", u"Not registered", u".nr", u"/usr/bin/kw"});
  docs.AddDocTemplate({u"Kw.List", u"List", u".ldx", u"/usr/bin/kw"});
  EXPECT_TRUE(docs.IsRegistered() == false);
  EXPECT_EQ(docs.RegisterShellFileTypes(0), 1);
  ASSERT_EQ(platform_.registered.size(), 2u);  // the empty id is skipped
  EXPECT_TRUE(docs.IsRegistered());
  EXPECT_EQ(docs.UnregisterShellFileTypes(), 1);
  EXPECT_FALSE(docs.IsRegistered());
  EXPECT_EQ(docs.UnregisterShellFileTypes(), 0);  // nothing left to remove

  platform_.registerResult = false;
  EXPECT_EQ(docs.RegisterShellFileTypes(1), 0);
  EXPECT_EQ(platform_.debugOutput,
            (std::vector<std::u16string>{
                u"KwDocManager-Warning: registration database update failed for key 'Kw.Text'.\n",
                u"KwDocManager-Warning: registration database update failed for key 'Kw.List'.\n"}));

  platform_.registerResult = true;
  kw::KwDocManager blank;
  blank.AddDocTemplate({u"Kw Text", u"Text", u".kwt", u"/usr/bin/kw"});
  blank.RegisterShellFileTypes(0);
  EXPECT_FALSE(blank.IsRegistered());
  EXPECT_TRUE(asserts_.Fired("DocMgr", 147));
}

TEST_F(DocTypes, AboutBoxTexts) {
  kwtest::TestApp app;
  kw::KwAboutDlg about(app);
  about.SetModule(u"/opt/kwbase/bin/quorix", u"23.11.2026");
  about.SetFreeText(u"(test build)");
  EXPECT_EQ(about.GetAppName(), u"TESTAPP");
  EXPECT_EQ(about.GetVersionLine(),
            u"Version 1.2 (23.11.2026) / " + std::u16string(sizeof(void*) == 8 ? u"64bit" : u"32bit") +
                u" / UNICODE (test build)");
  EXPECT_EQ(about.GetMailLink(), u"mailto:support@example.org?subject=Message%20from%20TESTAPP");
  EXPECT_EQ(about.GetWebLink(), u"http://www.example.org/");

  const auto fitsIn = [](size_t n) { return [n](const std::u16string& line) { return line.size() <= n; }; };
  EXPECT_EQ(about.GetPathLine(fitsIn(100)), u"Path: /opt/kwbase/bin/quorix");
  const std::u16string cut = about.GetPathLine(fitsIn(20));
  EXPECT_EQ(cut.size(), 20u);  // the longest form that fits
  EXPECT_EQ(cut, u"Path: /op...n/quorix");
  EXPECT_EQ(about.GetPathLine(fitsIn(3)), u"Path: /...ix");  // nothing fits: six characters
  EXPECT_EQ(kw::KwAboutDlg::ShortenPath(u"/a/b", 6), u"/a/b");
}

}  // namespace
