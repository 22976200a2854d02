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

// Tens of thousands of runs are deleted in parts while the walk goes on: the result, the end of the
// text, the single undo step and the undo memory's single question must be those of one deletion.
TEST_F(ExecuteTest, LineMarkDeletesManyRunsBehindTheWalkAsOneStep) {
  std::u16string text, deleted, kept;
  for (int i = 0; i < 30002; ++i) {
    // Runs of one and of two lines; the last line (without an end of line) is in a run.
    const bool go = i % 3 != 0;
    const std::u16string line = (go ? u"GP " : u"FP ") + std::u16string(1 + i % 7, u'x');
    text += line;
    (go ? deleted : kept) += line;
    if (i < 30001) {
      text += u"\r\n";
      (go ? deleted : kept) += u"\r\n";
    }
  }
  // The last kept line loses the end of line that now ends the text.
  kept.resize(kept.size() - 2);
  auto fill = [&] {
    doc_.SetChunkUnits(101);  // odd: CR LF pairs are split between chunks
    doc_.InitEdit();
    doc_.SetEOLType(13);
    doc_.AddText(text, 0, 0);
    doc_.ResetUndoStack();
  };
  fill();
  platform_.answers = {1};
  auto e = Select(u"[1-2]='GP'", kw::kLineActionDelete);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_EQ(platform_.boxes.size(), 1u);  // the question, once
  EXPECT_EQ(view_.GetLastExecute().changed, 20001);
  EXPECT_TRUE(Text() == kept);  // (not EXPECT_EQ: a difference would print megabytes)
  EXPECT_EQ(doc_.GetLinesInDoc(), 10000);
  EXPECT_EQ(doc_.Check(), 1);
  doc_.UndoEdit(nullptr);
  EXPECT_TRUE(Text() == text);
  EXPECT_EQ(doc_.Check(), 1);
  // Keep is the same work the other way round.
  fill();
  platform_.answers = {1};
  e->m_Action = kw::kLineActionKeep;
  e->m_Invert = 1;
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_TRUE(Text() == kept);
  EXPECT_EQ(doc_.Check(), 1);
  // Declined: nothing is deleted, nothing is recorded.
  fill();
  platform_.answers = {-3};
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 0);
  EXPECT_TRUE(Text() == text);
  EXPECT_FALSE(doc_.CanUndo());
  // With line marks the deletion waits for the end, and the marks follow their lines.
  fill();
  doc_.SetLineMark(30001, 1);
  doc_.SetLineMark(29997, 1);
  platform_.answers = {1};
  e = Select(u"[1-2]='GP'", kw::kLineActionDelete);
  ASSERT_EQ(view_.ExecuteLineMark(e.get()), 1);
  EXPECT_TRUE(Text() == kept);
  EXPECT_EQ(doc_.GetLineMark(9999), 1);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 10000), 1);
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
