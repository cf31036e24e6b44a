// A shape filled into an area of the frame, with exact coverage of pixel edges and the even-odd rule.
#pragma once

#include "frame/picture.h"
#include "kernels/shape/shape_crossings.h"

namespace zol {

class ShapeFill {
public:
  /// Finds where the segments cross the lines between the area's rows and columns. Tests as false afterwards
  /// when memory ran out.
  ShapeFill(const ShapeSegments &segments, const Area &area);

  explicit operator bool() const { return columns_ && *columns_; }

  /// Lines between rows, then lines between columns. Each is to be ordered once before anything is blended.
  [[nodiscard]] int lineCount() const;
  void orderLine(int index);

  /// Blends the colour, 0xAARRGGBB, into the area's pixels by the shape's coverage, whose product with the
  /// colour's alpha becomes theirs. `edges` has room for 2 * (width + 1) bytes. Once only.
  void blend(_color_t *pixels, uint8_t *edges, unsigned colour);

private:
  Area area_;
  CrossingLines rows_;
  std::optional<CrossingLines> columns_; ///< sought once there was memory for the rows
};

} // namespace zol
