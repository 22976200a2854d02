#include "terms/KwLogiTermEx.h"

#include <random>

#include "app/StringTable.h"
#include "base/CodePages.h"
#include "base/Format.h"
#include "support/TestSupport.h"

namespace {

using kw::KwLogiTermEx;
using kw::KwLogiTermPointSel;

class LogiTermExTest : public kwtest::PlatformTest {};

TEST_F(LogiTermExTest, ColumnsCountFromTheBlockAndStopAtItsEnd) {
  KwLogiTermEx t;
  ASSERT_EQ(t.SetTerm(u"[1-3]='abc' AND [4-5]>10", 1), 1);
  // No terminating zero: the characters after `length` must not be read.
  const std::u16string text = u"xxabc12yy99";
  EXPECT_EQ(t.CalculateResult(text.data(), 7, 3, 0, nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(text.data(), 6, 3, 0, nullptr, 1), 0);   // [4-5] is "1": not above 10
  EXPECT_EQ(t.CalculateResult(text.data(), 11, 3, 6, nullptr, 1), 0);  // the block ends before column 7
  EXPECT_EQ(t.CalculateResult(text.data(), 11, 3, 7, nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(text.data(), 11, 1, 0, nullptr, 1), 0);  // [1-3] is "xxa"
  EXPECT_EQ(t.CalculateResult(text.data(), 2, 5, 0, nullptr, 1), 0);   // the block starts after the line
  EXPECT_EQ(asserts_.count(), 0u);
  EXPECT_EQ(t.CalculateResult(text.data(), 7, 0, 0, nullptr, 1), 0);
  EXPECT_EQ(t.CalculateResult(nullptr, 7, 1, 0, nullptr, 1), 0);
  EXPECT_EQ(asserts_.count(), 2u);
  EXPECT_EQ(t.CalculateResult(u"xxabc12", nullptr, 1), 0);  // the base's line form still works
}

TEST_F(LogiTermExTest, WholeLineAgreesWithTheLineForm) {
  std::mt19937 rng(5);
  KwLogiTermEx t;
  ASSERT_EQ(t.SetTerm(u"[2-5]$='a' OR [6-9]>50 AND [1]#\"B*\"", 1), 1);
  for (int n = 0; n < 2000; ++n) {
    std::u16string line;
    for (int i = static_cast<int>(rng() % 12); i > 0; --i) line += u"0159aAbB "[rng() % 9];
    ASSERT_EQ(t.CalculateResult(line.data(), static_cast<int64_t>(line.size()), 1, 0, nullptr, 0),
              t.CalculateResult(line.c_str(), nullptr, 0))
        << kw::ToUtf8(line);
  }
}

TEST_F(LogiTermExTest, PointSelectionByPropertyNames) {
  KwLogiTermPointSel t;
  t.SetPropertyNames({u"Name", u" Code ", u"X", u"Y", u"H"});
  EXPECT_EQ(KwLogiTermPointSel::TrimName(u"  code\t"), u"CODE");
  ASSERT_EQ(t.SetTerm(u"[code]='TREE' AND [ h ]>100.5 OR [Name]=\"p1*\"", 1), 1);
  const std::vector<std::u16string> oak = {u"A7", u"OAKTREE", u"10", u"20", u"101"};
  const std::vector<std::u16string> low = {u"A7", u"OAKTREE", u"10", u"20", u"99"};
  const std::vector<std::u16string> named = {u"P17", u"ROCK", u"10", u"20", u"1"};
  EXPECT_EQ(t.CalculateResult(oak, nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult(low, nullptr, 1), 0);
  EXPECT_EQ(t.CalculateResult(named, nullptr, 1), 1);
  EXPECT_EQ(t.CalculateResult({u"P17"}, nullptr, 1), 1);  // missing properties are empty
  EXPECT_EQ(t.CalculateResult({}, nullptr, 1), 0);

  const int64_t values[5] = {4, 0, 0, 0, 0};
  ASSERT_EQ(t.SetTerm(u"[LN]=4 & [X]<[Y]", 1), 1);
  EXPECT_EQ(t.NeedLineNo(), 1);
  EXPECT_EQ(t.CalculateResult(oak, values, 1), 1);
  EXPECT_TRUE(platform_.boxes.empty());
}

TEST_F(LogiTermExTest, UnknownPropertiesFailWithMessage2180) {
  KwLogiTermPointSel t;
  t.SetPropertyNames({u"Name", u"Code"});
  ASSERT_EQ(t.SetTerm(u"[Name]='a'", 0), 1);
  for (const char16_t* term : {u"[code]='x' | [ z|1 ]=1", u"[1-3]=1", u"[-1.1-2]=1"}) {
    SCOPED_TRACE(kw::ToUtf8(term));
    platform_.boxes.clear();
    EXPECT_EQ(t.SetTerm(term, 1), 0);
    EXPECT_FALSE(t.IsValid());
    ASSERT_EQ(platform_.boxes.size(), 1u);
    EXPECT_EQ(platform_.boxes[0].helpId, 2170u);
    EXPECT_NE(platform_.boxes[0].text.find(u"is not defined."), std::u16string::npos);
  }
  EXPECT_EQ(platform_.boxes[0].text, kw::Format(kw::LoadString(2180), u"-1.1-2"));
  platform_.boxes.clear();
  EXPECT_EQ(t.SetTerm(u"[code]='x' | [ z|1 ]=1", 1), 0);
  EXPECT_EQ(platform_.boxes[0].text, kw::Format(kw::LoadString(2180), u"Z\u00A61"));
  // Other faults keep the base's messages, with the term as typed.
  platform_.boxes.clear();
  EXPECT_EQ(t.SetTerm(u"[code]='x' [name]='y'", 1), 0);
  ASSERT_EQ(platform_.boxes.size(), 1u);
  EXPECT_EQ(platform_.boxes[0].text, kw::Format(kw::LoadString(2169), u"[code]='x' [name]='y'"));
  asserts_.Clear();
  EXPECT_EQ(t.CalculateResult({u"a"}, nullptr, 1), 0);
  EXPECT_EQ(asserts_.count(), 1u);
}

}  // namespace
