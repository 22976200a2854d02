// The column calculation and the column sum of the editor view: results in the target columns,
// skipped, padded and overflowing lines, one undo step, recording and replay.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "app/KwWinApp.h"
#include "base/CodePages.h"
#include "base/KwFolders.h"
#include "editor/KwEditViewExecute.h"
#include "editor/KwEditView.h"
#include "KwEditViewExecuteTest.h"

namespace {

using kw::KwColCalcEvent;
using kw::KwColSumEvent;
using kwtest::ExecuteTest;

std::unique_ptr<KwColCalcEvent> Calc(const std::u16string& term, int64_t first, int64_t last, const std::u16string& picture = u"") {
  auto e = std::make_unique<KwColCalcEvent>();
  e->m_Term = term;
  e->m_FirstCol = first;
  e->m_LastCol = last;
  e->m_Picture = picture;
  return e;
}

const std::u16string kFixed = u"0012 0003\r\n0100 0020 xxxxx\r\n07\r\n9999 9999\r\n0001 0001";

TEST_F(ExecuteTest, ColCalcWritesRightAlignedPadsShortLinesSkipsTooShortAndMarksOverflow) {
  Fill(kFixed);
  auto e = Calc(u"[1-4]+[6-9]", 11, 14);
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  const std::u16string after = u"0012 0003   15\r\n0100 0020  120x\r\n07\r\n9999 9999 ****\r\n0001 0001    2";
  EXPECT_EQ(Text(), after);
  const kw::KwExecuteResult& r = view_.GetLastExecute();
  EXPECT_EQ(r.lines, 5);
  EXPECT_EQ(r.changed, 4);
  EXPECT_EQ(r.skipped, 1);
  EXPECT_EQ(r.overflow, 1);
  EXPECT_EQ(doc_.Check(), 1);
  // One undo step gives the text back exactly, and redo makes it again.
  ExpectUndoRedo(kFixed, after);
  doc_.UndoEdit(nullptr);
  EXPECT_FALSE(doc_.CanUndo());
}

TEST_F(ExecuteTest, ColCalcPicturesDecimalsLimitsAndInsert) {
  // A picture narrower than the target is right-aligned in it.
  Fill(u"0012 rest\r\n0004");
  auto e = Calc(u"[1-4]/8", 1, 6, u"##.##");
  e->m_Insert = 1;
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"  1.500012 rest\r\n  0.500004");
  // Without a picture: the decimals of the fields read, or of the term's constants when more.
  Fill(u"1.25\r\n0003");
  e = Calc(u"[1-4]*2", 6, 11);
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(doc_.GetLineText(0), u"1.25   2.50");
  EXPECT_EQ(doc_.GetLineText(1), u"0003      6");
  Fill(u"0003");
  e = Calc(u"[1-4]*1.000", 6, 11);
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"0003  3.000");
  // Results outside the limits are left out and counted.
  Fill(u"0050\r\n0150\r\n0099");
  e = Calc(u"[1-4]", 6, 8);
  e->m_Min = 0;
  e->m_Max = 100;
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"0050  50\r\n0150\r\n0099  99");
  EXPECT_EQ(view_.GetLastExecute().skipped, 1);
  // A negative result and a result that needs its sign position.
  Fill(u"0005\r\n0500");
  e = Calc(u"[1-4]*-1", 6, 8);
  e->m_Term = u"0-[1-4]";
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"0005  -5\r\n0500 ***");
  EXPECT_EQ(view_.GetLastExecute().overflow, 1);
}

TEST_F(ExecuteTest, ColCalcBadTermOrTargetChangesNothingAndShowsTheTermsMessage) {
  Fill(kFixed);
  auto e = Calc(u"[1-4]+(", 11, 14);
  EXPECT_EQ(view_.ExecuteColCalc(e.get()), 0);
  EXPECT_EQ(Text(), kFixed);
  EXPECT_FALSE(doc_.CanUndo());
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_NE(platform_.boxes[0].caption.find(u"Terms"), std::u16string::npos);
  // A target that ends before it starts is refused with a beep.
  e = Calc(u"[1-4]", 5, 3);
  EXPECT_EQ(view_.ExecuteColCalc(e.get()), 0);
  EXPECT_EQ(platform_.beeps.size(), 1u);
  EXPECT_EQ(Text(), kFixed);
  // An area that does not exist (no marked line) beeps and does nothing.
  e = Calc(u"[1-4]", 11, 14);
  e->m_Area = static_cast<int>(kw::kAreaMarked);
  EXPECT_EQ(view_.ExecuteColCalc(e.get()), 0);
  EXPECT_EQ(platform_.beeps.size(), 2u);
  EXPECT_EQ(Text(), kFixed);
}

TEST_F(ExecuteTest, ColCalcWorksOnMarkedLinesAndReadsOtherLinesAsTheyWere) {
  Fill(u"0010\r\n0015\r\n0030\r\n0031");
  doc_.SetLineMark(1, 1);
  doc_.SetLineMark(3, 1);
  auto e = Calc(u"[1-4]-[-1.1-4]", 6, 8);
  e->m_Area = static_cast<int>(kw::kAreaMarked);
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"0010\r\n0015   5\r\n0030\r\n0031   1");
  EXPECT_EQ(view_.GetLastExecute().lines, 2);
  // The whole text: each line reads the line before it as it stood before the task.
  Fill(u"0010\r\n0015\r\n0030");
  e->m_Area = 0;
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(doc_.GetLineText(1), u"0015   5");
  EXPECT_EQ(doc_.GetLineText(2), u"0030  15");
  // Caller values: the line number and length.
  Fill(u"ab\r\nabcd");
  e = Calc(u"[LN]*100+[LL]", 6, 9);
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"ab    102\r\nabcd  204");
}

TEST_F(ExecuteTest, ColCalcFromTheDialogParametersIsRecordedAndReplaysToTheSameText) {
  Fill(kFixed);
  auto* params = static_cast<KwColCalcEvent*>(view_.GetDialogParams(kw::kEventColCalc));
  ASSERT_NE(params, nullptr);
  params->m_Term = u"[1-4]*[6-9]";
  params->m_FirstCol = 11;
  params->m_LastCol = 18;
  params->m_Picture = u"####.#";
  view_.SetRecording(1);
  ASSERT_EQ(view_.ExecuteColCalc(), 1);
  const std::u16string after = Text();
  EXPECT_EQ(doc_.GetLineText(0), u"0012 0003     36.0");
  ASSERT_EQ(view_.recorded.size(), 1u);
  EXPECT_EQ(view_.recorded[0], params->Format());
  EXPECT_EQ(Replay(view_.recorded[0], kFixed), after);
  // A bad term is not recorded; nor is anything while replaying.
  params->m_Term = u"[1-4";
  EXPECT_EQ(view_.ExecuteColCalc(), 0);
  view_.SetReplaying(1);
  params->m_Term = u"[1-4]";
  EXPECT_EQ(view_.ExecuteColCalc(), 1);
  EXPECT_EQ(view_.recorded.size(), 1u);
}

TEST_F(ExecuteTest, ColSumShowsCopiesInsertsOrOnlyReportsTheSum) {
  const std::u16string text = u"  1.5\r\n 2.25\r\nabc\r\n   10";
  Fill(text);
  KwColSumEvent e;
  e.m_Term = u"[1-5]";
  e.m_Output = 3;
  ASSERT_EQ(view_.ExecuteColSum(&e), 1);
  EXPECT_DOUBLE_EQ(view_.GetLastExecute().value, 13.75);
  EXPECT_EQ(view_.GetLastExecute().changed, 3);
  EXPECT_EQ(view_.GetLastExecute().skipped, 1);
  EXPECT_TRUE(platform_.boxes.empty());
  EXPECT_EQ(Text(), text);
  e.m_Output = 0;
  ASSERT_EQ(view_.ExecuteColSum(&e), 1);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].message, u"13.75");
  EXPECT_NE(platform_.boxes[0].caption.find(u"EditView"), std::u16string::npos);
  e.m_Output = 1;
  ASSERT_EQ(view_.ExecuteColSum(&e), 1);
  EXPECT_EQ(platform_.clipboard, u"13.75");
  e.m_Output = 2;
  ASSERT_EQ(view_.ExecuteColSum(&e), 1);
  EXPECT_EQ(Text(), text + u"\r\n13.75");
  ExpectUndoRedo(text, text + u"\r\n13.75");
  // Over a column block: the sum of its lines goes after its last line.
  view_.SetSel(0, 0, 1, 3, 2);
  e.m_Area = static_cast<int>(kw::kAreaColumn);
  ASSERT_EQ(view_.ExecuteColSum(&e), 1);
  EXPECT_EQ(doc_.GetLineText(2), u"3.75");
  EXPECT_EQ(doc_.GetLineText(3), u"abc");
  // A bad term changes nothing.
  e.m_Term = u"[1-";
  const std::u16string before = Text();
  EXPECT_EQ(view_.ExecuteColSum(&e), 0);
  EXPECT_EQ(Text(), before);
}

TEST_F(ExecuteTest, TasksLeaveOutTheEmptyLineBehindAFinalEndOfLine) {
  // It is no line of text: neither visited nor counted as skipped.
  Fill(u"0012\r\n0003\r\n");
  auto e = Calc(u"[1-4]", 6, 8);
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(Text(), u"0012  12\r\n0003   3\r\n");
  EXPECT_EQ(view_.GetLastExecute().lines, 2);
  EXPECT_EQ(view_.GetLastExecute().skipped, 0);
  // A task that writes on every line it visits leaves it empty.
  kw::KwAutoInsertEvent insert;
  insert.m_Text = u"X";
  insert.m_Column = 1;
  Fill(u"a\r\nb\r\n");
  ASSERT_EQ(view_.ExecuteAutoInsert(&insert), 1);
  EXPECT_EQ(Text(), u"Xa\r\nXb\r\n");
  EXPECT_EQ(view_.GetLastExecute().lines, 2);
  // A last line with text is visited, and so is the one empty line of an empty text.
  Fill(u"a\r\nb");
  ASSERT_EQ(view_.ExecuteAutoInsert(&insert), 1);
  EXPECT_EQ(Text(), u"Xa\r\nXb");
  Fill(u"");
  ASSERT_EQ(view_.ExecuteAutoInsert(&insert), 1);
  EXPECT_EQ(Text(), u"X");
  // Marked lines: a mark on it does not count; an area of that line only has nothing to work on.
  Fill(u"a\r\nb\r\n");
  doc_.SetLineMark(1, 1);
  doc_.SetLineMark(2, 1);
  insert.m_Area = static_cast<int>(kw::kAreaMarked);
  ASSERT_EQ(view_.ExecuteAutoInsert(&insert), 1);
  EXPECT_EQ(Text(), u"a\r\nXb\r\n");
  EXPECT_EQ(view_.GetLastExecute().lines, 1);
  doc_.SetLineMark(1, 0);
  EXPECT_EQ(view_.ExecuteAutoInsert(&insert), 0);
  EXPECT_EQ(Text(), u"a\r\nXb\r\n");
  // The sum written behind the area goes on a line of its own before the final end of line.
  Fill(u"1\r\n2\r\n");
  KwColSumEvent sum;
  sum.m_Term = u"[1]";
  sum.m_Output = 2;
  ASSERT_EQ(view_.ExecuteColSum(&sum), 1);
  EXPECT_EQ(Text(), u"1\r\n2\r\n3\r\n");
}

// A user whose settings keep the angle unit in degrees.
class ExecuteAngleTest : public ExecuteTest {
 protected:
  class App : public kw::KwWinApp {
   public:
    std::u16string GetAppVersion() const override { return u"1"; }
  };
  ExecuteAngleTest() : saved_(kw::GetFolders()), cwd_(std::filesystem::current_path()) {
    kw::GetFolders().SetUserFolder(kw::FromUtf8(dir_.string()));
    kw::GetFolders().SetProjectFolder(kw::FromUtf8(dir_.string()));
    std::filesystem::current_path(dir_);
    WriteBytes(Temp("KwUser.INI"), kDegrees);
  }
  ~ExecuteAngleTest() override {
    std::filesystem::current_path(cwd_);
    kw::GetFolders() = saved_;
  }
  std::string UserFile() const { return ReadBytes(Temp("KwUser.INI")); }

  static constexpr const char* kDegrees = "[Terms]\r\nANGLEUNIT=1\r\n";
  kw::KwFolders saved_;
  std::filesystem::path cwd_;
};

TEST_F(ExecuteAngleTest, AnEventsAngleUnitIsUsedButNotWrittenIntoTheUsersSettings) {
  App app;
  // The event's unit (gon: sin of 100 is 1) holds for the task; the user's degrees stay in the file.
  Fill(u"100\r\n090");
  auto e = Calc(u"SIN([1-3])*1000", 5, 9);
  e->m_AngleUnit = kw::kTermGon;
  ASSERT_EQ(view_.ExecuteColCalc(e.get()), 1);
  EXPECT_EQ(doc_.GetLineText(0), u"100  1000");
  EXPECT_EQ(doc_.GetLineText(1), u"090   988");
  EXPECT_EQ(UserFile(), kDegrees);
  // A replayed recorded line the same.
  EXPECT_EQ(Replay(e->Format(), u"100"), u"100  1000");
  EXPECT_EQ(UserFile(), kDegrees);
  // The line selection too.
  Fill(u"100\r\n090");
  kw::KwLineSelectEvent select;
  select.m_Term = u"SIN([1-3])>0.999";
  select.m_AngleUnit = kw::kTermGon;
  select.m_Action = kw::kLineActionDelete;
  ASSERT_EQ(view_.ExecuteLineMark(&select), 1);
  EXPECT_EQ(Text(), u"090");
  EXPECT_EQ(UserFile(), kDegrees);
  // The sum has no unit of its own: it takes the user's degrees.
  Fill(u"090");
  KwColSumEvent sum;
  sum.m_Term = u"SIN([1-3])";
  sum.m_Output = 3;
  ASSERT_EQ(view_.ExecuteColSum(&sum), 1);
  EXPECT_DOUBLE_EQ(view_.GetLastExecute().value, 1.0);
}

TEST(ExecuteHelpers, DecimalsAndResultFormatting) {
  using namespace kw::execute;
  EXPECT_EQ(TermDecimals(u"[1.5-10]*2.50+'1.2345'+3,1"), 2);
  EXPECT_EQ(TermDecimals(u"[1-4]"), 0);
  const char16_t line[] = u"12.5 7,125 x";
  const int64_t firsts[] = {1, 6, 0}, lasts[] = {4, 10, 0};
  EXPECT_EQ(FieldDecimals(line, 12, firsts, lasts, 3), 3);
  std::u16string out;
  EXPECT_TRUE(FormatResult(3.14159, u"##.##", 7, 0, 0, &out));
  EXPECT_EQ(out, u"   3.14");
  // A wider picture gives up its leading blanks, but not its digits.
  EXPECT_TRUE(FormatResult(7, u"######", 3, 0, 0, &out));
  EXPECT_EQ(out, u"  7");
  EXPECT_FALSE(FormatResult(7000, u"######", 3, 0, 0, &out));
  EXPECT_EQ(out, u"***");
  // Without a picture, decimals never take the sign's and the first digit's places.
  EXPECT_TRUE(FormatResult(2.5, u"", 3, 5, 0, &out));
  EXPECT_EQ(out, u"2.5");
}

}  // namespace
