#include "base/KwTime.h"

#include <chrono>
#include <cmath>
#include <ctime>

namespace kw {

namespace {

// Days from 1970-01-01 to a proleptic Gregorian date (H. Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, int m, int d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void CivilFromDays(int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(yoe + era * 400 + (month <= 2));
}

constexpr int64_t kEpochOffset = 25569;  // days from 1899-12-30 to 1970-01-01

KwTime FromUnixLocal(std::time_t seconds, double fraction) {
  std::tm local{};
  const std::tm* tm = std::localtime(&seconds);  // the library is single-threaded
  if (tm) local = *tm;
  return KwTime::FromDate(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                          local.tm_sec + fraction);
}

void AppendNumber(std::u16string& out, int value, int width) {
  std::string digits = std::to_string(value < 0 ? -value : value);
  if (value < 0) out += u'-';
  for (int k = static_cast<int>(digits.size()); k < width; ++k) out += u'0';
  for (char c : digits) out += static_cast<char16_t>(c);
}

}  // namespace

KwTime KwTime::FromDate(int year, int month, int day, int hour, int minute, double second) {
  const int64_t days = DaysFromCivil(year, month, day) + kEpochOffset;
  return KwTime(static_cast<double>(days) + (hour * 3600.0 + minute * 60.0 + second) / 86400.0);
}

bool KwTime::IsValidDate(int year, int month, int day) {
  if (month < 1 || month > 12 || day < 1) return false;
  static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return day <= kDays[month - 1] + (month == 2 && leap ? 1 : 0);
}

KwTime KwTime::Now() {
  const auto now = std::chrono::system_clock::now();
  const auto secs = std::chrono::floor<std::chrono::seconds>(now);
  const double fraction = std::chrono::duration<double>(now - secs).count();
  return FromUnixLocal(std::chrono::system_clock::to_time_t(secs), fraction);
}

KwTime KwTime::FromFileTime(std::filesystem::file_time_type time) {
  const auto sys = std::chrono::file_clock::to_sys(time);
  const auto secs = std::chrono::floor<std::chrono::seconds>(sys);
  const double fraction = std::chrono::duration<double>(sys - secs).count();
  return FromUnixLocal(std::chrono::system_clock::to_time_t(
                           std::chrono::time_point_cast<std::chrono::system_clock::duration>(secs)),
                       fraction);
}

void KwTime::Split(int& year, int& month, int& day, int& hour, int& minute, int& second) const {
  double days = std::floor(time_);
  int64_t secs = std::llround((time_ - days) * 86400.0);
  if (secs >= 86400) {
    secs -= 86400;
    days += 1;
  }
  CivilFromDays(static_cast<int64_t>(days) - kEpochOffset, year, month, day);
  hour = static_cast<int>(secs / 3600);
  minute = static_cast<int>(secs / 60 % 60);
  second = static_cast<int>(secs % 60);
}

std::u16string KwTime::Format(const std::u16string& format) const {
  int year, month, day, hour, minute, second;
  Split(year, month, day, hour, minute, second);
  std::u16string out;
  for (size_t i = 0; i < format.size(); ++i) {
    if (format[i] != u'%' || i + 1 >= format.size()) {
      out += format[i];
      continue;
    }
    size_t j = i + 1;
    int width = -1;
    if (format[j] >= u'0' && format[j] <= u'9' && j + 1 < format.size()) width = format[j++] - u'0';
    switch (format[j]) {
      case u'd': AppendNumber(out, day, width < 0 ? 2 : width); break;
      case u'm': AppendNumber(out, month, width < 0 ? 2 : width); break;
      case u'Y': AppendNumber(out, year, width < 0 ? 4 : width); break;
      case u'y': AppendNumber(out, ((year % 100) + 100) % 100, width < 0 ? 2 : width); break;
      case u'H': AppendNumber(out, hour, width < 0 ? 2 : width); break;
      case u'M': AppendNumber(out, minute, width < 0 ? 2 : width); break;
      case u'S': AppendNumber(out, second, width < 0 ? 2 : width); break;
      case u'%': out += u'%'; break;
      default: out.append(format, i, j - i + 1); break;  // not a conversion: copied as it is
    }
    i = j;
  }
  return out;
}

bool KwTime::SetTime(const std::u16string& text, const std::u16string& format) {
  int year = -1, month = -1, day = -1, hour = 0, minute = 0, second = 0;
  bool hasDate = false;
  size_t t = 0;
  auto isBlank = [](char16_t c) { return c == u' ' || c == u'\t'; };
  for (size_t i = 0; i < format.size(); ++i) {
    const char16_t f = format[i];
    if (isBlank(f)) {
      while (t < text.size() && isBlank(text[t])) ++t;
      continue;
    }
    if (f != u'%' || i + 1 >= format.size()) {
      if (t >= text.size() || text[t] != f) return false;
      ++t;
      continue;
    }
    size_t j = i + 1;
    int width = -1;
    if (format[j] >= u'0' && format[j] <= u'9' && j + 1 < format.size()) width = format[j++] - u'0';
    const char16_t conv = format[j];
    i = j;
    if (conv == u'%') {
      if (t >= text.size() || text[t] != u'%') return false;
      ++t;
      continue;
    }
    int* field = nullptr;
    switch (conv) {
      case u'd': field = &day; hasDate = true; break;
      case u'm': field = &month; hasDate = true; break;
      case u'Y': case u'y': field = &year; hasDate = true; break;
      case u'H': field = &hour; break;
      case u'M': field = &minute; break;
      case u'S': field = &second; break;
      default: return false;
    }
    const int most = width > 0 ? width : conv == u'Y' ? 4 : 2;
    int value = 0, digits = 0;
    while (digits < most && t < text.size() && text[t] >= u'0' && text[t] <= u'9') {
      value = value * 10 + (text[t++] - u'0');
      ++digits;
    }
    if (digits == 0) return false;
    if (conv == u'y') value += value < 30 ? 2000 : 1900;  // two-digit years: 1930..2029
    *field = value;
  }
  while (t < text.size() && isBlank(text[t])) ++t;
  if (t != text.size()) return false;
  if (!hasDate) {
    year = 1899;
    month = 12;
    day = 30;
  } else {
    if (year < 0) year = 1900;
    if (month < 0) month = 1;
    if (day < 0) day = 1;
    if (!IsValidDate(year, month, day)) return false;
  }
  if (hour > 23 || minute > 59 || second > 59) return false;
  *this = FromDate(year, month, day, hour, minute, second);
  return true;
}

}  // namespace kw
