#include "kernels/shape/cubic.h"

#include "kernels/shape/hermite.h"

#include <algorithm>
#include <cmath>

namespace zol {

double valueAt(const HermiteCubic &cubic, double t) {
  if (t == 0.0)
    return cubic.q0;
  if (t == 1.0)
    return cubic.q1;
  return hermite(t, cubic.q0, cubic.q1, cubic.t0, cubic.t1);
}

Polynomial polynomialOf(const HermiteCubic &cubic) {
  return {2.0 * (cubic.q0 - cubic.q1) + cubic.t0 + cubic.t1,
          3.0 * (cubic.q1 - cubic.q0) - 2.0 * cubic.t0 - cubic.t1, cubic.t0, cubic.q0};
}

Extrema extremaOf(const Polynomial &polynomial, double tolerance) {
  const auto [a, b, c, d] = polynomial;
  const double discriminant = 4.0 * b * b - 12.0 * a * c;
  if (std::fabs(discriminant) <= tolerance)
    return {1, {-2.0 * b / (6.0 * a)}};
  if (!(discriminant > tolerance))
    return {0, {}};
  const double root = std::sqrt(discriminant);
  return {2, {(-2.0 * b - root) / (6.0 * a), (-2.0 * b + root) / (6.0 * a)}};
}

Extent rangeOf(const HermiteCubic &cubic) {
  constexpr double kTolerance = 1e-6;
  Extent range{std::min(cubic.q0, cubic.q1), std::max(cubic.q0, cubic.q1)};
  const Extrema extrema = extremaOf(polynomialOf(cubic), kTolerance);
  for (int i = 0; i < extrema.count; ++i) {
    if (!(extrema.t[i] > 0.0 && extrema.t[i] < 1.0))
      continue;
    const double value = valueAt(cubic, extrema.t[i]);
    range.low = std::min(range.low, value);
    range.high = std::max(range.high, value);
  }
  return range;
}

} // namespace zol
