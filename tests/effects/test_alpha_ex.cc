#include "frame/effects.h"
#include "kernels/exports/alpha_shrink.h"
#include "plain/extend_colors.h"
#include "plain/matte.h"
#include "plain/soften.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zol {
namespace {

enum Field { kInput, kSource, kInvert, kLow, kHigh, kBias, kShrink, kSoften, kTransparency, kFill, kShow };

constexpr int kWidth = 90; // of the frame

struct Values {
  int source = 0;
  bool inverts = false;
  double low = 0, high = 0, bias = 0, shrink = 0, soften = 0, transparency = 0;
  bool fills = true, showsMatte = false;
};

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

/// Step after step over the whole picture.
void applyPlainly(t_ZoHostInfo *host, pic &picture, const Values &v) {
  const int count = picture.Width * picture.Height;
  std::vector<_color_t> extended(picture.Pixels, picture.Pixels + count);
  plain::extendColors(extended.data(), picture.Width, picture.Height);
  std::vector<bool> hidden;
  const auto invert = [&] {
    for (int i = 0; i < count; ++i)
      picture.Pixels[i].a = static_cast<uint8_t>(255 - picture.Pixels[i].a);
  };
  for (int i = 0; i < count; ++i) {
    _color_t &p = picture.Pixels[i];
    hidden.push_back(p.a == 0);
    p.a = static_cast<uint8_t>(
        plain::matteLevel(plain::matteValue(p, v.source), v.inverts, v.low, v.high, v.bias));
  }
  const double aspect = host->PixelAspect, unit = host->Width / 10.0;
  if (v.shrink < 0)
    invert();
  const double reach = std::abs(v.shrink) * unit;
  EXPECT_EQ(AlphaShrink(host, &picture, static_cast<float>(reach), static_cast<float>(reach * aspect)), 1);
  if (v.shrink < 0)
    invert();
  std::vector<uint16_t> wide;
  for (int i = 0; i < count; ++i)
    wide.push_back(static_cast<uint16_t>(picture.Pixels[i].a * 255));
  plain::soften(wide.data(), picture.Width, picture.Height, v.soften * unit, v.soften * unit * aspect);
  for (int i = 0; i < count; ++i) {
    _color_t &p = picture.Pixels[i];
    const int soft = (wide[size_t(i)] + 127) / 255;
    p.a = static_cast<uint8_t>(soft * (4096 - static_cast<int>(4096 * v.transparency)) >> 12);
    if (v.fills && hidden[size_t(i)] && p.a != 0)
      p = {extended[size_t(i)].b, extended[size_t(i)].g, extended[size_t(i)].r, p.a};
    if (v.showsMatte)
      p = {p.a, p.a, p.a, 255};
  }
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
    applyPlainly(filter.session.info(), *expected->record(), values);
    test::atEveryLevel([&] {
      const auto out = filter.render();
      ASSERT_NE(out, nullptr);
      ASSERT_TRUE(test::samePixels(*out->record(), *expected->record())) << "round " << round;
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
