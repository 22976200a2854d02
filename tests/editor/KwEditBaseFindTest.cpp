// Finding text in the document: slices of long lines, alternatives, wildcards, line and selection
// restrictions, refusals; and bracket matching. Searches against a model are in the kernel's tests.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/EditTestSupport.h"
#include "editor/KwEditBase.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using Line = int64_t;
using kwtest::FillDoc;

// One search; the result, and the match as (index, length) when one was found.
struct Found {
  int64_t result;
  int64_t index;
  int64_t length;
};

Found Find(KwEditBase& doc, Line line, int64_t column, const std::vector<std::u16string>& alts, int forward,
           int matchCase, int fixSel = 0, int marked = 0, int wild = 0) {
  std::u16string all;
  std::vector<int64_t> ends;
  for (const auto& a : alts) {
    all += a;
    ends.push_back(static_cast<int64_t>(all.size()));
  }
  int64_t length = -7;
  const int64_t r = doc.FindTextW(&line, &column, all.data(), ends.data(), static_cast<int64_t>(alts.size()),
                                  forward, matchCase, fixSel, marked, wild, &length);
  if (r < 0) return {r, -1, -1};
  return {r, doc.LineStart(line) + column, length};
}

std::vector<int64_t> Collect(KwEditBase& doc, Line line, int64_t column, const std::u16string& pat, int forward,
                             int matchCase, int marked = 0, int wild = 0, std::vector<int64_t>* lengths = nullptr) {
  std::vector<int64_t> positions, lens;
  const int64_t end = static_cast<int64_t>(pat.size());
  int64_t length = 0;
  const int64_t n = doc.FindTextW(&line, &column, pat.data(), &end, 1, forward, matchCase, 0, marked, wild, &length,
                                  &positions, &lens);
  EXPECT_EQ(n, static_cast<int64_t>(positions.size()));
  EXPECT_EQ(positions.size(), lens.size());
  if (lengths) *lengths = lens;
  return positions;
}

TEST(EditFind, CaseAndAlternativesAtOnePosition) {
  KwEditBase doc;
  FillDoc(doc, u"xx Äpfel und äpfel\r\nabcdef abc\r\n", 4);
  Found f = Find(doc, 0, 0, {u"äPFEL"}, 1, 0);
  EXPECT_EQ(f.index, 3);
  f = Find(doc, 0, 0, {u"äpfel"}, 1, 1);
  EXPECT_EQ(f.index, 13);
  EXPECT_EQ(Find(doc, 0, 0, {u"ÄPFELX"}, 1, 0).result, -1);
  // Both alternatives start at "abcdef": the lower index wins, whichever is longer.
  for (int marked = 0; marked <= 1; ++marked) {
    if (marked) doc.InvertLineMark();  // all lines marked: the line search runs
    f = Find(doc, 1, 0, {u"abc", u"abcdef"}, 1, 1, 0, marked);
    EXPECT_EQ(f.result, 0);
    EXPECT_EQ(f.length, 3);
    f = Find(doc, 1, 0, {u"abcdef", u"abc"}, 1, 1, 0, marked);
    EXPECT_EQ(f.result, 0);
    EXPECT_EQ(f.length, 6);
    f = Find(doc, 1, 0, {u"zzz", u"ABC"}, 1, 0, 0, marked);
    EXPECT_EQ(f.result, 1);
    EXPECT_EQ(f.index, doc.LineStart(1));
    // Backwards from the line's end: the later "abc" comes first.
    f = Find(doc, 1, 10, {u"zzz", u"abc"}, 0, 1, 0, marked);
    EXPECT_EQ(f.result, 1);
    EXPECT_EQ(f.index, doc.LineStart(1) + 7);
  }
}

TEST(EditFind, LineSearchFindsMatchesAcrossSliceBorders) {
  // A line of 200000 units; matches placed across the borders of forward and backward slices.
  std::u16string line(200000, u'.');
  const int64_t fwdBorder = KwEditBase::kFindSlice;              // first forward slice ends here
  const int64_t bwdBorder = 200000 - KwEditBase::kFindSlice;     // first backward slice starts here
  line.replace(fwdBorder - 2, 5, u"NEEDL");
  line.replace(bwdBorder - 3, 5, u"NEEDL");
  line.replace(150000, 5, u"NEEDL");
  KwEditBase doc;
  FillDoc(doc, u"first\r\n" + line + u"\r\nlast NEEDL", 4000);
  doc.SetLineMark(1, 1);
  const int64_t base = doc.LineStart(1);
  std::vector<int64_t> want = {base + fwdBorder - 2, base + bwdBorder - 3, base + 150000};
  EXPECT_EQ(Collect(doc, 0, 0, u"needl", 1, 0, 1), want);
  EXPECT_EQ(Collect(doc, 2, 5, u"needl", 0, 0, 1), (std::vector<int64_t>{want[2], want[1], want[0]}));
  // The same through wildcards, which never take the stream search.
  std::vector<int64_t> lengths;
  EXPECT_EQ(Collect(doc, 0, 0, u"NE?DL", 1, 1, 1, 1, &lengths), want);
  EXPECT_EQ(lengths, (std::vector<int64_t>{5, 5, 5}));
  EXPECT_EQ(Collect(doc, 2, 5, u"N*L", 0, 1, 1, 1), (std::vector<int64_t>{want[2], want[1], want[0]}));
  // Unmarked line 2 holds a match too: found only without the restriction.
  EXPECT_EQ(Collect(doc, 0, 0, u"NEEDL", 1, 1, 0).size(), 4u);
}

TEST(EditFind, WildcardsStopAtTheEndOfTheLine) {
  KwEditBase doc;
  FillDoc(doc, u"xa\r\nbc\r\naxxbyyb\r\nq", 3);
  Found f = Find(doc, 0, 0, {u"a?"}, 1, 1, 0, 0, 1);
  EXPECT_EQ(f.index, doc.LineStart(2));  // not "a" + the end of line of line 0
  EXPECT_EQ(f.length, 2);
  f = Find(doc, 0, 0, {u"a*b"}, 1, 1, 0, 0, 1);  // "a" then the nearest "b" of the same line
  EXPECT_EQ(f.index, doc.LineStart(2));
  EXPECT_EQ(f.length, 4);
  f = Find(doc, 0, 0, {u"x*c"}, 1, 1, 0, 0, 1);  // "c" only in the next line
  EXPECT_EQ(f.result, -1);
  // With LF as end of line a CR is text of the line, but "?" still does not take it.
  FillDoc(doc, u"a\rb\na-b\n", 5, 10);
  f = Find(doc, 0, 0, {u"a?b"}, 1, 1, 0, 0, 1);
  EXPECT_EQ(f.index, 4);
  // "?" and "*" are plain units without the wildcard flag.
  FillDoc(doc, u"a?b axb", 5);
  EXPECT_EQ(Find(doc, 0, 0, {u"a?b"}, 1, 1).index, 0);
  EXPECT_EQ(Find(doc, 0, 1, {u"a?b"}, 1, 1, 0, 0, 1).index, 4);
}

TEST(EditFind, FindJokerPieces) {
  struct Row {
    const char16_t* pattern;
    const char16_t* text;
    int matchCase;
    int64_t want;
  } rows[] = {
      {u"ab", u"abc", 1, 2},      {u"AB", u"abc", 0, 2},   {u"AB", u"abc", 1, 0},
      {u"a*c", u"abbcxc", 1, 4},  {u"*b", u"bxx", 1, 1},   {u"a*", u"abc", 1, 1},
      {u"a?c", u"a\rc", 1, 0},    {u"a?c", u"a\nc", 1, 0}, {u"a?c", u"a-c", 1, 3},
      {u"a*x*z", u"a1x2z3z", 1, 5}, {u"a*q", u"abc", 1, 0}, {u"**", u"abc", 1, 0},
      {u"b", u"abc", 1, 0},       {u"abcd", u"abc", 1, 0},
  };
  for (const Row& r : rows) {
    const std::u16string p = r.pattern, t = r.text;
    EXPECT_EQ(KwEditBase::FindJoker(p.data(), static_cast<int64_t>(p.size()), t.data(), static_cast<int64_t>(t.size()),
                                    r.matchCase),
              r.want)
        << std::string(p.begin(), p.end()) << " in " << std::string(t.begin(), t.end());
  }
}

TEST(EditFind, MarkedLinesAndLineRestrictions) {
  KwEditBase doc;
  FillDoc(doc, u"key 0\r\nkey 1\r\nkey 2\r\nkey 3\r\n", 5);
  doc.SetLineMark(1, 1);
  doc.SetLineMark(3, 1);
  EXPECT_EQ(Collect(doc, 0, 0, u"KEY", 1, 0, 1), (std::vector<int64_t>{doc.LineStart(1), doc.LineStart(3)}));
  Found f = Find(doc, 1, 1, {u"key"}, 1, 1, 0, 1);  // behind the start column of line 1: line 3
  EXPECT_EQ(f.index, doc.LineStart(3));
  f = Find(doc, 2, 0, {u"key"}, 0, 1, 0, 1);  // backwards from line 2: line 1
  EXPECT_EQ(f.index, doc.LineStart(1));
  EXPECT_EQ(Find(doc, 0, 0, {u"0"}, 1, 1, 0, 1).result, -1);
}

TEST(EditFind, FixSelectionOfBothKinds) {
  kwtest::AssertionRecorder asserts;
  KwEditBase doc;
  FillDoc(doc, u"abc abc\r\nabc abc\r\nabc abc\r\n", 4);
  // Stream kind from (0, 5) to (1, 5): "abc" at (0,4) starts before it, (1,0) lies inside, (1,4) ends
  // behind it.
  doc.SetStickSelection(1, 0, 5, 1, 5);
  EXPECT_EQ(Find(doc, 0, 0, {u"abc"}, 1, 1, 1).index, doc.LineStart(1));
  EXPECT_EQ(Find(doc, 1, 1, {u"abc"}, 1, 1, 1).result, -1);
  EXPECT_EQ(Find(doc, 2, 7, {u"abc"}, 0, 1, 1).index, doc.LineStart(1));
  doc.SetStickSelection(1, 1, 5, 0, 5);  // the ends in either order
  EXPECT_EQ(Find(doc, 0, 0, {u"abc"}, 1, 1, 1).index, doc.LineStart(1));
  // Column kind, lines 1-2, columns 3-7: only the second "abc" of lines 1 and 2.
  doc.SetStickSelection(2, 1, 3, 2, 7);
  std::u16string pat = u"abc";
  int64_t end = 3, length = 0;
  std::vector<int64_t> positions;
  Line line = 0;
  int64_t column = 0;
  EXPECT_EQ(doc.FindTextW(&line, &column, pat.data(), &end, 1, 1, 1, 1, 0, 0, &length, &positions), 2);
  EXPECT_EQ(positions, (std::vector<int64_t>{doc.LineStart(1) + 4, doc.LineStart(2) + 4}));
  EXPECT_EQ(line, 1);
  EXPECT_EQ(column, 4);
  doc.SetStickSelection(2, 1, 3, 2, 6);  // too narrow for the match
  EXPECT_EQ(Find(doc, 0, 0, {u"abc"}, 1, 1, 1).result, -1);
  EXPECT_EQ(asserts.count(), 0u);
  // Without a fix selection the restriction is an internal error.
  doc.UnstickSelection();
  EXPECT_EQ(Find(doc, 0, 0, {u"abc"}, 1, 1, 1).result, -1);
  EXPECT_EQ(asserts.count(), 1u);
}

class EditFindBoxes : public kwtest::PlatformTest {};

TEST_F(EditFindBoxes, TooLongTextIsRefusedWithAMessageWhenInteractive) {
  KwEditBase doc;
  FillDoc(doc, u"abc\r\nabc", 100);
  doc.SetLineMark(1, 1);
  const std::u16string longText(KwEditBase::kFindSlice, u'a');
  EXPECT_EQ(Find(doc, 0, 0, {u"abc", longText}, 1, 1, 0, 1).result, -1);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_NE(platform_.boxes[0].message.find(u"Search text is too long"), std::u16string::npos);
  doc.SetInteractive(0);
  EXPECT_EQ(Find(doc, 0, 0, {u"abc", longText}, 1, 1, 0, 1).result, -1);
  EXPECT_EQ(platform_.boxes.size(), 1u);
  // One unit shorter is searched; the stream search has no such bound.
  EXPECT_EQ(Find(doc, 0, 0, {u"abc", longText.substr(1)}, 1, 1, 0, 1).index, doc.LineStart(1));
  EXPECT_EQ(Find(doc, 0, 0, {longText + u"b"}, 1, 1).result, -1);
  EXPECT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.waitCursorDepth, 0);
}

TEST(EditFind, BracketPartners) {
  KwEditBase doc;
  // Indexes: line 0 "f(a[1], (b)" 0-10, line 1 "  {x(]}) <y>" 13-24, line 2 ")" 27, line 3 "[z" 30.
  FillDoc(doc, u"f(a[1], (b)\r\n  {x(]}) <y>\r\n)\r\n[z", 4);
  struct Row {
    Line line;
    int64_t column;
    int result;
    kw::Index partner;
  } rows[] = {
      {0, 1, 1, 27},   // "(" of f(: "(b)" and "x(" ... ")" nest inside, across lines and chunks
      {2, 0, 1, 1},    // and back
      {0, 8, 1, 10},   // "(b)"
      {1, 4, 1, 20},   // "x(" ... ")": the "]" and "}" between are of other kinds
      {1, 5, 0, -1},   // "]": the only "[" before it is closed by "[1]" already
      {1, 2, 1, 19},   // "{" ... "}"
      {0, 3, 1, 5},    // "[1]"
      {1, 11, 1, 22},  // ">" back to "<"
      {3, 0, 0, -1},   // "[" without a partner
      {0, 0, 0, -1},   // no bracket
      {0, 11, 0, -1},  // behind the line's text
  };
  for (const Row& r : rows) {
    kw::Index p = -1;
    EXPECT_EQ(doc.MatchBrace(r.line, r.column, &p), r.result) << r.line << "," << r.column;
    if (r.result) {
      EXPECT_EQ(p, r.partner) << r.line << "," << r.column;
    }
  }
}

}  // namespace
