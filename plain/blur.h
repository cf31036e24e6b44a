// The blur as its definition reads: every weight, every pixel, no running sums.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zol::plain {

/// Weights by distance, 0 to the reach inclusive.
inline std::vector<int32_t> blurWeights(double radius) {
  if (!(radius > -1))
    return {256};
  double reach = std::trunc(radius);
  if (radius > reach)
    reach += 1;
  const int r = static_cast<int>(std::min(reach, 100.0));
  if (r == 0)
    return {256};
  std::vector<int32_t> weights;
  for (int d = 0; d <= r; ++d)
    weights.push_back(d > radius ? 0 : static_cast<int32_t>(256.0 - 256 * d / radius));
  return weights;
}

/// Blurs kChannels channels of a plane whose samples lie kChannels apart, starting `channel` bytes in.
template <int kChannels>
inline void blurChannels(const uint8_t *src, int width, int height, int step, double radius, uint8_t *dst) {
  const std::vector<int32_t> w = blurWeights(radius);
  const int r = static_cast<int>(w.size()) - 1;
  std::vector<int32_t> row(static_cast<size_t>(width) * kChannels);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      int32_t sum[kChannels] = {};
      int32_t weights = 0;
      for (int k = std::max(0, y - r); k <= std::min(height - 1, y + r); ++k) {
        const int32_t weight = w[static_cast<size_t>(std::abs(k - y))];
        const uint8_t *pixel = src + (static_cast<size_t>(k) * width + x) * step;
        for (int c = 0; c < kChannels; ++c)
          sum[c] += weight * pixel[c];
        weights += weight;
      }
      for (int c = 0; c < kChannels; ++c)
        row[static_cast<size_t>(x) * kChannels + c] = sum[c] / weights;
    }
    for (int x = 0; x < width; ++x) {
      int32_t sum[kChannels] = {};
      int32_t weights = 0;
      for (int j = std::max(0, x - r); j <= std::min(width - 1, x + r); ++j) {
        const int32_t weight = w[static_cast<size_t>(std::abs(j - x))];
        for (int c = 0; c < kChannels; ++c)
          sum[c] += weight * row[static_cast<size_t>(j) * kChannels + c];
        weights += weight;
      }
      uint8_t *pixel = dst + (static_cast<size_t>(y) * width + x) * step;
      for (int c = 0; c < kChannels; ++c)
        pixel[c] = static_cast<uint8_t>(sum[c] / weights);
    }
  }
}

inline void blurImage(const _color_t *src, int width, int height, double radius, _color_t *dst) {
  blurChannels<4>(&src->b, width, height, 4, radius, &dst->b);
}

inline void blurAlpha(const _color_t *src, int width, int height, double radius, _color_t *dst) {
  std::copy_n(src, static_cast<size_t>(width) * height, dst);
  blurChannels<1>(&src->a, width, height, 4, radius, &dst->a);
}

} // namespace zol::plain
