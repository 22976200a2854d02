// Runs `kw sort` on the bundled samples in every encoding and on small files for its options.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/KwFile.h"
#include "base/Text.h"
#include "support/TestSupport.h"

namespace {

class KwSort : public kwtest::PlatformTest {
 protected:
  KwRun Kw(const std::string& args) { return RunKw("sort " + args); }

  // The lines of a file as the library reads them (encoding from the mark unless given).
  static std::vector<std::u16string> Lines(const std::string& path, int encoding = -1) {
    kw::KwFile file;
    EXPECT_TRUE(file.Open(kw::FromUtf8(path), kw::KwFile::kRead, 13, 26, encoding)) << path;
    std::vector<std::u16string> lines;
    for (std::u16string line; file.ReadLine(line);) lines.push_back(line);
    return lines;
  }

  // Sorts a small UTF-8 file (no mark: read as ANSI, which keeps these ASCII lines) and returns stdout.
  std::string SortText(const std::string& text, const std::string& options) {
    WriteBytes(Temp("in.txt"), text);
    const KwRun r = Kw(Quote(Temp("in.txt").string()) + " " + options);
    EXPECT_EQ(r.code, 0) << r.err;
    return r.out;
  }
};

struct SampleCase {
  const char* file;
  const char* option;
  int encoding;
  const char* mark;
};

const SampleCase kSamples[] = {
    {"german-ansi.txt", "", 0, ""},
    {"german-utf8.txt", "", 1, "\xEF\xBB\xBF"},
    {"german-utf16le.txt", "", 2, "\xFF\xFE"},
    {"german-utf16be.txt", "", 3, "\xFE\xFF"},
    {"german-dos.txt", "--encoding dos", 4, ""},
};

TEST_F(KwSort, SortsTheSamplesInEveryEncoding) {
  std::vector<std::u16string> first;
  for (const SampleCase& c : kSamples) {
    const std::string out = Temp(std::string("sorted-") + c.file).string();
    const KwRun r = Kw(Quote(Sample(c.file)) + " " + c.option + " -o " + Quote(out));
    ASSERT_EQ(r.code, 0) << c.file << ": " << r.err;
    const std::string bytes = ReadBytes(out);
    EXPECT_EQ(bytes.compare(0, std::string(c.mark).size(), c.mark), 0) << c.file;  // the mark is kept
    EXPECT_EQ(bytes.size(), ReadBytes(Sample(c.file)).size()) << c.file;  // same lines, same CR LF ends
    // The library's collation, stably: what a stable sort of the sample's lines by StrCompare gives.
    std::vector<std::u16string> expected = Lines(Sample(c.file), c.encoding);
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto& a, const auto& b) { return kw::StrCompare(a, b, 0, 0, 0) < 0; });
    const std::vector<std::u16string> sorted = Lines(out, c.encoding);
    EXPECT_EQ(sorted, expected) << c.file;
    // Every encoding holds the same text, so every sorted file holds the same lines.
    if (first.empty()) first = sorted;
    EXPECT_EQ(sorted, first) << c.file;
  }
  // Standard output gets the same bytes as -o, mark included.
  const KwRun r = Kw(Quote(Sample("german-utf16le.txt")));
  EXPECT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, ReadBytes(Temp("sorted-german-utf16le.txt")));
}

TEST_F(KwSort, CollationAndStability) {
  // Case only breaks ties; without --case, "apple" and "Apple" are equal and keep their order.
  EXPECT_EQ(SortText("b\r\napple\r\nApple\r\nA\r\n", ""), "A\r\napple\r\nApple\r\nb\r\n");
  EXPECT_EQ(SortText("b\r\napple\r\nApple\r\nA\r\n", "--case"), "A\r\nApple\r\napple\r\nb\r\n");
  EXPECT_EQ(SortText("b\r\napple\r\nApple\r\nA\r\n", "--reverse"), "b\r\napple\r\nApple\r\nA\r\n");
  // "_" sorts as a blank.
  EXPECT_EQ(SortText("a b\na_a\na c\n", ""), "a_a\na b\na c\n");
}

TEST_F(KwSort, NumericColumnsAndBlanks) {
  // Numbers first by value (comma as point), then the other lines.
  EXPECT_EQ(SortText("10\nx\n9\n-1,5\n 2\n", "--numeric"), "-1,5\n 2\n9\n10\nx\n");
  EXPECT_EQ(SortText("10\n9\n", ""), "10\n9\n");
  EXPECT_EQ(SortText("  b\n a\nc\n", "--skip-blanks"), " a\n  b\nc\n");
  EXPECT_EQ(SortText("  b\n a\nc\n", ""), "  b\n a\nc\n");
  // Only columns 3 to 4 count; equal keys keep the order of the file.
  EXPECT_EQ(SortText("x1bb\ny2aa\nz3bb\nw4\n", "--column 3-4"), "w4\ny2aa\nx1bb\nz3bb\n");
  EXPECT_EQ(SortText("x1bb\ny2aa\nz3bb\n", "--column 3- --reverse"), "x1bb\nz3bb\ny2aa\n");
}

TEST_F(KwSort, LineEndsAndEndOfFile) {
  EXPECT_EQ(SortText("b\na", ""), "a\nb\n");            // a last line without its end gets one
  EXPECT_EQ(SortText("b\r\na\r\n\x1A", ""), "a\r\nb\r\n\x1A");  // Ctrl-Z stays at the end
  EXPECT_EQ(SortText("", ""), "");
  // The file is read in blocks of 2^17 units; a CR LF split between two of them is still one line end.
  const std::string longLine(131071, 'b');
  EXPECT_EQ(SortText(longLine + "\r\na\r\n", ""), "a\r\n" + longLine + "\r\n");
}

TEST_F(KwSort, LargeFilesEqualAStableSortByStrCompare) {
  // Enough lines for a progress pane and the bucket path; short lines with umlauts, case variants and many equal ones.
  const char* const words[] = {"M\xFCller", "Mueller", "mueller", "Ma\xDF" "e", "Masse", "\xC4pfel", "apfel", "Zahl", "zahl"};
  std::string text;
  std::vector<std::u16string> lines;
  uint32_t seed = 12345;
  for (int i = 0; i < 210000; ++i) {
    seed = seed * 1103515245u + 12345u;
    std::string line = std::string(words[(seed >> 16) % 9]) + " " + std::to_string((seed >> 8) % 50) + "x";
    text += line + "\r\n";
    lines.push_back(kw::GetGenericString(line));
  }
  WriteBytes(Temp("big.txt"), text);
  const KwRun r = Kw(Quote(Temp("big.txt").string()) + " -o " + Quote(Temp("big.out").string()));
  ASSERT_EQ(r.code, 0) << r.err;
  std::stable_sort(lines.begin(), lines.end(), [](const auto& a, const auto& b) { return kw::StrCompare(a, b, 0, 0, 0) < 0; });
  EXPECT_EQ(Lines(Temp("big.out").string(), 0), lines);
}

TEST_F(KwSort, BadArguments) {
  WriteBytes(Temp("in.txt"), "a\n");
  const std::string in = Quote(Temp("in.txt").string());
  EXPECT_EQ(Kw(in + " --column 0-3").code, 2);
  EXPECT_EQ(Kw(in + " --column 5-3").code, 2);
  EXPECT_EQ(Kw(in + " --encoding latin9").code, 2);
  EXPECT_EQ(Kw(in + " --bogus").code, 2);
  EXPECT_EQ(Kw("").code, 2);
  const KwRun missing = Kw(Quote(Temp("missing.txt").string()));
  EXPECT_EQ(missing.code, 1);
  EXPECT_NE(missing.err.find("cannot open"), std::string::npos);
}

}  // namespace
