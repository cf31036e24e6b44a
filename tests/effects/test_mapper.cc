#include "frame/effects.h"
#include "frame/picture.h"
#include "plain/mapper.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/levels.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zol {
namespace {

enum Field {
  kInput,
  kMap,
  kMethod,
  kAmountX,
  kAmountY,
  kChannelX,
  kChannelY,
  kLevel,
  kSmoothness,
  kOutside,
  kFilter
};
enum Method { kShift, kSlope, kPosition };
enum Outside { kExtend, kMirror, kTile, kTransparent };

constexpr int kWidth = 90, kHeight = 60;

struct Scene : test::Filter {
  Scene(const pic &picture, const pic &map, int width = kWidth, int height = kHeight)
      : test::Filter(ProcessMapperDeclare, width, height), input(const_cast<pic *>(&picture)),
        ground(const_cast<pic *>(&map)) {
    assign(kInput, &input);
    assign(kMap, &ground);
  }
  test::PictureClip input, ground;
};

auto picture(int width, int height, auto pixel) {
  auto made = host::PictureBuffer::make(width, height);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      made->record()->Pixels[y * width + x] = pixel(x, y);
  return made;
}
_color_t gray(double level) {
  const auto v = static_cast<uint8_t>(std::lround(level));
  return {v, v, v, 255};
}

TEST(Mapper, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 300; ++round) {
    const auto picture = test::randomPicture(dice.between(1, 90), dice.between(1, 30), dice.word(),
                                             dice.between(-40, 40), dice.between(-20, 20));
    const auto map = test::randomPicture(dice.between(0, 90), dice.between(0, 40), dice.word(),
                                         dice.between(-40, 40), dice.between(-20, 20));
    if (dice.below(2) != 0)
      for (size_t i = 0; i < picture->pixels(); ++i)
        picture->record()->Pixels[i].a = 255;
    Scene scene(*picture->record(), *map->record());
    const auto item = [&](Field field, int items) {
      const int value = dice.below(items);
      scene.choose(field, value);
      return value;
    };
    const auto give = [&](Field field, double least, double most) {
      const double value = least + (most - least) * dice.share();
      scene.set(field, value);
      return value;
    };
    const double aspect = dice.below(2) != 0 ? 1 : 1.25, strength = dice.below(2) != 0 ? 0.05 : 1;
    scene.session.info()->PixelAspect = aspect;
    plain::Mapper want{.picture = *picture->record(),
                       .map = *map->record(),
                       .method = item(kMethod, 3),
                       .channelX = item(kChannelX, 5),
                       .channelY = item(kChannelY, 5),
                       .amountX = give(kAmountX, -strength, strength),
                       .amountY = give(kAmountY, -strength, strength),
                       .level = give(kLevel, 0, 1),
                       .smoothness = give(kSmoothness, 0, 0.5),
                       .width = kWidth,
                       .height = kHeight,
                       .aspect = aspect,
                       .outside = item(kOutside, 4),
                       .filter = item(kFilter, 3)};
    auto pixels = want.render();
    pic expected = *picture->record();
    expected.Pixels = pixels.data();
    test::atEveryLevel([&] {
      const auto out = scene.render();
      ASSERT_NE(out, nullptr);
      ASSERT_TRUE(test::samePixels(*out->record(), expected)) << round;
    });
  }
}

// Even maps move the whole image: by whole pixels it stays exact.
TEST(Mapper, MovesByWhatTheMapSays) {
  const auto image = test::randomPicture(kWidth, kHeight, 1);
  const auto white = picture(kWidth, kHeight, [](int, int) { return gray(255); });
  const auto ramp = picture(kWidth, kHeight, [](int x, int y) { return gray(x + y); });
  const double share = 255 / 254.0; // white is 127 above neutral
  struct Case {
    int method;
    const pic *map;
    double across, down;
    int outside;
    int right, below;
  };
  for (const auto &[method, map, across, down, outside, right, below] : std::initializer_list<Case>{
           {kShift, white->record(), 3 * share / kWidth, -2 * share / kHeight, kTile, 3, -2},
           {kShift, white->record(), 0, 5 * share / kHeight, kTile, 0, 5},
           {kSlope, ramp->record(), 255 * 100.0 / (kWidth * kWidth), 0, kTransparent, 1, 0}}) {
    Scene scene(*image->record(), *map);
    scene.choose(kMethod, method);
    scene.choose(kOutside, outside);
    scene.set(kAmountX, across);
    scene.set(kAmountY, down);
    scene.set(kSmoothness, 0);
    const auto out = scene.render();
    for (int y = 0; y < kHeight; ++y)
      for (int x = 2; x + 2 < kWidth; ++x) { // where both neighbours stand for slopes
        const int column = (x - right + kWidth) % kWidth, row = (y - below + kHeight) % kHeight;
        const _color_t got = *pixelAt(*out->record(), x, y), want = *pixelAt(*image->record(), column, row);
        ASSERT_TRUE(want.a == 0 ? got.a == 0 : std::memcmp(&got, &want, sizeof got) == 0)
            << method << ": " << x << ", " << y;
      }
  }
}

TEST(Mapper, ShrinksWithoutAliasingWherePlacesNamePositions) {
  constexpr int kSize = 256;
  const auto stripes = picture(kSize, kSize, [](int x, int y) { return gray((x ^ y) % 2 * 255); });
  const auto places = picture(kSize, kSize, [](int x, int y) { // three times in every direction
    return _color_t{0, uint8_t(3 * y % 256), uint8_t(3 * x % 256), 255};
  });
  Scene scene(*stripes->record(), *places->record(), kSize, kSize);
  scene.choose(kMethod, kPosition);
  scene.choose(kOutside, kMirror);
  scene.set(kAmountX, 1);
  scene.set(kAmountY, 1);
  scene.set(kSmoothness, 0);
  const auto out = scene.render();
  double sum = 0;
  for (size_t i = 0; i < out->pixels(); ++i)
    sum += std::pow(out->record()->Pixels[i].g - 127.5, 2);
  EXPECT_LT(std::sqrt(sum / double(out->pixels())), 0.02 * 255);
}

TEST(Mapper, GlidesAndLooksTheSameAtHalfTheSize) {
  const auto image = [](int scale) {
    return picture(scale * kWidth, scale * kHeight, [=](int x, int y) {
      return gray(127 + 100 * std::sin((x + 0.5) * 0.2 / scale) * std::cos((y + 0.5) * 0.15 / scale));
    });
  };
  const auto waves = [](int scale) {
    return picture(scale * kWidth, scale * kHeight, [=](int x, int y) {
      return gray(127 + 100 * std::cos((x + 0.5) * 0.07 / scale) * std::cos((y + 0.5) * 0.1 / scale));
    });
  };
  const auto whole = image(2), wholeMap = waves(2), half = image(1), halfMap = waves(1);
  for (const auto &[method, field, most] :
       {std::tuple{kShift, kAmountX, 0.3}, {kSlope, kAmountY, 1.0}, {kPosition, kAmountX, 0.4}}) {
    SCOPED_TRACE(method);
    std::unique_ptr<host::PictureBuffer> coarse;
    {
      Scene scene(*half->record(), *halfMap->record());
      scene.choose(kMethod, method);
      test::expectEvenSteps(60, [&, field = field, most = most](int i) {
        scene.set(field, most * (0.1 + i / 60.0));
        return scene.render();
      });
      coarse = scene.render();
    }
    Scene large(*whole->record(), *wholeMap->record(), 2 * kWidth, 2 * kHeight);
    large.choose(kMethod, method);
    large.set(field, most * 1.1);
    const auto fine = large.render();
    const auto shrunk = picture(kWidth, kHeight, [&](int x, int y) {
      const auto at = [&](int dx, int dy) { return pixelAt(*fine->record(), 2 * x + dx, 2 * y + dy)->g; };
      return gray((at(0, 0) + at(1, 0) + at(0, 1) + at(1, 1)) / 4.0);
    });
    EXPECT_GT(test::psnr(*coarse->record(), *shrunk->record()), 35);
  }
}

TEST(Mapper, NeedsBothInputsAndCopiesWhereNothingMoves) {
  const auto image = test::randomPicture(20, 10, 1);
  Scene scene(*image->record(), *image->record());
  scene.set(kAmountX, 0);
  scene.set(kAmountY, 0);
  const auto copy = scene.render();
  ASSERT_NE(copy, nullptr);
  EXPECT_TRUE(test::samePixels(*copy->record(), *image->record()));
  for (const Field field : {kMap, kInput}) {
    scene.assign(field, nullptr);
    EXPECT_EQ(scene.render(), nullptr);
    EXPECT_EQ(scene.session.messages.back(), "Input not assigned");
  }
}

} // namespace
} // namespace zol
