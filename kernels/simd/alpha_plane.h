// Alpha as a plane of its own, for kernels that work on nothing else.
#pragma once

#include "frame/zol.h"

#include <cstddef>
#include <emmintrin.h>

namespace zol {

/// Takes the alphas out of `count` pixels.
inline void takeAlpha(const _color_t *pixels, size_t count, uint8_t *alpha) {
  size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const auto *const from = reinterpret_cast<const __m128i *>(pixels + i);
    const auto quad = [&](int q) { return _mm_srli_epi32(_mm_loadu_si128(from + q), 24); };
    const __m128i low = _mm_packs_epi32(quad(0), quad(1));
    const __m128i high = _mm_packs_epi32(quad(2), quad(3));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(alpha + i), _mm_packus_epi16(low, high));
  }
  for (; i < count; ++i)
    alpha[i] = pixels[i].a;
}

/// Makes `count` pixels of the colours of some and the alphas of the plane; `pixels` may be `colours`.
inline void putAlpha(const _color_t *colours, const uint8_t *alpha, size_t count, _color_t *pixels) {
  const __m128i none = _mm_setzero_si128();
  const __m128i colourBits = _mm_set1_epi32(0x00FFFFFF);
  size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const auto *const from = reinterpret_cast<const __m128i *>(colours + i);
    auto *const to = reinterpret_cast<__m128i *>(pixels + i);
    const auto put = [&](int q, __m128i alphas) {
      _mm_storeu_si128(to + q, _mm_or_si128(_mm_and_si128(_mm_loadu_si128(from + q), colourBits), alphas));
    };
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(alpha + i));
    const __m128i low = _mm_unpacklo_epi8(none, bytes);
    const __m128i high = _mm_unpackhi_epi8(none, bytes);
    put(0, _mm_unpacklo_epi16(none, low));
    put(1, _mm_unpackhi_epi16(none, low));
    put(2, _mm_unpacklo_epi16(none, high));
    put(3, _mm_unpackhi_epi16(none, high));
  }
  for (; i < count; ++i) {
    pixels[i] = colours[i];
    pixels[i].a = alpha[i];
  }
}

} // namespace zol
