// The soft blur as its definition reads: every box, every value of it, no running sums.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zol::plain {

/// Three boxes over `count` values, `step` apart.
inline void softenLine(uint16_t *line, int count, int step, double radius) {
  const double r = radius > 0 ? std::min(radius, 65536.0) : 0;
  const double v = r * r / 18;
  const int m = static_cast<int>((std::sqrt(1 + 12 * v) - 1) / 2);
  const double f = (2.0 * m + 1) * (m * (m + 1.0) - 3 * v) / (6 * (v - (m + 1.0) * (m + 1.0)));
  int64_t q = 256, part = 0, w = 0;
  for (;; q /= 2) {
    part = static_cast<int64_t>(static_cast<double>(q) * f + 0.5);
    w = q * (2 * m + 1) + 2 * part;
    if (w <= 65536)
      break;
  }
  for (int box = 0; box < 3; ++box) {
    std::vector<int64_t> before(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
      before[static_cast<size_t>(i)] = line[i * step];
    const auto at = [&](int i) { return before[static_cast<size_t>(std::clamp(i, 0, count - 1))]; };
    for (int i = 0; i < count; ++i) {
      int64_t sum = 0;
      for (int d = -m; d <= m; ++d)
        sum += at(i + d);
      line[i * step] = static_cast<uint16_t>((q * sum + part * (at(i - m - 1) + at(i + m + 1)) + w / 2) / w);
    }
  }
}

inline void soften(uint16_t *plane, int width, int height, double horizontalRadius, double verticalRadius) {
  for (int x = 0; x < width; ++x)
    softenLine(plane + x, height, width, verticalRadius);
  for (int y = 0; y < height; ++y)
    softenLine(plane + y * width, width, 1, horizontalRadius);
}

} // namespace zol::plain
