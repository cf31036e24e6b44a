// The universal key in its plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"
#include "plain/luma.h"
#include "plain/recolor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace zol::plain {

/// Methods in the order of the effect's items; shares are 4096 = 1.0.
struct UniversalKey {
  UniversalKey(int keyMethod, _color_t keyColor, double hueRange) : method(keyMethod), color(keyColor) {
    const auto b = static_cast<double>(chromaBlue(color)), r = static_cast<double>(chromaRed(color));
    length = std::sqrt(b * b + r * r);
    const auto part = [this](double chroma) {
      return static_cast<int64_t>(std::floor(16384 * chroma / length + 0.5));
    };
    isColored = length >= 2048;
    if (method == 0 && !isColored)
      method = 1;
    if (!isColored)
      return;
    nb = part(b);
    nr = part(r);
    if (hueRange > 0)
      cot = static_cast<int64_t>(std::min(16384.0, 256 * (1 - hueRange) / hueRange));
  }

  int method;
  _color_t color;
  int shadows = 0, first = 0, range = 4096;
  bool inverts = false;
  int spill = 0;

  [[nodiscard]] uint8_t matte(_color_t p, _color_t plate) const {
    if (p.a == 0)
      p = {};
    const int t =
        static_cast<int>(std::clamp<int64_t>((distance(p, plate) - first) * int64_t{4096} / range, 0, 4096));
    const int a = (t * 255 + 2048) >> 12;
    return static_cast<uint8_t>(inverts ? 255 - a : a);
  }

  [[nodiscard]] _color_t colored(_color_t p, int matte) const {
    int out[3] = {p.b, p.g, p.r};
    if (spill != 0 && isColored && method <= 1) {
      const int light = static_cast<int>(share(p) * spill >> 12), key[3] = {color.b, color.g, color.r};
      const int rest = std::max(1, 4096 - std::min(light, 4096 - 4096 * matte / 255));
      for (int i = 0; i < 3; ++i)
        out[i] = std::clamp((out[i] - (light * key[i] >> 12)) * 4096 / rest, 0, 255);
    }
    const int alpha = method == 6 ? matte : (matte * p.a + 127) / 255;
    return alpha != 0 ? _color_t{uint8_t(out[0]), uint8_t(out[1]), uint8_t(out[2]), uint8_t(alpha)}
                      : _color_t{};
  }

private:
  static int64_t chromaBlue(_color_t p) { return -43 * p.r - 85 * p.g + 128 * p.b; }
  static int64_t chromaRed(_color_t p) { return 128 * p.r - 107 * p.g - 21 * p.b; }
  static int y(_color_t p) { return lumaOf({{p.b, p.g, p.r}}); }
  /// Of key light.
  [[nodiscard]] int64_t share(_color_t p) const {
    const int64_t along = (chromaBlue(p) * nb + chromaRed(p) * nr) >> 14;
    const int64_t across = std::abs(chromaRed(p) * nb - chromaBlue(p) * nr) >> 14;
    const int64_t light = std::max<int64_t>(0, along - (across * cot >> 8));
    return std::min<int64_t>(4096, light * static_cast<int64_t>(16777216 / length) >> 12);
  }

  [[nodiscard]] int64_t distance(_color_t p, _color_t plate) const {
    const int away[3] = {std::abs(p.b - color.b), std::abs(p.g - color.g), std::abs(p.r - color.r)};
    const auto chroma = [](_color_t c) { return std::max({c.b, c.g, c.r}) - std::min({c.b, c.g, c.r}); };
    if (method == 0) {
      int64_t gain = 4096;
      if (const int64_t keyLuma = y(color); y(p) < keyLuma)
        gain = std::min<int64_t>(65536, 4096 + ((4096 * keyLuma / std::max(y(p), 1) - 4096) * shadows >> 12));
      return 4096 - std::min<int64_t>(4096, share(p) * gain >> 12);
    }
    switch (method) {
    case 1: return (away[0] + away[1] + away[2]) * 4096 / 765;
    case 2: {
      int d = std::abs(wheelStep(p.r, p.g, p.b) - wheelStep(color.r, color.g, color.b));
      d = std::min(d, 1530 - d);
      return 4096 - ((4096 - 4096 * d / 765) * std::min(chroma(p), 64) >> 6);
    }
    case 3: return std::abs(y(p) - y(color)) * 4096 / 255;
    case 4: return std::abs(chroma(p) - chroma(color)) * 4096 / 255;
    case 5:
      if (plate.a == 0)
        plate = {};
      return std::max({std::abs(p.b - plate.b), std::abs(p.g - plate.g), std::abs(p.r - plate.r)}) * 4096 /
             255;
    default: return p.a * 4096 / 255;
    }
  }

  double length;
  bool isColored;
  int64_t nb = 0, nr = 0, cot = 16384;
};

} // namespace zol::plain
