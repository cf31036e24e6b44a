// The colour keyer, a pixel at a time from the formulas.
#pragma once

#include "frame/convert.h"
#include "frame/zol.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace zol::plain {

/// The parameters at 255 = 1.0. Integer is int where the thresholds are small.
template <class Integer = int64_t> struct ColorKey {
  ColorKey(_color_t keyColor, double lower, double upper, double nearOpacity, double farOpacity)
      : color(keyColor), t1(truncate(255 * lower)), t2(truncate(255 * upper)),
        a1(std::clamp(truncate(255 * nearOpacity), 0, 255)),
        a2(std::clamp(truncate(255 * farOpacity), 0, 255)), range(t1 == t2 ? 1 : t2 - t1) {}

  /// How far a pixel is beyond the lower threshold.
  [[nodiscard]] Integer excess(_color_t p) const {
    return (std::abs(p.r - color.r) + std::abs(p.b - color.b) + std::abs(p.g - color.g)) / 3 - t1;
  }

  /// The opacity of a pixel between two that can be set.
  [[nodiscard]] Integer compositingOpacity(_color_t p) const {
    const Integer a = a1 + (a2 - a1) * excess(p) / range;
    return a1 <= a2 ? std::min(std::max(a, a1), a2) : std::min(std::max(a, a2), a1);
  }

  /// The opacity of a pixel in the filter, up to the one that can be set.
  [[nodiscard]] Integer filterOpacity(_color_t p) const { return std::min(excess(p) * a2 / range, a2); }

  _color_t color;
  Integer t1, t2, a1, a2, range;
};

inline void layPixel(_color_t &out, _color_t p, int64_t opacity) {
  if (opacity <= 0)
    return;
  if (opacity >= 255) {
    out = {p.b, p.g, p.r, 255};
    return;
  }
  const int a = static_cast<int>(opacity);
  const int w = a * 4096 / 255;
  const auto blend = [w](uint8_t low, uint8_t high) {
    return static_cast<uint8_t>((low * (4096 - w) + high * w) >> 12);
  };
  out = {blend(out.b, p.b), blend(out.g, p.g), blend(out.r, p.r), static_cast<uint8_t>(a)};
}

/// The filter over buffers of one size.
inline void colorKeyFilter(const ColorKey<> &key, const _color_t *foreground, const _color_t *background,
                           _color_t *out, int pixels) {
  for (int i = 0; i < pixels; ++i)
    out[i] = {background[i].b, background[i].g, background[i].r, 0};
  for (int i = 0; i < pixels; ++i)
    layPixel(out[i], foreground[i], key.filterOpacity(foreground[i]));
}

/// The compositing effect over pictures; `out` has the place and size of the background, and is blank where
/// there is none.
template <class Integer>
void colorKey(const ColorKey<Integer> &key, const pic &foreground, const pic *background, pic &out) {
  if (background != nullptr)
    for (int i = 0; i < out.Width * out.Height; ++i)
      out.Pixels[i] = {background->Pixels[i].b, background->Pixels[i].g, background->Pixels[i].r, 0};
  for (int y = std::max(out.Y, foreground.Y);
       y < std::min(out.Y + out.Height, foreground.Y + foreground.Height); ++y)
    for (int x = std::max(out.X, foreground.X);
         x < std::min(out.X + out.Width, foreground.X + foreground.Width); ++x) {
      const _color_t p = foreground.Pixels[(y - foreground.Y) * foreground.Width + x - foreground.X];
      layPixel(out.Pixels[(y - out.Y) * out.Width + x - out.X], p, key.compositingOpacity(p));
    }
}

} // namespace zol::plain
