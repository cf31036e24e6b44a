// Lengths along segments, measured by chords.

#include "kernels/exports/shape.h"

#include <cmath>

namespace {

struct Point {
  double x, y;
};

class MeasuredCurve {
public:
  explicit MeasuredCurve(const float *segment) : s_(segment) {}

  [[nodiscard]] Point at(double t) const {
    const double t2 = t * t;
    const double t3 = t2 * t;
    const double h00 = 2.0 * t3 - 3.0 * t2 + 1.0;
    const double h01 = -2.0 * t3 + 3.0 * t2;
    const double h10 = t3 - 2.0 * t2 + t;
    const double h11 = t3 - t2;
    return {h00 * s_[2] + h01 * s_[3] + h10 * (3.0 * s_[4]) + h11 * (-3.0 * s_[5]),
            h00 * s_[0] + h01 * s_[1] + h10 * (3.0 * s_[6]) + h11 * (-3.0 * s_[7])};
  }

  /// Length between two parameters whose points are known. At most `levels` halvings deep.
  [[nodiscard]] double length(double t0, Point p0, double t1, Point p1, int levels) const {
    const double dx = p1.x - p0.x;
    const double dy = p1.y - p0.y;
    const double chord = dx * dx + dy * dy; // squared
    const double middle = (t0 + t1) * 0.5;
    if (!(chord >= kShortChord) || levels == 0 || middle == t0 || middle == t1)
      return std::sqrt(chord);
    // So long a stretch would take millions of chords: it gets some levels more and no further.
    const int deeper = chord >= kEndlessChord && levels > kLastLevels ? kLastLevels : levels - 1;
    const Point p = at(middle);
    return length(t0, p0, middle, p, deeper) + length(middle, p, t1, p1, deeper);
  }

  static constexpr int kAnyLevels = 2000; // more than halvings can separate doubles

private:
  static constexpr double kShortChord = 0.5;                     // squared pixels
  static constexpr double kEndlessChord = 1048576.0 * 1048576.0; // squared pixels
  static constexpr int kLastLevels = 10;

  const float *s_;
};

} // namespace

ZOL_EXPORT double SegmentLength(const float *segment, double t0, double t1) {
  const MeasuredCurve curve(segment);
  return curve.length(t0, curve.at(t0), t1, curve.at(t1), MeasuredCurve::kAnyLevels);
}

ZOL_EXPORT double CurveByDistant(const float *segments, int count, double distance, int *index) {
  double total = 0.0;
  for (int i = 0; i < count; ++i) {
    const double length = SegmentLength(segments + 8 * static_cast<size_t>(i), 0.0, 1.0);
    if (total + length > distance) {
      *index = i;
      return length <= 0.0 ? 0.0 : (distance - total) / length;
    }
    total += length;
  }
  *index = count - 1;
  return 1.0;
}
