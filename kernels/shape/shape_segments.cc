#include "kernels/shape/shape_segments.h"

#include "kernels/exports/shape.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace zol {

double valueAt(const HermiteCubic &cubic, double t) {
  if (t == 0.0)
    return cubic.q0;
  if (t == 1.0)
    return cubic.q1;
  const double t2 = t * t;
  const double t3 = t2 * t;
  const double h00 = 2.0 * t3 - 3.0 * t2 + 1.0;
  const double h01 = -2.0 * t3 + 3.0 * t2;
  const double h10 = t3 - 2.0 * t2 + t;
  const double h11 = t3 - t2;
  return h00 * cubic.q0 + h01 * cubic.q1 + h10 * cubic.t0 + h11 * cubic.t1;
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

ShapeFillContext::~ShapeFillContext() { std::free(segments_); }

bool ShapeFillContext::fetch(t_ZoHostInfo *host, void *geometry, double time) {
  return host->Services->GeoGetCurves(host, geometry, time, 1, this, addSegmentToShape, 0) == 1;
}

int ShapeFillContext::addSegmentToShape(void *context, const double P0[2], const double P1[2],
                                        const double H0[2], const double H1[2]) {
  auto &self = *static_cast<ShapeFillContext *>(context);
  if (self.count_ == self.capacity_ && !self.grow())
    return 0;
  const auto along = [&](int axis, double offset) {
    return HermiteCubic{P0[axis] + offset, P1[axis] + offset, 3.0 * H0[axis], -3.0 * H1[axis]};
  };
  self.segments_[self.count_++] = {along(0, self.xOffset_), along(1, self.yOffset_)};
  return 1;
}

bool ShapeFillContext::grow() {
  const size_t capacity = capacity_ == 0 ? 64 : capacity_ * 2;
  if (capacity > std::numeric_limits<size_t>::max() / sizeof(ShapeSegment))
    return false;
  auto *larger = static_cast<ShapeSegment *>(std::malloc(capacity * sizeof(ShapeSegment)));
  if (larger == nullptr)
    return false;
  std::copy(segments_, segments_ + count_, larger);
  std::free(segments_);
  segments_ = larger;
  capacity_ = capacity;
  return true;
}

} // namespace zol

namespace {

/// Widens [low, high] by the coordinate's values at its inner extrema.
void widenByExtrema(const zol::HermiteCubic &cubic, double *low, double *high) {
  constexpr double kTolerance = 1e-6;
  const zol::Extrema extrema = zol::extremaOf(zol::polynomialOf(cubic), kTolerance);
  for (int i = 0; i < extrema.count; ++i) {
    if (!(extrema.t[i] > 0.0 && extrema.t[i] < 1.0))
      continue;
    const double value = zol::valueAt(cubic, extrema.t[i]);
    *low = std::min(*low, value);
    *high = std::max(*high, value);
  }
}

} // namespace

ZOL_EXPORT void FillSegmentHull(double *hull, double X0, double Y0, double X1, double Y1, double TX0,
                                double TY0, double TX1, double TY1) {
  hull[0] = std::min(X0, X1);
  hull[1] = std::min(Y0, Y1);
  hull[2] = std::max(X0, X1);
  hull[3] = std::max(Y0, Y1);
  widenByExtrema({X0, X1, TX0, -TX1}, &hull[0], &hull[2]);
  widenByExtrema({Y0, Y1, TY0, -TY1}, &hull[1], &hull[3]);
}
