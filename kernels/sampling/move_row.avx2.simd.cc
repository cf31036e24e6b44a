#include "kernels/sampling/move_row.h"

#include "kernels/color/wide_lanes.h"
#include "kernels/sampling/sample_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

/// The four neighbours of pixels, or what became of them.
template <class Vec> struct Neighbours {
  Vec topLeft, topRight, bottomLeft, bottomRight;

  template <class Change> auto changed(Change change) const {
    return Neighbours<decltype(change(topLeft))>{change(topLeft), change(topRight), change(bottomLeft),
                                                 change(bottomRight)};
  }
};

class Mover {
public:
  Mover(int fx, int fy) : Mover(fx, fy, SampleWeights(fx, fy)) {}

  [[nodiscard]] U32xN pixels(const Neighbours<U32xN> &v) const {
    const U32xN allAlphas = v.topLeft & v.topRight & v.bottomLeft & v.bottomRight;
    const U32xN anyAlpha = v.topLeft | v.topRight | v.bottomLeft | v.bottomRight;
    if (allSet(anyAlpha < 0x01000000))
      return U32xN{};
    const bool opaque = allSet(allAlphas >= 0xFF000000);
    const auto low = v.changed([](U32xN p) { return widenLow(as<U8xN>(p)); });
    const auto high = v.changed([](U32xN p) { return widenHigh(as<U8xN>(p)); });
    return as<U32xN>(opaque ? packU8(even(low), even(high)) : packU8(weighed(low), weighed(high)));
  }

private:
  Mover(int fx, int fy, const SampleWeights &weights)
      : fx_(static_cast<uint16_t>(fx)), fy_(static_cast<uint16_t>(fy)),
        above_(weightPairs(weights.topLeft, weights.topRight)),
        below_(weightPairs(weights.bottomLeft, weights.bottomRight)) {}

  /// Where all are opaque: (the weighted sum + 128) >> 8, modulo 2^16 until the end, where it fits.
  [[nodiscard]] I16xN even(const Neighbours<U16xN> &v) const {
    const U16xN top = (v.topLeft << 4) + (v.topRight - v.topLeft) * fx_;
    const U16xN bottom = (v.bottomLeft << 4) + (v.bottomRight - v.bottomLeft) * fx_;
    return as<I16xN>(((top << 4) + (bottom - top) * fy_ + 128) >> 8);
  }

  [[nodiscard]] I16xN weighed(const Neighbours<U16xN> &v) const {
    const auto c = v.changed([](U16xN p) { return centred(timesAlpha(p, 1)); });
    return packI16(
        quotients(interleaveLow(c.topLeft, c.topRight), interleaveLow(c.bottomLeft, c.bottomRight)),
        quotients(interleaveHigh(c.topLeft, c.topRight), interleaveHigh(c.bottomLeft, c.bottomRight)));
  }

  /// Floats are exact here: dividends are integers below 2^24 and a quotient, if it is not whole, is further
  /// from the next integer than rounding can take it.
  [[nodiscard]] I32xN quotients(I16xN top, I16xN bottom) const {
    const I32xN sums = mulAddPairs(top, above_) + mulAddPairs(bottom, below_) + 256 * 32768;
    const I32xN total = alphaOfEach(sums);
    const F32xN divisor = max(convert<F32xN>(total), splat<F32xN>(1));
    const I32xN colors = convert<I32xN>(convert<F32xN>(sums + (total >> 1)) / divisor);
    const U64xN alphaLanes = interleaveLow(U64xN{}, splat<U64xN>(0xFFFFFFFF00000000));
    return select(as<I32xN>(alphaLanes), (sums + 128) >> 8, colors);
  }

  uint16_t fx_, fy_;
  I16xN above_, below_;
};

} // namespace

void moveRow(const _color_t *top, const _color_t *bottom, int fx, int fy, _color_t *out, int count) {
  const Mover mover(fx, fy);
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto at = [=](const _color_t *row) { return load<U32xN>(row + i, n); };
    store(out + i, mover.pixels({at(top), at(top + 1), at(bottom), at(bottom + 1)}), n);
  });
}

} // namespace zol::ZOL_LEVEL
