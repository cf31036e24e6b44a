#pragma once

#include "frame/zol.h"

namespace zol::host {

/// Rows of `width` pixels, `step` pixels apart.
struct PixelRows {
  const _color_t *pixels;
  int step, width, height;
};

/// Scales with linear interpolation between the pixels' centres; the outermost pixels extend outwards.
/// Does nothing where a side is empty.
void resampleLinear(const PixelRows &src, _color_t *dst, int dstStep, int dstWidth, int dstHeight);

} // namespace zol::host
