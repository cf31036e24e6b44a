// The light around shapes that are painted over an input.
#pragma once

#include "effects/geometry/painting.h"
#include "kernels/blur/soften.h"
#include "kernels/matte/matte_rows.h"

namespace zol {

struct Glow {
  double radius = 0; ///< in pixels across; 0: none
  int gain = 256;    ///< 256 = 1.0, at most 16 times as much
  unsigned paint = 0;
};

/// The pixels around the mask's that are not 0 by so much, within the mask.
inline Area litArea(const Coverage &mask, int width, int height, int across, int down) {
  Area lit{width, height, 0, 0};
  for (int y = 0; y < height; ++y) {
    const uint8_t *const row = mask.row(y);
    const auto isLit = [](uint8_t byte) { return byte != 0; };
    const int left = static_cast<int>(std::find_if(row, row + width, isLit) - row);
    if (left == width)
      continue;
    int right = width;
    while (row[right - 1] == 0)
      --right;
    lit = unionOf(lit, {left, y, right, y + 1});
  }
  return intersectionOf({lit.left - across, lit.top - down, lit.right + across, lit.bottom + down},
                        Area::ofSize(width, height));
}

/// Lays the coverage's mask, softened and times the gain, in the glow's paint. False when the host wants to
/// stop or, after a message, when memory runs out.
inline bool layGlow(t_ZoHostInfo *host, const pic &ground, const Coverage &coverage, const Glow &glow) {
  if (!(glow.radius > 0) || !isOpaqueAtAll(glow.paint))
    return true;
  const double down = glow.radius * pixelAspect(host);
  const auto reach = [](double radius) { return static_cast<int>(std::min(1.25 * radius, 1e6)) + 4; };
  const Area lit = litArea(coverage, ground.Width, ground.Height, reach(glow.radius), reach(down));
  if (lit.isEmpty())
    return true;
  const int width = lit.width(), height = lit.height();
  const Scratch<uint16_t> light(static_cast<size_t>(width) * static_cast<size_t>(height));
  const Scratch<uint8_t> mask(static_cast<size_t>(width));
  const Softening soften(glow.radius, down, width, height);
  if (!light || !mask || !soften) {
    showMemoryError(host);
    return false;
  }
  const auto row = [&](int y) { return light.data() + ptrdiff_t{y} * width; };
  const auto widen = ZOL_SELECT(widenRow);
  for (int y = 0; y < height; ++y)
    widen(coverage.row(lit.top + y) + lit.left, row(y), width);
  if (!soften(light.data(), [host] { return !aborted(host); }))
    return false;
  const auto narrow = ZOL_SELECT(amplifyRow);
  const auto lay = ZOL_SELECT(layColorOnBytes);
  return forEachRow(host, height, [&](int y) {
    narrow(row(y), glow.gain, mask.data(), width);
    lay(ground.Pixels + ptrdiff_t{lit.top + y} * ground.Width + lit.left, mask.data(), width, glow.paint);
  });
}

} // namespace zol
