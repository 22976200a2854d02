// `kw list` end to end on the bundled survey points and on small files in other encodings: the
// report's rows, order and alignment, filters, widths, and clear failures for bad input.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "support/TestSupport.h"

namespace {

class KwList : public kwtest::PlatformTest {
 protected:
  static std::string Points() { return std::string(KW_SOURCE_DIR) + "/samples/points.csv"; }
  KwRun Kw(const std::string& args) { return RunKw("list " + args); }
  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  }
  // The first blank-separated word of each line.
  static std::vector<std::string> FirstWords(const std::string& text) {
    std::vector<std::string> words;
    for (const auto& line : Lines(text)) words.push_back(line.substr(0, line.find(' ')));
    return words;
  }
};

TEST_F(KwList, SortsTheSampleByHeightWithEmptyCellsFirst) {
  const KwRun r = Kw(Quote(Points()) + " --header --type 4=number --sort 4");
  ASSERT_EQ(r.code, 0) << r.err;
  const auto lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 28u);  // heading, rule, 26 points
  EXPECT_EQ(lines[0].substr(0, 5), "Punkt");
  EXPECT_EQ(lines[1].substr(0, 6), "----- ");
  // Four points have no height; then the lowest, 98,509; the highest, 114,328, last.
  const auto words = FirstWords(r.out);
  EXPECT_EQ(std::vector<std::string>(words.begin() + 2, words.begin() + 6),
            (std::vector<std::string>{"1049", "1084", "1119", "2020"}));  // in file order
  EXPECT_NE(lines[6].find(" 98,509 "), std::string::npos) << lines[6];
  EXPECT_EQ(words[6], "2022");
  EXPECT_NE(lines[27].find("114,328"), std::string::npos) << lines[27];
  // Numbers are right-aligned: every row's height ends in the same column.
  EXPECT_EQ(lines[6].find("98,509") + 6, lines[27].find("114,328") + 7);

  const KwRun down = Kw(Quote(Points()) + " --header --type 4=number --sort 4,desc");
  ASSERT_EQ(down.code, 0) << down.err;
  EXPECT_EQ(FirstWords(down.out)[2], "1000");
  EXPECT_EQ(FirstWords(down.out)[23], "2022");
}

TEST_F(KwList, FiltersAndDateSortsCombine) {
  const KwRun r = Kw(Quote(Points()) + " --header --type 6=date:%d.%m.%Y --sort 6 --filter '5=GP;FP' --filter '4=100,105'");
  ASSERT_EQ(r.code, 0) << r.err;
  const auto words = FirstWords(r.out);
  // GP or FP, height 100 to 105, by date: 1021 (17.08.2023), 1105 (12.10.2023), 2021 (25.01.2024),
  // 1028 (25.12.2024).
  EXPECT_EQ(words, (std::vector<std::string>{"Punkt", "-----", "1021", "1105", "2021", "1028"}));
  const KwRun wild = Kw(Quote(Points()) + " --filter '7=*Müller' --sort 1");
  ASSERT_EQ(wild.code, 0) << wild.err;
  EXPECT_EQ(FirstWords(wild.out), (std::vector<std::string>{"1028", "1049", "1091", "2019", "2020", "2022"}));
}

TEST_F(KwList, WidthsCutTheColumns) {
  const KwRun r = Kw(Quote(Points()) + " --sort 1 --widths '0|32|8|8|8|8|8|8|'");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(Lines(r.out)[0], "1000  5  5  1  B  0  a");
}

TEST_F(KwList, ReadsOtherEncodingsAndSeparators) {
  // UTF-16 LE with its mark, tab-separated: guessed separator, text sort in the collation.
  const std::u16string text = u"\uFEFFZ\u00fcrich\t3\r\nAachen\t1\r\n\u00c4gypten\t2\r\n";
  std::string bytes;
  for (const char16_t c : text) bytes += static_cast<char>(c & 0xFF), bytes += static_cast<char>(c >> 8);
  WriteBytes(Temp("tabs.txt"), bytes);
  const KwRun r = Kw(Quote(Temp("tabs.txt").string()) + " --sort 1");
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, "Aachen   1\n\xc3\x84gypten  2\nZ\xc3\xbcrich   3\n");
  // An ANSI file with "|" given as the separator.
  WriteBytes(Temp("bar.txt"), "b|\xe4\r\na|x\r\n");
  const KwRun bar = Kw(Quote(Temp("bar.txt").string()) + " --separator '|' --sort 1,desc");
  ASSERT_EQ(bar.code, 0) << bar.err;
  EXPECT_EQ(bar.out, "b  \xc3\xa4\na  x\n");
}

struct BadInput {
  std::string args;
  std::string message;
};

TEST_F(KwList, BadInputEndsWithAClearMessage) {
  const std::string p = Quote(Points());
  const BadInput cases[] = {
      {"/no/such/file.csv", "cannot open /no/such/file.csv"},
      {"", "exactly one FILE"},
      {p + " --sort 8", "bad column number '8' (the file has 7 columns"},
      {p + " --sort 0", "bad column number '0'"},
      {p + " --type 2=float", "bad type 'float'"},
      {p + " --type x=number", "bad column number 'x'"},
      {p + " --type 4=number --filter 4=-5", "Leading or trailing comma or hyphen not allowed"},
      {p + " --filter 1=3-1", "First value (from) must not exceed the second (to)"},
      {p + " --widths '0|10|'", "--widths wants"},
      {p + " --separator ab", "--separator wants one character"},
  };
  for (const auto& c : cases) {
    const KwRun r = Kw(c.args);
    EXPECT_NE(r.code, 0) << c.args;
    EXPECT_NE(r.err.find(c.message), std::string::npos) << c.args << ": " << r.err;
    EXPECT_TRUE(r.out.empty()) << c.args;
  }
}

}  // namespace
