#include "frame/effects.h"
#include "frame/picture.h"
#include "tests/support/filter.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace zol {
namespace {

enum Field {
  kInput,
  kBackground,
  kProgress,
  kSize,
  kShape,
  kOrder,
  kAngle,
  kSpread,
  kExplosion,
  kGravity,
  kWind,
  kSpin,
  kTumble,
  kRandomness,
  kCenterX,
  kCenterY,
  kShrink,
  kFade,
  kSeed
};
enum Shape { kShards, kSquares, kBricks };
enum Order { kTogether, kFromCenter, kAlongAngle, kAtRandom };

constexpr int kWidth = 90, kHeight = 60;

struct Scene : test::Filter {
  explicit Scene(const pic &picture, int width = kWidth, int height = kHeight)
      : test::Filter(ProcessCrumbleDeclare, width, height), input(const_cast<pic *>(&picture)) {
    assign(kInput, &input);
  }
  /// Nothing moves but what is set afterwards.
  void still(double progress) {
    set(kProgress, progress);
    for (const Field field : {kSpread, kExplosion, kGravity, kSpin, kTumble, kRandomness})
      set(field, 0);
  }
  test::PictureClip input;
};

auto photograph(int scale) {
  auto made = host::PictureBuffer::make(scale * kWidth, scale * kHeight);
  for (int y = 0; y < scale * kHeight; ++y)
    for (int x = 0; x < scale * kWidth; ++x) {
      const auto wave = [=](double a, double b) {
        return static_cast<uint8_t>(127 + 100 * std::sin((x + 0.5) * a / scale + (y + 0.5) * b / scale));
      };
      made->record()->Pixels[y * scale * kWidth + x] = {wave(0.1, 0.05), wave(-0.04, 0.1), wave(0.07, 0),
                                                        255};
    }
  return made;
}

TEST(Crumble, CopiesAtTheBeginningAndLaysOverItsBackground) {
  const auto image = test::randomPicture(40, 30, 1, 5, -3), below = test::randomPicture(50, 45, 2, -4, 2);
  test::PictureClip background(below->record());
  for (const bool hasBackground : {false, true}) {
    Scene scene(*image->record());
    scene.set(kProgress, 0);
    if (hasBackground)
      scene.assign(kBackground, &background);
    const auto whole = scene.render();
    ASSERT_NE(whole, nullptr);
    // Fragments that have started but not moved are the same again, but for the rounding of alphas.
    scene.still(1);
    const auto started = scene.render();
    ASSERT_NE(started, nullptr);
    const pic &out = *started->record();
    EXPECT_EQ(Area::of(out), hasBackground ? Area::of(*below->record()) : Area::ofSize(kWidth, kHeight));
    if (!hasBackground)
      EXPECT_TRUE(test::samePixels(*whole->record(), *image->record()));
    else
      EXPECT_GT(test::psnr(out, *whole->record()), 45);
  }
  Scene scene(*image->record());
  scene.assign(kInput, nullptr);
  EXPECT_EQ(scene.render(), nullptr);
  EXPECT_EQ(scene.session.messages.back(), "Input not assigned");
}

TEST(Crumble, MovesFragmentsAsItsFieldsSay) {
  const auto image = test::randomPicture(kWidth, kHeight, 1);
  for (size_t i = 0; i < image->pixels(); ++i)
    image->record()->Pixels[i].a = 255;
  struct Case {
    std::initializer_list<std::pair<Field, double>> values;
    int right, down, alpha;
  };
  // One fragment: half way, Gravity has come a quarter of its way.
  for (const auto &[values, right, down, alpha] :
       std::initializer_list<Case>{{{{kGravity, 0.5}}, 0, 15, 255},
                                   {{{kWind, 0.2}, {kAngle, 90}}, 0, 9, 255},
                                   {{{kWind, -0.2}}, -9, 0, 255},
                                   {{{kExplosion, 0.4}, {kCenterX, -0.3}}, 18, 0, 255},
                                   {{{kExplosion, 0.4}, {kCenterY, 0.7}, {kFade, 0.5}}, 0, -18, 191},
                                   {{{kExplosion, 0.4}}, 0, 0, 255}}) {
    Scene scene(*image->record());
    scene.still(0.5);
    scene.set(kSize, 1);
    scene.choose(kShape, kSquares);
    for (const auto &[field, value] : values)
      scene.set(field, value);
    const auto out = scene.render();
    ASSERT_NE(out, nullptr);
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const bool isThere = Area::ofSize(kWidth, kHeight).moved(right, down).hasColumn(x) &&
                             Area::ofSize(kWidth, kHeight).moved(right, down).hasRow(y);
        _color_t want = isThere ? *pixelAt(*image->record(), x - right, y - down) : _color_t{};
        if (isThere)
          want.a = static_cast<uint8_t>(alpha);
        const _color_t got = *pixelAt(*out->record(), x, y);
        ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0)
            << right << ", " << down << " at " << x << ", " << y;
      }
  }
}

TEST(Crumble, StartsFragmentsInTheirOrder) {
  const auto image = photograph(1);
  struct Case {
    int order;
    double angle;
    Area started, rests;
  };
  for (const auto &[order, angle, started, rests] :
       std::initializer_list<Case>{{kAlongAngle, 0, {0, 0, 15, kHeight}, {50, 0, kWidth, kHeight}},
                                   {kAlongAngle, 270, {0, 45, kWidth, kHeight}, {0, 0, kWidth, 25}},
                                   {kFromCenter, 0, {38, 26, 52, 34}, {0, 0, kWidth, 6}}}) {
    Scene scene(*image->record());
    scene.still(0.2); // the first fifth of twice the time
    scene.set(kSpread, 1);
    scene.set(kFade, 1);
    scene.choose(kOrder, order);
    scene.set(kAngle, angle);
    const auto out = scene.render();
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const int alpha = pixelAt(*out->record(), x, y)->a;
        const auto isIn = [=](const Area &area) { return area.hasColumn(x) && area.hasRow(y); };
        ASSERT_TRUE(isIn(started) ? alpha < 255 : !isIn(rests) || alpha == 255)
            << order << ": " << alpha << " at " << x << ", " << y;
      }
  }
}

TEST(Crumble, GlidesAndLooksTheSameAtHalfTheSize) {
  const auto half = photograph(1), whole = photograph(2);
  for (int shape = 0; shape <= kBricks; ++shape)
    for (int order = 0; order <= kAtRandom; ++order) {
      SCOPED_TRACE(testing::Message() << shape << ", " << order);
      const auto prepare = [=](Scene &scene) {
        scene.choose(kShape, shape);
        scene.choose(kOrder, order);
        scene.choose(kSeed, 7 * order);
        scene.set(kSize, 0.2);
      };
      std::unique_ptr<host::PictureBuffer> coarse;
      {
        Scene scene(*half->record());
        prepare(scene);
        test::expectEvenSteps(200, [&](int i) {
          scene.set(kProgress, 0.2 + i / 1000.0);
          return scene.render();
        });
        scene.set(kProgress, 0.3);
        coarse = scene.render();
      }
      Scene large(*whole->record(), 2 * kWidth, 2 * kHeight);
      prepare(large);
      large.set(kProgress, 0.3);
      const auto fine = large.render();
      const auto shrunk = host::PictureBuffer::make(kWidth, kHeight);
      for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
          const auto mean = [&](uint8_t _color_t::*channel) {
            int sum = 0, alpha = 0;
            for (int i = 0; i < 4; ++i) {
              const _color_t p = *pixelAt(*fine->record(), 2 * x + i % 2, 2 * y + i / 2);
              sum += channel == &_color_t::a ? 255 * p.a : p.*channel * p.a;
              alpha += p.a;
            }
            return static_cast<uint8_t>(channel == &_color_t::a ? sum / 1020 : sum / std::max(1, alpha));
          };
          *pixelAt(*shrunk->record(), x, y) = {mean(&_color_t::b), mean(&_color_t::g), mean(&_color_t::r),
                                               mean(&_color_t::a)};
        }
      EXPECT_GT(test::psnr(*coarse->record(), *shrunk->record()), 35);
    }
}

} // namespace
} // namespace zol
