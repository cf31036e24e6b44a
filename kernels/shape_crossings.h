// Where the segments of a geometry cross scanlines or column lines.
#ifndef ZOL_KERNELS_SHAPE_CROSSINGS_H
#define ZOL_KERNELS_SHAPE_CROSSINGS_H

#include "frame/render.h"
#include "kernels/shape_segments.h"

#include <cstdint>
#include <optional>

namespace zol {

/// The crossings of one line. After sortCrossings they ascend; after clipToSpans they are pairs, the start
/// and the end of each span, relative to the line's first pixel.
struct CrossingLine {
  double *crossings;
  uint32_t count;
};

enum class LineKind { rows, columns };

/// `count` neighbouring lines from coordinate `first` on, crossed by every segment. One found exactly where
/// two monotonic pieces of a segment meet may stand twice. Places that are not a number are left out.
class CrossingLines {
public:
  /// Tests as false afterwards when memory ran out.
  CrossingLines(const ShapeFillContext &segments, LineKind kind, int first, int count);

  explicit operator bool() const { return complete_; }
  CrossingLine &operator[](int index) const { return lines_[static_cast<size_t>(index)]; }
  [[nodiscard]] CrossingLine *data() const { return lines_.data(); }

private:
  Scratch<CrossingLine> lines_;
  std::optional<Scratch<double>> crossings_;
  bool complete_ = false;
};

void sortCrossings(CrossingLine &line);

/// Keeps the part of every span (even-odd rule) that meets [first, first + length], relative to `first`.
void clipToSpans(CrossingLine &line, int first, int length);

} // namespace zol

#endif
