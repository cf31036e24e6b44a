// AlphaEx step after step over the whole picture.
#pragma once

#include "frame/zol.h"
#include "plain/erosion.h"
#include "plain/extend_colors.h"
#include "plain/soften.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace zol::plain {

/// 0..5: alpha, luma, red, green, blue, opaque.
inline int matteValue(_color_t p, int source) {
  const int luma = (54 * p.r + 183 * p.g + 19 * p.b) >> 8;
  const int values[] = {255, luma, p.r, p.g, p.b};
  return source == 5 ? 255 : values[source] * p.a / 255;
}

inline int matteLevel(int x, bool inverts, double clipBlack, double clipWhite, double bias) {
  if (inverts)
    x = 255 - x;
  const int low = static_cast<int>(65280 * clipBlack), high = 65280 - static_cast<int>(65280 * clipWhite);
  x = 256 * x <= low ? 0 : 256 * x >= high ? 255 : (256 * x - low) * 255 / (high - low);
  const int p = 4096 + static_cast<int>(28672 * std::max(bias, 0.0));
  const int q = 4096 + static_cast<int>(28672 * std::max(-bias, 0.0));
  return 255 * x * p / (x * p + (255 - x) * q);
}

struct AlphaEx {
  int source = 0;
  bool inverts = false;
  double low = 0, high = 0, bias = 0, shrink = 0, soften = 0, transparency = 0;
  bool fills = true, showsMatte = false;

  /// A length of 1 is `unit` pixels across and `aspect` times as many down.
  void apply(pic &picture, double unit, double aspect) const {
    const int count = picture.Width * picture.Height;
    const std::vector<_color_t> before(picture.Pixels, picture.Pixels + count);
    std::vector<_color_t> extended = before;
    if (fills)
      extendColors(extended.data(), picture.Width, picture.Height);
    const auto change = [&](auto value) {
      for (int i = 0; i < count; ++i)
        picture.Pixels[i].a = static_cast<uint8_t>(value(i, picture.Pixels[i].a));
    };
    change([&](int i, int) {
      return matteLevel(matteValue(picture.Pixels[i], source), inverts, low, high, bias);
    });
    const auto invert = [&] { change([](int, int a) { return 255 - a; }); };
    if (shrink < 0)
      invert();
    erode(picture, 1, 0, static_cast<float>(std::abs(shrink) * unit));
    erode(picture, 0, 1, static_cast<float>(std::abs(shrink) * unit * aspect));
    if (shrink < 0)
      invert();
    std::vector<uint16_t> wide;
    for (int i = 0; i < count; ++i)
      wide.push_back(static_cast<uint16_t>(picture.Pixels[i].a * 255));
    plain::soften(wide.data(), picture.Width, picture.Height, soften * unit, soften * unit * aspect);
    change([&](int i, int) {
      return (wide[static_cast<size_t>(i)] + 127) / 255 * (4096 - static_cast<int>(4096 * transparency)) >>
             12;
    });
    for (int i = 0; i < count; ++i) {
      _color_t &p = picture.Pixels[i];
      const _color_t &c = extended[static_cast<size_t>(i)];
      if (fills && before[static_cast<size_t>(i)].a == 0 && p.a != 0)
        p = {c.b, c.g, c.r, p.a};
      if (showsMatte)
        p = {p.a, p.a, p.a, 255};
    }
  }
};

} // namespace zol::plain
