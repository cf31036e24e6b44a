#include "kernels/warp/footprint.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

/// Lengths of sides are rounded, so that turns alone leave 1 what it is.
constexpr double kGrain = 65536;

struct Side {
  /// What is not a number is as long as can be and has no direction.
  Side(const Point &step, double longest) {
    const double exact = std::sqrt(step.x * step.x + step.y * step.y);
    const double held = exact < longest ? exact : longest;
    length = std::floor(held * kGrain + 0.5) / kGrain;
    if (exact > 0 && std::isfinite(exact))
      along = {step.x / exact, step.y / exact};
  }

  /// With probes of that radius in pixels. Spaced so that all together spread as a tent of the side's length.
  [[nodiscard]] ProbeLine probes(double radius) const {
    if (length <= radius)
      return {};
    const double rest = length * length - radius * radius;
    if (length <= 1.25 * radius)
      return {2, std::sqrt(2 * rest / 3), along};
    const int steps = static_cast<int>(std::ceil(length / radius));
    return {2 * steps - 1, std::sqrt(rest / (steps * steps - 1)), along};
  }

  double length;
  Point along{};
};

} // namespace

Footprint::Footprint(const Point &right, const Point &down, double longest) {
  const Side p(right, longest), q(down, longest);
  radius = static_cast<int>(std::ceil(64 * std::clamp(std::min(p.length, q.length), 1.0, 2.0)));
  across = p.probes(radius / 64.0);
  downwards = q.probes(radius / 64.0);
}

} // namespace zol
