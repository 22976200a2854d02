// KwTime: a point in time as one comparable double, the days since 1899-12-30 00:00 with the time of day
// as the fraction (0.5 is noon). Local time throughout. Values before 1899-12-30 are negative and still
// compare in time order (the day is the floor of the value, the fraction is always added forwards).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace kw {

class KwTime {
 public:
  KwTime() = default;
  explicit KwTime(double time) : time_(time) {}
  // A calendar date and time of day; the fields are not checked (use IsValidDate first).
  static KwTime FromDate(int year, int month, int day, int hour = 0, int minute = 0, double second = 0);
  static KwTime Now();
  static KwTime FromFileTime(std::filesystem::file_time_type time);
  static bool IsValidDate(int year, int month, int day);

  double GetTime() const { return time_; }
  void SetTime(double time) { time_ = time; }
  // Reads `text` by `format` (the conversions of Format; a width digit is the most digits read, without
  // one up to 2 digits, 4 for %Y; %y reads 1930..2029; other characters must match, blanks match any run
  // of blanks). Without date fields the date is 1899-12-30 (the value is the time of day); a missing day
  // or month is 1, a missing year 1900, a missing time field 0. False, with the value unchanged,
  // when the text does not fit or names no valid date or time; trailing blanks are allowed.
  bool SetTime(const std::u16string& text, const std::u16string& format);

  // %d day, %m month, %Y year, %y year in two digits, %H hour, %M minute, %S second, %% a percent
  // sign; an optional width digit after % zero-pads to that width ("%2H:%2M:%S"); without it every field
  // has two digits and %Y four. Other characters are copied.
  std::u16string Format(const std::u16string& format) const;

  // The calendar fields of the value (seconds rounded to whole).
  void Split(int& year, int& month, int& day, int& hour, int& minute, int& second) const;

  friend bool operator==(const KwTime& a, const KwTime& b) { return a.time_ == b.time_; }
  friend auto operator<=>(const KwTime& a, const KwTime& b) { return a.time_ <=> b.time_; }

 private:
  double time_ = 0;  // days since 1899-12-30 00:00, local time
};

}  // namespace kw
