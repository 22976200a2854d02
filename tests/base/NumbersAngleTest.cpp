// Angle and unit conversions, and the text helpers around numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/CodePages.h"
#include "base/Numbers.h"
#include "support/TestSupport.h"

namespace {

TEST(DecToHex, SexagesimalWithCarries) {
  EXPECT_NEAR(kw::DecToHex(10.5, 0, 4, 360), 10.3, 1e-12);
  EXPECT_NEAR(kw::DecToHex(-10.5, 0, 4, 360), -10.3, 1e-12);
  EXPECT_NEAR(kw::DecToHex(10.1, 0, 4, 360), 10.06, 1e-12);  // 5'59.99..." carries to 6'00"
  EXPECT_NEAR(kw::DecToHex(10.50001, 0, 6, 360), 10.300004, 1e-12);  // 0.036" rounded to 0.04"
  EXPECT_NEAR(kw::DecToHex(10.99999, 0, 4, 400), 11.0, 1e-12);  // seconds -> minutes -> degrees
  EXPECT_EQ(kw::DecToHex(359.99999, 0, 4, 360), 0.0);   // a carry onto the full circle wraps
  EXPECT_NEAR(kw::DecToHex(359.99999, 0, 4, 400), 360.0, 1e-12);
  EXPECT_NEAR(kw::DecToHex(100.0, 1, 4, 360), 90.0, 1e-12);  // gon in
  EXPECT_NEAR(kw::DecToHex(50.5, 1, 4, 360), 45.27, 1e-12);
}

TEST(DecToHex, MinutesOnlyForm) {
  EXPECT_NEAR(kw::DecToHex(10.5, 3, 4, 360), 10.30, 1e-12);
  EXPECT_NEAR(kw::DecToHex(10.2525, 3, 4, 360), 10.1515, 1e-12);  // 15.15 minutes
  EXPECT_NEAR(kw::DecToHex(10.999, 3, 2, 360), 11.0, 1e-12);      // 59.94' rounds to 60'
  EXPECT_EQ(kw::DecToHex(359.999, 3, 2, 360), 0.0);
}

using DecToHexContract = kwtest::PlatformTest;

TEST_F(DecToHexContract, FewerThanTwoDecimalsIsAContractFault) {
  EXPECT_NEAR(kw::DecToHex(10.5, 0, 1, 360), 10.3, 1e-12);  // goes on with 2
  EXPECT_EQ(asserts_.count(), 1u);
  EXPECT_EQ(kw::Round(1.5, 60), 1.5);
  EXPECT_EQ(asserts_.count(), 2u);
}

TEST(HexToDec, PackedToDecimalAndLimits) {
  const struct {
    double packed;
    int form;
    double value;
    int level;
  } rows[] = {{10.3, 0, 10.5, 0},   {-10.3, 0, -10.5, 0}, {10.3015, 0, 10.0 + 30.0 / 60 + 15.0 / 3600, 0},
              {10.6, 0, 11.0, 0},   // exactly 60 minutes is accepted
              {10.61, 0, 11.0 + 1.0 / 60, 1}, {10.0060, 0, 10.0 + 60.0 / 3600, 0},
              {10.0061, 0, 10.0 + 61.0 / 3600, 1},  // 61 seconds
              {10.0061, 3, 10.0 + 0.61 / 60, 0},    // the minutes-only form has no seconds
              {10.305, 3, 10.0 + 30.5 / 60, 0},    {90.0, 1, 100.0, 0}};  // gon out
  for (const auto& row : rows) {
    int e = -1;
    const double value = kw::HexToDec(row.packed, row.form, &e);
    if (row.level == 0) {
      EXPECT_NEAR(value, row.value, 1e-12) << row.packed << " form " << row.form;
    }
    EXPECT_EQ(e, row.level) << row.packed << " form " << row.form;
  }
  EXPECT_NEAR(kw::HexToDec(45.27, 1, nullptr), 50.5, 1e-12);
}

TEST(HexToDec, RoundTripsWithDecToHex) {
  for (double a : {0.0, 0.25, 1.0 / 3, 12.3456789, 89.999, 123.0001, 271.87654, 359.5}) {
    const double packed = kw::DecToHex(a, 0, 10, 360);
    EXPECT_NEAR(kw::HexToDec(packed, 0, nullptr), a, 1e-9) << a;
    const double minutes = kw::DecToHex(a, 3, 10, 360);
    EXPECT_NEAR(kw::HexToDec(minutes, 3, nullptr), a, 1e-9) << a;
    const double gon = a / 0.9;
    EXPECT_NEAR(kw::HexToDec(kw::DecToHex(gon, 1, 10, 360), 1, nullptr), gon, 1e-9) << a;
  }
}

TEST(AdaptCyclically, NearestMemberOfTheCycle) {
  const struct {
    double reference, value, cycle, tolerance, adapted;
    int result;
  } rows[] = {{10.0, 370.0, 360.0, 1e-9, 10.0, 0}, {0.0, 725.0, 360.0, 10.0, 5.0, 0}, {0.0, -355.0, 360.0, 10.0, 5.0, 0},
              {0.0, 5.0, 10.0, 1.0, 5.0, 1},       // a tie keeps the smaller step
              {0.0, -5.0, 10.0, 1.0, -5.0, 1},     {1e9 + 1.0, 3.0, 2.0, 0.5, 1e9 + 1.0, 0}};
  for (const auto& row : rows) {
    double v = row.value;
    EXPECT_EQ(kw::AdaptCyclically(row.reference, &v, row.cycle, row.tolerance), row.result) << row.value;
    EXPECT_EQ(v, row.adapted) << row.value;
  }
}

TEST(Units, FeetCelsiusAndTheirQuirks) {
  EXPECT_DOUBLE_EQ(kw::MeterToFeet(0.3048, 0), 1.0);
  EXPECT_NEAR(kw::MeterToFeet(1.0, 1), 3.280839895, 1e-9);
  EXPECT_NEAR(kw::MeterToFeet(3.7 * 0.3048, 2), 3.964, 1e-12);  // nearest foot, not truncated
  EXPECT_NEAR(kw::MeterToFeet(-3.7 * 0.3048, 2), -3.964, 1e-12);
  EXPECT_NEAR(kw::MeterToFeet(3.2 * 0.3048, 2), 3.024, 1e-12);
  EXPECT_NEAR(kw::GetCelsius(212.0), 100.0000072, 1e-9);  // the fixed constants, not 5/9
  EXPECT_NEAR(kw::GetCelsius(32.0), -0.0000008, 1e-12);
}

TEST(ArcTan, UnitsAndPositiveRange) {
  EXPECT_NEAR(kw::ArcTan(1, 1, kw::kAngleDegrees, 0), 45.0, 1e-6);
  EXPECT_NEAR(kw::ArcTan(-1, 0, kw::kAngleDegrees, 0), -90.0, 1e-6);
  EXPECT_NEAR(kw::ArcTan(-1, 0, kw::kAngleDegrees, 1), 270.0, 1e-6);
  EXPECT_NEAR(kw::ArcTan(0, -1, kw::kAngleGon, 1), 200.0, 1e-6);
  EXPECT_NEAR(kw::ArcTan(-1, 0, kw::kAngleGon, 1), 300.0, 1e-6);
  EXPECT_DOUBLE_EQ(kw::ArcTan(-1, 0, kw::kAngleRadians, 1), -M_PI / 2 + 6.283185306);
  EXPECT_DOUBLE_EQ(kw::ArcTan(-1, 0, 7, 0), -M_PI / 2);
  EXPECT_EQ(kw::ArcTan(1e-19, -1e-19, kw::kAngleDegrees, 1), 0.0);
}

TEST(GetAngle, QuadrantsWithTheTruncatedConstants) {
  EXPECT_EQ(kw::GetAngle(0, 0, 1, 0), 0.0);
  EXPECT_DOUBLE_EQ(kw::GetAngle(0, 0, 0, 1), M_PI / 2);
  EXPECT_EQ(kw::GetAngle(0, 0, -1, 0), 3.141592653);  // not M_PI
  EXPECT_DOUBLE_EQ(kw::GetAngle(1, 1, 0, 0), 3.141592653 + M_PI / 4);
  EXPECT_DOUBLE_EQ(kw::GetAngle(0, 0, 1, -1), 6.283185306 - M_PI / 4);
  EXPECT_DOUBLE_EQ(kw::GetAngle(0, 0, 0, -1), 6.283185306 - M_PI / 2);
  EXPECT_EQ(kw::GetAngle(1, 1, 1, 1 + 1e-9), 0.0);
}

TEST(ReformatHex, NormalisesPackedAngleText) {
  EXPECT_EQ(kw::ReformatHex(u"10.3", 0, 4), u"10.3000");
  EXPECT_EQ(kw::ReformatHex(u"10,0075", 0, 4), u"10.0115");  // 75 seconds
  EXPECT_EQ(kw::ReformatHex(u"10.75", 0, 4), u"11.1500");    // 75 minutes
  EXPECT_EQ(kw::ReformatHex(u"359.5960", 0, 4), u"360.0000");  // carried up to the full circle
  EXPECT_EQ(kw::ReformatHex(u"-10.0075", 0, 4), u"-10.0115");
  EXPECT_EQ(kw::ReformatHex(u"10.30155", 0, 4), u"10.3016");
  EXPECT_EQ(kw::ReformatHex(u"10.75", 3, 2), u"11.15");
  EXPECT_EQ(kw::ReformatHex(u"10.3", 0, 1), u"10.30");
  EXPECT_EQ(kw::ReformatHex(u"abc", 0, 4), u"");
  EXPECT_EQ(kw::ReformatHex(u"", 0, 4), u"");
}

// Text readers of the angle and number helpers: value and error level per form.
TEST(HexAndInclinationReaders, FormsAndLevels) {
  const struct {
    const char16_t* text;
    uint32_t value;
    int level;
  } hex[] = {{u"FF", 255u, 0}, {u" 0x1A2b ", 0x1A2Bu, 0}, {u"10h", 16u, 0}, {u"FFFFFFFF", 0xFFFFFFFFu, 0},
             {u"100000000", 0u, 3}, {u"0x", 0u, 1}, {u"12G", 0u, 2},
             {u"0x10h", 0u, 2}};  // prefix or suffix, not both
  for (const auto& row : hex) {
    int e = -1;
    EXPECT_EQ(kw::GetDWORDofHexString(row.text, &e), row.value) << kw::ToUtf8(row.text);
    EXPECT_EQ(e, row.level) << kw::ToUtf8(row.text);
  }
  const struct {
    const char16_t* text;
    double value;
    int level;
  } slopes[] = {{u"12%", 0.12, 0},        {u" 12 ", 0.12, 0},       {u"2,5 %", 0.025, 0},  {u"5\u2030", 0.005, 0},
                {u"1:50", 0.02, 0},       {u"45\u00B0", 1.0, 0},    {u"-45\u00B0", -1.0, 0}, {u"1:0", 0.0, 3},
                {u"90\u00B0", 0.0, 3},    {u"steep", 0.0, 2},       {u":5", 0.0, 2},       {u"  ", 0.0, 1}};
  for (const auto& row : slopes) {
    int e = -1;
    EXPECT_NEAR(kw::GetInclinationOfString(row.text, &e), row.value, 1e-12) << kw::ToUtf8(row.text);
    EXPECT_EQ(e, row.level) << kw::ToUtf8(row.text);
  }
  const struct {
    const char16_t* text;
    int kind, expected;
  } convert[] = {{u"12", kw::kConvertInt, 1},           {u"12a", kw::kConvertInt, 0},
                 {u"1,5", kw::kConvertDouble, 0},       {u"1,5", kw::kConvertDoubleComma, 1},
                 {u"1.5e3", kw::kConvertDoubleExp, 1},  {u"1.5e", kw::kConvertDoubleExp, 0},
                 {u"10.59", kw::kConvertPackedAngle, 1}, {u"10.61", kw::kConvertPackedAngle, 0},
                 {u"ff", kw::kConvertHex, 1},           {u"1:50", kw::kConvertInclination, 1},
                 {u"", kw::kConvertDouble, 0},          {u"12", 99, 0}};
  for (const auto& row : convert)
    EXPECT_EQ(kw::CanConvert(row.text, row.kind), row.expected) << kw::ToUtf8(row.text) << " kind " << row.kind;
}

}  // namespace
