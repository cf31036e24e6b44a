// The shadow that a plane of alphas casts, row by row.
#pragma once

#include "frame/zol.h"
#include "kernels/sampling/sample.h"
#include "kernels/simd/scratch.h"

#include <cstdint>

namespace zol {

/// How a shadow looks. 4096 = 1.0.
struct ShadowLook {
  int right = 0, down = 0; ///< how far from what casts it, in sixteenths of a pixel
  int gain = 4096;         ///< by which alphas grow before they are limited to 1.0; up to 8.0
  int opacity = 4096;
  _color_t color = {}; ///< its alpha is not looked at
  bool dithers = false;
};

/// Tests as false when memory ran out.
class ShadowRows {
public:
  /// A plane of wide alphas of width x height, not empty, whose outermost values go on beyond it. It begins
  /// at (left, top) of the frame.
  ShadowRows(const uint16_t *alphas, int width, int height, int left, int top, const ShadowLook &look);

  explicit operator bool() const { return static_cast<bool>(values_); }

  /// Writes row y of the plane, 0 to height - 1; the colours of `hidden` where there is no shadow.
  void cast(int y, const _color_t *hidden, _color_t *out);

private:
  const uint16_t *prepared(int y);

  const uint16_t *alphas_;
  int width_, height_, left_, top_;
  ShadowLook look_;
  Sixteenths x_, y_;         ///< from a pixel's place to where its shadow is taken from
  Scratch<uint16_t> values_; ///< two prepared rows, of a value more than the plane's, and what they give
  int held_[2] = {-1, -1};   ///< which rows of the plane they are
};

} // namespace zol
