#include "kernels/shape/shape_length.h"

#include "kernels/shape/hermite.h"

#include <cmath>
#include <cstddef>

namespace zol {
namespace {

struct Point {
  double x, y;
};

class MeasuredCurve {
public:
  explicit MeasuredCurve(const float *segment) : s_(segment) {}

  [[nodiscard]] Point at(double t) const {
    return {hermite(t, double{s_[2]}, double{s_[3]}, 3.0 * s_[4], -3.0 * s_[5]),
            hermite(t, double{s_[0]}, double{s_[1]}, 3.0 * s_[6], -3.0 * s_[7])};
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

double segmentLength(const float *segment, double t0, double t1) {
  const MeasuredCurve curve(segment);
  return curve.length(t0, curve.at(t0), t1, curve.at(t1), MeasuredCurve::kAnyLevels);
}

ChainPlace placeAlong(const float *segments, int count, double distance) {
  double total = 0.0;
  for (int i = 0; i < count; ++i) {
    const double length = segmentLength(segments + 8 * static_cast<size_t>(i), 0.0, 1.0);
    if (total + length > distance)
      return {i, length <= 0.0 ? 0.0 : (distance - total) / length};
    total += length;
  }
  return {count - 1, 1.0};
}

} // namespace zol
