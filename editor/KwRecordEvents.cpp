// The event kinds: keyword, line template and the fields bound in template order.
#include "editor/KwRecordEvent.h"

namespace kw {

namespace {

void BindFindOptions(KwEventFields& fields, KwFindEventOptions& find) {
  for (int& option : find.m_Options) fields.Extra(option);
  fields.Extra(find.m_InSelection);
  fields.Extra(find.m_MarkedOnly);
}

}  // namespace

KwFindEvent::KwFindEvent() : KwTemplateEvent(kEventFind, u"EditFind", u"EditFind%c%%s%c%%d") {}

void KwFindEvent::BindFields(KwEventFields& fields) {
  fields.Text(m_Text);
  fields.Int(m_Command);
  BindFindOptions(fields, m_Find);
}

KwReplEvent::KwReplEvent() : KwTemplateEvent(kEventRepl, u"EditRepl", u"EditRepl%c%%s%c%%d%c%%s%c00") {}

void KwReplEvent::BindFields(KwEventFields& fields) {
  fields.Text(m_Text);
  fields.Int(m_Command);
  fields.Text(m_ReplText);
  BindFindOptions(fields, m_Find);
}

KwBCharEvent::KwBCharEvent() : KwTemplateEvent(kEventBChar, u"EditBChar", u"EditBChar%c%%d%c%%d") {}

int KwBCharEvent::Parse(const std::u16string& line) {
  KwTemplateEvent::Parse(line);
  return 0;  // never recognised, even when the fields were read (see the class)
}

void KwBCharEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Code);
  fields.Int(m_Encoding);
}

KwXCharEvent::KwXCharEvent() : KwTemplateEvent(kEventXChar, u"EditXChar", u"EditXChar%c%%d%c%%d") {}

void KwXCharEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Code);
  fields.Int(m_Count);
}

KwAlignEvent::KwAlignEvent() : KwTemplateEvent(kEventAlign, u"EditAlign", u"EditAlign%c%%d%c%%d%c%%d%c%%d") {}

void KwAlignEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Align);
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Int(m_Area);
}

KwTableRepEvent::KwTableRepEvent()
    : KwTemplateEvent(kEventTableRep, u"EditTableRep", u"EditTableRep%c%%s%c%%d%c%%d%c%%d%c%%d%c%%d%c%%d") {}

void KwTableRepEvent::BindFields(KwEventFields& fields) {
  fields.File(m_MainFile);
  fields.Int(m_Area);
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Int(m_MatchCase);
  fields.Int(m_Wildcards);
  fields.Int(m_Convert);
}

KwColWriteEvent::KwColWriteEvent()
    : KwTemplateEvent(kEventColWrite, u"EditColWrite", u"EditColWrite%c%%d%c%%s%c%%d%c%%d%c%%d") {}

void KwColWriteEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Area);
  fields.Text(m_Text);
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Int(m_Insert);
}

KwColFormEvent::KwColFormEvent()
    : KwTemplateEvent(kEventColForm, u"EditColForm", u"EditColForm%c%%s%c%%d%c%%d%c%%d") {}

void KwColFormEvent::BindFields(KwEventFields& fields) {
  fields.Text(m_Picture);
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Int(m_Area);
}

KwSortEvent::KwSortEvent()
    : KwTemplateEvent(kEventSort, u"EditSort", u"EditSort%c%%d%c%%d%c%%d%c%%d%c%%d%c%%d") {}

void KwSortEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Int(m_Descending);
  fields.Int(m_Numeric);
  fields.Int(m_CaseSensitive);
  fields.Int(m_Area);
}

KwUmfEvent::KwUmfEvent() : KwTemplateEvent(kEventUmf, u"EditUmf", u"EditUmf%c%%s%c%%d") {}

void KwUmfEvent::BindFields(KwEventFields& fields) {
  fields.Text(m_Rule);
  fields.Int(m_Area);
}

KwLineBreakEvent::KwLineBreakEvent()
    : KwTemplateEvent(kEventLineBreak, u"EditLineBreak", u"EditLineBreak%c%%d%c%%d%c%%d%c%%d") {}

void KwLineBreakEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Width);
  fields.Int(m_Indent);
  fields.Int(m_Mode);
  fields.Int(m_Area);
}

KwLineSelectEvent::KwLineSelectEvent()
    : KwTemplateEvent(kEventLineSelect, u"EditLineSelect",
                      u"EditLineSelect%c%%d%c%%d%c%%s%c%%d%c%%d%c%%d%c%%d") {}

void KwLineSelectEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Action);
  fields.Int(m_Area);
  fields.Text(m_Term);
  fields.Int(m_Invert);
  fields.Int(m_FirstLine);
  fields.Int(m_LastLine);
  fields.Int(m_AngleUnit);
}

KwLine2Event::KwLine2Event()
    : KwTemplateEvent(kEventLine2, u"EditLine2", u"EditLine2%c%%d%c%%d%c%%d%c%%s%c%%s%c%%d%c%%d%c%%lf%c%%d") {}

void KwLine2Event::BindFields(KwEventFields& fields) {
  fields.Int(m_Action);
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Text(m_From);
  fields.Text(m_To);
  fields.Int(m_Numeric);
  fields.Int(m_Duplicates);
  fields.Real(m_Tolerance);
  fields.Int(m_Area);
}

KwColCalcEvent::KwColCalcEvent()
    : KwTemplateEvent(kEventColCalc, u"EditColCalc",
                      u"EditColCalc%c%%d%c%%lf%c%%lf%c%%s%c%%d%c%%d%c%%s%c%%d%c%%d%c%%d") {}

void KwColCalcEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Area);
  fields.Real(m_Min);
  fields.Real(m_Max);
  fields.Text(m_Term);
  fields.Int(m_FirstCol);
  fields.Int(m_LastCol);
  fields.Text(m_Picture);
  fields.Int(m_AngleUnit);
  fields.Int(m_RoundMode);
  fields.Int(m_Insert);
}

KwColSumEvent::KwColSumEvent() : KwTemplateEvent(kEventColSum, u"EditColSum", u"EditColSum%c%%d%c%%s%c%%d") {}

void KwColSumEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Area);
  fields.Text(m_Term);
  fields.Int(m_Output);
}

KwAutoInsertEvent::KwAutoInsertEvent()
    : KwTemplateEvent(kEventAutoInsert, u"EditAutoInsert", u"EditAutoInsert%c%%d%c%%s%c%%d%c%%s%c%%d%c%%d") {}

void KwAutoInsertEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Column);
  fields.Text(m_Text);
  fields.Int(m_Start);
  fields.Text(m_Picture);
  fields.Int(m_Step);
  fields.Int(m_Area);
}

KwGotoSelectedLineEvent::KwGotoSelectedLineEvent()
    : KwTemplateEvent(kEventGotoSelectedLine, u"EditGotoSelectedLine", u"EditGotoSelectedLine%c%%d%c%%d") {}

void KwGotoSelectedLineEvent::BindFields(KwEventFields& fields) {
  fields.Int(m_Direction);
  fields.Int(m_InSelection);
}

}  // namespace kw
