// Rounding, the invalid double, and the unit and angle conversions of the surveying side.
#include <cmath>
#include <cstring>

#include "base/Assert.h"
#include "base/Numbers.h"

namespace kw {

double Round(double value, int decimals) {
  KW_ASSERT(decimals < 60);
  if (decimals >= 60) return value;
  double x = std::fabs(value);
  for (int i = 0; i < decimals; ++i) x *= 10.0;
  x = std::floor(x + 0.5);
  for (int i = 0; i < decimals; ++i) x /= 10.0;
  return value < 0 ? -x : x;
}

double InvalidDouble() { return 1e100; }

int IsValidDouble(double value) { return value == 1e100 ? 0 : 1; }

double DecToHex(double value, int mode, int decimals, double fullCircle) {
  KW_ASSERT(decimals >= 2);
  if (decimals < 2) decimals = 2;
  if (mode == 1) value *= 0.9;
  const double a = std::fabs(value);
  double degrees = std::floor(a);
  const double m = (a - degrees) * 60.0;
  const double wholeMinutes = std::floor(m);
  double result;
  if (mode == 3) {
    double minutes = wholeMinutes + Round(m - wholeMinutes, decimals - 2);
    if (minutes >= 60.0) {
      minutes = 0.0;
      degrees += 1.0;
      if (degrees == fullCircle) degrees = 0.0;
    }
    result = degrees + minutes * 0.01;
  } else {
    const double s = (m - wholeMinutes) * 60.0;
    const double wholeSeconds = std::floor(s);
    double seconds = wholeSeconds + Round(s - wholeSeconds, decimals - 4);
    double minutes = wholeMinutes;
    if (seconds >= 60.0) {
      seconds = 0.0;
      minutes += 1.0;
    }
    if (minutes >= 60.0) {
      minutes = 0.0;
      degrees += 1.0;
      if (degrees == fullCircle) degrees = 0.0;
    }
    result = degrees + (minutes + seconds * 0.01) * 0.01;
  }
  return value < 0 ? -result : result;
}

double HexToDec(double packed, int mode, int* error) {
  const double x = std::fabs(packed);
  const double d = std::trunc(x + 0.1);
  const double m = mode == 3 ? 100.0 * (x - d) : std::trunc(100.0 * (x - d) + 0.1);
  const double factor = mode == 1 ? 0.9 : 1.0;
  const double result = (250.0 * x - 160.0 * d - m) / factor / 90.0;
  if (error) {
    *error = 0;
    // The check reads the places as written: whole degrees, two digits of minutes, the rest seconds.
    const double degrees = std::floor(x + 1e-12);
    const double minutes = std::floor((x - degrees) * 100.0 + 1e-12);
    const double seconds = (x - degrees) * 10000.0 - minutes * 100.0;
    if (minutes > 60.0 || (mode != 3 && seconds > 60.0 + 1e-8)) *error = 1;
  }
  return packed < 0 ? -result : result;
}

int AdaptCyclically(double target, double* value, double period, double tolerance) {
  KW_ASSERT(value != nullptr);
  if (value == nullptr) return 1;
  // Nearest member of value + k * period; equivalent to trying k = 0, +1, -1, +2, -2, ... while a
  // round improves the distance, without walking there one period at a time.
  double best = *value;
  double distance = 1e20;
  const double d0 = std::fabs(*value - target);
  if (d0 < distance) distance = d0;
  if (period != 0.0 && std::isfinite(period)) {
    const double r = (target - *value) / period;
    if (std::isfinite(r)) {
      const double lo = std::floor(r), hi = std::ceil(r);
      // Smaller |k| first, so that a tie keeps it.
      const double first = std::fabs(lo) <= std::fabs(hi) ? lo : hi;
      const double second = first == lo ? hi : lo;
      for (double k : {first, second}) {
        const double candidate = *value + k * period;
        const double d = std::fabs(candidate - target);
        if (d < distance) {
          distance = d;
          best = candidate;
        }
      }
    }
  }
  *value = best;
  return distance > tolerance ? 1 : 0;
}

double MeterToFeet(double metres, int mode) {
  const double feet = metres / 0.3048;
  if (mode != 2) return feet;
  const double a = std::fabs(feet);
  const double whole = Round(a, 0);  // nearest foot, not truncated: 3.7 ft packs as 3.964
  const double packed = whole + (a - whole) * 0.12;
  return feet < 0 ? -packed : packed;
}

double GetCelsius(double fahrenheit) { return -17.77778 + 0.5555556 * fahrenheit; }

double ArcTan(double y, double x, unsigned unit, int positive) {
  if (std::fabs(y) <= 1e-18 && std::fabs(x) <= 1e-18) return 0.0;
  double a = std::atan2(y, x);
  if (unit == kAngleDegrees) {
    a *= 57.2957795;
    if (a < 0 && positive) a += 360.0;
  } else if (unit == kAngleGon) {
    a *= 63.66197723;
    if (a < 0 && positive) a += 400.0;
  } else if (a < 0 && positive) {
    a += 6.283185306;
  }
  return a;
}

double GetAngle(double x1, double y1, double x2, double y2) {
  const double dx = x2 - x1, dy = y2 - y1;
  const double r = std::sqrt(dx * dx + dy * dy);
  if (r < 1e-8) return 0.0;
  const double a = std::asin(std::fabs(dy) / r);
  // The truncated constants are kept: stored directions were computed with them.
  if (dx >= 0 && dy >= 0) return a;
  if (dx < 0 && dy >= 0) return 3.141592653 - a;
  if (dx < 0 && dy < 0) return 3.141592653 + a;
  return 6.283185306 - a;
}

}  // namespace kw
