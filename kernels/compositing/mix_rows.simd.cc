#include "kernels/compositing/mix_rows.h"

#include "kernels/simd/lanes.h"

// With d = b - a and 4096 = 1.0, the mixed channel is a + d * weight / 4096 rounded down. Scaled by 16 the
// product's high 16 bits are that quotient and its low 16 bits the remainder, so that a remainder carried
// along a row overflows its lane exactly when the quotient goes up by one.
//
// 16 * weight has to be a signed lane. From 2048 on it reads as 65536 less than it is, which makes the
// quotient d too small: there b is the base to which it is added. (4096 reads as 0 and leaves b alone.)

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kHalves = static_cast<int>(sizeof(Lanes) / 16);
constexpr int kPixelsAtOnce = 4;

/// Mixes 2 * kHalves rows, column by column: a vector holds one column, 16 bits a channel.
template <bool kHasB, bool kBaseIsB> struct RowMixer {
  Lanes weight;
  Lanes carried;

  Lanes mixColumn(Lanes a, Lanes b) {
    const Lanes difference = sub16(b, a);
    const Lanes sum = add16(carried, mulLow16(difference, weight));
    const Lanes overflow = greater16(carried, sum); // -1; with the top bits turned it is a signed comparison
    carried = sum;
    return sub16(add16(kBaseIsB ? b : a, mulHigh16(difference, weight)), overflow);
  }

  /// Two columns, 8 bits a channel.
  Lanes mixTwo(Lanes a, Lanes b) {
    const Lanes first = mixColumn(interleaveLow8(a, zeros()), interleaveLow8(b, zeros()));
    return pack8(first, mixColumn(interleaveHigh8(a, zeros()), interleaveHigh8(b, zeros())));
  }

  /// Four columns. All pixels are read before any is written: `out` may be `a`, and rows may be the same.
  void mixFour(_color_t *const out[4], const _color_t *const a[4], const _color_t *const b[4], int x) {
    const Lanes evenA = loadHalves(a[0] + x, a[2] + x);
    const Lanes oddA = loadHalves(a[1] + x, a[3] + x);
    const Lanes evenB = kHasB ? loadHalves(b[0] + x, b[2] + x) : zeros();
    const Lanes oddB = kHasB ? loadHalves(b[1] + x, b[3] + x) : zeros();
    const Lanes left = mixTwo(interleaveLow32(evenA, oddA), interleaveLow32(evenB, oddB));
    const Lanes right = mixTwo(interleaveHigh32(evenA, oddA), interleaveHigh32(evenB, oddB));
    storeHalves(out[0] + x, out[2] + x, evens32(left, right));
    storeHalves(out[1] + x, out[3] + x, odds32(left, right));
  }
};

void copyPixels(_color_t *to, const _color_t *from, int count) {
  __builtin_memcpy(to, from, static_cast<size_t>(count) * sizeof(_color_t));
}

/// The rows from `first` on, as many as one vector holds. Rows past the last one are mixed as the last.
template <bool kHasB, bool kBaseIsB>
void mixVectorOfRows(const MixStretch &s, int first, int rows, int weightB, uint16_t *remainders) {
  _color_t *out[4];
  const _color_t *a[4];
  const _color_t *b[4];
  for (int i = 0; i < 4; ++i) {
    const int row = first + i < rows ? first + i : rows - 1;
    out[i] = s.out + row * s.outStep;
    a[i] = s.a + row * s.aStep;
    b[i] = kHasB ? s.b + row * s.bStep : nullptr;
  }
  RowMixer<kHasB, kBaseIsB> mixer{all16(16 * weightB), load(remainders)};
  const int width = s.width;
  int x = 0;
  for (; x + kPixelsAtOnce <= width; x += kPixelsAtOnce)
    mixer.mixFour(out, a, b, x);
  if (const int rest = width - x; rest > 0) {
    // Filled up with pixels that are 0 in both pictures, which leave the remainders as they are.
    _color_t pixels[2][4][kPixelsAtOnce] = {};
    _color_t *const restOut[4] = {pixels[0][0], pixels[0][1], pixels[0][2], pixels[0][3]};
    const _color_t *const restB[4] = {pixels[1][0], pixels[1][1], pixels[1][2], pixels[1][3]};
    for (int i = 0; i < 2 * kHalves; ++i) {
      copyPixels(pixels[0][i], a[i] + x, rest);
      if (kHasB)
        copyPixels(pixels[1][i], b[i] + x, rest);
    }
    mixer.mixFour(restOut, restOut, restB, 0);
    for (int i = 0; i < 2 * kHalves; ++i)
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
  for (int first = 0; first < rows; first += 2 * kHalves)
    mix(stretch, first, rows, weightB, remainders.lanes + 4 * first);
}

namespace {

template <bool kBaseIsB> Lanes blend(Lanes a, Lanes b, Lanes weight) {
  return add16(kBaseIsB ? b : a, mulHigh16(sub16(b, a), weight));
}

template <bool kBaseIsB>
void blendRowWith(const _color_t *a, const _color_t *b, _color_t *out, int width, Lanes weight) {
  constexpr int kPixels = 4 * kHalves;
  const auto step = [weight](const _color_t *as, const _color_t *bs, _color_t *outs) {
    const Lanes va = load(as);
    const Lanes vb = load(bs);
    store(outs, pack8(blend<kBaseIsB>(interleaveLow8(va, zeros()), interleaveLow8(vb, zeros()), weight),
                      blend<kBaseIsB>(interleaveHigh8(va, zeros()), interleaveHigh8(vb, zeros()), weight)));
  };
  int x = 0;
  for (; x + kPixels <= width; x += kPixels)
    step(a + x, b + x, out + x);
  if (const int rest = width - x; rest > 0) {
    _color_t pixels[2][kPixels] = {};
    copyPixels(pixels[0], a + x, rest);
    copyPixels(pixels[1], b + x, rest);
    step(pixels[0], pixels[1], pixels[0]);
    copyPixels(out + x, pixels[0], rest);
  }
}

} // namespace

void blendRow(const _color_t *a, const _color_t *b, _color_t *out, int width, int weightB) {
  const auto row = weightB >= kMixOne / 2 ? blendRowWith<true> : blendRowWith<false>;
  row(a, b, out, width, all16(16 * weightB));
}

} // namespace zol::ZOL_LEVEL
