// Colours between stops in their plain form, one pixel at a time.
#pragma once

#include "frame/zol.h"

#include <cstdint>
#include <vector>

namespace zol::plain {

struct Stop {
  int position; ///< of 65536
  _color_t color;
};

/// 256 times a byte: blue, green, red, alpha.
struct RampEntry {
  int channels[4];
};

/// The entry of 0..4096.
inline RampEntry rampEntry(const std::vector<Stop> &stops, int entry) {
  const int position = 16 * entry;
  Stop from = stops.front(), to = stops.back();
  for (const Stop &stop : stops)
    if (stop.position <= position)
      from = stop;
  for (size_t i = stops.size(); i-- > 0;)
    if (stops[i].position > position)
      to = stops[i];
  int64_t f = 0;
  if (from.position <= position && to.position > position)
    f = int64_t{position - from.position} * 65536 / (to.position - from.position);
  else
    to = from;
  const int64_t w0 = from.color.a * (65536 - f), w1 = to.color.a * f;
  const auto channel = [&](int64_t c0, int64_t c1) {
    return w0 + w1 == 0 ? 0 : static_cast<int>((256 * (c0 * w0 + c1 * w1) + (w0 + w1) / 2) / (w0 + w1));
  };
  return {{channel(from.color.b, to.color.b), channel(from.color.g, to.color.g),
           channel(from.color.r, to.color.r), static_cast<int>((w0 + w1) >> 8)}};
}

/// 128, or where dithered one of 64 values by the frame's pixel.
inline int rampTerm(bool dithered, int x, int y) {
  if (!dithered)
    return 128;
  int place = 0;
  for (int bit = 0; bit < 3; ++bit)
    place = place * 4 + ((x >> bit ^ y >> bit) & 1) * 2 + (y >> bit & 1);
  return 4 * place + 2;
}

inline _color_t rampPixel(const RampEntry &entry, int term) {
  const auto byte = [&](int channel) { return static_cast<uint8_t>((entry.channels[channel] + term) >> 8); };
  return {byte(0), byte(1), byte(2), byte(3)};
}

} // namespace zol::plain
