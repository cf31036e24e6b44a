#include "host/render/opacity.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>

namespace zol::host {
namespace {

constexpr uint32_t kAlpha = 0xFF000000U; // of a pixel as a word
constexpr size_t kBlock = 4096;          // pixels, after which a transparent one is noticed
constexpr size_t kVector = sizeof(__m128i) / sizeof(_color_t);

uint32_t wordAt(const uint8_t *bytes, size_t pixel) {
  uint32_t word;
  std::memcpy(&word, bytes + pixel * sizeof word, sizeof word);
  return word;
}

} // namespace

bool isOpaque(const _color_t *pixels, size_t count) {
  const auto *bytes = reinterpret_cast<const uint8_t *>(pixels);
  const __m128i alpha = _mm_set1_epi32(static_cast<int>(kAlpha));
  size_t i = 0;
  while (i + kVector <= count) {
    const size_t end = std::min(count - kVector, i + kBlock);
    __m128i all = alpha;
    for (; i <= end; i += kVector)
      all = _mm_and_si128(all, _mm_loadu_si128(reinterpret_cast<const __m128i *>(pixels + i)));
    if (_mm_movemask_epi8(_mm_cmpeq_epi32(all, alpha)) != 0xFFFF)
      return false;
  }
  for (; i < count; ++i)
    if ((wordAt(bytes, i) & kAlpha) != kAlpha)
      return false;
  return true;
}

void makeOpaque(_color_t *pixels, size_t count) {
  auto *bytes = reinterpret_cast<uint8_t *>(pixels);
  for (size_t i = 0; i < count; ++i) {
    const uint32_t word = wordAt(bytes, i) | kAlpha;
    std::memcpy(bytes + i * sizeof word, &word, sizeof word);
  }
}

bool Opacity::settle(_color_t *pixels, size_t count) const {
  if (!watched_ || isOpaque(pixels, count))
    return false;
  if (forced_)
    makeOpaque(pixels, count);
  return true;
}

} // namespace zol::host
