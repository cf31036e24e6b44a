#include "kernels/exports/bluescreen.h"

#include "frame/convert.h"
#include "frame/picture.h"
#include "kernels/compositing/overlap.h"
#include "kernels/exports/alpha_shrink.h"
#include "kernels/exports/blur.h"
#include "kernels/keying/bluescreen_rows.h"

#include <algorithm>

namespace zol {
namespace {

/// How far the key channel may exceed, or must fall short of, the larger of the other two; 255 = 1.0.
struct Bounds {
  double backdrop, foreground;
};

/// A pixel's matte, 0 to 255, from its key channel and the larger of the other two. Bounds beyond every
/// sense take the low byte of whatever the ramp gives.
uint8_t matteOf(int key, int larger, const Bounds &bounds) {
  double opaque;
  if (key >= larger + bounds.backdrop)
    opaque = 0;
  else if (key <= larger - bounds.foreground)
    opaque = 1;
  else
    opaque = 1 - (key - larger + bounds.foreground) / (bounds.backdrop + bounds.foreground);
  return static_cast<uint8_t>(static_cast<uint32_t>(truncate(opaque * 4096)) * 255 >> 12);
}

/// The weight of a pixel with this matte; 4096 = 1.0.
int weightOf(float opacity, int matte) { return truncate(double{opacity} * 4096 * matte / 255); }

/// What both passes need of a pixel, by the difference of its channels and by its matte.
struct Tables {
  WeightAndAlpha byDifference[kDifferences];
  WeightAndAlpha byMatte[256];

  Tables(const Bounds &bounds, float opacity) {
    for (int matte = 0; matte < 256; ++matte)
      byMatte[matte] = weightAndAlpha(weightOf(opacity, matte), matte);
    for (int i = 0; i < kDifferences; ++i) {
      const int difference = i - kDifferences / 2;
      byDifference[i] = byMatte[matteOf(std::max(difference, 0), std::max(-difference, 0), bounds)];
    }
  }

  /// The matte depends on the difference alone unless a bound is so small that it is lost beside the channel
  /// that it is added to (below 2^-45), and a weight must lie within 0..4096.
  static bool hold(const Bounds &bounds, float opacity) {
    const auto lost = [](double bound) { return bound > 0 && bound < 0x1p-44; };
    return !lost(bounds.backdrop) && !lost(bounds.foreground) && opacity >= 0 && opacity <= 1;
  }
};

/// Calls work(out, source, key, pixels) for every run of out's pixels: where `key` and the picture of the
/// same place and size with the pixels `source` cover it, or where neither does and both are blank.
template <class Work> void forEachRun(const pic &out, const pic &key, const _color_t *source, Work work) {
  constexpr int kBlanks = 512;
  static const _color_t blank[kBlanks] = {};
  const auto uncovered = [&](_color_t *pixels, int count) {
    for (; count > 0; count -= kBlanks, pixels += kBlanks)
      work(pixels, blank, blank, std::min(count, kBlanks));
  };
  const Overlap covered(out, key);
  for (int y = 0; y < out.Height; ++y) {
    _color_t *row = out.Pixels + static_cast<ptrdiff_t>(y) * out.Width;
    if (y < covered.top || y >= covered.bottom) {
      uncovered(row, out.Width);
      continue;
    }
    const size_t at = coverIndex(out, key, covered.left, y);
    uncovered(row, covered.left);
    work(row + covered.left, source + at, key.Pixels + at, covered.right - covered.left);
    uncovered(row + covered.right, out.Width - covered.right);
  }
}

// ---- Pixel by pixel, for what the tables do not hold for ----

int larger(KeyChannel channel, const _color_t &pixel) {
  return std::max(channel == KeyChannel::blue ? pixel.g : pixel.b, pixel.r);
}

void matteRowPlainly(KeyChannel channel, const _color_t *source, _color_t *out, int width,
                     const Bounds &bounds) {
  for (int x = 0; x < width; ++x) {
    const int key = channel == KeyChannel::blue ? source[x].b : source[x].g;
    out[x].a = matteOf(key, larger(channel, source[x]), bounds);
  }
}

void composeRowPlainly(KeyChannel channel, const _color_t *key, _color_t *out, int width, float opacity) {
  for (int x = 0; x < width; ++x) {
    // Modulo 2^32: the low byte is that of the sum without bounds.
    const auto weight = static_cast<uint32_t>(weightOf(opacity, out[x].a));
    const auto lay = [weight](uint8_t &channelOut, int upper) {
      channelOut = static_cast<uint8_t>((channelOut * (4096 - weight) + upper * weight) >> 12);
    };
    const int limit = larger(channel, key[x]);
    lay(out[x].r, key[x].r);
    lay(out[x].g, channel == KeyChannel::green ? std::min<int>(key[x].g, limit) : key[x].g);
    lay(out[x].b, channel == KeyChannel::blue ? std::min<int>(key[x].b, limit) : key[x].b);
  }
}

int layScreen(KeyChannel channel, t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2,
              float opacity, float shrink, float blur, float aspect) {
  const bool softens = blur > 0;
  OwnedPic softened(host, softens ? FillBlurImage(host, key, blur) : nullptr);
  if (softens && !softened)
    return 0;
  const _color_t *source = softens ? softened->Pixels : key->Pixels;

  const Bounds bounds{double{delta1} * 255, double{delta2} * 255};
  const Tables tables(bounds, opacity);
  const bool tabled = Tables::hold(bounds, opacity);
  const float verticalShrink = shrink * aspect;
  const bool erodes = shrink > 0 || verticalShrink > 0;

  if (tabled && !erodes) { // nothing comes between the two passes
    const auto keyRow = ZOL_SELECT(keyRow);
    forEachRun(*out, *key, source,
               [&](_color_t *lower, const _color_t *matteSource, const _color_t *upper, int width) {
                 keyRow(channel, matteSource, upper, lower, width, tables.byDifference);
               });
    return 1;
  }

  const auto matteRow = ZOL_SELECT(matteRow);
  forEachRun(*out, *key, source,
             [&](_color_t *lower, const _color_t *matteSource, const _color_t *, int width) {
               if (tabled)
                 matteRow(channel, matteSource, lower, width, tables.byDifference);
               else
                 matteRowPlainly(channel, matteSource, lower, width, bounds);
             });
  softened.reset();
  if (AlphaShrink(host, out, shrink, verticalShrink) != 1)
    return 0;
  const auto composeRow = ZOL_SELECT(composeRow);
  forEachRun(*out, *key, key->Pixels,
             [&](_color_t *lower, const _color_t *, const _color_t *upper, int width) {
               if (tabled)
                 composeRow(channel, upper, lower, width, tables.byMatte);
               else
                 composeRowPlainly(channel, upper, lower, width, opacity);
             });
  return 1;
}

} // namespace
} // namespace zol

ZOL_EXPORT int Bluescreen(t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2, float opacity,
                          float shrink, float blur, float aspect) {
  return zol::layScreen(zol::KeyChannel::blue, host, out, key, delta1, delta2, opacity, shrink, blur, aspect);
}

ZOL_EXPORT int Greenscreen(t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2, float opacity,
                           float shrink, float blur, float aspect) {
  return zol::layScreen(zol::KeyChannel::green, host, out, key, delta1, delta2, opacity, shrink, blur,
                        aspect);
}
