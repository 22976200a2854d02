#include "terms/KwMathTerm.h"

#include <cmath>
#include <cstring>
#include <random>

#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/Format.h"
#include "support/TestSupport.h"
#include "terms/TermTestSupport.h"

namespace {

using kw::KwMathTerm;

class MathTermTest : public kwtest::PlatformTest {
 protected:
  // Compiles with messages on and evaluates over `line`; fails the test when the term does not compile.
  double Eval(const std::u16string& term, const char16_t* line = u"", const int64_t* values = nullptr,
              int* invalid = nullptr) {
    KwMathTerm t;
    EXPECT_EQ(t.SetTerm(term, 0, 1), 1) << kw::ToUtf8(term);
    return t.CalculateResult(line, values, invalid, 1, 0);
  }
};

struct Row {
  const char16_t* term;
  const char16_t* line;
  double expected;
};

TEST_F(MathTermTest, EvaluatesWithPrecedenceAssociativityAndSpellings) {
  const Row rows[] = {
      {u"=2*[1-3];", u"012", 24},       {u"2 * [ 1 - 3 ]", u"012", 24},  {u"2+3*4", u"", 14},
      {u"(2+3)*4", u"", 20},            {u"2^3^2", u"", 64},             {u"10-4-3", u"", 3},
      {u"24/4/2", u"", 3},              {u"2*3^2", u"", 18},             {u"2*(-3)", u"", -6},
      {u"-3+5", u"", 2},                {u"-(2+3)*2", u"", -10},         {u"((((7))))", u"", 7},
      {u"-2^2", u"", 4},                {u"-SIN(1)^2", u"", std::pow(std::sin(1.0), 2)},  // the sign binds first
      {u"7%(-3)", u"", 1},              {u"-7%3", u"", 2},               {u"5%0", u"", 5},
      {u"-6%3", u"", 0},                {u"7.5%2", u"", 1.5},            {u"3,5+1", u"", 4.5},
      {u"6:4", u"", 1.5},               {u"2**3", u"", 8},               {u"{1+2}*3", u"", 9},
      {u"1E3+1", u"", 1001},            {u"2.5e-1*4", u"", 1},           {u"sqrt(16)", u"", 4},
      {u"SQR(2)^2", u"", 2},            {u"ABS(-3)+INT(-2.7)", u"", 1},  {u"INTEGER(2.9)", u"", 2},
      {u"LOG(EXP(2))", u"", 2},         {u"[1]+[2-3]*[4-6]", u"12 3100", 621},
      {u"[2-4]", u"x-12y", -12},        {u"[1-4]", u"1,25", 1.25},       {u"GMS(10.5)", u"", 10.3},
      {u"GDD(10.3)", u"", 10.5},  // sexagesimal angles packed as degrees.minutesseconds
  };
  for (const Row& r : rows) EXPECT_NEAR(Eval(r.term, r.line), r.expected, 1e-9) << kw::ToUtf8(r.term);
  EXPECT_TRUE(platform_.boxes.empty());
  EXPECT_EQ(asserts_.count(), 0u);
}

struct Bad {
  std::u16string term;
  uint32_t id;
  uint32_t picture;
  int beeps;
  int keepBraces = 0;
};

std::u16string Many(const std::u16string& item, int count) {
  std::u16string s = item;
  for (int i = 1; i < count; ++i) s += u"+" + item;
  return s;
}

TEST_F(MathTermTest, BadTermsFailWithTheirMessageAndStayInvalid) {
  const Bad rows[] = {
      {u"", 2160, 1085, 0},           {u" \t ", 2160, 1085, 0},       {u"(1+2", 2161, 1085, 0},
      {u"1+2)", 2162, 1085, 0},       {u"[1+2", 2163, 1085, 0},       {u"1]+2", 2164, 1085, 0},
      {Many(u"1", 27), 2166, 1105, 1}, {Many(u"[1]", 27), 2167, 1105, 1}, {u"FOO(1)", 2168, 1085, 0},
      {u"1<2", 2168, 1085, 0},        {u"1|2", 2168, 1085, 0},        {u"{1}", 2168, 1085, 0, 1},
      {u"]1[", 2168, 1085, 0},        {u"2*-3", 2171, 1085, 1},       {u"7%-3", 2171, 1085, 1},
      {u"()", 2171, 1085, 1},         {u"--3", 2171, 1085, 1},        {u"SIN", 2171, 1085, 1},
      {u"[1][2]", 2169, 1085, 1},     {u"2(3)", 2169, 1085, 1},       {u"[1](+[2])", 2169, 1085, 1},
      {u"[3-1]", 2170, 1085, 0},      {u"[0-5]", 2170, 1085, 0},      {u"[1-]", 2170, 1085, 0},
      {u"[-1]", 2170, 1085, 0},       {u"[1,5]", 2179, 1105, 1},      {u"[1.5]", 2179, 1105, 1},
      {u"[1-2.3]", 2178, 1105, 1},     {u")1+2(", 2169, 1085, 1},  // only the bracket totals are checked
  };
  for (const Bad& r : rows) {
    SCOPED_TRACE(kw::ToUtf8(r.term));
    platform_.boxes.clear();
    platform_.beeps.clear();
    KwMathTerm t;
    ASSERT_EQ(t.SetTerm(u"1", 0, 0), 1);  // a failure must also clear an earlier success
    EXPECT_EQ(t.SetTerm(r.term, r.keepBraces, 1), 0);
    EXPECT_FALSE(t.IsValid());
    EXPECT_TRUE(kwtest::OneBox(platform_, kwtest::TermMessage(r.id, r.term), r.picture, 2160));
    EXPECT_EQ(static_cast<int>(platform_.beeps.size()), r.beeps);
    // Silent compilation fails the same way without a box.
    EXPECT_EQ(t.SetTerm(r.term, r.keepBraces, 0), 0);
    EXPECT_EQ(platform_.boxes.size(), 1u);
    asserts_.Clear();
    EXPECT_EQ(t.GetMinLineLen(), 0);
    EXPECT_EQ(t.CalculateResult(u"12345", nullptr, nullptr, 0, 0), 0.0);
    EXPECT_GE(asserts_.count(), 2u);  // queries on an invalid term are broken contracts
  }
}

TEST_F(MathTermTest, TwentySixConstantsAndReferencesAreTheLimit) {
  KwMathTerm t;
  EXPECT_EQ(t.SetTerm(Many(u"1", 26), 0, 0), 1);
  EXPECT_EQ(t.CalculateResult(u"", nullptr, nullptr, 0, 0), 26);
  EXPECT_EQ(t.SetTerm(Many(u"[2]", 26), 0, 0), 1);
  EXPECT_EQ(t.CalculateResult(u"13", nullptr, nullptr, 0, 0), 78);
}

TEST_F(MathTermTest, LineVariablesComeFromTheCallerValues) {
  const int64_t values[5] = {7, 30, 1, 0, 9};
  KwMathTerm t;
  ASSERT_EQ(t.SetTerm(u"[ln]*1000+[ZL]*10+[LM]+[ZS]+[MZ]*100", 0, 1), 1);
  EXPECT_EQ(t.NeedLineNo(), 1);
  EXPECT_EQ(t.NeedLineLen(), 1);
  EXPECT_EQ(t.NeedMarkLin(), 1);
  EXPECT_EQ(t.NeedSelLin(), 1);
  EXPECT_EQ(t.GetMinLineLen(), 0);
  EXPECT_EQ(t.CalculateResult(u"", values, nullptr, 1, 0), 7000 + 300 + 1 + 0 + 900);
  EXPECT_EQ(t.CalculateResult(nullptr, values, nullptr, 1, 0), 8201);  // no column read: no line needed

  // A needed value out of range is a broken contract.
  const int64_t noLine[5] = {0, 30, 1, 0, 9};
  int invalid = 0;
  EXPECT_EQ(t.CalculateResult(u"", noLine, &invalid, 1, 0), 0.0);
  EXPECT_TRUE(asserts_.Fired("KwMathTerm"));
  EXPECT_EQ(invalid, 1);
  asserts_.Clear();
  EXPECT_EQ(t.CalculateResult(u"", nullptr, nullptr, 1, 0), 0.0);
  EXPECT_EQ(asserts_.count(), 1u);

  // "[0]" reads the line number without asking for it; only the named variables set a needs flag.
  ASSERT_EQ(t.SetTerm(u"[0]+[LL]", 0, 1), 1);
  EXPECT_EQ(t.NeedLineNo(), 0);
  EXPECT_EQ(t.NeedLineLen(), 1);
  EXPECT_EQ(t.CalculateResult(u"", values, nullptr, 1, 0), 37);
}

TEST_F(MathTermTest, AngleUnitsAndForcedGon) {
  KwMathTerm t;
  EXPECT_EQ(t.GetAngleUnit(), kw::kTermRadians);
  ASSERT_EQ(t.SetTerm(u"COS(200)", 0, 1), 1);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 0), std::cos(200.0), 1e-12);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 1), -1.0, 1e-12);
  t.SetAngleUnit(kw::kTermGon);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 0), -1.0, 1e-12);
  t.SetAngleUnit(kw::kTermDegrees);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 0), std::cos(200.0 / 57.29577951308232), 1e-12);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 1), -1.0, 1e-12);  // forced gon wins
  ASSERT_EQ(t.SetTerm(u"ATAN(1)+ASIN(1)+ACOS(1)+SIN(30)+TAN(45)", 0, 1), 1);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 0), 45 + 90 + 0 + 0.5 + 1, 1e-9);
  EXPECT_NEAR(t.CalculateResult(u"", nullptr, nullptr, 1, 1), 50 + 100 + 0 + std::sin(30 / 63.66197723675813) + std::tan(45 / 63.66197723675813),
              1e-9);
  t.SetAngleUnit(3);
  EXPECT_TRUE(asserts_.Fired("KwTerm"));
  EXPECT_EQ(t.GetAngleUnit(), kw::kTermDegrees);
}

TEST_F(MathTermTest, InvalidResultsBecomeZeroWithMessage2174) {
  KwMathTerm t;
  for (const char16_t* term : {u"1/0", u"LOG(0)", u"SQRT(-1)", u"[1]/[2]"}) {
    SCOPED_TRACE(kw::ToUtf8(term));
    platform_.boxes.clear();
    ASSERT_EQ(t.SetTerm(term, 0, 1), 1);
    int invalid = 0;
    EXPECT_EQ(t.CalculateResult(u"50", nullptr, &invalid, 1, 0), 0.0);
    EXPECT_EQ(invalid, 1);
    EXPECT_TRUE(kwtest::OneBox(platform_, kw::LoadString(2174), 1090, 2160));
    EXPECT_EQ(t.CalculateResult(u"50", nullptr, &invalid, 0, 0), 0.0);  // silent
    EXPECT_EQ(platform_.boxes.size(), 1u);
    EXPECT_EQ(t.CalculateResult(u"50", nullptr, nullptr, 0, 0), 0.0);  // no flag pointer
  }
  ASSERT_EQ(t.SetTerm(u"1/4", 0, 1), 1);
  int invalid = 1;
  EXPECT_EQ(t.CalculateResult(u"", nullptr, &invalid, 1, 0), 0.25);
  EXPECT_EQ(invalid, 0);
}

TEST_F(MathTermTest, RowReferencesGoThroughTheArrayForm) {
  KwMathTerm t;
  ASSERT_EQ(t.SetTerm(u"[-1.1-5]+[a3.2-4]*[7-8]", 0, 1), 1);
  EXPECT_EQ(t.HasDifferentRow(), 1);
  EXPECT_EQ(t.GetMinLineLen(), 8);
  EXPECT_EQ(t.GetMaxWidth(), 5);
  int64_t firsts[26], lasts[26], offsets[26], rows[26];
  ASSERT_EQ(t.GetTextNumberAreas(firsts, lasts, offsets, rows), 3);
  EXPECT_EQ((std::vector<int64_t>{firsts[0], lasts[0], offsets[0], rows[0]}), (std::vector<int64_t>{1, 5, -1, 0}));
  EXPECT_EQ((std::vector<int64_t>{firsts[1], lasts[1], offsets[1], rows[1]}), (std::vector<int64_t>{2, 4, 0, 3}));
  EXPECT_EQ((std::vector<int64_t>{firsts[2], lasts[2], offsets[2], rows[2]}), (std::vector<int64_t>{7, 8, 0, 0}));
  EXPECT_EQ(t.CalculateResult(std::vector<std::u16string>{u"  100", u" 20", u"3"}, nullptr, nullptr, 1, 0), 160);
  EXPECT_EQ(asserts_.count(), 0u);
  EXPECT_EQ(t.CalculateResult(u"12345678", nullptr, nullptr, 1, 0), 0.0);  // the line form refuses
  EXPECT_EQ(asserts_.count(), 1u);
  EXPECT_EQ(t.CalculateResult(std::vector<std::u16string>{u"1"}, nullptr, nullptr, 1, 0), 0.0);  // too few fields
  EXPECT_EQ(asserts_.count(), 2u);

  ASSERT_EQ(t.SetTerm(u"[A0.1-2]", 0, 1), 1);  // absolute rows below 1 mean none
  EXPECT_EQ(t.HasDifferentRow(), 0);
  ASSERT_EQ(t.SetTerm(u"[0.1-2]", 0, 1), 1);
  EXPECT_EQ(t.HasDifferentRow(), 0);
}

TEST_F(MathTermTest, LineFormRefusesShortLines) {
  KwMathTerm t;
  ASSERT_EQ(t.SetTerm(u"[3-6]", 0, 1), 1);
  EXPECT_EQ(t.GetMinLineLen(), 6);
  EXPECT_EQ(t.CalculateResult(u"xx1234", nullptr, nullptr, 1, 0), 1234);
  EXPECT_EQ(t.CalculateResult(u"xx123", nullptr, nullptr, 1, 0), 0);
  EXPECT_EQ(t.CalculateResult(nullptr, nullptr, nullptr, 1, 0), 0);
  EXPECT_EQ(asserts_.count(), 2u);
}

// The line form reads the columns straight from the line; it must agree exactly with the array form
// given the same columns as texts.
TEST_F(MathTermTest, LineAndArrayFormsAgree) {
  std::mt19937 rng(12345);
  const char16_t alphabet[] = u"0123456789 .,-+x";
  const char16_t* terms[] = {u"[1-5]*2+[6-12]", u"[3]-[1-20]/[13-15]", u"SQRT(ABS([2-9]))%[10-11]",
                             u"[1-20]^[4]+[LN]", u"INT([5-14])*[15-20]-[18]"};
  const int64_t values[5] = {3, 20, 0, 0, 0};
  for (const char16_t* term : terms) {
    KwMathTerm t;
    ASSERT_EQ(t.SetTerm(term, 0, 1), 1);
    int64_t firsts[26], lasts[26], offsets[26], rows[26];
    const int64_t count = t.GetTextNumberAreas(firsts, lasts, offsets, rows);
    for (int n = 0; n < 2000; ++n) {
      std::u16string line;
      for (int i = 0; i < 20; ++i) line += alphabet[rng() % 16];
      const std::vector<std::u16string> fields = kwtest::FieldsOf(line, firsts, lasts, count);
      int bad1 = 0, bad2 = 0;
      const double a = t.CalculateResult(line.c_str(), values, &bad1, 0, 0);
      const double b = t.CalculateResult(fields, values, &bad2, 0, 0);
      ASSERT_EQ(std::memcmp(&a, &b, sizeof a), 0) << kw::ToUtf8(term) << " on " << kw::ToUtf8(line);
      ASSERT_EQ(bad1, bad2);
    }
  }
  EXPECT_EQ(asserts_.count(), 0u);
}

// Random texts over the term alphabet: compiling never crashes; a failure leaves the term invalid
// after one message; a success evaluates.
TEST_F(MathTermTest, RandomTermsNeverCrash) {
  std::mt19937 rng(2024);
  const std::u16string pieces[] = {u"1",  u"2.5", u"[1-3]", u"[2]", u"[LN]", u"[-1.1-2]", u"+",  u"-",
                                   u"*",  u"/",   u"^",     u"%",   u"(",    u")",        u"SIN", u"ABS",
                                   u"E",  u",",   u":",     u"**",  u"[",    u"]",        u"{",   u"=",
                                   u";",  u"|",   u"<",     u"X",   u" ",    u"[0-",      u".",   u"9E+2"};
  const int64_t values[5] = {1, 1, 1, 1, 1};
  KwMathTerm t;
  int compiled = 0;
  for (int n = 0; n < 5000; ++n) {
    std::u16string term;
    const int len = 1 + static_cast<int>(rng() % 12);
    for (int i = 0; i < len; ++i) term += pieces[rng() % std::size(pieces)];
    platform_.boxes.clear();
    const int ok = t.SetTerm(term, static_cast<int>(rng() % 2), 1);
    ASSERT_EQ(ok != 0, t.IsValid()) << kw::ToUtf8(term);
    if (!ok) {
      ASSERT_EQ(platform_.boxes.size(), 1u) << kw::ToUtf8(term);
      continue;
    }
    ++compiled;
    if (t.HasDifferentRow())
      t.CalculateResult(std::vector<std::u16string>(26, u"12"), values, nullptr, 0, 0);
    else
      t.CalculateResult(u"123456789", values, nullptr, 0, 0);
  }
  EXPECT_GT(compiled, 100);
  EXPECT_EQ(asserts_.count(), 0u);
}

}  // namespace
