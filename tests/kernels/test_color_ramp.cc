#include "kernels/color/color_ramp.h"

#include "plain/color_ramp.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zol {
namespace {

constexpr _color_t kRed{0, 0, 255, 255}, kClearBlue{255, 0, 0, 0}, kGray{100, 100, 100, 200};

TEST(ColorRamp, WeighsColorsByAlpha) {
  const ColorStop stops[] = {{0, kRed}, {32768, kClearBlue}, {32768, kGray}, {65536, kGray}};
  const ColorRamp ramp(stops);
  const auto is = [&ramp](int place, int b, int r, int a) {
    const RampColor &c = ramp.colors[place];
    return c.b == b && c.g == b && c.r == r && c.a == a;
  };
  EXPECT_TRUE(is(0, 0, 65280, 65280));
  EXPECT_TRUE(is(1024, 0, 65280, 32640)); // the blue is hidden
  EXPECT_TRUE(is(2047, 0, 65280, 31));
  EXPECT_TRUE(is(2048, 25600, 25600, 51200)); // the later stop from its own place on
  EXPECT_TRUE(is(4096, 25600, 25600, 51200));
}

TEST(ColorRamp, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 40; ++round) {
    std::vector<plain::Stop> stops;
    std::vector<ColorStop> given;
    for (int i = dice.between(1, 4); i > 0; --i) {
      const auto alpha = static_cast<uint8_t>(dice.below(3) == 0 ? 255 * dice.below(2) : dice.below(256));
      stops.push_back({dice.below(3) == 0 ? 65536 * dice.below(2) : dice.below(65537),
                       {uint8_t(dice.word()), uint8_t(dice.word()), uint8_t(dice.word()), alpha}});
    }
    std::stable_sort(stops.begin(), stops.end(),
                     [](const auto &a, const auto &b) { return a.position < b.position; });
    for (const plain::Stop &stop : stops)
      given.push_back({stop.position, stop.color});
    const ColorRamp ramp(given);
    const int width = dice.below(70), x = dice.between(-20, 20), y = dice.between(-20, 20);
    std::vector<int32_t> places;
    for (int i = 0; i < width; ++i)
      places.push_back(dice.below(4097));
    for (const bool dithers : {false, true}) {
      const auto want = host::PictureBuffer::make(width, 1);
      for (int i = 0; i < width; ++i)
        want->record()->Pixels[i] =
            plain::rampPixel(plain::rampEntry(stops, places[size_t(i)]), plain::rampTerm(dithers, x + i, y));
      test::atEveryLevel([&] {
        const auto got = host::PictureBuffer::make(width, 1);
        ZOL_SELECT(rampRow)
        (ramp.colors, places.data(), dithers ? RampRounding::dithered(x, y) : RampRounding::nearest(),
         got->record()->Pixels, width);
        ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << round;
      });
    }
  }
}

} // namespace
} // namespace zol
