#include "host/services/resample.h"

#include "kernels/warp/warp_row.h"

namespace zol::host {

void resample(const PixelRows &src, _color_t *dst, int dstStep, int dstWidth, int dstHeight) {
  if (src.width <= 0 || src.height <= 0 || dstWidth <= 0 || dstHeight <= 0)
    return;
  const WarpSource source = WarpSource::of(src.pixels, src.step, src.width, src.height);
  const Projection toSource = Projection::scaled(static_cast<double>(src.width) / dstWidth,
                                                 static_cast<double>(src.height) / dstHeight);
  const WarpMap map(toSource, src.width, src.height);
  for (int y = 0; y < dstHeight; ++y)
    warpPixels(source, map, y, 0, dstWidth, WarpFilter::smooth, dst + ptrdiff_t{y} * dstStep);
}

} // namespace zol::host
