// The line selection by a logical term (mark, unmark, delete, keep), the line transformation and the
// replay of recorded events through ExecuteRecordEvent.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "editor/KwEditView.h"
#include "KwEditViewExecuteTest.h"

namespace {

using kw::KwLineSelectEvent;
using kwtest::ExecuteTest;

std::unique_ptr<KwLineSelectEvent> Select(const std::u16string& term, int action) {
  auto e = std::make_unique<KwLineSelectEvent>();
  e->m_Term = term;
  e->m_Action = action;
  return e;
}

const std::u16string kLines = u"a 1\r\nb 5\r\nc 3\r\nd 9";

TEST_F(ExecuteTest, LineMarkMarksUnmarksAndInvertsOverTheAreaAndTheLineRange) {
  Fill(kLines);
  auto e = Select(u"[3]>2", kw::kLineActionMark);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(view_.GetLastExecute().changed, 3);
  EXPECT_EQ(view_.GetLastExecute().lines, 4);
  EXPECT_EQ(doc_.GetLineMark(0), 0);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 3), 3);
  EXPECT_EQ(Text(), kLines);
  // Unmark with the term inverted: the lines where it is false ("a 1") lose a mark they lack; the
  // other marks stay.
  e = Select(u"[3]>4", kw::kLineActionUnmark);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(doc_.GetLineMark(1), 0);
  EXPECT_EQ(doc_.GetLineMark(3), 0);
  EXPECT_EQ(doc_.GetLineMark(2), 1);
  e->m_Invert = 1;
  e->m_Action = kw::kLineActionMark;
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(doc_.GetLineMark(0), 1);
  EXPECT_EQ(doc_.GetLineMark(1), 0);
  // An empty term selects every line of the range (1-based, inclusive): here it clears lines 1..3.
  e = Select(u"", kw::kLineActionUnmark);
  e->m_FirstLine = 1;
  e->m_LastLine = 3;
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(view_.GetLastExecute().changed, 3);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 3), 0);
  // Marked lines as the area: only they are tested.
  doc_.SetLineMark(1, 1);
  doc_.SetLineMark(2, 1);
  e = Select(u"[1]='b'", kw::kLineActionUnmark);
  e->m_Area = static_cast<int>(kw::kAreaMarked);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(view_.GetLastExecute().lines, 2);
  EXPECT_EQ(doc_.GetLineMark(1), 0);
  EXPECT_EQ(doc_.GetLineMark(2), 1);
}

TEST_F(ExecuteTest, LineMarkDeleteAndKeepAreOneUndoStepAndMarksFollowTheirLines) {
  Fill(kLines);
  doc_.SetLineMark(2, 1);
  doc_.SetLineMark(3, 1);
  auto e = Select(u"[3]>4", kw::kLineActionDelete);  // b 5, d 9
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(Text(), u"a 1\r\nc 3");
  ExpectUndoRedo(kLines, u"a 1\r\nc 3");
  // "c 3" keeps its mark on its new line; the mark of the deleted "d 9" went with it.
  EXPECT_EQ(doc_.GetLineMark(1), 1);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 1), 1);
  doc_.UndoEdit(nullptr);
  doc_.ClearLineMarks();
  doc_.SetLineMark(3, 1);
  // Keep: every line where the term is false goes; the last line is kept without an end of line.
  e->m_Action = kw::kLineActionKeep;
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(Text(), u"b 5\r\nd 9");
  EXPECT_EQ(doc_.GetLineMark(1), 1);
  EXPECT_EQ(doc_.GetLineMark(0), 0);
  ExpectUndoRedo(kLines, u"b 5\r\nd 9");
  // Deleting every line leaves one empty line; the caret is clamped to it.
  Fill(kLines);
  view_.GotoLineCol(3, 2);
  e = Select(u"", kw::kLineActionDelete);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(Text(), u"");
  EXPECT_EQ(view_.GetCurrentLine(), 0);
  ExpectUndoRedo(kLines, u"");
  // A line range limits the deletion.
  Fill(kLines + u"\r\n");
  e = Select(u"", kw::kLineActionDelete);
  e->m_FirstLine = 2;
  e->m_LastLine = 3;
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(Text(), u"a 1\r\nd 9\r\n");
}

TEST_F(ExecuteTest, LineMarkBadTermOrActionChangesNothing) {
  Fill(kLines);
  auto e = Select(u"[3]>>2", kw::kLineActionDelete);
  EXPECT_EQ(view_.ExecuteLineMark(e.get()), 0);
  EXPECT_EQ(Text(), kLines);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_NE(platform_.boxes[0].caption.find(u"Terms"), std::u16string::npos);
  e = Select(u"[3]>2", 7);
  EXPECT_EQ(view_.ExecuteLineMark(e.get()), 0);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 3), 0);
  EXPECT_FALSE(doc_.CanUndo());
  // A line range outside the text finds nothing to work on.
  e = Select(u"", kw::kLineActionMark);
  e->m_FirstLine = 9;
  e->m_LastLine = 12;
  EXPECT_EQ(view_.ExecuteLineMark(e.get()), 0);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 3), 0);
}

TEST_F(ExecuteTest, RecordedLineTasksReplayThroughExecuteRecordEvent) {
  Fill(kLines);
  view_.SetRecording(1);
  auto e = Select(u"[3]<4", kw::kLineActionKeep);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  kw::KwColCalcEvent calc;
  calc.m_Term = u"[3]*10";
  calc.m_FirstCol = 5;
  calc.m_LastCol = 7;
  ASSERT_EQ(view_.ExecuteColCalc(&calc), 1);
  const std::u16string after = Text();
  EXPECT_EQ(after, u"a 1  10\r\nc 3  30");
  ASSERT_EQ(view_.recorded.size(), 2u);
  // Replaying both lines on the original text gives the same text.
  kw::KwEditBase doc;
  doc.SetChunkUnits(3);
  doc.InitEdit();
  doc.SetEOLType(13);
  doc.AddText(kLines, 0, 0);
  kw::KwEditView view(&doc);
  view.SetReplaying(1);
  for (const std::u16string& line : view_.recorded) {
    auto event = kw::KwEditView::ParseRecordEvent(line);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(view.ExecuteRecordEvent(event.get()), 1);
  }
  EXPECT_EQ(doc.GetAllText(), after);
  EXPECT_EQ(view.ExecuteRecordEvent(nullptr), 0);
}

TEST_F(ExecuteTest, LineTransformationIsVisiblyNotAvailable) {
  Fill(kLines);
  kw::KwUmfEvent e;
  e.m_Rule = u"UPPER";
  EXPECT_EQ(view_.ExecuteLineUmform(&e), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(Text(), kLines);
}

}  // namespace
