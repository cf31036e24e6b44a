// One pixel laid on another, for the keyers' level sources.
#pragma once

#include "kernels/keying/weight_and_alpha.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// lower + floor((upper - lower) x weight / 4096): the high half of the product of the weight and the
/// difference times 16, which is within +-4080.
inline I16xN weighted(I16xN lower, I16xN upper, I16xN weight) {
  return lower + mulHigh((upper - lower) << 4, weight);
}

/// Pixels by a WeightAndAlpha each; the alpha of `upper` must be 0.
inline U32xN composite(U32xN lower, U32xN upper, U32xN weightsAndAlphas) {
  const auto weight = as<I16xN>(duplicateEvens(as<U16xN>(weightsAndAlphas)));
  const auto mix = [weight](U32xN under, U32xN over) {
    return as<U32xN>(weighted(as<I16xN>(under), as<I16xN>(over), weight));
  };
  const U32xN blueRed = mix(lower & 0x00FF00FF, upper & 0x00FF00FF);
  const U32xN green = mix(lower >> 8 & 0x000000FF, upper >> 8 & 0x000000FF);
  return blueRed | green << 8 | (weightsAndAlphas & 0xFF000000);
}

} // namespace
} // namespace zol::ZOL_LEVEL
