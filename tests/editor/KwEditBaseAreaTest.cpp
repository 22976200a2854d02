// The area operations of the document: what each changes per area kind, that an unchanged text records
// nothing, that undo restores the text unit for unit and redo makes the change again, the progress
// stops in either pass, and the stick selection.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"
#include "editor/KwEditUndo.h"
#include "editor/EditTestSupport.h"
#include "platform/Platform.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using Line = int64_t;
using kwtest::Visible;

class EditAreaTest : public kwtest::PlatformTest {
 protected:
  // Tiny chunks so that every walk and every write crosses chunk borders.
  void Fill(const std::u16string& text, char16_t eol = 13) { kwtest::FillDoc(doc_, text, 3, eol); }
  // Runs `op`, expects `want` and one undo record of `type` (none when the text stays), then checks
  // that undo gives back the old text and redo the new one.
  void ExpectOp(const std::function<int()>& op, const std::u16string& want, uint32_t type,
                const std::string& what) {
    SCOPED_TRACE(what);
    const std::u16string before = doc_.GetAllText();
    const int64_t records = doc_.GetUndo()->GetCount();
    EXPECT_EQ(op(), 1);
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(want));
    EXPECT_EQ(doc_.Check(), 1);
    if (want == before) {
      EXPECT_EQ(doc_.GetUndo()->GetCount(), records) << "an unchanged text records nothing";
      return;
    }
    ASSERT_EQ(doc_.GetUndo()->GetCount(), records + 1);
    EXPECT_EQ(doc_.GetUndo()->GetRecord(records)->type, type);
    EXPECT_GE(doc_.UndoEdit(nullptr), 0);
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(before));
    EXPECT_EQ(doc_.Check(), 1);
    EXPECT_GE(doc_.RedoEdit(nullptr), 0);
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(want));
    EXPECT_EQ(doc_.Check(), 1);
    EXPECT_EQ(asserts_.count(), 0u);
  }
  KwEditBase doc_;
};

struct AreaRow {
  unsigned area;
  Line l1;
  int64_t c1;
  Line l2;
  int64_t c2;
  std::vector<Line> marks;
  const char16_t* want;
};

TEST_F(EditAreaTest, LowerUpperChangesExactlyTheAreaOfEachKind) {
  // Line 1 is short for the column block; the last line has no end of line.
  const std::u16string text = u"abc \u00e4b\r\nx\r\nmnop";
  const AreaRow rows[] = {
      {kw::kAreaText, 0, 0, 0, 0, {}, u"ABC \u00c4B\r\nX\r\nMNOP"},
      {kw::kAreaStream, 0, 2, 2, 2, {}, u"abC \u00c4B\r\nX\r\nMNop"},
      {kw::kAreaStream, 0, 5, 1, 0, {}, u"abc \u00e4B\r\nx\r\nmnop"},  // ends at column 0: nothing of line 1
      {kw::kAreaStream, 2, 1, 2, 9, {}, u"abc \u00e4b\r\nx\r\nmNOP"},  // past the end of the last line
      {kw::kAreaColumn, 0, 1, 2, 3, {}, u"aBC \u00e4b\r\nx\r\nmNOp"},  // line 1 is shorter than column 1
      {kw::kAreaColumn, 0, 0, 2, 0, {}, u"abc \u00e4b\r\nx\r\nmnop"},  // an empty block
      {kw::kAreaMarked, 0, 0, 2, 0, {0, 2}, u"ABC \u00c4B\r\nx\r\nMNOP"},
      {kw::kAreaMarked, 1, 0, 2, 0, {0}, u"abc \u00e4b\r\nx\r\nmnop"},  // the marked line lies outside
      {kw::kAreaMarked, 0, 0, 2, 0, {}, u"abc \u00e4b\r\nx\r\nmnop"},   // none marked
  };
  for (const auto& r : rows) {
    Fill(text);
    for (const Line l : r.marks) doc_.SetLineMark(l, 1);
    ExpectOp([&] { return doc_.LowerUpper(r.area, r.l1, r.c1, r.l2, r.c2, 0, -1, nullptr); }, r.want,
             kw::kUndoLowerUpper, "area " + std::to_string(r.area) + " from line " + std::to_string(r.l1));
  }
  Fill(u"ABC\u00c4\u00d7");  // to lower: the sign U+00D7 is in the case table's range as well
  ExpectOp([&] { return doc_.LowerUpper(kw::kAreaText, 0, 0, 0, 0, 1, -1, nullptr); }, u"abc\u00e4\u00f7",
           kw::kUndoLowerUpper, "lower");
  Fill(u"\u00ff\u00e0z");  // OEM page 437: U+00C0 is not in it, so U+00E0 stays
  ExpectOp([&] { return doc_.LowerUpper(kw::kAreaText, 0, 0, 0, 0, 0, 4, nullptr); }, u"\u00ff\u00e0Z",
           kw::kUndoLowerUpper, "oem");
}

TEST_F(EditAreaTest, WrongAreasAreInternalErrors) {
  Fill(u"ab\r\ncd");
  const AreaRow rows[] = {{3, 0, 0, 1, 0, {}, nullptr},           {kw::kAreaStream, 1, 0, 0, 0, {}, nullptr},
                          {kw::kAreaColumn, 0, 2, 1, 1, {}, nullptr}, {kw::kAreaColumn, 0, 0, 2, 1, {}, nullptr},
                          {kw::kAreaStream, 0, -1, 1, 1, {}, nullptr}};
  for (const auto& r : rows) {
    asserts_.Clear();
    EXPECT_EQ(doc_.LowerUpper(r.area, r.l1, r.c1, r.l2, r.c2, 0, -1, nullptr), 0);
    EXPECT_EQ(asserts_.count(), 1u);
  }
  EXPECT_EQ(doc_.GetAllText(), u"ab\r\ncd");
  asserts_.Clear();
  EXPECT_EQ(doc_.BlankOver(kw::kAreaText, 0, 0, 0, 0, nullptr, 13), 0);  // would make lines
  EXPECT_EQ(doc_.EolToChar(kw::kAreaText, 0, 0, 0, 0, 10, nullptr), 0);  // LF behind CR would end a line
  EXPECT_EQ(doc_.CharToEol(kw::kAreaText, 0, 0, 0, 0, 13, nullptr), 0);
  EXPECT_EQ(asserts_.count(), 3u);
  EXPECT_EQ(doc_.GetUndo()->GetCount(), 0);
}

TEST_F(EditAreaTest, BlankOverAndRemoveZeros) {
  Fill(u"a\fbc\r\n\r\nxyz");
  ExpectOp([&] { return doc_.BlankOver(kw::kAreaColumn, 0, 1, 2, 3, nullptr); }, u"a  c\r\n\r\nx  ",
           kw::kUndoBlankOver, "column block, an empty line");
  int64_t n = 0;
  doc_.GetFFTable(&n);
  EXPECT_EQ(n, 0) << "the form feed was blanked";
  doc_.UndoEdit(nullptr);
  doc_.GetFFTable(&n);
  EXPECT_EQ(n, 1) << "and is back";
  Fill(u"ab\r\ncd");
  ExpectOp([&] { return doc_.BlankOver(kw::kAreaText, 0, 0, 0, 0, nullptr, u'-'); }, u"--\r\n--",
           kw::kUndoCharOver, "another character keeps the ends of line");
  Fill(u"  \r\n ");
  ExpectOp([&] { return doc_.BlankOver(kw::kAreaText, 0, 0, 0, 0, nullptr); }, u"  \r\n ", 0, "blanks already");

  struct ZeroRow {
    int mode;
    const char16_t* text;
    const char16_t* want;
  };
  const ZeroRow zeros[] = {
      {kw::kZerosLeading, u"007 0 0.50 x00\r\n000", u"  7 0 0.50 x 0\r\n  0"},
      {kw::kZerosTrailing, u"007 1.500 2,0 3.000", u"007 1.5   2,0 3.0  "},
      {0, u"0010.2300", u"  10.23  "},
      {0, u"1.5 12 0", u"1.5 12 0"},
  };
  for (const auto& z : zeros) {
    Fill(z.text);
    ExpectOp([&] { return doc_.RemoveZeros(kw::kAreaText, 0, 0, 0, 0, z.mode, nullptr); }, z.want,
             kw::kUndoRemoveZeros, Visible(z.text));
  }
  Fill(u"0070\r\n0070");  // only the digits inside the block count as the number
  ExpectOp([&] { return doc_.RemoveZeros(kw::kAreaColumn, 0, 1, 1, 4, kw::kZerosLeading, nullptr); },
           u"0 70\r\n0 70", kw::kUndoRemoveZeros, "block");
}

TEST_F(EditAreaTest, TabsAndBlanksUnderTabStops) {
  const int64_t four[] = {4};
  const int64_t stops[] = {4, 2};  // stops at 4, 6, 8, ...
  Fill(u"a\tb\r\n\t\tx\r\n  \ty");
  ExpectOp([&] { return doc_.TabToBlank(kw::kAreaText, 0, 0, 0, 0, four, 1, 0, nullptr); },
           u"a   b\r\n        x\r\n    y", kw::kUndoTabToBlank, "every 4");
  Fill(u"a\tb\r\n\t\tx");
  ExpectOp([&] { return doc_.TabToBlank(kw::kAreaText, 0, 0, 0, 0, stops, 2, 0, nullptr); },
           u"a   b\r\n      x", kw::kUndoTabToBlank, "4 then every 2");
  Fill(u"\tx\ty");
  ExpectOp([&] { return doc_.TabToBlank(kw::kAreaText, 0, 0, 0, 0, nullptr, 0, 0, nullptr, 0, 100, 1); },
           u"        x\ty", kw::kUndoTabToBlank, "indentation only, stops every 8");
  Fill(u"\ta\tb\tc");
  ExpectOp([&] { return doc_.TabToBlank(kw::kAreaColumn, 0, 1, 0, 4, four, 1, 0, nullptr); },
           u"\ta   b\tc", kw::kUndoTabToBlank, "only the tab inside the block, at its display column");

  Fill(u"a   b\r\n        x\r\na b\r\nab  c   d");
  ExpectOp([&] { return doc_.BlankToTab(kw::kAreaText, 0, 0, 0, 0, four, 1, nullptr); },
           u"a\tb\r\n\t\tx\r\na b\r\nab\tc\td", kw::kUndoBlankToTab, "runs of two or more up to a stop");
  Fill(u"   x");  // a run that does not reach a stop stays
  ExpectOp([&] { return doc_.BlankToTab(kw::kAreaText, 0, 0, 0, 0, four, 1, nullptr); }, u"   x", 0, "short");
  Fill(u"    a    b");
  ExpectOp([&] { return doc_.BlankToTab(kw::kAreaText, 0, 0, 0, 0, four, 1, nullptr, 0, 100, 1); },
           u"\ta    b", kw::kUndoBlankToTab, "indentation only");
}

TEST_F(EditAreaTest, CharactersAndEndsOfLine) {
  Fill(u"a;b\r\nc;\r\n;");
  doc_.SetLineMark(1, 1);
  ExpectOp([&] { return doc_.CharToEol(kw::kAreaText, 0, 0, 0, 0, u';', nullptr); },
           u"a\r\nb\r\nc\r\n\r\n\r\n", kw::kUndoCharToEol, "CR LF");
  EXPECT_EQ(doc_.GetLinesInDoc(), 5);
  doc_.UndoEdit(nullptr);
  EXPECT_EQ(doc_.GetLineMark(1), 1) << "the marked line keeps its mark through the round trip";
  EXPECT_EQ(doc_.GetLineMarkCount(0, 2), 1);

  Fill(u"ab\r\ncd\r\nef\r\ngh");
  ExpectOp([&] { return doc_.EolToChar(kw::kAreaText, 0, 0, 0, 0, u'|', nullptr); }, u"ab|cd|ef|gh",
           kw::kUndoEolToChar, "all");
  Fill(u"ab\r\ncd\r\nef\r\ngh");
  ExpectOp([&] { return doc_.EolToChar(kw::kAreaStream, 0, 1, 2, 0, u'|', nullptr); }, u"ab|cd|ef\r\ngh",
           kw::kUndoEolToChar, "a stream ending at column 0 takes the end of line before it");
  Fill(u"ab\r\ncd\r\nef\r\ngh");
  doc_.SetLineMark(2, 1);
  doc_.SetLineMark(3, 1);
  ExpectOp([&] { return doc_.EolToChar(kw::kAreaMarked, 0, 0, 3, 0, u'|', nullptr); }, u"ab\r\ncd\r\nef|gh",
           kw::kUndoEolToChar, "marked lines; the last line has none");
  // With CR: a lone CR and a CR LF come back as they were.
  Fill(u"a\rb\r\nc\nd");
  ExpectOp([&] { return doc_.EolToChar(kw::kAreaText, 0, 0, 0, 0, u'|', nullptr); }, u"a|b|c\nd",
           kw::kUndoEolToChar, "lone CR");
  Fill(u"a;b\n;", 10);
  ExpectOp([&] { return doc_.CharToEol(kw::kAreaColumn, 0, 0, 1, 1, u';', nullptr); }, u"a;b\n\n",
           kw::kUndoCharToEol, "LF, column block");
}

TEST_F(EditAreaTest, ColumnsAndLineLengths) {
  Fill(u"abcd\r\nx\r\n\r\nwxyz");
  ExpectOp([&] { return doc_.InsertColumn(0, 3, 2, 4, u"12", 0, 0, nullptr); },
           u"ab12cd\r\nx 12\r\n  12\r\nwx12yz", kw::kUndoInsertColumn, "short lines are lengthened");
  Fill(u"abcd\r\nx\r\nwxyz");
  ExpectOp([&] { return doc_.InsertColumn(0, 2, 1, 3, u"P\r\nQRS", 1, 0, nullptr); },
           u"aP bcd\r\nxQR\r\nw  xyz", kw::kUndoInsertColumn, "one piece per line, cut and padded");
  Fill(u"abcd\r\nefgh\r\nijkl");
  doc_.SetLineMark(1, 1);
  ExpectOp([&] { return doc_.InsertColumn(0, 2, 0, 1, u">", 0, 1, nullptr); }, u"abcd\r\n>efgh\r\nijkl",
           kw::kUndoInsertColumn, "marked only");

  Fill(u"abcdef\r\nxy\r\n\r\nuvwxyz");
  std::u16string cut;
  ExpectOp([&] { return doc_.DeleteColumn(0, 3, 1, 4, &cut, 1, 0, nullptr); }, u"aef\r\nx\r\n\r\nuyz",
           kw::kUndoDeleteColumn, "delete");
  EXPECT_EQ(Visible(cut), Visible(u"bcd\ny  \n   \nvwx\n"));
  // The padded copy puts the column back.
  ExpectOp([&] { return doc_.InsertColumn(0, 3, 1, 4, cut, 1, 0, nullptr); },
           u"abcdef\r\nxy  \r\n    \r\nuvwxyz", kw::kUndoInsertColumn, "back");
  Fill(u"a\r\nb");
  ExpectOp([&] { return doc_.DeleteColumn(0, 1, 3, 5, &cut, 0, 0, nullptr); }, u"a\r\nb", 0, "beyond the lines");
  EXPECT_EQ(Visible(cut), Visible(u"\n\n"));

  Fill(u"ab\r\nabcdef\r\n\r\nx");
  ExpectOp([&] { return doc_.InflateLines(0, 3, 4, 0, nullptr); }, u"ab  \r\nabcdef\r\n    \r\nx   ",
           kw::kUndoInflateLines, "inflate");
  ExpectOp([&] { return doc_.ReduceLines(0, 3, 0, nullptr); }, u"ab\r\nabcdef\r\n\r\nx", kw::kUndoReduceLines,
           "reduce is the inverse");
  Fill(u"a \t \r\nb\t\r\n  ");
  ExpectOp([&] { return doc_.ReduceLines(0, 2, 0, nullptr); }, u"a \t\r\nb\t\r\n", kw::kUndoReduceLines,
           "blanks only");
  Fill(u"a \t \r\nb\t\r\n  ");
  doc_.SetLineMark(0, 1);
  ExpectOp([&] { return doc_.ReduceLines(0, 2, kw::kReduceTabs | kw::kReduceMarkedOnly, nullptr); },
           u"a\r\nb\t\r\n  ", kw::kUndoReduceLines, "tabs too, marked only");
}

TEST_F(EditAreaTest, SortLinesByKeys) {
  using kw::tagSORTKEY;
  const std::u16string mixed = u"b 10\r\nA 9\r\nc 100\r\na 9";
  struct Row {
    const char* what;
    std::u16string text;
    Line first;
    std::vector<tagSORTKEY> keys;
    int64_t count;
    int stable;
    std::vector<Line> marks;  // not empty: marked lines only
    std::u16string want;
  };
  const Row rows[] = {
      {"whole lines, case-blind; each place keeps its end of line", mixed, 0, {}, 4, 0, {},
       u"A 9\r\na 9\r\nb 10\r\nc 100"},
      {"numeric key, stable", mixed, 0, {{2, -1, 1, 0, 0}}, 4, 1, {}, u"A 9\r\na 9\r\nb 10\r\nc 100"},
      {"text key of one column, descending", mixed, 0, {{0, 1, 0, 1, 0}}, 4, 1, {}, u"c 100\r\nb 10\r\nA 9\r\na 9"},
      {"case-sensitive first key, second key descending", mixed, 0, {{0, 1, 0, 0, 1}, {2, -1, 1, 1, 0}}, 4, 1, {},
       u"A 9\r\na 9\r\nb 10\r\nc 100"},
      {"a key that is no number goes behind; count past the end", u"x\r\n- 2\r\n- x\r\n- 1", 1, {{2, 9, 1, 0, 0}},
       99, 1, {}, u"x\r\n- 1\r\n- 2\r\n- x"},
      {"marked lines among their places", u"d\r\nc\r\nb\r\na\r\n", 0, {}, 5, 0, {0, 2}, u"b\r\nc\r\nd\r\na\r\n"},
      {"sorted already", u"a\r\nb", 0, {}, 2, 0, {}, u"a\r\nb"},
  };
  for (const Row& r : rows) {
    Fill(r.text);
    for (const Line l : r.marks) doc_.SetLineMark(l, 1);
    ExpectOp([&] { return doc_.SortLines(r.first, r.keys, r.count, r.stable, r.marks.empty() ? 0 : 1, nullptr); },
             r.want, kw::kUndoSortLines, r.what);
  }
  Fill(u"c\r\nb\r\na");
  doc_.SetLineMark(0, 1);
  doc_.SortLines(0, {}, 3, 0, 0, nullptr);
  EXPECT_EQ(doc_.GetLineMark(2), 1) << "the mark moves with its line";
  EXPECT_EQ(doc_.GetLineMark(0), 0);
  doc_.UndoEdit(nullptr);
  EXPECT_EQ(doc_.GetLineMark(0), 1);
}

TEST_F(EditAreaTest, RemoveMarkedLines) {
  struct Row {
    std::vector<Line> marks;
    int inverse;
    const char16_t* want;
  };
  const Row rows[] = {
      {{1, 2}, 0, u"a\r\nd\r\ne"},
      {{0, 4}, 0, u"b\r\nc\r\nd"},  // the last line has no end of line: the one before it goes
      {{1, 3}, 1, u"b\r\nd"},
      {{}, 0, u"a\r\nb\r\nc\r\nd\r\ne"},
  };
  for (const auto& r : rows) {
    Fill(u"a\r\nb\r\nc\r\nd\r\ne");
    for (const Line l : r.marks) doc_.SetLineMark(l, 1);
    SCOPED_TRACE(Visible(r.want));
    EXPECT_EQ(doc_.RemoveMarkedLines(r.inverse, nullptr), 1);
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(r.want));
    EXPECT_EQ(doc_.GetLineMarkCount(0, doc_.GetLinesInDoc()), r.inverse ? 2 : 0);
    EXPECT_EQ(doc_.Check(), 1);
    if (r.marks.empty()) {
      EXPECT_EQ(doc_.GetUndo()->GetCount(), 0);
      continue;
    }
    doc_.UndoEdit(nullptr);  // one step
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(u"a\r\nb\r\nc\r\nd\r\ne"));
    doc_.RedoEdit(nullptr);
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(r.want));
  }
}

TEST_F(EditAreaTest, StopInTheFirstPassKeepsWhatWasReadStopInTheSecondEmptiesTheUndoMemory) {
  const std::u16string text = u"ab\r\ncd\r\nef\r\ngh";
  struct Op {
    const char* name;
    std::function<int(KwEditBase&, kw::KwProgress*)> run;
    const char16_t* firstLineOnly;  // the text when only the first line was read
  };
  const Op ops[] = {
      {"LowerUpper", [](KwEditBase& d, kw::KwProgress* p) { return d.LowerUpper(kw::kAreaColumn, 0, 0, 3, 9, 0, -1, p); },
       u"AB\r\ncd\r\nef\r\ngh"},
      {"BlankOver", [](KwEditBase& d, kw::KwProgress* p) { return d.BlankOver(kw::kAreaColumn, 0, 0, 3, 9, p); },
       u"  \r\ncd\r\nef\r\ngh"},
      {"InflateLines", [](KwEditBase& d, kw::KwProgress* p) { return d.InflateLines(0, 3, 3, 0, p); },
       u"ab \r\ncd\r\nef\r\ngh"},
      {"EolToChar", [](KwEditBase& d, kw::KwProgress* p) { return d.EolToChar(kw::kAreaColumn, 0, 0, 3, 9, u'|', p); },
       u"ab|cd\r\nef\r\ngh"},
  };
  for (const auto& op : ops) {
    SCOPED_TRACE(op.name);
    // First pass: the percentages are 0, 25, 50, 75 by line; a stop at the first step ends the read.
    Fill(text);
    platform_.stopProgressAtStep = 1 + platform_.stepCalls;
    {
      auto pane = kw::GetPlatform().CreateProgress(u"area");
      EXPECT_EQ(op.run(doc_, pane.get()), 1);
    }
    EXPECT_EQ(Visible(doc_.GetAllText()), Visible(op.firstLineOnly));
    doc_.UndoEdit(nullptr);
    EXPECT_EQ(doc_.GetAllText(), text);
    // Second pass: the read takes four steps; a stop at the next one leaves a partly changed text and no
    // undo memory.
    Fill(text);
    SCOPED_TRACE("second pass");
    doc_.SelReplace(0, 0, 0, 1, u"a", 1, 1);  // an earlier step, to be dropped
    ASSERT_EQ(doc_.GetUndo()->GetCount(), 1);
    platform_.stopProgressAtStep = 5 + platform_.stepCalls;
    {
      auto pane = kw::GetPlatform().CreateProgress(u"area");
      EXPECT_EQ(op.run(doc_, pane.get()), 0);
    }
    EXPECT_EQ(doc_.GetUndo()->GetCount(), 0);
    EXPECT_NE(doc_.GetAllText(), text);
    EXPECT_EQ(doc_.Check(), 1);
  }
}

TEST_F(EditAreaTest, StickSelectionAndItsArea) {
  Fill(u"abcdef\r\nxy\r\nlmnopq");
  // Stored by character indexes (negative first column), read back as lines and columns.
  doc_.SetStickSelection(kw::kStickStream, 3, -1, 10, 0);
  Line l1, l2;
  int64_t c1, c2;
  EXPECT_EQ(doc_.GetStickSelection(&l1, &c1, &l2, &c2), kw::kStickStream);
  EXPECT_EQ(std::vector<int64_t>({l1, c1, l2, c2}), std::vector<int64_t>({0, 3, 1, 2}));
  EXPECT_EQ(doc_.GetDocSelFlags(), kw::kSelFixStream);
  struct Row {
    Line line;
    int64_t column, length;
    int in;
  };
  const Row stream[] = {{0, 2, 1, 0}, {0, 3, 1, 1}, {0, 7, 1, 1},  // the end of line counts
                        {0, 7, 2, 0}, {1, 0, 2, 1}, {1, 1, 2, 0}, {2, 0, 1, 0}};
  for (const auto& r : stream) EXPECT_EQ(doc_.InStickArea(r.line, r.column, r.length), r.in) << r.line << "," << r.column;
  doc_.SetStickSelection(kw::kStickColumn, 0, 1, 2, 4);
  doc_.SetLineMark(1, 1);
  EXPECT_EQ(doc_.GetDocSelFlags(), kw::kSelFixColumn | kw::kSelMarkedLines);
  EXPECT_TRUE(doc_.GetDocSelFlags() & kw::kSelMaskColumn);
  EXPECT_FALSE(doc_.GetDocSelFlags() & kw::kSelMaskFly);
  const Row column[] = {{0, 0, 1, 0}, {0, 1, 3, 1}, {2, 2, 3, 0}, {1, 3, 1, 1}, {3, 1, 1, 0}};
  for (const auto& r : column) EXPECT_EQ(doc_.InStickArea(r.line, r.column, r.length), r.in) << r.line << "," << r.column;
  EXPECT_EQ(asserts_.count(), 0u);
  doc_.UnstickSelection();
  EXPECT_EQ(doc_.InStickArea(0, 0, 1), 0);
  EXPECT_EQ(asserts_.count(), 1u);

  // A stream ending at column 0 is reported up to the end of the line before, its end of line included.
  Line end = 2;
  int64_t col = 0;
  EXPECT_EQ(doc_.ReportStreamEnd(0, 4, &end, &col), 1);
  EXPECT_EQ(end, 1);
  EXPECT_EQ(col, 4);
  end = 0;
  col = 0;
  EXPECT_EQ(doc_.ReportStreamEnd(0, 0, &end, &col), 0);  // an empty selection on its first line stays
  EXPECT_EQ(end, 0);
}

}  // namespace
