// A soft blur of any size in both directions, over a plane of 16-bit values.
#pragma once

#include "kernels/blur/soften_lines.h"
#include "kernels/simd/scratch.h"

#include <cstdint>

namespace zol {

/// Softens a plane in place by three boxes down its columns and then three along its rows, each rounded to
/// the nearest: as soft as a tent of the same radius, but round, without a step while the radius moves, and
/// at one price for every radius. At the edges the outermost values repeat, so that what is even stays even.
class Softening {
public:
  /// Radii in pixels, of any size; 0, less or NaN does nothing in its direction. The plane is not empty.
  /// Tests as false afterwards when memory ran out.
  Softening(double horizontalRadius, double verticalRadius, int width, int height);

  [[nodiscard]] bool isCopy() const { return along_.isCopy() && down_.isCopy(); }
  explicit operator bool() const { return static_cast<bool>(lines_); }

  /// Softens a plane, row upon row; any number of planes one after the other. Asks goesOn() after each row of
  /// both directions, and gives up with false as soon as it answers false.
  template <class GoesOn> bool operator()(uint16_t *plane, GoesOn goesOn) const {
    for (int y = 0; !down_.isCopy() && y < height_; ++y) {
      downStrips(plane, y);
      if (!goesOn())
        return false;
    }
    for (int y = 0; !along_.isCopy() && y < height_; ++y) {
      if (y % kSoftLanes == 0)
        alongBand(plane, y);
      if (!goesOn())
        return false;
    }
    return true;
  }

private:
  void downStrips(uint16_t *plane, int turn) const;
  void softenFew(uint16_t *columns, int lanes) const;
  void alongBand(uint16_t *plane, int top) const;
  [[nodiscard]] uint16_t *work(int count) const { return lines_.data() + ptrdiff_t{count} * kSoftLanes; }

  int width_, height_;
  SoftBox along_, down_;
  Scratch<uint16_t>
      lines_; ///< few columns or rows transposed, kSoftLanes values each, and twice as many to work in
};

} // namespace zol
