#include "host/media/bgra_rows.h"

#include <emmintrin.h>

namespace zol::host {
namespace {

constexpr size_t kStep = 16; // pixels

__m128i load(const uint8_t *from) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(from)); }
void store(uint8_t *to, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(to), v); }

struct SixteenPixels {
  __m128i words[4];
  explicit SixteenPixels(const uint8_t *bgra)
      : words{load(bgra), load(bgra + 16), load(bgra + 32), load(bgra + 48)} {}

  template <int Shift> [[nodiscard]] __m128i channel() const {
    const __m128i low = _mm_set1_epi32(0xFF);
    const auto byte = [&](__m128i word) { return _mm_and_si128(_mm_srli_epi32(word, Shift), low); };
    return _mm_packus_epi16(_mm_packs_epi32(byte(words[0]), byte(words[1])),
                            _mm_packs_epi32(byte(words[2]), byte(words[3])));
  }
};

} // namespace

void joinBgra(const uint8_t *blue, const uint8_t *green, const uint8_t *red, const uint8_t *alpha, size_t n,
              uint8_t *bgra) {
  size_t i = 0;
  for (; i + kStep <= n; i += kStep) {
    const __m128i b = load(blue + i), g = load(green + i), r = load(red + i);
    const __m128i a = alpha != nullptr ? load(alpha + i) : _mm_set1_epi8(-1);
    const __m128i bgLow = _mm_unpacklo_epi8(b, g), bgHigh = _mm_unpackhi_epi8(b, g);
    const __m128i raLow = _mm_unpacklo_epi8(r, a), raHigh = _mm_unpackhi_epi8(r, a);
    store(bgra + 4 * i, _mm_unpacklo_epi16(bgLow, raLow));
    store(bgra + 4 * i + 16, _mm_unpackhi_epi16(bgLow, raLow));
    store(bgra + 4 * i + 32, _mm_unpacklo_epi16(bgHigh, raHigh));
    store(bgra + 4 * i + 48, _mm_unpackhi_epi16(bgHigh, raHigh));
  }
  for (; i < n; ++i) {
    bgra[4 * i] = blue[i];
    bgra[4 * i + 1] = green[i];
    bgra[4 * i + 2] = red[i];
    bgra[4 * i + 3] = alpha != nullptr ? alpha[i] : 255;
  }
}

void splitBgra(const uint8_t *bgra, size_t n, uint8_t *blue, uint8_t *green, uint8_t *red) {
  size_t i = 0;
  for (; i + kStep <= n; i += kStep) {
    const SixteenPixels pixels(bgra + 4 * i);
    store(blue + i, pixels.channel<0>());
    store(green + i, pixels.channel<8>());
    store(red + i, pixels.channel<16>());
  }
  for (; i < n; ++i) {
    blue[i] = bgra[4 * i];
    green[i] = bgra[4 * i + 1];
    red[i] = bgra[4 * i + 2];
  }
}

void splitAlpha(const uint8_t *bgra, size_t n, uint8_t *alpha) {
  size_t i = 0;
  for (; i + kStep <= n; i += kStep)
    store(alpha + i, SixteenPixels(bgra + 4 * i).channel<24>());
  for (; i < n; ++i)
    alpha[i] = bgra[4 * i + 3];
}

} // namespace zol::host
