#include "frame/effects.h"
#include "plain/clouds.h"
#include "plain/color_ramp.h"
#include "tests/support/filter.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zol {
namespace {

using Picture = std::unique_ptr<host::PictureBuffer>;

enum Field {
  kSkyColor,
  kSkyAlpha,
  kCloudColor,
  kCloudAlpha,
  kSeed,
  kMeshSize,
  kOctaves,
  kRoughness,
  kEvolution,
  kCycle,
  kOffsetX,
  kOffsetY,
  kZoom,
  kCoverage,
  kContrast,
  kKind,
  kDither
};

constexpr _color_t kSky{0xA5, 0x6E, 0x3A, 255}, kWhite{255, 255, 255, 255};

TEST(CloudsRender, DoesWhatItsFieldsSay) {
  constexpr int kWidth = 150, kHeight = 60;
  test::Filter clouds(ProcessCloudsDeclare, kWidth, kHeight);
  clouds.session.info()->PixelAspect = 1.5;
  const auto expect = [&](const plain::CloudSettings &settings, int bias, int gain, _color_t sky,
                          bool dithers) {
    const Picture got = clouds.render(), want = host::PictureBuffer::make(kWidth, kHeight);
    ASSERT_NE(got, nullptr);
    for (int i = 0; i < kWidth * kHeight; ++i) {
      const int x = i % kWidth, y = i / kWidth;
      const int place = plain::cloudPlace(settings, kWidth, kHeight, x, y, bias, gain);
      want->record()->Pixels[i] = plain::rampPixel(plain::rampEntry({{0, sky}, {65536, kWhite}}, place),
                                                   plain::rampTerm(dithers, x, y));
    }
    EXPECT_TRUE(test::samePixels(*got->record(), *want->record()));
  };
  expect({.cellWidth = 37.5, .cellHeight = 56.25}, 0, 6676, kSky, true);

  clouds.set(kSkyAlpha, 0.5);
  clouds.choose(kSeed, 77);
  clouds.choose(kMeshSize, 9);
  clouds.choose(kOctaves, 3);
  clouds.set(kRoughness, 0.75);
  clouds.set(kEvolution, 2.25);
  clouds.choose(kCycle, 3);
  clouds.set(kOffsetX, 0.5);
  clouds.set(kOffsetY, -0.25);
  clouds.set(kZoom, 0.5);
  clouds.set(kCoverage, 0.75);
  clouds.set(kContrast, 0.5);
  clouds.choose(kKind, 2);
  clouds.choose(kDither, 0);
  plain::CloudSettings set{77, 3, 3072, 37.5, 56.25, 75, -15, 2.25, 3, 2};
  _color_t sky = kSky;
  sky.a = 127;
  expect(set, 3072, 11264, sky, false);

  // Out of range.
  clouds.set(kEvolution, NAN);
  clouds.choose(kCycle, -5);
  clouds.set(kZoom, 0);
  clouds.choose(kOctaves, 99);
  clouds.choose(kMeshSize, 12);
  clouds.set(kOffsetX, -1e9);
  set = {77, 10, 3072, 7.5, 11.25, -1500, -15, 0, 0, 2};
  expect(set, 3072, 11264, sky, false);
}

TEST(CloudsRender, CoversNothingOrAll) {
  test::Filter clouds(ProcessCloudsDeclare, 90, 50);
  clouds.set(kContrast, 0);
  for (const int kind : {0, 1, 2})
    for (const int coverage : {0, 1}) {
      clouds.choose(kKind, kind);
      clouds.set(kCoverage, coverage);
      const Picture out = clouds.render();
      ASSERT_NE(out, nullptr);
      for (size_t i = 0; i < out->pixels(); ++i)
        ASSERT_EQ(out->record()->Pixels[i].b, (coverage == 0 ? kSky : kWhite).b) << kind;
    }
}

TEST(CloudsRender, RepeatsAfterItsCycleWithoutJumps) {
  test::Filter clouds(ProcessCloudsDeclare, 160, 90);
  clouds.choose(kCycle, 2);
  const auto at = [&](double evolution) {
    clouds.set(kEvolution, evolution);
    return clouds.render();
  };
  const Picture first = at(0), last = at(2), between = at(1);
  ASSERT_TRUE(first != nullptr && last != nullptr && between != nullptr);
  EXPECT_TRUE(test::samePixels(*last->record(), *first->record()));
  EXPECT_LT(test::psnr(*first->record(), *between->record()), 20); // others
  test::expectEvenSteps(60, [&](int step) { return at(step / 30.0); });
  clouds.set(kEvolution, 0.3);
  test::expectEvenSteps(60, [&](int step) {
    clouds.set(kZoom, std::exp2(step / 30.0));
    return clouds.render();
  });
}

TEST(CloudsRender, LooksTheSameAtHalfTheSize) {
  const auto render = [](int scale, int octaves) {
    test::Filter clouds(ProcessCloudsDeclare, 200 * scale, 120 * scale);
    clouds.choose(kOctaves, octaves);
    return clouds.render();
  };
  for (const int octaves : {3, 6, 10}) {
    const Picture small = render(1, octaves), large = render(2, octaves);
    ASSERT_TRUE(small != nullptr && large != nullptr);
    const Picture reduced = host::PictureBuffer::make(200, 120);
    for (int i = 0; i < 200 * 120; ++i) {
      const _color_t *p = large->record()->Pixels + i / 200 * 2 * 400 + i % 200 * 2;
      const auto mean = [p](auto channel) {
        return static_cast<uint8_t>((channel(p[0]) + channel(p[1]) + channel(p[400]) + channel(p[401]) + 2) /
                                    4);
      };
      reduced->record()->Pixels[i] = {mean([](const _color_t &c) { return c.b; }),
                                      mean([](const _color_t &c) { return c.g; }),
                                      mean([](const _color_t &c) { return c.r; }), 255};
    }
    EXPECT_GT(test::psnr(*small->record(), *reduced->record()), 30) << octaves;
  }
}

} // namespace
} // namespace zol
