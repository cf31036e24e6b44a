// Works on alpha alone, taken out of the picture and put back when all is done: along the rows a band at a
// time, transposed, so that both directions are one filter over lines; then down the columns.

#include "kernels/exports/alpha_shrink.h"

#include "frame/host.h"
#include "kernels/matte/erode_lines.h"
#include "kernels/simd/alpha_plane.h"
#include "kernels/simd/scratch.h"
#include "kernels/simd/transpose.h"

#include <algorithm>

namespace {

using zol::ErodeReach;
using zol::Scratch;

constexpr int kLanes = zol::kErodeMaxLanes;

/// A radius in lines of which there are `count`; beyond the last of them it reaches nothing new.
ErodeReach reachOf(float radius, int count) {
  if (!(radius > 0))
    return {0, 0};
  if (radius >= static_cast<float>(count - 1))
    return {count - 1, 0};
  const int whole = static_cast<int>(radius);
  return {whole, static_cast<int>((radius - static_cast<float>(whole)) * 256 + 0.5F)};
}

bool reaches(const ErodeReach &reach) { return reach.whole != 0 || reach.part != 0; }

} // namespace

ZOL_EXPORT int AlphaShrink(t_ZoHostInfo *host, pic *picture, float horizontalRadius, float verticalRadius) {
  const int width = picture->Width;
  const int height = picture->Height;
  if (width <= 0 || height <= 0)
    return 1;
  const ErodeReach along = reachOf(horizontalRadius, width);
  const ErodeReach down = reachOf(verticalRadius, height);
  if (!reaches(along) && !reaches(down))
    return 1;

  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
  const Scratch<uint8_t> alpha(pixels);
  const Scratch<uint8_t> columns(static_cast<size_t>(std::max(2 * width, height)) * kLanes);
  const Scratch<uint8_t> work(std::max(along.workLines(), down.workLines()) * kLanes);
  if (!alpha || !columns || !work)
    return 0;
  zol::takeAlpha(picture->Pixels, pixels, alpha.data());

  const auto erode = ZOL_SELECT(erodeLines);
  uint8_t *const erodedColumns = columns.data() + static_cast<size_t>(width) * kLanes;
  const bool done = zol::forEachRow(host, height, [&](int y) {
    if (y % kLanes != 0 || !reaches(along))
      return;
    const int rows = std::min(kLanes, height - y);
    uint8_t *const band = alpha.data() + static_cast<size_t>(y) * static_cast<size_t>(width);
    zol::transpose(band, width, rows, width, columns.data(), kLanes);
    erode(columns.data(), kLanes, width, rows, along, work.data(), erodedColumns, kLanes);
    zol::transpose(erodedColumns, kLanes, width, rows, band, width);
  });
  if (!done)
    return 0;
  if (!reaches(down)) {
    zol::putAlpha(picture->Pixels, alpha.data(), pixels, picture->Pixels);
    return 1;
  }
  for (int x = 0; x < width; x += kLanes) {
    const int lanes = std::min(kLanes, width - x);
    erode(alpha.data() + x, width, height, lanes, down, work.data(), columns.data(), kLanes);
    for (int y = 0; y < height; ++y) {
      _color_t *const row = picture->Pixels + ptrdiff_t{y} * width + x;
      zol::putAlpha(row, columns.data() + ptrdiff_t{y} * kLanes, static_cast<size_t>(lanes), row);
    }
  }
  return 1;
}
