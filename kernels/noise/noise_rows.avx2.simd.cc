#include "kernels/noise/noise_rows.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

static_assert(8 * noiseFade(4095) <= INT16_MAX);

/// a + ((b - a) fade >> 12), the fade given 8 times. Values of one row are no more than 16383 apart.
I16xN faded(I16xN a, I16xN b, I16xN fade8) { return a + mulHigh((b - a) << 1, fade8); }

/// Two points of the lattice, left and right of a cell.
struct Edge {
  Edge(const NoisePoints &points, int cell)
      : leftSlope(splat<I16xN>(points.slopes[cell])), rightSlope(splat<I16xN>(points.slopes[cell + 1])),
        left(splat<I16xN>(points.values[cell])), right(splat<I16xN>(points.values[cell + 1])) {}

  [[nodiscard]] I16xN between(I16xN share4, I16xN fade8) const {
    return faded(left + mulHigh(leftSlope, share4), right + mulHigh(rightSlope, share4 - 16384), fade8);
  }

  I16xN leftSlope, rightSlope, left, right;
};

template <NoiseKind kind> I16xN shaped(I16xN noise) {
  if constexpr (kind == NoiseKind::plain)
    return noise;
  const I16xN twice = max(noise, -noise) << 1;
  return kind == NoiseKind::billows ? twice - 2048 : 2048 - twice;
}

template <NoiseKind kind>
void writeNoise(const NoiseColumns &columns, const NoisePoints &above, const NoisePoints &below, int fade,
                int16_t *noise) {
  const auto fadeDown8 = splat<I16xN>(static_cast<int16_t>(8 * fade));
  for (int cell = 0; cell < columns.cellCount; ++cell) {
    const Edge upper(above, cell), lower(below, cell);
    const int end = columns.cells[cell + 1];
    // What is written beyond a cell's end the next one overwrites.
    for (int x = columns.cells[cell]; x < end; x += kLanes<I16xN>) {
      const auto share4 = load<I16xN>(columns.shares + x), fade8 = load<I16xN>(columns.fades + x);
      const I16xN n = faded(upper.between(share4, fade8), lower.between(share4, fade8), fadeDown8);
      store(noise + x, shaped<kind>(n));
    }
  }
}

} // namespace

void noiseRow(const NoiseColumns &columns, const NoisePoints &above, const NoisePoints &below, int fade,
              NoiseKind kind, int16_t *noise) {
  switch (kind) {
  case NoiseKind::plain: return writeNoise<NoiseKind::plain>(columns, above, below, fade, noise);
  case NoiseKind::billows: return writeNoise<NoiseKind::billows>(columns, above, below, fade, noise);
  case NoiseKind::ridges: return writeNoise<NoiseKind::ridges>(columns, above, below, fade, noise);
  }
}

void blendRows(const int16_t *const *rows, const int16_t *weights, int rowCount, int bias, int gain,
               int32_t *out, int count) {
  const auto both = [](int even, int odd) {
    return as<I16xN>(splat<U32xN>(static_cast<uint32_t>((even & 0xFFFF) | odd << 16)));
  };
  const I16xN halves = both(gain / 2, gain - gain / 2); // each fits
  const auto within = [](I16xN v, int16_t least, int16_t most) {
    return max(min(v, splat<I16xN>(most)), splat<I16xN>(least));
  };
  forEachVector<I16xN>(count, [=](int x, int n) {
    I32xN low{}, high{};
    for (int i = 0; i < rowCount; i += 2) {
      const auto even = load<I16xN>(rows[i] + x), odd = load<I16xN>(rows[i + 1] + x);
      const I16xN pair = both(weights[i], weights[i + 1]);
      low += mulAddPairs(interleaveLow(even, odd), pair);
      high += mulAddPairs(interleaveHigh(even, odd), pair);
    }
    const I16xN v = within(packI16(low >> 12, high >> 12), -4096, 4096) + static_cast<int16_t>(bias);
    low = mulAddPairs(interleaveLow(v, v), halves) >> 12;
    high = mulAddPairs(interleaveHigh(v, v), halves) >> 12;
    const I16xN places = within(packI16(low + 2048, high + 2048), 0, 4096);
    store(out + x, convert<Vector<int32_t, kLanes<I16xN>>>(places), n);
  });
}

} // namespace zol::ZOL_LEVEL
