#include "kernels/keying/screen_key.h"

#include "frame/convert.h"

#include <algorithm>

namespace zol {
namespace {

int larger(KeyChannel channel, const _color_t &pixel) {
  return std::max(channel == KeyChannel::blue ? pixel.g : pixel.b, pixel.r);
}

/// Calls work(out, source, key, pixels) for every run of out's pixels: where `key` and the picture of the
/// same place and size with the pixels `source` cover it, or where neither does and both are blank.
template <class Work> void forEachRun(const pic &out, const pic &key, const _color_t *source, Work work) {
  constexpr int kBlanks = 512;
  static const _color_t blank[kBlanks] = {};
  const auto uncovered = [&](_color_t *pixels, int count) {
    for (; count > 0; count -= kBlanks, pixels += kBlanks)
      work(pixels, blank, blank, std::min(count, kBlanks));
  };
  const Area whole = Area::of(out), keyed = Area::of(key), covered = coveredPart(whole, keyed);
  for (int y = whole.top; y < whole.bottom; ++y) {
    _color_t *row = pixelAt(out, whole.left, y);
    if (!covered.hasRow(y)) {
      uncovered(row, whole.width());
      continue;
    }
    const ptrdiff_t at = keyed.index(covered.left, y);
    _color_t *begin = row + (covered.left - whole.left), *end = begin + covered.width();
    uncovered(row, covered.left - whole.left);
    work(begin, source + at, key.Pixels + at, covered.width());
    uncovered(end, whole.right - covered.right);
  }
}

} // namespace

ScreenKey::ScreenKey(KeyChannel channel, float delta1, float delta2, float opacity)
    : channel_(channel), bounds_{double{delta1} * 255, double{delta2} * 255}, opacity_(opacity) {
  // The matte depends on the difference alone unless a bound is so small that it is lost beside the channel
  // that it is added to (below 2^-45), and a weight must lie within 0..4096.
  const auto lost = [](double bound) { return bound > 0 && bound < 0x1p-44; };
  tabled_ = !lost(bounds_.backdrop) && !lost(bounds_.foreground) && opacity >= 0 && opacity <= 1;
  for (int matte = 0; matte < 256; ++matte)
    byMatte_[matte] = weightAndAlpha(weightOf(matte), matte);
  for (int i = 0; i < kDifferences; ++i) {
    const int difference = i - kDifferences / 2;
    byDifference_[i] = byMatte_[matteOf(std::max(difference, 0), std::max(-difference, 0), bounds_)];
  }
}

/// A pixel's matte, 0 to 255, from its key channel and the larger of the other two.
uint8_t ScreenKey::matteOf(int key, int larger, const Bounds &bounds) {
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
int ScreenKey::weightOf(int matte) const { return truncate(double{opacity_} * 4096 * matte / 255); }

void ScreenKey::lay(const pic &out, const pic &key, const _color_t *source) const {
  if (!tabled_) {
    writeMatte(out, key, source);
    layByMatte(out, key);
    return;
  }
  forEachRun(out, key, source,
             [&, row = ZOL_SELECT(keyRow)](_color_t *lower, const _color_t *matteSource,
                                           const _color_t *upper, int width) {
               row(channel_, matteSource, upper, lower, width, byDifference_);
             });
}

void ScreenKey::writeMatte(const pic &out, const pic &key, const _color_t *source) const {
  forEachRun(out, key, source,
             [&, row = ZOL_SELECT(matteRow)](_color_t *lower, const _color_t *matteSource, const _color_t *,
                                             int width) {
               if (tabled_)
                 row(channel_, matteSource, lower, width, byDifference_);
               else
                 matteRowPlainly(matteSource, lower, width);
             });
}

void ScreenKey::layByMatte(const pic &out, const pic &key) const {
  forEachRun(
      out, key, key.Pixels,
      [&, row = ZOL_SELECT(composeRow)](_color_t *lower, const _color_t *, const _color_t *upper, int width) {
        if (tabled_)
          row(channel_, upper, lower, width, byMatte_);
        else
          layRowPlainly(upper, lower, width);
      });
}

void ScreenKey::matteRowPlainly(const _color_t *source, _color_t *out, int width) const {
  for (int x = 0; x < width; ++x) {
    const int key = channel_ == KeyChannel::blue ? source[x].b : source[x].g;
    out[x].a = matteOf(key, larger(channel_, source[x]), bounds_);
  }
}

void ScreenKey::layRowPlainly(const _color_t *key, _color_t *out, int width) const {
  for (int x = 0; x < width; ++x) {
    // Modulo 2^32: the low byte is that of the sum without bounds.
    const auto weight = static_cast<uint32_t>(weightOf(out[x].a));
    const auto lay = [weight](uint8_t &channelOut, int upper) {
      channelOut = static_cast<uint8_t>((channelOut * (4096 - weight) + upper * weight) >> 12);
    };
    const int limit = larger(channel_, key[x]);
    lay(out[x].r, key[x].r);
    lay(out[x].g, channel_ == KeyChannel::green ? std::min<int>(key[x].g, limit) : key[x].g);
    lay(out[x].b, channel_ == KeyChannel::blue ? std::min<int>(key[x].b, limit) : key[x].b);
  }
}

} // namespace zol
