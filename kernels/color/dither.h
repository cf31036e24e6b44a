// The ordered pattern that breaks up steps where values are cut to bytes. It stands still in the frame.
#pragma once

namespace zol {

inline constexpr int kDitherPeriod = 8; // pixels, in either direction

/// 0..63, each once in every square of the period, the smallest far apart.
constexpr int ditherPlace(int x, int y) {
  const int odd = x ^ y;
  return (odd & 1) << 5 | (y & 1) << 4 | (odd & 2) << 2 | (y & 2) << 1 | (odd & 4) >> 1 | (y & 4) >> 2;
}

} // namespace zol
