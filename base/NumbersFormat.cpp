// The writers: SetInt and SetDouble fill pictures in a caller's buffer; FormatDouble and the text
// helpers around numbers.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "base/Assert.h"
#include "base/Numbers.h"
#include "base/Text.h"

namespace kw {

namespace {

constexpr int64_t kPictureSearchLimit = 32000;  // how far a negative start looks for a digit position

bool IsDigitPosition(char16_t c) { return c == u'#' || c == u'*'; }
bool IsPictureChar(char16_t c) { return IsDigitPosition(c) || c == u'.' || c == u',' || c == u'+'; }

// The run of picture characters from `p` (the length a writer uses when the caller gives none).
int64_t PictureRun(const char16_t* p, int64_t limit) {
  int64_t n = 0;
  while (n < limit && IsPictureChar(p[n])) ++n;
  return n;
}

// Finds the picture in a zero-terminated buffer of at most `size` units (size < 0: unknown).
// Returns false when a negative start finds no digit position.
bool LocatePicture(const char16_t* buf, int64_t size, int64_t& start, int64_t& len) {
  if (start < 0) {
    const int64_t limit = size < 0 ? kPictureSearchLimit : std::min(size, kPictureSearchLimit);
    start = SeekStart(buf, limit);
    if (start < 0) return false;
  }
  if (size >= 0 && start >= size) return false;
  const int64_t room = size < 0 ? INT64_MAX : size - start;
  if (len < 1) len = PictureRun(buf + start, room);
  len = std::min(len, room);
  return len > 0;
}

int SetIntPicture(int64_t value, char16_t* pic, int64_t len) {
  const bool negative = value < 0;
  uint64_t rest = negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  int64_t blankForSign = -1;  // the nearest blanked position left of the digits
  int64_t leftmost = -1;      // the leftmost digit position
  bool rightmost = true;
  for (int64_t i = len - 1; i >= 0; --i) {
    const char16_t c = pic[i];
    if (!IsDigitPosition(c)) continue;
    leftmost = i;
    // The rightmost "#" always shows a digit; "*" further left always does (leading zeros).
    const bool digit = rest > 0 || (rightmost ? c == u'#' : c == u'*');
    rightmost = false;
    if (digit) {
      pic[i] = static_cast<char16_t>(u'0' + rest % 10);
      rest /= 10;
    } else {
      pic[i] = u' ';
      if (blankForSign < 0) blankForSign = i;
    }
  }
  if (leftmost < 0) return 0;
  bool fitted = rest == 0;
  if (negative) {
    if (blankForSign >= 0) {
      pic[blankForSign] = u'-';
    } else {
      pic[leftmost] = u'-';
      fitted = false;
    }
  }
  return fitted ? 1 : 0;
}

double PowerOfTen(int exponent) {
  double p = 1.0;
  for (int i = 0; i < exponent; ++i) p *= 10.0;
  for (int i = 0; i > exponent; --i) p /= 10.0;
  return p;
}

// The half unit (of the last decimal place) added before the digits are taken.
double HalfUnit(double magnitude, double scale, int roundMode) {
  constexpr double kMargin = 1e-9;
  if (roundMode == kRoundTruncate) return kMargin;
  if (roundMode == kRoundHalfEven) {
    const double last = std::fmod(std::floor(magnitude * scale), 10.0);  // the digit that decides
    if (std::fmod(last, 2.0) == 0.0) return 0.5 - kMargin;
  }
  return 0.5;
}

// The digits of a value for `count` digit positions, first position first, and for each position
// whether less than 0.6 units of the last place remain from it on (the test of a decimal "*").
// Held in place for the usual pictures (a column calculation formats one value per line); a longer
// picture takes memory from the heap.
struct Digits {
  static constexpr int kInPlace = 40;
  void Assign(int count) {
    if (count > kInPlace) {
      heapDigit.assign(static_cast<size_t>(count), 0);
      heapRest.assign(static_cast<size_t>(count), 0);
      digit = heapDigit.data();
      smallRest = heapRest.data();
    } else {
      digit = placeDigit;
      smallRest = placeRest;
      std::fill(placeDigit, placeDigit + count, 0);
      std::fill(placeRest, placeRest + count, 0);
    }
  }
  int* digit = placeDigit;
  unsigned char* smallRest = placeRest;
  int placeDigit[kInPlace];
  unsigned char placeRest[kInPlace];
  std::vector<int> heapDigit;
  std::vector<unsigned char> heapRest;
  Digits() = default;
  Digits(const Digits&) = delete;
  Digits& operator=(const Digits&) = delete;
};

// The digits of (magnitude + half unit) in `integral` + `decimals` positions. Returns false when the
// value needs more positions than the picture has (it must stay below `limit` in units of the first
// position); the digits are then those of the value divided by ten.
//
// The rounded value is taken as one integer N = floor(magnitude * 10^decimals + half) while that
// is exact, so that a value landing exactly on a new last digit (0.375 + 0.005) is not read back
// as 0.3799999...; beyond 2^53 the digits are taken one by one from the scaled double.
bool TakeDigits(double magnitude, int integral, int decimals, double limit, int roundMode, Digits& out) {
  const int count = integral + decimals;
  out.Assign(count);
  const double scale = PowerOfTen(decimals);
  const double q = magnitude * scale + HalfUnit(magnitude, scale, roundMode);
  bool fits;
  if (q < 9007199254740992.0 && count <= 18) {
    auto n = static_cast<uint64_t>(q);
    const double fraction = q - static_cast<double>(n);
    uint64_t positions = 1;  // 10^count
    for (int i = 0; i < count; ++i) positions *= 10;
    const double room = limit / 10.0 * static_cast<double>(positions);
    fits = static_cast<double>(n) < room;
    if (!fits) n = (n / 10) % positions;
    uint64_t below = 0, place = 1;  // the digits right of position i, and 10^(count-1-i)
    uint64_t left = n;              // the digits from position i leftwards
    for (int i = count - 1; i >= 0; --i) {
      const uint64_t d = left % 10;
      left /= 10;
      out.digit[i] = static_cast<int>(d);
      // What is left from this position on, in units of the last place, rounding half included.
      out.smallRest[i] = static_cast<double>(d * place + below) + fraction < 0.6;
      below += d * place;
      if (place <= UINT64_MAX / 10) place *= 10;
    }
    return fits;
  }
  // Digit by digit from the scaled value: v holds the first position's digit as its integral part.
  double v = q / scale / PowerOfTen(integral - 1);
  fits = v < limit;
  if (!fits) v = std::fmod(v / 10.0, 10.0);
  for (int i = 0; i < count; ++i) {
    const int k = std::clamp(static_cast<int>(v), 0, 9);
    out.digit[i] = k;
    out.smallRest[i] = v * PowerOfTen(count - 1 - i) < 0.6;
    v = (v - k) * 10.0;
  }
  return fits;
}

int SetDoublePicture(double value, char16_t* pic, int64_t len, int roundMode) {
  const bool negative = value < 0;
  const double magnitude = std::fabs(value);
  int64_t point = -1, rightmostIntegral = -1, firstDigit = -1;
  int integral = 0, decimals = 0;
  Digits digits;
  bool overflow = false;
  // Fit, shifting the picture one place right (one decimal fewer) as often as that helps.
  for (int64_t shifts = 0;; ++shifts) {
    point = std::find(pic, pic + len, u'.') - pic;
    if (point == len) point = std::find(pic, pic + len, u',') - pic;
    if (point == len) point = -1;
    integral = decimals = 0;
    rightmostIntegral = firstDigit = -1;
    for (int64_t i = 0; i < len; ++i) {
      if (!IsDigitPosition(pic[i])) continue;
      if (firstDigit < 0) firstDigit = i;
      if (point < 0 || i < point) {
        ++integral;
        rightmostIntegral = i;
      } else {
        ++decimals;
      }
    }
    if (firstDigit < 0) return 0;
    if (!std::isfinite(value)) {
      for (int64_t i = 0; i < len; ++i)
        if (IsDigitPosition(pic[i])) pic[i] = u' ';
      return 0;
    }
    const double limit = negative ? 1.0 : 10.0;  // a negative value keeps the first position for "-"
    if (TakeDigits(magnitude, integral, decimals, limit, roundMode, digits)) break;
    if (point >= 0 && decimals > 0 && shifts < len) {
      int64_t used = len;
      while (used > 0 && pic[used - 1] == u' ') --used;
      for (int64_t i = used - 1; i > 0; --i) pic[i] = pic[i - 1];
      pic[0] = u'#';
      continue;
    }
    overflow = true;  // written anyway, one place down; the result marks the field
    break;
  }

  bool allZero = true;
  int64_t lastBlank = -1, firstWritten = -1;
  size_t position = 0;
  for (int64_t i = 0; i < len; ++i) {
    const char16_t c = pic[i];
    if (!IsDigitPosition(c)) continue;
    const int k = digits.digit[position];
    bool blank = false;
    if (point < 0 || i < point) {
      if (k != 0) allZero = false;
      if (i < rightmostIntegral)
        blank = c == u'#' && allZero;  // leading zero; a "*" fills with zeros
      else
        blank = c == u'*' && allZero;  // ".5" rather than "0.5"
    } else if (c == u'*') {
      blank = digits.smallRest[position];  // trailing zeros suppressed
    }
    ++position;
    if (blank) {
      pic[i] = u' ';
      if (firstWritten < 0) lastBlank = i;
    } else {
      pic[i] = static_cast<char16_t>(u'0' + k);
      if (firstWritten < 0) firstWritten = i;
    }
  }

  if (negative && magnitude > 0.49 / PowerOfTen(decimals)) pic[lastBlank >= 0 ? lastBlank : firstDigit] = u'-';

  if (negative) {
    bool replaced = false;
    for (int64_t i = 0; i < len; ++i)
      if (pic[i] == u'+') {
        pic[i] = u'-';
        replaced = true;
      }
    if (replaced && len > 1) {
      if (pic[0] == u'-' && pic[1] == u'0') {
        pic[0] = u' ';
      } else if (pic[0] == u'-' && pic[1] == u'-') {
        pic[0] = u'0';
      } else {
        for (int64_t i = 0; i + 1 < len; ++i)
          if (pic[i] == u'-' && pic[i + 1] == u'0' && (i == 0 || pic[i - 1] == u' ')) {
            pic[i] = u' ';
            break;
          }
      }
    }
  }
  return overflow ? 0 : 1;
}

}  // namespace

int SetInt(int64_t value, char16_t* buf, int64_t start, int64_t len) {
  KW_ASSERT(buf != nullptr);
  if (buf == nullptr || !LocatePicture(buf, -1, start, len)) return 0;
  return SetIntPicture(value, buf + start, len);
}

int SetInt(int64_t value, std::u16string& s, int64_t start, int64_t len) {
  if (!LocatePicture(s.c_str(), static_cast<int64_t>(s.size()), start, len)) return 0;
  return SetIntPicture(value, s.data() + start, len);
}

int SetDouble(double value, char16_t* buf, int64_t start, int64_t len, int roundMode) {
  KW_ASSERT(buf != nullptr);
  if (buf == nullptr || !LocatePicture(buf, -1, start, len)) return 0;
  return SetDoublePicture(value, buf + start, len, roundMode);
}

int SetDouble(double value, std::u16string& s, int64_t start, int64_t len, int roundMode) {
  if (!LocatePicture(s.c_str(), static_cast<int64_t>(s.size()), start, len)) return 0;
  return SetDoublePicture(value, s.data() + start, len, roundMode);
}

std::u16string FormatDouble(double value, int decimals, int width, int trimMode) {
  const int precision = std::clamp(decimals, 0, 340);
  char bytes[720];  // sign, 309 integral digits, point and at most 340 decimals
  const int written = std::snprintf(bytes, sizeof bytes, "%.*f", precision, value);
  std::u16string text(bytes, bytes + std::clamp(written, 0, static_cast<int>(sizeof bytes) - 1));
  if (width > 0 && static_cast<int>(text.size()) < width) text.insert(0, width - text.size(), u' ');
  if (trimMode != 0 && decimals > 0) {
    while (!text.empty() && text.back() == u'0') text.pop_back();
    if (!text.empty() && text.back() == u'.') {
      if (trimMode == 1) text.pop_back();
      else if (trimMode == 3) text.push_back(u'0');
    }
  }
  return text;
}

// ---- Text helpers around numbers ----------------------------------------------------------------

std::u16string ReformatHex(const std::u16string& text, int mode, int decimals) {
  int level = 0;
  const double packed = GetDouble(text.c_str(), 0, 0, 1, &level);
  if (level != kNumberOk) return std::u16string();
  if (decimals < 2) decimals = 2;
  // Read the places as written, without limits, so that 75 seconds carry into the minutes.
  const double x = std::fabs(packed);
  const double degrees = std::floor(x + 1e-12);
  const double minutes = std::floor((x - degrees) * 100.0 + 1e-9);
  const double rest = ((x - degrees) * 100.0 - minutes) * (mode == 3 ? 1.0 : 100.0);
  const double angle = degrees + minutes / 60.0 + (mode == 3 ? rest / 60.0 : rest / 3600.0);
  const double normal = DecToHex(angle, mode == 3 ? 3 : 0, decimals, 360.0);
  return FormatDouble(packed < 0 ? -normal : normal, decimals, 0, 0);
}

uint32_t GetDWORDofHexString(const std::u16string& text, int* error) {
  size_t b = 0, e = text.size();
  while (b < e && text[b] == u' ') ++b;
  while (e > b && text[e - 1] == u' ') --e;
  if (e - b >= 2 && text[b] == u'0' && (text[b + 1] == u'x' || text[b + 1] == u'X')) b += 2;
  else if (e > b && (text[e - 1] == u'h' || text[e - 1] == u'H')) --e;
  int level = kNumberOk;
  uint64_t value = 0;
  if (b == e) level = 1;
  for (size_t i = b; i < e && level == kNumberOk; ++i) {
    const char16_t c = text[i];
    int digit;
    if (c >= u'0' && c <= u'9') digit = c - u'0';
    else if (c >= u'a' && c <= u'f') digit = c - u'a' + 10;
    else if (c >= u'A' && c <= u'F') digit = c - u'A' + 10;
    else {
      level = 2;
      break;
    }
    value = value * 16 + static_cast<uint64_t>(digit);
    if (value > 0xFFFFFFFFull) level = 3;
  }
  if (error) *error = level;
  return level == kNumberOk ? static_cast<uint32_t>(value) : 0;
}

double GetInclinationOfString(const std::u16string& text, int* error) {
  auto fail = [error](int level) {
    if (error) *error = level;
    return 0.0;
  };
  size_t b = 0, e = text.size();
  while (b < e && text[b] == u' ') ++b;
  while (e > b && text[e - 1] == u' ') --e;
  if (b == e) return fail(1);
  const std::u16string body = text.substr(b, e - b);
  auto number = [](const std::u16string& part, double& value) {
    int level = 0;
    value = GetDouble(part.c_str(), 0, 0, 1, &level);
    return level == kNumberOk;
  };
  double value = 0.0;
  const size_t colon = body.find(u':');
  if (colon != std::u16string::npos) {
    double rise = 0.0, run = 0.0;
    if (!number(body.substr(0, colon), rise) || !number(body.substr(colon + 1), run)) return fail(2);
    if (run == 0.0) return fail(3);
    value = rise / run;
  } else {
    const char16_t unit = body.back();
    const bool hasUnit = unit == u'%' || unit == u'\u2030' || unit == u'\u00B0';
    if (!number(hasUnit ? body.substr(0, body.size() - 1) : body, value)) return fail(2);
    if (unit == u'\u2030') {
      value /= 1000.0;
    } else if (unit == u'\u00B0') {
      if (std::fabs(value) >= 90.0) return fail(3);
      value = std::tan(value * 3.14159265358979323846 / 180.0);
    } else {
      value /= 100.0;
    }
  }
  if (error) *error = kNumberOk;
  return value;
}

int CanConvert(const std::u16string& text, int kind) {
  int level = -1;
  const char16_t* s = text.c_str();
  switch (kind) {
    case kConvertInt: GetInt(s, 0, 0, &level); break;
    case kConvertDouble: GetDouble(s, 0, 0, 0, &level); break;
    case kConvertDoubleComma: GetDouble(s, 0, 0, 1, &level); break;
    case kConvertDoubleExp: GetDoubleExp(s, 0, 0, 1, &level); break;
    case kConvertPackedAngle: {
      const double packed = GetDouble(s, 0, 0, 1, &level);
      int angleError = 0;
      HexToDec(packed, 0, &angleError);
      if (angleError != 0) level = -1;
      break;
    }
    case kConvertHex: GetDWORDofHexString(text, &level); break;
    case kConvertInclination: GetInclinationOfString(text, &level); break;
    default: return 0;
  }
  return level == 0 ? 1 : 0;
}

}  // namespace kw
