// `kw find` and `kw replace`: positions printed against a plain search of the same lines, every
// match replaced, tables of pairs, and the file's form kept.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tools/KwToolRun.h"

namespace {

using kwtest::KwResult;

class KwFindReplace : public kwtest::KwToolTest {
 protected:
  // "line:column" of every occurrence of `text` in the lines, both from 1, without overlap.
  static std::string Positions(const std::vector<std::string>& lines, const std::string& text, bool firstOnly) {
    std::string out;
    for (size_t i = 0; i < lines.size(); ++i)
      for (size_t at = lines[i].find(text); at != std::string::npos; at = lines[i].find(text, at + text.size())) {
        out += std::to_string(i + 1) + ":" + std::to_string(at + 1) + "\n";
        if (firstOnly) return out;
      }
    return out;
  }
};

TEST_F(KwFindReplace, FindPrintsFirstOrEveryMatch) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::vector<std::string> lines = SplitLines(ReadBytes(file));
  KwResult r = Kw("find " + Q(file) + " GEB");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, Positions(lines, "GEB", true));
  r = Kw("find " + Q(file) + " GEB --all");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, Positions(lines, "GEB", false));
  EXPECT_GT(std::count(r.out.begin(), r.out.end(), '\n'), 1);
  // Case-blind by default: "geb" finds the same; --case does not.
  EXPECT_EQ(Kw("find " + Q(file) + " geb --all").out, r.out);
  EXPECT_EQ(Kw("find " + Q(file) + " geb --case").exit, 1);
  // Several words are one text with one blank between them.
  WriteBytes(Temp("words.txt"), "Gauss  Krueger\nsee Gauss Krueger\n");
  EXPECT_EQ(Kw("find " + Q(Temp("words.txt")) + " Gauss Krueger --all").out, "2:5\n");
  // Wildcards: "?" stands for any character.
  r = Kw("find " + Q(file) + " '54035?' --wildcards --all");
  ASSERT_EQ(r.exit, 0) << r.err;
  std::string expected;
  for (size_t i = 0; i < lines.size(); ++i)
    if (lines[i].find("54035") != std::string::npos) expected += std::to_string(i + 1) + ":" + std::to_string(lines[i].find("54035") + 1) + "\n";
  EXPECT_EQ(r.out, expected);
  r = Kw("find " + Q(file) + " NOWHERE");
  EXPECT_EQ(r.exit, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(Kw("find " + Q(file)).exit, 2);
}

TEST_F(KwFindReplace, ReplaceChangesEveryMatchAndKeepsTheForm) {
  const auto file = Temp("dos.txt");
  WriteBytes(file, "GP 1\r\nFP gp GP\r\nno match\r\nGPGP");  // no line end at the end
  KwResult r = Kw("replace " + Q(file) + " GP Grenzpunkt");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(file), "Grenzpunkt 1\r\nFP Grenzpunkt Grenzpunkt\r\nno match\r\nGrenzpunktGrenzpunkt");
  EXPECT_NE(r.out.find("5 replaced"), std::string::npos) << r.out;
  EXPECT_EQ(ReadBytes(Temp("dos.BAK")), "GP 1\r\nFP gp GP\r\nno match\r\nGPGP");
  r = Kw("replace " + Q(file) + " Grenzpunkt GP --case -o -");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, "GP 1\r\nFP GP GP\r\nno match\r\nGPGP");
  // Nothing to replace: the file stays, exit 1.
  const std::string before = ReadBytes(file);
  EXPECT_EQ(Kw("replace " + Q(file) + " XYZ abc").exit, 1);
  EXPECT_EQ(ReadBytes(file), before);
  EXPECT_EQ(Kw("replace " + Q(file) + " onlyone").exit, 2);
}

TEST_F(KwFindReplace, TableReplacesEachPair) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  WriteBytes(Temp("codes.tab"), "GEB\tHaus\nMP\tMesspunkt\n");
  const KwResult r = Kw("replace " + Q(file) + " --table " + Q(Temp("codes.tab")) + " --case");
  ASSERT_EQ(r.exit, 0) << r.err;
  std::string expected;
  for (std::string line : SplitLines(before)) {
    if (line.size() > 43 && line.substr(43) == "GEB") line = line.substr(0, 43) + "Haus";
    if (line.size() > 43 && line.substr(43) == "MP") line = line.substr(0, 43) + "Messpunkt";
    expected += line + "\n";
  }
  EXPECT_NE(expected, before);
  EXPECT_EQ(ReadBytes(file), expected);
  EXPECT_EQ(Kw("replace " + Q(file) + " --table " + Q(Temp("none.tab"))).exit, 1);
}

}  // namespace
