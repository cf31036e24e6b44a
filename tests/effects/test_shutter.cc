#include "frame/effects.h"
#include "frame/picture.h"
#include "kernels/compositing/shutter.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

enum Field {
  kInput,
  kBackground,
  kOpening,
  kKind,
  kCount,
  kAngle,
  kCenterX,
  kCenterY,
  kSoftness,
  kBorder,
  kBorderColor,
  kInvert,
};

constexpr int kWidth = 60, kHeight = 30;
constexpr double kAspect = 1.25;
constexpr _color_t kRed = {10, 20, 200, 77};

uint8_t covered(int alpha, int coverage) { return static_cast<uint8_t>((alpha * coverage + 128) >> 8); }

TEST(Shutter, OpensItsInputAndABorderOverTheBackground) {
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    const auto ground = dice.picture(60, 30), input = dice.picture(60, 30);
    test::PictureClip grounds(ground->record()), inputs(input->record());
    test::Filter filter(ProcessShutterDeclare, kWidth, kHeight);
    filter.session.info()->PixelAspect = kAspect;
    const bool stands = round % 5 == 0, inverts = round % 3 == 0;
    filter.assign(kBackground, stands ? nullptr : &grounds);
    filter.assign(kInput, &inputs);
    const double opening = 0.05 + 0.9 * dice.share(), softness = dice.below(2) * dice.share() * 2;
    const double border = dice.below(2) * dice.share() * 2, centerX = dice.share() - 0.5,
                 centerY = dice.share() - 0.5;
    const ShutterLook look = {static_cast<ShutterKind>(round % 4),
                              dice.between(1, 14),
                              dice.share() * 720 - 360,
                              (0.5 + centerX) * kWidth,
                              (0.5 + centerY) * kHeight,
                              kWidth,
                              kHeight,
                              kAspect,
                              softness * kWidth / 10 * kAspect,
                              border * kWidth / 10 * kAspect};
    for (const auto &[field, value] : {std::pair{kOpening, opening},
                                       {kAngle, look.angle},
                                       {kCenterX, centerX},
                                       {kCenterY, centerY},
                                       {kSoftness, std::min(1.0, softness)},
                                       {kBorder, std::min(1.0, border)}})
      filter.set(field, value);
    filter.choose(kKind, round % 4);
    filter.choose(kCount, look.blades);
    filter.choose(kInvert, inverts ? 1 : 0);
    filter.setColor(kBorderColor, kRed);
    ShutterLook held = look;
    held.softness = std::min(held.softness, kWidth / 10 * kAspect);
    held.border = std::min(held.border, kWidth / 10 * kAspect);
    const ShutterMask mask(held, opening, inverts);
    const Area canvas = stands ? Area::ofSize(kWidth, kHeight) : Area::of(*ground->record());
    const auto want = host::PictureBuffer::make(canvas.width(), canvas.height());
    placeAt(*want->record(), canvas);
    for (int y = canvas.top; y < canvas.bottom; ++y)
      for (int x = canvas.left; x < canvas.right; ++x) {
        uint16_t inner = 0, outer = 0;
        mask.innerRow(y, x, 1, &inner);
        mask.outerRow(y, x, 1, &outer);
        _color_t edge = kRed, upper = plain::pixelOf(*input->record(), x, y);
        edge.a = covered(255, held.border == 0 || outer <= inner ? 0 : (outer - inner) * 256 / (256 - inner));
        upper.a = covered(upper.a, inner);
        const _color_t below = stands ? _color_t{} : plain::pixelOf(*ground->record(), x, y);
        *pixelAt(*want->record(), x, y) =
            plain::layPixel(plain::layPixel(below, edge, 0, 4096, false), upper, 0, 4096, false);
      }
    const auto out = filter.render();
    ASSERT_NE(out, nullptr);
    EXPECT_TRUE(test::samePixels(*out->record(), *want->record())) << round;
  }
}

TEST(Shutter, EndsInTheVeryPictures) {
  const auto ground = test::randomPicture(50, 40, 1, 3, -4), input = test::randomPicture(20, 10, 2, 1, 9);
  test::PictureClip grounds(ground->record()), inputs(input->record());
  for (int kind = 0; kind < kShutterKinds; ++kind)
    for (const bool inverts : {false, true}) {
      test::Filter filter(ProcessShutterDeclare, kWidth, kHeight);
      filter.choose(kKind, kind);
      filter.choose(kInvert, inverts ? 1 : 0);
      filter.set(kSoftness, 0.4);
      filter.set(kBorder, 0.3);
      filter.assign(kInput, &inputs);
      filter.assign(kBackground, nullptr);
      filter.set(kOpening, 1);
      EXPECT_TRUE(test::samePixels(*filter.render()->record(), *input->record())) << kind;
      filter.assign(kBackground, &grounds);
      filter.set(kOpening, 0);
      EXPECT_TRUE(test::samePixels(*filter.render()->record(), *ground->record())) << kind;
    }
}

TEST(Shutter, OpensInEvenSteps) {
  const auto ground = host::PictureBuffer::make(96, 54), input = host::PictureBuffer::make(96, 54);
  std::fill_n(ground->record()->Pixels, 96 * 54, _color_t{200, 60, 20, 255});
  std::fill_n(input->record()->Pixels, 96 * 54, _color_t{20, 160, 220, 255});
  test::PictureClip grounds(ground->record()), inputs(input->record());
  for (int kind = 0; kind < kShutterKinds; ++kind) {
    SCOPED_TRACE(kind);
    test::Filter filter(ProcessShutterDeclare, 96, 54);
    filter.assign(kInput, &inputs);
    filter.assign(kBackground, &grounds);
    filter.choose(kKind, kind);
    filter.choose(kCount, 3);
    filter.set(kSoftness, 0.5);
    filter.set(kBorder, 0.2);
    test::expectEvenSteps(200, [&](int step) {
      filter.set(kOpening, step / 200.0);
      return filter.render();
    });
  }
}

} // namespace
} // namespace zol
