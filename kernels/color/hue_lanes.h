// Hues by lanes, for level sources.
#pragma once

#include "kernels/color/channel_lanes.h"
#include "kernels/simd/divide.h"

namespace zol::ZOL_LEVEL {
namespace {

inline I16xN lanes(int value) { return splat<I16xN>(static_cast<int16_t>(value)); }

/// What both ways of telling a hue start from.
struct Hues {
  explicit Hues(const RgbLanes &c)
      : color(c), low(least(c)), high(greatest(c)), chroma(high - low),
        beyondLow(as<U16xN>(c.red + c.green + c.blue - high - low - low) * 255),
        byChroma(as<U16xN>(max(chroma, lanes(1)))) {}

  RgbLanes color;
  I16xN low, high, chroma;
  U16xN beyondLow; // the middle channel, 255 times
  Divisors byChroma;
};

/// rgbToHue.
inline I16xN wheelStep(const Hues &h) {
  const auto way = as<I16xN>(h.byChroma.divide(h.beyondLow + as<U16xN>(max(h.chroma - 1, lanes(0)))));
  const RgbLanes &c = h.color;
  const auto ofRed = c.green >= c.blue ? way : 1530 - way;
  const auto ofGreen = c.blue >= c.red ? 510 + way : 510 - way;
  const auto ofBlue = c.red >= c.green ? 1020 + way : 1020 - way;
  return c.red == h.high ? ofRed : c.green == h.high ? ofGreen : ofBlue;
}

} // namespace
} // namespace zol::ZOL_LEVEL
