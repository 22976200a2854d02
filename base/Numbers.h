// Numbers in user text: strict readers that say why a text is not a number, writers that fill
// pictures in a caller's buffer, and the unit and angle conversions of the surveying side.
//
// Readers never fail: they return a value and report an error level through an optional pointer,
// because callers (column calculations, list cells, data-set fields) must tell an empty cell from a
// bad one. When several faults occur in one text, the first level set is the one reported.
//
// A picture is a run of characters in a caller's buffer: "#" a digit position whose leading zero is
// blank, "*" a digit position with special rules (zero fill in the integral part, blank when nothing
// is left in the decimals), "." or "," the decimal point, "+" a sign position; every other character
// is copied through untouched. Writers take `start` (negative: the first "#" or "*" of the buffer,
// searched over at most 32000 characters) and `len` (below 1: the run of picture characters
// "#*.,+" from the start).
//
// Sexagesimal angles are packed decimals: D.MMSS (degrees, two digits of minutes, seconds and their
// fraction) or, in mode 3, D.MM (minutes and their fraction). Mode 1 of the angle functions means
// the decimal side is in gon.
#pragma once

#include <cstdint>
#include <string>

namespace kw {

// ---- Readers ----------------------------------------------------------------------------------
// `start` and `len` must not be negative (assertion; a negative start returns 0 with level 2, a
// negative len reads like 0). A `len` of 0 reads up to the terminating zero; otherwise reading stops
// at start + len or at a zero, whichever comes first.

// Error levels of GetDouble.
inline constexpr int kNumberOk = 0;
inline constexpr int kNumberEmpty = 1;      // no sign, digit or point; the value is 0
inline constexpr int kNumberInvalid = 2;    // invalid character, second sign, disallowed comma
inline constexpr int kNumberBlankInside = 3;  // a digit after a blank that followed other content

// Reads a decimal number. Signs may stand anywhere ("12-" is -12; a second sign is level 2); the
// last point is the decimal point ("1.2.3" is 12.3); "," is the point when `commaIsPoint` is
// nonzero, else level 2. Scanning goes on after an error, so the digits still make the value.
double GetDouble(const char16_t* s, int64_t start, int64_t len, int commaIsPoint, int* error = nullptr);

// GetDouble with an exponent: the last of "EDFedf" (searched backwards; a `len` of 0 means the text
// without trailing blanks) splits mantissa and exponent, each read with GetDouble. The value is
// mantissa * 10^exponent and the level is mantissaLevel * 10 + exponentLevel.
double GetDoubleExp(const char16_t* s, int64_t start, int64_t len, int commaIsPoint, int* error = nullptr);

// Error levels of GetInt differ from GetDouble's on purpose.
inline constexpr int kIntOk = 0;
inline constexpr int kIntInvalid = 1;      // an invalid character; it is skipped, the digits still count
inline constexpr int kIntEmptyOrRange = 2;  // no content, or |value| >= 9.223372036854776e18: result 0
inline constexpr int kIntBlankInside = 3;

// Reads an integer. The sign is negative only when "-" comes before all other content; a sign after
// other content (or a second sign) is an invalid character, level 1 ("12-" is 12 with level 1).
// Empty text gives level 2 unless an invalid character already set level 1; a magnitude out of the
// 64-bit range always gives level 2 and 0.
int64_t GetInt(const char16_t* s, int64_t start, int64_t len, int* error = nullptr);

// ---- Writers ----------------------------------------------------------------------------------

// Writes |value| into the picture right to left. The rightmost digit position: "#" always takes a
// digit (zero prints "0"), "*" only while digits remain. Further left: "#" a digit while digits
// remain, else a blank; "*" always a digit (leading zeros). A negative value puts "-" into the
// nearest blanked position left of the digits, or over the leftmost digit position when none was
// blanked. Returns 1 when every digit (and the sign) found room, else 0. With no digit position in
// the buffer (negative start) nothing is written and the result is 0.
int SetInt(int64_t value, char16_t* buf, int64_t start, int64_t len);
// The same on a string; positions beyond its end are not written.
int SetInt(int64_t value, std::u16string& s, int64_t start, int64_t len);

// Rounding modes of SetDouble.
inline constexpr int kRoundHalfUp = 0;     // the library's display rule: last decimal rounded half up
inline constexpr int kRoundTruncate = 1;   // digits beyond the last decimal are dropped
inline constexpr int kRoundHalfEven = 2;   // a tie goes to the even last digit

// Writes `value` into a picture (the library's main formatter). The decimal point is the leftmost
// "." (else the leftmost ","). Digit positions before it are integral, after it decimals.
//   - "#" before the rightmost integral position is blank while all digits so far are zero; the
//     rightmost integral "#" and every decimal "#" always show their digit.
//   - "*" in the integral part shows its digit (zero fill), except at the rightmost integral
//     position, where it is blank when the integral part is zero (".5" rather than "0.5").
//   - A decimal "*" is blank when what is left of the value is below 0.6 units of the last decimal
//     place (trailing zeros suppressed).
//   - A negative value that does not round to zero puts "-" just before the first digit written
//     (or over the first digit position); every "+" of the picture becomes "-", and a leftover
//     "-0" at the front is cleaned up.
// When the value does not fit and the picture has a decimal to give up, the picture itself is
// shifted one place right (a "#" enters at the front, its last non-blank character drops off) and
// the value is written with one decimal fewer; the caller's buffer keeps the shifted picture. When
// it cannot give up a decimal, the digits of value / 10 are written anyway and the result is 0.
// A NaN or infinity blanks the digit positions and gives 0.
//
// `roundMode`: 0 (kRoundHalfUp) adds half a unit of the last decimal place. 1 (kRoundTruncate) adds
// only 1e-9 of a unit, so that binary noise (0.29 held as 0.28999...) does not lose a digit.
// 2 (kRoundHalfEven): the last kept digit decides; when it is even, the half unit added is reduced
// by 1e-9 of a unit, so that a value lying on a tie within that margin keeps the even digit
// (2.5 -> "2", 3.5 -> "4", 0.125 -> "0.12") while every value clearly above a tie still rounds up.
// Other modes behave as 0. Returns 1 when the number fitted without overflow.
int SetDouble(double value, char16_t* buf, int64_t start, int64_t len, int roundMode = kRoundHalfUp);
// The same on a string; the picture is limited to the string's length.
int SetDouble(double value, std::u16string& s, int64_t start, int64_t len, int roundMode = kRoundHalfUp);

// "%.*f" of the value (negative decimals count as 0), padded on the left with blanks to `width`.
// With a nonzero `trimMode` and decimals > 0, trailing zeros are removed; a final "." is then
// removed by trimMode 1, completed to ".0" by trimMode 3, and left by other modes.
std::u16string FormatDouble(double value, int decimals, int width = 0, int trimMode = 0);

// Rounds half away from zero to `decimals` places (negative: to an integer). `decimals` must be
// below 60 (assertion; the value is returned unchanged).
double Round(double value, int decimals);

// The value of a field that holds no number: 1e100. IsValidDouble is 0 only for exactly that value
// (a NaN counts as valid).
double InvalidDouble();
int IsValidDouble(double value);

// ---- Angles and units -------------------------------------------------------------------------

// Decimal angle (degrees; gon in mode 1) to packed sexagesimal, rounded to `decimals` places of the
// packed form (at least 2; assertion, then 2 is used). Mode 3 gives D.MM, other modes D.MMSS.
// Rounding carries 60 seconds into the minutes and 60 minutes into the degrees; degrees that reach
// `fullCircle` through such a carry become 0. The sign of the input is kept.
double DecToHex(double value, int mode, int decimals, double fullCircle);

// Packed sexagesimal to decimal degrees (gon in mode 1; mode 3 reads D.MM). `error`, when given, is
// 0, or 1 when the minutes (or, outside mode 3, the seconds) exceed 60; exactly 60 is accepted.
double HexToDec(double packed, int mode, int* error = nullptr);

// Replaces *value by the member of value + k * period nearest to `target` (ties keep the smaller
// |k|). Returns 1 when the remaining distance exceeds `tolerance`, else 0.
int AdaptCyclically(double target, double* value, double period, double tolerance);

// Metres to international feet. Mode 2 packs feet and inches as F.II around the nearest whole foot
// W: sign * (W + (|feet| - W) * 0.12), so 3.7 ft gives 3.964 (just below 4 feet, not 3 ft 8.4 in).
double MeterToFeet(double metres, int mode);

// -17.77778 + 0.5555556 * fahrenheit, with exactly these constants.
double GetCelsius(double fahrenheit);

// atan2(y, x) in unit 1 degrees, 2 gon, else radians; `positive` maps negative angles into one
// full turn. Both |y| and |x| at most 1e-18 give 0.
inline constexpr unsigned kAngleRadians = 0;
inline constexpr unsigned kAngleDegrees = 1;
inline constexpr unsigned kAngleGon = 2;
double ArcTan(double y, double x, unsigned unit, int positive);

// Direction from (x1, y1) to (x2, y2) in radians in [0, 2pi), built from asin and the quadrant with
// the truncated constants 3.141592653 and 6.283185306; 0 when the points are closer than 1e-8.
double GetAngle(double x1, double y1, double x2, double y2);

// ---- Text helpers around numbers --------------------------------------------------------------

// Normalises a packed angle text: reads it as a number (comma or point), carries seconds and
// minutes of 60 or more into the next place ("10.0075" -> 10 deg 01 min 15 s), and writes it back
// with exactly `decimals` places (at least 2) in D.MMSS form (D.MM in mode 3). A negative angle
// keeps its sign. Text that is not a number (GetDouble level other than 0) gives an empty string.
std::u16string ReformatHex(const std::u16string& text, int mode, int decimals);

// Reads a hexadecimal text into a 32-bit value. Blanks around the number are ignored, an optional
// "0x"/"0X" prefix or "h"/"H" suffix is accepted, digits are case-blind. `error`: 0 read,
// 1 empty (no digit), 2 another character, 3 more than 32 significant bits; the result is 0 unless
// the level is 0.
uint32_t GetDWORDofHexString(const std::u16string& text, int* error = nullptr);

// Reads an inclination and returns it as a gradient (rise over run). Forms: "12%" or plain "12"
// (percent), "5‰" (per mille), "1:50" (a ratio, rise first), "3°" (degrees, giving tan). Numbers are
// read with a comma or point. `error`: 0 read, 1 empty, 2 not a number, 3 no finite gradient (a ratio
// with a run of 0, an angle of 90 degrees or more); the result is 0 unless the level is 0.
double GetInclinationOfString(const std::u16string& text, int* error = nullptr);

// What CanConvert tests a text for.
enum ConvertKind : int {
  kConvertInt = 0,          // GetInt
  kConvertDouble = 1,       // GetDouble, point only
  kConvertDoubleComma = 2,  // GetDouble, comma or point
  kConvertDoubleExp = 3,    // GetDoubleExp, comma or point
  kConvertPackedAngle = 4,  // a number that HexToDec reads without error
  kConvertHex = 5,          // GetDWORDofHexString
  kConvertInclination = 6,  // GetInclinationOfString
};
// 1 when the whole text reads as the kind with level 0 (an empty text does not convert), else 0;
// an unknown kind gives 0.
int CanConvert(const std::u16string& text, int kind);

}  // namespace kw
