#include "kernels/keying/color_keyer.h"

#include "plain/color_keyer.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <limits>

namespace zol {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();

TEST(ColorKeys, EveryDistanceGetsTheRulesBytes) {
  // From the black key colour every sum of distances, three times over, in random shares.
  test::Dice dice(3);
  const auto foreground = test::randomPicture(766, 3, 7), background = test::randomPicture(766, 3, 4);
  for (int i = 0; i < 2298; ++i) {
    int left = i % 766;
    _color_t &pixel = foreground->record()->Pixels[i];
    uint8_t *const channels[] = {&pixel.b, &pixel.g, &pixel.r};
    for (int channel = 0; channel < 3; ++channel) {
      const int others = 255 * (2 - channel);
      *channels[channel] =
          static_cast<uint8_t>(dice.between(std::max(0, left - others), std::min(255, left)));
      left -= *channels[channel];
    }
  }
  const auto got = test::randomPicture(766, 3, 5), want = test::randomPicture(766, 3, 6);
  const _color_t black = {0, 0, 0, 99};
  const pic *ground = background->record();
  const auto expectPlain = [&](double lower, double upper, double near, double far) {
    const plain::ColorKey<> rule(black, lower, upper, near, far);
    const ColorKey key(black, lower, upper, near, far);
    plain::colorKey(rule, *foreground->record(), ground, *want->record());
    test::atEveryLevel([&] {
      key.layRow(foreground->record()->Pixels, ground->Pixels, got->record()->Pixels, 2298);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record()))
          << lower << " " << upper << " " << near << " " << far;
    });
    if (near == 0) {
      plain::colorKeyFilter(rule, foreground->record()->Pixels, ground->Pixels, want->record()->Pixels, 2298);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << lower << " " << upper << " " << far;
    }
  };
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
                                    {0.0, 0.6}})
      expectPlain(lower, upper, near, far);
}

TEST(ColorKeys, PicturesOfAnyPlaceAndSizeAreLaidAsPlainly) {
  test::Dice dice(9);
  for (int round = 0; round < 150; ++round) {
    const int widest = round % 10 == 0 ? 1100 : 40;
    const auto foreground = dice.picture(widest, 9), background = dice.picture(widest, 9);
    const pic *ground = round % 4 == 0 ? nullptr : background->record();
    const pic &extent = ground != nullptr ? *ground : *foreground->record();
    const auto got = test::randomPicture(extent.Width, extent.Height, 1, extent.X, extent.Y);
    const auto want = host::PictureBuffer::make(extent.Width, extent.Height);
    placeAt(*want->record(), Area::of(extent));
    const _color_t color = test::randomPicture(1, 1, dice.word())->record()->Pixels[0];
    plain::colorKey(plain::ColorKey<>(color, 0.1, 0.5, 0.1, 0.9), *foreground->record(), ground,
                    *want->record());
    const ColorKey key(color, 0.1, 0.5, 0.1, 0.9);
    const Area shared = intersectionOf(Area::of(*foreground->record()), Area::of(extent));
    test::atEveryLevel([&] {
      const KeyedRows rows(key, *foreground->record(), ground, *got->record());
      for (int row = 0; row < rows.count(); ++row)
        rows.lay(row);
      EXPECT_TRUE(test::samePixels(*got->record(), *want->record()));
      EXPECT_EQ(rows.count(), shared.isEmpty() ? 0 : shared.height());
    });
  }
}

} // namespace
} // namespace zol
