#include "frame/effects.h"
#include "frame/picture.h"
#include "kernels/exports/shape.h"
#include "plain/erosion.h"
#include "plain/lay_pixels.h"
#include "plain/moved.h"
#include "plain/soften.h"
#include "plain/universal_key.h"
#include "tests/support/dice.h"
#include "tests/support/filter.h"
#include "tests/support/green_screen.h"
#include "tests/support/outline.h"
#include "tests/support/psnr.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace zol {
namespace {

enum Field {
  kBackground,
  kInput,
  kPlate,
  kMethod,
  kColor,
  kTolerance,
  kSoftness,
  kRange,
  kShadows,
  kNoiseclean,
  kSpill,
  kShrink,
  kFeather,
  kGarbage,
  kInvert,
  kOpacity,
  kShow,
};

constexpr int kWidth = 60, kHeight = 30;
constexpr double kAspect = 1.25;

using Picture = std::unique_ptr<host::PictureBuffer>;

struct Values {
  Values(test::Dice &dice, int method)
      : key(method, {uint8_t(dice.word()), uint8_t(dice.word()), uint8_t(dice.word()), 255}, 0.75),
        noiseclean(share(dice)), shrink(share(dice) * (dice.below(2) != 0 ? 1 : -1)), feather(share(dice)),
        opacity(dice.below(2) != 0 ? 4096 : dice.below(4097)), showsMatte(dice.below(4) == 0) {
    key.first = dice.below(1500);
    key.range = dice.between(1, 4096);
    key.shadows = dice.below(4097);
    key.spill = dice.below(4097);
    key.inverts = dice.below(3) == 0;
  }

  void give(test::Filter &filter, int method) const {
    for (const auto &[field, value] : {std::pair{kTolerance, key.first / 4096.0},
                                       {kSoftness, key.range / 4096.0},
                                       {kRange, 0.75},
                                       {kShadows, key.shadows / 4096.0},
                                       {kNoiseclean, noiseclean},
                                       {kSpill, key.spill / 4096.0},
                                       {kShrink, shrink},
                                       {kFeather, feather},
                                       {kOpacity, opacity / 4096.0}})
      filter.set(field, value);
    filter.choose(kMethod, method);
    filter.choose(kInvert, key.inverts ? 1 : 0);
    filter.choose(kShow, showsMatte ? 1 : 0);
    filter.setColor(kColor, key.color);
  }

  /// The input before the key, its matte as alpha.
  [[nodiscard]] Picture keyed(const pic &input, const pic &plate, const pic *garbage) const {
    const int width = input.Width, height = input.Height;
    const auto forEach = [&](auto change) {
      for (int i = 0; i < width * height; ++i)
        change(i);
    };
    const auto radius = [](double length) { return length * kWidth / 10; };
    auto out = host::PictureBuffer::make(width, height);
    placeAt(*out->record(), Area::of(input));
    _color_t *const pixels = out->record()->Pixels;
    std::copy_n(input.Pixels, width * height, pixels);
    if (noiseclean > 0) {
      std::vector<uint16_t> planes[4];
      for (int c = 0; c < 4; ++c) {
        forEach([&](int i) {
          plain::Wide wide;
          plain::toWide(input.Pixels[i], wide);
          planes[c].push_back(wide[c]);
        });
        plain::soften(planes[c].data(), width, height, radius(noiseclean), radius(noiseclean) * kAspect);
      }
      forEach([&](int i) {
        const auto at = size_t(i);
        const plain::Wide wide = {planes[0][at], planes[1][at], planes[2][at], planes[3][at]};
        pixels[i] = plain::toBytes(wide, 127, {});
      });
    }
    forEach([&](int i) {
      const int x = input.X + i % width, y = input.Y + i / width;
      const int matte = key.matte(pixels[i], plain::pixelOf(plate, x, y));
      pixels[i].a =
          static_cast<uint8_t>(garbage != nullptr ? (matte * garbage->Pixels[i].a + 127) / 255 : matte);
    });
    const auto invert = [&] {
      if (shrink < 0)
        forEach([&](int i) { pixels[i].a = static_cast<uint8_t>(255 - pixels[i].a); });
    };
    invert();
    plain::erode(*out->record(), 1, 0, static_cast<float>(radius(std::abs(shrink))));
    plain::erode(*out->record(), 0, 1, static_cast<float>(radius(std::abs(shrink)) * kAspect));
    invert();
    std::vector<uint16_t> wide;
    forEach([&](int i) { wide.push_back(static_cast<uint16_t>(255 * pixels[i].a)); });
    plain::soften(wide.data(), width, height, radius(feather), radius(feather) * kAspect);
    forEach([&](int i) { pixels[i] = key.colored(input.Pixels[i], (wide[size_t(i)] + 127) / 255); });
    return out;
  }

  plain::UniversalKey key;
  double noiseclean, shrink, feather;
  int opacity;
  bool showsMatte;

private:
  static double share(test::Dice &dice) { return dice.below(3) == 0 ? dice.share() * 0.7 : 0; }
};

TEST(Keyer, DoesItsStepsOneAfterTheOther) {
  test::Dice dice(1);
  const test::OutlineShape shape(test::ellipse(30, 14, 20, 9, 0.2));
  for (int round = 0; round < 250; ++round) {
    const auto ground = dice.picture(60, 30), input = dice.picture(60, 30), plate = dice.picture(60, 30);
    test::PictureClip grounds(ground->record()), inputs(input->record()), plates(plate->record());
    test::Filter filter(ProcessKeyer2Declare, kWidth, kHeight);
    filter.session.info()->PixelAspect = kAspect;
    const bool stands = round % 5 == 0, isMasked = round % 3 == 0;
    filter.assign(kBackground, stands ? nullptr : &grounds);
    filter.assign(kInput, &inputs);
    filter.assign(kPlate, &plates);
    const int method = round % 7;
    const Values values(dice, method);
    values.give(filter, method);
    Picture mask;
    if (isMasked) {
      *filter.session.parameters.geometries.get(kGarbage, 0) = &shape;
      mask = host::PictureBuffer::make(input->record()->Width, input->record()->Height);
      placeAt(*mask->record(), Area::of(*input->record()));
      char error[256];
      ASSERT_EQ(FillShape(filter.session.info(), error, mask->record(),
                          const_cast<test::OutlineShape *>(&shape), 0, ~0U),
                1);
    }
    const auto out = filter.render();
    ASSERT_NE(out, nullptr);
    const auto keyed = values.keyed(*input->record(), *plate->record(), isMasked ? mask->record() : nullptr);
    const Area canvas = stands ? Area::ofSize(kWidth, kHeight) : Area::of(*ground->record());
    const auto want = host::PictureBuffer::make(canvas.width(), canvas.height());
    placeAt(*want->record(), canvas);
    for (int y = canvas.top; y < canvas.bottom; ++y)
      for (int x = canvas.left; x < canvas.right; ++x) {
        const _color_t below = stands ? _color_t{} : plain::pixelOf(*ground->record(), x, y);
        const _color_t upper = plain::pixelOf(*keyed->record(), x, y);
        const auto shown = static_cast<uint8_t>(upper.a * values.opacity >> 12);
        *pixelAt(*want->record(), x, y) = values.showsMatte
                                              ? _color_t{shown, shown, shown, 255}
                                              : plain::layPixel(below, upper, 0, values.opacity, false);
      }
    EXPECT_TRUE(test::samePixels(*out->record(), *want->record()))
        << "round " << round << ", method " << method;
  }
}

TEST(Keyer, LeavesAlphaAsItIs) {
  const auto input = test::randomPicture(50, 40, 1, 3, -4), ground = test::randomPicture(kWidth, kHeight, 2);
  test::PictureClip clip(input->record()), grounds(ground->record());
  test::Filter filter(ProcessKeyer2Declare, kWidth, kHeight);
  filter.assign(kBackground, nullptr);
  filter.assign(kInput, &clip);
  filter.choose(kMethod, 6);
  filter.set(kTolerance, 0);
  filter.set(kSoftness, 1);
  EXPECT_TRUE(test::samePixels(*filter.render()->record(), *input->record()));
  filter.assign(kBackground, &grounds);
  const auto out = filter.render();
  for (int y = 0; y < kHeight; ++y)
    for (int x = 0; x < kWidth; ++x)
      *pixelAt(*ground->record(), x, y) = plain::layPixel(
          *pixelAt(*ground->record(), x, y), plain::pixelOf(*input->record(), x, y), 0, 4096, false);
  EXPECT_TRUE(test::samePixels(*out->record(), *ground->record()));
}

TEST(Keyer, NeedsACleanPlateToComparePicturesWith) {
  const auto input = test::randomPicture(8, 8, 1);
  test::PictureClip clip(input->record());
  test::Filter filter(ProcessKeyer2Declare, 8, 8);
  filter.assign(kInput, &clip);
  filter.choose(kMethod, 5);
  EXPECT_EQ(filter.render(), nullptr);
  ASSERT_EQ(filter.session.messages.size(), 1U);
  EXPECT_EQ(filter.session.messages[0], "Clean plate not assigned");
  test::PictureClip nothing(nullptr);
  filter.assign(kPlate, &nothing);
  EXPECT_EQ(filter.render(), nullptr);
  EXPECT_EQ(filter.session.messages.size(), 1U);
}

/// Files for bench/keying: pixels as they are.
void writePixels(const char *folder, const char *name, const pic &picture) {
  std::ofstream file(std::string(folder) + '/' + name + ".bgra", std::ios::binary);
  file.write(reinterpret_cast<const char *>(picture.Pixels),
             std::streamsize{4} * picture.Width * picture.Height);
}

// Others come to 3.8 and 2.7 with their best settings for this picture (docs/keying.md).
TEST(Keyer, FindsAlphaAndColorsBeforeAGreenScreenAtItsDefaults) {
  const test::GreenScreen screen;
  constexpr int kPixels = test::GreenScreen::kWidth * test::GreenScreen::kHeight;
  const auto ground = host::PictureBuffer::make(test::GreenScreen::kWidth, test::GreenScreen::kHeight);
  for (int i = 0; i < kPixels; ++i) {
    const int x = i % test::GreenScreen::kWidth, y = i / test::GreenScreen::kWidth;
    ground->record()->Pixels[i] = {uint8_t(200 - y / 3), uint8_t(150 + x / 8),
                                   uint8_t(120 + 40 * (x / 30 % 2)), 255};
  }
  if (const char *folder = std::getenv("ZOL_WRITE_SCREEN")) {
    writePixels(folder, "scene", *screen.scene());
    writePixels(folder, "subject", *screen.subject());
    writePixels(folder, "ground", *ground->record());
  }
  test::PictureClip grounds(ground->record()), scenes(screen.scene());
  test::Filter filter(ProcessKeyer2Declare, test::GreenScreen::kWidth, test::GreenScreen::kHeight);
  filter.assign(kBackground, &grounds);
  filter.assign(kInput, &scenes);
  const auto result = filter.render();
  filter.choose(kShow, 1);
  const auto matte = filter.render();
  ASSERT_TRUE(result != nullptr && matte != nullptr);
  double ofMatte = 0, ofColor = 0;
  for (int i = 0; i < kPixels; ++i) {
    const _color_t own = screen.subject()->Pixels[i], below = ground->record()->Pixels[i],
                   got = result->record()->Pixels[i];
    ofMatte += std::abs(matte->record()->Pixels[i].b - own.a);
    const auto off = [&](int color, int under, int is) {
      return std::abs((color * own.a + under * (255 - own.a)) / 255.0 - is) / 3;
    };
    ofColor += off(own.b, below.b, got.b) + off(own.g, below.g, got.g) + off(own.r, below.r, got.r);
  }
  EXPECT_LT(ofMatte / kPixels, 3.6);
  EXPECT_LT(ofColor / kPixels, 2.2);
}

TEST(Keyer, MovesInEvenSteps) {
  const test::GreenScreen screen;
  test::PictureClip scenes(screen.scene());
  for (const Field field : {kTolerance, kSoftness, kShadows, kSpill}) {
    SCOPED_TRACE(field);
    test::Filter filter(ProcessKeyer2Declare, test::GreenScreen::kWidth, test::GreenScreen::kHeight);
    filter.assign(kInput, &scenes);
    test::expectEvenSteps(40, [&](int step) {
      filter.set(field, 0.2 + step / 80.0);
      return filter.render();
    });
  }
}

} // namespace
} // namespace zol
