#include "kernels/compositing/mix_rows.h"

#include "kernels/simd/vectors.h"

// With d = b - a and 4096 = 1.0, the mixed channel is a + d * weight / 4096 rounded down. Scaled by 16 the
// product's high 16 bits are that quotient and its low 16 bits the remainder, so that a remainder carried
// along a row overflows its lane exactly when the quotient goes up by one.
//
// 16 * weight has to be a signed lane. From 2048 on it reads as 65536 less than it is, which makes the
// quotient d too small: there b is the base to which it is added. (4096 reads as 0 and leaves b alone.)

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kRows = 2 * kBlocks; // that are mixed together
constexpr int kPixelsAtOnce = 4;
static_assert(kMixRows % kRows == 0);

/// Mixes kRows rows, column by column: a vector holds one column, 16 bits a channel.
template <bool kHasB, bool kBaseIsB> struct RowMixer {
  I16xN weight;
  I16xN carried;

  I16xN mixColumn(I16xN a, I16xN b) {
    const I16xN difference = b - a;
    const I16xN sum = carried + difference * weight;
    const I16xN overflow = carried > sum; // -1; with the top bits turned it is a signed comparison
    carried = sum;
    return (kBaseIsB ? b : a) + mulHigh(difference, weight) - overflow;
  }

  /// Two columns, 8 bits a channel.
  U8xN mixTwo(U8xN a, U8xN b) {
    const I16xN first = mixColumn(widenLow<I16xN>(a), widenLow<I16xN>(b));
    return packU8(first, mixColumn(widenHigh<I16xN>(a), widenHigh<I16xN>(b)));
  }

  /// Four columns. All pixels are read before any is written: `out` may be `a`, and rows may be the same.
  void mixFour(_color_t *const *out, const _color_t *const *a, const _color_t *const *b, int x) {
    const auto rows = [x](const _color_t *const *pixels, int parity) {
      const void *from[kBlocks];
      for (int i = 0; i < kBlocks; ++i)
        from[i] = pixels[2 * i + parity] + x;
      return loadBlocks<U32xN>(from);
    };
    const U32xN evenA = rows(a, 0), oddA = rows(a, 1);
    const U32xN evenB = kHasB ? rows(b, 0) : U32xN{}, oddB = kHasB ? rows(b, 1) : U32xN{};
    const auto left =
        as<U32xN>(mixTwo(as<U8xN>(interleaveLow(evenA, oddA)), as<U8xN>(interleaveLow(evenB, oddB))));
    const auto right =
        as<U32xN>(mixTwo(as<U8xN>(interleaveHigh(evenA, oddA)), as<U8xN>(interleaveHigh(evenB, oddB))));
    void *to[2][kBlocks];
    for (int i = 0; i < kRows; ++i)
      to[i % 2][i / 2] = out[i] + x;
    storeBlocks(to[0], evens(left, right));
    storeBlocks(to[1], odds(left, right));
  }
};

void copyPixels(_color_t *to, const _color_t *from, int count) {
  __builtin_memcpy(to, from, static_cast<size_t>(count) * sizeof(_color_t));
}

/// 16 * weight in every lane, modulo 2^16.
I16xN scaled(int weight) { return splat<I16xN>(static_cast<int16_t>(16 * weight)); }

/// The rows from `first` on, as many as one vector holds. Rows past the last one are mixed as the last.
template <bool kHasB, bool kBaseIsB>
void mixVectorOfRows(const MixStretch &s, int first, int rows, int weightB, uint16_t *remainders) {
  _color_t *out[kRows];
  const _color_t *a[kRows];
  const _color_t *b[kRows];
  for (int i = 0; i < kRows; ++i) {
    const int row = first + i < rows ? first + i : rows - 1;
    out[i] = s.out + row * s.outStep;
    a[i] = s.a + row * s.aStep;
    b[i] = kHasB ? s.b + row * s.bStep : nullptr;
  }
  RowMixer<kHasB, kBaseIsB> mixer{scaled(weightB), load<I16xN>(remainders)};
  const int width = s.width;
  int x = 0;
  for (; x + kPixelsAtOnce <= width; x += kPixelsAtOnce)
    mixer.mixFour(out, a, b, x);
  if (const int rest = width - x; rest > 0) {
    // Filled up with pixels that are 0 in both pictures, which leave the remainders as they are.
    _color_t pixels[2][kRows][kPixelsAtOnce] = {};
    _color_t *restOut[kRows];
    const _color_t *restB[kRows];
    for (int i = 0; i < kRows; ++i) {
      restOut[i] = pixels[0][i];
      restB[i] = pixels[1][i];
      copyPixels(pixels[0][i], a[i] + x, rest);
      if (kHasB)
        copyPixels(pixels[1][i], b[i] + x, rest);
    }
    mixer.mixFour(restOut, restOut, restB, 0);
    for (int i = 0; i < kRows; ++i)
      copyPixels(out[i] + x, pixels[0][i], rest);
  }
  store(remainders, mixer.carried);
}

} // namespace

void mixRows(const MixStretch &stretch, int rows, int weightB, MixRemainders &remainders) {
  const bool baseIsB = weightB >= kMixOne / 2;
  const auto mix = stretch.b == nullptr
                       ? (baseIsB ? mixVectorOfRows<false, true> : mixVectorOfRows<false, false>)
                       : (baseIsB ? mixVectorOfRows<true, true> : mixVectorOfRows<true, false>);
  for (int first = 0; first < rows; first += kRows)
    mix(stretch, first, rows, weightB, remainders.lanes + 4 * first);
}

namespace {

template <bool kBaseIsB> I16xN blend(I16xN a, I16xN b, I16xN weight) {
  return (kBaseIsB ? b : a) + mulHigh(b - a, weight);
}

template <bool kBaseIsB>
void blendRowWith(const _color_t *a, const _color_t *b, _color_t *out, int width, I16xN weight) {
  forEachVector<U32xN>(width, [=](int i, int n) {
    const auto va = as<U8xN>(load<U32xN>(a + i, n));
    const auto vb = as<U8xN>(load<U32xN>(b + i, n));
    const U8xN blended = packU8(blend<kBaseIsB>(widenLow<I16xN>(va), widenLow<I16xN>(vb), weight),
                                blend<kBaseIsB>(widenHigh<I16xN>(va), widenHigh<I16xN>(vb), weight));
    store(out + i, as<U32xN>(blended), n);
  });
}

} // namespace

void blendRow(const _color_t *a, const _color_t *b, _color_t *out, int width, int weightB) {
  const auto row = weightB >= kMixOne / 2 ? blendRowWith<true> : blendRowWith<false>;
  row(a, b, out, width, scaled(weightB));
}

} // namespace zol::ZOL_LEVEL
