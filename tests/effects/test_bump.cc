#include "frame/effects.h"
#include "frame/picture.h"
#include "kernels/relief/relief_rows.h"
#include "plain/relief.h"
#include "plain/soften.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/levels.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace zol {
namespace {

using host::Service;

enum Field {
  kInput,
  kMap,
  kUseAlpha,
  kHeight,
  kSmoothness,
  kLight,
  kAngle,
  kSlant,
  kLightX,
  kLightY,
  kLightZ,
  kAmbient,
  kShine,
  kGloss,
  kLightColor
};

constexpr int kWidth = 90, kHeightOfFrame = 60;
constexpr double kAspect = 1.25;

float single(double value) { return static_cast<float>(value); }
/// Sines and cosines are rounded, so that every machine has the same.
double rounded(double value) { return std::round(value * 0x1p30) / 0x1p30; }

/// The heights of `map` at the places of the frame where `picture` is, its edges going on beyond it.
std::vector<uint16_t> plainHeights(const pic &picture, const pic &map, bool ofAlpha, double smoothness) {
  std::vector<uint16_t> heights;
  const Area area = Area::of(picture), lies = Area::of(map);
  for (int y = area.top; y < area.bottom; ++y)
    for (int x = area.left; x < area.right; ++x)
      heights.push_back(plain::height(
          *pixelAt(map, std::clamp(x, lies.left, lies.right - 1), std::clamp(y, lies.top, lies.bottom - 1)),
          ofAlpha));
  plain::soften(heights.data(), picture.Width, picture.Height, smoothness * kWidth / 10,
                smoothness * kWidth / 10 * kAspect);
  return heights;
}

TEST(Bump, LightsTheHeightsOfTheMapOrTheImage) {
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    const auto picture = test::randomPicture(dice.between(1, 40), dice.between(1, 30), dice.word(),
                                             dice.between(-40, 40), dice.between(-20, 20));
    const auto map = test::randomPicture(dice.between(1, 40), dice.between(1, 30), dice.word(),
                                         dice.between(-40, 40), dice.between(-20, 20));
    test::PictureClip input(picture->record()), ground(map->record());
    test::Filter filter(ProcessBumpDeclare, kWidth, kHeightOfFrame);
    filter.session.info()->PixelAspect = kAspect;
    filter.assign(kInput, &input);
    const bool hasMap = dice.below(2) != 0, ofAlpha = dice.below(2) != 0, isPoint = dice.below(2) != 0;
    if (hasMap)
      filter.assign(kMap, &ground);
    const auto give = [&](Field field, double least, double most) {
      const double value = least + (most - least) * dice.share();
      filter.set(field, value);
      return value;
    };
    filter.choose(kUseAlpha, ofAlpha ? 1 : 0);
    filter.choose(kLight, isPoint ? 1 : 0);
    const double height = give(kHeight, -2, 2), smoothness = give(kSmoothness, 0, 0.5);
    const double angle = give(kAngle, -500, 500) * std::numbers::pi / 180;
    const double slant = give(kSlant, 0, 1) * 80 * std::numbers::pi / 180;
    const double x = give(kLightX, -1, 1), y = give(kLightY, -1, 1), z = give(kLightZ, 0, 1);

    Relief relief{};
    relief.across = single(height * kWidth / (80 * 65025));
    relief.down = single(height * kWidth / (80 * 65025) * kAspect);
    relief.isPoint = isPoint;
    relief.light = isPoint ? Vector3{single((0.5 + x) * kWidth), single((0.5 + y) * kHeightOfFrame),
                                     single((0.05 + z) * kWidth)}
                           : Vector3{single(rounded(std::sin(slant)) * rounded(std::cos(angle))),
                                     single(rounded(std::sin(slant)) * rounded(std::sin(angle))),
                                     single(rounded(std::cos(slant)))};
    relief.aspect = single(kAspect);
    relief.ambient = single(give(kAmbient, 0, 0.5));
    relief.shine = single(give(kShine, 0, 1));
    const double squarings = 2 + 6 * give(kGloss, 0, 1);
    relief.squarings = static_cast<int>(squarings);
    relief.part = single(squarings - relief.squarings);
    relief.color = 0xFF8020;
    filter.setColor(kLightColor, {0x20, 0x80, 0xFF, 7});

    const pic &p = *picture->record();
    const auto heights = plainHeights(p, hasMap ? *map->record() : p, ofAlpha, smoothness);
    auto want = plain::relief(relief, p.Pixels, heights.data(), p.Width, p.Height, p.X, p.Y);
    const pic expected{p.X, p.Y, p.Width, p.Height, want.data()};
    test::atEveryLevel([&] {
      const auto out = filter.render();
      ASSERT_NE(out, nullptr);
      ASSERT_TRUE(test::samePixels(*out->record(), expected)) << round;
    });
  }
}

TEST(Bump, DoesWithoutTheFramesThatCannotBeHad) {
  const auto picture = test::randomPicture(20, 10, 1);
  test::PictureClip input(picture->record()), nothing(nullptr);
  const auto attempt = [&](host::Clip *first, host::Clip *map, bool stops) {
    test::Filter filter(ProcessBumpDeclare, kWidth, kHeightOfFrame);
    filter.assign(kInput, first);
    filter.assign(kMap, map);
    if (stops)
      filter.session.faults.failAt(Service::ErrorCountReport, 1);
    const auto out = filter.render();
    EXPECT_EQ(filter.session.faults.calls(Service::ErrorCountReport), 1);
    EXPECT_TRUE(filter.session.messages.empty());
    return out != nullptr && test::samePixels(*out->record(), *picture->record());
  };
  EXPECT_TRUE(attempt(&input, &nothing, false));
  EXPECT_FALSE(attempt(&input, &nothing, true));
  EXPECT_FALSE(attempt(&nothing, &input, false));

  test::Filter flat(ProcessBumpDeclare, kWidth, kHeightOfFrame);
  flat.assign(kInput, &input);
  flat.set(kHeight, 0);
  flat.set(kShine, 1);
  const auto copy = flat.render();
  ASSERT_NE(copy, nullptr);
  EXPECT_TRUE(test::samePixels(*copy->record(), *picture->record()));
  flat.assign(kInput, nullptr);
  EXPECT_EQ(flat.render(), nullptr);
  EXPECT_EQ(flat.session.messages.size(), 1U);
}

TEST(Bump, MovesEvenlyWithItsValues) {
  const auto picture = test::randomPicture(120, 90, 3);
  for (int i = 0; i < 120 * 90; ++i) { // waves
    const auto wave = static_cast<uint8_t>(127 + 100 * std::sin(i % 120 * 0.2) * std::cos(i / 120 * 0.15));
    picture->record()->Pixels[i] = {wave, wave, uint8_t(wave / 2 + 60), 255};
  }
  test::PictureClip clip(picture->record());
  for (const auto &[field, from, to] : {std::tuple{kHeight, 0.05, 1.0},
                                        {kSmoothness, 0.0, 0.5},
                                        {kAngle, 0.0, 360.0},
                                        {kSlant, 0.2, 0.7},
                                        {kLightX, -1.0, 1.0},
                                        {kShine, 0.0, 1.0},
                                        {kGloss, 0.0, 1.0}}) {
    SCOPED_TRACE(field);
    test::Filter filter(ProcessBumpDeclare, 240, 180);
    filter.assign(kInput, &clip);
    filter.set(kShine, 0.5);
    filter.set(kLightZ, 0.5);
    filter.choose(kLight, field == kLightX ? 1 : 0);
    test::expectEvenSteps(100, [&, field = field, from = from, to = to](int i) {
      filter.set(field, from + (to - from) * i / 100);
      return filter.render();
    });
  }
}

} // namespace
} // namespace zol
