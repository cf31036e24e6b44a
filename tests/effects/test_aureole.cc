#include "frame/effects.h"
#include "plain/glow.h"
#include "tests/support/declared.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using Picture = std::unique_ptr<host::PictureBuffer>;

enum Field {
  kInput,
  kSource,
  kThreshold,
  kRadius,
  kFalloff,
  kIntensity,
  kColor,
  kTint,
  kMode,
  kOnly,
  kDither
};

class Aureole : public testing::Test {
protected:
  Aureole() { EXPECT_EQ(effect.init(session.info()), 1); }

  void set(Field field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void choose(Field field, int value) { *session.parameters.integers.get(field, 0) = value; }
  void setAll(const plain::Glow &glow, int width, bool dithers) {
    session.info()->Width = width;
    choose(kSource, glow.outline ? 1 : 0);
    set(kThreshold, glow.threshold);
    set(kRadius, glow.radius * 10 / width);
    set(kFalloff, glow.falloff);
    set(kIntensity, glow.intensity);
    session.parameters.colors.get(kColor, 0)->set(0.5, host::colorValue(glow.color));
    set(kTint, glow.tint);
    choose(kMode, glow.mode);
    choose(kOnly, glow.only ? 1 : 0);
    choose(kDither, dithers ? 1 : 0);
  }
  Picture render(pic *picture) {
    test::PictureClip clip(picture);
    *session.parameters.inputs.get(kInput, 0) = {&clip};
    return session.pictures.take(effect.renderVideo(session.info()));
  }

  const test::Callbacks effect{ProcessAureolDeclare};
  host::Session session{"Halvenor"};
};

/// The picture on the smallest rectangle that holds it and the frame.
Picture onCanvas(const pic &picture, int width, int height) {
  const int x0 = std::min<int>(picture.X, 0), y0 = std::min<int>(picture.Y, 0);
  const int x1 = std::max(picture.X + picture.Width, width),
            y1 = std::max(picture.Y + picture.Height, height);
  Picture canvas = host::PictureBuffer::make(x1 - x0, y1 - y0);
  canvas->record()->X = int16_t(x0);
  canvas->record()->Y = int16_t(y0);
  for (int y = 0; y < picture.Height; ++y)
    std::copy_n(picture.Pixels + y * picture.Width, picture.Width,
                canvas->record()->Pixels + (y + picture.Y - y0) * (x1 - x0) + picture.X - x0);
  return canvas;
}

void makePlain(const plain::Glow &glow, bool dithers, const pic &canvas) {
  plain::Level light{canvas.Width, canvas.Height};
  const int count = canvas.Width * canvas.Height;
  for (int i = 0; i < count; ++i)
    plain::lightOf(canvas.Pixels[i], glow, &light.values[size_t(4 * i)]);
  const plain::Level spread = plain::spread(light, glow.radius, glow.falloff);
  for (int i = 0; i < count; ++i) {
    uint16_t wide[4];
    plain::layGlow(&spread.values[size_t(4 * i)], glow, canvas.Pixels[i], wide);
    const int term = plain::roundingTerm(dithers, canvas.X + i % canvas.Width, canvas.Y + i / canvas.Width);
    canvas.Pixels[i] = plain::toBytes(wide, term, canvas.Pixels[i]);
  }
}

TEST_F(Aureole, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  const auto share = [&] { return dice.below(4) == 0 ? double(dice.below(2)) : dice.share(); };
  for (int round = 0; round < 150; ++round) {
    const auto picture = dice.picture(90, 40);
    for (size_t i = 0; i < picture->pixels(); ++i) // opaque, transparent and other stretches
      if (const auto stretch = i / 30 % 3; stretch != 2)
        picture->record()->Pixels[i].a = stretch == 0 ? 255 : 0;
    // Eighths are exact in any unit.
    const int width = 1 << dice.between(0, 6), height = dice.between(1, 30);
    const plain::Glow glow{dice.below(2) == 0,
                           share(),
                           width * std::floor(share() * 64) / 640,
                           share(),
                           std::max(share(), 0.001) * dice.between(1, 16),
                           {uint8_t(dice.word()), uint8_t(dice.word()), uint8_t(dice.word()), 255},
                           share(),
                           dice.below(3),
                           dice.below(3) == 0};
    const bool dithers = dice.below(2) == 0;
    session.info()->Height = height;
    setAll(glow, width, dithers);
    const Picture want = onCanvas(*picture->record(), width, height);
    makePlain(glow, dithers, *want->record());
    test::atEveryLevel([&] {
      const Picture got = render(picture->record());
      ASSERT_NE(got, nullptr);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << round;
    });
  }
}

TEST_F(Aureole, KeepsWhatIsEvenAndHidesWhatIsHidden) {
  const auto picture = test::randomPicture(61, 43, 1);
  session.info()->Width = 61;
  session.info()->Height = 43;
  plain::Glow glow{true, 0, 6, 0.3, 1, {}, 0, 2, true};
  std::fill_n(picture->record()->Pixels, picture->pixels(), _color_t{10, 200, 77, 255});
  setAll(glow, 61, true);
  Picture out = render(picture->record());
  ASSERT_NE(out, nullptr);
  EXPECT_TRUE(test::samePixels(*out->record(), *picture->record()));

  for (size_t i = 0; i < picture->pixels(); ++i) { // a square on hidden magenta
    const bool inside = i % 61 / 20 == 1 && i / 61 / 14 == 1;
    picture->record()->Pixels[i] = inside ? _color_t{0, 255, 0, 255} : _color_t{255, 0, 255, 0};
  }
  glow.only = false;
  setAll(glow, 61, false);
  out = render(picture->record());
  ASSERT_NE(out, nullptr);
  int around = 0;
  for (size_t i = 0; i < picture->pixels(); ++i) {
    const _color_t p = out->record()->Pixels[i];
    EXPECT_TRUE(p.a == 0 || (p.b == 0 && p.g >= 254 && p.r == 0)) << i;
    around += p.a > 0 && p.a < 255 ? 1 : 0;
  }
  EXPECT_GT(around, 400);
}

// As the radius grows the light moves on evenly, also where a level comes in.
TEST_F(Aureole, GrowsWithoutSteps) {
  const auto picture = host::PictureBuffer::make(160, 120);
  for (size_t i = 0; i < picture->pixels(); ++i)
    picture->record()->Pixels[i] =
        i % 160 / 8 == 9 && i / 160 / 8 == 7 ? _color_t{255, 255, 255, 255} : _color_t{0, 0, 0, 255};
  session.info()->Height = 120;
  std::vector<double> moves; // decibels
  Picture before;
  for (int step = 0; step <= 100; ++step) {
    setAll({false, 0.5, 2 * std::exp2(step / 33.0), 0.3, 4, {}, 0, 0, true}, 160, false);
    Picture now = render(picture->record());
    ASSERT_NE(now, nullptr);
    if (before != nullptr) {
      double error = 0;
      for (size_t i = 0; i < now->pixels(); ++i)
        error += std::pow(now->record()->Pixels[i].a - before->record()->Pixels[i].a, 2);
      moves.push_back(10 * std::log10(error + 1));
    }
    before = std::move(now);
  }
  for (size_t i = 1; i + 1 < moves.size(); ++i)
    EXPECT_LT(moves[i] - std::max(moves[i - 1], moves[i + 1]), 3) << i;
}

} // namespace
} // namespace zol
