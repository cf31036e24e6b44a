#include "kernels/compositing/shutter.h"

#include "host/services/session.h"
#include "kernels/exports/shutter.h"
#include "plain/lay_pixels.h"
#include "plain/shutter.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using Row = std::vector<uint16_t>;

TEST(EdgeRamps, GiveThePlainFormsCoverages) {
  test::Dice dice(1);
  for (int round = 0; round < 3000; ++round) {
    const int width = dice.below(90), left = dice.between(-60, 60), join = dice.below(4);
    const int count = join == 0 ? dice.between(1, 12) : 2;
    const auto slope = [&] { // of sharp, soft and even sides
      const int kind = dice.below(5);
      return kind == 0 ? 0.0 : dice.scaled(kind == 1 ? -24 : -4, kind == 1 ? 0 : 9);
    };
    EdgeRamp ramps[12];
    for (EdgeRamp &ramp : ramps) {
      ramp.slope = static_cast<float>(slope());
      ramp.start =
          static_cast<float>(128 + dice.scaled(0, 9) - double{ramp.slope} * dice.between(left, left + width));
    }
    const auto most = static_cast<float>(join == 0 && dice.below(3) == 0 ? dice.below(257) : 256);
    const RoundRamp round1 = {static_cast<float>(dice.scaled(6, 13)),
                              static_cast<float>(std::abs(dice.scaled(0, 9))),
                              static_cast<float>(0.5 + dice.share()), static_cast<float>(dice.scaled(0, 7)),
                              static_cast<float>(dice.scaled(-3, 6))};
    Row before(size_t(width) + 1);
    for (uint16_t &coverage : before)
      coverage = static_cast<uint16_t>(dice.below(3) == 0 ? dice.below(257) : 0);
    const auto side = [&] {
      return EdgeRamp{static_cast<float>(dice.scaled(-2, 6)), static_cast<float>(2 * dice.share() - 1)};
    };
    const WedgeRamp wedge = {side(),
                             side(),
                             side(),
                             side(),
                             dice.below(2) != 0,
                             static_cast<float>(dice.share()),
                             static_cast<float>(-9 * dice.share())};
    Row sums = before, rounds = before, wedges = before;
    for (int i = 0; i < width; ++i) {
      const int x = left + i;
      const auto add = [&](Row &row, int more) {
        row[size_t(i)] = static_cast<uint16_t>(std::min(256, row[size_t(i)] + more));
      };
      add(sums, plain::joinRamps(join, ramps, count, most, x));
      add(wedges, plain::wedgeCoverage(wedge, x));
      const float across = round1.perColumn * static_cast<float>(x) + round1.column;
      const float value =
          round1.start - round1.scale * std::sqrt(across * across + round1.down * round1.down);
      add(rounds, static_cast<int>(std::clamp(value, 0.0F, 256.0F)));
    }
    test::atEveryLevel([&] {
      Row row = before;
      addShape({static_cast<RampJoin>(join), ramps, count, most}, left, width, row.data());
      ASSERT_EQ(row, sums) << round << " join " << join;
      row = before;
      addRound(round1, left, width, row.data());
      ASSERT_EQ(row, rounds) << round;
      row = before;
      ZOL_SELECT(addWedgeRamp)(wedge, left, width, row.data());
      ASSERT_EQ(row, wedges) << round;
    });
  }
}

plain::Shutter shutterOf(test::Dice &dice, int kind) {
  const int width = dice.between(1, 60), height = dice.between(1, 40);
  const auto center = [&](int size) { return size * (dice.below(3) == 0 ? dice.share() * 3 - 1 : 0.5); };
  return {kind,
          dice.below(4) == 0 ? dice.between(1, 64) : dice.between(1, 12),
          dice.below(3) == 0 ? 90.0 * dice.between(-4, 4) : dice.share() * 720 - 360,
          center(width),
          center(height),
          width,
          height,
          0.5 + dice.share(),
          dice.below(2) * dice.share() * 20,
          dice.below(2) * dice.share() * 20};
}

ShutterLook lookOf(const plain::Shutter &s) {
  return {static_cast<ShutterKind>(s.kind),
          s.count,
          s.angle,
          s.centerX,
          s.centerY,
          s.width,
          s.height,
          s.aspect,
          s.softness,
          s.border};
}

TEST(Shutter, OpensAsItIsDefined) {
  test::Dice dice(2);
  for (int round = 0; round < 600; ++round) {
    const plain::Shutter shutter = shutterOf(dice, round % 4);
    const double opening = 0.001 + dice.share() * 0.998;
    const ShutterMask mask(lookOf(shutter), opening), inverted(lookOf(shutter), 1 - opening, true);
    const int left = dice.between(-5, 5), width = shutter.width + 8;
    Row inner(static_cast<size_t>(width)), outer = inner, opposite = inner;
    for (int y = -2; y < shutter.height + 2; ++y) {
      mask.innerRow(y, left, width, inner.data());
      mask.outerRow(y, left, width, outer.data());
      inverted.innerRow(y, left, width, opposite.data());
      for (int i = 0; i < width; ++i) {
        const auto at = size_t(i);
        // A sum has as many chances to be rounded the other way as it has parts.
        const int off = shutter.kind == 3 ? 4 : 3;
        ASSERT_NEAR(inner[at], shutter.coverage(opening, false, left + i, y), off)
            << round << ' ' << i << ' ' << y;
        ASSERT_NEAR(outer[at], shutter.coverage(opening, true, left + i, y), off)
            << round << ' ' << i << ' ' << y;
        ASSERT_NEAR(opposite[at], 256 - outer[at], 1);
        ASSERT_LE(outer[at], 256);
      }
    }
  }
}

// The opened share of the frame grows evenly to the end, without a jump, and is what geometry says.
TEST(Shutter, GrowsEvenlyFromNothingToAll) {
  constexpr int kSide = 120;
  for (int kind = 0; kind < 4; ++kind)
    for (const int count : {1, 4, 7})
      for (const double softness : {0.0, 20.0}) {
        SCOPED_TRACE(testing::Message()
                     << "kind " << kind << ", " << count << " blades, softness " << softness);
        const ShutterLook look = {
            static_cast<ShutterKind>(kind), count, 20, 60, 60, kSide, kSide, 1, softness, softness / 4};
        double last = 0;
        for (int step = 1; step <= 200; ++step) {
          const ShutterMask mask(look, step / 200.0);
          Row row(kSide);
          double sum = 0, area = 0;
          for (int y = 0; y < kSide; ++y) {
            mask.innerRow(y, 0, kSide, row.data());
            for (int x = 0; x < kSide; ++x) {
              const bool counts =
                  kind != 3 || std::hypot(x + 0.5 - 60, y + 0.5 - 60) < 60; // wedges in a circle
              sum += counts ? row[size_t(x)] / 256.0 : 0;
              area += counts ? 1 : 0;
            }
          }
          const double open = sum / area;
          EXPECT_GE(open, last - 0.001) << step;
          EXPECT_LT(open - last, 0.03) << step;
          if (kind == 3 && softness == 0) {
            EXPECT_NEAR(open, step / 200.0, 0.005) << step;
          }
          if (step == 200) {
            EXPECT_EQ(open, 1);
          }
          last = open;
        }
      }
}

TEST(ShutterRows, GiveThePlainFormsBytes) {
  test::Dice dice(3);
  for (int round = 0; round < 300; ++round) {
    const int count = dice.below(70);
    const auto lower = test::randomPicture(70, 1, dice.word()),
               upper = test::randomPicture(70, 1, dice.word());
    Row coverage, inner, outer, border;
    for (int i = 0; i < 70; ++i) {
      const auto any = [&] {
        return static_cast<uint16_t>(dice.below(3) == 0 ? 256 * dice.below(2) : dice.below(257));
      };
      if (i / 16 % 2 != 0)
        upper->record()->Pixels[i].a = lower->record()->Pixels[i].a = 255;
      coverage.push_back(i / 9 % 3 == 0 ? static_cast<uint16_t>(256 * (i / 27 % 2)) : any());
      inner.push_back(any());
      outer.push_back(std::max(inner.back(), any()));
      const int rest = 256 - inner.back();
      border.push_back(static_cast<uint16_t>(rest == 0 ? 0 : (outer.back() - inner.back()) * 256 / rest));
    }
    test::atEveryLevel([&] {
      const auto laid = test::randomPicture(70, 1, 1), covered = test::randomPicture(70, 1, 1);
      std::copy_n(lower->record()->Pixels, 70, laid->record()->Pixels);
      std::copy_n(upper->record()->Pixels, 70, covered->record()->Pixels);
      Row between(70, 7);
      ZOL_SELECT(layCovered)(laid->record()->Pixels, upper->record()->Pixels, coverage.data(), count);
      ZOL_SELECT(coverAlpha)(covered->record()->Pixels, coverage.data(), count);
      ZOL_SELECT(borderRow)(inner.data(), outer.data(), between.data(), count);
      for (int i = 0; i < 70; ++i) {
        _color_t want = upper->record()->Pixels[i];
        if (i < count)
          want.a = static_cast<uint8_t>((want.a * coverage[size_t(i)] + 128) >> 8);
        EXPECT_EQ(std::memcmp(covered->record()->Pixels + i, &want, sizeof want), 0) << i;
        const _color_t &under = lower->record()->Pixels[i];
        const _color_t over = i < count ? plain::layPixel(under, want, 0, 4096, false) : under;
        EXPECT_EQ(std::memcmp(laid->record()->Pixels + i, &over, sizeof over), 0) << i;
        EXPECT_EQ(between[size_t(i)], i < count ? border[size_t(i)] : 7) << i;
      }
    });
  }
}

TEST(ShutterRadialAlpha, MultipliesAlphaInTheFrame) {
  test::Dice dice(4);
  host::Session session("Halvenor");
  session.info()->PixelAspect = 1.25;
  for (int round = 0; round < 60; ++round) {
    const auto picture = dice.picture(round == 0 ? 1100 : 40, 20), before = test::randomPicture(1100, 20, 1);
    const pic &p = *picture->record();
    std::copy_n(p.Pixels, p.Width * p.Height, before->record()->Pixels);
    const plain::Shutter shutter = {
        3, dice.between(1, 9), dice.share() * 360, 12, 7, 1, 1, 1.25, 5 * dice.share() * 1.25, 0, true};
    const double opening = dice.below(4) == 0 ? dice.below(2) : dice.share();
    ASSERT_EQ(shutter_radial_alpha(session.info(), picture->record(), 12, 7, shutter.angle, opening,
                                   shutter.count, shutter.softness / 1.25),
              1);
    for (int i = 0; i < p.Width * p.Height; ++i) {
      const _color_t old = before->record()->Pixels[i], now = p.Pixels[i];
      const int open = opening <= 0   ? 0
                       : opening >= 1 ? 256
                                      : shutter.coverage(opening, true, p.X + i % p.Width, p.Y + i / p.Width);
      ASSERT_NEAR(now.a, (old.a * open + 128) >> 8, 4);
      ASSERT_TRUE(now.b == old.b && now.g == old.g && now.r == old.r);
    }
  }
  const auto picture = test::randomPicture(9, 5, 1);
  int rows = 0;
  session.stop = [&] { return ++rows == 3; };
  EXPECT_EQ(shutter_radial_alpha(session.info(), picture->record(), 0, 0, 0, 0, 1, 0), 0);
  EXPECT_TRUE(picture->record()->Pixels[26].a == 0 && picture->record()->Pixels[27].a != 0);
}

} // namespace
} // namespace zol
