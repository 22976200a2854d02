// The command-line program's application object: its switches before the command, its flight recorder
// and its own settings in KwUser.INI.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>

#include "support/TestSupport.h"

namespace {

class KwProgramApp : public kwtest::PlatformTest {
 protected:
  KwRun Kw(const std::string& args) const { return RunKw(args, true); }
  std::string Recorder() const { return ReadBytes(dir_ / "AUTO.REC"); }
};

TEST_F(KwProgramApp, TraceSwitchRecordsTheRun) {
  WriteBytes(dir_ / "a.txt", "x\r\n");
  KwRun run = Kw("detect a.txt");
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_FALSE(std::filesystem::exists(dir_ / "AUTO.REC"));

  run = Kw("-T detect a.txt");
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_EQ(run.out, "a.txt: ANSI CR LF\n");  // the command's own output is unchanged
  const std::string trace = Recorder();
  const size_t start = trace.find("  kw: -T detect a.txt\r\n"), end = trace.find("  kw: detect ended with 0\r\n");
  const size_t gone = trace.find("  WinApp.Destructor: Now detaching system image list\r\n");
  EXPECT_NE(start, std::string::npos) << trace;
  EXPECT_GT(end, start) << trace;
  EXPECT_NE(end, std::string::npos) << trace;
  EXPECT_GT(gone, end) << trace;
  EXPECT_NE(gone, std::string::npos) << trace;
}

TEST_F(KwProgramApp, OwnSettingsComeFromKwUserIni) {
  std::filesystem::create_directories(dir_ / "settings");
  WriteBytes(dir_ / "settings" / "KwUser.INI", "[Kw]\r\nTrace=1\r\n");
  WriteBytes(dir_ / "a.txt", "x\n");
  KwRun run = Kw("-L=settings/ detect a.txt");
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_NE(Recorder().find("  kw: -L=settings/ detect a.txt\r\n"), std::string::npos);

  std::filesystem::remove(dir_ / "AUTO.REC");
  run = Kw("detect a.txt");  // the default user folder has no such setting
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_FALSE(std::filesystem::exists(dir_ / "AUTO.REC"));

  run = Kw("-L=settings/other.ini detect a.txt");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.out.find("KwUser.INI"), std::string::npos) << run.out;
}

TEST_F(KwProgramApp, VersionAndHelpStillWork) {
  KwRun run = Kw("-V");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out.rfind("kw ", 0), 0u) << run.out;
  EXPECT_EQ(run.out.find('\n'), run.out.size() - 1) << run.out;
  run = Kw("-T nosuch");
  EXPECT_EQ(run.code, 2);
  EXPECT_NE(run.out.find("unknown command 'nosuch'"), std::string::npos) << run.out;
}

}  // namespace
