#include "frame/effects.h"
#include "frame/picture.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <array>
#include <numbers>

namespace zol {
namespace {

enum Field {
  kInput,
  kTopLeftX,
  kTilt = 9,
  kTurn,
  kRoll,
  kDepth,
  kZoom,
  kX,
  kY,
  kCorners,
  kFilter,
  kBackground
};

constexpr int kWidth = 120, kHeight = 90;
constexpr double kAspect = 1.25;

struct Scene : test::Filter {
  explicit Scene(const pic *picture, int width = kWidth, int height = kHeight)
      : Filter(ProcessPerspectiveDeclare, width, height), clip(const_cast<pic *>(picture)) {
    session.info()->PixelAspect = kAspect;
    assign(kInput, &clip);
  }
  void setCorners(const std::array<double, 8> &shares) {
    for (int i = 0; i < 8; ++i)
      set(kTopLeftX + i, shares[size_t(i)]);
  }

  test::PictureClip clip;
};

/// Red rises to the right and green downwards.
auto ramps(int width, int height, int x = 0, int y = 0) {
  auto picture = host::PictureBuffer::make(width, height);
  for (int i = 0; i < width * height; ++i)
    picture->record()->Pixels[i] = {100, uint8_t(i / width * 255 / height), uint8_t(i % width * 255 / width),
                                    255};
  picture->record()->X = static_cast<int16_t>(x);
  picture->record()->Y = static_cast<int16_t>(y);
  return picture;
}

struct Place {
  double x, y;
};
/// Where a point of the picture, in shares of it, is shown.
struct View {
  double tilt, turn, roll, depth, zoom, right, down;

  [[nodiscard]] Place of(double u, double v, const pic &picture) const {
    const double w = picture.Width, h = picture.Height, half = std::hypot(w * kAspect, h) / 2;
    const auto turned = [](double &a, double &b, double degrees) {
      const double c = std::cos(degrees * std::numbers::pi / 180),
                   s = std::sin(degrees * std::numbers::pi / 180);
      const double was = a;
      a = c * a - s * b;
      b = s * was + c * b;
    };
    double x = (u - 0.5) * w * kAspect, y = (v - 0.5) * h, z = 0;
    turned(x, z, turn);
    turned(z, y, tilt);
    turned(x, y, roll);
    const double scale = zoom / (1 + depth / half * z);
    return {picture.X + w / 2 + x * scale / kAspect + right * kWidth,
            picture.Y + h / 2 + y * scale + down * kHeight};
  }
};

TEST(Perspective, ShowsEveryPointWhereItLiesInSpace) {
  test::Dice dice(1);
  for (int round = 0; round < 60; ++round) {
    const auto picture = ramps(80, 60, dice.between(-10, 40), dice.between(-10, 30));
    Scene scene(picture->record());
    const auto signedShare = [&] { return 2 * dice.share() - 1; };
    const View view{70 * signedShare(),       70 * signedShare(),  180 * signedShare(), dice.share(),
                    0.4 + 0.6 * dice.share(), 0.2 * signedShare(), 0.2 * signedShare()};
    const double values[] = {view.tilt, view.turn, view.roll, view.depth, view.zoom, view.right, view.down};
    for (int i = 0; i < 7; ++i)
      scene.set(kTilt + i, values[i]);
    scene.choose(kFilter, round % 2);
    const auto out = scene.render();
    ASSERT_NE(out, nullptr);
    for (double u = 0.1; u < 1; u += 0.2)
      for (double v = 0.1; v < 1; v += 0.2) {
        const Place at = view.of(u, v, *picture->record()), beside = view.of(u + 0.01, v, *picture->record()),
                    below = view.of(u, v + 0.01, *picture->record());
        if (at.x < 2 || at.x > kWidth - 2 || at.y < 2 || at.y > kHeight - 2)
          continue;
        // How many of 255 steps a pixel takes; where they are many nothing can be said.
        const double step = 2.55 / std::min(std::hypot(beside.x - at.x, beside.y - at.y),
                                            std::hypot(below.x - at.x, below.y - at.y));
        const _color_t p = out->record()->Pixels[int(at.y) * kWidth + int(at.x)];
        if (step < 15) {
          EXPECT_NEAR(p.r, 255 * u - 1.6, 2 * step + 2) << round;
          EXPECT_NEAR(p.g, 255 * v - 2.1, 2 * step + 2) << round;
        }
      }
    for (const Place corner : {Place{0, 0}, Place{1, 0}, Place{0, 1}, Place{1, 1}}) {
      const Place at = view.of(corner.x, corner.y, *picture->record()),
                  middle = view.of(0.5, 0.5, *picture->record());
      const double away = std::hypot(at.x - middle.x, at.y - middle.y);
      const double x = at.x + (at.x - middle.x) / away * 4, y = at.y + (at.y - middle.y) / away * 4;
      if (x > 0 && x < kWidth && y > 0 && y < kHeight) {
        EXPECT_EQ(out->record()->Pixels[int(y) * kWidth + int(x)].a, 0) << round;
      }
    }
  }
}

TEST(Perspective, MovesCornersToTheirPointsAndStraightensWhatLiesBetween) {
  const auto picture = ramps(kWidth, kHeight);
  Scene scene(picture->record());
  const std::array<double, 8> inwards = {0.2, 0.1, -0.1, 0.25, -0.25, -0.1, 0.05, -0.2};
  scene.setCorners(inwards);
  const auto moved = scene.render();
  ASSERT_NE(moved, nullptr);
  constexpr int kOwn[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  for (size_t i = 0; i < 4; ++i) {
    const double x = (kOwn[i][0] + inwards[2 * i]) * kWidth, y = (kOwn[i][1] + inwards[2 * i + 1]) * kHeight;
    const int inX = kOwn[i][0] != 0 ? -3 : 3, inY = kOwn[i][1] != 0 ? -3 : 3;
    const _color_t inside = moved->record()->Pixels[(int(y) + inY) * kWidth + int(x) + inX];
    EXPECT_EQ(inside.a, 255) << i;
    EXPECT_NEAR(inside.r, 255 * kOwn[i][0], 25) << i;
    EXPECT_NEAR(inside.g, 255 * kOwn[i][1], 25) << i;
    EXPECT_EQ(moved->record()->Pixels[(int(y) - inY) * kWidth + int(x) - inX].a, 0) << i;
  }
  Scene back(moved->record());
  back.setCorners(inwards);
  back.choose(kCorners, 1);
  const auto straight = back.render();
  ASSERT_NE(straight, nullptr);
  double off = 0;
  for (int y = 3; y < kHeight - 3; ++y)
    for (int x = 3; x < kWidth - 3; ++x)
      off += std::abs(straight->record()->Pixels[y * kWidth + x].r -
                      picture->record()->Pixels[y * kWidth + x].r);
  EXPECT_LT(off / ((kWidth - 6) * (kHeight - 6)), 0.7);
}

TEST(Perspective, LiesOnTheBackgroundOrTheFrameAndCopiesWhatItLeaves) {
  const auto picture = test::randomPicture(50, 40, 1, 8, -6), ground = test::randomPicture(90, 70, 2, -7, 9);
  Scene scene(picture->record());
  EXPECT_TRUE(test::samePixels(*scene.render()->record(), *picture->record()));
  test::PictureClip below(ground->record());
  const auto over = [&](const pic *background, const pic &upper) {
    const Area area = background != nullptr ? Area::of(*background) : Area::ofSize(kWidth, kHeight);
    auto want = host::PictureBuffer::make(area.width(), area.height());
    placeAt(*want->record(), area);
    for (int y = area.top; y < area.bottom; ++y)
      for (int x = area.left; x < area.right; ++x) {
        const _color_t lower = background != nullptr ? plain::pixelOf(*background, x, y) : _color_t{};
        *pixelAt(*want->record(), x, y) = plain::layPixel(lower, plain::pixelOf(upper, x, y), 0, 4096, false);
      }
    return want;
  };
  scene.assign(kBackground, &below);
  EXPECT_TRUE(
      test::samePixels(*scene.render()->record(), *over(ground->record(), *picture->record())->record()));
  scene.set(kX, 31.0 / kWidth);
  scene.set(kY, -7.0 / kHeight);
  const auto moved = test::randomPicture(50, 40, 1, 8 + 31, -6 - 7);
  EXPECT_TRUE(
      test::samePixels(*scene.render()->record(), *over(ground->record(), *moved->record())->record()));
  scene.assign(kBackground, nullptr);
  EXPECT_TRUE(test::samePixels(*scene.render()->record(), *over(nullptr, *moved->record())->record()));
}

TEST(Perspective, RendersFromBufferToBuffer) {
  const auto picture = test::randomPicture(kWidth, kHeight, 1),
             out = host::PictureBuffer::make(kWidth, kHeight);
  host::Session session("Quorbel");
  const test::Callbacks effect(ProcessPerspectiveDeclare, "Quorbel");
  t_ZoHostInfo *info = session.info();
  info->Width = kWidth;
  info->Height = kHeight;
  info->PixelAspect = kAspect;
  info->InputBuffers[0] = picture->record()->Pixels;
  info->OutputBuffer = out->record()->Pixels;
  info->BitsPerPixel = 32;
  EXPECT_EQ(effect.init(info), 1);
  EXPECT_EQ(effect.renderVideoRT(info), 1);
  EXPECT_TRUE(test::samePixels(*out->record(), *picture->record()));
  session.parameters.numbers.get(kTurn, 0)->set(0.5, {40});
  EXPECT_EQ(effect.renderVideoRT(info), 1);
  Scene scene(picture->record());
  scene.set(kTurn, 40);
  EXPECT_TRUE(test::samePixels(*out->record(), *scene.render()->record()));
}

TEST(Perspective, GoesWithTheFrameAndInEvenSteps) {
  const auto turned = [](int scale, double degrees) {
    const auto picture = ramps(kWidth * scale, kHeight * scale);
    Scene scene(picture->record(), kWidth * scale, kHeight * scale);
    scene.set(kTilt, degrees);
    scene.set(kRoll, 30);
    scene.set(kTopLeftX, 0.2);
    scene.set(kX, 0.1);
    return scene.render();
  };
  const auto big = turned(2, 50), little = turned(1, 50);
  const auto halved = host::PictureBuffer::make(kWidth, kHeight);
  for (int i = 0; i < kWidth * kHeight; ++i) {
    const _color_t *p = big->record()->Pixels + (i / kWidth * 4 * kWidth + i % kWidth * 2);
    const auto mean = [&](uint8_t _color_t::*c) {
      const _color_t below[] = {p[0], p[1], p[2 * kWidth], p[2 * kWidth + 1]};
      int sum = 0, alphas = 0;
      for (const _color_t &q : below)
        sum += q.*c * q.a, alphas += q.a;
      return uint8_t(alphas > 0 ? sum / alphas : 0);
    };
    const int alphas = p[0].a + p[1].a + p[2 * kWidth].a + p[2 * kWidth + 1].a;
    halved->record()->Pixels[i] = {mean(&_color_t::b), mean(&_color_t::g), mean(&_color_t::r),
                                   uint8_t((alphas + 2) / 4)};
  }
  EXPECT_GT(test::psnr(*halved->record(), *little->record()), 35);
  test::expectEvenSteps(60, [&](int step) { return turned(1, 0.5 * step); });
}

} // namespace
} // namespace zol
