// Outlines for tests and benchmarks, as a host would hand them over.
#pragma once

#include "frame/zol.h"
#include "host/model/parameters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace zol::test {

using Vector = std::array<double, 2>;

struct OutlineSegment {
  Vector P0, P1, H0, H1;
};

struct Outline {
  std::vector<OutlineSegment> segments;

  /// Hands over every segment; 1, or 0 as soon as the callback answers 0.
  int handOver(void *user, t_ZoSegmentFn callback) const {
    for (const auto &[P0, P1, H0, H1] : segments)
      if (callback(user, P0.data(), P1.data(), H0.data(), H1.data()) == 0)
        return 0;
    return 1;
  }
};

/// An outline as a geometry that stays the same over time.
class OutlineShape : public host::Shape {
public:
  explicit OutlineShape(Outline outline) : outline_(std::move(outline)) {}

  void box(double out[4], double) const override {
    std::fill_n(out, 4, 0.0);
    bool first = true;
    for (const auto &[P0, P1, H0, H1] : outline_.segments)
      for (const Vector &p :
           {P0, P1, Vector{P0[0] + H0[0], P0[1] + H0[1]}, Vector{P1[0] + H1[0], P1[1] + H1[1]}}) {
        for (size_t k = 0; k < 2; ++k) {
          out[k] = first ? p[k] : std::min(out[k], p[k]);
          out[k + 2] = first ? p[k] : std::max(out[k + 2], p[k]);
        }
        first = false;
      }
  }
  int curves(double, bool, void *user, t_ZoSegmentFn callback) const override {
    return outline_.handOver(user, callback);
  }

private:
  Outline outline_;
};

/// Straight lines between the points, closed.
inline Outline polygon(const std::vector<Vector> &points) {
  Outline outline;
  for (size_t i = 0; i < points.size(); ++i)
    outline.segments.push_back({points[i], points[(i + 1) % points.size()], {0, 0}, {0, 0}});
  return outline;
}

/// Four cubics, the first starting at `turn` radians.
inline Outline ellipse(double x, double y, double rx, double ry, double turn = 0) {
  constexpr double kHandle = 0.5522847498307936; // of the radius
  Outline outline;
  for (int i = 0; i < 4; ++i) {
    const double from = turn + i * std::numbers::pi / 2, to = from + std::numbers::pi / 2;
    outline.segments.push_back({{x + rx * std::cos(from), y + ry * std::sin(from)},
                                {x + rx * std::cos(to), y + ry * std::sin(to)},
                                {-rx * kHandle * std::sin(from), ry * kHandle * std::cos(from)},
                                {rx * kHandle * std::sin(to), -ry * kHandle * std::cos(to)}});
  }
  return outline;
}

/// A smooth closed ring of `count` cubics whose radius wanders between `least` (a share) and the whole of the
/// given ones.
inline Outline ring(double x, double y, double rx, double ry, int count, unsigned seed, double least = 0.6) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> share(least, 1.0);
  std::vector<Vector> points;
  for (int i = 0; i < count; ++i) {
    const double angle = 2 * std::numbers::pi * i / count, radius = share(random);
    points.push_back({x + rx * radius * std::cos(angle), y + ry * radius * std::sin(angle)});
  }
  const auto at = [&](int i) { return points[static_cast<size_t>((i + count) % count)]; };
  const auto handle = [&](int i) {
    return Vector{(at(i + 1)[0] - at(i - 1)[0]) / 6, (at(i + 1)[1] - at(i - 1)[1]) / 6};
  };
  Outline outline;
  for (int i = 0; i < count; ++i) {
    const Vector end = handle(i + 1);
    outline.segments.push_back({at(i), at(i + 1), handle(i), {-end[0], -end[1]}});
  }
  return outline;
}

/// Cubics between random points of [-reach, reach + size] with random handles; closed or in loose pieces.
inline Outline scribble(int count, double size, double reach, bool closed, bool whole, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> place(-reach, size + reach), reachOut(-size / 2, size / 2);
  const auto number = [&](auto &distribution) {
    const double value = distribution(random);
    return whole ? std::floor(value) : value;
  };
  Outline outline;
  Vector start{number(place), number(place)};
  const Vector first = start;
  for (int i = 0; i < count; ++i) {
    Vector end{number(place), number(place)};
    if (closed && i == count - 1)
      end = first;
    outline.segments.push_back(
        {start, end, {number(reachOut), number(reachOut)}, {number(reachOut), number(reachOut)}});
    start = closed ? end : Vector{number(place), number(place)};
  }
  return outline;
}

} // namespace zol::test
