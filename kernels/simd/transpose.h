// Turns rows into columns, so that what runs down a picture runs along it too.
#pragma once

#include <cstddef>
#include <emmintrin.h>

namespace zol {

/// A square of 16 bytes a side. Interleaving row i with row i + N / 2 rotates the bits of (row, column) by
/// one; after log2 N rounds they have changed places.
template <class Pixel>
void transposeSquare(const Pixel *src, ptrdiff_t srcStride, Pixel *dst, ptrdiff_t dstStride) {
  constexpr int kSide = 16 / sizeof(Pixel);
  __m128i rows[kSide];
  __m128i next[kSide];
  for (int i = 0; i < kSide; ++i)
    rows[i] = _mm_loadu_si128(reinterpret_cast<const __m128i *>(src + i * srcStride));
  for (int round = 1; round < kSide; round *= 2) {
    for (int i = 0; i < kSide / 2; ++i) {
      const __m128i a = rows[i];
      const __m128i b = rows[i + kSide / 2];
      if constexpr (sizeof(Pixel) == 1) {
        next[2 * i] = _mm_unpacklo_epi8(a, b);
        next[2 * i + 1] = _mm_unpackhi_epi8(a, b);
      } else if constexpr (sizeof(Pixel) == 2) {
        next[2 * i] = _mm_unpacklo_epi16(a, b);
        next[2 * i + 1] = _mm_unpackhi_epi16(a, b);
      } else {
        next[2 * i] = _mm_unpacklo_epi32(a, b);
        next[2 * i + 1] = _mm_unpackhi_epi32(a, b);
      }
    }
    for (int i = 0; i < kSide; ++i)
      rows[i] = next[i];
  }
  for (int i = 0; i < kSide; ++i)
    _mm_storeu_si128(reinterpret_cast<__m128i *>(dst + i * dstStride), rows[i]);
}

/// dst[c][r] = src[r][c] for pixels of 1, 2 or 4 bytes; strides in pixels. Goes by squares of whole cache
/// lines, so that none is taken up twice.
template <class Pixel>
void transpose(const Pixel *src, ptrdiff_t srcStride, int rows, int columns, Pixel *dst,
               ptrdiff_t dstStride) {
  static_assert(sizeof(Pixel) == 1 || sizeof(Pixel) == 2 || sizeof(Pixel) == 4);
  constexpr int kSide = 16 / sizeof(Pixel);
  constexpr int kLine = 64 / sizeof(Pixel);
  for (int top = 0; top < rows; top += kLine)
    for (int left = 0; left < columns; left += kLine) {
      const int bottom = top + kLine < rows ? top + kLine : rows;
      const int right = left + kLine < columns ? left + kLine : columns;
      const int wholeBottom = bottom - bottom % kSide;
      const int wholeRight = right - right % kSide;
      for (int r = top; r < wholeBottom; r += kSide)
        for (int c = left; c < wholeRight; c += kSide)
          transposeSquare(src + r * srcStride + c, srcStride, dst + c * dstStride + r, dstStride);
      for (int r = top; r < bottom; ++r)
        for (int c = r < wholeBottom ? wholeRight : left; c < right; ++c)
          dst[c * dstStride + r] = src[r * srcStride + c];
    }
}

} // namespace zol
