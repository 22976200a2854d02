// The text buffer's files: reading in every encoding and mode, saving byte for byte, the save questions,
// backups, safe saving when writing fails, bad input, encoding changes and external changes.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "app/AppFixture.h"
#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/FileOps.h"
#include "editor/KwEditBase.h"
#include "editor/EditTestSupport.h"
#include "support/TestSupport.h"

namespace {

namespace fs = std::filesystem;
using kw::KwEditBase;

std::u16string Name(const fs::path& p) { return kw::FromUtf8(p.string()); }

class EditBaseFileTest : public kwtest::PlatformTest {
 protected:
  // Files left in the temporary folder other than the named ones (a leftover temporary file shows here).
  std::vector<std::string> Others(std::initializer_list<std::string> known) const {
    std::vector<std::string> others;
    for (const auto& e : fs::directory_iterator(dir_)) {
      const std::string n = e.path().filename().string();
      if (std::find(known.begin(), known.end(), n) == known.end()) others.push_back(n);
    }
    return others;
  }
  // The message id of the boxes shown, recognised by their texts.
  std::vector<uint32_t> BoxIds() const {
    std::vector<uint32_t> ids;
    for (const auto& box : platform_.boxes)
      for (const uint32_t id : {1156u, 1900u, 1909u, 1929u, 1933u})
        if (box.message == kw::LoadString(id).substr(0, kw::LoadString(id).find(u'|')) ||
            box.text.find(kw::LoadString(id).substr(0, 20)) == 0)
          ids.push_back(id);
    return ids;
  }
};

// Files of every encoding, with and without a byte-order mark, with odd content: read and saved without
// an edit they keep every byte, also when the chunks are tiny.
TEST_F(EditBaseFileTest, OpenAndSaveKeepsEveryByteInEveryEncoding) {
  struct Row {
    const char* what;
    std::string bytes;
    int readEncoding;  // -1: detected
    int encoding;      // what the document reports
    bool mark;
  };
  const std::string utf16le("a\0\r\0\n\0\xE4\0\x3D\xD8\x00\xDE\n\0", 14);
  const std::string utf16be("\0a\0\r\0\n\0\xE4\xD8\x3D\xDE\x00\0\n", 14);
  const Row rows[] = {
      {"ANSI with umlauts, Ctrl-Z, no final EOL", "K\xE4se\r\nS\xFC\xDF\r\n\x1A", -1, 0, false},
      {"ANSI undefined bytes and NUL", std::string("\x81\x8D\0\x8F\x90\x9D\r\n", 8), -1, 0, false},
      {"UTF-8 with mark", "\xEF\xBB\xBFK\xC3\xA4se\nx\n", -1, 1, true},
      {"invalid UTF-8 without mark", "ok \xC3\x28 \xFF\xFE\xED\xA0\x80 \xF0\x9F\x98\r\n", 1, 1, false},
      {"UTF-16 LE with mark", "\xFF\xFE" + utf16le, -1, 2, true},
      {"UTF-16 BE with mark", "\xFE\xFF" + utf16be, -1, 3, true},
      {"UTF-16 LE without mark", utf16le, 2, 2, false},
      {"OEM 437", "\x84\x94\x81\xE1\r\n\xC9\xCD\xBB", 4, 4, false},
      {"lone CR and LF mixed", "a\rb\nc\r\nd\n\re", -1, 0, false},
      {"empty", "", -1, 0, false},
  };
  for (const int64_t units : {int64_t(3), KwEditBase::kChunkUnits}) {
    for (const auto& r : rows) {
      SCOPED_TRACE(testing::Message() << r.what << ", units " << units);
      const fs::path file = Temp("doc.txt");
      WriteBytes(file, r.bytes);
      KwEditBase doc;
      doc.SetChunkUnits(units);
      doc.SetReadEncoding(r.readEncoding);
      ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
      EXPECT_EQ(doc.GetEncoding(), r.encoding);
      EXPECT_EQ(doc.HasByteOrderMark(), r.mark);
      EXPECT_EQ(doc.GetModified(), 0);
      EXPECT_EQ(doc.Check(), 1);
      doc.SetInteractive(0);
      ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
      EXPECT_EQ(ReadBytes(file), r.bytes);
      EXPECT_EQ(ReadBytes(Temp("doc.BAK")), r.bytes);  // the backup is the old file
      EXPECT_TRUE(Others({"doc.txt", "doc.BAK"}).empty());
    }
  }
}

TEST_F(EditBaseFileTest, ReadingDecodesAndFindsTheLineEnd) {
  const fs::path file = Temp("a.txt");
  KwEditBase doc;
  WriteBytes(file, "\xEF\xBB\xBFK\xC3\xA4se\nline two\n");
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  EXPECT_EQ(doc.GetEOLType(), u'\n');
  EXPECT_EQ(doc.GetLinesInDoc(), 2);
  EXPECT_EQ(doc.GetLineText(0), u"K\u00E4se");
  EXPECT_EQ(doc.GetDocName(), Name(file));
  // More CRs than LFs (or as many): CR LF.
  WriteBytes(file, "a\r\nb\rc\n");
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  EXPECT_EQ(doc.GetEOLType(), u'\r');
  EXPECT_EQ(doc.GetLinesInDoc(), 2);
  EXPECT_EQ(doc.GetLineText(2), u"c\n");
  // A file that cannot be opened fails and leaves the text alone.
  EXPECT_EQ(doc.ReadFile(Name(Temp("missing.txt")), 0, nullptr), 0);
  EXPECT_EQ(doc.GetLinesInDoc(), 2);
  // Odd UTF-16: the last byte becomes U+FFFD, everything before loads.
  WriteBytes(file, std::string("\xFF\xFEo\0k\0!", 7));
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  EXPECT_EQ(doc.GetAllText(), u"ok\uFFFD");
}

TEST_F(EditBaseFileTest, ModeOneShowsTheFirstBlockAndModeTwoAppendsTheRest) {
  const fs::path file = Temp("big.txt");
  std::string bytes;
  for (int i = 0; i < 30; ++i) bytes += "line " + std::to_string(i) + "\r\n";
  WriteBytes(file, bytes);
  KwEditBase doc;
  doc.SetChunkUnits(16);
  doc.SetLineMark(0, 1);
  EXPECT_EQ(doc.ReadFile(Name(file), 1, nullptr), 2);
  EXPECT_EQ(doc.GetTotalChars(), 16);
  EXPECT_EQ(doc.GetLineMark(0), 0);  // a fresh document
  EXPECT_EQ(doc.ReadFile(Name(file), 2, nullptr), 1);
  EXPECT_EQ(doc.GetTotalChars(), static_cast<int64_t>(bytes.size()));
  EXPECT_EQ(kw::ToUtf8(doc.GetAllText()), bytes);
  EXPECT_EQ(doc.GetLinesInDoc(), 30);
  EXPECT_EQ(doc.Check(), 1);
  // Every block has a chunk of its own (the CR LF pairs fall across their borders).
  EXPECT_EQ(doc.GetChunkCount(), (static_cast<int64_t>(bytes.size()) + 15) / 16);
  // A small file is read whole by mode 1.
  WriteBytes(file, "short\r\n");
  EXPECT_EQ(doc.ReadFile(Name(file), 1, nullptr), 1);
  EXPECT_EQ(doc.GetLinesInDoc(), 1);
  // The pane follows the reading and can stop it; what was read stays.
  WriteBytes(file, bytes);
  auto pane = platform_.CreateProgress(u"load");
  platform_.stopProgressAtStep = 2;
  EXPECT_EQ(doc.ReadFile(Name(file), 0, pane.get(), 10, 20), 1);
  EXPECT_EQ(doc.GetTotalChars(), 32);
  ASSERT_EQ(platform_.progressSteps.size(), 2u);
  EXPECT_GE(platform_.progressSteps[0], 10);
  EXPECT_LE(platform_.progressSteps[1], 20);
}

TEST_F(EditBaseFileTest, TextBeyondTheMaximumIsCutWithMessage1909) {
  const fs::path file = Temp("a.txt");
  WriteBytes(file, "0123456789\r\nabc");
  KwEditBase doc;
  doc.SetChunkUnits(4);
  doc.SetMaxChars(6);
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  EXPECT_EQ(doc.GetAllText(), u"012345");
  EXPECT_EQ(doc.GetChunkCount(), 2);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].message, u"Number of characters exceeds 6. The text will be truncated");
  EXPECT_EQ(doc.Check(), 1);
}

TEST_F(EditBaseFileTest, ALongLineAndBinaryBytesLoad) {
  const fs::path file = Temp("bin.dat");
  std::string bytes(10'000'000, 'x');
  bytes += "\r\n";
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  WriteBytes(file, bytes);
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  EXPECT_EQ(doc.LineLength(0, 0), 10'000'000);
  EXPECT_EQ(doc.GetLongestLine(), 10'000'000);
  EXPECT_EQ(doc.GetLinesInDoc(), 2);  // the CR among the 256 bytes ends one more line
  EXPECT_EQ(doc.GetChar(1, 0), 0);    // a NUL unit is text like any other
  doc.SetInteractive(0);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(file), bytes);
}

// ---- Counting while loading ------------------------------------------------------------------------

// Every count and line lookup of `doc` against its text worked out plainly: with CR an LF right behind
// a CR belongs to that end of line, with LF a CR is an ordinary unit.
void ExpectLines(KwEditBase& doc, const std::u16string& text) {
  ASSERT_EQ(doc.GetAllText(), text);
  ASSERT_EQ(doc.Check(), 1);
  const char16_t eol = doc.GetEOLType();
  std::vector<int64_t> formFeedLines;
  int64_t line = 0, start = 0, longest = 0;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] == 12 && (formFeedLines.empty() || formFeedLines.back() != line))
      formFeedLines.push_back(line);
    if (i < text.size() && text[i] != eol) continue;
    const auto end = static_cast<int64_t>(i);
    const int eolLength = i == text.size() ? 0 : eol == 13 && i + 1 < text.size() && text[i + 1] == 10 ? 2 : 1;
    SCOPED_TRACE(testing::Message() << "line " << line);
    ASSERT_EQ(doc.LineStart(line), start);
    ASSERT_EQ(doc.LineLength(line, 1), end - start + eolLength);
    longest = std::max(longest, end - start);
    ++line;
    if (eolLength == 0) break;
    start = end + eolLength;
    i = static_cast<size_t>(start) - 1;
  }
  EXPECT_EQ(doc.GetLinesInDoc(), line - 1);
  EXPECT_EQ(doc.GetLongestLine(), longest);
  int64_t count = 0;
  const int64_t* ff = doc.GetFFTable(&count);
  EXPECT_EQ(std::vector<int64_t>(ff, ff + count), formFeedLines);
}

// Random texts of short lines, CR LF pairs, lone CRs and LFs and form feeds, read in chunks of one to
// nine units, so that pairs, lines and form feeds fall across chunk borders, and in larger ones: the
// counts made while reading agree with the text, and so does a recount of the whole list after an EOL
// change back and forth.
TEST_F(EditBaseFileTest, CountsMadeWhileReadingAgreeWithTheText) {
  std::mt19937 random(20261123);
  const fs::path file = Temp("counted.txt");
  bool sawCR = false, sawLF = false;
  for (int round = 0; round < 120; ++round) {
    std::string bytes;
    for (int i = static_cast<int>(random() % 150); i > 0; --i) {
      const unsigned r = random() % 16;
      bytes += r < 10 ? std::string(1, "ab "[r % 3]) : r < 13 ? "\r\n" : std::string(1, "\r\n\f"[r % 3]);
    }
    WriteBytes(file, bytes);
    const std::u16string text(bytes.begin(), bytes.end());
    for (const int64_t units : {int64_t{1}, int64_t{2}, int64_t{3}, int64_t{5}, int64_t{9}, int64_t{40}, int64_t{1000}}) {
      SCOPED_TRACE(testing::Message() << "round " << round << ", units " << units << ": " << kwtest::Visible(text));
      KwEditBase doc;
      doc.SetChunkUnits(units);
      ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
      const char16_t eol = doc.GetEOLType();
      (eol == 13 ? sawCR : sawLF) = true;
      ExpectLines(doc, text);
      ASSERT_EQ(doc.SetEOLType(eol == 13 ? 10 : 13), 1);
      ASSERT_EQ(doc.SetEOLType(eol), 1);
      ExpectLines(doc, text);
    }
  }
  EXPECT_TRUE(sawCR && sawLF);  // both kinds of file came up
}

// Appending behind a first block recounts the block already there: its form feed stays in the table
// and its lines count; the line marks are cleared and grow for the lines that come in.
TEST_F(EditBaseFileTest, AppendingCountsTheFirstBlockAndGrowsTheLineMarks) {
  const fs::path file = Temp("lines.txt");
  WriteBytes(file, "\f" + std::string(600'000, '\n'));
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 1, nullptr), 2);
  doc.SetLineMark(5, 1);
  ASSERT_EQ(doc.ReadFile(Name(file), 2, nullptr), 1);
  EXPECT_EQ(doc.GetLinesInDoc(), 600'000);
  int64_t count = 0;
  const int64_t* ff = doc.GetFFTable(&count);
  ASSERT_EQ(count, 1);
  EXPECT_EQ(ff[0], 0);
  EXPECT_EQ(doc.GetLineMarkCapacity(), 2 * KwEditBase::kMarkGrowLines);
  EXPECT_EQ(doc.GetLineMarkCount(0, 600'000), 0);
  EXPECT_EQ(doc.Check(), 1);
}

// The maximum characters met in a late chunk while reading: the text ends at the bound, message 1909
// comes once, nothing behind the cut counts (lines, longest line, form feeds), and appending behind a
// first block is cut the same way.
TEST_F(EditBaseFileTest, AMaximumMetWhileReadingCutsThereWithMessage1909) {
  const fs::path file = Temp("long.txt");
  std::string bytes;
  for (int i = 0; i < 40; ++i) bytes += "row" + std::to_string(i % 10) + "\r\n";  // 6 units a line
  bytes += std::string(100, 'x') + "\f\r\n";
  WriteBytes(file, bytes);
  const std::u16string kept(bytes.begin(), bytes.begin() + 100);
  kwtest::AssertionRecorder assertions;  // nothing is counted behind the cut
  KwEditBase doc;
  doc.SetChunkUnits(7);
  doc.SetMaxChars(100);
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  ExpectLines(doc, kept);
  EXPECT_EQ(doc.GetChunkCount(), 15);
  EXPECT_EQ(BoxIds(), std::vector<uint32_t>{1909});
  platform_.boxes.clear();
  ASSERT_EQ(doc.ReadFile(Name(file), 1, nullptr), 2);
  EXPECT_TRUE(platform_.boxes.empty());
  ASSERT_EQ(doc.ReadFile(Name(file), 2, nullptr), 1);
  ExpectLines(doc, kept);
  EXPECT_EQ(BoxIds(), std::vector<uint32_t>{1909});
  EXPECT_EQ(assertions.count(), 0u);
}

TEST_F(EditBaseFileTest, SaveQuestionsInTheirOrderAndTheirAnswers) {
  const fs::path file = Temp("q.txt");
  KwEditBase doc;
  doc.SetDocName(Name(file));
  // Empty text: 1929, Cancel is the first button.
  platform_.answers = {1};
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 0);
  EXPECT_FALSE(fs::exists(file));
  platform_.answers = {-2};
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_TRUE(fs::exists(file));
  EXPECT_EQ(BoxIds(), (std::vector<uint32_t>{1929, 1929}));
  platform_.boxes.clear();

  // Modified, not terminated, read-only: 1933 then 1900.
  doc.AddText(u"text", 1, 0);
  fs::permissions(file, fs::perms::owner_read | fs::perms::group_read);
  platform_.answers = {-2};  // No: keep read-only, no save
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 0);
  EXPECT_EQ(ReadBytes(file), "");
  platform_.answers = {1, -3};  // remove read-only; then Cancel at 1900
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 0);
  EXPECT_FALSE(kw::IsReadOnly(Name(file)));
  EXPECT_EQ(BoxIds(), (std::vector<uint32_t>{1933, 1933, 1900}));
  platform_.answers = {-2};  // No: saved as it is
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(file), "text");
  EXPECT_EQ(doc.GetModified(), 0);
  doc.AddText(u"!", 1, 0);
  platform_.answers = {1};  // Yes: an end of line is appended, and recorded
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(file), "text!\r\n");
  EXPECT_EQ(doc.GetAllText(), u"text!\r\n");
  // A Ctrl-Z behind the text is no end of line; a Ctrl-Z alone in the last line counts as one.
  platform_.boxes.clear();
  doc.SelReplaceAt(5, 7, u"\x1a", 1, 0);
  doc.SetModified(1);
  platform_.answers = {-2};
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(platform_.boxes.size(), 1u);  // 1900: "text!" + Ctrl-Z is one unterminated line
  doc.SelReplaceAt(5, 6, u"\r\n\x1a", 3, 0);
  doc.SetModified(1);
  platform_.boxes.clear();
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_TRUE(platform_.boxes.empty());
  // Unmodified text is saved without the question; a quiet document asks nothing at all.
  doc.SelReplaceAt(5, 8, nullptr, 0, 0);
  doc.SetModified(0);
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_TRUE(platform_.boxes.empty());
  KwEditBase quiet;
  quiet.SetInteractive(0);
  EXPECT_EQ(quiet.WriteFile(Name(Temp("quiet.txt")), 0, nullptr), 1);
  EXPECT_TRUE(platform_.boxes.empty());
}

TEST_F(EditBaseFileTest, BackupRules) {
  const fs::path file = Temp("doc.txt");
  WriteBytes(file, "old\r\n");
  WriteBytes(Temp("doc.BAK"), "older\r\n");
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  doc.AddText(u"new\r\n", 1, 0);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(Temp("doc.BAK")), "old\r\n");  // the old backup is replaced
  EXPECT_EQ(ReadBytes(file), "old\r\nnew\r\n");
  // A document that is itself a backup gets none.
  const fs::path bak = Temp("keep.Bak");
  WriteBytes(bak, "b\r\n");
  ASSERT_EQ(doc.ReadFile(Name(bak), 0, nullptr), 1);
  doc.AddText(u"c\r\n", 1, 0);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(bak), "b\r\nc\r\n");
  EXPECT_TRUE(Others({"doc.txt", "doc.BAK", "keep.Bak"}).empty());
  // SaveBakFile alone renames the document; a file without an extension gets ".BAK" appended.
  const fs::path plain = Temp("README");
  WriteBytes(plain, "r");
  doc.SetDocName(Name(plain));
  EXPECT_EQ(doc.SaveBakFile(), 1);
  EXPECT_FALSE(fs::exists(plain));
  EXPECT_EQ(ReadBytes(Temp("README.BAK")), "r");
  // A copy makes no backup and leaves name and modified state alone.
  doc.SetDocName(Name(file));
  doc.SetModified(1);
  ASSERT_EQ(doc.WriteFile(Name(Temp("copy.txt")), 1, nullptr), 1);
  EXPECT_EQ(doc.GetDocName(), Name(file));
  EXPECT_EQ(doc.GetModified(), 1);
  EXPECT_FALSE(fs::exists(Temp("copy.BAK")));
}

TEST_F(EditBaseFileTest, SavingKeepsPermissions) {
  const fs::path file = Temp("p.txt");
  WriteBytes(file, "x");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  doc.AddText(u"y", 1, 0);
  doc.SetInteractive(0);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

// Failures that happen as root too: the backup cannot be made (a folder holds its name), and the disk is
// "full" part-way through (a file-size limit). Each time the old file survives, no temporary file is
// left and the document stays modified.
TEST_F(EditBaseFileTest, AFailedSaveLosesNothing) {
  const fs::path file = Temp("doc.txt");
  WriteBytes(file, "original\r\n");
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  doc.SetInteractive(0);
  doc.AddText(u"edit\r\n", 1, 0);

  fs::create_directory(Temp("doc.BAK"));
  WriteBytes(Temp("doc.BAK") / "inside", "x");
  std::u16string reason;
  EXPECT_EQ(doc.WriteFile(u"", 0, &reason), 0);
  EXPECT_FALSE(reason.empty());
  EXPECT_EQ(ReadBytes(file), "original\r\n");
  EXPECT_EQ(doc.GetModified(), 1);
  EXPECT_TRUE(Others({"doc.txt", "doc.BAK"}).empty());
  fs::remove_all(Temp("doc.BAK"));

  // Writing stops part-way: the text is larger than the file-size limit.
  doc.AddText(std::u16string(300000, u'z'), 1, 0);
  struct rlimit old {};
  getrlimit(RLIMIT_FSIZE, &old);
  const auto previous = signal(SIGXFSZ, SIG_IGN);
  struct rlimit small = old;
  small.rlim_cur = 100000;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const int result = doc.WriteFile(u"", 0, &reason);
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, previous);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(ReadBytes(file), "original\r\n");
  EXPECT_EQ(doc.GetModified(), 1);
  EXPECT_TRUE(Others({"doc.txt"}).empty());
  // Once the disk has room again the same document saves.
  EXPECT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(kw::SizeOf(Name(file)), 10 + 6 + 300000);
  EXPECT_EQ(ReadBytes(Temp("doc.BAK")), "original\r\n");
}

TEST_F(EditBaseFileTest, EncodingChangeAsksAndConverts) {
  const fs::path file = Temp("e.txt");
  WriteBytes(file, "K\xE4se\r\n");
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  platform_.answers = {-2};
  EXPECT_EQ(doc.SetEncoding(1, 1), 0);
  EXPECT_EQ(doc.GetEncoding(), 0);
  EXPECT_EQ(doc.GetModified(), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].message,
            u"This text file now uses the encoding ANSI.\n\nDo you really want to convert the encoding to UTF-8 and "
            u"thus change the text file?");
  platform_.answers = {1};
  EXPECT_EQ(doc.SetEncoding(3, 1), 1);
  EXPECT_EQ(doc.GetModified(), 1);
  doc.SetInteractive(0);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(file), std::string("\xFE\xFF\0K\0\xE4\0s\0e\0\r\0\n", 14));
  // Without a mark (flags 2), to OEM: the umlaut takes its DOS code.
  EXPECT_EQ(doc.SetEncoding(1, 2), 1);
  EXPECT_EQ(doc.SetEncoding(4, 0), 1);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(file), "K\x84se\r\n");
  EXPECT_EQ(platform_.boxes.size(), 2u);  // flags 0 asked nothing
}

TEST_F(EditBaseFileTest, ExternalChangesAreNoticedAndLatched) {
  const fs::path file = Temp("w.txt");
  WriteBytes(file, "a");
  KwEditBase doc;
  ASSERT_EQ(doc.ReadFile(Name(file), 0, nullptr), 1);
  EXPECT_EQ(doc.DidDocChange(), 0);
  const auto t = fs::last_write_time(file);
  fs::last_write_time(file, t + std::chrono::seconds(5));
  EXPECT_EQ(doc.DidDocChange(), 0);  // not watched
  doc.DetectDocChange(1);
  EXPECT_EQ(doc.DidDocChange(), 1);
  fs::last_write_time(file, t);
  EXPECT_EQ(doc.DidDocChange(), 1);  // latched
  doc.ClearDocChange();
  EXPECT_EQ(doc.DidDocChange(), 0);
  // Our own save is no external change.
  doc.AddText(u"b", 1, 0);
  doc.SetInteractive(0);
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(doc.DidDocChange(), 0);
}

TEST_F(EditBaseFileTest, MergeFileInsertsChosenLinesWithTheDocumentsEndOfLine) {
  const fs::path file = Temp("m.txt");
  WriteBytes(file, "one\ntwo\nthree\nfour");
  KwEditBase doc;
  doc.AddText(u"[]\r\n", 0, 0);
  EXPECT_EQ(doc.MergeFile(0, 1, Name(file), 1, 2, 1), 1);
  EXPECT_EQ(doc.GetAllText(), u"[two\r\nthree\r\n]\r\n");
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.MergeFile(0, 1, Name(file), 2, -1, 1), 1);
  EXPECT_EQ(doc.GetAllText(), u"[three\r\nfour]\r\n");  // "four" had no end of line
  EXPECT_EQ(doc.MergeFile(0, 99, Name(file), 0, -1, 1), 0);
  EXPECT_EQ(doc.MergeFile(0, 0, Name(Temp("none")), 0, -1, 1), 0);
}

// An application object: its edit parameters rule backups and the EOL display character, and its
// trace receives the buffer's warnings.
class EditBaseAppTest : public kwtest::AppTest {};

TEST_F(EditBaseAppTest, EditParametersAndTraceLines) {
  kwtest::TestApp app;
  app.SetEditParams({0, u'~', 1});
  app.StartInitalTrace();
  ASSERT_TRUE(app.GetTraceMode());
  KwEditBase doc;
  EXPECT_EQ(doc.GetEOLDisplayChar(), u'~');
  EXPECT_EQ(doc.ReadFile(Name(Temp("absent.txt")), 0, nullptr), 0);
  EXPECT_TRUE(Traced(u"EditBase.ReadFile: NotOpened: Name=" + Name(Temp("absent.txt"))));
  doc.AddText(u"ab\r\n", 0, 0);
  EXPECT_EQ(doc.GetChar(3, 0), 0);
  EXPECT_TRUE(Traced(u"EditBase::GetChar: WARNING! Attempt to get a wrong Line=3 m_LinesInDoc=1"));
  EXPECT_EQ(doc.GetChar(0, 4), 0);
  EXPECT_TRUE(Traced(u"EditBase::GetChar: WARNING! Attempt to get a wrong Column=4 m_LineLen=2"));
  // Backups off: the old file is replaced without a copy.
  const fs::path file = Temp("nb.txt");
  WriteBytes(file, "old");
  doc.SetDocName(Name(file));
  doc.SetInteractive(0);
  EXPECT_EQ(doc.SaveBakFile(), 1);
  EXPECT_TRUE(fs::exists(file));
  ASSERT_EQ(doc.WriteFile(u"", 0, nullptr), 1);
  EXPECT_EQ(ReadBytes(file), "ab\r\n");
  EXPECT_FALSE(fs::exists(Temp("nb.BAK")));
}

}  // namespace
