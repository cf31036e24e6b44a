// Colours for pixels of alpha 0 as their definition reads: for each of them a way up through ever larger
// squares.
#pragma once

#include "frame/zol.h"

#include <vector>

namespace zol::plain {

struct Square {
  int alpha = 0, b = 0, g = 0, r = 0;
};

using Squares = std::vector<std::vector<Square>>;

inline Squares halve(const Squares &squares) {
  Squares half((squares.size() + 1) / 2, std::vector<Square>((squares[0].size() + 1) / 2));
  for (size_t y = 0; y < half.size(); ++y)
    for (size_t x = 0; x < half[y].size(); ++x) {
      Square sum;
      for (size_t v = 2 * y; v < 2 * y + 2 && v < squares.size(); ++v)
        for (size_t u = 2 * x; u < 2 * x + 2 && u < squares[v].size(); ++u) {
          const Square &s = squares[v][u];
          sum = {sum.alpha + s.alpha, sum.b + s.b * s.alpha, sum.g + s.g * s.alpha, sum.r + s.r * s.alpha};
        }
      if (sum.alpha != 0)
        half[y][x] = {(sum.alpha + 3) >> 2, sum.b / sum.alpha, sum.g / sum.alpha, sum.r / sum.alpha};
    }
  return half;
}

/// Changes the colours of pixels that have no alpha; alphas stay.
inline void extendColors(_color_t *pixels, int width, int height) {
  std::vector<Squares> levels(1, Squares(size_t(height), std::vector<Square>(size_t(width))));
  for (int i = 0; i < width * height; ++i)
    levels[0][size_t(i / width)][size_t(i % width)] = {pixels[i].a, pixels[i].b, pixels[i].g, pixels[i].r};
  while (levels.back().size() > 1 || levels.back()[0].size() > 1)
    levels.push_back(halve(levels.back()));
  for (int i = 0; i < width * height; ++i) {
    if (pixels[i].a != 0)
      continue;
    Square found;
    for (size_t l = 1; l < levels.size() && found.alpha == 0; ++l)
      found = levels[l][size_t(i / width) >> l][size_t(i % width) >> l];
    pixels[i] = {uint8_t(found.b), uint8_t(found.g), uint8_t(found.r), 0};
  }
}

} // namespace zol::plain
