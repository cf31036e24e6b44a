// Where the segments of a geometry cross scanlines or column lines.
#pragma once

#include "kernels/shape/shape_segments.h"
#include "kernels/simd/scratch.h"

#include <cstdint>
#include <optional>

namespace zol {

/// What a stretch between two crossings gives to the pixels along its line: a coverage to its first pixel,
/// the whole (255) to those of [inner, last), and a coverage to its last where it ends inside that pixel. If
/// first and last are one pixel, the last's coverage holds.
struct Span {
  int32_t first, inner, last;
  uint8_t firstCoverage, lastCoverage;
  bool endsInside;
};

/// The crossings of one line, ascending once they are ordered, and the spans between them.
struct CrossingLine {
  double *crossings;
  uint32_t count;
  Span *spans;
  uint32_t spanCount;
};

enum class LineKind { rows, columns };

/// `count` neighbouring lines from coordinate `first` on, crossed by every segment. One found exactly where
/// two monotonic pieces of a segment meet may stand twice. Places that are not a number are left out.
class CrossingLines {
public:
  /// Tests as false afterwards when memory ran out.
  CrossingLines(const ShapeSegments &segments, LineKind kind, int first, int count);

  explicit operator bool() const { return complete_; }
  CrossingLine &operator[](int index) const { return lines_[static_cast<size_t>(index)]; }
  [[nodiscard]] CrossingLine *data() const { return lines_.data(); }

private:
  Scratch<CrossingLine> lines_;
  std::optional<Scratch<double>> crossings_;
  std::optional<Scratch<Span>> spans_;
  bool complete_ = false;
};

void sortCrossings(CrossingLine &line);

/// Makes spans of the ordered crossings by the even-odd rule, clipped to [first, first + length] and counted
/// from the pixel `first` on.
void makeSpans(CrossingLine &line, int first, int length);

/// Whether the place lies between two of the ordered crossings by the even-odd rule, ends included.
bool isInside(const CrossingLine &line, double place);

} // namespace zol
