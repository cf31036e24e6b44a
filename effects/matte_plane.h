// A matte between its making and its use, for effects that shrink, grow or soften mattes.
#pragma once

#include "frame/host.h"
#include "frame/values.h"
#include "kernels/blur/soften.h"
#include "kernels/color/wide.h"
#include "kernels/matte/matte_rows.h"
#include "kernels/matte/plane_erosion.h"
#include "kernels/simd/scratch.h"

#include <cmath>

namespace zol {

/// Bytes of a whole picture, row by row, or of one row that stands for all of them in turn. Each step asks
/// the host after each row of each of its passes, and is false when the host wants to stop or, after a
/// message, when memory runs out.
class MattePlane {
public:
  /// Not empty. Tests as false afterwards when memory ran out.
  MattePlane(t_ZoHostInfo *host, int width, int height, bool whole)
      : host_(host), width_(width), height_(height), wide_(size_t(width) * size_t(whole ? height : 1)),
        first_(reinterpret_cast<uint8_t *>(wide_.data())) {
    if (wide_ && whole) {
      first_ += size_t(width) * size_t(height);
      pitch_ = width;
    }
  }

  explicit operator bool() const { return static_cast<bool>(wide_); }
  [[nodiscard]] uint8_t *row(int y) const { return first_ + y * pitch_; }

  // Of whole mattes. Lengths are in pixels across.

  /// What is opaque shrinks, or below 0 grows. Before soften() alone.
  [[nodiscard]] bool shrink(double length) const {
    const double radius = std::abs(length);
    const PlaneErosion erosion(static_cast<float>(radius), static_cast<float>(radius * pixelAspect(host_)),
                               width_, height_);
    if (erosion.isCopy())
      return true;
    if (!erosion)
      return lacksMemory();
    if (length < 0)
      invert();
    const bool done = forEachRow(host_, height_, [&](int y) {
      if (y % PlaneErosion::kBandRows == 0)
        erosion.alongBand(row(0), y);
    });
    if (!done)
      return false;
    erosion.down(row(0));
    if (length < 0)
      invert();
    return true;
  }

  /// Bytes make room for wide values without more memory: at first they stand in the upper half of all, and
  /// in the end in the lower half of each row.
  [[nodiscard]] bool soften(double length) {
    const Softening softening(length, length * pixelAspect(host_), width_, height_);
    if (softening.isCopy())
      return true;
    if (!softening)
      return lacksMemory();
    const auto wideRow = [&](int y) { return wide_.data() + ptrdiff_t{y} * width_; };
    const auto widen = ZOL_SELECT(widenRow);
    const auto narrow = ZOL_SELECT(wideToAlpha);
    const bool done = forEachRow(host_, height_, [&](int y) { widen(row(y), wideRow(y), width_); }) &&
                      softening(wide_.data(), [this] { return !aborted(host_); });
    if (!done)
      return false;
    first_ = reinterpret_cast<uint8_t *>(wide_.data());
    pitch_ = ptrdiff_t{2} * width_;
    return forEachRow(host_, height_,
                      [&](int y) { narrow(wideRow(y), Rounding::nearest(), row(y), width_); });
  }

private:
  void invert() const {
    const auto invert = ZOL_SELECT(invertRow);
    for (int y = 0; y < height_; ++y)
      invert(row(y), width_);
  }
  [[nodiscard]] bool lacksMemory() const {
    showMemoryError(host_);
    return false;
  }

  t_ZoHostInfo *host_;
  int width_, height_;
  Scratch<uint16_t> wide_;
  uint8_t *first_;      ///< the first row, in the place of wide values
  ptrdiff_t pitch_ = 0; ///< from row to row
};

} // namespace zol
