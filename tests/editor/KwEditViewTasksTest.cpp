// The task commands run their task with the dialog's parameters: the same result as the task run with
// an event holding those parameters, on a twin document.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <type_traits>
#include <vector>
#include <string>

#include "editor/EditTestSupport.h"
#include "editor/KwEditView.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using kw::KwEditView;

class EditTaskCommands : public kwtest::PlatformTest {
 protected:
  static void Fill(KwEditBase& doc, const std::u16string& text) { kwtest::FillDoc(doc, text); }
  // Runs `command` on one document and `task` on a twin; both must end alike (text, marks, caret)
  // and the command must have done something.
  void ExpectSameAsTask(const std::u16string& text, const std::function<void(KwEditView&)>& command,
                        const std::function<void(KwEditView&)>& task) {
    KwEditBase a, b;
    Fill(a, text);
    Fill(b, text);
    KwEditView va(&a), vb(&b);
    a.SetLineMark(1, 1);
    b.SetLineMark(1, 1);
    command(va);
    task(vb);
    int64_t ca = 0, cb = 0;
    const int64_t la = va.GetCurrentLine(&ca), lb = vb.GetCurrentLine(&cb);
    EXPECT_TRUE(a.GetAllText() != text || la != 0 || ca != 0 || a.GetLineMarkCount(0, a.GetLinesInDoc()) != 1);
    EXPECT_EQ(a.GetAllText(), b.GetAllText());
    EXPECT_EQ(a.GetLineMarkCount(0, a.GetLinesInDoc()), b.GetLineMarkCount(0, b.GetLinesInDoc()));
    EXPECT_EQ(la, lb);
    EXPECT_EQ(ca, cb);
    EXPECT_EQ(va.GetLastExecute().changed, vb.GetLastExecute().changed);
  }
};

// One row per command: the command with the dialog's event set by `set`, and the task with an event
// set alike.
template <class Event>
struct Row {
  const char* name;
  char letter;
  void (KwEditView::*command)();
  int (KwEditView::*task)(Event*);
  std::function<void(Event*)> set;
};

TEST_F(EditTaskCommands, EveryTaskCommandMatchesItsTask) {
  const std::u16string words = u"b 12.5 x\r\na 3 yy\r\nc 40 zzz\r\nfind me\r\n";
  const std::u16string numbers = u"12 3\r\n40 5\r\n7  8";
  auto check = [&](auto row, const std::u16string& text) {
    using Event = std::remove_pointer_t<typename decltype(row.set)::argument_type>;
    SCOPED_TRACE(row.name);
    ExpectSameAsTask(
        text,
        [&](KwEditView& v) {
          row.set(static_cast<Event*>(v.GetDialogParams(row.letter)));
          (v.*row.command)();
        },
        [&](KwEditView& v) {
          Event e;
          row.set(&e);
          (v.*row.task)(&e);
        });
  };
  check(Row<kw::KwColWriteEvent>{"OnColWrite", kw::kEventColWrite, &KwEditView::OnColWrite,
                                 &KwEditView::ExecuteColReplace, [](kw::KwColWriteEvent* e) {
                                   e->m_Text = u"##";
                                   e->m_FirstCol = 2;
                                   e->m_LastCol = 3;
                                 }}, words);
  check(Row<kw::KwSortEvent>{"OnEditSort", kw::kEventSort, &KwEditView::OnEditSort, &KwEditView::ExecuteLineSort,
                             [](kw::KwSortEvent* e) { e->m_Descending = 1; }}, words);
  check(Row<kw::KwColFormEvent>{"OnEditFormNum", kw::kEventColForm, &KwEditView::OnEditFormNum,
                                &KwEditView::ExecuteColForm, [](kw::KwColFormEvent* e) {
                                  e->m_Picture = u"##.##";
                                  e->m_FirstCol = 3;
                                  e->m_LastCol = 7;
                                }}, words);
  check(Row<kw::KwAlignEvent>{"OnEditFormLr", kw::kEventAlign, &KwEditView::OnEditFormLr,
                              &KwEditView::ExecuteColAlign, [](kw::KwAlignEvent* e) {
                                e->m_Align = 1;
                                e->m_FirstCol = 1;
                                e->m_LastCol = 9;
                              }}, words);
  check(Row<kw::KwLineBreakEvent>{"OnEditLineUmb", kw::kEventLineBreak, &KwEditView::OnEditLineUmb,
                                  &KwEditView::ExecuteLineUmb, [](kw::KwLineBreakEvent* e) { e->m_Width = 4; }}, words);
  check(Row<kw::KwAutoInsertEvent>{"OnAutoInsert", kw::kEventAutoInsert, &KwEditView::OnAutoInsert,
                                   &KwEditView::ExecuteAutoInsert, [](kw::KwAutoInsertEvent* e) {
                                     e->m_Text = u"N";
                                     e->m_Picture = u"##";
                                   }}, words);
  check(Row<kw::KwXCharEvent>{"OnExtChar", kw::kEventXChar, &KwEditView::OnExtChar, &KwEditView::ExecuteExtChar,
                              [](kw::KwXCharEvent* e) {
                                e->m_Code = 0x263A;
                                e->m_Count = 2;
                              }}, words);
  check(Row<kw::KwLine2Event>{"OnColAssist", kw::kEventLine2, &KwEditView::OnColAssist, &KwEditView::ExecuteLine2,
                              [](kw::KwLine2Event* e) {
                                e->m_From = u"b";
                                e->m_Action = kw::kLineActionMark;
                              }}, words);
  check(Row<kw::KwGotoSelectedLineEvent>{"OnGotoMarkedLine", kw::kEventGotoSelectedLine,
                                         &KwEditView::OnGotoMarkedLine, &KwEditView::ExecuteGotoMarkedLine,
                                         [](kw::KwGotoSelectedLineEvent* e) { e->m_Direction = 0; }}, words);
  check(Row<kw::KwFindEvent>{"OnEditFind", kw::kEventFind, &KwEditView::OnEditFind, &KwEditView::ExecuteFind,
                             [](kw::KwFindEvent* e) { e->m_Text = u"me"; }}, words);
  check(Row<kw::KwReplEvent>{"OnEditReplace", kw::kEventRepl, &KwEditView::OnEditReplace,
                             &KwEditView::ExecuteReplace, [](kw::KwReplEvent* e) {
                               e->m_Text = u"z";
                               e->m_ReplText = u"Z";
                               e->m_Command = 1;
                             }}, words);
  check(Row<kw::KwColCalcEvent>{"OnEditCalcCol", kw::kEventColCalc, &KwEditView::OnEditCalcCol,
                                &KwEditView::ExecuteColCalc, [](kw::KwColCalcEvent* e) {
                                  e->m_Term = u"[1-2]*2";
                                  e->m_FirstCol = 6;
                                  e->m_LastCol = 8;
                                  e->m_Picture = u"###";
                                }}, numbers);
  check(Row<kw::KwLineSelectEvent>{"OnEditFormLin", kw::kEventLineSelect, &KwEditView::OnEditFormLin,
                                   &KwEditView::ExecuteLineMark, [](kw::KwLineSelectEvent* e) {
                                     e->m_Term = u"[1-2]>10";
                                     e->m_Action = kw::kLineActionDelete;
                                   }}, numbers);
  // Transformation rules are not available: the command says so and changes nothing.
  KwEditBase doc;
  Fill(doc, words);
  KwEditView view(&doc);
  view.OnEditMenu();
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(doc.GetAllText(), words);
}

TEST_F(EditTaskCommands, FindAgainGoesThroughTheMatchesInEveryDirection) {
  KwEditBase doc;
  Fill(doc, u"ab\r\nxab\r\nab ab");
  KwEditView view(&doc);
  static_cast<kw::KwFindEvent*>(view.GetDialogParams(kw::kEventFind))->m_Text = u"ab";
  std::vector<std::array<int64_t, 2>> seen;
  auto caret = [&] {
    int64_t column = 0;
    const int64_t line = view.GetCurrentLine(&column);
    return std::array<int64_t, 2>{line, column};
  };
  view.OnFindLast();
  const auto last = caret();
  view.OnFindFirst();
  const auto first = caret();
  view.OnFindNext();
  const auto second = caret();
  view.OnFindPrev();
  EXPECT_LT(first, second);
  EXPECT_LT(second, last);
  EXPECT_EQ(caret(), first);
  EXPECT_EQ(last[0], 2);
}

}  // namespace
