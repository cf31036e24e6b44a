// Cells and lines that are laid out from the middle of a picture.
#pragma once

namespace zol {

/// One side of a picture, cut into cells.
struct Cells {
  int size;      ///< of the side, in pixels
  double cell;   ///< at least one pixel
  int lineWidth; ///< at least one pixel

  /// Whether the pixel lies in an odd cell, that right or below of the middle being even.
  [[nodiscard]] bool isOdd(int at) const;
  /// Whether it lies on a line between cells.
  [[nodiscard]] bool isOnLine(int at) const;
};

} // namespace zol
