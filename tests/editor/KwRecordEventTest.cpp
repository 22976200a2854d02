// Recorded command events: the line of every kind, reading it back, remarks, file references, the
// factories and the contracts on type letters.
#include "editor/KwRecordEvent.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/TestSupport.h"

namespace {

using namespace kw;

// Lines in the tests are written with "~" for DEL and "$" for character 3.
std::u16string L(std::u16string text) {
  for (char16_t& c : text) {
    if (c == u'~') c = kEventFieldSep;
    else if (c == u'$') c = kEventRemarkSep;
  }
  return text;
}

template <class T>
T& As(KwRecordEvent& e) {
  return dynamic_cast<T&>(e);
}

class RecordEventTest : public kwtest::PlatformTest {};

struct KindRow {
  char letter;
  // Sets every field to a value unlike its default, and fields of one type to values unlike each
  // other, so that a field bound out of its place shows in the line.
  std::function<void(KwRecordEvent&)> fill;
  std::u16string line;
};

const KindRow kKinds[] = {
    {'Q', [](KwRecordEvent& e) {
       auto& f = As<KwFindEvent>(e);
       f.m_Text = u"Müller*";
       f.m_Command = 3;
       for (int i = 0; i < 6; ++i) f.m_Find.m_Options[i] = i + 1;
       f.m_Find.m_InSelection = 7;
       f.m_Find.m_MarkedOnly = 8;
     }, L(u"EditFind~Müller*~3~1~2~3~4~5~6~7~8")},
    {'R', [](KwRecordEvent& e) {
       auto& r = As<KwReplEvent>(e);
       r.m_Text = u"a%sb";
       r.m_Command = 1;
       r.m_ReplText = u"100%";
       r.m_Find.m_Options[0] = 1;
       r.m_Find.m_Options[5] = -2;
       r.m_Find.m_MarkedOnly = 1;
     }, L(u"EditRepl~a%sb~1~100%~00~1~0~0~0~0~-2~0~1")},
    {'T', [](KwRecordEvent& e) { As<KwXCharEvent>(e).m_Code = 0x263A, As<KwXCharEvent>(e).m_Count = 3; },
     L(u"EditXChar~9786~3")},
    {'U', [](KwRecordEvent& e) {
       auto& a = As<KwAlignEvent>(e);
       a.m_Align = 2, a.m_FirstCol = 10, a.m_LastCol = 19, a.m_Area = 16;
     }, L(u"EditAlign~2~10~19~16")},
    {'V', [](KwRecordEvent& e) {
       auto& t = As<KwTableRepEvent>(e);
       t.SetMainFile(u"/data/umlaut.tab");
       t.m_Area = 2, t.m_FirstCol = 4, t.m_LastCol = 9, t.m_MatchCase = 1, t.m_Wildcards = 3, t.m_Convert = 5;
     }, L(u"EditTableRep~/data/umlaut.tab~2~4~9~1~3~5")},
    {'W', [](KwRecordEvent& e) {
       auto& w = As<KwColWriteEvent>(e);
       w.m_Area = 2, w.m_Text = u"  X ", w.m_FirstCol = 5, w.m_LastCol = 8, w.m_Insert = 1;
     }, L(u"EditColWrite~2~  X ~5~8~1")},
    {'X', [](KwRecordEvent& e) {
       auto& f = As<KwColFormEvent>(e);
       f.m_Picture = u"###.##", f.m_FirstCol = 3, f.m_LastCol = 8, f.m_Area = 2;
     }, L(u"EditColForm~###.##~3~8~2")},
    {'Y', [](KwRecordEvent& e) {
       auto& s = As<KwSortEvent>(e);
       s.m_FirstCol = 2, s.m_LastCol = 7, s.m_Descending = 1, s.m_Numeric = 3, s.m_CaseSensitive = 5, s.m_Area = 16;
     }, L(u"EditSort~2~7~1~3~5~16")},
    {'Z', [](KwRecordEvent& e) { As<KwUmfEvent>(e).m_Rule = u"GK-UTM", As<KwUmfEvent>(e).m_Area = 1; },
     L(u"EditUmf~GK-UTM~1")},
    {'[', [](KwRecordEvent& e) {
       auto& b = As<KwLineBreakEvent>(e);
       b.m_Width = 60, b.m_Indent = 4, b.m_Mode = 1, b.m_Area = 2;
     }, L(u"EditLineBreak~60~4~1~2")},
    {']', [](KwRecordEvent& e) {
       auto& s = As<KwLineSelectEvent>(e);
       s.m_Action = kLineActionKeep, s.m_Area = 16, s.m_Term = u"[10-19]>500 | [1]='X'", s.m_Invert = 1;
       s.m_FirstLine = 5, s.m_LastLine = 9000000000LL, s.m_AngleUnit = 2;
     }, L(u"EditLineSelect~3~16~[10-19]>500 | [1]='X'~1~5~9000000000~2")},
    {'^', [](KwRecordEvent& e) {
       auto& s = As<KwLine2Event>(e);
       s.m_Action = kLineActionDelete, s.m_FirstCol = 11, s.m_LastCol = 20, s.m_From = u"A", s.m_To = u"M";
       s.m_Numeric = 1, s.m_Duplicates = 3, s.m_Tolerance = 0.005, s.m_Area = 16;
     }, L(u"EditLine2~2~11~20~A~M~1~3~0.005000~16")},
    {'_', [](KwRecordEvent& e) {
       auto& c = As<KwColCalcEvent>(e);
       c.m_Area = 16, c.m_Min = -1.5, c.m_Max = 2500.125, c.m_Term = u"SQR([10-19]^2+[21-30]^2)";
       c.m_FirstCol = 41, c.m_LastCol = 50, c.m_Picture = u"####.###", c.m_AngleUnit = 2, c.m_RoundMode = 1;
       c.m_Insert = 3;
     }, L(u"EditColCalc~16~-1.500000~2500.125000~SQR([10-19]^2+[21-30]^2)~41~50~####.###~2~1~3")},
    {'`', [](KwRecordEvent& e) {
       auto& s = As<KwColSumEvent>(e);
       s.m_Area = 1, s.m_Term = u"[10-19]", s.m_Output = 2;
     }, L(u"EditColSum~1~[10-19]~2")},
    {'a', [](KwRecordEvent& e) {
       auto& a = As<KwAutoInsertEvent>(e);
       a.m_Column = 7, a.m_Text = u"P-", a.m_Start = 100, a.m_Picture = u"*****", a.m_Step = -10, a.m_Area = 16;
     }, L(u"EditAutoInsert~7~P-~100~*****~-10~16")},
    {'d', [](KwRecordEvent& e) {
       As<KwGotoSelectedLineEvent>(e).m_Direction = 3, As<KwGotoSelectedLineEvent>(e).m_InSelection = 1;
     }, L(u"EditGotoSelectedLine~3~1")},
};

TEST_F(RecordEventTest, EveryKindWritesItsTemplateAndReadsItBack) {
  for (const KindRow& row : kKinds) {
    SCOPED_TRACE(std::string(1, row.letter));
    auto written = AllocRecordEvent(row.letter);
    ASSERT_NE(written, nullptr);
    EXPECT_EQ(written->GetType(), row.letter);
    const std::u16string fresh = written->Format();
    row.fill(*written);
    EXPECT_EQ(written->Format(), row.line);
    EXPECT_NE(fresh, row.line);  // the row really sets fields away from their defaults

    // Through the factory: the right kind, and every field back in its place.
    auto read = ParseRecordEvent(row.line);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetType(), row.letter);
    EXPECT_EQ(read->Format(), row.line);

    // Through the kind itself, with a remark.
    written->SetRemark(u"from row");
    auto again = AllocRecordEvent(row.letter);
    EXPECT_EQ(again->Parse(written->Format()), 1);
    EXPECT_EQ(again->Format(), written->Format());
    EXPECT_EQ(again->GetRemark(), u"from row");
  }
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(RecordEventTest, NumbersAreReadWithTheLibraryReaders) {
  KwColCalcEvent c;
  c.m_RoundMode = 5;
  c.m_Insert = 5;
  EXPECT_EQ(c.Parse(L(u"EditColCalc~ 2~1.25~-3~T~ -41 ~50~#~1x~")), 1);
  EXPECT_EQ(c.m_Area, 2);
  EXPECT_DOUBLE_EQ(c.m_Min, 1.25);
  EXPECT_DOUBLE_EQ(c.m_Max, -3.0);
  EXPECT_EQ(c.m_FirstCol, -41);
  EXPECT_EQ(c.m_AngleUnit, 1);  // an invalid character is skipped, the digits count
  EXPECT_EQ(c.m_RoundMode, 0);  // empty field
  EXPECT_EQ(c.m_Insert, 0);     // missing field
}

TEST_F(RecordEventTest, FindAndReplaceOptionsMissingFromOlderLinesReadAsZero) {
  KwFindEvent find;
  for (int& o : find.m_Find.m_Options) o = 9;
  find.m_Find.m_MarkedOnly = 9;
  EXPECT_EQ(find.Parse(L(u"EditFind~abc~1~1$note")), 1);
  EXPECT_EQ(find.m_Text, u"abc");
  EXPECT_EQ(find.m_Find.m_Options[0], 1);
  EXPECT_EQ(find.m_Find.m_Options[1], 0);
  EXPECT_EQ(find.m_Find.m_MarkedOnly, 0);
  EXPECT_EQ(find.GetRemark(), u"note");

  // The literal "00" of the replace line is a field of its own, never read into a parameter.
  KwReplEvent repl;
  EXPECT_EQ(repl.Parse(L(u"EditRepl~x~0~y~77~1~1")), 1);
  EXPECT_EQ(repl.m_ReplText, u"y");
  EXPECT_EQ(repl.m_Find.m_Options[0], 1);
  EXPECT_EQ(repl.m_Find.m_Options[1], 1);
  EXPECT_EQ(repl.Format(), L(u"EditRepl~x~0~y~00~1~1~0~0~0~0~0~0"));
}

TEST_F(RecordEventTest, BinaryCharacterIsReadButNeverRecognised) {
  KwBCharEvent b;
  b.m_Code = 200;
  b.m_Encoding = 4;
  const std::u16string line = b.Format();
  EXPECT_EQ(line, L(u"EditBChar~200~4"));

  KwBCharEvent read;
  EXPECT_EQ(read.Parse(line + L(u"$r")), 0);
  EXPECT_EQ(read.m_Code, 200);
  EXPECT_EQ(read.m_Encoding, 4);
  EXPECT_EQ(read.GetRemark(), u"r");
  EXPECT_EQ(ParseRecordEvent(line), nullptr);
}

TEST_F(RecordEventTest, RemarksKeepNoBarAndEndAtCharacterThree) {
  KwXCharEvent e;
  EXPECT_EQ(e.SetRemark(u""), 0);
  EXPECT_EQ(e.Format(), L(u"EditXChar~0~1"));  // no separator for an empty remark
  EXPECT_EQ(e.SetRemark(u"yes|no|maybe"), 1);
  EXPECT_EQ(e.GetRemark(), u"yes!no!maybe");
  EXPECT_EQ(e.SetRemark(u"yes!no!maybe"), 0);
  EXPECT_EQ(e.SetRemark(u"yes|no|maybe"), 1);  // compared before the bars are replaced
  EXPECT_EQ(e.Format(), L(u"EditXChar~0~1$yes!no!maybe"));

  // The remark is what follows the first character 3, up to a second one; DEL inside it is text.
  auto r = ParseRecordEvent(L(u"EditXChar~65~2$a~b|c$tail"));
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->GetRemark(), L(u"a~b!c"));
  EXPECT_EQ(As<KwXCharEvent>(*r).m_Count, 2);

  e.SetRemark(L(u"first$second"));
  auto cut = ParseRecordEvent(e.Format());
  ASSERT_NE(cut, nullptr);
  EXPECT_EQ(cut->GetRemark(), u"first");
}

TEST_F(RecordEventTest, LinesOfNoKindParseToNull) {
  for (const char16_t* line : {u"EditFin~a~1", u"EditFindX~a~1", u"editfind~a~1", u"Nonsense", u"~EditFind~a",
                               u"EditXChar ~1~1", u"$EditXChar~1~1"}) {
    EXPECT_EQ(ParseRecordEvent(L(line)), nullptr);
  }
  EXPECT_EQ(ParseRecordEvent(u""), nullptr);
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(RecordEventTest, AllocAcceptsCodes81To102AndOnlyKnownLettersGiveEvents) {
  const std::string kinds = "QRSTUVWXYZ[]^_`ad";
  for (int code = 0; code < 256; ++code) {
    asserts_.Clear();
    auto e = AllocRecordEvent(code);
    const bool inRange = code >= 81 && code <= 102;
    EXPECT_EQ(asserts_.count(), inRange ? 0u : 1u) << code;
    if (inRange && kinds.find(static_cast<char>(code)) != std::string::npos) {
      ASSERT_NE(e, nullptr) << code;
      EXPECT_EQ(e->GetType(), static_cast<char>(code));
    } else {
      EXPECT_EQ(e, nullptr) << code;
    }
  }
  EXPECT_TRUE(asserts_.Fired("KwRecordEvent"));
}

// A kind whose type letter can be spoilt, as a faulty derived class might do.
class SpoiltXChar : public KwXCharEvent {
 public:
  void Spoil(char type) { m_Type = type; }
};

TEST_F(RecordEventTest, ParseOfAnotherKindChangesOnlyTheTypeLetter) {
  SpoiltXChar e;
  e.m_Code = 66;
  e.m_Count = 5;
  e.SetRemark(u"keep");
  EXPECT_EQ(e.Parse(L(u"EditFind~abc~1$other")), 0);
  EXPECT_EQ(e.m_Code, 66);
  EXPECT_EQ(e.m_Count, 5);
  EXPECT_EQ(e.GetRemark(), u"keep");
  EXPECT_EQ(asserts_.count(), 0u);

  e.Spoil('Q');
  EXPECT_EQ(e.Parse(L(u"EditFind~abc~1")), 0);
  EXPECT_EQ(asserts_.count(), 1u);  // the wrong letter is reported ...
  EXPECT_EQ(e.GetType(), 'T');      // ... and repaired, nothing else changes
  EXPECT_EQ(e.m_Code, 66);
  EXPECT_EQ(e.GetRemark(), u"keep");

  EXPECT_EQ(e.Parse(u""), 0);  // an empty line is an internal error
  EXPECT_EQ(asserts_.count(), 2u);
}

TEST_F(RecordEventTest, WrongTypeLettersAndTheBaseKindAreInternalErrors) {
  SpoiltXChar spoilt;
  spoilt.Spoil('S');
  EXPECT_EQ(spoilt.Format(), u"");
  EXPECT_EQ(asserts_.count(), 1u);
  SpoiltXChar target;
  EXPECT_EQ(spoilt.CopyTo(&target), 0);
  EXPECT_EQ(asserts_.count(), 2u);

  KwRecordEvent base;
  EXPECT_EQ(base.GetType(), 0);
  EXPECT_EQ(base.Format(), u"");
  EXPECT_EQ(base.ShowDialog(), 0);
  EXPECT_EQ(base.Parse(u""), 0);
  EXPECT_EQ(base.Parse(L(u"anything$note")), 1);
  EXPECT_EQ(base.GetRemark(), u"note");
  EXPECT_EQ(asserts_.count(), 4u);
  EXPECT_TRUE(asserts_.Fired("KwRecordEvent"));
}

TEST_F(RecordEventTest, CopyToCopiesEveryFieldOnlyWithinAKind) {
  KwColCalcEvent from;
  from.m_Term = u"[1-5]*2";
  from.m_Min = 0.5;
  from.m_LastCol = 12;
  from.m_Insert = 1;
  from.SetRemark(u"double it");
  from.SetBaseFolder(u"/macros");
  KwColCalcEvent to;
  EXPECT_EQ(from.CopyTo(&to), 1);
  EXPECT_EQ(to.Format(), from.Format());
  EXPECT_EQ(to.GetRemark(), u"double it");
  EXPECT_EQ(to.GetBaseFolder(), u"/macros");

  KwColSumEvent other;  // another kind: refused, left alone
  other.m_Term = u"[1-2]";
  EXPECT_EQ(from.CopyTo(&other), 0);
  EXPECT_EQ(other.m_Term, u"[1-2]");
  EXPECT_EQ(other.GetRemark(), u"");
  EXPECT_EQ(from.CopyTo(nullptr), 0);
  EXPECT_EQ(asserts_.count(), 2u);
}

// An application's own kind with a main file, built on the same machinery.
class FileEvent : public KwTemplateEvent {
 public:
  FileEvent() : KwTemplateEvent('I', u"AppImport", u"AppImport%c%%s%c%%d") {}
  int m_Mode = 0;

 protected:
  void BindFields(KwEventFields& fields) override {
    fields.File(m_MainFile);
    fields.Int(m_Mode);
  }
};

TEST_F(RecordEventTest, MainFileIsKeptForTablesAndImportsAndWrittenRelativeToTheBaseFolder) {
  KwColWriteEvent write;
  write.SetMainFile(u"/x.tab");
  EXPECT_EQ(write.GetMainFile(), u"");

  struct Row {
    std::u16string base, file, written, readBase, read;
  };
  const Row rows[] = {
      {u"/macros", u"/macros/tables/t.tab", u"tables/t.tab", u"/other/", u"/other/tables/t.tab"},
      {u"/macros/", u"/macros/t.tab", u"t.tab", u"/macros", u"/macros/t.tab"},
      {u"C:\\Macros", u"C:/Macros\\t.tab", u"t.tab", u"D:\\M", u"D:\\M\\t.tab"},
      {u"/macros", u"/macrosX/t.tab", u"/macrosX/t.tab", u"/other", u"/macrosX/t.tab"},
      {u"/macros", u"/macros/", u"/macros/", u"/other", u"/macros/"},
      {u"", u"rel/t.tab", u"rel/t.tab", u"", u"rel/t.tab"},
      {u"/m", u"D:\\t.tab", u"D:\\t.tab", u"/n", u"D:\\t.tab"},
  };
  for (const Row& r : rows) {
    KwTableRepEvent t;
    t.SetBaseFolder(r.base);
    t.SetMainFile(r.file);
    EXPECT_EQ(t.GetMainFile(), r.file);
    const std::u16string line = t.Format();
    EXPECT_EQ(line, L(u"EditTableRep~" + r.written + u"~0~0~0~0~0~0"));
    auto read = ParseRecordEvent(line, r.readBase);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetMainFile(), r.read);
    EXPECT_EQ(read->GetBaseFolder(), r.readBase);
  }

  FileEvent app;
  app.SetBaseFolder(u"/proj");
  app.SetMainFile(u"/proj/in/points.txt");
  app.m_Mode = 2;
  EXPECT_EQ(app.Format(), L(u"AppImport~in/points.txt~2"));
  FileEvent back;
  back.SetBaseFolder(u"/proj");
  EXPECT_EQ(back.Parse(app.Format()), 1);
  EXPECT_EQ(back.GetMainFile(), u"/proj/in/points.txt");
  EXPECT_EQ(back.m_Mode, 2);
}

// Fields bound against the template: a text where the template wants a number.
class MisboundEvent : public KwTemplateEvent {
 public:
  MisboundEvent() : KwTemplateEvent('I', u"AppBad", u"AppBad%c%%d") {}
  std::u16string m_Text = u"x";

 protected:
  void BindFields(KwEventFields& fields) override { fields.Text(m_Text); }
};

TEST_F(RecordEventTest, FieldsThatDoNotFitTheTemplateAreAnInternalError) {
  MisboundEvent e;
  EXPECT_EQ(e.Format(), u"");
  EXPECT_EQ(asserts_.count(), 1u);
}

}  // namespace
