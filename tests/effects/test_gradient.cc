#include "frame/effects.h"
#include "plain/color_ramp.h"
#include "plain/gradient.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/levels.h"
#include "tests/support/outline.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <numbers>

namespace zol {
namespace {

using Picture = std::unique_ptr<host::PictureBuffer>;

enum Field {
  kGeometry,
  kKind,
  kAngle,
  kCenterX,
  kCenterY,
  kLength,
  kOffset,
  kOutside,
  kColors,
  kColor1,
  kAlpha1 = kColor1 + 4,
  kPosition2 = kAlpha1 + 4,
  kPosition3,
  kDither
};

struct Settings {
  int kind = 0;
  double angle = 0, centerX = 0, centerY = 0, length = 1, offset = 0;
  int outside = 0, count = 2;
  _color_t colors[4] = {{0, 0, 0, 255}, {255, 255, 255, 255}, {128, 128, 128, 255}, {64, 64, 64, 255}};
  double position2 = 0.5, position3 = 0.75;
  bool dithers = true;

  void give(test::Filter &gradient) const {
    gradient.choose(kKind, kind);
    const double numbers[] = {angle, centerX, centerY, length, offset};
    for (int i = 0; i < 5; ++i)
      gradient.set(kAngle + i, numbers[i]);
    gradient.choose(kOutside, outside);
    gradient.choose(kColors, count - 2);
    for (int i = 0; i < 4; ++i) {
      gradient.setColor(kColor1 + i, colors[i]);
      gradient.set(kAlpha1 + i, (colors[i].a + 0.5) / 255);
    }
    gradient.set(kPosition2, position2);
    gradient.set(kPosition3, position3);
    gradient.choose(kDither, dithers ? 1 : 0);
  }

  [[nodiscard]] std::vector<plain::Stop> stops() const {
    const int second = static_cast<int>(std::lround(position2 * 65536));
    const int third = std::max(second, static_cast<int>(std::lround(position3 * 65536)));
    if (count == 2)
      return {{0, colors[0]}, {65536, colors[1]}};
    if (count == 3)
      return {{0, colors[0]}, {second, colors[1]}, {65536, colors[2]}};
    return {{0, colors[0]}, {second, colors[1]}, {third, colors[2]}, {65536, colors[3]}};
  }

  /// Over a frame of the picture's size.
  void paint(const pic &out, double aspect) const {
    const double w = out.Width, h = out.Height, degree = std::numbers::pi / 180;
    const double c = std::round(std::cos(angle * degree) * 0x1p30) / 0x1p30,
                 s = std::round(std::sin(angle * degree) * 0x1p30) / 0x1p30;
    const auto across = [&](int x) { return (x + 0.5 - (0.5 + centerX) * w) * aspect; };
    const auto down = [&](int y) { return y + 0.5 - (0.5 + centerY) * h; };
    const double line = length * (std::fabs(c) * w * aspect + std::fabs(s) * h);
    const auto fine = [](double v) { return static_cast<int64_t>(std::rint(v * 0x1p32)); };
    const int64_t first = (int64_t{1} << 31) + fine((c * across(0) + s * down(0)) / line);
    for (int y = 0; y < out.Height; ++y)
      for (int x = 0; x < out.Width; ++x) {
        const auto u = static_cast<float>(across(x)), v = static_cast<float>(down(y));
        int64_t position = plain::conicalPosition(u, v, static_cast<int>(std::rint(angle / 360 * 65536)));
        if (kind == 0)
          position = plain::linearPosition(first + y * fine(s / line), fine(c * aspect / line), x);
        if (kind == 1)
          position =
              plain::radialPosition(u, v, static_cast<float>(131072 / (length * std::max(w * aspect, h))));
        const int place = plain::rampPlace(position, static_cast<int>(std::rint(offset * 65536)), outside);
        out.Pixels[y * out.Width + x] =
            plain::rampPixel(plain::rampEntry(stops(), place), plain::rampTerm(dithers, x, y));
      }
  }
};

TEST(GradientRender, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 60; ++round) {
    const auto signedShare = [&] { return dice.below(3) == 0 ? 0.0 : 2 * dice.share() - 1; };
    Settings settings{.kind = round % 3,
                      .angle = dice.below(3) == 0 ? 90.0 * dice.below(4) : 359 * dice.share(),
                      .centerX = signedShare(),
                      .centerY = signedShare(),
                      .length = dice.below(3) == 0 ? 1 : std::exp2(dice.between(-6, 3)),
                      .offset = 10 * signedShare(),
                      .outside = dice.below(3),
                      .count = dice.between(2, 4),
                      .position2 = dice.share(),
                      .position3 = dice.share(),
                      .dithers = dice.below(2) == 0};
    for (_color_t &color : settings.colors)
      color = {uint8_t(dice.word()), uint8_t(dice.word()), uint8_t(dice.word()), uint8_t(dice.word())};
    const auto want = host::PictureBuffer::make(dice.between(1, 50), dice.between(1, 20));
    const double aspect = dice.below(2) == 0 ? 1 : 1.0625;
    settings.paint(*want->record(), aspect);
    test::Filter gradient(ProcessGradientDeclare, want->record()->Width, want->record()->Height);
    gradient.session.info()->PixelAspect = aspect;
    settings.give(gradient);
    test::atEveryLevel([&] {
      const Picture got = gradient.render();
      ASSERT_NE(got, nullptr);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << round;
    });
  }
}

TEST(GradientRender, IsTheSameTurnedByHalfATurn) {
  test::Filter gradient(ProcessGradientDeclare, 201, 99);
  gradient.choose(kDither, 0);
  for (const int kind : {0, 1})
    for (const double angle : {0.0, 33.0, 90.0}) {
      gradient.choose(kKind, kind);
      gradient.set(kAngle, angle);
      const Picture out = gradient.render();
      ASSERT_NE(out, nullptr);
      for (size_t i = 0, last = out->pixels() - 1; i <= last; ++i) {
        const int one = out->record()->Pixels[i].g, other = out->record()->Pixels[last - i].g;
        ASSERT_LE(std::abs(kind == 0 ? one + other - 255 : one - other), 1) << i << ' ' << angle;
      }
    }
}

// What dithering adds and takes away is nothing on the whole.
TEST(GradientRender, KeepsTheMeanWhereItIsDithered) {
  test::Filter gradient(ProcessGradientDeclare, 8000, 8);
  gradient.setColor(kColor1, {100, 100, 100, 255});
  gradient.setColor(kColor1 + 1, {110, 110, 110, 255});
  const auto tileMean = [](const pic &out, int left) {
    int sum = 0;
    for (int i = 0; i < 64; ++i)
      sum += out.Pixels[i / 8 * out.Width + left + i % 8].r;
    return sum / 64.0;
  };
  const Picture dithered = gradient.render();
  gradient.session.info()->BitsPerPixel = 24;
  const Picture plain = gradient.render();
  ASSERT_TRUE(dithered != nullptr && plain != nullptr);
  for (int left = 0; left < 8000; left += 8) {
    const double want = 100 + 10 * (left + 4) / 8000.0;
    ASSERT_NEAR(tileMean(*dithered->record(), left), want, 1.0 / 32) << left;
    if (std::fabs(want - std::round(want)) < 0.45) {
      ASSERT_EQ(tileMean(*plain->record(), left), std::round(want)) << left;
    }
  }
}

/// Translucent green, by both effects alike.
Picture green(bool bySolidColor, const host::Shape *shape) {
  test::Filter source(bySolidColor ? ProcessMatteDeclare : ProcessGradientDeclare, 40, 30);
  for (const int color : {bySolidColor ? 1 : kColor1, kColor1 + 1})
    source.setColor(color, {10, 200, 30, 255});
  for (const int alpha : {bySolidColor ? 2 : kAlpha1, kAlpha1 + 1})
    source.set(alpha, 0.7);
  *source.session.parameters.geometries.get(kGeometry, 0) = shape;
  return source.render();
}

TEST(GradientRender, FillsShapesAndMeetsSolidColor) {
  const Picture plain = green(false, nullptr), solid = green(true, nullptr);
  ASSERT_TRUE(plain != nullptr && solid != nullptr);
  EXPECT_TRUE(test::samePixels(*plain->record(), *solid->record()));

  // Half of it outside, and its last row half covered.
  const test::OutlineShape box(test::polygon({{-4, 6}, {6, 6}, {6, 12.5}, {-4, 12.5}}));
  const Picture half = green(false, &box);
  ASSERT_NE(half, nullptr);
  const pic &out = *half->record();
  EXPECT_EQ(test::samePixels(out, pic{0, 6, 6, 7, out.Pixels}), true);
  const auto is = [](const _color_t &p, int alpha) {
    return p.b == 10 && p.g == 200 && p.r == 30 && p.a == alpha;
  };
  EXPECT_TRUE(is(out.Pixels[3], 178));
  EXPECT_TRUE(is(out.Pixels[6 * 6 + 3], 89));

  const test::OutlineShape beside(test::polygon({{-4, 6}, {-2, 6}, {-2, 12}}));
  const Picture none = green(false, &beside);
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(none->pixels(), 1U);
  EXPECT_EQ(none->record()->Pixels[0].a, 0);
}

} // namespace
} // namespace zol
