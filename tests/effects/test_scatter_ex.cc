#include "frame/effects.h"
#include "kernels/particles/births.h"
#include "tests/support/filter.h"
#include "tests/support/outline.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <functional>
#include <numbers>

namespace zol {
namespace {

using host::PictureBuffer;

enum Field {
  kBackground,
  kSprite,
  kEmitter,
  kRenderer,
  kMode,
  kRate,
  kLife,
  kX,
  kY,
  kSpeed,
  kDirection,
  kCone,
  kGravity,
  kSize,
  kEndSize,
  kColor,
  kEndColor,
  kAlpha,
  kFadeIn,
  kFadeOut,
  kSpin,
  kVariation,
  kSeed,
  kImageAlpha,
  kRunning
};
enum Renderer { kDots, kDiscs, kSquares, kStreaks, kPicture };

constexpr _color_t kBlue = {200, 100, 50, 255};

/// A clip of ten seconds on a transparent frame.
class Scene : public test::Filter {
public:
  explicit Scene(int width = 64, int height = 36) : Filter(ProcessScatterExDeclare, width, height) {
    assign(kBackground, nullptr);
    setColor(kColor, kBlue);
    setColor(kEndColor, kBlue);
  }
  auto at(double seconds, double rate = 25) {
    session.info()->FrameTime = seconds;
    session.info()->Time = seconds / 10;
    session.info()->FrameRate = rate;
    return render();
  }
  /// All particles alike, where they were born, for all of their lives.
  void stand(Renderer renderer, double size) {
    choose(kRenderer, renderer);
    set(kSize, size);
    for (const Field field : {kSpeed, kGravity, kFadeIn, kFadeOut, kVariation})
      set(field, 0);
    set(kEndSize, 1);
  }
  void emit(test::Outline outline) {
    shape_ = std::make_unique<test::OutlineShape>(std::move(outline));
    *session.parameters.geometries.get(kEmitter, 0) = shape_.get();
  }

private:
  std::unique_ptr<test::OutlineShape> shape_;
};

_color_t pixel(const PictureBuffer &picture, int x, int y) {
  return picture.record()->Pixels[ptrdiff_t{y} * picture.record()->Width + x];
}
/// In pixels.
double sumOfAlphas(const PictureBuffer &picture) {
  double sum = 0;
  for (size_t i = 0; i < picture.pixels(); ++i)
    sum += picture.record()->Pixels[i].a / 255.0;
  return sum;
}

int living(double rate, double life, double variation, double now) {
  int count = 0;
  const auto last = static_cast<int64_t>(std::floor(now * kTicksASecond));
  for (int64_t tick = last - kTicksThatCount; tick <= last; ++tick) {
    const int births = birthsOf(7, tick, rate);
    for (int i = 0; i < births; ++i) {
      const ParticleChance chance(7, tick, i);
      count +=
          isKept(chance, rate, life) && lifetimeOf(chance, tick, i, births, now, life, variation).isNow();
    }
  }
  return count;
}

TEST(Births, KeepRateTimesLifeAliveOnTheAverage) {
  const struct {
    double rate, life, variation, want;
  } cases[] = {{100, 2, 0.5, 200}, {7.3, 4, 1, 29.2}, {3000, 0.04, 0, 120}, {10000, 30, 1, 262144}};
  for (const auto &[rate, life, variation, want] : cases) {
    double sum = 0;
    const int moments = rate * life > 1e5 ? 1 : 200;
    for (int i = 0; i < moments; ++i)
      sum += living(rate, life, variation, 100 + i * 1.2345);
    EXPECT_NEAR(sum / moments / want, 1, 0.03) << rate << " for " << life;
  }
}

TEST(ScatterEx, RatesAndTheOrderOfFramesDoNotMatter) {
  Scene scene;
  scene.choose(kRunning, 1);
  const auto later = scene.at(3.2), sooner = scene.at(1.04, 50);
  EXPECT_GT(sumOfAlphas(*later), 5);
  EXPECT_TRUE(test::samePixels(*scene.at(3.2, 50)->record(), *later->record()));
  EXPECT_TRUE(test::samePixels(*scene.at(1.04, 25)->record(), *sooner->record()));
  EXPECT_GT(sumOfAlphas(*scene.at(0)), 5);
  scene.choose(kRunning, 0);
  EXPECT_EQ(sumOfAlphas(*scene.at(0)), 0);
}

TEST(ScatterEx, ShapesCoverTheirAreas) {
  constexpr double kSide = 14;
  const struct {
    Renderer renderer;
    double area;
  } cases[] = {{kDots, std::numbers::pi * kSide * kSide / 12},
               {kDiscs, std::numbers::pi * kSide * kSide / 4},
               {kSquares, kSide * kSide},
               {kStreaks, std::numbers::pi * kSide * kSide / 4}};
  for (const auto &[renderer, area] : cases) {
    Scene scene;
    scene.stand(renderer, kSide / 64);
    scene.set(kRate, 0.5); // most often one at a time
    scene.set(kLife, 1);
    scene.set(kX, 0.1234);
    scene.set(kSpin, 3.3);
    double least = 1e9;
    for (int i = 0; i < 64; ++i)
      if (const double alphas = sumOfAlphas(*scene.at(1 + i / 4.0)); alphas > 0)
        least = std::min(least, alphas);
    EXPECT_NEAR(least, area, area * 0.01) << renderer;
  }
}

TEST(ScatterEx, UprightSquaresAreExactAndBlendStraightColors) {
  Scene scene;
  scene.stand(kSquares, 0.25);
  const auto alone = scene.at(2);
  for (int y = 0; y < 36; ++y)
    for (int x = 0; x < 64; ++x) {
      const bool inside = x >= 24 && x < 40 && y >= 10 && y < 26;
      const _color_t got = pixel(*alone, x, y), want = inside ? kBlue : _color_t{};
      ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0) << x << ", " << y;
    }
  scene.set(kX, 0.5 / 64); // half a pixel to the right
  const _color_t half = pixel(*scene.at(2), 40, 20);
  EXPECT_EQ(half.b, kBlue.b);
  EXPECT_GT(half.a, 128); // many halves, one over another
}

TEST(ScatterEx, SmallDotsShineAlikeWhereverTheyAre) {
  for (const double size : {1.0, 2.0, 2.7}) {
    double least = 1e9, most = 0;
    for (int step = 0; step < 16; ++step) {
      Scene scene;
      scene.stand(kDots, size / 64);
      scene.choose(kMode, 1);
      scene.set(kAlpha, 0.02);
      scene.set(kX, step / 16.0 / 64);
      scene.set(kY, step * 3 / 16.0 / 36);
      scene.set(kRate, 20);
      const double light = sumOfAlphas(*scene.at(2));
      least = std::min(least, light);
      most = std::max(most, light);
    }
    EXPECT_LT(most / least, 1.3) << size;
  }
}

TEST(ScatterEx, PicturesShowTheirPixelsAndTheirAlphaIfItIsUsed) {
  const auto sprite = test::randomPicture(16, 16, 3);
  for (int i = 0; i < 256; ++i)
    sprite->record()->Pixels[i].a = i % 16 < 8 ? 255 : 0;
  test::PictureClip clip(sprite->record());
  Scene scene;
  scene.stand(kPicture, 0.25);
  scene.assign(kSprite, &clip);
  scene.setColor(kColor, {255, 255, 255, 255});
  scene.setColor(kEndColor, {255, 255, 255, 255});
  for (const bool usesAlpha : {true, false}) {
    scene.choose(kImageAlpha, usesAlpha ? 1 : 0);
    const auto out = scene.at(2);
    for (int y = 0; y < 36; ++y)
      for (int x = 0; x < 64; ++x) {
        const bool inside = x >= 24 && x < (usesAlpha ? 32 : 40) && y >= 10 && y < 26;
        _color_t want = inside ? sprite->record()->Pixels[(y - 10) * 16 + x - 24] : _color_t{};
        want.a = inside ? 255 : 0;
        const _color_t got = pixel(*out, x, y);
        ASSERT_EQ(std::memcmp(&got, &want, sizeof got), 0) << x << ", " << y;
      }
  }
  scene.set(kSpin, 0.25 / (10 / 32.0)); // some are turned by a quarter, others by less
  EXPECT_GT(sumOfAlphas(*scene.at(2)), 257);
  scene.set(kSpin, 0);
  scene.set(kSize, 1.0 / 64);
  const _color_t mean = pixel(*scene.at(2), 32, 18);
  EXPECT_NEAR(mean.b, 128, 12);
}

TEST(ScatterEx, WithoutItsPictureItGoesOnAsDotsIfTheHostLikes) {
  test::PictureClip nothing(nullptr);
  Scene scene;
  const auto dots = scene.at(2);
  scene.choose(kRenderer, kPicture);
  EXPECT_TRUE(test::samePixels(*scene.at(2)->record(), *dots->record()));
  scene.assign(kSprite, &nothing);
  EXPECT_TRUE(test::samePixels(*scene.at(2)->record(), *dots->record()));
  scene.session.faults.clear();
  scene.session.faults.failAt(host::Service::ErrorCountReport, 1);
  EXPECT_EQ(scene.at(2), nullptr);
}

TEST(ScatterEx, ParticlesAreBornWithinTheEmitterAndStayWhereItWas) {
  Scene scene;
  scene.stand(kSquares, 1.0 / 64);
  scene.set(kRate, 2000);
  scene.emit(test::polygon({{10, 5}, {50, 5}, {10, 30}}));
  auto out = scene.at(3);
  for (int y = 0; y < 36; ++y)
    for (int x = 0; x < 64; ++x) {
      const double beyond = (x - 10) / 40.0 + (y - 5) / 25.0; // 1 on the long side
      const bool inside = x >= 11 && y >= 6 && beyond < 0.9, outside = x < 9 || y < 4 || beyond > 1.1;
      if (inside || outside) {
        ASSERT_EQ(pixel(*out, x, y).a > 0, inside) << x << ", " << y;
      }
    }
  scene.emit({});
  EXPECT_EQ(sumOfAlphas(*scene.at(3)), 0);

  Scene trail;
  trail.stand(kSquares, 1.0 / 64);
  trail.set(kRate, 1000);
  host::NumberCurve &across = *trail.session.parameters.numbers.get(kX, 0);
  across.clear();
  across.set(0, {-0.5});
  across.set(1, {0.5});
  out = trail.at(8); // lives are 2 seconds
  for (int x = 0; x < 64; ++x)
    if (std::abs(x - 38.4) > 1.5 && std::abs(x - 51.2) > 1.5) {
      EXPECT_EQ(pixel(*out, x, 18).a > 0, x > 38 && x < 51) << x;
    }
}

TEST(ScatterEx, HalfTheSizeIsTheSamePicture) {
  for (const Renderer renderer : {kDots, kDiscs, kSquares, kStreaks}) {
    const auto sized = [renderer](int width, int height) {
      Scene scene(width, height);
      scene.choose(kRenderer, renderer);
      scene.set(kSize, 0.05);
      scene.set(kSpin, 0.7);
      return scene.at(4);
    };
    const auto whole = sized(320, 180), half = sized(160, 90);
    const auto reduced = PictureBuffer::make(160, 90);
    for (int y = 0; y < 90; ++y)
      for (int x = 0; x < 160; ++x) {
        int sum = 0;
        for (int i = 0; i < 4; ++i)
          sum += pixel(*whole, 2 * x + i % 2, 2 * y + i / 2).a;
        reduced->record()->Pixels[y * 160 + x] = {kBlue.b, kBlue.g, kBlue.r, uint8_t((sum + 2) / 4)};
      }
    EXPECT_GT(test::psnr(*reduced->record(), *half->record()), 38) << renderer;
  }
}

} // namespace
} // namespace zol
