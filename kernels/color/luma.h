// Luma, and colours moved to another luma.
#pragma once

#include <algorithm>

namespace zol {

/// Channels 0..255.
struct Rgb {
  int red, green, blue;
};

/// 0..255.
constexpr int luma(const Rgb &c) { return (54 * c.red + 183 * c.green + 19 * c.blue) >> 8; }

/// The colour moved to luma y, 0..255. What goes beyond black or white then draws nearer to the grey y, all
/// channels in proportion: nothing is clipped and the hue stays. The result's luma is within 1 of y.
constexpr Rgb withLuma(const Rgb &c, int y) {
  const int move = y - luma(c);
  Rgb out = {c.red + move, c.green + move, c.blue + move};
  const auto draw = [&out, y](int part, int whole) {
    const auto drawn = [=](int channel) { return y + (channel - y) * part / whole; };
    out = {drawn(out.red), drawn(out.green), drawn(out.blue)};
  };
  if (const int least = std::min({out.red, out.green, out.blue}); least < 0)
    draw(y, y - least);
  if (const int greatest = std::max({out.red, out.green, out.blue}); greatest > 255)
    draw(255 - y, greatest - y);
  return out;
}

} // namespace zol
