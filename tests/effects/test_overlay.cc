#include "frame/effects.h"
#include "frame/picture.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "tests/support/declared.h"
#include "tests/support/dice.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using host::PictureBuffer;
using host::Session;

enum Field { kBackground, kInput, kX, kY, kOpacity, kMode, kInside };

constexpr int kWidth = 24, kHeight = 10;

struct Scene {
  explicit Scene(const char *identity) : session(identity), effect(ProcessOverlayDeclare, identity) {
    session.info()->Width = kWidth;
    session.info()->Height = kHeight;
    EXPECT_EQ(effect.init(session.info()), 1);
  }
  void set(Field field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void setInteger(Field field, int value) { *session.parameters.integers.get(field, 0) = value; }
  void assign(Field field, host::Clip *clip) { *session.parameters.inputs.get(field, 0) = {clip}; }
  auto render() { return session.pictures.take(effect.renderVideo(session.info())); }

  Session session;
  test::Callbacks effect;
};

/// Random settings, and what they make of two pictures.
struct Settings {
  explicit Settings(test::Dice &dice)
      : right(dice.between(-20 * 16, 20 * 16)), down(dice.between(-8 * 16, 8 * 16)), mode(dice.below(16)),
        opacity(dice.between(1, 4096)), inside(dice.below(3) == 0) {}

  void apply(Scene &scene) const {
    scene.set(kX, right / 16.0 / kWidth);
    scene.set(kY, down / 16.0 / kHeight);
    scene.set(kOpacity, opacity / 4096.0);
    scene.setInteger(kMode, mode);
    scene.setInteger(kInside, inside ? 1 : 0);
  }
  [[nodiscard]] auto over(const pic *background, const pic &overlay, const Area &canvas) const {
    auto want = PictureBuffer::make(canvas.width(), canvas.height());
    placeAt(*want->record(), canvas);
    for (int y = canvas.top; y < canvas.bottom; ++y)
      for (int x = canvas.left; x < canvas.right; ++x) {
        const _color_t below = background != nullptr ? plain::pixelOf(*background, x, y) : _color_t{};
        *pixelAt(*want->record(), x, y) =
            plain::layPixel(below, plain::moved(overlay, right, down, x, y), mode, opacity, inside);
      }
    return want;
  }

  int right, down, mode, opacity;
  bool inside;
};

TEST(Overlay, LaysItsInputOverTheBackgroundOnACanvasThatHoldsTheFrame) {
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    Scene scene("Halvenor");
    const auto lower = dice.picture(30, 12), upper = dice.picture(30, 12);
    test::PictureClip below(lower->record()), above(upper->record());
    const bool stands = round % 4 == 0; // on a transparent frame
    scene.assign(kBackground, stands ? nullptr : &below);
    scene.assign(kInput, &above);
    const Settings settings(dice);
    settings.apply(scene);
    const Area frame = Area::ofSize(kWidth, kHeight);
    const auto out = scene.render();
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(test::samePixels(*out->record(),
                                 *settings
                                      .over(stands ? nullptr : lower->record(), *upper->record(),
                                            stands ? frame : unionOf(Area::of(*lower->record()), frame))
                                      ->record()));
  }
}

TEST(Overlay, TakesTheBackgroundFirstInOneHostAndLastInTheOther) {
  test::Dice dice(2);
  const auto first = test::randomPicture(kWidth, kHeight, 1), last = test::randomPicture(kWidth, kHeight, 2);
  for (const char *identity : {"halvenor", "Quorbel"}) {
    Scene scene(identity);
    const auto out = PictureBuffer::make(kWidth, kHeight);
    t_ZoHostInfo *info = scene.session.info();
    info->InputBuffers[0] = first->record()->Pixels;
    info->InputBuffers[1] = last->record()->Pixels;
    info->OutputBuffer = out->record()->Pixels;
    info->BitsPerPixel = 32;
    const Settings settings(dice);
    settings.apply(scene);
    EXPECT_EQ(scene.effect.renderVideoRT(info), 1);
    const bool backgroundFirst = identity[0] == 'h';
    const pic &lower = *(backgroundFirst ? first : last)->record(),
              &upper = *(backgroundFirst ? last : first)->record();
    EXPECT_TRUE(test::samePixels(*out->record(), *settings.over(&lower, upper, Area::of(lower))->record()));
    info->BitsPerPixel = 24;
    EXPECT_EQ(scene.effect.renderVideoRT(info), 0);
    ASSERT_EQ(scene.session.messages.size(), 1U);
    EXPECT_EQ(scene.session.messages[0], "Unsupported pixel size");
  }
}

TEST(Overlay, GlidesInEvenSteps) {
  Scene scene("Halvenor");
  const auto upper = PictureBuffer::make(12, 6);
  for (int i = 0; i < 72; ++i) // brightness rises to the middle
    upper->record()->Pixels[i] = {uint8_t(240 - 40 * std::abs(i % 12 - 6)), 90, 200, 255};
  test::PictureClip above(upper->record());
  scene.assign(kInput, &above);
  scene.set(kY, 0.2);
  test::expectEvenSteps(100, [&](int step) {
    scene.set(kX, step / 16.0 / kWidth);
    return scene.render();
  });
}

} // namespace
} // namespace zol
