// How the keyers lay one pixel on another.
#pragma once

#include <cstdint>

namespace zol {

/// The weight of the upper pixel's colours, 0 to 4096 = 1.0, in the low half; the alpha that the result
/// carries in the top byte. A channel of the result is (lower x (4096 - weight) + upper x weight) >> 12.
using Laying = uint32_t;

constexpr Laying laying(int weight, int alpha) {
  return static_cast<uint16_t>(weight) | static_cast<uint32_t>(static_cast<uint8_t>(alpha)) << 24;
}

} // namespace zol
