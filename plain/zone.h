// Zone plates in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"

#include <algorithm>
#include <cstdint>

namespace zol::plain {

/// 128 + 127 times the cosine; 2^32 = a turn.
inline int zoneGray(uint32_t phase) {
  const int turn = static_cast<int32_t>(phase) >> 16;
  const int way = std::min(16384 - (turn < 0 ? -1 - turn : turn), 16383); // in quarters, 16384 = 1
  const int square = way * way >> 14;
  const int sine = way * ((((1177 * square >> 14) - 10520) * square >> 14) + 25728) >> 15; // 8192 = 1
  return 128 + ((sine + 32) * 127 >> 13);
}

/// `phases` names the first phase, the step to the next and its change as the kernel's does.
template <class Phases> _color_t zonePixel(const Phases &phases, int x) {
  const uint64_t i = static_cast<uint64_t>(x), pairs = x == 0 ? 0 : i * (i - 1) / 2;
  const uint64_t phase = phases.first + i * phases.step + pairs * phases.change;
  const auto gray = static_cast<uint8_t>(zoneGray(static_cast<uint32_t>(phase)));
  return {gray, gray, gray, 255};
}

} // namespace zol::plain
