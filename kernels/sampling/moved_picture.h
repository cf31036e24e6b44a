// A picture moved by sixteenths of a pixel, transparent around it.
#pragma once

#include "frame/picture.h"
#include "kernels/sampling/sample.h"
#include "kernels/simd/scratch.h"

#include <climits>

namespace zol {

/// Sampled between pixels, what lies beyond its edges being transparent. Tests as false when memory ran out.
class MovedPicture {
public:
  /// Sixteenths of a pixel to the right and down.
  MovedPicture(const pic &picture, int right, int down);

  /// Where it lies in the frame.
  [[nodiscard]] const Area &area() const { return area_; }
  explicit operator bool() const { return rows_ && moved_; }

  /// Pixels of row y of the area; they last until the next call.
  [[nodiscard]] const _color_t *row(int y);

private:
  [[nodiscard]] bool isWhole() const { return x_.part == 0 && y_.part == 0; }
  const _color_t *padded(int y);

  const pic &picture_;
  Sixteenths x_, y_; ///< from a pixel's place to where it is taken from
  Area area_;
  Scratch<_color_t> rows_,
      moved_; ///< two rows with a transparent pixel before and behind, and what they give
  int held_[2] = {INT_MIN, INT_MIN}; ///< which of the picture's rows they are
};

} // namespace zol
