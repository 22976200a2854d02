// The task commands run their task with the dialog's parameters: the same result as the task run with
// an event holding those parameters, on a twin document.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "editor/KwEditView.h"
#include "support/TestSupport.h"

namespace {

using kw::KwEditBase;
using kw::KwEditView;

class EditTaskCommands : public kwtest::PlatformTest {
 protected:
  static void Fill(KwEditBase& doc, const std::u16string& text) {
    doc.SetChunkUnits(3);
    doc.InitEdit();
    doc.SetEOLType(13);
    doc.AddText(text, 0, 0);
  }
  // Runs `command` on one document and `task` on a twin; both must change the text alike.
  void ExpectSameAsTask(const std::u16string& text, const std::function<void(KwEditView&)>& command,
                        const std::function<void(KwEditView&)>& task) {
    KwEditBase a, b;
    Fill(a, text);
    Fill(b, text);
    KwEditView va(&a), vb(&b);
    command(va);
    task(vb);
    EXPECT_NE(a.GetAllText(), text);
    EXPECT_EQ(a.GetAllText(), b.GetAllText());
    EXPECT_EQ(a.GetLineMarkCount(0, a.GetLinesInDoc()), b.GetLineMarkCount(0, b.GetLinesInDoc()));
    EXPECT_EQ(va.GetLastExecute().changed, vb.GetLastExecute().changed);
  }
};

TEST_F(EditTaskCommands, CommandsRunTheirTaskWithTheDialogParameters) {
  const std::u16string text = u"12 3\r\n40 5\r\n7  8";
  {
    SCOPED_TRACE("OnEditCalcCol");
    auto set = [](kw::KwColCalcEvent* e) {
      e->m_Term = u"[1-2]*2";
      e->m_FirstCol = 6;
      e->m_LastCol = 8;
      e->m_Picture = u"###";
    };
    ExpectSameAsTask(
        text, [&](KwEditView& v) { set(static_cast<kw::KwColCalcEvent*>(v.GetDialogParams(kw::kEventColCalc))); v.OnEditCalcCol(); },
        [&](KwEditView& v) { kw::KwColCalcEvent e; set(&e); v.ExecuteColCalc(&e); });
  }
  {
    SCOPED_TRACE("OnEditFormLin");
    auto set = [](kw::KwLineSelectEvent* e) {
      e->m_Term = u"[1-2]>10";
      e->m_Action = kw::kLineActionDelete;
    };
    ExpectSameAsTask(
        text, [&](KwEditView& v) { set(static_cast<kw::KwLineSelectEvent*>(v.GetDialogParams(kw::kEventLineSelect))); v.OnEditFormLin(); },
        [&](KwEditView& v) { kw::KwLineSelectEvent e; set(&e); v.ExecuteLineMark(&e); });
  }
  // Transformation rules are not available: the command says so and changes nothing.
  KwEditBase doc;
  Fill(doc, text);
  KwEditView view(&doc);
  view.OnEditMenu();
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(doc.GetAllText(), text);
}

}  // namespace
