// The blue and green screen, a pixel at a time from the formulas.
#pragma once

#include "frame/convert.h"
#include "frame/zol.h"
#include "kernels/exports/alpha_shrink.h"
#include "kernels/exports/blur.h"

#include <algorithm>

namespace zol::plain {

/// Channels of a pixel as bytes, in memory order: blue, green, red, alpha.
inline const uint8_t *channels(const _color_t &pixel) { return &pixel.b; }

/// The pixel of `pixels`, which lie as those of `place`, at a position of the frame; all zero outside.
inline _color_t pixelAt(const pic &place, const _color_t *pixels, int frameX, int frameY) {
  const int x = frameX - place.X;
  const int y = frameY - place.Y;
  const bool inside = x >= 0 && y >= 0 && x < place.Width && y < place.Height;
  return inside ? pixels[y * place.Width + x] : _color_t{};
}

/// (low x (4096 - weight) + high x weight) >> 12, its low byte for weights beyond 0..4096 too.
inline uint8_t blend(uint8_t low, uint8_t high, int weight) {
  const auto w = static_cast<uint32_t>(weight);
  return static_cast<uint8_t>((low * (4096 - w) + high * w) >> 12);
}

/// `channel` is the key channel, 0 for blue and 1 for green.
inline int screen(int channel, t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2,
                  float opacity, float shrink, float blur, float aspect,
                  decltype(FillBlurImage) *soften = FillBlurImage) {
  const int other = 1 - channel;
  pic *source = key;
  if (blur > 0) {
    source = soften(host, key, blur);
    if (source == nullptr)
      return 0;
  }
  const double d1 = double{delta1} * 255;
  const double d2 = double{delta2} * 255;
  for (int y = 0; y < out->Height; ++y)
    for (int x = 0; x < out->Width; ++x) {
      const _color_t pixel = pixelAt(*key, source->Pixels, out->X + x, out->Y + y);
      const int c = channels(pixel)[channel];
      const int m = std::max(channels(pixel)[other], pixel.r);
      double a;
      if (c >= m + d1)
        a = 0.0;
      else if (c <= m - d2)
        a = 1.0;
      else
        a = 1.0 - ((c - m) + d2) / (d1 + d2);
      const auto scaled = static_cast<uint32_t>(truncate(a * 4096));
      out->Pixels[y * out->Width + x].a = static_cast<uint8_t>((scaled * 255) >> 12);
    }
  if (source != key)
    host->Services->PicFree(source);
  if (AlphaShrink(host, out, shrink, shrink * aspect) != 1)
    return 0;
  for (int y = 0; y < out->Height; ++y)
    for (int x = 0; x < out->Width; ++x) {
      _color_t &o = out->Pixels[y * out->Width + x];
      _color_t p = pixelAt(*key, key->Pixels, out->X + x, out->Y + y);
      if (channel == 0)
        p.b = std::min(p.b, std::max(p.r, p.g));
      else
        p.g = std::min(p.g, std::max(p.r, p.b));
      const int k = truncate(double{opacity} * 4096 * o.a / 255);
      o = {blend(o.b, p.b, k), blend(o.g, p.g, k), blend(o.r, p.r, k), o.a};
    }
  return 1;
}

} // namespace zol::plain
