// The event kinds: keyword, line template and the fields bound in template order.
#include "editor/KwRecordEvent.h"

namespace kw {

namespace {

// Binds plain fields in the order given; the field kind follows the member's type.
void BindOne(KwEventFields& fields, int& value) { fields.Int(value); }
void BindOne(KwEventFields& fields, int64_t& value) { fields.Int(value); }
void BindOne(KwEventFields& fields, double& value) { fields.Real(value); }
void BindOne(KwEventFields& fields, std::u16string& value) { fields.Text(value); }

template <typename... Values>
void Bind(KwEventFields& fields, Values&... values) {
  (BindOne(fields, values), ...);
}

void BindFindOptions(KwEventFields& fields, KwFindEventOptions& find) {
  for (int& option : find.m_Options) fields.Extra(option);
  fields.Extra(find.m_InSelection);
  fields.Extra(find.m_MarkedOnly);
}

}  // namespace

KwFindEvent::KwFindEvent() : KwTemplateEvent(kEventFind, u"EditFind", u"EditFind%c%%s%c%%d") {}

void KwFindEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Text, m_Command);
  BindFindOptions(fields, m_Find);
}

KwReplEvent::KwReplEvent() : KwTemplateEvent(kEventRepl, u"EditRepl", u"EditRepl%c%%s%c%%d%c%%s%c00") {}

void KwReplEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Text, m_Command, m_ReplText);
  BindFindOptions(fields, m_Find);
}

KwBCharEvent::KwBCharEvent() : KwTemplateEvent(kEventBChar, u"EditBChar", u"EditBChar%c%%d%c%%d") {}

int KwBCharEvent::Parse(const std::u16string& line) {
  KwTemplateEvent::Parse(line);
  return 0;  // never recognised, even when the fields were read (see the class)
}

void KwBCharEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Code, m_Encoding);
}

KwXCharEvent::KwXCharEvent() : KwTemplateEvent(kEventXChar, u"EditXChar", u"EditXChar%c%%d%c%%d") {}

void KwXCharEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Code, m_Count);
}

KwAlignEvent::KwAlignEvent() : KwTemplateEvent(kEventAlign, u"EditAlign", u"EditAlign%c%%d%c%%d%c%%d%c%%d") {}

void KwAlignEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Align, m_FirstCol, m_LastCol, m_Area);
}

KwTableRepEvent::KwTableRepEvent()
    : KwTemplateEvent(kEventTableRep, u"EditTableRep", u"EditTableRep%c%%s%c%%d%c%%d%c%%d%c%%d%c%%d%c%%d") {}

void KwTableRepEvent::BindFields(KwEventFields& fields) {
  fields.File(m_MainFile);
  Bind(fields, m_Area, m_FirstCol, m_LastCol, m_MatchCase, m_Wildcards, m_Convert);
}

KwColWriteEvent::KwColWriteEvent()
    : KwTemplateEvent(kEventColWrite, u"EditColWrite", u"EditColWrite%c%%d%c%%s%c%%d%c%%d%c%%d") {}

void KwColWriteEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Area, m_Text, m_FirstCol, m_LastCol, m_Insert);
}

KwColFormEvent::KwColFormEvent()
    : KwTemplateEvent(kEventColForm, u"EditColForm", u"EditColForm%c%%s%c%%d%c%%d%c%%d") {}

void KwColFormEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Picture, m_FirstCol, m_LastCol, m_Area);
}

KwSortEvent::KwSortEvent()
    : KwTemplateEvent(kEventSort, u"EditSort", u"EditSort%c%%d%c%%d%c%%d%c%%d%c%%d%c%%d") {}

void KwSortEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_FirstCol, m_LastCol, m_Descending, m_Numeric, m_CaseSensitive, m_Area);
}

KwUmfEvent::KwUmfEvent() : KwTemplateEvent(kEventUmf, u"EditUmf", u"EditUmf%c%%s%c%%d") {}

void KwUmfEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Rule, m_Area);
}

KwLineBreakEvent::KwLineBreakEvent()
    : KwTemplateEvent(kEventLineBreak, u"EditLineBreak", u"EditLineBreak%c%%d%c%%d%c%%d%c%%d") {}

void KwLineBreakEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Width, m_Indent, m_Mode, m_Area);
}

KwLineSelectEvent::KwLineSelectEvent()
    : KwTemplateEvent(kEventLineSelect, u"EditLineSelect",
                      u"EditLineSelect%c%%d%c%%d%c%%s%c%%d%c%%d%c%%d%c%%d") {}

void KwLineSelectEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Action, m_Area, m_Term, m_Invert, m_FirstLine, m_LastLine, m_AngleUnit);
}

KwLine2Event::KwLine2Event()
    : KwTemplateEvent(kEventLine2, u"EditLine2", u"EditLine2%c%%d%c%%d%c%%d%c%%s%c%%s%c%%d%c%%d%c%%lf%c%%d") {}

void KwLine2Event::BindFields(KwEventFields& fields) {
  Bind(fields, m_Action, m_FirstCol, m_LastCol, m_From, m_To, m_Numeric, m_Duplicates, m_Tolerance, m_Area);
}

KwColCalcEvent::KwColCalcEvent()
    : KwTemplateEvent(kEventColCalc, u"EditColCalc",
                      u"EditColCalc%c%%d%c%%lf%c%%lf%c%%s%c%%d%c%%d%c%%s%c%%d%c%%d%c%%d") {}

void KwColCalcEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Area, m_Min, m_Max, m_Term, m_FirstCol, m_LastCol, m_Picture, m_AngleUnit, m_RoundMode, m_Insert);
}

KwColSumEvent::KwColSumEvent() : KwTemplateEvent(kEventColSum, u"EditColSum", u"EditColSum%c%%d%c%%s%c%%d") {}

void KwColSumEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Area, m_Term, m_Output);
}

KwAutoInsertEvent::KwAutoInsertEvent()
    : KwTemplateEvent(kEventAutoInsert, u"EditAutoInsert", u"EditAutoInsert%c%%d%c%%s%c%%d%c%%s%c%%d%c%%d") {}

void KwAutoInsertEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Column, m_Text, m_Start, m_Picture, m_Step, m_Area);
}

KwGotoSelectedLineEvent::KwGotoSelectedLineEvent()
    : KwTemplateEvent(kEventGotoSelectedLine, u"EditGotoSelectedLine", u"EditGotoSelectedLine%c%%d%c%%d") {}

void KwGotoSelectedLineEvent::BindFields(KwEventFields& fields) {
  Bind(fields, m_Direction, m_InSelection);
}

}  // namespace kw
