// The number readers: GetDouble, GetDoubleExp, GetInt.
#include "base/Numbers.h"

#include <cmath>

#include "base/Assert.h"

namespace kw {

namespace {

// The readable window of a counted text: [start, end), where end is limited by a zero.
struct Window {
  const char16_t* s;
  int64_t pos;
  int64_t end;  // exclusive; -1 = up to the terminating zero
  bool More() const { return (end < 0 || pos < end) && s[pos] != 0; }
};

void SetLevel(int& level, int value) {
  if (level == 0) level = value;  // the first fault is the one reported
}

}  // namespace

double GetDouble(const char16_t* s, int64_t start, int64_t len, int commaIsPoint, int* error) {
  KW_ASSERT(s != nullptr && start >= 0);
  KW_ASSERT(len >= 0);
  if (s == nullptr || start < 0) {
    if (error) *error = kNumberInvalid;
    return 0.0;
  }
  Window w{s, start, len > 0 ? start + len : -1};
  bool content = false, blankArmed = false, signSeen = false, negative = false, point = false;
  int level = kNumberOk;
  double digits = 0.0;  // every digit, as one integer
  int decimals = 0;     // digits after the last point
  for (; w.More(); ++w.pos) {
    const char16_t c = s[w.pos];
    if (c == u' ') {
      if (content) blankArmed = true;
    } else if (c == u'+' || c == u'-') {
      content = true;
      if (signSeen) SetLevel(level, kNumberInvalid);
      signSeen = true;
      if (c == u'-') negative = true;
    } else if (c == u'.' || (c == u',' && commaIsPoint)) {
      content = true;
      point = true;
      decimals = 0;  // the last point seen is the one that counts
    } else if (c >= u'0' && c <= u'9') {
      content = true;
      if (blankArmed) SetLevel(level, kNumberBlankInside);
      digits = digits * 10.0 + (c - u'0');
      if (point) ++decimals;
    } else {
      SetLevel(level, kNumberInvalid);  // also a comma where commas are not allowed
    }
  }
  if (!content) SetLevel(level, kNumberEmpty);
  if (error) *error = level;
  if (!content) return 0.0;
  double divisor = negative ? -1.0 : 1.0;
  for (int i = 0; i < decimals; ++i) divisor *= 10.0;
  return digits / divisor;
}

double GetDoubleExp(const char16_t* s, int64_t start, int64_t len, int commaIsPoint, int* error) {
  KW_ASSERT(s != nullptr && start >= 0);
  if (s == nullptr || start < 0) {
    if (error) *error = kNumberInvalid;
    return 0.0;
  }
  if (len < 0) len = 0;
  // The end of the text: start + len limited by a zero, or without trailing blanks when len is 0.
  int64_t end = start;
  while ((len == 0 || end < start + len) && s[end] != 0) ++end;
  if (len == 0)
    while (end > start && s[end - 1] == u' ') --end;
  int64_t e = end - 1;
  while (e >= start && s[e] != u'E' && s[e] != u'D' && s[e] != u'F' && s[e] != u'e' && s[e] != u'd' &&
         s[e] != u'f')
    --e;
  if (e < start) return GetDouble(s, start, end - start > 0 ? end - start : len, commaIsPoint, error);
  // An empty part must not be read with len 0, which would mean "up to the zero".
  int mantissaLevel = kNumberEmpty, exponentLevel = kNumberEmpty;
  const double mantissa = e > start ? GetDouble(s, start, e - start, commaIsPoint, &mantissaLevel) : 0.0;
  const double exponent = end > e + 1 ? GetDouble(s, e + 1, end - e - 1, commaIsPoint, &exponentLevel) : 0.0;
  if (error) *error = mantissaLevel * 10 + exponentLevel;
  return mantissa * std::pow(10.0, exponent);
}

int64_t GetInt(const char16_t* s, int64_t start, int64_t len, int* error) {
  KW_ASSERT(s != nullptr && start >= 0);
  KW_ASSERT(len >= 0);
  if (s == nullptr || start < 0) {
    if (error) *error = kIntEmptyOrRange;
    return 0;
  }
  Window w{s, start, len > 0 ? start + len : -1};
  bool content = false, blankArmed = false, negative = false;
  int level = kIntOk;
  double digits = 0.0;
  for (; w.More(); ++w.pos) {
    const char16_t c = s[w.pos];
    if (c == u' ') {
      if (content) blankArmed = true;
    } else if (c == u'+' || c == u'-') {
      if (content) SetLevel(level, kIntInvalid);  // only a leading sign is a sign
      else if (c == u'-') negative = true;
      content = true;
    } else if (c >= u'0' && c <= u'9') {
      content = true;
      if (blankArmed) SetLevel(level, kIntBlankInside);
      digits = digits * 10.0 + (c - u'0');
    } else {
      SetLevel(level, kIntInvalid);
    }
  }
  if (!content) SetLevel(level, kIntEmptyOrRange);
  if (digits >= 9.223372036854776e18) {
    if (error) *error = kIntEmptyOrRange;
    return 0;
  }
  if (error) *error = level;
  const auto magnitude = static_cast<int64_t>(digits);
  return negative ? -magnitude : magnitude;
}

}  // namespace kw
