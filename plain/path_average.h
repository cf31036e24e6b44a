// The blur along paths in its plain form: pixel by pixel, sample by sample.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zol::plain {

/// A direction, a zoom or a turn, as `kind` 0, 1 or 2 has it: pixels across and the way of each to the right
/// and down, the scale of one end over the other, or degrees from end to end.
struct Path {
  int kind;
  double length, right, down, scale, degrees, aspect;
  double centreX, centreY; ///< pixels from the upper left corner
};

inline int pathSamples(const Path &path, int width, int height) {
  const double x = std::max(path.centreX, width - path.centreX);
  const double y = std::max(path.centreY, height - path.centreY), radius = std::sqrt(x * x + y * y);
  const double turned = radius * std::abs(path.degrees) * 3.14159265358979323846 / 180;
  const double scaled = radius * (std::sqrt(path.scale) - 1 / std::sqrt(path.scale));
  const double length = path.kind == 0 ? path.length : path.kind == 1 ? scaled : turned;
  int k = 2;
  while (k < 12 && k * k * k < length)
    ++k;
  return k;
}

/// One coordinate of where a pixel is taken from, in sixteenths.
inline int64_t pathPosition(int64_t centre, double ofX, double ofY, int64_t dx, int64_t dy, double shift) {
  const auto entry = [](double v) {
    return int64_t(std::floor(std::clamp(v, -31.0, 31.0) * 16777216 + 0.5));
  };
  return centre + ((entry(ofX) * dx + entry(ofY) * dy + 8388608) >> 24) +
         int64_t(std::floor(16 * shift + 0.5));
}

/// Of pixels of four wide values each.
inline std::vector<uint16_t> pathAverage(std::vector<uint16_t> pixels, int width, int height,
                                         const Path &path) {
  const int k = pathSamples(path, width, height);
  const auto cx = int64_t(std::floor(16 * path.centreX - 7.5)),
             cy = int64_t(std::floor(16 * path.centreY - 7.5));
  for (int pass = 0; pass < 3; ++pass) {
    const std::vector<uint16_t> before = pixels;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        int64_t sums[4] = {};
        for (int j = 0; j < k; ++j) {
          const double s = (j - (k - 1) / 2.0) * std::pow(k, pass - 3);
          const double scale = path.kind == 1 ? std::pow(path.scale, s) : 1;
          const double angle = path.kind == 2 ? path.degrees * s * 3.14159265358979323846 / 180 : 0;
          const double length = path.kind == 0 ? path.length * s : 0;
          const double c = std::cos(angle) * scale, sine = std::sin(angle);
          const int64_t dx = 16 * x - cx, dy = 16 * y - cy;
          const int64_t px = pathPosition(cx, c, -sine / path.aspect, dx, dy, length * path.right);
          const int64_t py = pathPosition(cy, sine * path.aspect, c, dx, dy, length * path.down);
          for (int corner = 0; corner < 4; ++corner) {
            const int right = corner % 2, below = corner / 2;
            const int64_t fx = right ? px & 15 : 16 - (px & 15), fy = below ? py & 15 : 16 - (py & 15);
            const int64_t sx = std::clamp<int64_t>((px >> 4) + right, 0, width - 1);
            const int64_t sy = std::clamp<int64_t>((py >> 4) + below, 0, height - 1);
            for (int channel = 0; channel < 4; ++channel)
              sums[channel] += fx * fy * before[size_t(4 * (sy * width + sx) + channel)];
          }
        }
        for (int channel = 0; channel < 4; ++channel)
          pixels[size_t(4 * (y * width + x) + channel)] = uint16_t((sums[channel] + 128 * k) / (256 * k));
      }
  }
  return pixels;
}

} // namespace zol::plain
