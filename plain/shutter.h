// Shutters by their definition, a pixel at a time and in doubles; and coverages of rows in their plain form.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace zol::plain {

inline int rampOf(double z) { return static_cast<int>(std::clamp(std::floor(256 * z + 0.5), 0.0, 256.0)); }

/// The coverage of column x by sides start + slope x. Joins: the least, both, the greatest, either.
template <class Ramp> int joinRamps(int join, const Ramp *ramps, int count, float most, int x) {
  const auto value = [x](const Ramp &ramp) {
    const float v = ramp.start + ramp.slope * static_cast<float>(x);
    return static_cast<int>(std::clamp(v, 0.0F, 256.0F));
  };
  if (join == 0) {
    int least = static_cast<int>(most);
    for (int i = 0; i < count; ++i)
      least = std::min(least, value(ramps[i]));
    return least;
  }
  const int a = value(ramps[0]), b = value(ramps[1]);
  return join == 1 ? std::max(0, a + b - 256) : join == 2 ? std::max(a, b) : std::min(256, a + b);
}

/// The same of a wedge.
template <class Wedge> int wedgeCoverage(const Wedge &wedge, int x) {
  const auto at = [x](const auto &ramp) { return ramp.start + ramp.slope * static_cast<float>(x); };
  const float d1 = at(wedge.insideFirst), d2 = at(wedge.insideLast), t1 = at(wedge.alongFirst),
              t2 = at(wedge.alongLast);
  const bool isIn = wedge.isConvex ? d1 > 0 && d2 > 0 : d1 > 0 || d2 > 0;
  const auto edge = [isIn](float d, float t, float steepness, float reach) {
    const float distance = t < 0 ? std::sqrt(d * d + t * t) : std::fabs(d);
    const float height = 256 * steepness * ((isIn ? distance : -distance) + reach) + 128.5F;
    return static_cast<int>(std::clamp(height, 0.0F, 256.0F));
  };
  const int a = edge(d1, t1, 1, 0), b = edge(d2, t2, wedge.steepness, wedge.reach);
  return isIn ? std::min(a, b) : std::max(a, b);
}

struct Shutter {
  int kind, count; ///< blinds, doors, iris, radial
  double angle, centerX, centerY;
  int width, height;
  double aspect, softness, border;

  /// How far the pixel is open, with the border or without it.
  [[nodiscard]] int coverage(double opening, bool withBorder, int x, int y) const {
    const double dx = (x + 0.5 - centerX) * aspect, dy = y + 0.5 - centerY;
    if (kind == 3)
      return wedges(opening, withBorder, dx, dy);
    const double b = std::max(1.0, softness);
    const auto edge = [&](double s, double length) {
      const double reach = opening * (length + b + border) - (withBorder ? 0 : border);
      return rampOf((reach - std::max(s, 0.0)) / b);
    };
    if (kind == 2)
      return edge(fromCenter(dx, dy), farthestCorner());
    const double c = std::cos(angle * kDegree), s = std::sin(angle * kDegree);
    const double extent = std::abs(c) * width * aspect + std::abs(s) * height, strip = extent / count;
    const double middle = (x + 0.5 - width / 2.0) * aspect * c + (y + 0.5 - height / 2.0) * s;
    if (kind == 1 && count == 1) {
      const double shift = (centerX - width / 2.0) * aspect * c + (centerY - height / 2.0) * s;
      return edge(std::abs(middle - shift), extent / 2 + std::abs(shift));
    }
    int sum = 0;
    for (int k = 0; k < count; ++k) {
      const double place = middle + extent / 2 - k * strip;
      int open = kind == 0 ? edge(place, strip) : edge(std::abs(place - strip / 2), strip / 2);
      if (k > 0)
        open = std::min(open, rampOf(place + 0.5));
      if (k < count - 1)
        open = std::min(open, rampOf(strip - place + 0.5));
      sum += open;
    }
    return std::min(sum, 256);
  }

  bool hasEndlessEdges = false; ///< of a single wedge

private:
  static constexpr double kDegree = std::numbers::pi / 180;

  [[nodiscard]] double fromCenter(double dx, double dy) const {
    if (count < 3 || count > 12)
      return std::hypot(dx, dy);
    double greatest = -1e9;
    for (int k = 0; k < count; ++k) {
      const double turn = (angle + k * 360.0 / count) * kDegree;
      greatest = std::max(greatest, dx * std::cos(turn) + dy * std::sin(turn));
    }
    return greatest;
  }
  [[nodiscard]] double farthestCorner() const {
    double length = 0;
    for (const double x : {0.0, double(width)})
      for (const double y : {0.0, double(height)})
        length = std::max(length, fromCenter((x - centerX) * aspect, y - centerY));
    return length;
  }
  [[nodiscard]] int wedges(double o, bool withBorder, double dx, double dy) const {
    const double narrow = std::min({1.0, 4 * o, 4 * (1 - o)}), b = std::max(1.0, softness * narrow);
    if (count == 1 && o > 0.25 && o < 0.75 && (b > 1 || border > 0) && !hasEndlessEdges)
      return between(o, b, withBorder ? 0 : border * narrow, dx, dy);
    int sum = 0;
    for (int k = 0; k < count; ++k) {
      const double step = 360.0 / count, wedge = o * step, first = (angle + k * step) * kDegree;
      const double last = first + wedge * kDegree;
      const double insideFirst = dy * std::cos(first) - dx * std::sin(first);
      const double insideLast =
          dx * std::sin(last) - dy * std::cos(last) - (withBorder ? 0 : border * narrow);
      const int a = rampOf(insideFirst + 0.5), c = rampOf(insideLast / b + 0.5);
      sum += wedge <= 90   ? std::max(0, a + c - 256)
             : wedge < 180 ? std::min(a, c)
             : wedge < 270 ? std::max(a, c)
                           : std::min(256, a + c);
    }
    return std::min(sum, 256);
  }
  [[nodiscard]] int between(double o, double b, double w, double dx, double dy) const {
    const double turns[] = {angle * kDegree, (angle + o * 360) * kDegree}, r = std::hypot(dx, dy);
    double inside[2], distance[2];
    for (int i = 0; i < 2; ++i) {
      const double along = dx * std::cos(turns[i]) + dy * std::sin(turns[i]);
      inside[i] = (dy * std::cos(turns[i]) - dx * std::sin(turns[i])) * (i == 0 ? 1 : -1);
      distance[i] = along < 0 ? r : std::fabs(inside[i]);
    }
    const bool isIn = o <= 0.5 ? inside[0] > 0 && inside[1] > 0 : inside[0] > 0 || inside[1] > 0;
    const int sign = isIn ? 1 : -1;
    const int a = rampOf(sign * distance[0] + 0.5), c = rampOf((sign * distance[1] - w) / b + 0.5);
    return isIn ? std::min(a, c) : std::max(a, c);
  }
};

} // namespace zol::plain
