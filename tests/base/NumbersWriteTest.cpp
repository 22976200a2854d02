// The picture writers SetInt and SetDouble, and FormatDouble.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

#include "base/Numbers.h"

namespace {

std::string Narrow(const std::u16string& s) { return std::string(s.begin(), s.end()); }

struct IntRow {
  int64_t value;
  const char16_t* picture;
  const char16_t* expected;
  int result;
};

TEST(SetInt, PictureRules) {
  const IntRow rows[] = {
      {0, u"##", u" 0", 1},        // the rightmost "#" always takes a digit
      {0, u"**", u"0 ", 1},        // the rightmost "*" only while digits remain; "*" further left zero-fills
      {7, u"***#", u"0007", 1},
      {70, u"*", u"0", 0},         // one digit does not fit
      {-5, u"###", u" -5", 1},     // the sign goes into the nearest blanked position
      {-12, u"###", u"-12", 1},
      {-12, u"##", u"-2", 0},      // no blank: the leftmost digit position gives way to the sign
      {123, u"##", u"23", 0},      // too many digits
      {1234, u"#.###", u"1.234", 1},  // other characters are copied through
      {5, u"#*#", u" 05", 1},
      {-5, u"#,##", u" ,-5", 1},
      {INT64_MIN, u"####################", u"-9223372036854775808", 1},
  };
  for (const auto& row : rows) {
    std::u16string s = row.picture;
    EXPECT_EQ(kw::SetInt(row.value, s, 0, 0), row.result) << row.value << " " << Narrow(row.picture);
    EXPECT_EQ(s, row.expected) << row.value << " " << Narrow(row.picture);
  }
}

// A writer's result and the text afterwards.
template <class Fn>
std::pair<int, std::u16string> Wrote(std::u16string text, Fn fn) {
  const int r = fn(text);
  return {r, text};
}
using Written = std::pair<int, std::u16string>;

TEST(SetInt, LocatesThePictureInABuffer) {
  auto inBuffer = [](std::u16string s, int64_t value, int64_t start, int64_t len) {
    return Wrote(s, [&](std::u16string& t) { return kw::SetInt(value, t.data(), start, len); });
  };
  EXPECT_EQ(inBuffer(u"Sum: ####| ##", 42, -1, 0), Written(1, u"Sum:   42| ##"));  // first digit position on
  EXPECT_EQ(inBuffer(u"######", 5, 1, 3), Written(1, u"#  5##"));
  EXPECT_EQ(inBuffer(u"no picture", 5, -1, 0), Written(0, u"no picture"));
  auto inString = [](std::u16string s, int64_t value, int64_t start, int64_t len) {
    return Wrote(s, [&](std::u16string& t) { return kw::SetInt(value, t, start, len); });
  };
  EXPECT_EQ(inString(u"x##", 7, 1, 10), Written(1, u"x 7"));  // the string ends the picture
  EXPECT_EQ(inString(u"n=**", 3, -1, 0), Written(1, u"n=03"));
}

struct DoubleRow {
  double value;
  const char16_t* picture;
  const char16_t* expected;
  int result;
  int roundMode = 0;
};

TEST(SetDouble, DigitPositionAndSignRules) {
  const DoubleRow rows[] = {
      {3.14159, u"##.##", u" 3.14", 1},
      {0.5, u"#*.##", u"  .50", 1},    // "*" at the rightmost integral place: no "0" before the point
      {2.5, u"##.**", u" 2.5 ", 1},    // decimal "*" suppresses trailing zeros
      {2.05, u"##.**", u" 2.05", 1},   // ... but not an inner zero
      {2.0, u"##.**", u" 2.  ", 1},
      {0.0, u"*.**", u" .  ", 1},
      {0.0, u"###", u"  0", 1},
      {0.004, u"#.##", u"0.00", 1},
      {5.0, u"**.#", u"05.0", 1},      // an integral "*" left of the last place zero-fills
      {2.5, u"###,##", u"  2,50", 1},  // without a ".", the "," is the point
      {1234.5, u"#,###.#", u"1,234.5", 1},  // with a ".", the "," is an ordinary character
      {9.996, u"#.##", u"10.0", 1},  // rounding up into a new place shifts the picture
      {0.375, u"#.##", u"0.38", 1},  // 0.375 + 0.005 lands exactly on the next digit
      {1e17, u"##################", u"100000000000000000", 1},  // beyond 2^53
      // Negative values: the sign goes before the first digit written, or shifts the picture.
      {-3.14159, u"##.##", u"-3.14", 1},
      {-0.5, u"#*.##", u" -.50", 1},
      {-5.0, u"*#", u"-5", 1},         // nothing blanked: the sign takes the first digit position
      {-0.004, u"#.##", u"0.00", 1},   // rounds to zero: no sign
      {-0.005, u"#.##", u"-.01", 1},
      {-13.5, u"##.#", u"-14.", 1},    // the first position must stay free: shifted
      {-15.0, u"##", u"-1", 0},        // cannot shift: overflow
      {5.0, u"+#.##", u"+5.00", 1},    // "+" stays for a positive value
      {-0.001, u"+#.##", u" 0.00", 1},  // "+" became "-", and a leading "-0" loses its sign
      // More digit positions than the usual pictures have (their digits are held elsewhere).
      {-2.5, u"##########################################.**", u"                                        -2.5 ", 1},
  };
  for (const auto& row : rows) {
    std::u16string s = row.picture;
    EXPECT_EQ(kw::SetDouble(row.value, s, 0, 0, row.roundMode), row.result) << row.value << " " << Narrow(row.picture);
    EXPECT_EQ(s, row.expected) << row.value << " " << Narrow(row.picture);
  }
  std::u16string inner = u"A +#.##";  // "-0" after a blank further in
  EXPECT_EQ(kw::SetDouble(-0.001, inner, 0, 7, 0), 1);
  EXPECT_EQ(inner, u"A  0.00");
}


TEST(SetDouble, PictureShiftOverflowAndLocation) {
  auto write = [](std::u16string s, double value, int64_t start, int64_t len) {
    return Wrote(s, [&](std::u16string& t) { return kw::SetDouble(value, t, start, len, 0); });
  };
  EXPECT_EQ(write(u"##.#", 123.4, 0, 0), Written(1, u"123."));     // the picture became "###."
  EXPECT_EQ(write(u"##.##", 1234.5, 0, 0), Written(1, u"1235."));  // two shifts: "####."
  EXPECT_EQ(write(u"##.##", 12345.6, 0, 0), Written(0, u"1234."));  // no decimal left to give up
  EXPECT_EQ(write(u"##", 100.0, 0, 0), Written(0, u"10"));          // no point: written anyway, value / 10
  EXPECT_EQ(write(u"##.# |", 123.4, 0, 5), Written(1, u"123. |"));  // trailing blanks stay where they are
  EXPECT_EQ(write(u"#.#", std::numeric_limits<double>::quiet_NaN(), 0, 0), Written(0, u" . "));
  auto inBuffer = [](std::u16string s, double value, int64_t start, int64_t len) {
    return Wrote(s, [&](std::u16string& t) { return kw::SetDouble(value, t.data(), start, len, 0); });
  };
  EXPECT_EQ(inBuffer(u"[##.#]", 99.96, 1, 4), Written(1, u"[100.]"));  // the buffer keeps the shifted picture
  EXPECT_EQ(inBuffer(u"Total: ##.## EUR", 3.14159, -1, 0), Written(1, u"Total:  3.14 EUR"));
  EXPECT_EQ(inBuffer(u"none", 1.0, -1, 0), Written(0, u"none"));
}

TEST(SetDouble, RoundModes) {
  const DoubleRow rows[] = {
      {2.5, u"#", u"3", 1, kw::kRoundHalfUp},
      {2.5, u"#", u"2", 1, kw::kRoundHalfEven},
      {3.5, u"#", u"4", 1, kw::kRoundHalfEven},
      {2.51, u"#", u"3", 1, kw::kRoundHalfEven},  // above the tie
      {0.125, u"#.##", u"0.13", 1, kw::kRoundHalfUp},
      {0.125, u"#.##", u"0.12", 1, kw::kRoundHalfEven},
      {0.375, u"#.##", u"0.38", 1, kw::kRoundHalfEven},
      {-2.5, u"##", u"-2", 1, kw::kRoundHalfEven},
      {2.99, u"#.#", u"2.9", 1, kw::kRoundTruncate},
      {0.29, u"#.##", u"0.29", 1, kw::kRoundTruncate},  // 0.28999... keeps its last digit
      {-7.99, u"##", u"-7", 1, kw::kRoundTruncate},
      {2.5, u"#", u"3", 1, 7},  // unknown modes round half up
  };
  for (const auto& row : rows) {
    std::u16string s = row.picture;
    EXPECT_EQ(kw::SetDouble(row.value, s, 0, 0, row.roundMode), row.result)
        << row.value << " mode " << row.roundMode;
    EXPECT_EQ(s, row.expected) << row.value << " mode " << row.roundMode;
  }
}

TEST(FormatDouble, WidthAndTrimModes) {
  EXPECT_EQ(kw::FormatDouble(2.0, 3, 0, 0), u"2.000");
  EXPECT_EQ(kw::FormatDouble(2.0, 3, 0, 1), u"2");
  EXPECT_EQ(kw::FormatDouble(2.0, 3, 0, 3), u"2.0");
  EXPECT_EQ(kw::FormatDouble(2.0, 3, 0, 2), u"2.");
  EXPECT_EQ(kw::FormatDouble(10.0, 2, 0, 1), u"10");  // zeros before the point stay
  EXPECT_EQ(kw::FormatDouble(2.25, 3, 0, 1), u"2.25");
  EXPECT_EQ(kw::FormatDouble(2.5, 2, 7, 0), u"   2.50");
  EXPECT_EQ(kw::FormatDouble(-12.5, 1, 3, 0), u"-12.5");  // never cut to the width
  EXPECT_EQ(kw::FormatDouble(100.0, 0, 0, 1), u"100");   // no decimals: nothing trimmed
}

TEST(Round, HalfAwayFromZero) {
  EXPECT_EQ(kw::Round(2.5, 0), 3.0);
  EXPECT_EQ(kw::Round(-2.5, 0), -3.0);
  EXPECT_EQ(kw::Round(1.25, 1), 1.3);
  EXPECT_EQ(kw::Round(-1.25, 1), -1.3);
  EXPECT_EQ(kw::Round(123.456, -2), 123.0);
  EXPECT_EQ(kw::Round(0.4999, 0), 0.0);
  EXPECT_DOUBLE_EQ(kw::Round(3.14159, 3), 3.142);
}

TEST(InvalidDouble, OnlyTheMarkerIsInvalid) {
  const double invalid = kw::InvalidDouble();
  uint64_t bits;
  std::memcpy(&bits, &invalid, sizeof bits);
  EXPECT_EQ(bits, 0x54B249AD2594C37Dull);
  EXPECT_EQ(kw::IsValidDouble(invalid), 0);
  EXPECT_EQ(kw::IsValidDouble(std::numeric_limits<double>::quiet_NaN()), 1);
  EXPECT_EQ(kw::IsValidDouble(std::nextafter(1e100, 0.0)), 1);
  EXPECT_EQ(kw::IsValidDouble(0.0), 1);
}

}  // namespace
