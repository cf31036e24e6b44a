#include "frame/effects.h"
#include "frame/picture.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <numbers>

namespace zol {
namespace {

enum Field {
  kBackground,
  kInput,
  kX,
  kY,
  kScale,
  kScaleX,
  kScaleY,
  kAngle,
  kSkew,
  kAnchorX,
  kAnchorY,
  kOpacity,
  kMode,
  kFilter,
  kUseAlpha,
  kShutter,
};

constexpr int kWidth = 96, kHeight = 64;

struct Scene : test::Filter {
  explicit Scene(const pic *picture, const pic *background = nullptr, int width = kWidth,
                 int height = kHeight)
      : Filter(ProcessPasteDeclare, width, height), clip(const_cast<pic *>(picture)),
        ground(const_cast<pic *>(background)) {
    assign(kInput, &clip);
    assign(kBackground, background != nullptr ? &ground : nullptr);
  }

  test::PictureClip clip, ground;
};

/// Some pixels opaque, some hidden.
auto anyPicture(int width, int height, unsigned seed, int x = 0, int y = 0) {
  auto picture = test::randomPicture(width, height, seed, x, y);
  for (size_t i = 0; i < picture->pixels(); i += 2)
    picture->record()->Pixels[i].a = i % 4 == 0 ? 255 : 0;
  return picture;
}

/// What `upper` gives for the frame's pixels, laid over a background.
template <class Upper> auto laid(const pic &background, int mode, Upper upper) {
  const Area area = Area::of(background);
  auto want = host::PictureBuffer::make(area.width(), area.height());
  placeAt(*want->record(), area);
  for (int y = area.top; y < area.bottom; ++y)
    for (int x = area.left; x < area.right; ++x)
      *pixelAt(*want->record(), x, y) =
          plain::layPixel(plain::pixelOf(background, x, y), upper(x, y), mode, 4096, false);
  return want;
}

TEST(Paster, CopiesWhatIsMovedTurnedAndMirroredByWholePixelsInEveryMode) {
  const auto picture = anyPicture(30, 20, 1, 20, 18), ground = test::randomPicture(80, 50, 2, 6, 5);
  Scene scene(picture->record(), ground->record());
  for (int round = 0; round < 64; ++round) {
    const int mode = round % 16, turns = round % 4, filter = round % 3;
    const bool mirrored = round % 5 < 2, opaque = round % 7 == 0;
    scene.set(kX, 11.0 / kWidth);
    scene.set(kY, -4.0 / kHeight);
    scene.set(kScaleX, mirrored ? -0.5 : 0.5);
    scene.set(kScaleY, 0.5);
    scene.set(kScale, 2);
    scene.set(kAngle, 90 * turns - 360);
    scene.choose(kMode, mode);
    scene.choose(kFilter, filter);
    scene.choose(kUseAlpha, opaque ? 0 : 1);
    const auto want = laid(*ground->record(), mode, [&](int x, int y) {
      int right = 2 * (x - 11) + 1 - 2 * 35, down = 2 * (y + 4) + 1 - 2 * 28; // in halves, from the middle
      for (int i = 0; i < turns; ++i) {
        const int was = right;
        right = down;
        down = -was;
      }
      _color_t p = plain::pixelOf(*picture->record(), ((mirrored ? -right : right) + 2 * 35 - 1) / 2,
                                  (down + 2 * 28 - 1) / 2);
      const bool has = std::abs(right) < 30 && std::abs(down) < 20;
      if (opaque)
        p.a = has ? 255 : 0;
      return p;
    });
    EXPECT_TRUE(test::samePixels(*scene.render()->record(), *want->record())) << round;
  }
}

TEST(Paster, CopiesItsInputWhereNothingIsChanged) {
  const auto picture = anyPicture(30, 20, 1, -7, 9), ground = test::randomPicture(80, 50, 2, 6, 5);
  EXPECT_TRUE(test::samePixels(*Scene(picture->record()).render()->record(), *picture->record()));
  EXPECT_TRUE(test::samePixels(*Scene(picture->record(), ground->record()).render()->record(),
                               *laid(*ground->record(), 0, [&](int x, int y) {
                                  return plain::pixelOf(*picture->record(), x, y);
                                })->record()));
  Scene faint(picture->record());
  faint.set(kOpacity, 0.5);
  const auto out = faint.render();
  EXPECT_EQ(Area::of(*out->record()), Area::ofSize(kWidth, kHeight));
  EXPECT_EQ(pixelAt(*out->record(), 1, 9)->a, 128);
}

/// A soft dot on nothing.
auto dot(int width, int height, double x, double y) {
  auto picture = host::PictureBuffer::make(width, height);
  for (int i = 0; i < width * height; ++i) {
    const double r = std::hypot(i % width + 0.5 - x, i / width + 0.5 - y) / 4;
    picture->record()->Pixels[i] = {9, 99, 199,
                                    uint8_t(r < 1 ? 127.5 + 127 * std::cos(std::numbers::pi * r) : 0)};
  }
  return picture;
}

struct Weighed {
  double alphas = 0, x = 0, y = 0;
};
Weighed weigh(const pic &picture) {
  Weighed sum;
  for (int i = 0; i < picture.Width * picture.Height; ++i) {
    const double a = picture.Pixels[i].a;
    sum.alphas += a, sum.x += a * (i % picture.Width + 0.5), sum.y += a * (i / picture.Width + 0.5);
  }
  sum.x /= sum.alphas;
  sum.y /= sum.alphas;
  return sum;
}

TEST(Paster, ScalesSlantsTurnsAndMovesAboutItsAnchorInSquareSpace) {
  test::Dice dice(1);
  for (int round = 0; round < 100; ++round) {
    const double aspect = round % 2 == 0 ? 1 : 1.4;
    const auto picture = dot(40, 30, 25, 11);
    placeAt(*picture->record(), {20, 10, 60, 40});
    Scene scene(picture->record());
    scene.session.info()->PixelAspect = aspect;
    const auto signedShare = [&] { return 2 * dice.share() - 1; };
    const double x = 0.1 * signedShare(), y = 0.1 * signedShare(), scale = 0.7 + 0.5 * dice.share(),
                 scaleX = dice.below(2) ? -1 : 1.2, scaleY = dice.below(2) ? 0.8 : 1,
                 angle = 360 * signedShare(), skew = 0.3 * signedShare(), anchorX = 0.3 * signedShare(),
                 anchorY = 0.3 * signedShare();
    const double values[] = {x, y, scale, scaleX, scaleY, angle, skew, anchorX, anchorY};
    for (int i = 0; i < 9; ++i)
      scene.set(kX + i, values[i]);
    const double fixedX = 20 + 40 * (0.5 + anchorX), fixedY = 10 + 30 * (0.5 + anchorY);
    double right = (20 + 25 - fixedX) * aspect * scale * scaleX;
    const double down = (10 + 11 - fixedY) * scale * scaleY;
    right += skew * down;
    const double c = std::cos(angle * std::numbers::pi / 180), s = std::sin(angle * std::numbers::pi / 180);
    const double wantX = fixedX + (c * right - s * down) / aspect + x * kWidth,
                 wantY = fixedY + s * right + c * down + y * kHeight;
    if (wantX < 8 || wantX > kWidth - 8 || wantY < 8 || wantY > kHeight - 8)
      continue;
    const auto out = scene.render();
    const Weighed got = weigh(*out->record()), was = weigh(*picture->record());
    EXPECT_NEAR(got.x, wantX, 0.1) << round;
    EXPECT_NEAR(got.y, wantY, 0.1) << round;
    const double area = scale * scale * std::abs(scaleX * scaleY);
    EXPECT_NEAR(got.alphas / was.alphas, area, 0.03 * area) << round;
  }
}

TEST(Paster, IsBlurredByItsMotionAlone) {
  const auto picture = dot(kWidth, kHeight, 30, 32);
  Scene scene(picture->record());
  t_ZoHostInfo *info = scene.session.info();
  info->VideoClipStart = 2;
  info->FrameTime = 4;
  info->FrameRate = 10;
  info->Time = 0.5; // 20 frames from the start: a frame is a fortieth
  auto &way = *scene.session.parameters.numbers.get(kX, 0);
  way.clear();
  way.set(0, {0});
  way.set(1, {0.8}); // 0.02 in a frame
  const auto still = scene.render();
  scene.set(kShutter, 5);
  const auto blurred = scene.render();
  const Weighed one = weigh(*still->record()), many = weigh(*blurred->record());
  EXPECT_NEAR(one.x, 30 + 0.4 * kWidth, 0.05);
  EXPECT_NEAR(many.x, one.x, 0.05);
  EXPECT_NEAR(many.y, one.y, 0.05);
  EXPECT_NEAR(many.alphas, one.alphas, 0.02 * one.alphas);
  // Along the middle row: as wide as the dot and 5 frames' way.
  const auto extent = [](const pic &out) {
    int count = 0;
    for (int x = 0; x < kWidth; ++x)
      count += out.Pixels[32 * kWidth + x].a > 4 ? 1 : 0;
    return count;
  };
  EXPECT_NEAR(extent(*blurred->record()) - extent(*still->record()), 5 * 0.02 * kWidth, 2.5);
  info->FrameTime = 2; // no telling how long a frame is
  EXPECT_TRUE(test::samePixels(*scene.render()->record(), *still->record()));
  info->FrameTime = 4;
  scene.set(kX, 0.4);
  EXPECT_TRUE(test::samePixels(*scene.render()->record(), *still->record()));
}

TEST(Paster, ZoomsAndTurnsInEvenSteps) {
  const auto picture = dot(kWidth, kHeight, 50, 30);
  Scene scene(picture->record());
  for (const Field field : {kScale, kAngle, kX, kSkew, kOpacity}) {
    SCOPED_TRACE(field);
    test::expectEvenSteps(100, [&](int step) {
      scene.set(field, field == kAngle ? step * 3.6 : 0.7 + step * 0.003);
      return scene.render();
    });
    scene.set(field, field == kScale || field == kOpacity ? 1 : 0);
  }
}

} // namespace
} // namespace zol
