#include "kernels/motion/blend.h"

#include "kernels/motion/words.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

using slomo::Word;

// a * (32768 - w) + b * w = a * 32768 + (b - a) * w, so the shift by 15 leaves a plus the floor of
// 2 * (b - a) * w / 65536: the high half of a product of signed 16-bit factors, exact for w below 32768.
I16xN blend(I16xN a, I16xN b, I16xN w) { return a + mulHigh((b - a) * 2, w); }

} // namespace

void blendWords(uint8_t *dst, const uint8_t *a, const uint8_t *b, size_t words, uint32_t w) {
  size_t i = 0;
  const size_t bytes = words * 4;
  if (w < slomo::kWeightOne) {
    const auto weight = splat<I16xN>(static_cast<int16_t>(w));
    for (; i + kVectorBytes <= bytes; i += kVectorBytes) {
      const auto p = load<U8xN>(a + i), q = load<U8xN>(b + i);
      store(dst + i, packU8(blend(widenLow<I16xN>(p), widenLow<I16xN>(q), weight),
                            blend(widenHigh<I16xN>(p), widenHigh<I16xN>(q), weight)));
    }
  }
  for (; i < bytes; ++i)
    dst[i] = static_cast<uint8_t>((a[i] * (slomo::kWeightOne - w) + b[i] * w) >> 15);
}

void markChanged(uint8_t *dst, const uint8_t *a, const uint8_t *b, size_t words) {
  auto *out = reinterpret_cast<Word *>(dst);
  const auto *p = reinterpret_cast<const Word *>(a), *q = reinterpret_cast<const Word *>(b);
  for (size_t x = 0; x < words; ++x)
    out[x] = ((p[x] ^ q[x]) & slomo::kKeyBits) != 0 ? slomo::kChanged : out[x];
}

bool hasMark(const uint8_t *row, size_t words) {
  const auto *word = reinterpret_cast<const Word *>(row);
  uint32_t found = 0;
  for (size_t x = 0; x < words; ++x)
    found |= word[x] == slomo::kChanged ? 1u : 0u;
  return found != 0;
}

} // namespace zol::ZOL_LEVEL
