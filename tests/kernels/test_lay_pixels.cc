#include "kernels/compositing/lay_pixels.h"

#include "plain/lay_pixels.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <vector>

namespace zol {
namespace {

using Pixels = std::vector<_color_t>;

/// Random pixels in stretches of random, full or no alpha.
Pixels pixelsOf(test::Dice &dice, int count) {
  Pixels pixels;
  for (int i = 0; i < count; ++i) {
    const uint32_t word = dice.word();
    const uint8_t alphas[] = {255, 0, uint8_t(word >> 24), uint8_t(word >> 24)};
    pixels.push_back({uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), alphas[i / 24 % 4]});
  }
  return pixels;
}

void expectPlain(const Pixels &lower, const Pixels &upper, const Laying &laying) {
  Pixels out = lower;
  ZOL_SELECT(layPixels)(out.data(), upper.data(), static_cast<int>(out.size()), laying);
  const int mode = static_cast<int>(laying.mode);
  for (size_t i = 0; i < out.size(); ++i) {
    const _color_t want = plain::layPixel(lower[i], upper[i], mode, laying.opacity, laying.inside);
    ASSERT_EQ(std::memcmp(&out[i], &want, sizeof want), 0) << "mode " << mode << ", pixel " << i;
  }
}

TEST(LayPixels, GivesThePlainFormsBytesInEveryMode) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 8 * kLayModes; ++round) {
      const int count = round % 3 != 0 ? dice.below(30) : 500;
      const int opacities[] = {4096, 4095, dice.below(4097), 0};
      const Pixels lower = pixelsOf(dice, count);
      Pixels upper = pixelsOf(dice, count + 40);
      upper.erase(upper.begin(), upper.begin() + 40 - round % 8); // stretches that do not begin alike
      upper.resize(lower.size());
      expectPlain(
          lower, upper,
          {static_cast<LayMode>(round % kLayModes), opacities[round / kLayModes % 4], dice.below(3) == 0});
    }
  });
}

TEST(LayPixels, IsExactForEveryPairOfColorsAndOfAlphas) {
  Pixels lower, upper;
  for (int i = 0; i < 65536; ++i) {
    lower.push_back({uint8_t(i), uint8_t(i), uint8_t(~i), 255});
    upper.push_back({uint8_t(i >> 8), uint8_t(~i >> 8), uint8_t(i >> 8), 255});
  }
  test::atEveryLevel([&] {
    for (int mode = 0; mode < kLayModes; ++mode)
      expectPlain(lower, upper, {static_cast<LayMode>(mode), 4096, false});
  });
  for (size_t i = 0; i < lower.size(); ++i) {
    lower[i].a = static_cast<uint8_t>(i);
    upper[i].a = static_cast<uint8_t>(i >> 8);
  }
  test::atEveryLevel([&] {
    for (const LayMode mode : {LayMode::normal, LayMode::difference})
      for (const bool inside : {false, true})
        expectPlain(lower, upper, {mode, 4096, inside});
  });
}

} // namespace
} // namespace zol
