// `kw calc` and `kw sum` on copies of the bundled points and on small files in every encoding: the
// results in their columns, the file's form kept, the backup, and the failures that leave the file as
// it was.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdio>
#include <string>
#include <vector>

#include "app/StringTable.h"
#include "tools/KwToolRun.h"

namespace {

using kwtest::KwResult;

class KwCalc : public kwtest::KwToolTest {
 protected:
  // The height of a data line of samples/points.txt (columns 33-41).
  static double Height(const std::string& line) { return std::stod(line.substr(32, 9)); }
  static std::string Fixed(double value, int width, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%*.*f", width, decimals, value);
    return text;
  }
};

TEST_F(KwCalc, WritesTheHeightDifferenceIntoNewColumnsAndKeepsTheOldFileAsBackup) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  const KwResult r = Kw("calc " + Q(file) + " --term '[33-41]-100' --into 49-57 --picture '####.###' --lines 2-49");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(Temp("points.BAK")), before);
  const std::vector<std::string> in = SplitLines(before), out = SplitLines(ReadBytes(file));
  ASSERT_EQ(out.size(), in.size());
  EXPECT_EQ(out[0], in[0]);  // the header line lies outside the lines chosen
  for (size_t i = 1; i < in.size(); ++i) {
    std::string expected = in[i];
    expected.resize(48, ' ');
    EXPECT_EQ(out[i], expected + Fixed(Height(in[i]) - 100, 9, 3)) << "line " << i + 1;
  }
  EXPECT_NE(r.out.find("48 of 48 lines"), std::string::npos) << r.out;
}

TEST_F(KwCalc, WhereChoosesTheLinesAndOutputOptionsLeaveTheFileAlone) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  // -o -: the whole result on standard output, the report on standard error.
  KwResult r = Kw("calc " + Q(file) + " --term '[33-41]*2' --into 49-56 --picture '###.##' --where \"[44-46]='GP'\" -o -");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(file), before);
  EXPECT_FALSE(std::filesystem::exists(Temp("points.BAK")));
  const std::vector<std::string> in = SplitLines(before), out = SplitLines(r.out);
  ASSERT_EQ(out.size(), in.size());
  int changed = 0;
  for (size_t i = 0; i < in.size(); ++i) {
    if (in[i].size() == 45 && in[i].compare(43, 2, "GP") == 0) {
      std::string expected = in[i];
      expected.resize(48, ' ');
      EXPECT_EQ(out[i], expected + Fixed(Height(in[i]) * 2, 8, 2)) << "line " << i + 1;
      ++changed;
    } else {
      EXPECT_EQ(out[i], in[i]) << "line " << i + 1;
    }
  }
  EXPECT_GT(changed, 5);
  EXPECT_NE(r.err.find(std::to_string(changed) + " of"), std::string::npos) << r.err;
  const std::string printed = r.out;
  // -o OUT: the same text in another file.
  r = Kw("calc " + Q(file) + " --term '[33-41]*2' --into 49-56 --picture '###.##' --where \"[44-46]='GP'\" -o " +
         Q(Temp("out.txt")));
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_EQ(ReadBytes(Temp("out.txt")), printed);
  EXPECT_EQ(ReadBytes(file), before);
}

TEST_F(KwCalc, KeepsEncodingByteOrderMarkAndLineEnd) {
  struct Case {
    const char* name;
    int encoding;
    bool mark;
    const char16_t* eol;
  };
  const Case cases[] = {{"ansi-lf", 0, false, u"\n"},
                        {"utf8-bom-crlf", 1, true, u"\r\n"},
                        {"utf16le-crlf", 2, true, u"\r\n"},
                        {"utf16be-lf", 3, true, u"\n"}};
  const std::u16string kInput[] = {u"Höhe   12.5", u"Maß    1.25", u"Öl        3"};
  for (const Case& c : cases) {
    const auto file = Temp(std::string(c.name) + ".txt");
    {
      kw::KwFile out;
      ASSERT_TRUE(out.Open(kw::FromUtf8(file.string()), kw::KwFile::kWrite, c.eol[0], 0, c.encoding));
      out.SetEncoding(c.encoding, c.mark);
      ASSERT_TRUE(out.Write(kInput[0] + c.eol + kInput[1] + c.eol + kInput[2] + c.eol));
      ASSERT_TRUE(out.Close());
    }
    const std::string before = ReadBytes(file);
    const KwResult r = Kw("calc " + Q(file) + " --term '[5-11]*4' --into 13-19 --picture '###.##'");
    ASSERT_EQ(r.exit, 0) << c.name << ": " << r.err;
    const std::string after = ReadBytes(file);
    const size_t markBytes = !c.mark ? 0 : c.encoding == 1 ? 3 : 2;
    EXPECT_EQ(after.substr(0, markBytes), before.substr(0, markBytes)) << c.name;
    if (!c.mark) {
      EXPECT_EQ(after[0], 'H') << c.name;
    }
    const std::vector<std::u16string> lines = ReadLines(file);
    ASSERT_EQ(lines.size(), 3u) << c.name;
    for (size_t i = 0; i < 3; ++i) {
      std::u16string expected = kInput[i] + u" ";
      expected += kw::FromUtf8(Fixed(std::stod(kw::ToUtf8(kInput[i].substr(4))) * 4, 7, 2));
      EXPECT_EQ(lines[i], expected) << c.name << " line " << i + 1;
    }
    const std::string crlf = c.encoding == 2 ? std::string("\r\0\n\0", 4) : c.encoding == 3 ? std::string("\0\r\0\n", 4) : "\r\n";
    EXPECT_EQ(after.find(crlf) != std::string::npos, c.eol[0] == u'\r') << c.name;
    EXPECT_EQ(ReadBytes(Temp(std::string(c.name) + ".BAK")), before) << c.name;
  }
}

TEST_F(KwCalc, BadTermShowsItsMessageAndChangesNothing) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  for (const char* term : {"[33-41]*(2", "[33-41]+", "SIX([33-41])", "[41-33]"}) {
    const KwResult r = Kw("calc " + Q(file) + " --term '" + term + "' --into 49-57");
    EXPECT_NE(r.exit, 0) << term;
    EXPECT_NE(r.err.find("kw: "), std::string::npos) << term;
    EXPECT_EQ(ReadBytes(file), before) << term;
    EXPECT_FALSE(std::filesystem::exists(Temp("points.BAK"))) << term;
  }
  // The term's own message, not a generic one.
  const KwResult r = Kw("calc " + Q(file) + " --term '[33-41]*(2' --into 49-57");
  EXPECT_NE(r.err.find(kw::ToUtf8(kw::LoadString(2161)).substr(0, 20)), std::string::npos) << r.err;
}

TEST_F(KwCalc, ShortLinesAreSkippedAndCountedOverflowIsMarked) {
  const auto file = Temp("short.txt");
  WriteBytes(file, "a   1.5  x\nshort\nb  20.25  y\n\nc 9999.9  z");
  const KwResult r = Kw("calc " + Q(file) + " --term '[3-8]*10' --into 12-17 --picture '###.#'");
  ASSERT_EQ(r.exit, 0) << r.err;
  const std::vector<std::string> out = SplitLines(ReadBytes(file));
  ASSERT_EQ(out.size(), 5u);
  EXPECT_EQ(out[0], "a   1.5  x   15.0");
  EXPECT_EQ(out[1], "short");
  EXPECT_EQ(out[2], "b  20.25  y 202.5");
  EXPECT_EQ(out[3], "");
  // 99999.0 does not fit "###.#": the target is marked, not cut.
  EXPECT_EQ(out[4].substr(0, 11), "c 9999.9  z");
  EXPECT_EQ(out[4].size(), 17u);
  EXPECT_EQ(out[4].find_first_of("0123456789", 11), std::string::npos) << out[4];
  EXPECT_NE(r.out.find("2 skipped"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("1 too wide"), std::string::npos) << r.out;
}

TEST_F(KwCalc, FailuresLeaveTheFileAsItWas) {
  // A missing file, a folder.
  KwResult r = Kw("calc " + Q(Temp("absent.txt")) + " --term '[1-3]' --into 5-7");
  EXPECT_EQ(r.exit, 1);
  EXPECT_NE(r.err.find("no such file"), std::string::npos) << r.err;
  EXPECT_EQ(Kw("calc " + Q(dir_) + " --term '[1-3]' --into 5-7").exit, 1);
  // A read-only file is not saved and not renamed to its backup.
  const auto file = Temp("ro.txt");
  WriteBytes(file, "  1.5\n  2.5\n");
  ASSERT_EQ(chmod(file.c_str(), 0444), 0);
  r = Kw("calc " + Q(file) + " --term '[1-5]*2' --into 7-10");
  EXPECT_NE(r.exit, 0);
  EXPECT_NE(r.err.find("cannot save"), std::string::npos) << r.err;
  EXPECT_EQ(ReadBytes(file), "  1.5\n  2.5\n");
  EXPECT_FALSE(std::filesystem::exists(Temp("ro.BAK")));
  // Wrong arguments.
  const auto ok = Temp("ok.txt");
  WriteBytes(ok, "  1.5\n");
  for (const char* args : {"--term '[1-5]'", "--into 7-9", "--term '[1-5]' --into 9-7", "--term '[1-5]' --into 7-9 --lines 3",
                           "--term '[1-5]' --into 7-9 --lines 1-2 --where '[1]=1'", "--term '[1-5]' --into 7-9 --bogus"}) {
    EXPECT_EQ(Kw("calc " + Q(ok) + " " + args).exit, 2) << args;
    EXPECT_EQ(ReadBytes(ok), "  1.5\n") << args;
  }
  // --marked on a file just read: no line is marked.
  r = Kw("calc " + Q(ok) + " --term '[1-5]' --into 7-9 --marked");
  EXPECT_EQ(r.exit, 1);
  EXPECT_EQ(ReadBytes(ok), "  1.5\n");
}

TEST_F(KwCalc, NoBackupWhenTheEditParametersSaySo) {
  WriteBytes(Temp("KwUser.INI"), "[WinApp]\nMakeBackups=0\n");
  const auto file = Temp("nb.txt");
  WriteBytes(file, "  1.5\n");
  ASSERT_EQ(Kw("calc " + Q(file) + " --term '[1-5]*2' --into 7-9 --picture '#.#'").exit, 0);
  EXPECT_EQ(ReadBytes(file), "  1.5 3.0\n");
  EXPECT_FALSE(std::filesystem::exists(Temp("nb.BAK")));
}

TEST_F(KwCalc, SumAddsTheColumnOverTheChosenLines) {
  const auto file = CopySample("points.txt", "points.txt");
  const std::string before = ReadBytes(file);
  double all = 0, gp = 0;
  const std::vector<std::string> lines = SplitLines(before);
  for (size_t i = 1; i < lines.size(); ++i) {
    all += Height(lines[i]);
    if (lines[i].size() == 45 && lines[i].compare(43, 2, "GP") == 0) gp += Height(lines[i]);
  }
  KwResult r = Kw("sum " + Q(file) + " --column 33-41");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_NEAR(std::stod(r.out), all, 1e-6) << r.out;  // the header's "Hoehe" counts as nothing
  r = Kw("sum " + Q(file) + " --column 33-41 --where \"[44-46]='GP'\"");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_NEAR(std::stod(r.out), gp, 1e-6) << r.out;
  r = Kw("sum " + Q(file) + " --column 33-41 --lines 2-3");
  ASSERT_EQ(r.exit, 0) << r.err;
  EXPECT_NEAR(std::stod(r.out), Height(lines[1]) + Height(lines[2]), 1e-6) << r.out;
  EXPECT_EQ(ReadBytes(file), before);
  EXPECT_FALSE(std::filesystem::exists(Temp("points.BAK")));
  EXPECT_EQ(Kw("sum " + Q(file) + " --column 33").exit, 2);
}

}  // namespace
