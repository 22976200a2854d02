// The column tasks (form, write, align, auto insert) and the line tasks (sort, break, selection by a
// field, characters, go to a marked line): their results, one undo step each, recording and replay.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editor/KwEditView.h"
#include "KwEditViewExecuteTest.h"

namespace {

using kwtest::ExecuteTest;

TEST_F(ExecuteTest, ColFormRewritesNumbersThroughThePictureAndSkipsOthers) {
  const std::u16string text = u"a 3.14159 z\r\nb 12,5    z\r\nc  abc    z\r\nd";
  Fill(text);
  kw::KwColFormEvent e;
  e.m_Picture = u"###.##";
  e.m_FirstCol = 3;
  e.m_LastCol = 10;
  ASSERT_EQ(view_.ExecuteColForm(&e), 1);
  const std::u16string after = u"a     3.14z\r\nb    12.50z\r\nc  abc    z\r\nd";
  EXPECT_EQ(Text(), after);
  EXPECT_EQ(view_.GetLastExecute().changed, 2);
  EXPECT_EQ(view_.GetLastExecute().skipped, 2);  // no number; nothing in the columns
  ExpectUndoRedo(text, after);
  // Too big for the picture: the overflow mark.
  Fill(u"x 123456");
  e.m_Picture = u"##.#";
  e.m_LastCol = 8;
  ASSERT_EQ(view_.ExecuteColForm(&e), 1);
  EXPECT_EQ(Text(), u"x ******");
  EXPECT_EQ(view_.GetLastExecute().overflow, 1);
}

TEST_F(ExecuteTest, ColWriteOverwritesOrInsertsCutOrPaddedToTheWidth) {
  const std::u16string text = u"0123456789\r\n01\r\n012345";
  Fill(text);
  kw::KwColWriteEvent e;
  e.m_Text = u"ABCDEFG";
  e.m_FirstCol = 4;
  e.m_LastCol = 6;
  ASSERT_EQ(view_.ExecuteColReplace(&e), 1);
  const std::u16string after = u"012ABC6789\r\n01 ABC\r\n012ABC";
  EXPECT_EQ(Text(), after);
  ExpectUndoRedo(text, after);
  Fill(text);
  e.m_Text = u"x";
  e.m_Insert = 1;
  view_.SetSel(0, 0, 1, 5, 2);  // a column block over the first two lines
  e.m_Area = static_cast<int>(kw::kAreaColumn);
  ASSERT_EQ(view_.ExecuteColReplace(&e), 1);
  EXPECT_EQ(Text(), u"012x  3456789\r\n01 x  \r\n012345");
  EXPECT_EQ(view_.GetLastExecute().lines, 2);
}

TEST_F(ExecuteTest, ColAlignMovesTheColumnTextLeftRightOrCentred) {
  const std::u16string text = u"|  ab    |\r\n|abcd\r\n|";
  Fill(text);
  kw::KwAlignEvent e;
  e.m_FirstCol = 2;
  e.m_LastCol = 9;
  e.m_Align = 1;
  ASSERT_EQ(view_.ExecuteColAlign(&e), 1);
  // The second line's columns reach its end: no blanks are added behind the text.
  EXPECT_EQ(Text(), u"|      ab|\r\n|    abcd\r\n|");
  e.m_Align = 2;
  ASSERT_EQ(view_.ExecuteColAlign(&e), 1);
  EXPECT_EQ(Text(), u"|   ab   |\r\n|  abcd\r\n|");
  e.m_Align = 0;
  ASSERT_EQ(view_.ExecuteColAlign(&e), 1);
  const std::u16string left = u"|ab      |\r\n|abcd\r\n|";
  EXPECT_EQ(Text(), left);
  ExpectUndoRedo(u"|   ab   |\r\n|  abcd\r\n|", left);
  e.m_Align = 5;
  EXPECT_EQ(view_.ExecuteColAlign(&e), 0);
}

TEST_F(ExecuteTest, AutoInsertPutsTextAndARunningNumberOnEachLine) {
  const std::u16string text = u"alpha\r\nb\r\ngamma";
  Fill(text);
  kw::KwAutoInsertEvent e;
  e.m_Column = 3;
  e.m_Text = u"#";
  e.m_Start = 8;
  e.m_Step = 2;
  e.m_Picture = u"##";
  view_.SetRecording(1);
  ASSERT_EQ(view_.ExecuteAutoInsert(&e), 1);
  const std::u16string after = u"al# 8pha\r\nb #10\r\nga#12mma";
  EXPECT_EQ(Text(), after);
  ExpectUndoRedo(text, after);
  ASSERT_EQ(view_.recorded.size(), 1u);
  EXPECT_EQ(Replay(view_.recorded[0], text), after);
  // Without a picture only the text goes in; a number too wide is marked.
  Fill(text);
  e.m_Picture = u"#";
  ASSERT_EQ(view_.ExecuteAutoInsert(&e), 1);
  EXPECT_EQ(Text(), u"al#8pha\r\nb #*\r\nga#*mma");
  EXPECT_EQ(view_.GetLastExecute().overflow, 2);
}

TEST_F(ExecuteTest, LongTasksStepTheirPaneOncePerPercentAndStopWhereTheUserStops) {
  std::u16string text;
  for (int i = 0; i < 20000; ++i) text += u"ab\r\n";
  auto fill = [&] {
    doc_.SetChunkUnits(100);
    doc_.InitEdit();
    doc_.SetEOLType(13);
    doc_.AddText(text, 0, 0);
    doc_.ResetUndoStack();
  };
  fill();
  kw::KwAutoInsertEvent insert;
  insert.m_Text = u"X";
  insert.m_Column = 1;
  // A step this large asks whether it goes into the undo memory: yes.
  platform_.answers = {1};
  ASSERT_EQ(view_.ExecuteAutoInsert(&insert), 1);
  EXPECT_EQ(platform_.progressTitles, std::vector<std::u16string>{u"EditAutoInsert"});
  std::vector<int> percents(100);
  for (int i = 0; i < 100; ++i) percents[static_cast<size_t>(i)] = i;
  EXPECT_EQ(platform_.progressSteps, percents);
  EXPECT_EQ(view_.GetLastExecute().changed, 20000);
  // Stopped at 50 percent: the first half of the lines is done, as one undo step.
  fill();
  platform_.stopProgressAtStep = platform_.stepCalls + 51;
  platform_.answers = {1};
  ASSERT_EQ(view_.ExecuteAutoInsert(&insert), 1);
  EXPECT_EQ(view_.GetLastExecute().lines, 10000);
  EXPECT_EQ(doc_.GetLineText(9999), u"Xab");
  EXPECT_EQ(doc_.GetLineText(10000), u"ab");
  // A stopped deletion deletes the lines walked so far (one run: a small step).
  fill();
  platform_.answers.clear();
  platform_.stopProgressAtStep = platform_.stepCalls + 51;
  kw::KwLineSelectEvent select;
  select.m_Action = kw::kLineActionDelete;
  ASSERT_EQ(view_.ExecuteLineMark(&select), 1);
  EXPECT_EQ(doc_.GetLinesInDoc(), 10000);
  EXPECT_EQ(doc_.GetLineText(0), u"ab");
  doc_.UndoEdit(nullptr);
  EXPECT_EQ(Text(), text);
}

TEST_F(ExecuteTest, LineSortByOneKeyIsOneUndoStep) {
  const std::u16string text = u"b 10\r\na 9\r\nc 100\r\n";
  Fill(text);
  kw::KwSortEvent e;
  ASSERT_EQ(view_.ExecuteLineSort(&e), 1);
  // The empty line behind the final end of line is no line of text: it is not sorted to the top.
  EXPECT_EQ(Text(), u"a 9\r\nb 10\r\nc 100\r\n");
  Fill(text);
  e.m_FirstCol = 3;
  e.m_Numeric = 1;
  e.m_Descending = 1;
  view_.SetSel(0, 0, 2, 1, 1);  // lines 0..2 (the empty last line stays out)
  e.m_Area = static_cast<int>(kw::kAreaStream);
  ASSERT_EQ(view_.ExecuteLineSort(&e), 1);
  const std::u16string after = u"c 100\r\nb 10\r\na 9\r\n";
  EXPECT_EQ(Text(), after);
  ExpectUndoRedo(text, after);
}

TEST_F(ExecuteTest, LineBreakWrapsLongLinesOrWholeParagraphs) {
  const std::u16string text = u"one two three four\r\nshort\r\n\r\nab cd\r\nef";
  Fill(text);
  kw::KwLineBreakEvent e;
  e.m_Width = 9;
  e.m_Indent = 2;
  ASSERT_EQ(view_.ExecuteLineUmb(&e), 1);
  const std::u16string broken = u"one two\r\n  three\r\n  four\r\nshort\r\n\r\nab cd\r\nef";
  EXPECT_EQ(Text(), broken);
  EXPECT_EQ(view_.GetLastExecute().changed, 1);
  ExpectUndoRedo(text, broken);
  // Paragraphs: adjacent lines are joined first, an empty line ends a paragraph.
  Fill(text);
  e.m_Mode = 1;
  ASSERT_EQ(view_.ExecuteLineUmb(&e), 1);
  EXPECT_EQ(Text(), u"one two\r\n  three\r\n  four\r\n  short\r\n\r\nab cd ef");
  // A word longer than the width is cut hard.
  Fill(u"abcdefghijklmnop");
  e.m_Mode = 0;
  e.m_Indent = 0;
  e.m_Width = 6;
  ASSERT_EQ(view_.ExecuteLineUmb(&e), 1);
  EXPECT_EQ(Text(), u"abcdef\r\nghijkl\r\nmnop");
  e.m_Indent = 6;
  EXPECT_EQ(view_.ExecuteLineUmb(&e), 0);
}

TEST_F(ExecuteTest, Line2SelectsByFieldRangeOrDuplicates) {
  const std::u16string text = u"a 10\r\nb 25\r\nc 25\r\nd x\r\ne 5";
  Fill(text);
  kw::KwLine2Event e;
  e.m_FirstCol = 3;
  e.m_LastCol = 4;
  e.m_Numeric = 1;
  e.m_From = u"10";
  e.m_To = u"25";
  ASSERT_EQ(view_.ExecuteLine2(&e), 1);
  EXPECT_EQ(view_.GetLastExecute().changed, 3);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 4), 3);
  EXPECT_EQ(doc_.GetLineMark(3), 0);
  // A tolerance widens the bounds.
  e.m_Tolerance = 5;
  e.m_Action = kw::kLineActionDelete;
  ASSERT_EQ(view_.ExecuteLine2(&e), 1);
  EXPECT_EQ(Text(), u"d x");
  ExpectUndoRedo(text, u"d x");
  doc_.UndoEdit(nullptr);
  // Duplicates: equal to the field of the line before.
  e.m_Duplicates = 1;
  e.m_Tolerance = 0;
  ASSERT_EQ(view_.ExecuteLine2(&e), 1);
  EXPECT_EQ(Text(), u"a 10\r\nb 25\r\nd x\r\ne 5");
  // Texts by the library collation (case-blind); keep deletes the others.
  Fill(text);
  kw::KwLine2Event t;
  t.m_FirstCol = 1;
  t.m_LastCol = 1;
  t.m_From = u"B";
  t.m_To = u"c";
  t.m_Action = kw::kLineActionKeep;
  view_.SetRecording(1);
  ASSERT_EQ(view_.ExecuteLine2(&t), 1);
  EXPECT_EQ(Text(), u"b 25\r\nc 25");
  ASSERT_EQ(view_.recorded.size(), 1u);
  EXPECT_EQ(Replay(view_.recorded[0], text), Text());
}

TEST_F(ExecuteTest, BinaryAndExtendedCharactersGoInAtTheCaret) {
  Fill(u"ab\r\ncd");
  view_.GotoLineCol(0, 1);
  kw::KwBCharEvent b;
  b.m_Code = 0xE4;  // "ä" in the ANSI page
  ASSERT_EQ(view_.ExecuteBinChar(&b), 1);
  b.m_Code = 0x84;  // "ä" in the OEM page 437
  b.m_Encoding = 4;
  ASSERT_EQ(view_.ExecuteBinChar(&b), 1);
  EXPECT_EQ(Text(), u"a\u00e4\u00e4b\r\ncd");
  // A recorded binary character is never replayed from its line.
  view_.SetRecording(1);
  ASSERT_EQ(view_.ExecuteBinChar(&b), 1);
  ASSERT_EQ(view_.recorded.size(), 1u);
  EXPECT_EQ(Replay(view_.recorded[0], u"x"), u"<not parsed>");
  b.m_Code = 256;
  EXPECT_EQ(view_.ExecuteBinChar(&b), 0);
  // Extended: a unit by code, several times; a caret behind the line's end fills it with blanks.
  Fill(u"ab\r\ncd");
  view_.GotoLineCol(1, 4);
  kw::KwXCharEvent x;
  x.m_Code = 0x263A;
  x.m_Count = 2;
  ASSERT_EQ(view_.ExecuteExtChar(&x), 1);
  EXPECT_EQ(Text(), u"ab\r\ncd  \u263a\u263a");
  int64_t column = 0;
  EXPECT_EQ(view_.GetCurrentLine(&column), 1);
  EXPECT_EQ(column, 6);
  ExpectUndoRedo(u"ab\r\ncd", u"ab\r\ncd  \u263a\u263a");
  x.m_Count = 0;
  EXPECT_EQ(view_.ExecuteExtChar(&x), 0);
}

TEST_F(ExecuteTest, GotoMarkedLineInEachDirectionAndInsideTheFixSelection) {
  Fill(u"0\r\n1\r\n2\r\n3\r\n4");
  doc_.SetLineMark(1, 1);
  doc_.SetLineMark(3, 1);
  kw::KwGotoSelectedLineEvent e;
  ASSERT_EQ(view_.ExecuteGotoMarkedLine(&e), 1);
  EXPECT_EQ(view_.GetCurrentLine(), 1);
  ASSERT_EQ(view_.ExecuteGotoMarkedLine(&e), 1);
  EXPECT_EQ(view_.GetCurrentLine(), 3);
  EXPECT_EQ(view_.ExecuteGotoMarkedLine(&e), 0);
  EXPECT_EQ(view_.GetCurrentLine(), 3);
  e.m_Direction = 1;
  ASSERT_EQ(view_.ExecuteGotoMarkedLine(&e), 1);
  EXPECT_EQ(view_.GetCurrentLine(), 1);
  e.m_Direction = 3;
  ASSERT_EQ(view_.ExecuteGotoMarkedLine(&e), 1);
  EXPECT_EQ(view_.GetCurrentLine(), 3);
  e.m_Direction = 2;
  ASSERT_EQ(view_.ExecuteGotoMarkedLine(&e), 1);
  EXPECT_EQ(view_.GetCurrentLine(), 1);
  // Inside the fix selection (lines 2..4) the first marked line is 3.
  doc_.SetStickSelection(kw::kStickStream, 2, 0, 4, 1);
  e.m_InSelection = 1;
  ASSERT_EQ(view_.ExecuteGotoMarkedLine(&e), 1);
  EXPECT_EQ(view_.GetCurrentLine(), 3);
  e.m_Direction = 1;
  EXPECT_EQ(view_.ExecuteGotoMarkedLine(&e), 0);
}

}  // namespace
