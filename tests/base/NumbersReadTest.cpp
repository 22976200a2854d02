// The number readers: values and error levels.
#include <gtest/gtest.h>

#include <string>

#include "base/CodePages.h"
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
        << kw::ToUtf8(row.text);
    EXPECT_EQ(level, row.level)
        << kw::ToUtf8(row.text);
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

// The level is the mantissa's level times ten plus the exponent's.
TEST(GetDoubleExp, ExponentLettersAndCombinedLevel) {
  constexpr int kAny = -999;  // a value or level the row does not check
  const struct {
    const char16_t* text;
    int64_t start, len;
    int commaIsPoint;
    double value;
    int level;
  } rows[] = {{u"1.5e3", 0, 0, 0, 1500.0, 0}, {u"2,5D-2  ", 0, 0, 1, 0.025, 0}, {u"4F1", 0, 0, 0, 40.0, kAny},
              {u"42", 0, 0, 0, 42.0, 0},      // no letter: plain reading
              {u"3e", 0, 0, 0, 3.0, 1},       // empty exponent
              {u"e2", 0, 0, 0, 0.0, 10},      // empty mantissa
              {u"1x5e1 2", 0, 0, 0, kAny, 23},
              {u"12e5", 0, 2, 0, 12.0, kAny},  // an explicit length ends the text before a later exponent
              {u"xx7e2", 2, 3, 0, 700.0, kAny}};
  for (const auto& row : rows) {
    int level = -1;
    const double value = kw::GetDoubleExp(row.text, row.start, row.len, row.commaIsPoint, &level);
    if (row.value != kAny) {
      EXPECT_DOUBLE_EQ(value, row.value) << kw::ToUtf8(row.text);
    }
    if (row.level != kAny) {
      EXPECT_EQ(level, row.level) << kw::ToUtf8(row.text);
    }
  }
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
        << kw::ToUtf8(row.text);
    EXPECT_EQ(level, row.level)
        << kw::ToUtf8(row.text);
  }
  EXPECT_EQ(kw::GetInt(u"x123456", 1, 3), 123);
}

}  // namespace
