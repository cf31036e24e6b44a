#include "kernels/keying/color_keyer.h"
#include "kernels/simd/levels.h"
#include "plain/color_keyer.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace zol {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

class ColorKeys : public testing::TestWithParam<SimdLevel> {
protected:
  ColorKeys() { capSimdLevel(GetParam()); }
  ~ColorKeys() override { capSimdLevel(kWidestLevel); }
};

INSTANTIATE_TEST_SUITE_P(Levels, ColorKeys, testing::ValuesIn(test::levels()));

TEST_P(ColorKeys, EveryDistanceGetsTheRulesBytes) {
  // From the black key colour every sum of distances, three times over, in random shares.
  std::mt19937 random(3);
  std::vector<_color_t> pixels(2298);
  for (int i = 0; i < 2298; ++i) {
    int left = i % 766;
    uint8_t share[3];
    for (int channel = 0; channel < 3; ++channel) {
      const int others = 255 * (2 - channel);
      share[channel] = static_cast<uint8_t>(
          std::uniform_int_distribution(std::max(0, left - others), std::min(255, left))(random));
      left -= share[channel];
    }
    pixels[static_cast<size_t>(i)] = {share[0], share[1], share[2], static_cast<uint8_t>(random())};
  }
  const pic foreground{0, 0, 766, 3, pixels.data()};
  const auto background = test::randomPicture(766, 3, 4);
  const auto got = test::randomPicture(766, 3, 5);
  const auto want = test::randomPicture(766, 3, 6);
  const _color_t black = {0, 0, 0, 99};
  for (const auto &[lower, upper] : {std::pair{0.2, 0.4},
                                     {0.0, 0.0},
                                     {0.4, 0.4},
                                     {0.5, 0.2},
                                     {-1.0, 2.0},
                                     {0.1, 1e300},
                                     {-1e300, 0.5},
                                     {kNan, 0.3},
                                     {0.3, kNan},
                                     {-9e6, 9e6},
                                     {kInfinite, -kInfinite},
                                     {0.999, 1.0},
                                     {0.0, 1.0}})
    for (const auto &[near, far] : {std::pair{0.0, 1.0},
                                    {1.0, 0.0},
                                    {0.3, 0.7},
                                    {0.9, 0.25},
                                    {0.5, 0.5},
                                    {-2.0, 7.0},
                                    {kNan, 1e300},
                                    {0.0, 0.6}}) {
      const plain::ColorKey<> rule(black, lower, upper, near, far);
      const ColorKey key(black, lower, upper, near, far);
      plain::colorKey(rule, foreground, background->record(), *want->record());
      key.layRow(foreground.Pixels, background->record()->Pixels, got->record()->Pixels, 2298);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record()))
          << lower << " " << upper << " " << near << " " << far;
      if (near != 0)
        continue;
      plain::colorKeyFilter(rule, foreground.Pixels, background->record()->Pixels, want->record()->Pixels,
                            2298);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << lower << " " << upper << " " << far;
    }
}

TEST_P(ColorKeys, PicturesOfAnyPlaceAndSizeAreLaidAsPlainly) {
  std::mt19937 random(9);
  const auto between = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  for (int round = 0; round < 150; ++round) {
    const int most = round % 10 == 0 ? 1100 : 40;
    const auto foreground =
        test::randomPicture(between(0, most), between(0, 9), random(), between(-20, 20), between(-5, 5));
    const auto background =
        test::randomPicture(between(0, most), between(0, 9), random(), between(-9, 9), between(-5, 5));
    const pic *ground = round % 4 == 0 ? nullptr : background->record();
    const pic &extent = ground != nullptr ? *ground : *foreground->record();
    const auto got = test::randomPicture(extent.Width, extent.Height, 1, extent.X, extent.Y);
    const auto want = host::PictureBuffer::make(extent.Width, extent.Height);
    want->record()->X = extent.X;
    want->record()->Y = extent.Y;
    const _color_t color = test::randomPicture(1, 1, random())->record()->Pixels[0];
    const plain::ColorKey<> rule(color, 0.1, 0.5, 0.1, 0.9);
    const ColorKey key(color, 0.1, 0.5, 0.1, 0.9);
    plain::colorKey(rule, *foreground->record(), ground, *want->record());
    const KeyedRows rows(key, *foreground->record(), ground, *got->record());
    for (int row = 0; row < rows.count(); ++row)
      rows.lay(row);
    EXPECT_TRUE(test::samePixels(*got->record(), *want->record()));

    const Area shared = intersectionOf(Area::of(*foreground->record()), Area::of(extent));
    EXPECT_EQ(rows.count(), shared.isEmpty() ? 0 : shared.height());
  }
}

} // namespace
} // namespace zol
