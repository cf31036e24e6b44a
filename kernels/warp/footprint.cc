#include "kernels/warp/footprint.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

/// Lengths are rounded, so that turns alone leave 1 what it is. They are not negative.
double rounded(double length) {
  constexpr int kGrain = 65536;
  return static_cast<double>(static_cast<int>(kGrain * length + 0.5)) / kGrain;
}

/// The next whole number; none is negative.
int roundedUp(double value) {
  const int whole = static_cast<int>(value);
  return whole < value ? whole + 1 : whole;
}

/// In 1/64 pixel, for a length of that many pixels: what four by four pixels can hold.
int radiusFor(double length) { return roundedUp(64 * std::clamp(length, 1.0, 2.0)); }

/// Along a length, with probes of that radius in 1/64 pixel: together they spread as a tent of the length.
ProbeLine probesAlong(const Point &along, double length, int radius64) {
  const double radius = radius64 / 64.0;
  if (length <= radius)
    return {};
  const double rest = length * length - radius * radius;
  if (length <= 1.25 * radius)
    return {2, std::sqrt(2 * rest / 3), along};
  const int steps = roundedUp(length / radius);
  return {2 * steps - 1, std::sqrt(rest / (steps * steps - 1)), along};
}

struct Side {
  /// What is not a number is as long as can be and has no direction.
  Side(const Point &step, double longest)
      : exact(std::sqrt(step.x * step.x + step.y * step.y)),
        length(rounded(exact < longest ? exact : longest)) {}

  [[nodiscard]] Point along(const Point &step) const {
    return exact > 0 && std::isfinite(exact) ? Point{step.x / exact, step.y / exact} : Point{};
  }

  double exact, length;
};

} // namespace

Footprint::Footprint(const Point &right, const Point &down, double longest) {
  const Side p(right, longest), q(down, longest);
  radiusAcross = radiusDown = radiusFor(std::min(p.length, q.length));
  if (std::max(p.length, q.length) <= radiusAcross / 64.0)
    return;

  // How far it spreads across and down, and how much of that goes together. What is little is left out: the
  // probes can be wider one way than the other then, and are fewer.
  constexpr double kLittle = 0.2;
  const Point alongP = p.along(right), alongQ = q.along(down);
  const double lengthP = std::max(p.length, 1.0), lengthQ = std::max(q.length, 1.0);
  const double px = lengthP * alongP.x, py = lengthP * alongP.y, qx = lengthQ * alongQ.x,
               qy = lengthQ * alongQ.y;
  const double across = px * px + qx * qx, downwards = py * py + qy * qy, both = px * py + qx * qy;
  if (both * both <= kLittle * kLittle * (across * downwards)) {
    const double width = rounded(std::sqrt(across)), height = rounded(std::sqrt(downwards));
    radiusAcross = radiusFor(width);
    radiusDown = radiusFor(height);
    first = probesAlong({1, 0}, width, radiusAcross);
    second = probesAlong({0, 1}, height, radiusDown);
  } else {
    first = probesAlong(alongP, p.length, radiusAcross);
    second = probesAlong(alongQ, q.length, radiusAcross);
  }
}

} // namespace zol
