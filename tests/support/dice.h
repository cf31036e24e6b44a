// Random numbers that are the same on every machine, which the standard's distributions are not.
#pragma once

#include "tests/support/test_clip.h"

#include <cmath>
#include <cstdint>
#include <random>

namespace zol::test {

class Dice {
public:
  explicit Dice(unsigned seed) : random_(seed) {}

  uint32_t word() { return static_cast<uint32_t>(random_()); }
  int below(int sides) { return static_cast<int>(random_() % static_cast<unsigned>(sides)); }
  int between(int least, int most) { return least + below(most - least + 1); }
  double share() { return static_cast<double>(random_()) / 4294967296.0; }

  /// Of either sign, with any exponent from least to most.
  double scaled(int least, int most) {
    const double value = std::ldexp(1.0 + share(), between(least, most - 1));
    return below(2) != 0 ? value : -value;
  }

  /// Of any size up to the given one, which may be empty, at a place that reaches beyond 0, 0.
  auto picture(int widest, int highest, int reachX = 20, int reachY = 5) {
    const int width = between(0, widest), height = between(0, highest);
    const int x = between(-reachX, reachX), y = between(-reachY, reachY);
    return randomPicture(width, height, word(), x, y);
  }

private:
  std::mt19937 random_;
};

} // namespace zol::test
