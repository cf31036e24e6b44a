// The border: angles as directions.
#pragma once

#include <cmath>

namespace zol {

/// One pixel's way to a side, down counting positive: degrees from the right, clockwise. Rounded to 2^-30, so
/// that every machine goes alike.
struct Direction {
  explicit Direction(double degrees)
      : right(rounded(std::cos(degrees * kDegree))), down(rounded(std::sin(degrees * kDegree))) {}

  double right, down;

private:
  static constexpr double kDegree = 3.14159265358979323846 / 180;
  static double rounded(double value) { return std::round(value * 0x1p30) / 0x1p30; }
};

} // namespace zol
