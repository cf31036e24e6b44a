// Channels of pictures put together from others.
#pragma once

#include "frame/zol.h"
#include "kernels/simd/levels.h"

namespace zol {

/// What a channel takes; the first four stand as in a pixel's bytes.
enum class ChannelSource { blue, green, red, alpha, luminance, none, full };

struct PixelRoute {
  ChannelSource source = ChannelSource::none;
  bool inverts = false;
  int weight = 0; ///< of the second picture, 4096 = all
};

/// The rows that a channel is taken of; none and full take nothing, and a weight of 0 nothing of the second.
struct RoutedRows {
  const _color_t *first = nullptr, *second = nullptr;
};

/// Writes every channel of a row: x of the first picture and y of the second give (x (4096 - weight) +
/// y weight) >> 12, inverted 255 less that. Routes and rows in the order of a pixel's bytes. Pixels whose
/// alpha becomes 0 are 0.
ZOL_LEVELS_TO(avx2, void routeChannels(const PixelRoute (&routes)[4], const RoutedRows (&rows)[4],
                                       _color_t *out, int count);)

} // namespace zol
