// The view's find, replace and table replacement tasks: where the caret and selection go, what is
// replaced and counted, one undo step, table files, recording and replay.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "base/Format.h"
#include "base/Text.h"
#include "editor/KwEditView.h"
#include "KwEditViewExecuteTest.h"

namespace {

using kw::KwFindEvent;
using kw::KwReplEvent;
using kw::KwTableRepEvent;
using kwtest::ExecuteTest;

const std::u16string kText = u"abc ABC\r\nxx abc\r\nabc";

std::array<int64_t, 4> Sel(kw::KwEditView& view) {
  int64_t l1, c1, l2, c2;
  view.GetSel(&l1, &c1, &l2, &c2);
  return {l1, c1, l2, c2};
}

TEST_F(ExecuteTest, FindMovesTheSelectionToTheMatchInEachDirectionAndCounts) {
  Fill(kText);
  KwFindEvent e;
  e.m_Text = u"abc";
  e.m_Command = 0;  // next, from the caret at the top
  ASSERT_EQ(view_.ExecuteFind(&e), 1);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{0, 0, 0, 3}));
  ASSERT_EQ(view_.ExecuteFind(&e), 1);  // case-blind: "ABC"
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{0, 4, 0, 7}));
  e.m_Find.m_Options[0] = 1;  // match case: skips "ABC"... already past it, next is line 1
  ASSERT_EQ(view_.ExecuteFind(&e), 1);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{1, 3, 1, 6}));
  e.m_Command = 1;  // previous, with case: back to the first "abc"
  ASSERT_EQ(view_.ExecuteFind(&e), 1);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{0, 0, 0, 3}));
  e.m_Command = 3;  // last
  ASSERT_EQ(view_.ExecuteFind(&e), 1);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{2, 0, 2, 3}));
  e.m_Command = 0;  // nothing after the last: the selection stays, a beep
  EXPECT_EQ(view_.ExecuteFind(&e), 0);
  EXPECT_EQ(platform_.beeps.size(), 1u);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{2, 0, 2, 3}));
  // Option 3 counts every match as well; wildcards and the first match.
  e.m_Command = 2;
  e.m_Find.m_Options[0] = 0;
  e.m_Find.m_Options[1] = 1;
  e.m_Find.m_Options[3] = 1;
  e.m_Text = u"x*c";
  ASSERT_EQ(view_.ExecuteFind(&e), 1);
  EXPECT_EQ(view_.GetLastExecute().changed, 1);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{1, 0, 1, 6}));
  e.m_Text = u"a?c";
  ASSERT_EQ(view_.ExecuteFind(&e), 1);
  EXPECT_EQ(view_.GetLastExecute().changed, 4);
  // An empty text is refused with its message; the text is never changed.
  e.m_Text = u"";
  EXPECT_EQ(view_.ExecuteFind(&e), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].message, u"No search text");
  EXPECT_EQ(Text(), kText);
}

TEST_F(ExecuteTest, FindOnMarkedLinesAndFromTheDialogParametersIsRecorded) {
  Fill(kText);
  doc_.SetLineMark(2, 1);
  auto* params = static_cast<KwFindEvent*>(view_.GetDialogParams(kw::kEventFind));
  params->m_Text = u"<#97>bc";  // the escape of "a"
  params->m_Find.m_MarkedOnly = 1;
  view_.SetRecording(1);
  ASSERT_EQ(view_.ExecuteFind(), 1);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{2, 0, 2, 3}));
  ASSERT_EQ(view_.recorded.size(), 1u);
  auto replayed = kw::KwEditView::ParseRecordEvent(view_.recorded[0]);
  ASSERT_NE(replayed, nullptr);
  kw::KwEditView other(&doc_);
  EXPECT_EQ(other.ExecuteRecordEvent(replayed.get()), 1);
  EXPECT_EQ(Sel(other), (std::array<int64_t, 4>{2, 0, 2, 3}));
}

TEST_F(ExecuteTest, ReplaceNextAndReplaceAllAreUndoneExactly) {
  Fill(kText);
  KwReplEvent e;
  e.m_Text = u"abc";
  e.m_ReplText = u"<#90>";  // "Z"
  // Next: the match at the selection's start is replaced and the following one selected.
  ASSERT_EQ(view_.ExecuteReplace(&e), 1);
  const std::u16string once = u"Z ABC\r\nxx abc\r\nabc";
  EXPECT_EQ(Text(), once);
  EXPECT_EQ(Sel(view_), (std::array<int64_t, 4>{0, 2, 0, 5}));
  ExpectUndoRedo(kText, once);
  // All: every match in one step, counted.
  e.m_Command = 1;
  e.m_ReplText = u"";
  ASSERT_EQ(view_.ExecuteReplace(&e), 1);
  EXPECT_EQ(view_.GetLastExecute().changed, 3);
  EXPECT_EQ(Text(), u"Z \r\nxx \r\n");
  ExpectUndoRedo(once, u"Z \r\nxx \r\n");
  // Case and marked lines limit what is replaced; a replay of the recorded line does the same.
  Fill(kText);
  doc_.SetLineMark(0, 1);
  e.m_ReplText = u"-";
  e.m_Find.m_Options[0] = 1;
  e.m_Find.m_MarkedOnly = 1;
  view_.SetRecording(1);
  ASSERT_EQ(view_.ExecuteReplace(&e), 1);
  EXPECT_EQ(Text(), u"- ABC\r\nxx abc\r\nabc");
  ASSERT_EQ(view_.recorded.size(), 1u);
  // Without the marks the replay replaces every case-exact match.
  EXPECT_EQ(Replay(view_.recorded[0], kText), kText);
  e.m_Find.m_MarkedOnly = 0;
  EXPECT_EQ(Replay(e.Format(), kText), u"- ABC\r\nxx -\r\n-");
}

TEST_F(ExecuteTest, TableReplacementReadsItsTableAndLimitsToColumns) {
  Fill(u"cat dog\r\ndog cat\r\nbird");
  // UTF-8 with a mark, CR LF lines, an empty line and a pair without replacement.
  WriteBytes(Temp("table.txt"), "\xEF\xBB\xBF" "cat\tkitten\r\n\r\ndog\tpuppy\r\nbird\r\n");
  KwTableRepEvent e;
  e.SetMainFile(kw::Widen(Temp("table.txt").string()));
  ASSERT_EQ(view_.ExecuteTableRep(&e), 1);
  const std::u16string all = u"kitten puppy\r\npuppy kitten\r\n";
  EXPECT_EQ(Text(), all);
  EXPECT_EQ(view_.GetLastExecute().changed, 5);
  ExpectUndoRedo(u"cat dog\r\ndog cat\r\nbird", all);
  // Columns 1 to 4: only matches lying inside them.
  Fill(u"cat dog\r\ndog cat\r\nbird");
  e.m_FirstCol = 1;
  e.m_LastCol = 4;
  ASSERT_EQ(view_.ExecuteTableRep(&e), 1);
  EXPECT_EQ(Text(), u"kitten dog\r\npuppy cat\r\n");
  EXPECT_EQ(doc_.GetStickSelection(nullptr, nullptr, nullptr, nullptr), 0);
  // Recorded relative to a base folder, replayed from another event with the same folder.
  e.SetBaseFolder(kw::Widen(dir_.string()));
  const std::u16string line = e.Format();
  EXPECT_EQ(line.find(kw::Widen(dir_.string())), std::u16string::npos);
  auto parsed = kw::KwEditView::ParseRecordEvent(line, kw::Widen(dir_.string()));
  ASSERT_NE(parsed, nullptr);
  EXPECT_EQ(parsed->GetMainFile(), e.GetMainFile());
  // A missing table is reported and changes nothing.
  Fill(u"cat");
  e.SetMainFile(kw::Widen(Temp("missing.txt").string()));
  EXPECT_EQ(view_.ExecuteTableRep(&e), 0);
  EXPECT_EQ(Text(), u"cat");
  ASSERT_FALSE(platform_.boxes.empty());
  EXPECT_NE(platform_.boxes.back().message.find(u"not found"), std::u16string::npos);
}

}  // namespace
