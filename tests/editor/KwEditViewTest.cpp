// The view's queries: how selections are reported, which lines a task's area covers, and that a
// remembered state comes back clamped to a changed document.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "editor/KwEditView.h"
#include "editor/EditViewFixture.h"

namespace {

using kw::KwEditBase;
using kw::KwEditView;
using Line = int64_t;

class EditViewTest : public kwtest::EditViewFixture {};

TEST_F(EditViewTest, SelectionIsReportedOrderedAndStreamEndsAtColumnZeroMoveBack) {
  Fill(u"abc\r\ndefgh\r\nij\r\n");
  Line l1, l2;
  int64_t c1, c2;
  // Made backwards: reported from first to last.
  view_.SetSel(2, 1, 0, 2, 1);
  view_.GetSel(&l1, &c1, &l2, &c2);
  EXPECT_EQ((std::array<int64_t, 4>{l1, c1, l2, c2}), (std::array<int64_t, 4>{0, 2, 2, 1}));
  EXPECT_EQ(view_.GetCurrentLine(&c1), 0);
  EXPECT_EQ(c1, 2);
  // Ending at column 0 of line 2: reported as the end of line 1, its end of line included.
  view_.SetSel(0, 1, 2, 0, 1);
  view_.GetSel(&l1, &c1, &l2, &c2);
  EXPECT_EQ(l2, 1);
  EXPECT_EQ(c2, 7);
  // A column block reports its smaller column first whichever corner the caret is at.
  view_.SetSel(0, 4, 2, 1, 2);
  view_.GetSel(&l1, &c1, &l2, &c2);
  EXPECT_EQ((std::array<int64_t, 4>{l1, c1, l2, c2}), (std::array<int64_t, 4>{0, 1, 2, 4}));
  // An empty stream is no selection; out-of-range lines are clamped.
  view_.SetSel(1, 2, 1, 2, 1);
  EXPECT_EQ(view_.GetSelFlags() & kw::kSelMaskFly, 0u);
  view_.SetSel(-4, 0, 99, 0, 1);
  view_.GetSel(&l1, &c1, &l2, &c2);
  EXPECT_EQ(l1, 0);
  EXPECT_EQ(view_.GetCurrentLine(), doc_.GetLinesInDoc());
}

TEST_F(EditViewTest, SelFlagsCombineFlyFixAndMarksAndFillTheTenValues) {
  Fill(u"one\r\ntwo\r\nthree\r\nfour");
  int64_t v[KwEditView::kSelValues];
  EXPECT_EQ(view_.GetSelFlags(v), 0u);
  EXPECT_EQ(v[0], -1);
  EXPECT_EQ(v[4], -1);
  EXPECT_EQ(v[8], 0);
  EXPECT_EQ(v[9], 4);
  view_.SetSel(1, 0, 2, 3, 2);
  doc_.SetStickSelection(1, 0, 1, 3, 2);
  doc_.SetLineMark(3, 1);
  doc_.SetLineMark(0, 1);
  EXPECT_EQ(view_.GetSelFlags(v), kw::kSelFlyColumn | kw::kSelFixStream | kw::kSelMarkedLines);
  EXPECT_EQ((std::array<int64_t, 10>{v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8], v[9]}),
            (std::array<int64_t, 10>{1, 0, 2, 3, 0, 1, 3, 2, 2, 4}));
  EXPECT_EQ(view_.CheckSelection(kw::kSelMaskColumn), 1);
  view_.SetSel(0, 0, 0, 0, 0);
  view_.UnstickSelection();
  EXPECT_EQ(view_.CheckSelection(kw::kSelMaskAny), 0);  // beeps
}

TEST_F(EditViewTest, AreaOfEachKindAndTheLinesATaskVisits) {
  Fill(u"a\r\nbbbbbb\r\ncc\r\nddd\r\n");
  Line first = -1, last = -1;
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaText, &first, &last), 5);
  EXPECT_EQ(last, 4);
  // No selection and no marks: those areas do not exist.
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaStream, &first, &last), 0);
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaMarked, &first, &last), 0);
  EXPECT_EQ(view_.MaxLineLength(kw::kAreaMarked), 0);
  // A stream ending at column 0 of line 3 leaves line 3 out.
  view_.SetSel(1, 2, 3, 0, 1);
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaStream, &first, &last), 2);
  EXPECT_EQ(first, 1);
  EXPECT_EQ(last, 2);
  // The fix selection serves when the fly one is of another kind; the same column-0 rule holds.
  doc_.SetStickSelection(1, 2, 0, 4, 0);
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaColumn, &first, &last), 0);
  view_.SetSel(0, 0, 0, 0, 0);
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaStream, &first, &last), 2);
  EXPECT_EQ(last, 3);
  // Marked lines: the count is of marked lines, the range from the first to the last.
  doc_.SetLineMark(0, 1);
  doc_.SetLineMark(2, 1);
  EXPECT_EQ(view_.GetExecuteCount(kw::kAreaMarked, &first, &last), 2);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(last, 2);
  EXPECT_EQ(view_.MaxLineLength(kw::kAreaMarked), 2);  // "bbbbbb" is not marked
  EXPECT_EQ(view_.MaxLineLength(kw::kAreaText), 6);
}

TEST_F(EditViewTest, RememberedStateComesBackClampedAfterTheTextShrank) {
  Fill(u"first\r\nsecond\r\nthird\r\nfourth");
  view_.SetSel(1, 2, 3, 4, 1);
  doc_.SetStickSelection(2, 0, 1, 3, 3);
  int64_t state[KwEditView::kStateSize];
  view_.RememberState(state, 1);
  EXPECT_EQ(view_.GetSelFlags() & kw::kSelMaskFly, 0u);  // flag 1 cleared the fly selection
  doc_.UnstickSelection();
  view_.RestoreState(state);
  Line l1, l2;
  int64_t c1, c2;
  view_.GetSel(&l1, &c1, &l2, &c2);
  EXPECT_EQ((std::array<int64_t, 4>{l1, c1, l2, c2}), (std::array<int64_t, 4>{1, 2, 3, 4}));
  EXPECT_EQ(doc_.GetStickSelection(&l1, &c1, &l2, &c2), 2);
  // The document lost its last two lines: the caret and selections are clamped to it.
  doc_.SelReplace(1, 6, 3, 6, nullptr, 0, 0);
  view_.RestoreState(state);
  EXPECT_EQ(view_.GetCurrentLine(), 1);
}

TEST_F(EditViewTest, DialogParamsAreOnePerKindAndKept) {
  auto* calc = view_.GetDialogParams(kw::kEventColCalc);
  ASSERT_NE(calc, nullptr);
  EXPECT_EQ(calc->GetType(), kw::kEventColCalc);
  EXPECT_EQ(view_.GetDialogParams(kw::kEventColCalc), calc);
  EXPECT_NE(view_.GetDialogParams(kw::kEventColSum), calc);
  EXPECT_EQ(view_.GetDialogParams(92), nullptr);  // a letter without a kind
  EXPECT_EQ(view_.GetDialogParams(40), nullptr);  // outside the letters: an internal error
  EXPECT_EQ(asserts_.count(), 1u);
}

}  // namespace
