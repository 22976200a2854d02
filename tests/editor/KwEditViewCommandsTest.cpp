// The view's commands: caret movement at line and file ends, selections, typing and deleting across
// line ends, column typing, the clipboard, undo and redo of every command that changes text, marks,
// bookmarks and tab stops. Documents use three-unit chunks so that edits cross chunk borders.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "app/QueryBox.h"
#include "editor/KwEditCtrl.h"
#include "editor/KwEditView.h"
#include "editor/EditViewFixture.h"

namespace {

using kw::KwEditBase;
using kw::KwEditView;
using Line = int64_t;

class EditCommandsTest : public kwtest::EditViewFixture {
 protected:
  // The caret as (line, column).
  std::array<int64_t, 2> Caret() {
    int64_t column = 0;
    const Line line = view_.GetCurrentLine(&column);
    return {line, column};
  }
  std::array<int64_t, 4> Sel() {
    std::array<int64_t, 4> s{};
    view_.GetSel(&s[0], &s[1], &s[2], &s[3]);
    return s;
  }
  std::u16string Text() { return doc_.GetAllText(); }
  // Runs each move and checks its result and the caret after it.
  struct Move {
    int (KwEditView::*command)(int);
    int result;
    std::array<int64_t, 2> caret;
  };
  void ExpectMoves(const std::vector<Move>& moves) {
    for (size_t i = 0; i < moves.size(); ++i) {
      EXPECT_EQ((view_.*moves[i].command)(0), moves[i].result) << "move " << i;
      EXPECT_EQ(Caret(), moves[i].caret) << "move " << i;
    }
  }
};

using P = std::array<int64_t, 2>;

// A view whose file dialog answers with `file`.
struct FileView : KwEditView {
  using KwEditView::KwEditView;
  std::u16string file;
  int QueryFileName(int, std::u16string* name) override {
    *name = file;
    return 1;
  }
};
using S = std::array<int64_t, 4>;

TEST_F(EditCommandsTest, LeftAndRightCrossLineEndsAndStopAtTheFileEnds) {
  Fill(u"ab\r\n\r\ncde");
  const auto left = &KwEditView::DoEditLeft, right = &KwEditView::DoEditRight;
  ExpectMoves({{left, 0, {0, 0}},  // at the start of the file
               {right, 1, {0, 1}}, {right, 1, {0, 2}},
               {right, 1, {1, 0}},  // the line end: to the next line
               {right, 1, {2, 0}},  // an empty line
               {left, 1, {1, 0}},   // column 0: to the previous line's end
               {left, 1, {0, 2}},
               {&KwEditView::DoEditBottom, 1, {2, 3}},
               {right, 0, {2, 3}},  // the end of the file
               {&KwEditView::DoEditDown, 0, {2, 3}},
               {&KwEditView::DoEditHome, 1, {2, 0}},
               {&KwEditView::DoEditTop, 1, {0, 0}},
               {&KwEditView::DoEditUp, 0, {0, 0}},
               {&KwEditView::DoEditEnd, 1, {0, 2}}});
  EXPECT_EQ(platform_.boxes.size(), 0u);
}

TEST_F(EditCommandsTest, UpAndDownKeepTheGoalColumnAndPagesMoveByThePage) {
  Fill(u"0123456789\r\nab\r\n\r\n0123456789\r\nxyz\r\n0123456789\r\n012345678");
  const auto up = &KwEditView::DoEditUp, down = &KwEditView::DoEditDown;
  view_.GotoLineCol(0, 7);
  ExpectMoves({{down, 1, {1, 2}},  // a short line: its end
               {down, 1, {2, 0}},
               {down, 1, {3, 7}},  // back at the goal column
               {up, 1, {2, 0}}, {up, 1, {1, 2}}, {up, 1, {0, 7}},
               // A horizontal move sets a new goal.
               {down, 1, {1, 2}}, {&KwEditView::DoEditLeft, 1, {1, 1}}, {up, 1, {0, 1}}});
  view_.SetPageLines(4);
  view_.GotoLineCol(0, 8);
  const auto pgUp = &KwEditView::DoEditPgUp, pgDn = &KwEditView::DoEditPgDn;
  ExpectMoves({{pgDn, 1, {4, 3}},
               {pgDn, 1, {6, 8}},  // clamped to the last line, the goal kept
               {pgDn, 0, {6, 8}},
               {pgUp, 1, {2, 0}}, {pgUp, 1, {0, 8}}});
  EXPECT_EQ(view_.GetFirstVisibleLine(), 0);
}

TEST_F(EditCommandsTest, QuickMovesGoByWordsAndCrossLines) {
  Fill(u"  alpha beta\t gamma\r\nnext");
  const auto left = &KwEditView::DoQuickLeft, right = &KwEditView::DoQuickRight;
  const auto leftEnd = &KwEditView::DoQuickLeftEnd, rightEnd = &KwEditView::DoQuickRightEnd;
  ExpectMoves({{right, 1, {0, 2}}, {right, 1, {0, 8}}, {rightEnd, 1, {0, 12}}, {rightEnd, 1, {0, 19}},
               {right, 1, {1, 0}},  // at the line end: the next line
               {left, 1, {0, 19}},  // at column 0: the previous line's end
               {left, 1, {0, 14}}, {leftEnd, 1, {0, 12}}, {left, 1, {0, 8}}, {left, 1, {0, 2}},
               {leftEnd, 1, {0, 0}}});  // no word before: column 0
  // Selecting variants extend from the anchor.
  view_.OnSelectQRightEnd();
  EXPECT_EQ(Sel(), (S{0, 0, 0, 7}));
  view_.OnSelectQRightEnd();
  EXPECT_EQ(Sel(), (S{0, 0, 0, 12}));
}

TEST_F(EditCommandsTest, SelectionCommandsReportStreamColumnAndFixSelections) {
  Fill(u"abcd\r\nefgh\r\nijkl");
  view_.GotoLineCol(0, 1);
  view_.OnSelectRight();
  view_.OnSelectDown();
  EXPECT_EQ(view_.GetSelFlags(), kw::kSelFlyStream);
  EXPECT_EQ(Sel(), (S{0, 1, 1, 2}));
  view_.OnEditRight();  // a plain move drops the fly selection
  EXPECT_EQ(view_.GetSelFlags(), 0u);
  // Column mode: a block, and the caret may go beyond the line end.
  view_.GotoLineCol(0, 2);
  view_.OnSelectColumn();
  EXPECT_EQ(view_.OnUpdateSelectColumn(), KwEditView::kUpdateEnabled | KwEditView::kUpdateChecked);
  view_.OnSelectDown();
  view_.OnSelectDown();
  for (int i = 0; i < 4; ++i) view_.OnSelectRight();
  EXPECT_EQ(view_.GetSelFlags(), kw::kSelFlyColumn);
  EXPECT_EQ(Sel(), (S{0, 2, 2, 6}));
  view_.OnSelectStick();  // becomes the fix selection
  int64_t v[KwEditView::kSelValues];
  EXPECT_EQ(view_.GetSelFlags(v), kw::kSelFixColumn);
  EXPECT_EQ((S{v[4], v[5], v[6], v[7]}), (S{0, 2, 2, 6}));
  view_.OnSelectColumn();
  view_.OnSelectAll();
  EXPECT_EQ(view_.GetSelFlags(), kw::kSelFlyStream | kw::kSelFixColumn);
  EXPECT_EQ(Sel(), (S{0, 0, 2, 4}));
  view_.OnEditTop();
  view_.OnSelectRecall();
  EXPECT_EQ(view_.GetSelFlags(), kw::kSelFlyColumn | kw::kSelFixColumn);
  view_.OnSelectRemove();
  EXPECT_EQ(view_.GetSelFlags(), 0u);
  EXPECT_EQ(view_.OnUpdateSelectRemove(), 0);
  view_.OnSelectStick();  // nothing to stick: a beep
  EXPECT_EQ(platform_.beeps.size(), 1u);
  // The marked lines as a stream, and a bracket with its partner.
  doc_.SetLineMark(1, 1);
  view_.OnSelectLineMark();
  EXPECT_EQ(Sel(), (S{1, 0, 1, 6}));  // the end of line included
  Fill(u"x(a\r\n)b");
  view_.GotoLineCol(0, 1);
  view_.OnSelectBrace();
  EXPECT_EQ(Sel(), (S{0, 1, 1, 1}));
  view_.GotoLineCol(1, 0);
  view_.OnGotoBrace();
  EXPECT_EQ(Caret(), (P{0, 1}));
}

TEST_F(EditCommandsTest, TypingInsertsOverwritesPadsAndBreaksLines) {
  Fill(u"abc\r\nde");
  view_.GotoLineCol(0, 1);
  EXPECT_EQ(view_.OnChar(u'X'), 1);
  EXPECT_EQ(Text(), u"aXbc\r\nde");
  EXPECT_EQ(Caret(), (P{0, 2}));
  view_.OnEditInsert();  // overwrite
  EXPECT_EQ(view_.GetInsertMode(), 0);
  view_.OnChar(u'Y');
  view_.OnChar(u'Z');
  view_.OnChar(u'W');  // at the line end: inserted, the end of line stays
  EXPECT_EQ(Text(), u"aXYZW\r\nde");
  view_.OnEditInsert();
  view_.OnChar(u'\r');  // breaks the line at the caret
  EXPECT_EQ(Text(), u"aXYZW\r\n\r\nde");
  EXPECT_EQ(Caret(), (P{1, 0}));
  // Beyond the line end (column mode) the line is first filled with blanks.
  view_.OnSelectColumn();
  view_.GotoLineCol(2, 5);
  view_.OnChar(u'!');
  EXPECT_EQ(Text(), u"aXYZW\r\n\r\nde   !");
  // A stream selection is replaced by what is typed.
  view_.OnSelectColumn();
  view_.SetSel(0, 1, 2, 2, 1);
  view_.OnChar(u'-');
  EXPECT_EQ(Text(), u"a-   !");
  EXPECT_TRUE(doc_.Check());
}

TEST_F(EditCommandsTest, DeletingJoinsLinesAtColumnZeroAndAtTheLineEnd) {
  Fill(u"ab\r\ncd\r\nef");
  view_.GotoLineCol(1, 0);
  EXPECT_EQ(view_.OnBackSpace(), 1);  // joins with the line before
  EXPECT_EQ(Text(), u"abcd\r\nef");
  EXPECT_EQ(Caret(), (P{0, 2}));
  view_.OnEditEnd();
  EXPECT_EQ(view_.OnCharDelete(), 1);  // joins the next line
  EXPECT_EQ(Text(), u"abcdef");
  EXPECT_EQ(view_.OnCharDelete(), 1);
  EXPECT_EQ(Text(), u"abcdf");
  view_.OnEditBottom();
  EXPECT_EQ(view_.OnCharDelete(), 0);  // the end of the file: nothing
  view_.OnEditTop();
  EXPECT_EQ(view_.OnBackSpace(), 0);
  EXPECT_EQ(platform_.beeps.size(), 2u);
  // Beyond the line end: delete pads to the caret before joining; backspace only moves.
  Fill(u"ab\r\ncd");
  view_.OnSelectColumn();
  view_.GotoLineCol(0, 4);
  EXPECT_EQ(view_.OnBackSpace(), 0);
  EXPECT_EQ(Caret(), (P{0, 3}));
  view_.OnCharDelete();
  EXPECT_EQ(Text(), u"ab cd");
  view_.OnEditUndo();
  EXPECT_EQ(Text(), u"ab\r\ncd");
  view_.OnEditRedo();
  EXPECT_EQ(Text(), u"ab cd");
  EXPECT_TRUE(doc_.Check());
}

TEST_F(EditCommandsTest, ColumnTypingWritesOnEveryLineOfTheBlock) {
  Fill(u"abcd\r\nef\r\nghij");
  view_.OnSelectColumn();
  view_.SetSel(0, 1, 2, 3, 2);  // columns 1-2 of three lines
  view_.OnChar(u'X');  // replaces the block on each line
  EXPECT_EQ(Text(), u"aXd\r\neX\r\ngXj");
  EXPECT_EQ(Sel(), (S{0, 2, 2, 2}));
  EXPECT_EQ(Caret(), (P{2, 2}));  // the caret stays at the block's end it was at
  view_.SetSel(2, 2, 0, 2, 2);    // now the caret on the first line
  view_.OnChar(u'Y');  // a block of no width: inserted on each line
  EXPECT_EQ(Text(), u"aXYd\r\neXY\r\ngXYj");
  EXPECT_EQ(Caret(), (P{0, 3}));
  view_.SetInsertMode(0);
  view_.OnChar(u'Z');  // overwrite: the unit at the column, a short line is padded
  EXPECT_EQ(Text(), u"aXYZ\r\neXYZ\r\ngXYZ");
  view_.SetInsertMode(1);
  view_.OnBackSpace();
  EXPECT_EQ(Text(), u"aXY\r\neXY\r\ngXY");
  EXPECT_EQ(Sel(), (S{0, 3, 2, 3}));
  view_.OnEditUndo();  // each column command is one step
  EXPECT_EQ(Text(), u"aXYZ\r\neXYZ\r\ngXYZ");
  view_.OnEditUndo();
  EXPECT_EQ(Text(), u"aXYd\r\neXY\r\ngXYj");
  view_.OnEditUndo();
  view_.OnEditUndo();
  EXPECT_EQ(Text(), u"abcd\r\nef\r\nghij");
  EXPECT_TRUE(doc_.Check());
}

TEST_F(EditCommandsTest, ClipboardRoundTripsStreamsAndColumns) {
  Fill(u"one\r\ntwo\r\nthree");
  view_.SetSel(0, 1, 1, 2, 1);
  EXPECT_EQ(view_.OnEditCopy(), 1);
  EXPECT_EQ(platform_.clipboard, u"ne\r\ntw");
  view_.OnEditBottom();
  EXPECT_EQ(view_.OnEditPaste(), 1);
  EXPECT_EQ(Text(), u"one\r\ntwo\r\nthreene\r\ntw");
  EXPECT_EQ(Caret(), (P{3, 2}));
  // A column copy carries the marker and pastes as a column, appending lines when needed.
  view_.SetSel(0, 0, 1, 2, 2);
  view_.OnEditCopy();
  EXPECT_EQ(platform_.clipboard, std::u16string(KwEditBase::kColumnMarker) + u"\r\non\r\ntw\r\n");
  view_.GotoLineCol(3, 1);
  view_.OnEditPaste();
  EXPECT_EQ(Text(), u"one\r\ntwo\r\nthreene\r\ntonw\r\n tw");
  view_.OnEditUndo();  // the appended line goes too
  EXPECT_EQ(Text(), u"one\r\ntwo\r\nthreene\r\ntw");
  // Cut, the appending variants, and a cleared clipboard.
  view_.SetSel(0, 0, 0, 3, 1);
  view_.OnEditCut();
  EXPECT_EQ(Text(), u"\r\ntwo\r\nthreene\r\ntw");
  view_.GotoLineCol(1, 0);
  view_.OnLineCopyPlus();
  EXPECT_EQ(platform_.clipboard, u"onetwo\r\n");
  view_.SetSel(2, 0, 2, 5, 1);
  view_.OnCutPlus();
  EXPECT_EQ(platform_.clipboard, u"onetwo\r\nthree");
  view_.OnClipCls();
  EXPECT_EQ(view_.OnUpdateEditPaste(), 0);
  EXPECT_EQ(view_.OnEditPaste(), 0);
  // The fix selection is copied when there is no fly selection; nothing at all beeps.
  doc_.SetStickSelection(1, 1, 0, 1, 2);
  view_.OnEditCopy();
  EXPECT_EQ(platform_.clipboard, u"tw");
  view_.UnstickSelection();
  const size_t beeps = platform_.beeps.size();
  EXPECT_EQ(view_.OnEditCopy(), 0);
  EXPECT_EQ(platform_.beeps.size(), beeps + 1);
  EXPECT_TRUE(doc_.Check());
}

// Every command that changes text, run on the same document: undo gives the text back exactly,
// redo the changed text, and the caret goes to the step's position.
TEST_F(EditCommandsTest, EveryTextCommandUndoesAndRedoesExactly) {
  const std::u16string start = u"alpha beta\r\n  gamma\r\n\r\ndelta\r\nend";
  const std::filesystem::path file = Temp("import.txt");
  WriteBytes(file, "IN1\nIN2");
  struct Row {
    const char* name;
    std::function<void(KwEditView&, KwEditBase&)> run;
  };
  const std::vector<Row> rows = {
      {"OnChar", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(1, 3); v.OnChar(u'Q'); }},
      {"OnChar overwrite", [](KwEditView& v, KwEditBase&) { v.SetInsertMode(0); v.GotoLineCol(1, 3); v.OnChar(u'Q'); v.SetInsertMode(1); }},
      {"OnChar enter", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(0, 5); v.OnChar(u'\r'); }},
      {"OnChar stream", [](KwEditView& v, KwEditBase&) { v.SetSel(0, 2, 3, 1, 1); v.OnChar(u'Q'); }},
      {"OnBackSpace", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(3, 0); v.OnBackSpace(); }},
      {"OnCharDelete", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(0, 10); v.OnCharDelete(); }},
      {"OnEditTab", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(0, 3); v.OnEditTab(); }},
      {"OnIndent", [](KwEditView& v, KwEditBase&) { v.SetSel(0, 0, 2, 0, 1); v.OnIndent(); }},
      {"OnLineInsert", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(4, 1); v.OnLineInsert(); }},
      {"OnLineBefore", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(0, 1); v.OnLineBefore(); }},
      {"OnLineDelete", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(1, 1); v.OnLineDelete(); }},
      {"OnLineDelete last", [](KwEditView& v, KwEditBase&) { v.OnEditBottom(); v.OnLineDelete(); }},
      {"OnLineCutOff", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(0, 2); v.OnLineCutOff(); }},
      {"OnInsertFF", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(2, 0); v.OnInsertFF(); }},
      {"OnCharInsert", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(0, 0); v.OnCharInsert(); }},
      {"InsertText", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(1, 2); v.InsertText(u"x\ny\r\nz"); }},
      {"OnEditCut", [](KwEditView& v, KwEditBase&) { v.SetSel(0, 3, 1, 4, 1); v.OnEditCut(); }},
      {"OnEditCut column", [](KwEditView& v, KwEditBase&) { v.SetSel(0, 1, 3, 3, 2); v.OnEditCut(); }},
      {"OnEditPaste", [](KwEditView& v, KwEditBase&) { kw::GetPlatform().SetClipboardText(u"P\nQ"); v.GotoLineCol(2, 0); v.OnEditPaste(); }},
      {"OnEditPaste column", [](KwEditView& v, KwEditBase&) { v.SetSel(0, 0, 1, 2, 2); v.OnEditCopy(); v.GotoLineCol(3, 5); v.OnEditPaste(); }},
      {"OnLineMarkDelete", [](KwEditView& v, KwEditBase& d) { d.SetLineMark(1, 1); d.SetLineMark(4, 1); v.OnLineMarkDelete(); }},
      {"OnLineMarkCut", [](KwEditView& v, KwEditBase& d) { d.SetLineMark(0, 1); v.OnLineMarkCut(); }},
      {"OnLineCutPlus", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(3, 0); v.OnLineCutPlus(); }},
      {"OnFileImport", [](KwEditView& v, KwEditBase&) { v.GotoLineCol(1, 2); v.OnFileImport(); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Fill(start);
    FileView view(&doc_);
    view.file = file.u16string();
    row.run(view, doc_);
    const std::u16string changed = Text();
    EXPECT_NE(changed, start);
    EXPECT_TRUE(doc_.Check());
    EXPECT_EQ(view.OnEditUndo(), 1);
    EXPECT_EQ(Text(), start);
    EXPECT_FALSE(doc_.CanUndo());
    EXPECT_EQ(view.OnEditRedo(), 1);
    EXPECT_EQ(Text(), changed);
    int64_t column = 0;
    EXPECT_LE(view.GetCurrentLine(&column), doc_.GetLinesInDoc());
    EXPECT_TRUE(doc_.Check());
  }
  EXPECT_EQ(asserts_.count(), 0u);
}

// A seeded soak of random commands over three-unit chunks: undoing every step gives the first text
// back, redoing every step the last one, and the document's invariants hold throughout.
TEST_F(EditCommandsTest, RandomCommandsUndoToTheStartAndRedoToTheEnd) {
  const std::u16string start = u"first line\r\n\r\n  third\r\nfourth line here\r\nend";
  Fill(start);
  uint32_t seed = 12345;
  auto next = [&seed](uint32_t n) {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 16) % n;
  };
  for (int step = 0; step < 400; ++step) {
    switch (next(14)) {
      case 0: view_.OnChar(static_cast<char16_t>(u'a' + next(26))); break;
      case 1: view_.OnChar(u'\r'); break;
      case 2: view_.OnBackSpace(); break;
      case 3: view_.OnCharDelete(); break;
      case 4: view_.OnEditLeft(); break;
      case 5: view_.OnEditDown(); break;
      case 6: view_.OnEditUp(); break;
      case 7: view_.OnSelectRight(); view_.OnSelectDown(); break;
      case 8: view_.OnEditCut(); break;
      case 9: view_.OnEditPaste(); break;
      case 10: view_.OnSelectColumn(); break;
      case 11: view_.OnEditInsert(); break;
      case 12: view_.OnEditTab(); break;
      default: view_.OnQuickRight(); break;
    }
    ASSERT_TRUE(doc_.Check()) << "step " << step;
  }
  const std::u16string end = Text();
  EXPECT_NE(end, start);
  int undone = 0;
  for (; doc_.CanUndo(); ++undone) ASSERT_EQ(view_.OnEditUndo(), 1);
  EXPECT_GT(undone, 100);  // the soak did edit
  EXPECT_EQ(Text(), start);
  while (doc_.CanRedo()) ASSERT_EQ(view_.OnEditRedo(), 1);
  EXPECT_EQ(Text(), end);
  EXPECT_TRUE(doc_.Check());
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(EditCommandsTest, MarksAndBookmarksNavigateAndRecall) {
  Fill(u"a\r\nb\r\nc\r\nd\r\ne\r\nf");
  view_.GotoLineCol(1, 0);
  view_.OnMarkLines();  // no selection: toggles the caret line
  view_.SetSel(3, 0, 5, 0, 1);
  view_.OnMarkLines();  // the selection's lines, not the one it ends at
  EXPECT_EQ(doc_.GetLineMarkCount(0, 5), 3);
  EXPECT_EQ(doc_.GetLineMark(5), 0);
  view_.OnEditTop();
  view_.OnNextLineMark();
  EXPECT_EQ(Caret(), (P{1, 0}));
  view_.OnNextLineMarkSel();  // reported as ending with line 2's end of line
  EXPECT_EQ(Sel(), (S{1, 0, 2, 3}));
  view_.OnNextLineMark();
  view_.OnNextLineMark();  // none after line 4: a beep, the caret stays
  EXPECT_EQ(Caret(), (P{4, 0}));
  EXPECT_EQ(platform_.beeps.size(), 1u);
  view_.OnPrevLineMark();
  EXPECT_EQ(Caret(), (P{3, 0}));
  view_.OnMarkRemove();
  EXPECT_EQ(doc_.GetLineMark(3), 0);
  // Clear and invert can be recalled.
  view_.OnLineMarkClear();
  EXPECT_EQ(doc_.MinLineMark(), -1);
  view_.OnMarkRecall();
  EXPECT_EQ(doc_.GetLineMarkCount(0, 5), 2);
  view_.OnLineMarkInvert();
  EXPECT_EQ(doc_.GetLineMarkCount(0, 5), 4);
  view_.OnMarkRecall();
  EXPECT_EQ(doc_.GetLineMark(1) + doc_.GetLineMark(4), 2);
  EXPECT_EQ(doc_.GetLineMarkCount(0, 5), 2);
  // Marked lines to the clipboard.
  view_.OnLineMarkCopy();
  EXPECT_EQ(platform_.clipboard, u"b\r\ne\r\n");
  // Bookmarks.
  view_.GotoLineCol(2, 0);
  view_.OnSetBookMark();
  view_.GotoLineCol(5, 0);
  view_.OnSetBookMark();
  view_.OnEditTop();
  view_.OnNextBookMark();
  EXPECT_EQ(Caret(), (P{2, 0}));
  view_.OnNextBookMarkSel();
  EXPECT_EQ(Sel(), (S{2, 0, 4, 3}));
  view_.OnPrevBookMark();
  EXPECT_EQ(Caret(), (P{2, 0}));
  EXPECT_EQ(view_.DoPrevBookMark(), 0);
  view_.OnClearBookMarks();
  EXPECT_EQ(view_.OnUpdateBookMarks(), 0);
}

TEST_F(EditCommandsTest, TabStopsGuideTabAndBackTab) {
  Fill(u"abcdefghijklmnopqrstuvwxyz");
  EXPECT_EQ(view_.NextTabStop(0), 8);
  EXPECT_EQ(view_.NextTabStop(8), 16);
  EXPECT_EQ(view_.AddTabStop(5), 1);
  EXPECT_EQ(view_.AddTabStop(5), 0);
  EXPECT_EQ(view_.AddTabStop(0), 0);
  view_.AddTabStop(3);
  EXPECT_EQ(view_.GetTabStops(), (std::vector<int64_t>{3, 5}));
  EXPECT_EQ(view_.NextTabStop(0), 3);
  EXPECT_EQ(view_.NextTabStop(4), 5);
  EXPECT_EQ(view_.NextTabStop(5), 13);  // every 8 beyond the last stop
  EXPECT_EQ(view_.PrevTabStop(13), 5);
  EXPECT_EQ(view_.PrevTabStop(14), 13);
  EXPECT_EQ(view_.PrevTabStop(5), 3);
  EXPECT_EQ(view_.PrevTabStop(2), 0);
  view_.SetInsertMode(0);
  view_.OnEditTab();  // overwrite mode only moves
  EXPECT_EQ(Caret(), (P{0, 3}));
  view_.SetInsertMode(1);
  view_.OnEditTab();
  EXPECT_EQ(Text(), u"abc  defghijklmnopqrstuvwxyz");
  view_.OnEditBackTab();
  EXPECT_EQ(Caret(), (P{0, 3}));
  view_.GotoLineCol(0, 5);
  view_.OnTabStop();  // toggles the stop at the caret
  EXPECT_EQ(view_.GetTabStops(), (std::vector<int64_t>{3}));
  view_.OnTabStopsRemove();
  EXPECT_TRUE(view_.GetTabStops().empty());
}

TEST_F(EditCommandsTest, SettingsStepAndUnavailableCommandsSaySo) {
  Fill(u"x");
  const int size = view_.GetSettings().fontSize;
  EXPECT_EQ(view_.OnViewBigger(), 1);
  EXPECT_GT(view_.GetSettings().fontSize, size);
  view_.OnViewSmaller();
  EXPECT_EQ(view_.GetSettings().fontSize, size);
  while (view_.OnViewSmaller() != 0) {
  }
  EXPECT_EQ(view_.GetSettings().fontSize, KwEditView::kFontSizes[0]);
  view_.OnViewEol();
  view_.OnViewBin();
  view_.OnViewBin();
  EXPECT_TRUE(view_.GetSettings().showEOL);
  EXPECT_FALSE(view_.GetSettings().showBinary);
  EXPECT_EQ(view_.OnViewSet(), 0);  // no settings dialog here
  view_.OnViewColors();
  view_.DoFilePrint();
  view_.OnViewPrintPage();
  view_.DoFilePrintPreview();
  ASSERT_EQ(platform_.boxes.size(), 4u);
  EXPECT_EQ(platform_.boxes[0].message, kw::LoadString(1003).substr(0, kw::LoadString(1003).find(u'|')));
}

TEST_F(EditCommandsTest, ExportWritesTheSelectionAndImportMergesAtTheCaret) {
  Fill(u"abc\r\ndef\r\nghi");
  FileView view(&doc_);
  view.file = Temp("out.txt").u16string();
  view.SetSel(0, 1, 1, 2, 1);
  EXPECT_EQ(view.OnFileExport(), 1);
  EXPECT_EQ(ReadBytes(Temp("out.txt")), "bc\r\nde");
  view.SetSel(0, 1, 2, 3, 2);
  view.OnFileExport();
  EXPECT_EQ(ReadBytes(Temp("out.txt")), "bc\r\nef\r\nhi\r\n");
  EXPECT_EQ(Text(), u"abc\r\ndef\r\nghi");
  view.GotoLineCol(2, 1);
  view.OnFileImport();
  EXPECT_EQ(Text(), u"abc\r\ndef\r\ngbc\r\nef\r\nhi\r\nhi");
  int64_t column = -1;
  EXPECT_EQ(view.GetCurrentLine(&column), 5);
  EXPECT_EQ(column, 0);
  view.file = Temp("missing.txt").u16string();
  EXPECT_EQ(view.OnFileImport(), 0);
  EXPECT_EQ(platform_.boxes.size(), 1u);
}

TEST_F(EditCommandsTest, ControlLeavesOnTabKeepsNoMarksAndNeverRecords) {
  kw::KwEditCtrl ctrl;
  ctrl.GetDocument()->SetChunkUnits(3);
  ctrl.SetText(u"one\ntwo");
  EXPECT_EQ(ctrl.GetText(), u"one\r\ntwo");
  EXPECT_FALSE(ctrl.GetDocument()->CanUndo());
  ctrl.GotoLineCol(0, 3);
  EXPECT_EQ(ctrl.OnEditTab(), 0);
  EXPECT_EQ(ctrl.GetText(), u"one\r\ntwo");
  EXPECT_EQ(ctrl.GetLeaveCount(1), 1);
  ctrl.OnEditBackTab();
  EXPECT_EQ(ctrl.GetLeaveCount(-1), 1);
  ctrl.OnMarkLines();
  ctrl.OnSetBookMark();
  EXPECT_EQ(ctrl.GetDocument()->MinLineMark(), -1);
  EXPECT_EQ(ctrl.GetDocument()->GetBookMarkCount(), 0);
  ctrl.SetRecording(1);
  EXPECT_EQ(ctrl.IsRecording(), 0);
  // Typing and undo work as in the view.
  ctrl.OnChar(u'!');
  EXPECT_EQ(ctrl.GetText(), u"one!\r\ntwo");
  ctrl.OnEditUndo();
  EXPECT_EQ(ctrl.GetText(), u"one\r\ntwo");
}

}  // namespace
