#include "tests/kernels/color_probe.h"

#include "kernels/color/luma_lanes.h"

namespace zol::ZOL_LEVEL {

void withLumas(const uint32_t *colors, const uint32_t *lumas, uint32_t *out) {
  constexpr int kWords = kLanes<U32xN>;
  for (int i = 0; i < 64; i += 2 * kWords) {
    const auto pair = [i](const uint32_t *from, int k) { return load<U32xN>(from + i + k * kWords); };
    const RgbLanes moved =
        withLuma(channelsOf(pair(colors, 0), pair(colors, 1)), channelOf(pair(lumas, 0), pair(lumas, 1), 0));
    store(out + i, firstPixels(moved));
    store(out + i + kWords, secondPixels(moved));
  }
}

} // namespace zol::ZOL_LEVEL
