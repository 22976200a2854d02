// The number readers: values and error levels.
#include <gtest/gtest.h>

#include <string>

#include "base/Numbers.h"
#include "support/TestSupport.h"

namespace {

struct DoubleRow {
  const char16_t* text;
  int commaIsPoint;
  double value;
  int level;
};

TEST(GetDouble, ValuesAndErrorLevels) {
  const DoubleRow rows[] = {
      {u"", 0, 0.0, 1},        {u"   ", 0, 0.0, 1},      {u"1 2", 0, 12.0, 3},
      {u"1,5", 0, 15.0, 2},    {u"1,5", 1, 1.5, 0},      {u"--1", 0, -1.0, 2},
      {u"5-", 0, -5.0, 0},     {u"12-", 0, -12.0, 0},    {u"1.2.3", 0, 12.3, 0},
      {u"  -3.25 ", 0, -3.25, 0}, {u"+.5", 0, 0.5, 0},   {u".", 0, 0.0, 0},
      {u"12a3", 0, 123.0, 2},  {u"- 5", 0, -5.0, 3},     {u"7\t", 0, 7.0, 2},
      {u"1,2.5", 1, 12.5, 0},  {u"1 x2", 0, 12.0, 2},    {u"1 2x", 0, 12.0, 3},
  };
  for (const auto& row : rows) {
    int level = -1;
    EXPECT_DOUBLE_EQ(kw::GetDouble(row.text, 0, 0, row.commaIsPoint, &level), row.value)
        << std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text));
    EXPECT_EQ(level, row.level)
        << std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text));
  }
  EXPECT_DOUBLE_EQ(kw::GetDouble(u"2.5", 0, 0, 0), 2.5);  // the level pointer is optional
}

TEST(GetDouble, WindowIsLimitedByLengthAndZero) {
  int level = -1;
  EXPECT_DOUBLE_EQ(kw::GetDouble(u"ab123cd", 2, 3, 0, &level), 123.0);
  EXPECT_EQ(level, 0);
  EXPECT_DOUBLE_EQ(kw::GetDouble(u"xx45", 2, 100, 0, &level), 45.0);  // stops at the zero
  EXPECT_EQ(level, 0);
  const char16_t withZero[] = {u'1', u'2', 0, u'3', 0};
  EXPECT_DOUBLE_EQ(kw::GetDouble(withZero, 0, 4, 0, &level), 12.0);
}

using NumberReaderContract = kwtest::PlatformTest;

TEST_F(NumberReaderContract, NegativeStartOrLengthIsAContractFault) {
  int level = -1;
  EXPECT_DOUBLE_EQ(kw::GetDouble(u"12", -1, 0, 0, &level), 0.0);
  EXPECT_EQ(level, 2);
  EXPECT_EQ(asserts_.count(), 1u);
  EXPECT_EQ(asserts_.fired()[0].source, "Numbers");
  EXPECT_DOUBLE_EQ(kw::GetDouble(u"12", 0, -3, 0, &level), 12.0);  // read as len 0
  EXPECT_EQ(asserts_.count(), 2u);
  EXPECT_EQ(kw::GetInt(u"12", -2, 0, &level), 0);
  EXPECT_EQ(asserts_.count(), 3u);
}

TEST(GetDoubleExp, ExponentLettersAndCombinedLevel) {
  int level = -1;
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"1.5e3", 0, 0, 0, &level), 1500.0);
  EXPECT_EQ(level, 0);
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"2,5D-2  ", 0, 0, 1, &level), 0.025);
  EXPECT_EQ(level, 0);
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"4F1", 0, 0, 0, &level), 40.0);
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"42", 0, 0, 0, &level), 42.0);  // no letter: plain reading
  EXPECT_EQ(level, 0);
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"3e", 0, 0, 0, &level), 3.0);  // empty exponent
  EXPECT_EQ(level, 1);
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"e2", 0, 0, 0, &level), 0.0);  // empty mantissa
  EXPECT_EQ(level, 10);
  kw::GetDoubleExp(u"1x5e1 2", 0, 0, 0, &level);
  EXPECT_EQ(level, 23);
  // An explicit length ends the text before a later exponent.
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"12e5", 0, 2, 0, &level), 12.0);
  EXPECT_DOUBLE_EQ(kw::GetDoubleExp(u"xx7e2", 2, 3, 0, &level), 700.0);
}

TEST(GetInt, ValuesAndErrorLevels) {
  struct Row {
    const char16_t* text;
    int64_t value;
    int level;
  };
  const Row rows[] = {
      {u"12a3", 123, 1},
      {u"", 0, 2},
      {u"  ", 0, 2},
      {u"a", 0, 1},
      {u"-42", -42, 0},
      {u" +7 ", 7, 0},
      {u"12-", 12, 1},
      {u"--3", -3, 1},
      {u"1 2", 12, 3},
      {u"9223372036854775807", 0, 2},  // 2^63 - 1 rounds to 2^63 in double: out of range
      {u"-9007199254740992", -9007199254740992LL, 0},  // 2^53: still exact in double,
      {u"-100000000000000000000", 0, 2},
      {u"3.9", 39, 1},
  };
  for (const auto& row : rows) {
    int level = -1;
    EXPECT_EQ(kw::GetInt(row.text, 0, 0, &level), row.value)
        << std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text));
    EXPECT_EQ(level, row.level)
        << std::string(row.text, row.text + std::char_traits<char16_t>::length(row.text));
  }
  EXPECT_EQ(kw::GetInt(u"x123456", 1, 3), 123);
}

}  // namespace
