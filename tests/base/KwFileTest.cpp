#include "base/KwFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <random>
#include <string>
#include <vector>

#include "base/CodePages.h"
#include "base/FileOps.h"
#include "support/TestSupport.h"

using namespace kw;

namespace {

class KwFileTest : public kwtest::PlatformTest {
 protected:
  std::vector<std::u16string> ReadLines(const std::string& file, int encoding = -1, char16_t lineEnd = 13,
                                        char16_t eofChar = 26) {
    KwFile f;
    EXPECT_TRUE(f.Open(TempName(file), KwFile::kRead, lineEnd, eofChar, encoding));
    std::vector<std::u16string> lines;
    std::u16string line;
    while (f.ReadLine(line)) lines.push_back(line);
    return lines;
  }

  std::u16string ReadAll(const std::string& file, int encoding = -1, int64_t block = 64000) {
    KwFile f;
    EXPECT_TRUE(f.Open(TempName(file), KwFile::kRead, 13, 26, encoding));
    std::u16string text;
    std::vector<char16_t> buf(static_cast<size_t>(block));
    for (int64_t n; (n = f.ReadBlock(buf.data(), block)) > 0;) text.append(buf.data(), static_cast<size_t>(n));
    return text;
  }
};

const std::u16string kGerman = u"Gr\u00FC\u00DFe aus K\u00F6ln \u00C4\u00D6\u00DC\u00E4\u00F6\u00FC";

}  // namespace

TEST_F(KwFileTest, ReadsEveryEncodingWithAndWithoutMark) {
  struct Row {
    const char* name;
    std::string bytes;
    int encoding;      // given to Open
    int detected;      // GetEncoding after Open
    bool mark;
  };
  const Row rows[] = {
      {"ansi", "Gr\xFC\xDF" "e\r\nx", -1, 0, false},
      {"utf8 mark", "\xEF\xBB\xBFGr\xC3\xBC\xC3\x9F" "e\r\nx", -1, 1, true},
      {"utf8 given", "Gr\xC3\xBC\xC3\x9F" "e\r\nx", 1, 1, false},
      {"utf8 given, mark skipped", "\xEF\xBB\xBFGr\xC3\xBC\xC3\x9F" "e\r\nx", 1, 1, true},
      {"utf16le mark", std::string("\xFF\xFEG\0r\0\xFC\0\xDF\0e\0\r\0\n\0x\0", 18), -1, 2, true},
      {"utf16le given", std::string("G\0r\0\xFC\0\xDF\0e\0\r\0\n\0x\0", 16), 2, 2, false},
      {"utf16be mark", std::string("\xFE\xFF\0G\0r\0\xFC\0\xDF\0e\0\r\0\n\0x", 18), -1, 3, true},
      {"utf16be given", std::string("\0G\0r\0\xFC\0\xDF\0e\0\r\0\n\0x", 16), 3, 3, false},
      {"dos", "Gr\x81\xE1" "e\r\nx", 4, 4, false},
  };
  for (const Row& row : rows) {
    WriteBytes(Temp("in.txt"), row.bytes);
    KwFile f;
    ASSERT_TRUE(f.Open(TempName("in.txt"), KwFile::kRead, 13, 26, row.encoding)) << row.name;
    EXPECT_EQ(f.GetEncoding(), row.detected) << row.name;
    EXPECT_EQ(f.HasByteOrderMark(), row.mark) << row.name;
    f.Close();
    EXPECT_EQ(ReadLines("in.txt", row.encoding), (std::vector<std::u16string>{u"Gr\u00FC\u00DFe", u"x"})) << row.name;
    EXPECT_EQ(ReadAll("in.txt", row.encoding), u"Gr\u00FC\u00DFe\r\nx") << row.name;
  }
}

TEST_F(KwFileTest, LineEndsAndEndOfFileCharacter) {
  WriteBytes(Temp("l.txt"), "a\r\nb\rc\nd\n\r\ne");
  EXPECT_EQ(ReadLines("l.txt"), (std::vector<std::u16string>{u"a", u"b", u"c", u"d", u"", u"e"}));
  EXPECT_EQ(ReadLines("l.txt", -1, 10), (std::vector<std::u16string>{u"a", u"b", u"c", u"d", u"", u"e"}));
  EXPECT_EQ(ReadLines("l.txt", -1, u';'), (std::vector<std::u16string>{u"a\r\nb\rc\nd\n\r\ne"}));
  WriteBytes(Temp("s.txt"), "x;y;;z;");
  EXPECT_EQ(ReadLines("s.txt", -1, u';'), (std::vector<std::u16string>{u"x", u"y", u"", u"z"}));
  // Ctrl-Z ends line reading, not block reading.
  WriteBytes(Temp("z.txt"), "a\r\nb\x1A" "c\r\n");
  EXPECT_EQ(ReadLines("z.txt"), (std::vector<std::u16string>{u"a", u"b"}));
  EXPECT_EQ(ReadLines("z.txt", -1, 13, 0), (std::vector<std::u16string>{u"a", u"b\x1A" u"c"}));
  EXPECT_EQ(ReadAll("z.txt"), u"a\r\nb\x1A" u"c\r\n");
  WriteBytes(Temp("e.txt"), "");
  EXPECT_TRUE(ReadLines("e.txt").empty());
  WriteBytes(Temp("n.txt"), "\r\n");
  EXPECT_EQ(ReadLines("n.txt"), (std::vector<std::u16string>{u""}));
}

TEST_F(KwFileTest, CrLfSplitAcrossBlocksIsOneLineEnd) {
  // The CR is the last byte of the first internal block.
  std::string bytes(262143, 'x');
  bytes += "\r\ny";
  WriteBytes(Temp("big.txt"), bytes);
  const auto lines = ReadLines("big.txt");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].size(), 262143u);
  EXPECT_EQ(lines[1], u"y");
}

TEST_F(KwFileTest, BlocksKeepCharactersSplitBetweenReads) {
  // Multibyte characters at every offset around the internal block border, read in odd block sizes.
  std::string utf8;
  std::u16string expected;
  while (utf8.size() < 600000) {
    utf8 += "ab\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
    expected += u"ab\u00E4\u20AC\U0001F600";
  }
  WriteBytes(Temp("u.txt"), utf8);
  for (int64_t block : {1, 2, 3, 7, 64000, 1000000}) EXPECT_EQ(ReadAll("u.txt", 1, block), expected) << block;
  std::string utf16;
  for (char16_t c : expected) {
    utf16 += static_cast<char>(c >> 8);
    utf16 += static_cast<char>(c & 0xFF);
  }
  WriteBytes(Temp("w.txt"), std::string("\xFE\xFF", 2) + utf16 + "\x41");  // odd trailing byte
  EXPECT_EQ(ReadAll("w.txt", -1, 999), expected + u"\uFFFD");
}

TEST_F(KwFileTest, WritesMarkLineEndsAndEncodings) {
  struct Row {
    int encoding;
    bool mark;
    std::string bytes;
  };
  const Row rows[] = {
      {0, true, "\xC4\r\n\x80\r\n"},
      {1, true, "\xEF\xBB\xBF\xC3\x84\r\n\xE2\x82\xAC\r\n"},
      {1, false, "\xC3\x84\r\n\xE2\x82\xAC\r\n"},
      {2, true, std::string("\xFF\xFE\xC4\0\r\0\n\0\xAC\x20\r\0\n\0", 14)},
      {3, false, std::string("\0\xC4\0\r\0\n\x20\xAC\0\r\0\n", 12)},
      {4, true, "\x8E\r\n#\r\n"},
  };
  for (const Row& row : rows) {
    KwFile f;
    ASSERT_TRUE(f.Open(TempName("out.txt"), KwFile::kWrite));
    ASSERT_TRUE(f.SetEncoding(row.encoding, row.mark));
    EXPECT_TRUE(f.WriteLine(u"\u00C4"));
    EXPECT_TRUE(f.WriteLine(u"\u20AC"));
    EXPECT_FALSE(f.SetEncoding(0)) << "too late after a write";
    EXPECT_EQ(f.UsedDefaultChar(), row.encoding == 4);
    EXPECT_TRUE(f.Close());
    EXPECT_EQ(ReadBytes(Temp("out.txt")), row.bytes) << row.encoding << row.mark;
  }
  KwFile lf;
  ASSERT_TRUE(lf.Open(TempName("lf.txt"), KwFile::kWrite, 10));
  lf.WriteLine(u"a");
  lf.Write(u"b", 1);
  lf.Close();
  EXPECT_EQ(ReadBytes(Temp("lf.txt")), "a\nb");
}

TEST_F(KwFileTest, EmptyFileMarkSetEofAndAppend) {
  KwFile f;
  ASSERT_TRUE(f.Open(TempName("e.txt"), KwFile::kWrite, 13, 26, 1));
  ASSERT_TRUE(f.Close());
  EXPECT_EQ(ReadBytes(Temp("e.txt")), "\xEF\xBB\xBF");  // an empty UTF-8 file keeps its mark
  ASSERT_TRUE(f.Open(TempName("e.txt"), KwFile::kRead));
  EXPECT_EQ(f.GetEncoding(), 1);
  EXPECT_TRUE(f.HasByteOrderMark());
  char16_t buf[4];
  EXPECT_EQ(f.ReadBlock(buf, 4), 0);

  WriteBytes(Temp("t.txt"), "a long old text that is longer");
  ASSERT_TRUE(f.Open(TempName("t.txt"), KwFile::kWrite, 13, 26, 2));
  f.Write(u"ab", 2);
  ASSERT_TRUE(f.SetEOF());
  EXPECT_EQ(ReadBytes(Temp("t.txt")), std::string("\xFF\xFE" "a\0b\0", 6));
  f.Write(u"c", 1);
  ASSERT_TRUE(f.Close());
  EXPECT_EQ(ReadBytes(Temp("t.txt")), std::string("\xFF\xFE" "a\0b\0c\0", 8));

  ASSERT_TRUE(f.Open(TempName("a.txt"), KwFile::kAppend, 13, 26, 1));
  f.WriteLine(u"\u00E4");
  f.Close();
  ASSERT_TRUE(f.Open(TempName("a.txt"), KwFile::kAppend));  // encoding taken from the mark, no second mark
  EXPECT_EQ(f.GetEncoding(), 1);
  f.WriteLine(u"\u00F6");
  f.Close();
  EXPECT_EQ(ReadBytes(Temp("a.txt")), "\xEF\xBB\xBF\xC3\xA4\r\n\xC3\xB6\r\n");
}

TEST_F(KwFileTest, ReadingAndWritingUnchangedKeepsEveryByte) {
  std::mt19937 random(7);
  std::string noise(70000, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  const std::string german = "Gr\xC3\xBC\xC3\x9F" "e\r\n";
  struct Row {
    int encoding;
    std::string bytes;
  };
  const Row rows[] = {
      {0, noise},
      {4, noise},
      {1, noise},                                   // invalid UTF-8 everywhere
      {1, "\xEF\xBB\xBF" + german + noise},
      {1, german + "\xF0\x9F\x98"},                 // truncated at the end
      {2, "\xFF\xFE" + noise},                      // lone surrogates included
      {3, noise},
  };
  for (const Row& row : rows) {
    WriteBytes(Temp("r.txt"), row.bytes);
    KwFile in;
    ASSERT_TRUE(in.Open(TempName("r.txt"), KwFile::kRead, 13, 26, row.encoding));
    const bool mark = in.HasByteOrderMark();
    std::u16string text;
    char16_t buf[4097];
    for (int64_t n; (n = in.ReadBlock(buf, 4097)) > 0;) text.append(buf, static_cast<size_t>(n));
    in.Close();
    KwFile out;
    ASSERT_TRUE(out.Open(TempName("w.txt"), KwFile::kWrite));
    out.SetEncoding(row.encoding, mark);
    // Written in pieces that split surrogate pairs.
    for (size_t at = 0; at < text.size(); at += 1001) out.Write(text.data() + at, std::min<int64_t>(1001, static_cast<int64_t>(text.size() - at)));
    ASSERT_TRUE(out.Close());
    EXPECT_EQ(ReadBytes(Temp("w.txt")), row.bytes) << "encoding " << row.encoding;
  }
}

TEST_F(KwFileTest, FailuresReportTheSystemError) {
  KwFile f;
  EXPECT_FALSE(f.Open(TempName("missing.txt"), KwFile::kRead));
  EXPECT_EQ(platform_.GetLastError(), static_cast<uint32_t>(ENOENT));
  EXPECT_FALSE(f.IsOpen());
  std::u16string line;
  EXPECT_FALSE(f.ReadLine(line));
  EXPECT_FALSE(f.Write(u"x", 1));
  EXPECT_FALSE(f.Open(TempName("x.txt"), 3));
  EXPECT_EQ(platform_.GetLastError(), static_cast<uint32_t>(EINVAL));
  EXPECT_FALSE(f.Open(TempName("no-folder/x.txt"), KwFile::kWrite));
  EXPECT_EQ(platform_.GetLastError(), static_cast<uint32_t>(ENOENT));
  EXPECT_FALSE(f.Open(dir_.u16string(), KwFile::kRead)) << "a folder opens but cannot be read";
  EXPECT_FALSE(f.IsOpen());
}

TEST_F(KwFileTest, ReadOnlyFileIsNotWritten) {
  KwFile f;
  WriteBytes(Temp("ro.txt"), "old");
  ASSERT_TRUE(SetReadOnly(TempName("ro.txt")));
  if (KwFile probe; probe.Open(TempName("ro.txt"), KwFile::kWrite)) GTEST_SKIP() << "running with rights to write anything";
  EXPECT_EQ(platform_.GetLastError(), static_cast<uint32_t>(EACCES));
  EXPECT_EQ(ReadBytes(Temp("ro.txt")), "old");
  ASSERT_TRUE(f.Open(TempName("ro.txt"), KwFile::kRead));
  EXPECT_FALSE(f.Write(u"x", 1)) << "a file opened for reading takes no text";
  EXPECT_EQ(f.GetName(), TempName("ro.txt"));
}
