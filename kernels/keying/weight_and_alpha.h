// What a keyer knows of a pixel once it has looked at its key: how to lay it on another.
#pragma once

#include <cstdint>

namespace zol {

/// The weight of the upper pixel's colours, 0 to 4096 = 1.0, in the low half; the alpha that the result
/// carries in the top byte. A channel of the result is (lower x (4096 - weight) + upper x weight) >> 12.
using WeightAndAlpha = uint32_t;

constexpr WeightAndAlpha weightAndAlpha(int weight, int alpha) {
  return static_cast<uint16_t>(weight) | static_cast<uint32_t>(static_cast<uint8_t>(alpha)) << 24;
}

} // namespace zol
