// `kw select` on copies of the bundled points: printing, deleting and keeping the lines a logical
// term selects, in the file's own form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/KwToolRun.h"

namespace {

using kwtest::KwResult;

class KwSelect : public kwtest::KwToolTest {
 protected:
  // Whether a data line of samples/points.txt has code GP and a height above `height`.
  static bool IsHighGP(const std::string& line, double height) {
    return line.size() == 45 && line.compare(43, 2, "GP") == 0 && std::stod(line.substr(32, 9)) > height;
  }
  static std::string Join(const std::vector<std::string>& lines) {
    std::string out;
    for (const auto& line : lines) out += line + "\n";
    return out;
  }
};

TEST_F(KwSelect, PrintDeleteAndKeepSplitTheLinesByTheTerm) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  std::vector<std::string> selected, others;
  for (const std::string& line : SplitLines(before)) (IsHighGP(line, 112) ? selected : others).push_back(line);
  ASSERT_GT(selected.size(), 3u);
  ASSERT_GT(others.size(), 3u);
  const std::string where = " --where \"[44-46]='GP' AND [33-41]>112\"";

  KwResult r = Kw("select " + Q(file) + where);  // --print is the default
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(r.out, Join(selected));
  EXPECT_EQ(ReadBytes(file), before);
  EXPECT_FALSE(std::filesystem::exists(Temp("points.BAK")));

  r = Kw("select " + Q(file) + where + " --keep -o " + Q(Temp("kept.txt")));
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(Temp("kept.txt")), Join(selected));
  EXPECT_EQ(ReadBytes(file), before);

  r = Kw("select " + Q(file) + where + " --delete");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(file), Join(others));
  EXPECT_EQ(ReadBytes(Temp("points.BAK")), before);
  EXPECT_NE(r.out.find(std::to_string(selected.size()) + " of"), std::string::npos) << r.out;
}

TEST_F(KwSelect, KeepsUtf16AndCrLf) {
  const auto file = Temp("u16.txt");
  {
    kw::KwFile out;
    ASSERT_TRUE(out.Open(kw::FromUtf8(file.string()), kw::KwFile::kWrite, 13, 0, 2));
    out.SetEncoding(2, true);
    ASSERT_TRUE(out.Write(u"Köln     3\r\nMünster 12\r\nBonn     7\r\n"));
    ASSERT_TRUE(out.Close());
  }
  const KwResult r = Kw("select " + Q(file) + " --where '[8-10]>5' --delete");
  ASSERT_EQ(r.exit, 0) << r.err;
  const std::string after = ReadBytes(file);
  EXPECT_EQ(after.substr(0, 2), "\xFF\xFE");
  EXPECT_NE(after.find(std::string("\r\0\n\0", 4)), std::string::npos);
  const std::vector<std::u16string> lines = ReadLines(file);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], u"Köln     3");
}

TEST_F(KwSelect, BadTermOrNoMatchChangesNothing) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  KwResult r = Kw("select " + Q(file) + " --where \"[44-46]='GP' AND (\" --delete");
  EXPECT_NE(r.exit, 0);
  EXPECT_NE(r.err.find("kw: "), std::string::npos);
  r = Kw("select " + Q(file) + " --where \"[44-46]='XX'\"");
  EXPECT_EQ(r.exit, 1);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(Kw("select " + Q(file) + " --where '[1]=1' --print --keep").exit, 2);
  EXPECT_EQ(Kw("select " + Q(file) + " --delete").exit, 2);
  EXPECT_EQ(ReadBytes(file), before);
  EXPECT_FALSE(std::filesystem::exists(Temp("points.BAK")));
}

}  // namespace
