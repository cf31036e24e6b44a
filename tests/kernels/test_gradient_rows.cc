#include "kernels/color/gradient_rows.h"

#include "kernels/matte/cover_row.h"
#include "plain/gradient.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace zol {
namespace {

TEST(Gradient, GivesThePlainFormsPlaces) {
  test::Dice dice(1);
  for (int round = 0; round < 300; ++round) {
    const int width = dice.below(60), ends = dice.below(3);
    const GradientTurn turn{dice.between(-700000, 700000), static_cast<GradientEnds>(ends)};
    const auto first = static_cast<int64_t>(dice.scaled(20, 46)),
               step = static_cast<int64_t>(dice.scaled(20, 38));
    const int angle = dice.between(-65536, 65536);
    const float down =
        dice.below(4) == 0 ? 0 : static_cast<float>(dice.scaled(-3, dice.below(9) == 0 ? 49 : 10));
    const auto scale = static_cast<float>(std::fabs(dice.scaled(4, 29)));
    std::vector<float> across;
    for (int i = 0; i < width; ++i)
      across.push_back(dice.below(4) == 0 ? static_cast<float>(dice.between(-1, 1)) * down
                                          : static_cast<float>(dice.scaled(-3, 10)));
    std::vector<int32_t> want[3], got(across.size());
    for (int i = 0; i < width; ++i) {
      const float u = across[size_t(i)];
      const int64_t positions[] = {plain::linearPosition(first, step, i),
                                   plain::radialPosition(u, down, scale),
                                   plain::conicalPosition(u, down, angle)};
      for (int kind = 0; kind < 3; ++kind)
        want[kind].push_back(plain::rampPlace(positions[kind], turn.offset, ends));
    }
    test::atEveryLevel([&] {
      ZOL_SELECT(linearPlaces)(first, step, turn, got.data(), width);
      ASSERT_EQ(got, want[0]) << round;
      ZOL_SELECT(radialPlaces)(across.data(), down, scale, turn, got.data(), width);
      ASSERT_EQ(got, want[1]) << round;
      ZOL_SELECT(conicalPlaces)(across.data(), down, angle, turn, got.data(), width);
      ASSERT_EQ(got, want[2]) << round;
    });
  }
}

TEST(Gradient, TurnsEvenly) {
  for (int i = 0; i < 100000; ++i) {
    const double turn = i / 100000.0, angle = 2 * std::numbers::pi * turn;
    const double off =
        static_cast<double>(plain::conicalPosition(static_cast<float>(300 * std::cos(angle)),
                                                   static_cast<float>(300 * std::sin(angle)), 0)) /
            65536 -
        turn;
    ASSERT_LT(std::fabs(off - std::round(off)), 0x1p-16) << turn;
  }
}

TEST(Cover, MultipliesAlphas) {
  for (int alpha = 0; alpha < 256; ++alpha) {
    const auto mask = host::PictureBuffer::make(256, 1), want = host::PictureBuffer::make(256, 1);
    for (int m = 0; m < 256; ++m) {
      mask->record()->Pixels[m] = {9, 9, 9, uint8_t(m)};
      const auto a = static_cast<uint8_t>((alpha * m + 127) / 255);
      want->record()->Pixels[m] = a == 0 ? _color_t{} : _color_t{1, 2, 3, a};
    }
    test::atEveryLevel([&] {
      const auto got = host::PictureBuffer::make(256, 1);
      std::fill_n(got->record()->Pixels, 256, _color_t{1, 2, 3, uint8_t(alpha)});
      ZOL_SELECT(coverRow)(got->record()->Pixels, mask->record()->Pixels, 256 - alpha % 5);
      std::copy_n(want->record()->Pixels + 256 - alpha % 5, alpha % 5,
                  got->record()->Pixels + 256 - alpha % 5);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << alpha;
    });
  }
}

} // namespace
} // namespace zol
