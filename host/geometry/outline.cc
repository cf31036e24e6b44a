#include "host/geometry/outline.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zol::host {
namespace {

constexpr double kLargestArc = std::numbers::pi / 4; // angle of one cubic: 5e-6 of the radius off at most

} // namespace

void Outline::moveTo(Point to) {
  drawing_ = false;
  start_ = current_ = to;
}

void Outline::close() {
  lineTo(start_);
  if (drawing_)
    geometry_.contours.back().closed = true;
  drawing_ = false;
}

void Outline::lineTo(Point to) {
  const Point third = (1.0 / 3) * (to - current_);
  add(to, third, -1 * third);
}

void Outline::cubicTo(Point control0, Point control1, Point to) {
  add(to, control0 - current_, control1 - to);
}

void Outline::quadraticTo(Point control, Point to) {
  add(to, (2.0 / 3) * (control - current_), (2.0 / 3) * (control - to));
}

/// From the form by end points to the form by centre, in a frame where the ellipse is the unit circle.
void Outline::arcTo(double rx, double ry, double degrees, bool large, bool sweep, Point to) {
  rx = std::abs(rx);
  ry = std::abs(ry);
  if (current_ == to)
    return;
  const double angle = std::fmod(degrees, 360) * std::numbers::pi / 180;
  const double cosine = std::cos(angle), sine = std::sin(angle);
  const auto toCircle = [&](Point p) {
    return Point{(cosine * p.x + sine * p.y) / rx, (cosine * p.y - sine * p.x) / ry};
  };
  const Point from = current_;
  const Point half = rx > 0 && ry > 0 ? toCircle(0.5 * (from - to)) : Point{};
  double square = half.x * half.x + half.y * half.y;
  if (!(square > 0 && std::isfinite(square))) { // a radius of (nearly) zero
    lineTo(to);
    return;
  }
  if (square > 1) { // radii too small to reach: the smallest ellipse that does
    rx *= std::sqrt(square);
    ry *= std::sqrt(square);
    square = 1;
  }
  // The centre lies on the perpendicular bisector of the chord.
  const Point chordHalf = toCircle(0.5 * (from - to));
  const double distance = std::sqrt(std::max(0.0, 1 / square - 1)) * (large == sweep ? -1 : 1);
  const Point centre{distance * chordHalf.y, -distance * chordHalf.x}; // from the middle of the chord
  const double first = std::atan2(chordHalf.y - centre.y, chordHalf.x - centre.x);
  double turn = std::atan2(-chordHalf.y - centre.y, -chordHalf.x - centre.x) - first;
  if (sweep && turn < 0)
    turn += 2 * std::numbers::pi;
  if (!sweep && turn > 0)
    turn -= 2 * std::numbers::pi;

  const auto fromCircle = [&](Point p) {
    return Point{cosine * rx * p.x - sine * ry * p.y, sine * rx * p.x + cosine * ry * p.y};
  };
  const Point middle = 0.5 * (from + to) + fromCircle(centre);
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(turn) / kLargestArc - 1e-9)));
  const double step = turn / pieces;
  const double handle = 4.0 / 3 * std::tan(step / 4);
  for (int i = 0; i < pieces; ++i) {
    const double a = first + i * step, b = first + (i + 1) * step;
    const Point end = i + 1 == pieces ? to : middle + fromCircle({std::cos(b), std::sin(b)});
    add(end, handle * fromCircle({-std::sin(a), std::cos(a)}),
        -handle * fromCircle({-std::sin(b), std::cos(b)}));
  }
}

void Outline::add(Point to, Point h0, Point h1) {
  if (current_ == to && h0 == Point{} && h1 == Point{})
    return;
  if (!drawing_)
    geometry_.contours.emplace_back();
  drawing_ = true;
  geometry_.contours.back().segments.push_back(
      {{current_.x, current_.y}, {to.x, to.y}, {h0.x, h0.y}, {h1.x, h1.y}});
  current_ = to;
}

} // namespace zol::host
