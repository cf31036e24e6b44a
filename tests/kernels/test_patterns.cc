#include "kernels/patterns/bars.h"
#include "kernels/patterns/cells.h"
#include "kernels/patterns/ring.h"
#include "kernels/patterns/zone_rows.h"

#include "plain/zone.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>
#include <vector>

namespace zol {
namespace {

/// A row's patches, each by where it ends and its red, green and blue.
std::vector<std::string> patchesOf(Bars bars, int band, const Levels &levels, int width) {
  std::vector<_color_t> row(static_cast<size_t>(width));
  drawBand(bars, band, levels, row.data(), width);
  std::vector<std::string> patches;
  for (size_t x = 0; x < row.size(); ++x) {
    EXPECT_EQ(row[x].a, 255);
    if (x + 1 < row.size() && std::bit_cast<uint32_t>(row[x]) == std::bit_cast<uint32_t>(row[x + 1]))
      continue;
    char text[32];
    std::snprintf(text, sizeof text, "%zu %02X%02X%02X", x + 1, row[x].r, row[x].g, row[x].b);
    patches.emplace_back(text);
  }
  return patches;
}

// What the standards' tables give at 8 bits: of 75 % 180, of 40 % 104, of 15 % 49, and 12, 20, 25 around
// black.
TEST(Bars, AreThoseOfTheStandards) {
  using Patches = std::vector<std::string>;
  const auto expect = [](Bars bars, int band, const Levels &levels, int width, const Patches &patches) {
    EXPECT_EQ(patchesOf(bars, band, levels, width), patches) << width;
  };
  expect(Bars::smpteHd, 0, kStudioRange, 1920,
         {"240 686868", "446 B4B4B4", "651 B4B410", "857 10B4B4", "1063 10B410", "1269 B410B4", "1474 B41010",
          "1680 1010B4", "1920 686868"});
  expect(Bars::smpteHd, 1, kStudioRange, 1920, {"240 10EBEB", "446 EBEBEB", "1680 B4B4B4", "1920 1010EB"});
  expect(Bars::smpteHd, 3, kStudioRange, 1920,
         {"240 313131", "549 101010", "960 EBEBEB", "1131 101010", "1200 0C0C0C", "1269 101010",
          "1337 141414", "1406 101010", "1474 191919", "1680 101010", "1920 313131"});
  expect(Bars::smpteHd, 3, kFullRange, 720,
         {"90 262626", "206 000000", "360 FFFFFF", "476 000000", "501 050505", "527 000000", "553 0A0A0A",
          "630 000000", "720 262626"});
  expect(Bars::smpteHd, 0, kFullRange, 1, {"1 00BF00"});
  expect(Bars::ebu, 0, kStudioRange, 720,
         {"90 EBEBEB", "180 B4B410", "270 10B4B4", "360 10B410", "450 B410B4", "540 B41010", "630 1010B4",
          "720 101010"});
  expect(Bars::ebu, 0, kFullRange, 7,
         {"1 FFFFFF", "2 BFBF00", "3 00BFBF", "4 00BF00", "5 BF0000", "6 0000BF", "7 000000"});
  expect(Bars::full, 0, kFullRange, 8,
         {"1 FFFFFF", "2 FFFF00", "3 00FFFF", "4 00FF00", "5 FF00FF", "6 FF0000", "7 0000FF", "8 000000"});
  expect(Bars::steps, 0, kFullRange, 11,
         {"1 000000", "2 1A1A1A", "3 333333", "4 4D4D4D", "5 666666", "6 808080", "7 999999", "8 B3B3B3",
          "9 CCCCCC", "10 E6E6E6", "11 FFFFFF"});
  expect(Bars::ramp, 0, kFullRange, 7,
         {"1 000000", "2 2B2B2B", "3 555555", "4 808080", "5 AAAAAA", "6 D5D5D5", "7 FFFFFF"});

  const Patches ramp = patchesOf(Bars::smpteHd, 2, kStudioRange, 1920); // every step of which shows
  ASSERT_EQ(ramp.size(), 1 + 220 + 1U);
  EXPECT_EQ(ramp[0], "240 EBEB10");
  EXPECT_EQ(ramp[1], "449 101010");
  EXPECT_EQ(ramp[220], "1680 EBEBEB");
  EXPECT_EQ(ramp[221], "1920 EB1010");
}

TEST(Bars, MeetAtTheNearestRows) {
  for (const auto &[height, ends] :
       {std::pair{1080, std::array{630, 720, 810}}, {576, {336, 384, 432}}, {7, {4, 5, 5}}, {1, {1, 1, 1}}})
    for (int y = 0; y < height; ++y)
      EXPECT_EQ(bandOf(Bars::smpteHd, y, height), (y >= ends[0]) + (y >= ends[1]) + (y >= ends[2]))
          << y << " of " << height;
}

std::string told(const Cells &cells, bool (Cells::*is)(int) const) {
  std::string text;
  for (int i = 0; i < cells.size; ++i)
    text += (cells.*is)(i) ? '#' : '.';
  return text;
}

TEST(Cells, AreLaidOutFromTheMiddle) {
  EXPECT_EQ(told({14, 4, 1}, &Cells::isOdd), "...####....###");
  EXPECT_EQ(told({9, 2.5, 1}, &Cells::isOdd), "..##...##");
  EXPECT_EQ(told({4, 1, 1}, &Cells::isOdd), ".#.#");
  EXPECT_EQ(told({14, 4, 1}, &Cells::isOnLine), "...#...#...#..");
  EXPECT_EQ(told({14, 4, 2}, &Cells::isOnLine), "..##..##..##..");
  EXPECT_EQ(told({14, 4, 3}, &Cells::isOnLine), "#.###.###.###.");
  EXPECT_EQ(told({5, 2, 2}, &Cells::isOnLine), "#####");
}

TEST(Ring, CoversItsArea) {
  for (const Ellipse &outer : {Ellipse{50, 40, 38.5, 38.5}, {49.7, 40.2, 30, 39}, {50, 40, 200, 60}})
    for (const double width : {1.0, 2.3, 500.0}) {
      const Ellipse inner{outer.x, outer.y, outer.radiusX - width, outer.radiusY - width};
      Ring ring(outer, inner, 100);
      ASSERT_TRUE(ring);
      int sums[2] = {}; // of the left half and of the right
      for (int y = 0; y < 80; ++y) {
        std::vector<_color_t> row(100, _color_t{0, 0, 0, 255});
        ring.drawRow(y, {255, 255, 255, 255}, row.data());
        for (size_t x = 0; x < 100; ++x)
          sums[x / 50] += row[x].g;
      }
      const double covered = (sums[0] + sums[1]) / 255.0;
      if (outer.radiusX < 50) {
        const double hole = width < 500 ? inner.radiusX * inner.radiusY : 0;
        EXPECT_NEAR(covered / (std::numbers::pi * (outer.radiusX * outer.radiusY - hole)), 1, 0.005);
      } else if (width == 500) {
        EXPECT_EQ(covered, 8000); // all of it lies within
      }
      EXPECT_TRUE(outer.x != 50 || sums[0] == sums[1]);
    }
}

TEST(Zone, IsACosine) {
  for (uint32_t i = 0; i < 65536; ++i)
    ASSERT_NEAR(plain::zoneGray(i << 16), 128 + 127 * std::cos(2 * std::numbers::pi * i / 65536), 0.6) << i;
  EXPECT_EQ(plain::zoneGray(0), 255);
  EXPECT_EQ(plain::zoneGray(uint32_t{1} << 31), 1);
}

TEST(Zone, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    const int width = dice.below(100);
    const ZonePhases phases{dice.word(), dice.word(), dice.below(2) == 0 ? dice.word() : dice.word() >> 8};
    const auto want = host::PictureBuffer::make(width, 1);
    for (int x = 0; x < width; ++x)
      want->record()->Pixels[x] = plain::zonePixel(phases, x);
    test::atEveryLevel([&] {
      const auto got = host::PictureBuffer::make(width, 1);
      ZOL_SELECT(zoneRow)(phases, got->record()->Pixels, width);
      ASSERT_TRUE(test::samePixels(*got->record(), *want->record())) << round;
    });
  }
}

} // namespace
} // namespace zol
