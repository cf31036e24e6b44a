#include "host/geometry/shape.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zol::host {
namespace {

// Paths like whole numbers, and fillers look along whole rows and columns: an end or an edge exactly on one
// is met twice or not at all. Off the grid by less than an alpha step, each is met once.
constexpr double kOffGrid = 1.0 / 1024;

/// Whether the coordinate's cubic term vanishes beside its quadratic one. Fillers cut curves at their
/// extrema, which they find by a formula that divides by the cubic term.
bool isQuadratic(const Segment &segment, int axis) {
  constexpr double kVanishing = 1e-6; // well above rounding, of which the formula gives roots as well
  const double whole = segment.P1[axis] - segment.P0[axis];
  const double t0 = 3 * segment.H0[axis], t1 = -3 * segment.H1[axis];
  return std::abs(t0 + t1 - 2 * whole) <= kVanishing * std::abs(3 * whole - 2 * t0 - t1);
}

/// Cuts a segment in two, at an extremum of one coordinate; returns the second part.
Segment cut(Segment *segment, double t, int axis) {
  Segment second = *segment;
  pointAt(*segment, t, second.P0);
  for (int i = 0; i < 2; ++i) {
    const double c0 = segment->P0[i] + segment->H0[i], c1 = segment->P1[i] + segment->H1[i];
    const double middle = c0 + t * (c1 - c0);
    const double before = segment->P0[i] + t * segment->H0[i], after = c1 + t * (segment->P1[i] - c1);
    const double slope = i == axis ? 0 : (middle + t * (after - middle)) - (before + t * (middle - before));
    segment->P1[i] = second.P0[i];
    segment->H0[i] *= t;
    segment->H1[i] = -t * slope;
    second.H0[i] = (1 - t) * slope;
    second.H1[i] *= 1 - t;
  }
  return second;
}

/// Cuts the segments whose x or y is quadratic where that turns back.
void cutQuadratics(std::vector<Segment> &segments, int axis) {
  std::vector<Segment> pieces;
  pieces.reserve(segments.size());
  for (Segment &segment : segments) {
    double turns[2];
    const bool turnsBack = isQuadratic(segment, axis) && extrema(segment, axis, turns) > 0;
    const Segment rest = turnsBack ? cut(&segment, turns[0], axis) : segment;
    if (turnsBack)
      pieces.push_back(segment);
    pieces.push_back(rest);
  }
  segments = std::move(pieces);
}

} // namespace

GeometryShape::GeometryShape(const Geometry &geometry)
    : geometry_(geometry.transformed({1, 0, 0, 1, kOffGrid, kOffGrid})), box_(geometry.box()) {
  for (Contour &contour : geometry_.contours)
    for (const int axis : {0, 1})
      cutQuadratics(contour.segments, axis);
}

void GeometryShape::box(double out[4], double) const {
  out[0] = box_.left;
  out[1] = box_.top;
  out[2] = box_.right;
  out[3] = box_.bottom;
}

int GeometryShape::curves(double, bool closed, void *user, t_ZoSegmentFn callback) const {
  const auto handOver = [&](const Segment &segment) {
    return callback(user, segment.P0, segment.P1, segment.H0, segment.H1) != 0;
  };
  for (const Contour &contour : geometry_.contours) {
    if (!std::all_of(contour.segments.begin(), contour.segments.end(), handOver))
      return 0;
    const auto closing = closed ? contour.closingLine() : std::nullopt;
    if (closing && !handOver(*closing))
      return 0;
  }
  return 1;
}

} // namespace zol::host
