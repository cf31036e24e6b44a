// Clouds in their plain form: noise of three dimensions, one pixel at a time. 4096 = 1.0.
#pragma once

#include "plain/spread.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace zol::plain {

struct CloudSettings {
  uint32_t seed = 0;
  int octaves = 6, roughness = 2048;
  double cellWidth = 1, cellHeight = 1, right = 0, down = 0; ///< pixels
  double evolution = 0;
  int cycle = 0, kind = 0;
};

inline uint32_t hashed(uint32_t s, uint32_t a, uint32_t b, uint32_t c) {
  return mixed(mixed(mixed(mixed(s) + a) + b) + c);
}

inline int fade(int64_t f) { return static_cast<int>(f * f * f * (f * (6 * f - 61440) + 167772160) >> 48); }

inline int blend(int a, int b, int share) { return a + ((b - a) * share >> 12); }

/// A lattice point's direction.
inline void direction(uint32_t hash, int out[3]) {
  static constexpr int kEdges[16][3] = {
      {1, 1, 0}, {-1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, {1, 0, 1}, {-1, 0, 1}, {1, 0, -1}, {-1, 0, -1},
      {0, 1, 1}, {0, -1, 1}, {0, 1, -1}, {0, -1, -1}, {1, 1, 0}, {0, -1, 1}, {-1, 1, 0}, {0, -1, -1}};
  std::copy_n(kEdges[hash >> 28], 3, out);
}

/// One octave at a place of its lattice.
inline int octaveNoise(const CloudSettings &clouds, int k, int placeX, int placeY) {
  const int ahead = static_cast<int>(std::floor(clouds.evolution * (k + 1) * 4096)), w = ahead & 4095;
  const auto slice = [&](int i) {
    return static_cast<uint32_t>(clouds.cycle > 0 ? ((ahead >> 12) + i) % (clouds.cycle * (k + 1))
                                                  : (ahead >> 12) + i);
  };
  int corners[2][2];
  for (int j = 0; j < 2; ++j)
    for (int i = 0; i < 2; ++i) {
      int near[3], far[3], merged[3];
      const auto y = static_cast<uint32_t>((placeY >> 12) + j), x = static_cast<uint32_t>((placeX >> 12) + i);
      direction(hashed(clouds.seed, 16 * slice(0) + uint32_t(k), y, x), near);
      direction(hashed(clouds.seed, 16 * slice(1) + uint32_t(k), y, x), far);
      for (int d = 0; d < 2; ++d)
        merged[d] = blend(4096 * near[d], 4096 * far[d], fade(w));
      merged[2] = blend(near[2] * w, far[2] * (w - 4096), fade(w));
      corners[j][i] = (merged[0] * ((placeX & 4095) - 4096 * i) >> 12) +
                      (merged[1] * ((placeY & 4095) - 4096 * j) >> 12) + merged[2];
    }
  const int fadeX = fade(placeX & 4095);
  const int n = blend(blend(corners[0][0], corners[0][1], fadeX), blend(corners[1][0], corners[1][1], fadeX),
                      fade(placeY & 4095));
  return clouds.kind == 0 ? n : clouds.kind == 1 ? 2 * std::abs(n) - 2048 : 2048 - 2 * std::abs(n);
}

/// The place on the ramp from sky to cloud, of 4096.
inline int cloudPlace(const CloudSettings &clouds, int width, int height, int x, int y, int bias, int gain) {
  int weights[10], sum = 0;
  for (int k = 0; k < clouds.octaves; ++k)
    sum += weights[k] = k == 0 ? 4096 : weights[k - 1] * clouds.roughness >> 12;
  int v = 0;
  for (int k = 0; k < clouds.octaves; ++k) {
    const double cellWidth = clouds.cellWidth / (1 << k), cellHeight = clouds.cellHeight / (1 << k);
    const int weight = static_cast<int>(weights[k] * 4096 / sum * std::clamp((cellWidth - 2) / 2, 0.0, 1.0));
    if (weight == 0)
      continue;
    const auto place = [&](int at, int size, double cell, double moved, uint32_t side) {
      return static_cast<int>(std::floor(((at + 0.5 - size / 2.0) / cell - moved / cell) * 4096)) +
             static_cast<int>(hashed(clouds.seed, uint32_t(k), side, 0) & 0xFFFFF);
    };
    v += weight * octaveNoise(clouds, k, place(x, width, cellWidth, clouds.right, 1),
                              place(y, height, cellHeight, clouds.down, 2));
  }
  v = std::clamp(v >> 12, -4096, 4096);
  return std::clamp(2048 + ((v + bias) * gain >> 12), 0, 4096);
}

} // namespace zol::plain
