// Lines with a width, as polygons.
#pragma once

#include "kernels/shape/coverage.h"
#include "kernels/simd/growing.h"

namespace zol {

enum class Join { round, miter, bevel };
enum class Cap { round, butt, square };

struct PlanePoint {
  double x, y;
};

/// A point on the line, and half its width there; in pixels.
struct StrokePoint {
  double x, y, half;
};

/// Draws the line through the points, which it may move together; a closed one goes on from the last to the
/// first. Joins show where it turns by more than 30 degrees or its pieces are too short for a mitre, caps at
/// the ends of open lines. Mitres are at most 4 times as long as the line is wide; beyond it they are
/// bevelled. Round corners are within 1/16 pixel of a circle. A line of one place is a dot where caps are
/// round.
void stroke(StrokePoint *points, size_t count, bool closed, Join join, Cap cap, Coverage &coverage);

/// Draws a disc, as a line of one place is one.
void drawDisc(const StrokePoint &disc, Coverage &coverage);

/// Adds the points of a disc around 0, 0, as round caps have them; false when memory runs out.
bool addDisc(double radius, Growing<PlanePoint> &points);

} // namespace zol
