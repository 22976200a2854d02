#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <sys/wait.h>

#include "support/TestSupport.h"

namespace {

class KwIni : public kwtest::PlatformTest {
 protected:
  KwRun Kw(const std::string& args) const { return RunKw(args, true); }
  static std::string Sample(const std::string& name) { return PlatformTest::Sample("ini/" + name); }
};

TEST_F(KwIni, ListMarksTheVisibleSectionAmongScopes) {
  const KwRun run = Kw("ini list " + Sample("GLOBAL.INI") + " " + Sample("CONFIG.INI"));
  ASSERT_EQ(run.code, 0) << run.out;
  EXPECT_NE(run.out.find("  Standard      3  [Units]\n* Global        3  [Units]\n"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("* Standard      3  [GSI16]"), std::string::npos) << run.out;
  const KwRun single = Kw("ini list " + Sample("KwUser.INI"));
  ASSERT_EQ(single.code, 0);
  EXPECT_NE(single.out.find("Standard      4  [Recent]"), std::string::npos) << single.out;
  EXPECT_EQ(Kw("ini list " + Temp("absent.ini").string()).code, 1);
}

TEST_F(KwIni, GetReadsTheFirstValueOfAKey) {
  KwRun run = Kw("ini get " + Sample("CONFIG.INI") + " Units ANGLE");
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, "deg\n");
  run = Kw("ini get " + Sample("DAMAGED.INI") + " Units ANGLE");
  EXPECT_EQ(run.out, "gon\n");  // the first line of a key wins
  run = Kw("ini get " + Sample("PROJEKT-UTF16.INI") + " Project LEITER");
  EXPECT_EQ(run.out, "J\xC3\xBCrgen Ma\xC3\x9F\n");  // read as UTF-16, printed as UTF-8
  EXPECT_EQ(Kw("ini get " + Sample("CONFIG.INI") + " Units NOPE").code, 1);
  EXPECT_EQ(Kw("ini get " + Sample("CONFIG.INI") + " Nope ANGLE").code, 1);
}

TEST_F(KwIni, SetKeepsEverythingElseInOrder) {
  const auto file = Temp("set.ini");
  WriteBytes(file, "! head comment\r\n[B]\r\nX=1\r\n! inner\r\nY=2\r\n\r\n[A]\r\nZ=3\r\n");
  ASSERT_EQ(Kw("ini set " + file.string() + " B Y 20").code, 0);
  ASSERT_EQ(Kw("ini set " + file.string() + " B NEW \"a b\"").code, 0);
  ASSERT_EQ(Kw("ini set " + file.string() + " C K v").code, 0);
  EXPECT_EQ(ReadBytes(file),
            "! head comment\r\n[B]\r\nX=1\r\n! inner\r\nY=20\r\nNEW=a b\r\n\r\n[A]\r\nZ=3\r\n[C]\r\nK=v\r\n");
  EXPECT_EQ(Kw("ini get " + file.string() + " B NEW").out, "a b\n");

  // The file keeps its encoding: UTF-16 stays UTF-16, ANSI stays ANSI.
  const auto wide = Temp("wide.ini");
  std::filesystem::copy_file(Sample("PROJEKT-UTF16.INI"), wide);
  ASSERT_EQ(Kw("ini set " + wide.string() + " Units ANGLE deg").code, 0);
  const std::string bytes = ReadBytes(wide);
  EXPECT_EQ(bytes.substr(0, 2), "\xFF\xFE");
  EXPECT_NE(bytes.find(std::string("A\0N\0G\0L\0E\0=\0d\0e\0g\0", 18)), std::string::npos);
  EXPECT_EQ(Kw("ini get " + wide.string() + " Project LEITER").out, "J\xC3\xBCrgen Ma\xC3\x9F\n");
  WriteBytes(Temp("ansi.ini"), "[S]\r\nA=Gr\xF6\xDF" "e\r\n");
  ASSERT_EQ(Kw("ini set " + Temp("ansi.ini").string() + " S B \xC3\xA4").code, 0);
  EXPECT_EQ(ReadBytes(Temp("ansi.ini")), "[S]\r\nA=Gr\xF6\xDF" "e\r\nB=\xE4\r\n");

  ASSERT_EQ(Kw("ini set " + Temp("fresh.ini").string() + " S K v").code, 0);
  EXPECT_EQ(ReadBytes(Temp("fresh.ini")), "\xEF\xBB\xBF[S]\r\nK=v\r\n");

  std::filesystem::permissions(file, std::filesystem::perms::owner_read);
  const KwRun locked = Kw("ini set " + file.string() + " A Z 4");
  EXPECT_EQ(locked.code, 1);
  EXPECT_NE(locked.out.find("read-only"), std::string::npos);
  EXPECT_NE(ReadBytes(file).find("Z=3"), std::string::npos);
  EXPECT_EQ(Kw("ini set " + file.string() + " A !K v").code, 2);  // would read back as a comment
}

TEST_F(KwIni, CheckReportsIgnoredLinesAndDuplicates) {
  const KwRun run = Kw("ini check " + Sample("DAMAGED.INI"));
  EXPECT_EQ(run.code, 1);
  EXPECT_NE(run.out.find(":1: ignored, before the first section"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find(":4: dropped duplicate key 'ANGLE': ANGLE=deg"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find(":7: ignored, no section name: [Broken"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find(":11: section [Empty] has no entries"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("2 sections, 4 entries, 1 comment lines, 7 problems"), std::string::npos) << run.out;
  const KwRun clean = Kw("ini check " + Sample("CONFIG.INI"));
  EXPECT_EQ(clean.code, 0) << clean.out;
  EXPECT_NE(clean.out.find("3 sections, 7 entries, 1 comment lines, 0 problems"), std::string::npos) << clean.out;
}

}  // namespace
