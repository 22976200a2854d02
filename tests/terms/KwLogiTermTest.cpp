#include "terms/KwLogiTerm.h"

#include <random>

#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/Format.h"
#include "support/TestSupport.h"
#include "terms/TermTestSupport.h"

namespace {

using kw::KwLogiTerm;

class LogiTermTest : public kwtest::PlatformTest {
 protected:
  // Compiles with messages on (the test fails if it does not compile) and evaluates over `line`.
  int Holds(const std::u16string& term, const char16_t* line, const int64_t* values = nullptr) {
    KwLogiTerm t;
    EXPECT_EQ(t.SetTerm(term, 1), 1) << kw::ToUtf8(term);
    return t.CalculateResult(line, values, 1);
  }
  static std::u16string Compiled(const std::u16string& term) {
    KwLogiTerm t;
    EXPECT_EQ(t.SetTerm(term, 0), 1) << kw::ToUtf8(term);
    return t.GetCompiled();
  }
};

TEST_F(LogiTermTest, SpellingsOfRelationsAndConnectivesAreTheSame) {
  const char16_t* same[][2] = {
      {u"[1-3]=5", u"[1-3]==5"},  {u"[1-3]!=5", u"[1-3]#5"}, {u"[1]>=2", u"[1]=>2"}, {u"[1]<=2", u"[1]=<2"},
      {u"[1]=1 AND [2]=2", u"[1]=1&&[2]=2"},     {u"[1]=1 and [2]=2", u"[1]=1 ANDERS [2]=2"},
      {u"[1]=1 OR [2]=2", u"[1]=1||[2]=2"},      {u"[1]=1 ort [2]=2", u"[1]=1|[2]=2"},
      {u"NOT([1]=1)", u"NOTE([1]=1)"},           {u"=[1]=1;", u"[1]=1"}};
  for (const auto& pair : same) EXPECT_EQ(Compiled(pair[0]), Compiled(pair[1])) << kw::ToUtf8(pair[1]);
  EXPECT_EQ(Compiled(u"TAN([1])>0"), (std::u16string{u'A', 3, u'a', u'>'}));  // "TAN" holds no "AN" word
}

struct Case {
  const char16_t* term;
  const char16_t* line;
  int expected;
};

TEST_F(LogiTermTest, RelationsAgainstNumbersItemsAndTexts) {
  const Case cases[] = {
      // numbers and items compare as numbers, with a tolerance of 1e-12
      {u"[1-3]=5", u"  5", 1},            {u"[1-3]=5", u"005x", 1},        {u"[1-3]#5", u"  6", 1},
      {u"[1-3]>100", u"101", 1},           {u"[1-3]>100", u"100", 0},      {u"[1-3]>=100", u"100", 1},
      {u"[1-3]<=99", u"100", 0},           {u"[1-3]<100.5", u"100", 1},    {u"[1-2]=[3-4]", u"0505", 1},
      {u"[1-2]<[3-4]*2", u"0405", 1},      {u"[1]+[2]=[3]", u"347", 1},     {u"0.1+0.2=0.3", u"", 1},
      {u"3,5=7/2", u"", 1},                {u"-7%3=2", u"", 1},             {u"SQRT([1-2])=4", u"16", 1},
      // single quotes: literal, case-sensitive, searched in a longer field
      {u"[1-4]='AB'", u"xxAB", 1},         {u"[1-4]='ab'", u"xxAB", 0},     {u"[1]<'B'", u"A", 1},
      {u"[1-2]<'B'", u"AZ", 0},            {u"[1-2]#'B'", u"AZ", 1},        {u"[1]>'A'", u"B", 1},
      {u"[1]>='B'", u"B", 1},              {u"[1]<='A'", u"B", 0},          {u"'abc'<[1-3]", u"abd", 1},
      {u"'abc'>=[1-3]", u"abd", 0},        {u"[1-5]='a b'", u"xa bx", 1},   {u"[1-3]='a<#39>b'", u"a'b", 1},
      {u"[1]='<#65>'", u"A", 1},           {u"[1-3]$='B'", u"ABC", 1},      {u"[1-3]$#'B'", u"ABC", 0},
      {u"[5-9]='X'", u"abc", 0},           {u"[5-9]#'X'", u"abc", 1},
      // double quotes: case-blind patterns with * and ?
      {u"[1-10]=\"*abc*\"", u"xxABCxx", 1}, {u"[1-10]>\"*abc*\"", u"xxABCxx", 0},
      {u"[1-10]<\"a\"", u"a", 0},           {u"[1-10]#\"a?c\"", u"xxABCxx", 0},
      {u"[1-10]$=\"b*x\"", u"xxABCxx", 1},  {u"[1-10]$#\"q\"", u"xxABCxx", 1},
      {u"[1-3]=\"*\"", u"", 1},
      // item against item: one contains the other
      {u"[1-2]$=[3-6]", u"BCABCD", 1},     {u"[1-2]$#[3-6]", u"BCABCD", 0}, {u"[3-6]$=[1-2]", u"BCABCD", 1},
      {u"[1-2]$=[3-4]", u"ABAB", 1},       {u"[1-2]$=[3-4]", u"ABAC", 0},   {u"[1-2]$=[3-6]", u"bcABCD", 0},
      {u"[1-3]$=5", u"555", 0},
      // connectives: OR loosest, then AND; NOT on a bracketed relation
      {u"[1]=1 OR [2]=2 AND [3]=3", u"100", 1}, {u"([1]=1 OR [2]=2) AND [3]=3", u"100", 0},
      {u"NOT([1]=1)", u"1", 0},            {u"!([1]=1) | NOT([2]=2)", u"12", 0},
      {u"NOT(NOT([1]=1))&[2]='x'", u"1x", 1},
  };
  for (const Case& c : cases) EXPECT_EQ(Holds(c.term, c.line), c.expected) << kw::ToUtf8(c.term) << " on " << kw::ToUtf8(c.line);
  EXPECT_TRUE(platform_.boxes.empty());
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(LogiTermTest, TheTrialWidensItemsComparedWithLongerTexts) {
  int64_t firsts[26], lasts[26], offsets[26], rows[26];
  KwLogiTerm t;
  ASSERT_EQ(t.SetTerm(u"[5]='ABC' | [20]=\"A*C\" | [30-40]='XY' | 'QQ'=[50]", 1), 1);
  ASSERT_EQ(t.GetTextNumberAreas(firsts, lasts, offsets, rows), 4);
  EXPECT_EQ(lasts[0], 7);
  EXPECT_EQ(lasts[1], 20 + 3 - 1 + 10);  // a pattern with a star gets 10 more
  EXPECT_EQ(lasts[2], 40);               // wide enough already
  EXPECT_EQ(lasts[3], 51);               // a text on the left widens the item on the right
  EXPECT_EQ(t.CalculateResult(u"xxxxABCyy", nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(u"xxxxABDyy", nullptr, 1), 0);

  // Compiled silently the item keeps its one column, and one character never equals three.
  ASSERT_EQ(t.SetTerm(u"[5]='ABC'", 0), 1);
  ASSERT_EQ(t.GetTextNumberAreas(firsts, lasts, offsets, rows), 1);
  EXPECT_EQ(lasts[0], 5);
  EXPECT_EQ(t.CalculateResult(u"xxxxABCyy", nullptr, 1), 0);
  EXPECT_TRUE(platform_.boxes.empty());
}

TEST_F(LogiTermTest, NumbersAgainstTextsAreRefusedWithMessage2172) {
  KwLogiTerm t;
  ASSERT_EQ(t.SetTerm(u"[1]+1='A'", 1), 1);  // the trial already shows the message; compiling goes on
  EXPECT_TRUE(kwtest::OneBox(platform_, kw::LoadString(2172), 1085, 2170));
  EXPECT_EQ(platform_.beeps.size(), 1u);
  EXPECT_EQ(t.CalculateResult(u"A", nullptr, 1), 0);
  EXPECT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(t.CalculateResult(u"A", nullptr, 0), 0);  // silent: the item rule says no
  EXPECT_EQ(platform_.boxes.size(), 2u);
  ASSERT_EQ(t.SetTerm(u"5#'A'", 0), 1);
  EXPECT_EQ(t.CalculateResult(u"", nullptr, 0), 0);
  EXPECT_EQ(platform_.boxes.size(), 2u);
}

struct Bad {
  std::u16string term;
  uint32_t id;
  uint32_t picture;
  int beeps;
};

std::u16string Ors(const std::u16string& relation, int count) {
  std::u16string s = relation;
  for (int i = 1; i < count; ++i) s += u"|" + relation;
  return s;
}

TEST_F(LogiTermTest, BadTermsFailWithTheirMessageAndStayInvalid) {
  const Bad rows[] = {
      {u"(1=1", 2161, 1085, 0},              {u"1=1)", 2162, 1085, 0},        {u"[1=1", 2163, 1085, 0},
      {u"1]=1", 2164, 1085, 0},              {u"[1]='abc", 2165, 1085, 0},    {u"[1]=\"x'", 2165, 1085, 0},
      {Ors(u"1=1", 14), 2166, 1105, 1},      {Ors(u"[1]=[2]", 14), 2167, 1105, 1},
      {u"FOO([1])=1", 2168, 1085, 0},        {u"[1]=@", 2168, 1085, 0},       {u"[1]$5", 2168, 1085, 0},
      {u"]1[=1", 2168, 1085, 0},             {u"[1]=1 [2]=2", 2169, 1085, 1}, {u"5", 2169, 1085, 1},
      {u"[1]=1&", 2171, 1085, 1},            {u"[1]=1 & [2]", 2169, 1085, 1}, {u"NOT [1]=1", 2169, 1085, 1},
      {u"[1]=2*-3", 2171, 1085, 1},          {u"[3-1]=1", 2170, 1085, 0},     {u"[-2-5]=1", 2170, 1085, 0},
      {u"[1,5]=1", 2179, 1105, 1},           {u"[1-2.3]=1", 2178, 1105, 1},   {u"[1]=1|[2]=\"a|b\"+", 2171, 1085, 1},
  };
  for (const Bad& r : rows) {
    SCOPED_TRACE(kw::ToUtf8(r.term));
    platform_.boxes.clear();
    platform_.beeps.clear();
    KwLogiTerm t;
    ASSERT_EQ(t.SetTerm(u"[1]=1", 0), 1);
    EXPECT_EQ(t.SetTerm(r.term, 1), 0);
    EXPECT_FALSE(t.IsValid());
    EXPECT_TRUE(kwtest::OneBox(platform_, kwtest::TermMessage(r.id, r.term), r.picture, 2170));
    EXPECT_EQ(static_cast<int>(platform_.beeps.size()), r.beeps);
    EXPECT_EQ(t.SetTerm(r.term, 0), 0);
    EXPECT_EQ(platform_.boxes.size(), 1u);
    asserts_.Clear();
    EXPECT_EQ(t.CalculateResult(u"11111", nullptr, 0), 0);
    EXPECT_EQ(asserts_.count(), 1u);
  }
  // An empty term is reported even when messages are off.
  platform_.boxes.clear();
  KwLogiTerm t;
  EXPECT_EQ(t.SetTerm(u"  ", 0), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].text, kw::LoadString(2160));
}

// The connective words come from string 2175, so a translation changes them.
TEST_F(LogiTermTest, ConnectiveWordsFollowTheStringTable) {
  kw::SetString(2175, u"UNODNI");
  KwLogiTerm t;
  EXPECT_EQ(t.SetTerm(u"[1]=1 UND [2]=2 ODER (NICHT([3]=3))", 1), 1);
  EXPECT_EQ(t.CalculateResult(u"124", nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(u"104", nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(u"103", nullptr, 1), 0);
  EXPECT_EQ(t.SetTerm(u"[1]=1 AND [2]=2", 0), 0);  // "AND" is no word now: an unknown function
  kw::SetString(2175, u"");
  EXPECT_EQ(t.SetTerm(u"[1]=1 AND [2]=2", 0), 1);
  // Blanks go before words are read: "OR NOT(" is the one word "ORNOT", read as OR alone.
  EXPECT_EQ(Compiled(u"[1]=1 OR NOT([2]=2)"), Compiled(u"[1]=1 OR ([2]=2)"));
}

TEST_F(LogiTermTest, LineVariablesAndRowReferences) {
  const int64_t values[5] = {12, 40, 1, 0, 0};
  KwLogiTerm t;
  ASSERT_EQ(t.SetTerm(u"[LN]>10 AND [ZL]=40 AND [LM]=1", 1), 1);
  EXPECT_EQ(t.NeedLineNo(), 1);
  EXPECT_EQ(t.NeedLineLen(), 1);
  EXPECT_EQ(t.NeedMarkLin(), 1);
  EXPECT_EQ(t.CalculateResult(u"", values, 1), 1);
  EXPECT_EQ(t.CalculateResult(u"", nullptr, 1), 0);  // needed values missing
  EXPECT_EQ(asserts_.count(), 1u);

  ASSERT_EQ(t.SetTerm(u"[MZ]=0", 1), 1);  // the fifth value shares a needs flag without a query
  EXPECT_EQ(t.NeedLineNo() + t.NeedLineLen() + t.NeedMarkLin(), 0);
  EXPECT_EQ(t.CalculateResult(u"", values, 1), 1);
  EXPECT_EQ(t.CalculateResult(u"", nullptr, 1), 0);
  EXPECT_EQ(asserts_.count(), 2u);
  ASSERT_EQ(t.SetTerm(u"[0-5]=12", 1), 1);  // a first column of 0 is the line number: no range fault
  EXPECT_EQ(t.CalculateResult(u"", values, 1), 1);

  ASSERT_EQ(t.SetTerm(u"[-1.1-3]>[1-3] & [a2.1-1]='x'", 1), 1);
  EXPECT_EQ(t.HasDifferentRow(), 1);
  EXPECT_EQ(t.CalculateResult(std::vector<std::u16string>{u"200", u"100", u"x"}, nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(std::vector<std::u16string>{u"200", u"100", u"y"}, nullptr, 1), 0);
  EXPECT_EQ(t.CalculateResult(u"100", nullptr, 1), 0);
  EXPECT_EQ(asserts_.count(), 3u);
}

// Fields read straight from the line must give the same answers as the same texts given as fields.
TEST_F(LogiTermTest, LineLengthAndArrayFormsAgree) {
  std::mt19937 rng(777);
  const char16_t alphabet[] = u"0123456789 .AaBb-";
  const char16_t* terms[] = {u"[1-4]>500 AND [5-8]='Ab'", u"[2-6]$=[8-9] OR [1]<=\"a\"",
                             u"[1-3]+[4-6]*2>=[10-14] | [3]#'b'", u"NOT([1-12]=\"*b?a*\") & [7]>'A'",
                             u"[10-16]$#'0' AND [11]<5",
                             // One relation between a column and a constant takes a shorter way.
                             u"[3-5]='Ab'", u"'B'<[4]", u"\"*b?\"=[1-6]", u"[2-4]>=50", u"12.5>[1-4]",
                             u"[5-6]$#'0'", u"[6-8]#'-'", u"[3-4]='Ab'", u"'a'#[5]", u"[2-3]$='0.'"};
  for (const char16_t* term : terms) {
    KwLogiTerm t;
    ASSERT_EQ(t.SetTerm(term, 1), 1);
    int64_t firsts[26], lasts[26], offsets[26], rows[26];
    const int64_t count = t.GetTextNumberAreas(firsts, lasts, offsets, rows);
    int trues = 0;
    for (int n = 0; n < 3000; ++n) {
      std::u16string line;
      const int len = static_cast<int>(rng() % 18);
      for (int i = 0; i < len; ++i) line += alphabet[rng() % 17];
      const std::vector<std::u16string> fields = kwtest::FieldsOf(line, firsts, lasts, count);
      const int a = t.CalculateResult(line.c_str(), nullptr, 0);
      ASSERT_EQ(a, t.CalculateResult(fields, nullptr, 0)) << kw::ToUtf8(term) << " on " << kw::ToUtf8(line);
      // The form with a length reads nothing behind it (here the rest of a longer text).
      const std::u16string longer = line + u"Ab0b9.";
      ASSERT_EQ(a, t.CalculateResult(longer.data(), static_cast<int64_t>(line.size()), nullptr, 0))
          << kw::ToUtf8(term) << " on " << kw::ToUtf8(line);
      trues += a;
    }
    EXPECT_GT(trues, 0) << kw::ToUtf8(term);  // the lines exercise both answers
    EXPECT_LT(trues, 3000) << kw::ToUtf8(term);
  }
  EXPECT_EQ(asserts_.count(), 0u);
}

// Random terms, mostly well formed and then damaged at random: compiling never crashes, a failure
// leaves the term invalid after one message, a success evaluates.
TEST_F(LogiTermTest, RandomTermsNeverCrash) {
  std::mt19937 rng(99);
  const std::u16string operands[] = {u"1", u"[1-3]", u"[2]", u"[LN]", u"'ab'", u"\"a*\"", u"SIN([1])",
                                     u"([1]+2)", u"-3", u"[-1.1-2]", u"'<#9>'", u"[0-4]"};
  const std::u16string relations[] = {u"=", u"#", u"<", u">=", u"=<", u"$=", u"$#", u"!=", u"=="};
  const std::u16string connectives[] = {u" AND ", u" OR ", u"&", u"||"};
  const std::u16string pieces[] = {u"(", u")", u"'", u"\"", u"[", u"]", u"NOT", u"!", u"+", u"*", u",", u"-",
                                   u"X", u"%", u"{", u"=", u"1", u"[1]"};
  auto pick = [&rng](const auto& list) { return list[rng() % std::size(list)]; };
  auto relation = [&] { return pick(operands) + pick(relations) + pick(operands); };
  const int64_t values[5] = {1, 1, 1, 1, 1};
  KwLogiTerm t;
  int compiled = 0;
  for (int n = 0; n < 5000; ++n) {
    std::u16string term = relation();
    for (int i = static_cast<int>(rng() % 4); i > 0; --i)
      term += pick(connectives) + (rng() % 3 ? relation() : u"NOT(" + relation() + u")");
    for (int i = static_cast<int>(rng() % 3); i > 0; --i) {
      const size_t at = rng() % (term.size() + 1);
      if (rng() % 2) term.insert(at, pick(pieces));
      else if (at < term.size()) term.erase(at, 1);
    }
    platform_.boxes.clear();
    const int ok = t.SetTerm(term, 1);
    ASSERT_EQ(ok != 0, t.IsValid()) << kw::ToUtf8(term);
    if (!ok) {
      ASSERT_EQ(platform_.boxes.size(), 1u) << kw::ToUtf8(term);
      continue;
    }
    ++compiled;
    if (t.HasDifferentRow())
      t.CalculateResult(std::vector<std::u16string>(26, u"12"), values, 1);
    else
      t.CalculateResult(u"12ab", values, 1);
  }
  EXPECT_GT(compiled, 1000);
  EXPECT_EQ(asserts_.count(), 0u);
}

}  // namespace
