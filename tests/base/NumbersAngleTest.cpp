// Angle and unit conversions, and the text helpers around numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

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
  int e = -1;
  EXPECT_NEAR(kw::HexToDec(10.3, 0, &e), 10.5, 1e-12);
  EXPECT_EQ(e, 0);
  EXPECT_NEAR(kw::HexToDec(-10.3, 0, &e), -10.5, 1e-12);
  EXPECT_NEAR(kw::HexToDec(10.3015, 0, &e), 10.0 + 30.0 / 60 + 15.0 / 3600, 1e-12);
  EXPECT_NEAR(kw::HexToDec(10.6, 0, &e), 11.0, 1e-12);
  EXPECT_EQ(e, 0);  // exactly 60 minutes is accepted
  kw::HexToDec(10.61, 0, &e);
  EXPECT_EQ(e, 1);
  kw::HexToDec(10.0060, 0, &e);
  EXPECT_EQ(e, 0);
  kw::HexToDec(10.0061, 0, &e);
  EXPECT_EQ(e, 1);  // 61 seconds
  kw::HexToDec(10.0061, 3, &e);
  EXPECT_EQ(e, 0);  // the minutes-only form has no seconds
  EXPECT_NEAR(kw::HexToDec(10.305, 3, &e), 10.0 + 30.5 / 60, 1e-12);
  EXPECT_NEAR(kw::HexToDec(90.0, 1, &e), 100.0, 1e-12);  // gon out
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
  double v = 370.0;
  EXPECT_EQ(kw::AdaptCyclically(10.0, &v, 360.0, 1e-9), 0);
  EXPECT_EQ(v, 10.0);
  v = 725.0;
  EXPECT_EQ(kw::AdaptCyclically(0.0, &v, 360.0, 10.0), 0);
  EXPECT_EQ(v, 5.0);
  v = -355.0;
  kw::AdaptCyclically(0.0, &v, 360.0, 10.0);
  EXPECT_EQ(v, 5.0);
  v = 5.0;  // a tie keeps the smaller step
  EXPECT_EQ(kw::AdaptCyclically(0.0, &v, 10.0, 1.0), 1);
  EXPECT_EQ(v, 5.0);
  v = -5.0;
  kw::AdaptCyclically(0.0, &v, 10.0, 1.0);
  EXPECT_EQ(v, -5.0);
  v = 3.0;
  EXPECT_EQ(kw::AdaptCyclically(1e9 + 1.0, &v, 2.0, 0.5), 0);
  EXPECT_EQ(v, 1e9 + 1.0);
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

TEST(GetDWORDofHexString, FormsAndLevels) {
  int e = -1;
  EXPECT_EQ(kw::GetDWORDofHexString(u"FF", &e), 255u);
  EXPECT_EQ(e, 0);
  EXPECT_EQ(kw::GetDWORDofHexString(u" 0x1A2b ", &e), 0x1A2Bu);
  EXPECT_EQ(kw::GetDWORDofHexString(u"10h", &e), 16u);
  EXPECT_EQ(kw::GetDWORDofHexString(u"FFFFFFFF", &e), 0xFFFFFFFFu);
  EXPECT_EQ(e, 0);
  EXPECT_EQ(kw::GetDWORDofHexString(u"100000000", &e), 0u);
  EXPECT_EQ(e, 3);
  EXPECT_EQ(kw::GetDWORDofHexString(u"0x", &e), 0u);
  EXPECT_EQ(e, 1);
  EXPECT_EQ(kw::GetDWORDofHexString(u"12G", &e), 0u);
  EXPECT_EQ(e, 2);
  EXPECT_EQ(kw::GetDWORDofHexString(u"0x10h", &e), 0u);  // prefix or suffix, not both
  EXPECT_EQ(e, 2);
}

TEST(GetInclinationOfString, FormsAndLevels) {
  int e = -1;
  EXPECT_DOUBLE_EQ(kw::GetInclinationOfString(u"12%", &e), 0.12);
  EXPECT_EQ(e, 0);
  EXPECT_DOUBLE_EQ(kw::GetInclinationOfString(u" 12 ", &e), 0.12);
  EXPECT_DOUBLE_EQ(kw::GetInclinationOfString(u"2,5 %", &e), 0.025);
  EXPECT_DOUBLE_EQ(kw::GetInclinationOfString(u"5\u2030", &e), 0.005);
  EXPECT_DOUBLE_EQ(kw::GetInclinationOfString(u"1:50", &e), 0.02);
  EXPECT_NEAR(kw::GetInclinationOfString(u"45\u00B0", &e), 1.0, 1e-12);
  EXPECT_NEAR(kw::GetInclinationOfString(u"-45\u00B0", &e), -1.0, 1e-12);
  EXPECT_EQ(kw::GetInclinationOfString(u"1:0", &e), 0.0);
  EXPECT_EQ(e, 3);
  EXPECT_EQ(kw::GetInclinationOfString(u"90\u00B0", &e), 0.0);
  EXPECT_EQ(e, 3);
  EXPECT_EQ(kw::GetInclinationOfString(u"steep", &e), 0.0);
  EXPECT_EQ(e, 2);
  EXPECT_EQ(kw::GetInclinationOfString(u":5", &e), 0.0);
  EXPECT_EQ(e, 2);
  EXPECT_EQ(kw::GetInclinationOfString(u"  ", &e), 0.0);
  EXPECT_EQ(e, 1);
}

TEST(CanConvert, EachKind) {
  EXPECT_EQ(kw::CanConvert(u"12", kw::kConvertInt), 1);
  EXPECT_EQ(kw::CanConvert(u"12a", kw::kConvertInt), 0);
  EXPECT_EQ(kw::CanConvert(u"1,5", kw::kConvertDouble), 0);
  EXPECT_EQ(kw::CanConvert(u"1,5", kw::kConvertDoubleComma), 1);
  EXPECT_EQ(kw::CanConvert(u"1.5e3", kw::kConvertDoubleExp), 1);
  EXPECT_EQ(kw::CanConvert(u"1.5e", kw::kConvertDoubleExp), 0);
  EXPECT_EQ(kw::CanConvert(u"10.59", kw::kConvertPackedAngle), 1);
  EXPECT_EQ(kw::CanConvert(u"10.61", kw::kConvertPackedAngle), 0);
  EXPECT_EQ(kw::CanConvert(u"ff", kw::kConvertHex), 1);
  EXPECT_EQ(kw::CanConvert(u"1:50", kw::kConvertInclination), 1);
  EXPECT_EQ(kw::CanConvert(u"", kw::kConvertDouble), 0);
  EXPECT_EQ(kw::CanConvert(u"12", 99), 0);
}

}  // namespace
