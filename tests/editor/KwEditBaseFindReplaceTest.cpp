// Replace-all and table replacement: the result against a plain model, the options, and the one undo
// step that restores and repeats the text exactly.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "base/Text.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditUndo.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using Line = int64_t;

void Fill(KwEditBase& doc, const std::u16string& text, int64_t units, char16_t eol = 13) {
  doc.SetChunkUnits(units);
  doc.InitEdit();
  doc.SetEOLType(eol);
  doc.AddText(text, 0, 0);
}

// Undo gives `before` back, redo `after`, each as one step, with the document's invariants intact.
void ExpectUndoRedoExact(KwEditBase& doc, const std::u16string& before, const std::u16string& after) {
  ASSERT_EQ(doc.GetAllText(), after);
  const int64_t pos = doc.GetUndoPos();
  EXPECT_GE(doc.UndoEdit(nullptr), 0);
  EXPECT_EQ(doc.GetAllText(), before);
  EXPECT_EQ(doc.GetUndoPos(), pos - 1);
  EXPECT_EQ(doc.Check(), 1);
  EXPECT_GE(doc.RedoEdit(nullptr), 0);
  EXPECT_EQ(doc.GetAllText(), after);
  EXPECT_EQ(doc.Check(), 1);
  EXPECT_GE(doc.UndoEdit(nullptr), 0);
  EXPECT_EQ(doc.GetAllText(), before);
  EXPECT_GE(doc.RedoEdit(nullptr), 0);
  EXPECT_EQ(doc.GetAllText(), after);
  EXPECT_EQ(doc.Check(), 1);
}

TEST(EditReplace, ReplaceAllMatchesModelAndUndoesExactly) {
  std::mt19937 rng(11);
  const std::u16string alphabet = u"abAB\r\n\f";
  const std::u16string replacements[] = {u"", u"X", u"xyz", u"Q\r\nQ", u"\r"};
  for (int round = 0; round < 60; ++round) {
    std::u16string text;
    const int n = 30 + static_cast<int>(rng() % 400);
    for (int i = 0; i < n; ++i) text += alphabet[rng() % alphabet.size()];
    const std::u16string find = round % 3 == 0 ? u"ab" : round % 3 == 1 ? u"b\r\na" : u"aBa";
    const std::u16string& rep = replacements[round % 5];
    const int matchCase = round % 2;
    KwEditBase doc;
    Fill(doc, text, 3 + round % 6);
    const std::u16string want = kw::StrReplace(text, find, rep, matchCase);
    const int64_t count = doc.ReplaceAll(0, doc.GetLinesInDoc(), find, rep, matchCase ? KwEditBase::kFindMatchCase : 0);
    SCOPED_TRACE(round);
    EXPECT_EQ(doc.GetAllText(), want);
    EXPECT_EQ(doc.Check(), 1);
    EXPECT_EQ(count > 0, want != text || kw::StrReplace(text, find, u"\x1", matchCase) != text);
    if (count > 0) {
      EXPECT_EQ(doc.GetUndo()->GetRecord(doc.GetUndoPos() - 1)->type, kw::KwEditUndo::kReplaceAll);
      ExpectUndoRedoExact(doc, text, want);
      // The line lookup agrees with a fresh document of the same text.
      KwEditBase fresh;
      Fill(fresh, want, 64);
      ASSERT_EQ(doc.GetLinesInDoc(), fresh.GetLinesInDoc());
      for (Line l = 0; l <= fresh.GetLinesInDoc(); ++l) EXPECT_EQ(doc.LineLength(l, 1), fresh.LineLength(l, 1));
      EXPECT_EQ(doc.GetLongestLine() >= fresh.GetLongestLine(), true);
    } else {
      EXPECT_EQ(doc.CanUndo(), 0);
    }
  }
}

TEST(EditReplace, LineRangeMarksAndOptions) {
  KwEditBase doc;
  const std::u16string text = u"Cat cat\r\ncat CAT\r\ncat\r\ncat cat cat\r\n";
  Fill(doc, text, 5);
  doc.SetLineMark(1, 1);
  doc.SetLineMark(3, 1);
  doc.ToggleBookMark(2);
  // Lines 1-2 only, case-blind: the marks and bookmarks stay where they were.
  EXPECT_EQ(doc.ReplaceAll(1, 2, u"cat", u"lynx", 0), 3);
  EXPECT_EQ(doc.GetAllText(), u"Cat cat\r\nlynx lynx\r\nlynx\r\ncat cat cat\r\n");
  EXPECT_EQ(doc.GetLineMark(1) + doc.GetLineMark(3), 2);
  EXPECT_EQ(doc.GetLineMark(2), 0);
  EXPECT_EQ(doc.IsBookMarkInLine(2), 1);
  EXPECT_EQ(doc.GetLongestLine(), 11);
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetAllText(), text);
  // Match case.
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"cat", u"dog", KwEditBase::kFindMatchCase), 6);
  EXPECT_EQ(doc.GetAllText(), u"Cat dog\r\ndog CAT\r\ndog\r\ndog dog dog\r\n");
  doc.UndoEdit(nullptr);
  // Marked lines only.
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"cat", u"x", KwEditBase::kFindMarkedOnly), 5);
  EXPECT_EQ(doc.GetAllText(), u"Cat cat\r\nx x\r\ncat\r\nx x x\r\n");
  ExpectUndoRedoExact(doc, text, u"Cat cat\r\nx x\r\ncat\r\nx x x\r\n");
  doc.UndoEdit(nullptr);
  // Wildcards: "c*t" takes the nearest "t" of the same line; "?" at a line's end finds nothing.
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"c?t", u"[?]", KwEditBase::kFindWildcards), 8);
  EXPECT_EQ(doc.GetAllText(), u"[?] [?]\r\n[?] [?]\r\n[?]\r\n[?] [?] [?]\r\n");
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"t*c", u"-", KwEditBase::kFindWildcards), 4);
  EXPECT_EQ(doc.GetAllText(), u"Ca-at\r\nca-AT\r\ncat\r\nca-a-at\r\n");
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"t*c", u"-", KwEditBase::kFindWildcards | KwEditBase::kFindMatchCase), 3);
  EXPECT_EQ(doc.GetAllText(), u"Ca-at\r\ncat CAT\r\ncat\r\nca-a-at\r\n");
  doc.UndoEdit(nullptr);
  // Fix selection, column kind: columns 4-7 of lines 0-3.
  doc.SetStickSelection(2, 0, 4, 3, 7);
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"CAT", u"y", KwEditBase::kFindFixSelection), 3);
  EXPECT_EQ(doc.GetAllText(), u"Cat y\r\ncat y\r\ncat\r\ncat y cat\r\n");
  doc.UndoEdit(nullptr);
  // Stream kind: from (0, 2) to (2, 3).
  doc.SetStickSelection(1, 0, 2, 2, 3);
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"cat", u"y", KwEditBase::kFindFixSelection), 4);
  EXPECT_EQ(doc.GetAllText(), u"Cat y\r\ny y\r\ny\r\ncat cat cat\r\n");
  doc.UndoEdit(nullptr);
  EXPECT_EQ(doc.GetAllText(), text);
  // Nothing found: no step.
  const int64_t pos = doc.GetUndoPos();
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"zebra", u"y", 0), 0);
  EXPECT_EQ(doc.GetUndoPos(), pos);
}

TEST(EditReplace, TableLowerPairWinsAndUndoesExactly) {
  KwEditBase doc;
  const std::u16string text = u"abc ab a\r\nbca\r\n";
  Fill(doc, text, 3);
  // Pairs: "ab" -> "1", "abc" -> "2", "a" -> "33", "\r\nb" -> "|".
  const std::u16string all = u"ab1abc2a33\r\nb|";
  const int64_t ends[] = {2, 3, 6, 7, 8, 10, 13, 14};
  EXPECT_EQ(doc.ReplaceAllByTable(0, doc.GetLinesInDoc(), all.data(), ends, 4, KwEditBase::kFindMatchCase), 5);
  const std::u16string want = u"1c 1 33|c33\r\n";
  EXPECT_EQ(doc.GetAllText(), want);
  EXPECT_EQ(doc.GetLinesInDoc(), 1);
  ExpectUndoRedoExact(doc, text, want);
}

TEST(EditReplace, ManyReplacementsInLargeDocument) {
  // Enough text for many full chunks; the replacement grows every chunk.
  std::u16string line = u"alpha beta gamma beta\r\n";
  std::u16string text;
  for (int i = 0; i < 20000; ++i) text += line;
  KwEditBase doc;
  Fill(doc, text, KwEditBase::kChunkUnits);
  doc.SetLineMark(12345, 1);
  doc.GetUndo()->SetConfirmAnswer(1);  // 40000 replacements: recorded without a question
  EXPECT_EQ(doc.ReplaceAll(0, doc.GetLinesInDoc(), u"beta", u"BETA-2", KwEditBase::kFindMatchCase), 40000);
  const std::u16string want = kw::StrReplace(text, u"beta", u"BETA-2", 1);
  EXPECT_EQ(doc.GetAllText(), want);
  EXPECT_EQ(doc.GetLineMark(12345), 1);
  EXPECT_EQ(doc.LineLength(19999, 0), 25);
  ExpectUndoRedoExact(doc, text, want);
}

}  // namespace
