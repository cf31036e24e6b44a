#include "kernels/shape/outline.h"

#include "kernels/shape/hermite.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zol {
namespace {

/// Of the control points, the larger one of the segment; the curve bends no more than that.
double secondDifference(const ShapeSegment &segment) {
  const auto along = [](const HermiteCubic &c, double *first, double *second) {
    const double control0 = c.q0 + c.t0 / 3, control1 = c.q1 - c.t1 / 3;
    *first = c.q0 - 2 * control0 + control1;
    *second = control0 - 2 * control1 + c.q1;
  };
  double x[2], y[2];
  along(segment.x, &x[0], &x[1]);
  along(segment.y, &y[0], &y[1]);
  return std::sqrt(std::max(x[0] * x[0] + y[0] * y[0], x[1] * x[1] + y[1] * y[1]));
}

int stepsOf(const ShapeSegment &segment) {
  constexpr double kMostSteps = 1024;
  const double steps = std::ceil(std::sqrt(15 * secondDifference(segment))); // off by 0.05 pixels at most
  return static_cast<int>(std::clamp(steps, 1.0, kMostSteps));
}

bool isFinite(const HermiteCubic &c) { // far beyond any frame counts as not
  constexpr double kFar = 1e9;
  const double values[] = {c.q0, c.q1, c.t0, c.t1};
  return std::all_of(std::begin(values), std::end(values), [](double v) { return std::fabs(v) < kFar; });
}

/// Whether two places are one: no nearer than hosts work them out, and nearer than can be seen.
bool areOne(double x0, double y0, double x1, double y1) {
  constexpr double kNear = 1.0 / 1024;
  return std::fabs(x1 - x0) < kNear && std::fabs(y1 - y0) < kNear;
}

/// The derivative of the Hermite basis.
double slopeAt(const HermiteCubic &c, double t) {
  return 6 * t * (1 - t) * (c.q1 - c.q0) + (1 - t) * (1 - 3 * t) * c.t0 + t * (3 * t - 2) * c.t1;
}

} // namespace

Outline::Outline(const ShapeSegments &segments) : segments_(segments) {
  const ShapeSegment *before = nullptr;
  const auto finish = [this] {
    if (contours_.count() == 0)
      return;
    Contour &last = contours_.back();
    const OutlinePoint &begin = points_[last.first], &end = points_.back();
    last.count = points_.count() - last.first;
    last.closed = end.way > 0 && areOne(begin.x, begin.y, end.x, end.y);
  };
  uint32_t index = 0;
  for (const ShapeSegment &segment : segments) {
    if (isFinite(segment.x) && isFinite(segment.y)) {
      if (before == nullptr || !areOne(before->x.q1, before->y.q1, segment.x.q0, segment.y.q0)) {
        finish();
        if (!contours_.add({points_.count(), 0, false}) ||
            !points_.add({segment.x.q0, segment.y.q0, 0, index, 0}))
          return;
      }
      if (!trace(segment, index))
        return;
      before = &segment;
    }
    ++index;
  }
  finish();
  complete_ = true;
}

bool Outline::trace(const ShapeSegment &segment, uint32_t index) {
  const auto &[x, y] = segment;
  const int steps = stepsOf(segment);
  OutlinePoint point = points_.back();
  point.segment = index;
  for (int i = 1; i <= steps; ++i) {
    const OutlinePoint from = point;
    point.t = static_cast<double>(i) / steps;
    point.x = valueAt(x, point.t);
    point.y = valueAt(y, point.t);
    const double dx = point.x - from.x, dy = point.y - from.y;
    point.way = from.way + std::sqrt(dx * dx + dy * dy);
    if (!points_.add(point))
      return false;
  }
  return true;
}

size_t Outline::pointBehind(const Contour &contour, double way) const {
  const OutlinePoint *const from = points(contour);
  const auto *const found =
      std::upper_bound(from + 1, from + contour.count - 1, way,
                       [](double w, const OutlinePoint &point) { return w < point.way; });
  return static_cast<size_t>(found - from);
}

OutlinePlace Outline::at(const Contour &contour, double way) const {
  const OutlinePoint &to = points(contour)[pointBehind(contour, way)], &from = (&to)[-1];
  const double length = to.way - from.way;
  const double share = length > 0 ? std::clamp((way - from.way) / length, 0.0, 1.0) : 0;
  const double begin = from.segment == to.segment ? from.t : 0;
  const double t = begin + share * (to.t - begin);
  const auto &[x, y] = segments_[to.segment];
  double dx = slopeAt(x, t), dy = slopeAt(y, t);
  double slope = std::sqrt(dx * dx + dy * dy);
  constexpr double kStill = 1e-6; // at ends whose handle has no length
  if (!(slope > kStill)) {
    dx = to.x - from.x;
    dy = to.y - from.y;
    slope = std::sqrt(dx * dx + dy * dy);
  }
  const bool goes = slope > 0;
  return {valueAt(x, t), valueAt(y, t), goes ? dx / slope : 1, goes ? dy / slope : 0};
}

} // namespace zol
