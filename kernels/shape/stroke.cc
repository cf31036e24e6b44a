#include "kernels/shape/stroke.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace zol {
namespace {

struct Vec {
  double x, y;
};
Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y}; }
Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y}; }
Vec operator-(Vec a) { return {-a.x, -a.y}; }
Vec operator*(double s, Vec a) { return {s * a.x, s * a.y}; }
double dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y; }
double cross(Vec a, Vec b) { return a.x * b.y - a.y * b.x; }
double length(Vec a) { return std::sqrt(dot(a, a)); }
/// A quarter turn from the first axis to the second.
Vec turned(Vec a) { return {-a.y, a.x}; }

/// From one direction to another, less than half a turn away, without the last one.
template <class Take>
void forEachOnArc(double radius, Vec from, Vec to, const Take &take, int halvings = 16) {
  constexpr double kError = 1.0 / 16;                                      // pixels between chord and arc
  const double middle = std::sqrt(std::max((1 + dot(from, to)) / 2, 0.0)); // cosine of half the angle
  if (halvings == 0 || !(radius * (1 - middle) > kError)) {
    take(from);
    return;
  }
  const Vec between = 1 / length(from + to) * (from + to);
  forEachOnArc(radius, from, between, take, halvings - 1);
  forEachOnArc(radius, between, to, take, halvings - 1);
}

class Stroker {
public:
  Stroker(Join join, Cap cap, Coverage &coverage) : join_(join), cap_(cap), coverage_(coverage) {}

  /// Consecutive points differ.
  void draw(const StrokePoint *points, size_t count, bool closed) {
    const size_t pieces = closed ? count : count - 1;
    const auto piece = [&](size_t i) { return Piece(points[i % count], points[(i + 1) % count]); };
    Piece now = piece(0);
    std::optional<Vec> corner; // of the beginning; none where the piece has an end of its own
    if (closed)
      corner = meet(piece(count - 1), now);
    else
      drawCap(points[0], -now.along);
    const std::optional<Vec> seam = corner;
    for (size_t i = 0; i < pieces; ++i) {
      const bool goesOn = closed || i + 1 < pieces;
      const StrokePoint &from = points[i], &to = points[(i + 1) % count];
      const Piece next = goesOn ? piece((i + 1) % count) : now;
      const std::optional<Vec> end = !goesOn ? std::nullopt : i + 1 < pieces ? meet(now, next) : seam;
      drawQuad(from, corner, to, end, now.along);
      if (!goesOn)
        drawCap(to, now.along);
      else if (!end)
        drawJoin(to, now.along, next.along);
      corner = end;
      now = next;
    }
    if (strip_ > 0) // round to where it began
      endStrip(points[0], false);
  }

  /// Half a disc towards a direction.
  void halfDisc(const StrokePoint &at, Vec direction) {
    const Vec side = turned(direction);
    lineTo(at, {});
    arc(at, side, direction);
    arc(at, direction, -side);
    lineTo(at, at.half * -side);
    coverage_.close();
  }

private:
  struct Piece {
    Piece(const StrokePoint &from, const StrokePoint &to) : along{to.x - from.x, to.y - from.y} {
      size = length(along);
      along = 1 / size * along;
      half = to.half;
    }
    Vec along;
    double size, half; ///< at the end
  };

  /// The corner that two pieces share on one side, from their point; the other one lies opposite.
  static std::optional<Vec> meet(const Piece &before, const Piece &after) {
    constexpr double kGentle = 0.86602540378443864676; // cosine of 30 degrees
    const double turn = dot(before.along, after.along), half = before.half;
    const double reach = half * std::fabs(cross(before.along, after.along)) / (1 + turn);
    if (!(turn > kGentle && reach <= before.size / 2 && reach <= after.size / 2))
      return std::nullopt;
    return half / (1 + turn) * turned(before.along + after.along);
  }

  void lineTo(const StrokePoint &at, Vec offset) { coverage_.lineTo(at.x + offset.x, at.y + offset.y); }

  /// A piece from one end to the other. Pieces that share corners are drawn as one polygon: what their common
  /// edges would add and take away again is most of the work.
  void drawQuad(const StrokePoint &from, const std::optional<Vec> &begin, const StrokePoint &to,
                const std::optional<Vec> &end, Vec along) {
    constexpr int kLongest = 1024; // that lies upon itself no more often
    const Corners last = cornersAt(to, end.value_or(to.half * turned(along)));
    if (strip_ == 0) {
      corners_ = cornersAt(from, begin.value_or(from.half * turned(along)));
      drawEnd(from, !begin, corners_.right, corners_.left);
    }
    coverage_.edge(corners_.left, last.left);
    coverage_.edge(last.right, corners_.right);
    corners_ = last;
    if (++strip_ == kLongest || !end)
      endStrip(to, !end);
  }

  void endStrip(const StrokePoint &at, bool isFree) {
    drawEnd(at, isFree, corners_.left, corners_.right);
    coverage_.close(std::exchange(strip_, 0));
  }

  struct Corners {
    Coverage::Corner left, right;
  };
  [[nodiscard]] Corners cornersAt(const StrokePoint &at, Vec side) {
    return {coverage_.corner(at.x + side.x, at.y + side.y), coverage_.corner(at.x - side.x, at.y - side.y)};
  }

  /// The edge across the line; joins and caps have a corner in its middle.
  void drawEnd(const StrokePoint &at, bool isFree, Coverage::Corner from, Coverage::Corner to) {
    const Coverage::Corner middle = isFree ? coverage_.corner(at.x, at.y) : from;
    if (isFree)
      coverage_.edge(from, middle);
    coverage_.edge(middle, to);
  }

  void drawCap(const StrokePoint &at, Vec outward) {
    if (cap_ == Cap::butt)
      return;
    if (cap_ == Cap::round) {
      halfDisc(at, outward);
      return;
    }
    const Vec side = at.half * turned(outward), ahead = at.half * outward;
    for (const Vec corner : {Vec{}, side, side + ahead, ahead - side, -side})
      lineTo(at, corner);
    coverage_.close();
  }

  /// What lies between the outer corners of two pieces.
  void drawJoin(const StrokePoint &at, Vec before, Vec after) {
    constexpr double kMiterLimit = 4;
    const bool outerIsTurned = cross(before, after) < 0;
    const Vec from = outerIsTurned ? turned(before) : -turned(before);
    const Vec to = outerIsTurned ? turned(after) : -turned(after);
    const double turn = dot(before, after);
    lineTo(at, {});
    if (join_ == Join::round) {
      // Almost straight back the middle of both is nowhere: half a disc leads around there.
      constexpr double kBack = -0.999;
      const Vec middle = turn < kBack ? before : 1 / length(from + to) * (from + to);
      arc(at, from, middle);
      arc(at, middle, to);
    } else {
      lineTo(at, at.half * from);
      if (join_ == Join::miter && kMiterLimit * kMiterLimit * (1 + turn) >= 2)
        lineTo(at, at.half / (1 + turn) * (from + to));
    }
    lineTo(at, at.half * to);
    coverage_.close();
  }

  void arc(const StrokePoint &at, Vec from, Vec to) {
    forEachOnArc(at.half, from, to, [&](Vec direction) { lineTo(at, at.half * direction); });
  }

  Join join_;
  Cap cap_;
  Coverage &coverage_;
  Corners corners_{}; ///< where the strip of pieces has come to
  int strip_ = 0;     ///< pieces in it so far
};

/// Drops points that stand where the one before does; how many are left.
size_t separate(StrokePoint *points, size_t count, bool closed) {
  constexpr double kNear = 1.0 / 512;
  const auto isApart = [](const StrokePoint &a, const StrokePoint &b) {
    return length({b.x - a.x, b.y - a.y}) > kNear;
  };
  size_t kept = count > 0 ? 1 : 0;
  for (size_t i = 1; i < count; ++i)
    if (isApart(points[kept - 1], points[i]))
      points[kept++] = points[i];
  while (closed && kept > 1 && !isApart(points[kept - 1], points[0]))
    --kept;
  return kept;
}

} // namespace

void stroke(StrokePoint *points, size_t count, bool closed, Join join, Cap cap, Coverage &coverage) {
  const size_t kept = separate(points, count, closed);
  if (kept > 1)
    Stroker(join, cap, coverage).draw(points, kept, closed && kept > 2);
  else if (kept == 1 && cap == Cap::round)
    drawDisc(points[0], coverage);
}

void drawDisc(const StrokePoint &disc, Coverage &coverage) {
  for (const Vec side : {Vec{1, 0}, Vec{-1, 0}})
    Stroker(Join::round, Cap::round, coverage).halfDisc(disc, side);
}

bool addDisc(double radius, Growing<PlanePoint> &points) {
  constexpr Vec kAxes[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  bool added = true;
  for (int i = 0; i < 4; ++i)
    forEachOnArc(radius, kAxes[i], kAxes[(i + 1) % 4], [&](Vec v) {
      added = added && points.add({radius * v.x, radius * v.y});
    });
  return added;
}

} // namespace zol
