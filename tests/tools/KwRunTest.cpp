// `kw run`: a macro recorded with --record replays to the same bytes as the commands run by hand;
// a line that is no recorded step stops the run before any file is touched.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/KwRecordEvent.h"
#include "tools/KwToolRun.h"

namespace {

using kwtest::KwResult;

class KwRun : public kwtest::KwToolTest {};

TEST_F(KwRun, ReplayOfARecordedMacroGivesTheSameFile) {
  const auto byHand = CopySample("points.txt", "hand.txt");
  const auto replayed = CopySample("points.txt", "replay.txt");
  const auto second = CopySample("points.txt", "second.txt");
  const std::string original = ReadBytes(byHand);
  const std::string macro = Q(Temp("steps.mac"));
  const char* const steps[] = {
      " --term '[33-41]-100' --into 49-57 --picture '###.###' --where \"[44-46]='GP'\"",
      " --term '[9-20]/1000' --into 59-66 --picture '####.##' --lines 2-20",
  };
  for (const char* s : steps) ASSERT_EQ(Kw("calc " + Q(byHand) + s + " --record " + macro).exit, 0) << s;
  ASSERT_EQ(Kw("select " + Q(byHand) + " --where \"[44-46]='MP'\" --delete --record " + macro).exit, 0);
  ASSERT_EQ(Kw("sum " + Q(byHand) + " --column 1-6 --record " + macro).exit, 0);
  ASSERT_NE(ReadBytes(byHand), original);

  // One UTF-8 line per step: the two line choices record an unmark and a mark step each.
  const std::vector<std::string> lines = SplitLines(ReadBytes(Temp("steps.mac")));
  ASSERT_EQ(lines.size(), 8u);
  EXPECT_EQ(lines[0].rfind("EditLineSelect\x7f", 0), 0u) << lines[0];
  EXPECT_EQ(lines[2].rfind("EditColCalc\x7f", 0), 0u) << lines[2];
  EXPECT_EQ(lines[6].rfind("EditLineSelect\x7f", 0), 0u) << lines[6];
  EXPECT_EQ(lines[7].rfind("EditColSum\x7f", 0), 0u) << lines[7];

  const KwResult r = Kw("run " + macro + " " + Q(replayed) + " " + Q(second));
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(replayed), ReadBytes(byHand));
  EXPECT_EQ(ReadBytes(second), ReadBytes(byHand));
  EXPECT_EQ(ReadBytes(Temp("replay.BAK")), original);
}

TEST_F(KwRun, UnknownLineStopsBeforeAnyFileIsTouched) {
  const auto a = CopySample("points.txt", "a.txt");
  const auto b = CopySample("points.txt", "b.txt");
  const std::string original = ReadBytes(a);
  ASSERT_EQ(Kw("calc " + Q(a) + " --term '[33-41]*2' --into 49-57 -o - --record " + Q(Temp("ok.mac"))).exit, 0);
  const std::string good = ReadBytes(Temp("ok.mac"));
  ASSERT_FALSE(good.empty());
  // A good step, then a line of no kind, and a binary-character step, which is never read back.
  for (const std::string& bad : {std::string("EditNothing\x7f" "1\n"), std::string("EditBChar\x7f" "65\x7f" "0\n")}) {
    WriteBytes(Temp("bad.mac"), good + bad);
    const KwResult r = Kw("run " + Q(Temp("bad.mac")) + " " + Q(a) + " " + Q(b));
    EXPECT_EQ(r.exit, 2);
    EXPECT_NE(r.err.find("line 2"), std::string::npos) << r.err;
    EXPECT_EQ(ReadBytes(a), original);
    EXPECT_EQ(ReadBytes(b), original);
  }
  EXPECT_FALSE(std::filesystem::exists(Temp("a.BAK")));
  // A missing macro, an empty one, a missing file among good ones: that one fails, the others are done.
  EXPECT_EQ(Kw("run " + Q(Temp("none.mac")) + " " + Q(a)).exit, 1);
  WriteBytes(Temp("empty.mac"), "\n\n");
  EXPECT_EQ(Kw("run " + Q(Temp("empty.mac")) + " " + Q(a)).exit, 2);
  const KwResult r = Kw("run " + Q(Temp("ok.mac")) + " " + Q(Temp("gone.txt")) + " " + Q(b));
  EXPECT_EQ(r.exit, 1);
  EXPECT_NE(r.err.find("gone.txt"), std::string::npos);
  EXPECT_NE(ReadBytes(b), original);
  EXPECT_EQ(ReadBytes(Temp("b.BAK")), original);
}

TEST_F(KwRun, FailingStepLeavesThatFileAsItWas) {
  // The macro calculates over the lines where a code is GP; a file without one fails at that step.
  const auto points = CopySample("points.txt", "p.txt");
  ASSERT_EQ(Kw("calc " + Q(points) + " --term '[33-41]' --into 49-57 --where \"[44-46]='GP'\" --record " +
               Q(Temp("gp.mac"))).exit, 0);
  const auto other = Temp("other.txt");
  WriteBytes(other, "  1001   3512656.020 5403878.432  116.478  MP\n");
  const KwResult r = Kw("run " + Q(Temp("gp.mac")) + " " + Q(other));
  EXPECT_EQ(r.exit, 1);
  EXPECT_EQ(ReadBytes(other), "  1001   3512656.020 5403878.432  116.478  MP\n");
  EXPECT_FALSE(std::filesystem::exists(Temp("other.BAK")));
}

}  // namespace
