#include "kernels/compositing/lay_color.h"

#include <cstdint>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif

constexpr int kPixels = kBytes / 4;

using Words = int32_t __attribute__((vector_size(kBytes)));
using Reals = float __attribute__((vector_size(kBytes)));

Words load(const _color_t *pixels) {
  Words words;
  __builtin_memcpy(&words, pixels, sizeof words);
  return words;
}

/// A channel of every pixel, from bit `shift` on.
Words channel(Words words, int shift) { return words >> shift & 255; }
Reals real(Words words) { return __builtin_convertvector(words, Reals); }
Words truncated(Reals reals) { return __builtin_convertvector(reals, Words); }

bool allEqual(Words words, int value) {
  bool all = true;
  for (int i = 0; i < kPixels; ++i)
    all &= words[i] == value;
  return all;
}

/// Floats are exact here: every sum is an integer below 2^24, and a quotient below 256 of such numbers, if
/// it is not whole, is further from the next integer than rounding can take it.
Words over(Words pixels, Words mask, int colour) {
  const Reals m = real(mask);
  const Reals colourWeight = m * 255.0F;
  const Reals pixelWeight = real(channel(pixels, 24)) * (255.0F - m);
  const Reals total = colourWeight + pixelWeight;
  const Words nothing = mask == 0;
  const Reals divisor = total + real(nothing & 1); // at least 1
  Words result = truncated(total / 255.0F) << 24;
  for (int shift = 0; shift < 24; shift += 8) {
    const auto value = static_cast<float>(colour >> shift & 255);
    result |= truncated((colourWeight * value + pixelWeight * real(channel(pixels, shift))) / divisor)
              << shift;
  }
  return (nothing & pixels) | (~nothing & result);
}

} // namespace

void layColor(_color_t *pixels, const _color_t *mask, int count, unsigned colour) {
  const int opaque = static_cast<int>(colour | 0xff000000U);
  for (int i = 0; i < count; i += kPixels) {
    const int rest = count - i;
    _color_t edge[2][kPixels] = {};
    const bool partial = rest < kPixels;
    const size_t size = static_cast<size_t>(partial ? rest : kPixels) * sizeof(_color_t);
    if (partial) {
      __builtin_memcpy(edge[0], pixels + i, size);
      __builtin_memcpy(edge[1], mask + i, size);
    }
    const Words alphas = channel(load(partial ? edge[1] : mask + i), 24);
    if (allEqual(alphas, 0))
      continue;
    const Words result =
        allEqual(alphas, 255) ? Words{} + opaque : over(load(partial ? edge[0] : pixels + i), alphas, opaque);
    __builtin_memcpy(pixels + i, &result, size);
  }
}

} // namespace zol::ZOL_LEVEL
