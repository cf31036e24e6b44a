#include "frame/effects.h"
#include "plain/alpha_ex.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/levels.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

namespace zol {
namespace {

enum Field { kInput, kSource, kInvert, kLow, kHigh, kBias, kShrink, kSoften, kTransparency, kFill, kShow };

constexpr int kWidth = 90; // of the frame

using Values = plain::AlphaEx;

void give(test::Filter &filter, const Values &v) {
  for (const auto &[field, value] : {std::pair{kLow, v.low},
                                     {kHigh, v.high},
                                     {kBias, v.bias},
                                     {kShrink, v.shrink},
                                     {kSoften, v.soften},
                                     {kTransparency, v.transparency}})
    filter.set(field, value);
  filter.choose(kSource, v.source);
  filter.choose(kInvert, v.inverts ? 1 : 0);
  filter.choose(kFill, v.fills ? 1 : 0);
  filter.choose(kShow, v.showsMatte ? 1 : 0);
}

std::unique_ptr<host::PictureBuffer> copyOf(const pic &picture) {
  auto copy = host::PictureBuffer::make(picture.Width, picture.Height);
  copy->record()->X = picture.X;
  copy->record()->Y = picture.Y;
  std::copy_n(picture.Pixels, copy->pixels(), copy->record()->Pixels);
  return copy;
}

TEST(AlphaEx, DoesItsStepsOneAfterTheOther) {
  test::Dice dice(1);
  for (int round = 0; round < 150; ++round) {
    const auto picture =
        test::randomPicture(dice.between(1, 60), dice.between(1, 40), dice.word(), dice.between(-9, 9));
    for (size_t i = 0; i < picture->pixels(); ++i) // solid areas and holes
      if (i / 7 % 3 != 0)
        picture->record()->Pixels[i].a = i / 14 % 2 != 0 ? 255 : 0;
    const auto share = [&](int sides) { return dice.below(sides) == 0 ? dice.share() : 0.0; };
    Values values{dice.below(6), dice.below(3) == 0, share(3) * 0.6, share(3) * 0.6};
    values.bias = share(3) - share(3);
    values.shrink = (share(3) - share(3)) * 0.5;
    values.soften = share(2);
    values.transparency = share(4);
    values.fills = dice.below(3) != 0;
    values.showsMatte = dice.below(4) == 0;
    test::PictureClip clip(picture->record());
    test::Filter filter(ProcessAlphaExDeclare, kWidth, 50);
    filter.session.info()->PixelAspect = 1.25;
    filter.assign(kInput, &clip);
    give(filter, values);
    const auto expected = copyOf(*picture->record());
    values.apply(*expected->record(), kWidth / 10.0, 1.25);
    test::atEveryLevel([&] {
      const auto out = filter.render();
      ASSERT_NE(out, nullptr);
      ASSERT_TRUE(test::samePixels(*out->record(), *expected->record())) << "round " << round;
    });
  }
}

TEST(AlphaEx, MovesEvenlyWithItsValues) {
  const auto picture = test::randomPicture(120, 90, 3);
  for (int i = 0; i < 120 * 90; ++i) // a disc with a soft rim
    picture->record()->Pixels[i].a =
        static_cast<uint8_t>(std::clamp(8 * (30 - std::hypot(i % 120 - 60, i / 120 - 45)), 0.0, 255.0));
  test::PictureClip clip(picture->record());
  for (const auto &[field, from, to] :
       {std::tuple{kShrink, -0.9, 0.7}, {kSoften, 0.01, 1.0}, {kLow, 0.0, 0.9}, {kTransparency, 0.0, 0.9}}) {
    SCOPED_TRACE(field);
    test::Filter filter(ProcessAlphaExDeclare, 240, 180);
    filter.assign(kInput, &clip);
    test::expectEvenSteps(100, [&, field = field, from = from, to = to](int i) {
      filter.set(field, from + (to - from) * i / 100);
      return filter.render();
    });
  }
}

TEST(AlphaEx, CopiesWhereNothingIsToBeDone) {
  const auto picture = test::randomPicture(20, 10, 1, -3, 4);
  test::PictureClip clip(picture->record());
  test::Filter filter(ProcessAlphaExDeclare, kWidth, 50);
  filter.assign(kInput, &clip);
  const auto copies = [&] {
    const auto out = filter.render();
    return out != nullptr && test::samePixels(*out->record(), *picture->record());
  };
  EXPECT_TRUE(copies());
  for (const int field : {kLow, kHigh, kBias, kShrink, kSoften, kTransparency})
    filter.set(field, std::numeric_limits<double>::quiet_NaN());
  EXPECT_TRUE(copies());
  EXPECT_EQ(filter.session.faults.calls(host::Service::IsAborted), 0);
  filter.choose(kShow, 1);
  EXPECT_FALSE(copies());
}

TEST(AlphaEx, NeverShowsWhatWasHidden) {
  const auto picture = test::randomPicture(80, 50, 1);
  for (int i = 0; i < 80 * 50; ++i) {
    const bool shows = i / 80 > 20 && i / 80 < 30 && i % 80 > 30 && i % 80 < 50;
    picture->record()->Pixels[i] = shows ? _color_t{0, 200, 0, 255} : _color_t{255, 0, 255, 0};
  }
  test::PictureClip clip(picture->record());
  test::Filter filter(ProcessAlphaExDeclare, kWidth, 50);
  filter.assign(kInput, &clip);
  for (const Values &values : {Values{5}, Values{0, true}, Values{.shrink = -0.7}, Values{.soften = 1}}) {
    give(filter, values);
    const auto out = filter.render();
    ASSERT_NE(out, nullptr);
    int shown = 0;
    for (int i = 0; i < 80 * 50; ++i)
      if (const _color_t p = out->record()->Pixels[i]; p.a != 0) {
        ASSERT_TRUE(p.b == 0 && p.g == 200 && p.r == 0) << i;
        ++shown;
      }
    EXPECT_GT(shown, 19 * 9);
  }
}

} // namespace
} // namespace zol
