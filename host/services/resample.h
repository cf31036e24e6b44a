#pragma once

#include "frame/zol.h"

namespace zol::host {

/// Rows of `width` pixels, `step` pixels apart.
struct PixelRows {
  const _color_t *pixels;
  int step, width, height;
};

/// Scales smoothly, without aliasing where it shrinks; the outermost pixels extend outwards. Colours are
/// weighed by their alpha, and where that is 0 the pixel is 0. Does nothing where a side is empty.
void resample(const PixelRows &src, _color_t *dst, int dstStep, int dstWidth, int dstHeight);

} // namespace zol::host
