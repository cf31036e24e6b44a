#include "kernels/warp/warp_map.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

double length(const double (&row)[3]) {
  return std::sqrt(row[0] * row[0] + (row[1] * row[1] + row[2] * row[2]));
}

/// Where x row[0] + y row[1] + row[2] is 0. An edge at no finite place leaves everything on one side.
WarpEdge edgeOf(double x, double y, double rest) {
  const double norm = std::sqrt(x * x + y * y);
  return norm > 0 ? WarpEdge{x / norm, y / norm, rest / norm} : WarpEdge{0, 0, rest < 0 ? -1e9 : 1e9};
}

} // namespace

int WarpEdge::coverage(int column, double atRow) const {
  const double distance = std::clamp(x * (column + 0.5) + atRow, -2.0, 2.0);
  return std::clamp(static_cast<int>(std::floor(256 * distance + 0.5)) + 128, 0, 256);
}

WarpMap::WarpMap(const Projection &toSource, int width, int height) {
  const auto &m = toSource.rows;
  const double determinant = toSource.determinant();
  const double centre = toSource.inverse().divisor({width * 0.5, height * 0.5});
  const bool isPlane = std::abs(determinant) >= 0x1p-30 * (length(m[0]) * length(m[1]) * length(m[2]));
  affine_ = m[2][0] == 0 && m[2][1] == 0;
  const double divisor = affine_ ? m[2][2] : determinant / centre; // where the source's centre lies
  leads_ = isPlane && std::isfinite(divisor) && width > 0 && height > 0;
  if (!leads_)
    return;
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 3; ++c)
      toSource_.rows[r][c] = m[r][c] / divisor;
  const auto &[a, b, g] = toSource_.rows;
  edges_[0] = edgeOf(a[0], a[1], a[2]);
  edges_[1] = edgeOf(width * g[0] - a[0], width * g[1] - a[1], width * g[2] - a[2]);
  edges_[2] = edgeOf(b[0], b[1], b[2]);
  edges_[3] = edgeOf(height * g[0] - b[0], height * g[1] - b[1], height * g[2] - b[2]);
  if (affine_)
    footprint_ = Footprint({a[0], b[0]}, {a[1], b[1]});
}

bool WarpMap::isShift() const {
  const auto &[a, b, g] = toSource_.rows;
  const auto isNear = [](double v, double whole, double slack) { return std::abs(v - whole) <= slack; };
  constexpr double kSlope = 0x1p-28, kPlace = 0x1p-12; // together less than half of what places are told by
  return affine_ && isNear(a[0], 1, kSlope) && isNear(a[1], 0, kSlope) && isNear(b[0], 0, kSlope) &&
         isNear(b[1], 1, kSlope) && isNear(a[2], std::round(a[2]), kPlace) &&
         isNear(b[2], std::round(b[2]), kPlace);
}

Footprint WarpMap::footprintAt(double column, int y) const {
  if (affine_)
    return footprint_;
  constexpr double kHorizon = 1e-9; // behind it nothing is seen
  const auto &a = toSource_.rows[0], &b = toSource_.rows[1], &g = toSource_.rows[2];
  const double row = y + 0.5;
  const auto at = [=](const double(&line)[3]) { return line[0] * column + (line[1] * row + line[2]); };
  const double inverse = 1 / std::max(at(g), kHorizon), u = at(a) * inverse, v = at(b) * inverse;
  const auto change = [&](int c) { return Point{(a[c] - g[c] * u) * inverse, (b[c] - g[c] * v) * inverse}; };
  return {change(0), change(1)};
}

int WarpMap::coverage(int x, int y) const {
  if (!leads_)
    return 0;
  const auto between = [&](const WarpEdge &one, const WarpEdge &other) {
    return std::max(0, one.coverage(x, one.atRow(y)) + other.coverage(x, other.atRow(y)) - 256);
  };
  return (between(edges_[0], edges_[1]) * between(edges_[2], edges_[3]) + 128) >> 8;
}

/// Coverage by an edge only rises or only falls along a row: its end is guessed, and then found step by step.
Span spanWithin(const WarpEdge *edges, int count, int row, Span span, int least) {
  for (int i = 0; i < count; ++i) {
    const WarpEdge &edge = edges[i];
    const double atRow = edge.atRow(row);
    const auto reaches = [&](int column) { return edge.coverage(column, atRow) >= least; };
    if (edge.x == 0) {
      span.end = reaches(span.begin) ? span.end : span.begin;
      continue;
    }
    const double guess = ((least - 128) / 256.0 - atRow) / edge.x - 0.5;
    int end = guess < span.begin ? span.begin : guess < span.end ? static_cast<int>(guess) : span.end;
    if (edge.x > 0) {
      while (end > span.begin && reaches(end - 1))
        --end;
      while (end < span.end && !reaches(end))
        ++end;
      span.begin = end;
    } else {
      while (end > span.begin && !reaches(end - 1))
        --end;
      while (end < span.end && reaches(end))
        ++end;
      span.end = end;
    }
  }
  return span;
}

} // namespace zol
