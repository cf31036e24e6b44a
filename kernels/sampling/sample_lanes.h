// Samples in lanes, for level sources.
#pragma once

#include "kernels/sampling/sample.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

/// Two neighbours' weights beside one another in every lane, as sums of products of pairs want them.
inline I16xN weightPairs(int16_t left, int16_t right) {
  return as<I16xN>(splat<U32xN>(static_cast<uint16_t>(left) | static_cast<uint32_t>(right) << 16));
}

/// Values of 16 bits less 32768, as signed lanes: sums of weights 256 are less 256 * 32768 then.
inline I16xN centred(U16xN v) { return as<I16xN>(v ^ 0x8000); }

} // namespace
} // namespace zol::ZOL_LEVEL
