// Luma and colours moved to another luma in their plain form.
#pragma once

#include <algorithm>

namespace zol::plain {

/// Channels, while they are worked on beyond 0..255 too.
struct Channels {
  int c[3]; ///< blue, green, red
};

inline int lumaOf(const Channels &p) { return (54 * p.c[2] + 183 * p.c[1] + 19 * p.c[0]) >> 8; }

inline Channels movedToLuma(Channels p, int y) {
  const int move = y - lumaOf(p);
  for (int &c : p.c)
    c += move;
  const int least = *std::min_element(p.c, p.c + 3);
  if (least < 0)
    for (int &c : p.c)
      c = y + (c - y) * y / (y - least);
  const int greatest = *std::max_element(p.c, p.c + 3);
  if (greatest > 255)
    for (int &c : p.c)
      c = y + (c - y) * (255 - y) / (greatest - y);
  return p;
}

} // namespace zol::plain
