// The bulk replacement the line tasks apply their changes with (KwEditBase::ReplaceRanges): against
// the same changes made one by one with SelReplace, in tiny and larger chunks, with lines added and
// removed, marks and bookmarks moving with their lines, and one undo step restoring the text.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"
#include "editor/KwEditUndo.h"
#include "editor/KwEditView.h"
#include "editor/KwRecordEvent.h"
#include "base/Format.h"
#include "platform/ScriptedPlatform.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using kw::KwTextSplice;

void Load(KwEditBase& doc, const std::u16string& text, int64_t chunk, char16_t eol = 13) {
  doc.SetChunkUnits(chunk);
  doc.InitEdit();
  doc.SetEOLType(eol);
  doc.AddText(text, 0, 0);
  doc.ResetUndoStack();
}

int64_t LongestOf(KwEditBase& doc) {
  int64_t n = 0;
  for (int64_t l = 0; l <= doc.GetLinesInDoc(); ++l) n = std::max(n, doc.LineLength(l));
  return n;
}

TEST(EditBaseReplaceRanges, MatchesOneByOneEditsWithLineChangesMarksAndUndo) {
  for (const char16_t eol : {u'\r', u'\n'})
  for (int64_t chunk : {3, 7, 256}) {
    const std::u16string nl = eol == u'\r' ? u"\r\n" : u"\n";
    const std::u16string pieces[] = {u"", u"x", nl, u"ab" + nl + u"cd", nl + nl, u"long piece of text"};
    for (unsigned seed = 1; seed <= 30; ++seed) {
      SCOPED_TRACE(testing::Message() << "eol " << int(eol) << " chunk " << chunk << " seed " << seed);
      std::mt19937 rng(seed);
      std::u16string text;
      const int lines = 5 + static_cast<int>(rng() % 30);
      for (int l = 0; l < lines; ++l) {
        text += std::u16string(rng() % 9, static_cast<char16_t>(u'a' + l % 26));
        if (l + 1 < lines || rng() % 2) text += nl;
      }
      KwEditBase bulk, single;
      Load(bulk, text, chunk, eol);
      Load(single, text, chunk, eol);
      const int64_t longestBefore = LongestOf(bulk);
      // Even sets have no marks nor bookmarks: then no line numbers are counted for them.
      for (int64_t l = 0; seed % 2 == 1 && l <= bulk.GetLinesInDoc(); ++l) {
        if (rng() % 3 == 0) {
          bulk.SetLineMark(l, 1);
          single.SetLineMark(l, 1);
        }
        if (rng() % 5 == 0) {
          bulk.ToggleBookMark(l);
          single.ToggleBookMark(l);
        }
      }
      // Sorted, non-overlapping splices; a removed range may hold ends of line (never half a CR LF).
      std::vector<KwTextSplice> splices;
      std::vector<std::u16string> keep;
      keep.reserve(64);
      kw::Index at = 0;
      const auto total = static_cast<kw::Index>(text.size());
      // Every third set removes runs of whole lines, the deletion of a line selection (it lengthens no
      // line); the end of the text may be in a run, with or without the end of line before it.
      std::vector<kw::Index> starts{0};
      for (size_t i = 0; i < text.size(); ++i)
        if (text[i] == eol && !(eol == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')) starts.push_back(i + 1);
        else if (eol == u'\r' && text[i] == u'\n' && i > 0 && text[i - 1] == u'\r') starts.push_back(i + 1);
      for (size_t l = 0; seed % 3 == 0 && l + 1 < starts.size(); ++l) {
        if (rng() % 3 != 0) continue;
        const size_t run = 1 + rng() % 2;
        const kw::Index end = l + run < starts.size() ? starts[l + run] : total;
        kw::Index from = starts[l];
        if (end == total && l > 0 && rng() % 2) from -= static_cast<kw::Index>(nl.size());
        if (!splices.empty() && from < splices.back().at + splices.back().removed) continue;
        splices.push_back({from, end - from, nullptr, 0});
        l += run;
      }
      while (seed % 3 != 0 && splices.size() < 40) {
        at += static_cast<kw::Index>(rng() % 6);
        if (at > total) break;
        if (at > 0 && at < total && text[static_cast<size_t>(at)] == u'\n') ++at;
        int64_t removed = static_cast<int64_t>(rng() % 5);
        if (at + removed > total) removed = total - at;
        if (at + removed < total && removed > 0 && text[static_cast<size_t>(at + removed)] == u'\n') ++removed;
        keep.push_back(pieces[rng() % 6]);
        splices.push_back({at, removed, keep.back().data(), static_cast<int64_t>(keep.back().size())});
        at += removed;
      }
      std::u16string model = text;
      for (size_t k = splices.size(); k-- > 0;) {
        const KwTextSplice& s = splices[k];
        model.replace(static_cast<size_t>(s.at), static_cast<size_t>(s.removed), s.text,
                      static_cast<size_t>(s.length));
        single.SelReplaceAt(s.at, s.at + s.removed, s.text, s.length, 0);
      }
      ASSERT_EQ(bulk.ReplaceRanges(splices.data(), static_cast<int64_t>(splices.size()), 1),
                static_cast<int64_t>(splices.size()));
      EXPECT_EQ(bulk.GetAllText(), model);
      EXPECT_EQ(single.GetAllText(), model);
      EXPECT_EQ(bulk.Check(), 1);
      EXPECT_EQ(bulk.GetLinesInDoc(), single.GetLinesInDoc());
      for (int64_t l = 0; l <= single.GetLinesInDoc(); ++l) {
        EXPECT_EQ(bulk.GetLineMark(l), single.GetLineMark(l)) << "line " << l;
        EXPECT_EQ(bulk.IsBookMarkInLine(l), single.IsBookMarkInLine(l)) << "line " << l;
      }
      // The longest line only rises, and within one chunk to the longest line there is now (splices
      // across chunk borders are made one by one and may see a longer line on the way).
      if (chunk == 256)
        EXPECT_EQ(bulk.GetLongestLine(), std::max(longestBefore, LongestOf(bulk)));
      else
        EXPECT_GE(bulk.GetLongestLine(), LongestOf(bulk));
      bulk.UndoEdit(nullptr);
      EXPECT_EQ(bulk.GetAllText(), text);
      EXPECT_EQ(bulk.Check(), 1);
      bulk.RedoEdit(nullptr);
      EXPECT_EQ(bulk.GetAllText(), model);
    }
  }
}

TEST(EditBaseReplaceRanges, RefusesUnsortedOrOutOfRangeSplices) {
  kwtest::AssertionRecorder asserts;
  KwEditBase doc;
  Load(doc, u"abcdef", 3);
  const KwTextSplice overlap[] = {{2, 2, u"x", 1}, {3, 1, u"y", 1}};
  EXPECT_EQ(doc.ReplaceRanges(overlap, 2, 1), -1);
  const KwTextSplice beyond[] = {{5, 4, u"x", 1}};
  EXPECT_EQ(doc.ReplaceRanges(beyond, 1, 1), -1);
  EXPECT_EQ(asserts.count(), 2u);
  EXPECT_EQ(doc.GetAllText(), u"abcdef");
  EXPECT_FALSE(doc.CanUndo());
  // Adjacent splices are fine; no undo record when asked for none.
  const KwTextSplice adjacent[] = {{0, 2, u"X", 1}, {2, 0, u"-", 1}, {2, 4, nullptr, 0}};
  EXPECT_EQ(doc.ReplaceRanges(adjacent, 3, 0), 3);
  EXPECT_EQ(doc.GetAllText(), u"X-");
  EXPECT_FALSE(doc.CanUndo());
  EXPECT_EQ(doc.ReplaceRanges(nullptr, 0, 1), 0);
}

// Without marks no line numbers are counted, but the lines a splice removes still decide how it is
// made: an end of line overwritten by a unit, and removals that join lines into a longer one.
TEST(EditBaseReplaceRanges, RemovedEndsOfLineCountWithoutMarks) {
  KwEditBase doc;
  Load(doc, u"ab\ncd\nef", 4, u'\n');
  const KwTextSplice over[] = {{2, 1, u"x", 1}, {5, 1, u"y", 1}};
  ASSERT_EQ(doc.ReplaceRanges(over, 2, 1), 2);
  EXPECT_EQ(doc.GetAllText(), u"abxcdyef");
  EXPECT_EQ(doc.GetLinesInDoc(), 0);
  EXPECT_EQ(doc.Check(), 1);
  Load(doc, u"aaaa\r\nbbbbb\r\ncc\r\nd", 5);
  EXPECT_EQ(doc.GetLongestLine(), 5);
  const KwTextSplice joins[] = {{4, 2, nullptr, 0}, {11, 4, nullptr, 0}};
  ASSERT_EQ(doc.ReplaceRanges(joins, 2, 1), 2);
  EXPECT_EQ(doc.GetAllText(), u"aaaabbbbb\r\nd");
  EXPECT_EQ(doc.GetLongestLine(), 9);
  EXPECT_EQ(doc.Check(), 1);
}

// More splices than the undo memory's group size: the memory's answer decides whether the step is
// recorded, made without a record, or not made at all.
TEST(EditBaseReplaceRanges, LargeStepsAskWhetherTheyAreRecorded) {
  std::u16string text;
  for (int i = 0; i < 3000; ++i) text += u"line\r\n";
  std::vector<KwTextSplice> splices;
  for (int i = 0; i < 3000; ++i) splices.push_back({i * 6 + 4, 0, u"!", 1});
  std::u16string changed = text;
  for (int i = 3000; i-- > 0;) changed.insert(static_cast<size_t>(i * 6 + 4), u"!");
  for (int answer : {0, 1, 2}) {
    SCOPED_TRACE(answer);
    kw::ScriptedPlatform platform;  // the question itself is answered "no box shown": cancel
    kw::ScopedPlatform scope(platform);
    KwEditBase doc;
    Load(doc, text, 256);
    doc.GetUndo()->SetConfirmAnswer(answer);
    const int64_t made = doc.ReplaceRanges(splices.data(), static_cast<int64_t>(splices.size()), 1);
    EXPECT_EQ(made, answer == 0 ? -3 : 3000);
    EXPECT_EQ(doc.GetAllText(), answer == 0 ? text : changed);
    EXPECT_EQ(platform.boxes.size(), answer == 0 ? 1u : 0u);
    EXPECT_EQ(doc.CanUndo(), answer == 1 ? 1 : 0);
    EXPECT_EQ(doc.GetModified(), answer == 0 ? 0 : 1);
    EXPECT_EQ(doc.GetLongestLine(), answer == 0 ? 4 : 5);
    EXPECT_EQ(doc.Check(), 1);
    if (answer == 1) {
      doc.UndoEdit(nullptr);
      EXPECT_EQ(doc.GetAllText(), text);
    }
  }
}

}  // namespace

namespace {

// A column calculation over more lines than the view applies at once: its changes go in in parts
// behind the walk, and still make the text of one pass and one undo step.
TEST(ExecuteColCalcInParts, LargeTextGivesOnePassAndOneUndoStep) {
  std::u16string text, want;
  for (int i = 0; i < 20000; ++i) {
    char line[64], result[64];
    const double v = (i % 3000) * 0.25;  // six characters, as the field [7-12] reads them
    std::snprintf(line, sizeof line, "%05d %6.2f", i, v);
    std::snprintf(result, sizeof result, "%8.3f", v * 2 - 1);
    text += kw::Widen(line) + u"\r\n";
    want += kw::Widen(line) + u" " + kw::Widen(result) + u"\r\n";
  }
  for (const int64_t chunk : {int64_t{4096}, KwEditBase::kChunkUnits}) {
    SCOPED_TRACE(chunk);
    kw::ScriptedPlatform platform;
    kw::ScopedPlatform scope(platform);
    KwEditBase doc;
    Load(doc, text, chunk);
    doc.GetUndo()->SetConfirmAnswer(1);
    kw::KwEditView view(&doc);
    kw::KwColCalcEvent calc;
    calc.m_Term = u"[7-12]*2-1";
    calc.m_FirstCol = 14;
    calc.m_LastCol = 21;
    calc.m_Picture = u"####.###";
    ASSERT_EQ(view.ExecuteColCalc(&calc), 1);
    EXPECT_EQ(view.GetLastExecute().changed, 20000);
    EXPECT_EQ(doc.GetAllText(), want);
    EXPECT_EQ(doc.Check(), 1);
    EXPECT_EQ(doc.GetLongestLine(), 21);
    doc.UndoEdit(nullptr);
    EXPECT_EQ(doc.GetAllText(), text);
    EXPECT_FALSE(doc.CanUndo());
    doc.RedoEdit(nullptr);
    EXPECT_EQ(doc.GetAllText(), want);
    EXPECT_EQ(doc.Check(), 1);
  }
}

}  // namespace
