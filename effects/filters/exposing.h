// Pictures put together as a shutter takes them in.
#pragma once

#include "frame/canvas.h"
#include "frame/host.h"
#include "kernels/motion/exposure.h"
#include "kernels/motion/frame_average.h"
#include "kernels/simd/scratch.h"

namespace zol {

/// The average over the smallest area that holds all of the pictures; null as renders answer it.
inline pic *averageOf(t_ZoHostInfo *host, const Exposures &exposures) {
  if (exposures.count == 1)
    return copyOf(host, exposures.pictures[0]);
  Area area = Area::of(*exposures.pictures[0]);
  for (int i = 1; i < exposures.count; ++i)
    area = unionOf(area, Area::of(*exposures.pictures[i]));
  OwnedPic out(host, createAt(host, area));
  if (!out)
    return nullptr;
  const int width = area.width();
  const Scratch<_color_t> padded(static_cast<size_t>(width) * static_cast<size_t>(exposures.count));
  if (!padded) {
    showMemoryError(host);
    return nullptr;
  }
  const auto averageRow = ZOL_SELECT(averageRows);
  const bool done = forEachRow(host, area.height(), [&](int y) {
    const _color_t *rows[Exposures::kMost];
    for (int i = 0; i < exposures.count; ++i)
      rows[i] = canvasRow(area, exposures.pictures[i], area.top + y, padded.data() + ptrdiff_t{i} * width);
    averageRow(rows, exposures.weights, exposures.count, out->Pixels + ptrdiff_t{y} * width, width);
  });
  return done ? out.release() : nullptr;
}

} // namespace zol
