// Erosion in both directions, over a plane of bytes.
#pragma once

#include "kernels/matte/erode_lines.h"
#include "kernels/simd/scratch.h"

namespace zol {

/// Erodes a plane in place, first along its rows, a band at a time, then down its columns. Each byte becomes
/// the least within the radius; a radius between two whole ones gives what lies between their results.
class PlaneErosion {
public:
  static constexpr int kBandRows = kErodeMaxLanes;

  /// Radii in pixels; 0, less or NaN does nothing in its direction. The plane is not empty. Unless nothing is
  /// to be done, tests as false afterwards when memory ran out.
  PlaneErosion(float horizontalRadius, float verticalRadius, int width, int height);

  [[nodiscard]] bool isCopy() const { return !along_.reaches() && !down_.reaches(); }
  explicit operator bool() const { return columns_ && work_; }

  /// Erodes the rows of the band that begins at row `top`, or as many as there are, along them.
  void alongBand(uint8_t *plane, int top) const;
  /// Erodes the whole plane down its columns.
  void down(uint8_t *plane) const;

private:
  int width_, height_;
  ErodeReach along_, down_;
  Scratch<uint8_t> columns_; ///< a band transposed, before and after; or columns side by side
  Scratch<uint8_t> work_;
};

} // namespace zol
