// The aureole's glow in its plain form: whole levels, channel by channel.
#pragma once

#include "frame/zol.h"
#include "plain/wide.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace zol::plain {

/// Pixels of four wide values each.
struct Level {
  int width, height;
  std::vector<uint16_t> values = std::vector<uint16_t>(size_t(4) * size_t(width) * size_t(height));

  uint16_t &at(int x, int y, int c) {
    return values[(size_t(y) * size_t(width) + size_t(x)) * 4 + size_t(c)];
  }
  /// Its edges repeated outside.
  [[nodiscard]] int near(int x, int y, int c) const {
    const int cx = std::clamp(x, 0, width - 1), cy = std::clamp(y, 0, height - 1);
    return values[(size_t(cy) * size_t(width) + size_t(cx)) * 4 + size_t(c)];
  }
};

struct Glow {
  bool outline;
  double threshold, radius, falloff, intensity; ///< the radius in pixels
  _color_t color;
  double tint;
  int mode; ///< screen, add, behind
  bool only;
};

inline int glow4096(double share) { return static_cast<int>(4096 * share); }

inline void lightOf(const _color_t &p, const Glow &glow, uint16_t *out) {
  const int threshold = static_cast<int>(255 * glow.threshold), luma = (54 * p.r + 183 * p.g + 19 * p.b) >> 8;
  const int w = glow.outline ? 4096 : luma > threshold ? (luma - threshold) * 4096 / (255 - threshold) : 0;
  const int alpha = 255 * p.a * w >> 12, y = glow.outline ? alpha : luma * p.a * w >> 12;
  const int channels[3] = {p.b, p.g, p.r}, colors[3] = {glow.color.b, glow.color.g, glow.color.r};
  for (int c = 0; c < 3; ++c) {
    const int light = channels[c] * p.a * w >> 12;
    out[c] = static_cast<uint16_t>(light + ((y * colors[c] / 255 - light) * glow4096(glow.tint) >> 12));
  }
  out[3] = static_cast<uint16_t>(alpha);
}

inline Level halved(const Level &in) {
  Level columns{in.width, (in.height + 1) / 2}, out{(in.width + 1) / 2, columns.height};
  for (int c = 0; c < 4; ++c) {
    for (int y = 0; y < columns.height; ++y)
      for (int x = 0; x < columns.width; ++x)
        columns.at(x, y, c) =
            static_cast<uint16_t>((in.near(x, 2 * y - 1, c) + 3 * in.near(x, 2 * y, c) +
                                   3 * in.near(x, 2 * y + 1, c) + in.near(x, 2 * y + 2, c) + 4) >>
                                  3);
    for (int y = 0; y < out.height; ++y)
      for (int x = 0; x < out.width; ++x)
        out.at(x, y, c) =
            static_cast<uint16_t>((columns.near(2 * x - 1, y, c) + 3 * columns.near(2 * x, y, c) +
                                   3 * columns.near(2 * x + 1, y, c) + columns.near(2 * x + 2, y, c) + 4) >>
                                  3);
  }
  return out;
}

inline Level doubled(const Level &in, int width, int height) {
  Level columns{in.width, height}, out{width, height};
  const auto beside = [](int i) { return i / 2 + (i % 2 == 0 ? -1 : 1); };
  for (int c = 0; c < 4; ++c)
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < in.width; ++x)
        columns.at(x, y, c) =
            static_cast<uint16_t>((3 * in.near(x, y / 2, c) + in.near(x, beside(y), c) + 2) >> 2);
      for (int x = 0; x < width; ++x)
        out.at(x, y, c) =
            static_cast<uint16_t>((3 * columns.near(x / 2, y, c) + columns.near(beside(x), y, c) + 2) >> 2);
    }
  return out;
}

/// Parts of the levels 0, 1 and so on, 1 in all.
inline std::vector<double> glowProfile(double radius, double falloff) {
  const auto steps = static_cast<int>(4096 * std::max(0.0, std::log2(0.577 * radius)));
  std::vector<double> parts(size_t(steps / 4096) + 2);
  for (int i = 0; i < 2; ++i) {
    const int widest = steps / 4096 + i;
    const double share = i == 1 ? steps % 4096 / 4096.0 : 1 - steps % 4096 / 4096.0;
    double sum = 0;
    for (int level = 1; level <= widest; ++level)
      sum += std::pow(1 - falloff, widest - level);
    for (int level = 1; level <= widest; ++level)
      parts[size_t(level)] += share * std::pow(1 - falloff, widest - level) / sum;
    if (widest == 0)
      parts[0] += share;
  }
  if (steps % 4096 == 0)
    parts.pop_back();
  return parts;
}

inline Level spread(const Level &light, double radius, double falloff) {
  const std::vector<double> parts = glowProfile(radius, falloff);
  std::vector<Level> levels = {light};
  while (levels.size() < parts.size())
    levels.push_back(halved(levels.back()));
  Level out = levels.back();
  double sum = parts.back();
  for (size_t i = levels.size() - 1; i-- > 0;) {
    sum += parts[i];
    const auto s = static_cast<int>(std::floor(4096 * parts[i] / sum + 0.5));
    out = doubled(out, levels[i].width, levels[i].height);
    for (size_t v = 0; v < out.values.size(); ++v)
      out.values[v] =
          static_cast<uint16_t>((out.values[v] * (4096 - s) + levels[i].values[v] * s + 2048) >> 12);
  }
  return out;
}

/// One pixel of the glow and of the picture, as wide values.
inline void layGlow(const uint16_t *glow, const Glow &look, const _color_t &p, uint16_t *out) {
  uint16_t under[4];
  toWide(p, under);
  int64_t e[4];
  for (int c = 0; c < 4; ++c) {
    e[c] = std::min<int64_t>(65025, int64_t{glow[c]} * glow4096(look.intensity) >> 12);
    under[c] = look.only ? 0 : under[c];
  }
  const int64_t alpha = under[3] + e[3] - under[3] * e[3] / 65025;
  for (int c = 0; c < 3; ++c)
    out[c] = static_cast<uint16_t>(look.mode == 0   ? under[c] + e[c] - under[c] * e[c] / 65025
                                   : look.mode == 1 ? std::min(under[c] + e[c], alpha)
                                                    : under[c] + e[c] * (65025 - under[3]) / 65025);
  out[3] = static_cast<uint16_t>(alpha);
}

} // namespace zol::plain
