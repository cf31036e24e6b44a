#include "kernels/relief/relief_rows.h"

#include "plain/relief.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

Relief randomRelief(test::Dice &dice) {
  Relief relief{};
  relief.across = static_cast<float>(dice.scaled(-22, -8));
  relief.aspect = dice.below(2) != 0 ? 1.0F : 1.25F;
  relief.down = relief.across * relief.aspect;
  relief.isPoint = dice.below(2) != 0;
  const auto part = [&] { return static_cast<float>(dice.share()); };
  relief.light = relief.isPoint ? Vector3{part() * 400, part() * 40, part() * 100 + 1}
                                : plain::unit(Vector3{part() - 0.5F, part() - 0.5F, part() + 0.1F});
  relief.ambient = dice.below(3) == 0 ? part() : 0;
  relief.shine = dice.below(2) == 0 ? part() : 0;
  relief.squarings = dice.between(2, 8);
  relief.part = part();
  relief.color = dice.word() & 0xFFFFFF;
  return relief;
}

std::vector<_color_t> lit(const Relief &relief, const pic &picture, const std::vector<uint16_t> &heights) {
  const auto row = ZOL_SELECT(reliefRow);
  const int width = picture.Width, height = picture.Height;
  std::vector<_color_t> out(heights.size() + 1, {1, 2, 3, 4});
  for (int y = 0; y < height; ++y) {
    const auto at = [&](int line) { return heights.data() + std::clamp(line, 0, height - 1) * width; };
    row(relief, picture.Pixels + y * width, at(y - 1), at(y), at(y + 1), picture.X, picture.Y + y, width,
        out.data() + y * width);
  }
  EXPECT_EQ(out.back().r, 3); // nothing behind the last row is touched
  out.pop_back();
  return out;
}

bool same(const std::vector<_color_t> &a, const _color_t *b) {
  return std::memcmp(a.data(), b, a.size() * sizeof a[0]) == 0;
}

TEST(Relief, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    const int width = round % 40 == 0 ? 700 : dice.between(1, 70), height = dice.between(1, 9);
    const auto picture = test::randomPicture(width, height, dice.word(), dice.between(-50, 50), 3);
    std::vector<uint16_t> heights;
    for (int i = 0; i < width * height; ++i) // flat stretches and steps
      heights.push_back(dice.below(3) == 0 || i == 0 ? static_cast<uint16_t>(dice.word()) : heights.back());
    const Relief relief = randomRelief(dice);
    const pic &p = *picture->record();
    const auto want = plain::relief(relief, p.Pixels, heights.data(), width, height, p.X, p.Y);
    test::atEveryLevel([&] { ASSERT_TRUE(same(lit(relief, p, heights), want.data())) << round; });
  }
}

TEST(Relief, LeavesFlatGroundInAnyLight) {
  test::Dice dice(2);
  const auto picture = test::randomPicture(64, 4, 1);
  const std::vector<uint16_t> flat(64 * 4, 40000);
  for (int round = 0; round < 2000; ++round) {
    const Relief relief = randomRelief(dice);
    ASSERT_TRUE(same(lit(relief, *picture->record(), flat), picture->record()->Pixels)) << round;
  }
}

TEST(Relief, TakesHeightsFromEveryPixel) {
  const auto picture = test::randomPicture(256, 256, 1);
  test::atEveryLevel([&] {
    for (const int count : {65536, 0, 1, 2, 7, 15, 33}) {
      std::vector<uint16_t> heights(size_t(count) + 1, 99);
      for (const bool ofAlpha : {false, true}) {
        ZOL_SELECT(heightRow)(picture->record()->Pixels, ofAlpha, heights.data(), count);
        for (int i = 0; i < count; ++i)
          ASSERT_EQ(heights[size_t(i)], plain::height(picture->record()->Pixels[i], ofAlpha));
        EXPECT_EQ(heights.back(), 99);
      }
    }
  });
}

} // namespace
} // namespace zol
