#include "frame/effects.h"
#include "plain/zone.h"
#include "tests/support/filter.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

namespace zol {
namespace {

using Picture = std::unique_ptr<host::PictureBuffer>;

enum Field { kPattern, kLevels, kSize, kLineWidth, kPhase, kColor, kBackground, kSafeAreas };
enum Pattern { kSmpteHd, kEbu, kFullBars, kRamp, kSteps, kCheckerboard, kGrid, kZonePlate };

class TestPattern : public testing::Test {
protected:
  void resize(int width, int height, double aspect = 1) {
    t_ZoHostInfo *info = generator.session.info();
    info->Width = width;
    info->Height = height;
    info->PixelAspect = aspect;
  }
  /// The picture's rows in letters.
  std::string told() {
    const Picture out = generator.render();
    std::string text;
    for (size_t i = 0; out != nullptr && i < out->pixels(); ++i) {
      const _color_t &p = out->record()->Pixels[i];
      EXPECT_EQ(p.a, 255);
      text += p.r == 200 ? '#' : p.r == 50 ? '.' : '?';
      if ((i + 1) % size_t(out->record()->Width) == 0)
        text += '\n';
    }
    return text;
  }

  test::Filter generator{ProcessTestPatternDeclare, 16, 9};
};

TEST_F(TestPattern, DrawsInItsColorsAndSquareOnTheDisplay) {
  generator.setColor(kColor, {200, 200, 200, 0});
  generator.setColor(kBackground, {50, 50, 50, 9});
  generator.choose(kPattern, kCheckerboard);
  generator.set(kSize, 0.25);
  resize(12, 6);
  EXPECT_EQ(told(), "...###...###\n...###...###\n...###...###\n"
                    "###...###...\n###...###...\n###...###...\n");
  resize(12, 6, 2.0 / 3);
  EXPECT_EQ(told(), "###...###...\n...###...###\n...###...###\n"
                    "###...###...\n###...###...\n...###...###\n");
  resize(12, 4);
  generator.set(kSize, NAN);
  EXPECT_EQ(told(), "#.#.#.#.#.#.\n.#.#.#.#.#.#\n#.#.#.#.#.#.\n.#.#.#.#.#.#\n");

  generator.set(kSize, 1);
  generator.choose(kPattern, kSmpteHd);
  generator.choose(kSafeAreas, 2);
  generator.choose(kLevels, 1);
  resize(20, 10);
  const std::string framed = told(); // of bars nothing is alike
  EXPECT_EQ(framed.substr(0, 21), "????????????????????\n");
  EXPECT_EQ(framed.substr(21, 42), "?##################?\n?##??????????????##?\n");
}

TEST_F(TestPattern, DrawsARoundCircleIntoTheGrid) {
  generator.choose(kPattern, kGrid);
  generator.set(kSize, 1);
  generator.set(kLineWidth, 0.01);
  for (const double aspect : {1.0, 16.0 / 15}) {
    resize(200, 120, aspect);
    const Picture out = generator.render();
    ASSERT_NE(out, nullptr);
    int lit = 0;
    for (int y = 0; y < 120; ++y)
      for (int x = 0; x < 200; ++x) {
        const double away = std::hypot((x + 0.5 - 100) * aspect, y + 0.5 - 60);
        const int value = out->record()->Pixels[y * 200 + x].g;
        const bool onAxis = std::abs(x + 0.5 - 100) < 2 || std::abs(y + 0.5 - 60) < 2;
        if (away < 59.2 && away > 58.8) {
          ASSERT_GT(value, 250) << x << ' ' << y;
          ++lit;
        } else if ((away < 56.8 || away > 61.2) && !onAxis) {
          ASSERT_EQ(value, 0) << x << ' ' << y;
        }
      }
    EXPECT_GT(lit, 100);
  }
}

TEST_F(TestPattern, MovesRingsThatAreRoundAndEndAtNyquist) {
  generator.choose(kPattern, kZonePlate);
  for (const auto &[width, height, aspect, phase] :
       {std::tuple{200, 120, 1.0, 0.0}, {201, 90, 1.0, 0.25}, {160, 90, 16.0 / 15, -3.5}, {1, 1, 1.0, 0.5}}) {
    resize(width, height, aspect);
    generator.set(kPhase, phase);
    const Picture out = generator.render();
    ASSERT_NE(out, nullptr);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const double u = x + 0.5 - width / 2.0, v = (y + 0.5 - height / 2.0) / aspect;
        const double turns = (u * u + v * v) / (2.0 * width) - phase;
        ASSERT_NEAR(out->record()->Pixels[y * width + x].g,
                    128 + 127 * std::cos(2 * std::numbers::pi * turns), 1)
            << x << ' ' << y;
      }
  }
}

TEST_F(TestPattern, RendersTheSameInRealTime) {
  const test::Callbacks callbacks(ProcessTestPatternDeclare);
  generator.choose(kSafeAreas, 1);
  for (int pattern = kSmpteHd; pattern <= kZonePlate; ++pattern) {
    generator.choose(kPattern, pattern);
    const Picture want = generator.render(), got = test::randomPicture(16, 9, 1);
    t_ZoHostInfo *info = generator.session.info();
    info->OutputBuffer = got->record()->Pixels;
    info->BitsPerPixel = 32;
    EXPECT_EQ(callbacks.renderVideoRT(info), 1);
    ASSERT_NE(want, nullptr);
    EXPECT_TRUE(test::samePixels(*got->record(), *want->record())) << pattern;
    info->BitsPerPixel = 24;
    EXPECT_EQ(callbacks.renderVideoRT(info), 0);
    EXPECT_EQ(generator.session.messages.back(), "Unsupported pixel size");
  }
}

} // namespace
} // namespace zol
