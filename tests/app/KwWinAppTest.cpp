#include "app/KwWinApp.h"

#include <gtest/gtest.h>

#include <regex>
#include <unistd.h>

#include "app/AppFixture.h"
#include "app/QueryBox.h"

namespace {

using kwtest::TestApp;

class KwWinAppTest : public kwtest::AppTest {
 protected:
  std::filesystem::path RecFile() const { return dir_ / "TESTAPP.REC"; }
};

TEST_F(KwWinAppTest, CurrentApplicationLivesWithTheObject) {
  EXPECT_FALSE(kw::IsKwWinApp());
  EXPECT_EQ(kw::GetKwWinApp(), nullptr);
  {
    TestApp app;
    EXPECT_TRUE(kw::IsKwWinApp());
    EXPECT_EQ(kw::GetKwWinApp(), &app);
    EXPECT_FALSE(app.GetTraceMode());
    EXPECT_EQ(asserts_.count(), 0u);
  }
  EXPECT_FALSE(kw::IsKwWinApp());
  EXPECT_EQ(kw::GetKwWinApp(), nullptr);
}

TEST_F(KwWinAppTest, AppNameAndVersion) {
  TestApp app;
  EXPECT_EQ(app.GetAppName(0), u"TESTAPP");
  EXPECT_EQ(app.GetAppName(1), u"TESTAPP_W");
  EXPECT_EQ(app.GetAppVersion(), u"1.2");
  EXPECT_EQ(asserts_.count(), 0u);

  EXPECT_EQ(app.KwWinApp::GetAppVersion(), u"");
  EXPECT_TRUE(asserts_.Fired("WINAPP", 372));
  kw::SetString(kw::kIdsAppTitle, u"");
  EXPECT_EQ(app.GetAppName(0), u"");
  EXPECT_TRUE(asserts_.Fired("WINAPP", 362));
}

TEST_F(KwWinAppTest, SetTraceModeAsksOnceThenClosesThenAppends) {
  WriteBytes(RecFile(), "an old trace from an earlier run\r\n");
  platform_.answers = {1};
  TestApp app;

  app.SetTraceMode();  // first call: the question, a fresh file
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].caption, u"Question from Flight Recorder");
  EXPECT_EQ(platform_.boxes[0].message,
            u"Like a Flight Recorder the application will now trace its activities in the file " +
                RecFile().u16string() +
                u". This will help us to detect errors, especially irregular or unreconstructable crashes.");
  EXPECT_EQ(platform_.boxes[0].labels, (std::vector<std::u16string>{u"&Start", u"&Cancel"}));
  EXPECT_EQ(platform_.boxes[0].pictureId, 1050u);
  EXPECT_TRUE(app.GetTraceMode());
  EXPECT_EQ(app.GetTraceFileName(), RecFile().u16string());
  app.Trace(u"Step %d of %s", 1, u"three");

  app.SetTraceMode();  // second call: closed, nothing asked
  EXPECT_FALSE(app.GetTraceMode());
  app.Trace(u"not recorded");
  auto lines = Lines(RecFile());
  ASSERT_EQ(lines.size(), 2u);  // the old trace was deleted
  EXPECT_NE(lines[0].find("0 trace lines"), std::string::npos) << lines[0];
  EXPECT_EQ(lines[1].substr(8), "  Step 1 of three");
  EXPECT_EQ(app.GetTraceLines(), 2);

  app.SetTraceMode();  // third call: appends without asking
  EXPECT_EQ(platform_.boxes.size(), 1u);
  EXPECT_TRUE(app.GetTraceMode());
  app.Trace(u"Step 3");
  app.SetTraceMode();
  lines = Lines(RecFile());
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1].substr(8), "  Step 1 of three");
  EXPECT_NE(lines[2].find("2 trace lines"), std::string::npos) << lines[2];
  EXPECT_EQ(lines[3].substr(8), "  Step 3");
}

TEST_F(KwWinAppTest, TraceModeStaysOffUnlessStartIsPressed) {
  WriteBytes(RecFile(), "kept\r\n");
  for (int answer : {-2, 2}) {
    platform_.answers = {answer};
    TestApp app;
    app.SetTraceMode();
    EXPECT_FALSE(app.GetTraceMode());
    EXPECT_EQ(app.GetTraceFileName(), u"");
  }
  EXPECT_EQ(ReadBytes(RecFile()), "kept\r\n");
}

TEST_F(KwWinAppTest, TraceLineCarriesTimeOfDayAndWholeText) {
  TestApp app;
  app.Trace(u"Value=%d", 7);  // tracing off: the debug output only
  EXPECT_EQ(platform_.debugOutput, std::vector<std::u16string>{u"Value=7\n"});
  EXPECT_EQ(app.GetTraceLines(), 0);
  platform_.debugOutput.clear();
  app.StartInitalTrace();
  EXPECT_TRUE(platform_.boxes.empty());
  ASSERT_TRUE(app.GetTraceMode());
  const std::u16string longText(600, u'x');
  app.Trace(u"%s", longText);
  app.Trace(u"Count %d of %s", u"mismatched");  // a format that does not fit is written as it stands
  app.SetTraceMode();

  const auto lines = Lines(dir_ / "AUTO.REC");
  ASSERT_EQ(lines.size(), 2u);
  // Milliseconds since construction as a time of day: a test run stays in the first minute.
  EXPECT_TRUE(std::regex_match(lines[0], std::regex("00:00:[0-5][0-9]  x{600}"))) << lines[0].substr(0, 20);
  EXPECT_EQ(lines[1].substr(8), "  Count %d of %s");
  ASSERT_GE(platform_.debugOutput.size(), 2u);
  EXPECT_EQ(platform_.debugOutput[0], std::u16string(500, u'x') + u"\n");
  EXPECT_EQ(platform_.debugOutput[1], u"Count %d of %s\n");
}

TEST_F(KwWinAppTest, InitialTraceStartsOnceAndDestructorTracesItsSteps) {
  {
    TestApp app;
    app.StartInitalTrace();
    app.Trace(u"first");
    app.SetTraceMode();       // off
    app.StartInitalTrace();   // a trace file exists: nothing happens
    EXPECT_FALSE(app.GetTraceMode());
    app.SetTraceMode();       // on again, appended to AUTO.REC without a question
    EXPECT_TRUE(platform_.boxes.empty());
    EXPECT_EQ(app.GetTraceFileName(), u"AUTO.REC");
  }
  const auto lines = Lines(dir_ / "AUTO.REC");
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0].substr(8), "  first");
  EXPECT_NE(lines[1].find("1 trace lines"), std::string::npos);
  EXPECT_EQ(lines[2].substr(8), "  WinApp.Destructor");
  EXPECT_EQ(lines[3].substr(8), "  WinApp.Destructor: Now detaching system image list");
}

// The query box writes its trace lines only while the application traces.
TEST_F(KwWinAppTest, QueryBoxTracesItsStepsWhileTracing) {
  TestApp app;
  kw::QueryBox(u"File", 0, 0, 0, u"Hi %s|&A|&B", u"x");
  EXPECT_TRUE(platform_.debugOutput.empty());

  app.StartInitalTrace();
  kw::QueryBox(u"File", 0, 0, 0, u"Hi %s|&A|&B", u"x");
  ASSERT_EQ(platform_.debugOutput.size(), 8u);
  EXPECT_EQ(platform_.debugOutput[0], u"QueryBox III: pMainWnd = 1 Sender=File Text=Hi %s|&A|&B\n");
  EXPECT_EQ(platform_.debugOutput[1], u"QueryBox III: ReferenceCount = 0\n");
  const auto& box = platform_.boxes.back();
  const auto rect = [](const char16_t* what, const kw::BoxRect& r) {
    return kw::Format(u"%s top=%d bottom=%d left=%d right=%d\n", what, r.top, r.bottom, r.left, r.right);
  };
  EXPECT_EQ(platform_.debugOutput[2], rect(u"QueryDlg.OnInitDialog: Window", box.window));
  EXPECT_EQ(platform_.debugOutput[3], rect(u"QueryDlg.OnInitDialog: Centered Window", box.window));
  EXPECT_EQ(platform_.debugOutput[4], rect(u"QueryDlg.SetRect: Window", box.textRect));
  EXPECT_EQ(platform_.debugOutput[5], rect(u"QueryDlg.SetRect: Window", box.buttonRects[0]));
  EXPECT_EQ(platform_.debugOutput[6], rect(u"QueryDlg.SetRect: Window", box.buttonRects[1]));
  EXPECT_EQ(platform_.debugOutput[7], rect(u"QueryDlg.OnSetActive: Window", box.window));

  platform_.debugOutput.clear();
  platform_.mainWindow = 0;  // no box: only the first line
  EXPECT_EQ(kw::QueryBox(u"File", 0, 0, 0, u"Gone"), 2);
  EXPECT_EQ(platform_.debugOutput, std::vector<std::u16string>{u"QueryBox III: pMainWnd = 0 Sender=File Text=Gone\n"});
  EXPECT_EQ(app.GetTraceLines(), 9);
}

}  // namespace
