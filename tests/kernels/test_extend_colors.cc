#include "kernels/matte/extend_colors.h"

#include "plain/extend_colors.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zol {
namespace {

TEST(ExtendColors, TakesTheSmallestSquareWithAlpha) {
  test::Dice dice(1);
  for (int round = 0; round < 120; ++round) {
    const int width = round < 10 ? 1 + round % 3 : dice.between(1, 90), height = dice.between(1, 40);
    const auto picture = test::randomPicture(width, height, dice.word());
    pic &before = *picture->record();
    const int sparse = dice.below(5) * dice.below(200); // of how many pixels one has alpha, or all
    for (int i = 0; i < width * height; ++i)
      if (sparse != 0 && (round % 11 == 0 || dice.below(sparse) != 0))
        before.Pixels[i].a = 0;
    // Some pixels are given alpha.
    std::vector<_color_t> given(before.Pixels, before.Pixels + width * height), expected = given;
    plain::extendColors(expected.data(), width, height);
    for (size_t i = 0; i < given.size(); ++i) {
      given[i].a = dice.below(3) != 0 ? static_cast<uint8_t>(dice.word()) : uint8_t{0};
      if (given[i].a == 0)
        expected[i] = given[i];
      expected[i].a = given[i].a;
    }
    test::atEveryLevel([&] {
      const auto extend = ZOL_SELECT(extendRow);
      std::vector<_color_t> out = given;
      ExtendedColors colors(width, height);
      ASSERT_TRUE(colors && colors.gather(before.Pixels, [] { return true; }));
      for (int y = 0; y < height; ++y)
        extend(before.Pixels + y * width, colors.row(y), out.data() + y * width, width);
      ASSERT_EQ(std::memcmp(out.data(), expected.data(), out.size() * sizeof out[0]), 0)
          << width << 'x' << height;
    });
  }
}

TEST(ExtendColors, AsksAfterEachRowAndStops) {
  const auto picture = test::randomPicture(13, 9, 1);
  int rows = 0;
  ASSERT_TRUE(ExtendedColors(13, 9).gather(picture->record()->Pixels, [&] { return ++rows != 0; }));
  EXPECT_EQ(rows, (5 + 3 + 2 + 1) + (5 + 3 + 2)); // halved and handed down again
  for (int stop = 1; stop <= rows; ++stop) {
    int asked = 0;
    EXPECT_FALSE(ExtendedColors(13, 9).gather(picture->record()->Pixels, [&] { return ++asked < stop; }));
    EXPECT_EQ(asked, stop);
  }
}

} // namespace
} // namespace zol
