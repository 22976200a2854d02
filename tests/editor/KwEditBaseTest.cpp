// The text buffer: chunks, the line lookup against a plain model, edits, marks and line tables.
#include "editor/KwEditBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "editor/EditTestSupport.h"
#include "editor/KwEditUndo.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using Line = int64_t;
using kwtest::Visible;

// The lines of a text as the document must see them: start, length without and with the end of line.
struct ModelLine {
  int64_t start, length, withEOL;
};

std::vector<ModelLine> ModelLines(const std::u16string& s, char16_t eol) {
  std::vector<ModelLine> lines;
  int64_t start = 0;
  for (size_t i = 0;; ++i) {
    if (i == s.size()) {
      lines.push_back({start, static_cast<int64_t>(i) - start, static_cast<int64_t>(i) - start});
      return lines;
    }
    if (s[i] != eol) continue;
    int64_t end = static_cast<int64_t>(i) + 1;
    if (eol == 13 && i + 1 < s.size() && s[i + 1] == 10) ++end;
    lines.push_back({start, static_cast<int64_t>(i) - start, end - start});
    start = end;
    i = static_cast<size_t>(end - 1);
  }
}

// Every line's start and lengths, looked up in the given order, against the model.
void ExpectLinesMatch(KwEditBase& doc, const std::u16string& text, const std::vector<Line>& order) {
  const auto model = ModelLines(text, doc.GetEOLType());
  ASSERT_EQ(doc.GetLinesInDoc() + 1, static_cast<int64_t>(model.size()));
  for (const Line l : order) {
    const auto& m = model[static_cast<size_t>(l)];
    EXPECT_EQ(doc.LineStart(l), m.start) << "line " << l;
    EXPECT_EQ(doc.LineLength(l, 0), m.length) << "line " << l;
    EXPECT_EQ(doc.LineLength(l, 1), m.withEOL) << "line " << l;
    ASSERT_EQ(doc.Check(), 1) << "after line " << l;
  }
}

class EditBaseTest : public kwtest::PlatformTest {};

TEST_F(EditBaseTest, EmptyDocumentHasOneEmptyLine) {
  KwEditBase doc;
  EXPECT_EQ(doc.GetLinesInDoc(), 0);
  EXPECT_EQ(doc.GetTotalChars(), 0);
  EXPECT_EQ(doc.LineStart(0), 0);
  EXPECT_EQ(doc.LineLength(0, 1), 0);
  EXPECT_EQ(doc.GetLineText(0), u"");
  EXPECT_EQ(doc.GetChunkCount(), 1);
  EXPECT_EQ(doc.GetHead()->capacity, 64000u);
  for (int kind = 1; kind <= 3; ++kind) EXPECT_EQ(doc.TestLastLine(kind), 0) << kind;
  EXPECT_EQ(doc.GetModified(), 0);
  EXPECT_EQ(doc.Check(), 1);
  // A wrong line is an internal error with the fallback -1.
  EXPECT_EQ(doc.LineStart(1), -1);
  EXPECT_EQ(doc.LineLength(-1, 0), -1);
  EXPECT_EQ(asserts_.count(), 2u);
}

TEST_F(EditBaseTest, LineLookupMatchesModelInEveryOrderAndChunkSize) {
  const std::u16string texts[] = {
      u"one\r\ntwo\r\nthree",
      u"a\r\n\r\n\r\nb\r\n",
      u"lone\rcr\r\nand\nlf\n\r\r\n\n",  // with CR: lone LF is a unit of its line
      u"\r\n",
      u"no end of line at all",
      u"x\r\n\r\ny\r\n\r\n\r\n",
  };
  for (const char16_t eol : {char16_t(13), char16_t(10)}) {
    for (const auto& text : texts) {
      for (const int64_t units : {1, 2, 3, 5, 64000}) {
        SCOPED_TRACE(testing::Message() << "eol " << int(eol) << " units " << units << " text #" << (&text - texts));
        KwEditBase doc;
        kwtest::FillDoc(doc, text, units, eol);
        EXPECT_EQ(doc.GetAllText(), text);
        const Line n = doc.GetLinesInDoc();
        std::vector<Line> forward, backward, random;
        for (Line l = 0; l <= n; ++l) forward.push_back(l);
        backward.assign(forward.rbegin(), forward.rend());
        std::mt19937 rng(static_cast<unsigned>(units));
        for (int i = 0; i < 40; ++i) random.push_back(static_cast<Line>(rng() % static_cast<unsigned>(n + 1)));
        ExpectLinesMatch(doc, text, forward);
        ExpectLinesMatch(doc, text, backward);
        ExpectLinesMatch(doc, text, random);
        // The inverse lookup for every index, the units of a CR LF pair included.
        const auto model = ModelLines(text, eol);
        for (int64_t index = 0; index <= static_cast<int64_t>(text.size()); ++index) {
          Line expect = 0;
          while (expect + 1 < static_cast<Line>(model.size()) && model[static_cast<size_t>(expect + 1)].start <= index)
            ++expect;
          int64_t column = -1;
          EXPECT_EQ(doc.LineFromIndex(index, &column), expect) << "index " << index;
          EXPECT_EQ(column, index - model[static_cast<size_t>(expect)].start) << "index " << index;
        }
      }
    }
  }
}

// Big chunks: lookups jump between chunks by their counts and scan inside them forward and backward in
// blocks; every answer must agree with the model, in random order.
TEST_F(EditBaseTest, LookupsInLargeChunksAgreeWithTheModel) {
  std::mt19937 rng(7);
  std::u16string text;
  for (int i = 0; i < 20000; ++i) {
    text.append(rng() % 90, static_cast<char16_t>(u'a' + i % 26));
    text.append(rng() % 7 == 0 ? u"\r" : u"\r\n");
  }
  text.append(u"tail");
  for (const int64_t units : {int64_t(1000), KwEditBase::kChunkUnits}) {
    KwEditBase doc;
    kwtest::FillDoc(doc, text, units);
    const auto model = ModelLines(text, 13);
    ASSERT_EQ(doc.GetLinesInDoc() + 1, static_cast<int64_t>(model.size()));
    for (int i = 0; i < 3000; ++i) {
      const auto l = static_cast<Line>(rng() % model.size());
      ASSERT_EQ(doc.LineStart(l), model[static_cast<size_t>(l)].start) << l;
      ASSERT_EQ(doc.LineLength(l, 1), model[static_cast<size_t>(l)].withEOL) << l;
      const auto index = static_cast<int64_t>(rng() % (text.size() + 1));
      auto it = std::upper_bound(model.begin(), model.end(), index,
                                 [](int64_t v, const ModelLine& m) { return v < m.start; });
      ASSERT_EQ(doc.LineFromIndex(index, nullptr), (it - model.begin()) - 1) << index;
    }
    EXPECT_EQ(doc.Check(), 1);
  }
}

TEST_F(EditBaseTest, EndOfLineRulesForCrLfLoneCrAndLoneLf) {
  KwEditBase doc;
  // A CR LF pair split between two chunks is one end of line of length 2.
  kwtest::FillDoc(doc, u"a\r\nbc", 2);
  ASSERT_EQ(doc.GetChunkCount(), 3);  // "a\r" | "\nb" | "c"
  EXPECT_EQ(doc.GetHead()->text[1], u'\r');
  EXPECT_EQ(doc.GetLinesInDoc(), 1);
  EXPECT_EQ(doc.LineLength(0, 1), 3);
  EXPECT_EQ(doc.LineStart(1), 3);
  EXPECT_EQ(doc.GetLineText(1), u"bc");
  int64_t column = -1;
  EXPECT_EQ(doc.LineFromIndex(2, &column), 0);  // the LF belongs to the line the pair ends
  EXPECT_EQ(column, 2);
  // Lone CR ends a line of EOL length 1; a lone LF is part of its line.
  kwtest::FillDoc(doc, u"a\rb\nc", 2);
  EXPECT_EQ(doc.GetLinesInDoc(), 1);
  EXPECT_EQ(doc.LineLength(0, 1), 2);
  EXPECT_EQ(doc.GetLineText(1), u"b\nc");
  // Typing an LF behind a lone CR turns it into a pair: the next line loses no unit of its own.
  doc.SelReplaceAt(2, 2, u"\n", 1, 0);
  EXPECT_EQ(doc.GetLineText(1), u"b\nc");
  EXPECT_EQ(doc.LineLength(0, 1), 3);
  EXPECT_EQ(doc.Check(), 1);
  // Removing the LF of a pair splits it again.
  doc.SelReplaceAt(2, 3, nullptr, 0, 0);
  EXPECT_EQ(doc.LineLength(0, 1), 2);
  EXPECT_EQ(doc.LineStart(1), 2);
  EXPECT_EQ(doc.Check(), 1);
}

TEST_F(EditBaseTest, LastLineKindsAndTheFinalEndOfLine) {
  struct Row {
    std::u16string text;
    int kind1, kind2, kind3;
  };
  const Row rows[] = {
      {u"abc\r\n", 0, 0, 0},            // terminated: the last line is empty
      {u"abc", 0, 1, 1},                // not terminated
      {u"abc\r\n\x1a", 1, 0, 0},        // a DOS end-of-file mark counts as terminated
      {u"abc\r\n  \t", 0, 1, 0},        // blanks only: nothing of 33 or above
      {u"abc\r\n\x1a!", 1, 1, 1},
  };
  for (const auto& r : rows) {
    KwEditBase doc;
    kwtest::FillDoc(doc, r.text, 2);
    EXPECT_EQ(doc.TestLastLine(1), r.kind1) << doc.GetLinesInDoc();
    EXPECT_EQ(doc.TestLastLine(2), r.kind2);
    EXPECT_EQ(doc.TestLastLine(3), r.kind3);
  }
  KwEditBase doc;
  kwtest::FillDoc(doc, u"abc", 64000);
  EXPECT_EQ(doc.AppendEOL(), 1);
  EXPECT_EQ(doc.GetAllText(), u"abc\r\n");
  EXPECT_EQ(doc.TestLastLine(2), 0);
  EXPECT_EQ(doc.RemoveLastEOL(), 1);
  EXPECT_EQ(doc.GetAllText(), u"abc");
  EXPECT_EQ(doc.RemoveLastEOL(), 0);
  // Both steps are recorded.
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetAllText(), u"abc\r\n");
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetAllText(), u"abc");
}

TEST_F(EditBaseTest, EolTypeChangeRecountsAndSameTypeDoesNothing) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"a\r\nb\nc\n", 2);
  EXPECT_EQ(doc.GetLinesInDoc(), 1);
  doc.SetLineMark(1, 1);
  EXPECT_EQ(doc.SetEOLType(13), 0);
  EXPECT_EQ(doc.SetEOLType(10), 1);
  EXPECT_EQ(doc.GetLinesInDoc(), 3);
  EXPECT_EQ(doc.GetLineText(0), u"a\r");
  EXPECT_EQ(doc.GetEOLLength(), 1);
  EXPECT_EQ(doc.GetLineMark(1), 1);  // marks survive the recount
  char16_t eol[3];
  EXPECT_EQ(doc.GetEOLText(eol, 0), 1);
  EXPECT_EQ(eol[0], u'\n');
  EXPECT_EQ(doc.SetEOLType(u';'), 1);
  EXPECT_EQ(doc.GetLinesInDoc(), 0);
  EXPECT_EQ(doc.Check(), 1);
}

TEST_F(EditBaseTest, LongestLineAndChunkCapacities) {
  KwEditBase doc;
  doc.AddText(std::u16string(70000, u'x') + u"\r\nshort", 0, 0);
  EXPECT_EQ(doc.LineLength(0, 0), 70000);
  EXPECT_EQ(doc.GetLongestLine(), 70000);
  for (const kw::tagTEXTDESC* c = doc.GetHead(); c; c = c->next) {
    EXPECT_EQ(c->capacity % 256, 0u);
    EXPECT_GE(c->capacity, 64000u);
    EXPECT_LE(c->used, c->capacity);
  }
  // An insertion into a chunk that is full beyond its growth splits it and keeps every count right.
  doc.SelReplaceAt(100, 100, std::u16string(200000, u'y').data(), 200000, 0);
  EXPECT_EQ(doc.GetLongestLine(), 270000);
  EXPECT_EQ(doc.LineStart(1), 270002);
  EXPECT_EQ(doc.Check(), 1);
}

// Random edits against a plain string; after each the counts and the cache must hold, and undoing every
// step must give back the original text exactly, redoing them the final one.
TEST_F(EditBaseTest, RandomEditsUndoToTheOriginalAndRedoToTheEnd) {
  const char16_t alphabet[] = u"ab \r\n\r\nxyz\t\x0c";
  for (const int64_t units : {1, 3, 7, 64000}) {
    for (const char16_t eol : {char16_t(13), char16_t(10)}) {
      SCOPED_TRACE(testing::Message() << "units " << units << " eol " << int(eol));
      std::mt19937 rng(static_cast<unsigned>(units * 31 + eol));
      auto randomText = [&](size_t n) {
        std::u16string s;
        for (size_t i = 0; i < n; ++i) s.push_back(alphabet[rng() % (sizeof(alphabet) / 2 - 1)]);
        return s;
      };
      KwEditBase doc;
      const std::u16string original = randomText(60);
      kwtest::FillDoc(doc, original, units, eol);
      doc.BuildFFTable();
      std::u16string model = original;
      std::vector<std::u16string> states{model};
      for (int step = 0; step < 300; ++step) {
        const size_t start = rng() % (model.size() + 1);
        const size_t removed = rng() % 4 == 0 ? 0 : rng() % std::min<size_t>(model.size() - start + 1, 9);
        const std::u16string inserted = rng() % 5 == 0 ? u"" : randomText(rng() % 6);
        if (removed == 0 && inserted.empty()) continue;
        ASSERT_EQ(doc.SelReplaceAt(static_cast<int64_t>(start), static_cast<int64_t>(start + removed),
                                   inserted.data(), static_cast<int64_t>(inserted.size()), 1),
                  1);
        const std::u16string before = model;
        model.replace(start, removed, inserted);
        SCOPED_TRACE(Visible(before) + " | " + std::to_string(start) + " " + std::to_string(removed) + " " +
                     Visible(inserted));
        ASSERT_EQ(doc.GetAllText(), model) << "step " << step;
        ASSERT_EQ(doc.Check(), 1) << "step " << step;
        // The form-feed table follows the lines.
        int64_t n = 0;
        const Line* ff = doc.GetFFTable(&n);
        std::vector<Line> expectFF;
        const auto lines = ModelLines(model, eol);
        for (size_t l = 0; l < lines.size(); ++l)
          if (model.substr(static_cast<size_t>(lines[l].start), static_cast<size_t>(lines[l].length)).find(u'\x0c') !=
              std::u16string::npos)
            expectFF.push_back(static_cast<Line>(l));
        ASSERT_EQ(std::vector<Line>(ff, ff + n), expectFF) << "step " << step;
        if (model != states.back()) states.push_back(model);
      }
      ExpectLinesMatch(doc, model, {0, doc.GetLinesInDoc(), doc.GetLinesInDoc() / 2});
      while (doc.CanUndo()) {
        doc.UndoEdit(nullptr);
        ASSERT_EQ(doc.Check(), 1);
      }
      EXPECT_EQ(doc.GetAllText(), original);
      while (doc.CanRedo()) doc.RedoEdit(nullptr);
      EXPECT_EQ(doc.GetAllText(), model);
      EXPECT_EQ(doc.Check(), 1);
    }
  }
}

TEST_F(EditBaseTest, SelReplaceByLinesAndItsUndoRecords) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"hello\r\nworld", 4);
  auto* undo = doc.GetUndo();
  // One unit for one unit: type 1, no data block.
  EXPECT_EQ(doc.SelReplace(0, 0, 0, 1, u"J", 1, 1), 1);
  ASSERT_EQ(undo->GetCount(), 1);
  EXPECT_EQ(undo->GetRecord(0)->type, 1u);
  // More than one unit: type 2.
  EXPECT_EQ(doc.SelReplace(0, 4, 1, 1, u"!", 1, 1), 1);
  EXPECT_EQ(doc.GetAllText(), u"Jell!orld");
  EXPECT_EQ(undo->GetRecord(1)->type, 2u);
  EXPECT_EQ(undo->GetRecord(1)->value1, 4);
  EXPECT_EQ(undo->GetRecord(1)->value2, 1);
  // A pure insertion as type 4, and blanks when no text is given.
  EXPECT_EQ(doc.SelReplace(0, 0, 0, 0, nullptr, 3, 4), 1);
  EXPECT_EQ(doc.GetAllText(), u"   Jell!orld");
  EXPECT_EQ(undo->GetRecord(2)->type, 4u);
  // Replacing text by the same text records nothing.
  EXPECT_EQ(doc.SelReplace(0, 3, 0, 7, u"Jell", 4, 1), 1);
  EXPECT_EQ(undo->GetCount(), 3);
  int64_t line = -1;
  EXPECT_EQ(doc.UndoEdit(&line), 0);
  EXPECT_EQ(doc.UndoEdit(&line), 4);
  EXPECT_EQ(doc.GetAllText(), u"Jello\r\nworld");
  EXPECT_EQ(line, 0);
  EXPECT_EQ(doc.UndoEdit(&line), 0);
  EXPECT_EQ(doc.GetAllText(), u"hello\r\nworld");
  EXPECT_EQ(doc.UndoEdit(&line), -1);
  // Wrong positions are refused.
  EXPECT_EQ(doc.SelReplace(2, 0, 2, 0, u"x", 1, 1), 0);
  EXPECT_EQ(doc.SelReplaceAt(3, 2, u"x", 1, 1), 0);
  EXPECT_EQ(doc.SelReplaceAt(0, 1, u"x", 1, 4), 0);  // type 4 needs an empty range
  EXPECT_EQ(asserts_.count(), 3u);
}

TEST_F(EditBaseTest, MarkedLinesOfAStepAreOneGroupWithType19) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"a\r\nb", 2);
  const Line marks[] = {1, 2, -1};
  EXPECT_EQ(doc.SelReplaceAt(1, 1, u"\r\nX\r\nY", 6, 1, marks), 1);
  EXPECT_EQ(doc.GetAllText(), u"a\r\nX\r\nY\r\nb");
  EXPECT_EQ(doc.GetLineMark(1), 1);
  EXPECT_EQ(doc.GetLineMark(2), 1);
  auto* undo = doc.GetUndo();
  ASSERT_EQ(undo->GetCount(), 3);
  EXPECT_EQ(undo->GetRecord(1)->type, 19u);
  EXPECT_EQ(undo->GetRecord(2)->value1, 2);
  EXPECT_EQ(undo->GetRecord(0)->group, undo->GetRecord(2)->group);
  // One undo step takes back marks and text; redo brings both again.
  EXPECT_EQ(doc.UndoEdit(nullptr), 1);
  EXPECT_EQ(doc.GetAllText(), u"a\r\nb");
  EXPECT_EQ(doc.GetLineMarkCount(0, 10), 0);
  EXPECT_EQ(doc.RedoEdit(nullptr), 1);
  EXPECT_EQ(doc.GetLineMark(1) + doc.GetLineMark(2), 2);
}

TEST_F(EditBaseTest, MarksBookmarksAndFormFeedsFollowInsertedAndDeletedLines) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"0\r\n1\r\n2\x0c\r\n3\r\n4", 3);
  doc.BuildFFTable();
  doc.SetLineMark(3, 1);
  doc.SetLineMark(4, 1);
  doc.ToggleBookMark(2);
  doc.ToggleBookMark(4);
  // Two lines in front of line 1.
  doc.SelReplace(1, 0, 1, 0, u"n\r\nm\r\n", 6, 0);
  EXPECT_EQ(doc.GetNextLineMark(-1), 5);
  EXPECT_EQ(doc.MaxLineMark(), 6);
  EXPECT_EQ(doc.GetBookMark(0), 4);
  EXPECT_EQ(doc.GetNextBookMark(4), 6);
  int64_t n = 0;
  const Line* ff = doc.GetFFTable(&n);
  ASSERT_EQ(n, 1);
  EXPECT_EQ(ff[0], 4);
  // Delete lines 4 and 5 (the form feed, a bookmark and a mark go with them).
  doc.SelReplace(4, 0, 6, 0, nullptr, 0, 0);
  EXPECT_EQ(doc.GetAllText(), u"0\r\nn\r\nm\r\n1\r\n4");
  EXPECT_EQ(doc.GetLineMarkCount(0, 100), 1);
  EXPECT_EQ(doc.MinLineMark(), 4);
  EXPECT_EQ(doc.GetBookMarkCount(), 1);
  EXPECT_EQ(doc.IsBookMarkInLine(4), 1);
  doc.GetFFTable(&n);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(doc.GetFirstFFInInterval(0, 10), -1);
  // Bookmark navigation and toggling.
  EXPECT_EQ(doc.ToggleBookMark(1), 1);
  EXPECT_EQ(doc.GetPrevBookMark(4), 1);
  EXPECT_EQ(doc.ToggleBookMark(1), 0);
  doc.RemoveBookMarks(-1);
  EXPECT_EQ(doc.GetBookMarkCount(), 0);
}

TEST_F(EditBaseTest, LineMarksGrowBeyondTheFirstAllocation) {
  KwEditBase doc;
  EXPECT_EQ(doc.AppendLines(600000, 0, nullptr), 1);
  EXPECT_EQ(doc.GetLinesInDoc(), 600000);
  EXPECT_EQ(doc.GetLineMarkCapacity(), 0);
  doc.SetLineMark(5, 1);
  EXPECT_EQ(doc.GetLineMarkCapacity(), KwEditBase::kMarkGrowLines);
  EXPECT_EQ(doc.GetLineMark(524288), 0);  // beyond nothing is marked
  doc.SetLineMark(524288, 1);
  doc.SetLineMark(599999, 1);
  EXPECT_EQ(doc.GetLineMarkCapacity(), 2 * KwEditBase::kMarkGrowLines);
  EXPECT_EQ(doc.GetLineMarkCount(0, 600000), 3);
  EXPECT_EQ(doc.GetNextLineMark(5), 524288);
  EXPECT_EQ(doc.GetPrevLineMark(599999), 524288);
  doc.InvertLineMark();
  EXPECT_EQ(doc.GetLineMarkCount(0, 600000), 600001 - 3);
  EXPECT_EQ(doc.GetLineMark(600000), 1);
  EXPECT_EQ(doc.GetLineMark(600001), 0);
  doc.ClearLineMarks();
  EXPECT_EQ(doc.MinLineMark(), -1);
  // A recount with marks present grows them for the new lines too.
  KwEditBase big;
  big.SetLineMark(0, 1);
  big.AppendLines(1100000, 0, nullptr);
  big.SetEOLType(10);
  EXPECT_GE(big.GetLineMarkCapacity(), 1100001);
}

TEST_F(EditBaseTest, LineContentsCharactersAndTextOfLine) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"  \tindented  \t\r\nx", 3);
  EXPECT_EQ(doc.IndentOfLine(0), 3);
  EXPECT_EQ(doc.ReducedLineLength(0), 11);
  EXPECT_EQ(doc.GetChar(0, 3), u'i');
  EXPECT_EQ(doc.GetChar(0, 14), u'\r');  // end-of-line units can be read
  EXPECT_EQ(doc.GetChar(0, 16), 0);
  EXPECT_EQ(doc.GetChar(5, 0), 0);
  EXPECT_EQ(doc.IsTabFormatted(), 1);
  char16_t buf[32];
  EXPECT_EQ(doc.TextOfLine(0, buf, 32, 3, 0, 1, 0), 11);
  EXPECT_EQ(std::u16string(buf), u"indented  \t");
  EXPECT_EQ(doc.TextOfLine(0, buf, 32, 11, 1, 0, 1), 5);
  EXPECT_EQ(std::u16string(buf, 5), u"  \t  ");  // the end of line shown as the display character
  EXPECT_EQ(doc.TextOfLine(0, buf, 4, 0, 0, 1, 0), 3);  // the terminator counts against the room
  EXPECT_EQ(doc.TextOfLine(0, buf, 32, 20, 0, 0, 0), -1);
  doc.SetText(3, u"IN", 2);
  EXPECT_EQ(doc.GetLineText(0), u"  \tINdented  \t");
  doc.SetText(0, u"\r\n", 2);  // overwriting with an end of line keeps the count
  EXPECT_EQ(doc.GetLinesInDoc(), 2);
  EXPECT_EQ(doc.Check(), 1);
}

TEST_F(EditBaseTest, TabPositionsBothWays) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"a\tb\t\tc", 4);
  // Default stops every 8 columns.
  EXPECT_EQ(doc.GetTabbedPos(0, 2, nullptr, 0), 8);
  EXPECT_EQ(doc.GetTabbedPos(0, 6, nullptr, 0), 25);
  // Stops at 4, 4+6=10, then every 6: 16, 22, ...
  const int64_t stops[] = {4, 6};
  EXPECT_EQ(doc.GetTabbedPos(0, 2, stops, 2), 4);
  EXPECT_EQ(doc.GetTabbedPos(0, 4, stops, 2), 10);
  EXPECT_EQ(doc.GetTabbedPos(0, 5, stops, 2), 16);
  EXPECT_EQ(doc.GetTabbedPos(0, 8, stops, 2), 19);  // behind the text one column per unit
  int64_t column = 12;  // inside the second tab's span (10..15): that tab
  EXPECT_EQ(doc.AdjustCol(0, &column, stops, 2), 10);
  EXPECT_EQ(column, 4);
  column = 16;
  EXPECT_EQ(doc.AdjustCol(0, &column, stops, 2), 16);
  EXPECT_EQ(column, 5);
  column = 20;  // the text ends at display column 17
  EXPECT_EQ(doc.AdjustCol(0, &column, stops, 2), 20);
  EXPECT_EQ(column, 9);
}

TEST_F(EditBaseTest, ComparisonsAndLineHashes) {
  KwEditBase a, b;
  kwtest::FillDoc(a, u"Alpha\r\nbe ta\r\n", 3);
  kwtest::FillDoc(b, u"Alpha\r\nbe ta\r\n", 64000);
  EXPECT_EQ(a.HasEqualText(b), 1);
  b.SelReplaceAt(0, 1, u"a", 1, 0);
  EXPECT_EQ(a.HasEqualText(b), 0);
  EXPECT_EQ(a.IsEqualLine(0, b, 0, 0, 0), 0);
  EXPECT_EQ(a.IsEqualLine(0, b, 0, 1, 0), 1);
  b.SelReplaceAt(7, 9, u"BET", 3, 0);  // "BETta" vs "be ta"
  EXPECT_EQ(a.IsEqualLine(1, b, 1, 1, 1), 0);
  b.SelReplaceAt(7, 11, u"BE", 2, 0);  // "BEta"
  EXPECT_EQ(a.IsEqualLine(1, b, 1, 1, 0), 0);
  EXPECT_EQ(a.IsEqualLine(1, b, 1, 1, 1), 1);
  const auto ha = a.GetHashTable(3), hb = b.GetHashTable(3);
  ASSERT_EQ(ha.size(), 3u);
  EXPECT_EQ(ha, hb);
  const auto exact = a.GetHashTable(0);
  EXPECT_NE(exact[0], b.GetHashTable(0)[0]);
  EXPECT_NE(exact[0], exact[1]);
  EXPECT_EQ(exact[2], b.GetHashTable(0)[2]);  // both last lines empty
}

TEST_F(EditBaseTest, ColumnTextCarriesTheMarker) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"abcdef\r\nxy\r\n123456", 4);
  std::u16string text;
  EXPECT_EQ(doc.GetColumnText(0, 2, 1, 4, &text, 0, nullptr), 3);
  EXPECT_EQ(text, u"!#!COL!#!\r\nbcd\r\ny\r\n234\r\n");
  EXPECT_EQ(doc.GetColumnText(0, 1, 1, 4, &text, 1, nullptr), 2);
  EXPECT_EQ(text, u"!#!COL!#!\r\nbcd\r\ny  \r\n");
  platform_.stopProgressAtStep = 1;
  auto pane = platform_.CreateProgress(u"t");
  EXPECT_EQ(doc.GetColumnText(0, 2, 1, 4, &text, 0, pane.get()), -1);
  EXPECT_EQ(doc.GetColumnText(2, 1, 0, 1, &text, 0, nullptr), -1);
}

TEST_F(EditBaseTest, AddTextMarksTheLinesItStarts) {
  KwEditBase doc;
  doc.AddText(u"keep", 0, 0);
  doc.AddText(u" more\r\nnew one\r\nnew two\r\n", 1, 1);
  EXPECT_EQ(doc.GetLineMark(0), 0);  // it only went on with line 0
  EXPECT_EQ(doc.GetLineMark(1), 1);
  EXPECT_EQ(doc.GetLineMark(2), 1);
  EXPECT_EQ(doc.GetLineMark(3), 0);  // the empty line after the last end of line
  EXPECT_EQ(doc.GetModified(), 1);
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetAllText(), u"keep");
  EXPECT_EQ(doc.GetLineMarkCount(0, 5), 0);
}

TEST_F(EditBaseTest, SyntaxFlagsFollowLines) {
  KwEditBase doc;
  kwtest::FillDoc(doc, u"a\r\nb\r\nc", 64000);
  doc.SetSyntaxFlags(1, 7);
  EXPECT_EQ(doc.GetSyntaxFlags(1), 0u);  // not kept while colouring is off
  doc.SetSyntaxColoring(1);
  doc.SetSyntaxFlags(1, 7);
  doc.SetSyntaxFlags(2, 9);
  doc.SelReplace(1, 0, 1, 0, u"new\r\n", 5, 0);
  EXPECT_EQ(doc.GetSyntaxFlags(1), 0u);
  EXPECT_EQ(doc.GetSyntaxFlags(2), 7u);
  EXPECT_EQ(doc.GetSyntaxFlags(3), 9u);
  doc.SelReplace(0, 1, 2, 1, nullptr, 0, 0);
  EXPECT_EQ(doc.GetSyntaxFlags(1), 9u);
}

}  // namespace
