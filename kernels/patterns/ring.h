// Rings: the line of a circle, which is an ellipse where pixels are not square.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/scratch.h"

#include <cstdint>

namespace zol {

struct Ellipse {
  double x, y, radiusX, radiusY; ///< in pixels
};

/// Draws what lies within one ellipse and not within another, smaller one of the same middle.
class Ring {
public:
  Ring(const Ellipse &outer, const Ellipse &inner, int width);

  /// False when memory ran out.
  explicit operator bool() const { return static_cast<bool>(area_); }

  /// Lays the colour over row y of opaque pixels, by how much of each is covered.
  void drawRow(int y, _color_t color, _color_t *row);

private:
  void addDisc(const Ellipse &disc, double y, int sign);

  Ellipse outer_, inner_;
  int width_;
  Scratch<int32_t> area_; ///< what each pixel is covered more than the one before, of 4096
};

} // namespace zol
