#include "kernels/keying/color_keyer_rows.h"

#include "kernels/keying/laying_vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// |red - red| + |green - green| + |blue - blue|, 0 to 765.
Words distanceSums(Words pixels, Words color) {
  const Words distances = byteDistances(pixels, color);
  return (distances & 0xFF) + (distances >> 8 & 0xFF) + (distances >> 16 & 0xFF);
}

} // namespace

void colorKeyRow(const _color_t *foreground, const _color_t *background, _color_t *out, int width,
                 _color_t color, const Laying *byDistanceSum) {
  uint32_t word;
  __builtin_memcpy(&word, &color, sizeof word);
  const Words key = Words{} + word;
  forEachVector(width, [=](int i, int n) {
    const Words upper = load(foreground + i, n);
    const Words layings = lookUp(byDistanceSum, distanceSums(upper, key));
    store(out + i, layOn(load(background + i, n), upper & 0x00FFFFFF, layings), n);
  });
}

void underlayRow(const _color_t *background, _color_t *out, int width) {
  forEachVector(width, [=](int i, int n) { store(out + i, load(background + i, n) & 0x00FFFFFF, n); });
}

} // namespace zol::ZOL_LEVEL
