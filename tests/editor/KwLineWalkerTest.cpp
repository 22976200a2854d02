// The sequential line walk, checked against the document's own line lookup on texts cut into tiny
// chunks, so that lines and CR LF pairs fall across chunk borders.
#include "editor/KwLineWalker.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using kw::KwLineWalker;
using Line = int64_t;

class LineWalkerTest : public kwtest::PlatformTest {
 protected:
  // The text in chunks of `units`; with `edits`, a few units are inserted and removed afterwards so
  // that the chunks are uneven, as after editing.
  void Fill(const std::u16string& text, char16_t eol, int64_t units, std::mt19937* edits = nullptr) {
    doc_.SetChunkUnits(units);
    doc_.InitEdit();
    doc_.SetEOLType(eol);
    doc_.AddText(text, 0, 0);
    if (edits != nullptr) {
      for (int k = 0; k < 6 && doc_.GetTotalChars() > 2; ++k) {
        const auto at = static_cast<kw::Index>((*edits)() % static_cast<unsigned>(doc_.GetTotalChars() - 1));
        const std::u16string piece = k % 2 == 0 ? u"xyzw\r" : u"";
        doc_.SelReplaceAt(at, at + (k % 2 == 0 ? 0 : 2), piece.data(), static_cast<int64_t>(piece.size()), 0);
      }
    }
    ASSERT_EQ(doc_.Check(), 1);
  }

  // Walks from `first` to the end and compares every line with LineStart, LineLength and GetLineText.
  void ExpectWalkMatchesLookup(Line first, const std::string& what) {
    SCOPED_TRACE(what);
    KwLineWalker walk(doc_);
    Line expected = first;
    for (bool ok = walk.Start(first); ok; ok = walk.Next(), ++expected) {
      ASSERT_EQ(walk.GetLine(), expected);
      ASSERT_EQ(walk.GetStart(), doc_.LineStart(expected)) << "line " << expected;
      ASSERT_EQ(walk.GetLength(), doc_.LineLength(expected, 0)) << "line " << expected;
      ASSERT_EQ(walk.GetLengthWithEOL(), doc_.LineLength(expected, 1)) << "line " << expected;
      const std::u16string text = doc_.GetLineText(expected);
      ASSERT_EQ(std::u16string(walk.GetText(), static_cast<size_t>(walk.GetLength())), text) << "line " << expected;
      if (expected % 3 == 0) {
        const char16_t* z = walk.GetTerminatedText();
        ASSERT_EQ(std::u16string(z), text.substr(0, text.find(u'\0')));
        ASSERT_EQ(z[walk.GetLength()], u'\0');
      }
      ASSERT_EQ(walk.IsEmptyLastLine(), expected == doc_.GetLinesInDoc() && expected > 0 && text.empty());
    }
    EXPECT_EQ(expected, doc_.GetLinesInDoc() + 1);
    EXPECT_TRUE(walk.Done());
    EXPECT_FALSE(walk.Next());
  }

  KwEditBase doc_;
};

TEST_F(LineWalkerTest, RandomTextsInTinyChunksWalkAsTheLookupSeesThem) {
  std::mt19937 random(20261123);
  // CR LF pairs, lone CRs and LFs, an end-of-line character of another kind, zeros and empty lines.
  const std::u16string units = u"ab \r\n\r\n;\0";
  const char16_t eols[] = {13, 10, u';'};
  for (int round = 0; round < 240; ++round) {
    std::u16string text;
    const int length = static_cast<int>(random() % 90);
    for (int i = 0; i < length; ++i) text += units[random() % units.size()];
    if (round % 4 == 1) text += u"\r\n";  // a final end of line
    if (round % 4 == 2) text += u"\r";
    const char16_t eol = eols[round % 3];
    Fill(text, eol, 3 + round % 5, round % 2 == 0 ? &random : nullptr);
    const std::string what = "round " + std::to_string(round) + " eol " + std::to_string(eol);
    ExpectWalkMatchesLookup(0, what);
    const Line from = static_cast<Line>(random() % static_cast<unsigned>(doc_.GetLinesInDoc() + 1));
    ExpectWalkMatchesLookup(from, what + " from " + std::to_string(from));
  }
}

TEST_F(LineWalkerTest, ChunkEdgesFinalEndOfLineAndWrongLines) {
  // Chunks of 4 units: lines and their CR LF pairs cross chunk borders.
  Fill(u"abc\r\ndef\r\n", 13, 4);
  KwLineWalker walk(doc_);
  ASSERT_TRUE(walk.Start(0));
  EXPECT_EQ(walk.GetEOLLength(), 2);
  ASSERT_TRUE(walk.Next());
  EXPECT_EQ(walk.GetStart(), 5);
  EXPECT_EQ(std::u16string(walk.GetText(), 3), u"def");
  // The empty line behind the final end of line is the last line; it is no line of text.
  ASSERT_TRUE(walk.Next());
  EXPECT_EQ(walk.GetLine(), 2);
  EXPECT_EQ(walk.GetStart(), 10);
  EXPECT_EQ(walk.GetLengthWithEOL(), 0);
  EXPECT_TRUE(walk.IsEmptyLastLine());
  EXPECT_EQ(walk.GetTerminatedText()[0], u'\0');
  EXPECT_FALSE(walk.Next());
  // The one empty line of an empty document is a line.
  Fill(u"", 13, 5);
  ASSERT_TRUE(walk.Start(0));
  EXPECT_FALSE(walk.IsEmptyLastLine());
  EXPECT_FALSE(walk.Next());
  // Lines that do not exist leave the walker done, without an assertion.
  Fill(u"a\nb", 10, 5);
  EXPECT_FALSE(walk.Start(2));
  EXPECT_FALSE(walk.Start(-1));
  EXPECT_TRUE(walk.Done());
  EXPECT_EQ(asserts_.count(), 0u);
  // In full chunks a line inside one chunk points into it.
  Fill(u"one\ntwo\n", 10, KwEditBase::kChunkUnits);
  ASSERT_TRUE(walk.Start(1));
  EXPECT_EQ(walk.GetText(), doc_.GetHead()->text + 4);
}

}  // namespace
