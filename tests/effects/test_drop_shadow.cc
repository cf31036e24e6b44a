#include "frame/effects.h"
#include "frame/picture.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "plain/soften.h"
#include "tests/support/declared.h"
#include "tests/support/dice.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <numbers>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Session;

enum Field { kInput, kColor, kOpacity, kAngle, kDistance, kSoftness, kDensity, kShadowOnly, kDither };

struct Scene {
  explicit Scene(const pic *picture, int width = 40, int height = 30, const char *identity = "Halvenor")
      : session(identity), effect(ProcessDropShadowDeclare, identity), clip(const_cast<pic *>(picture)) {
    session.info()->Width = width;
    session.info()->Height = height;
    session.info()->PixelAspect = 1.25;
    EXPECT_EQ(effect.init(session.info()), 1);
    *session.parameters.inputs.get(kInput, 0) = {&clip};
  }
  void set(Field field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void setInteger(Field field, int value) { *session.parameters.integers.get(field, 0) = value; }
  auto render() { return session.pictures.take(effect.renderVideo(session.info())); }

  Session session;
  test::Callbacks effect;
  test::PictureClip clip;
};

/// An opaque rectangle amid transparent magenta.
auto card(int width, int height, const Area &area) {
  auto picture = PictureBuffer::make(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      picture->record()->Pixels[y * width + x] = area.hasColumn(x) && area.hasRow(y)
                                                     ? _color_t{40, 200, uint8_t(x * 5), 255}
                                                     : _color_t{255, 0, 255, 0};
  return picture;
}

struct Settings {
  double angle, distance, softness;
  int density, opacity; // 4096 = 1.0
  bool only, dithers;

  void apply(Scene &scene) const {
    scene.set(kAngle, angle);
    scene.set(kDistance, distance);
    scene.set(kSoftness, softness);
    scene.set(kDensity, density / 4096.0);
    scene.set(kOpacity, opacity / 4096.0);
    scene.setInteger(kShadowOnly, only ? 1 : 0);
    scene.setInteger(kDither, dithers ? 1 : 0);
    scene.session.parameters.colors.get(kColor, 0)->set(0.5, host::colorValue({10, 20, 30, 77}));
  }

  [[nodiscard]] auto under(const pic &picture, const t_ZoHostInfo &host) const {
    const Area canvas = unionOf(Area::of(picture), Area::ofSize(host.Width, host.Height));
    std::vector<uint16_t> alphas(static_cast<size_t>(canvas.width() * canvas.height()));
    const auto forEachPixel = [&](auto visit) {
      for (int y = canvas.top; y < canvas.bottom; ++y)
        for (int x = canvas.left; x < canvas.right; ++x)
          visit(x, y, plain::pixelOf(picture, x, y));
    };
    forEachPixel([&](int x, int y, _color_t p) {
      alphas[static_cast<size_t>(canvas.index(x, y))] = static_cast<uint16_t>(255 * p.a);
    });
    const double radius = softness * host.Width / 10, way = distance * host.Width / 10;
    plain::soften(alphas.data(), canvas.width(), canvas.height(), radius, radius * host.PixelAspect);
    const auto sixteenths = [](double pixels) { return static_cast<int>(std::lround(16 * pixels)); };
    const double turn = angle * std::numbers::pi / 180;
    const int right = sixteenths(way * std::cos(turn)),
              down = sixteenths(way * std::sin(turn) * host.PixelAspect);
    auto want = PictureBuffer::make(canvas.width(), canvas.height());
    placeAt(*want->record(), canvas);
    forEachPixel([&](int x, int y, _color_t p) {
      const uint8_t alpha =
          plain::shadowAlpha(alphas.data(), canvas.width(), canvas.height(), right, down, density, opacity,
                             x - canvas.left, y - canvas.top, plain::roundingTerm(dithers, x, y));
      const _color_t shadow = alpha != 0 ? _color_t{10, 20, 30, alpha} : _color_t{p.b, p.g, p.r, 0};
      *pixelAt(*want->record(), x, y) = only ? shadow : plain::layPixel(shadow, p, 0, 4096, false);
    });
    return want;
  }
};

TEST(DropShadow, LaysASoftShadowUnderItsInputOnACanvasThatHoldsTheFrame) {
  test::Dice dice(1);
  for (int round = 0; round < 150; ++round) {
    const auto picture = dice.picture(50, 30);
    Scene scene(picture->record());
    const Settings settings{dice.share() * 900 - 300,
                            dice.share() * (round % 5),
                            round % 3 * dice.share() / 2,
                            round % 2 * dice.below(4097),
                            dice.between(1, 4096),
                            round % 4 == 0,
                            round % 3 == 0};
    settings.apply(scene);
    const auto out = scene.render();
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(test::samePixels(*out->record(),
                                 *settings.under(*picture->record(), *scene.session.info())->record()));
  }
}

TEST(DropShadow, RendersFromBufferToBuffer) {
  const auto picture = card(40, 30, {8, 6, 30, 20}), out = PictureBuffer::make(40, 30);
  Scene scene(picture->record(), 40, 30, "Quorbel");
  t_ZoHostInfo *info = scene.session.info();
  info->InputBuffers[0] = picture->record()->Pixels;
  info->OutputBuffer = out->record()->Pixels;
  info->BitsPerPixel = 32;
  for (const int opacity : {0, 4096}) {
    const Settings settings{30, 1, 0.5, 0, opacity, false, true};
    settings.apply(scene);
    EXPECT_EQ(scene.effect.renderVideoRT(info), 1);
    EXPECT_TRUE(test::samePixels(*out->record(), opacity == 0
                                                     ? *picture->record()
                                                     : *settings.under(*picture->record(), *info)->record()));
  }
}

TEST(DropShadow, NeverShowsWhatTransparentPixelsHide) {
  const auto picture = card(40, 30, {8, 6, 30, 20});
  Scene scene(picture->record());
  scene.set(kSoftness, 1);
  const auto out = scene.render();
  for (size_t i = 0; i < out->pixels(); ++i) {
    const _color_t p = out->record()->Pixels[i];
    EXPECT_TRUE(p.a == 0 || p.b < 100) << i; // magenta is full of blue
  }
}

// A frame of half the size has the same shadow at half the size, and opaque footage is all shadow: no rims.
TEST(DropShadow, GoesWithTheFrame) {
  const auto shadowOf = [](int width, int height, const Area &area) {
    const auto picture = card(width, height, area);
    Scene scene(picture->record(), width, height);
    Settings{60, 1, 0.8, 0, 4096, true, false}.apply(scene);
    return scene.render();
  };
  const auto big = shadowOf(160, 120, {40, 30, 100, 80}), little = shadowOf(80, 60, {20, 15, 50, 40});
  ASSERT_TRUE(big != nullptr && little != nullptr);
  const auto halved = PictureBuffer::make(80, 60);
  for (int i = 0; i < 80 * 60; ++i) {
    const _color_t *p = big->record()->Pixels + i / 80 * 2 * 160 + i % 80 * 2;
    halved->record()->Pixels[i] = {10, 20, 30, uint8_t((p[0].a + p[1].a + p[160].a + p[161].a + 2) / 4)};
  }
  EXPECT_GT(test::psnr(*halved->record(), *little->record()), 35);

  const auto footage = card(80, 60, {0, 0, 80, 60});
  Scene scene(footage->record(), 80, 60);
  Settings{60, 3, 0.8, 0, 4096, true, true}.apply(scene);
  const auto out = scene.render();
  for (size_t i = 0; i < out->pixels(); ++i)
    EXPECT_EQ(out->record()->Pixels[i].a, 255);
}

TEST(DropShadow, ChangesInEvenSteps) {
  const auto picture = card(80, 60, {20, 15, 60, 45});
  for (const Field field : {kAngle, kDistance, kSoftness, kOpacity}) {
    SCOPED_TRACE(field);
    Scene scene(picture->record(), 80, 60);
    Settings{60, 1, 0.5, 0, 4096, false, true}.apply(scene);
    test::expectEvenSteps(100, [&](int step) {
      scene.set(field, field == kAngle ? 3.6 * step : step / 100.0);
      return scene.render();
    });
  }
}

} // namespace
} // namespace zol
