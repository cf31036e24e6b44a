#include "kernels/noise/octaves.h"

#include "plain/clouds.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <vector>

namespace zol {
namespace {

TEST(Octaves, GiveThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 80; ++round) {
    const int width = dice.between(1, 90), height = dice.between(1, 25);
    const double cell = std::exp2(1 + 6 * dice.share());
    const plain::CloudSettings clouds{.seed = uint32_t(dice.below(65536)),
                                      .octaves = dice.between(1, 10),
                                      .roughness = dice.below(4097),
                                      .cellWidth = cell,
                                      .cellHeight = cell * (dice.below(2) == 0 ? 1 : 2 * dice.share()),
                                      .right = dice.below(2) == 0 ? 0 : 1000 * (dice.share() - 0.5),
                                      .down = dice.below(2) == 0 ? 0 : 1000 * (dice.share() - 0.5),
                                      .evolution = dice.below(4) == 0 ? dice.below(100) : 10 * dice.share(),
                                      .cycle = dice.below(2) == 0 ? 0 : dice.between(1, 5),
                                      .kind = dice.below(3)};
    const int bias = dice.between(-6144, 6144), gain = dice.between(4096, 32768);
    const OctaveSettings settings{clouds.seed,       clouds.octaves,
                                  clouds.roughness,  clouds.cellWidth,
                                  clouds.cellHeight, clouds.right,
                                  clouds.down,       clouds.evolution,
                                  clouds.cycle,      static_cast<NoiseKind>(clouds.kind)};
    std::vector<int32_t> want, got(size_t(width) * size_t(height));
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        want.push_back(plain::cloudPlace(clouds, width, height, x, y, bias, gain));
    test::atEveryLevel([&] {
      NoiseOctaves octaves(settings, width, height);
      ASSERT_TRUE(octaves);
      for (int y = 0; y < height; ++y)
        octaves.row(y, bias, gain, got.data() + ptrdiff_t{y} * width);
      ASSERT_EQ(got, want) << round;
    });
  }
}

// The arithmetic of 16 bits holds what noise can reach.
TEST(Octaves, StayWithinTheirWords) {
  const plain::CloudSettings clouds{.evolution = 0.5};
  int least = 0, most = 0;
  for (uint32_t seed = 0; seed < 20; ++seed)
    for (int i = 0; i < 20000; ++i) {
      plain::CloudSettings one = clouds;
      one.seed = seed;
      const int n = plain::octaveNoise(one, 0, i * 613, i * 2711);
      least = std::min(least, n);
      most = std::max(most, n);
    }
  EXPECT_LT(most, 6144);
  EXPECT_GT(least, -6144);
  EXPECT_GT(most - least, 6000); // and it does reach far
}

} // namespace
} // namespace zol
