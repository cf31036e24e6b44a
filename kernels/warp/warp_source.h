// What the resampler reads.
#pragma once

#include "frame/picture.h"

namespace zol {

/// What lies beyond a source's edges.
enum class WarpBeyond {
  extend, ///< its outermost pixels
  mirror, ///< itself turned over: before the first pixel the first
  tile,   ///< itself again
};

struct WarpSource {
  const _color_t *pixels;
  int step, width, height; ///< in pixels, step from row to row
  bool opaque = false;     ///< whether all alphas count as 255
  WarpBeyond beyond = WarpBeyond::extend;

  /// Of a picture; opaque where it is.
  static WarpSource of(const pic &picture);
  static WarpSource of(const _color_t *pixels, int step, int width, int height);
};

} // namespace zol
