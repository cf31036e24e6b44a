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
#include <numbers>
#include <string>
#include <vector>

namespace zol {
namespace {

struct Patch {
  int end;
  uint32_t rgb;
  bool operator==(const Patch &) const = default;
};
void PrintTo(const Patch &run, std::ostream *out) {
  *out << run.end << ' ' << std::hex << run.rgb << std::dec;
}

/// Pixels that are alike side by side.
std::vector<Patch> runsOf(Bars bars, int band, const Levels &levels, int width) {
  std::vector<_color_t> row(static_cast<size_t>(width));
  drawBand(bars, band, levels, row.data(), width);
  std::vector<Patch> runs;
  for (int x = 0; x < width; ++x) {
    const auto rgb = std::bit_cast<uint32_t>(row[size_t(x)]);
    EXPECT_EQ(rgb >> 24, 255U);
    if (runs.empty() || runs.back().rgb != (rgb & 0xFFFFFF))
      runs.push_back({0, rgb & 0xFFFFFF});
    runs.back().end = x + 1;
  }
  return runs;
}

using Patches = std::vector<Patch>;

// What the standards' tables give at 8 bits: of 75 % 180, of 40 % 104, of 15 % 49, and 12, 20, 25 around
// black.
TEST(Bars, AreThoseOfTheStandards) {
  EXPECT_EQ(runsOf(Bars::smpteHd, 0, kStudioRange, 1920), (Patches{{240, 0x686868},
                                                                   {446, 0xB4B4B4},
                                                                   {651, 0xB4B410},
                                                                   {857, 0x10B4B4},
                                                                   {1063, 0x10B410},
                                                                   {1269, 0xB410B4},
                                                                   {1474, 0xB41010},
                                                                   {1680, 0x1010B4},
                                                                   {1920, 0x686868}}));
  EXPECT_EQ(runsOf(Bars::smpteHd, 1, kStudioRange, 1920),
            (Patches{{240, 0x10EBEB}, {446, 0xEBEBEB}, {1680, 0xB4B4B4}, {1920, 0x1010EB}}));
  EXPECT_EQ(runsOf(Bars::smpteHd, 3, kStudioRange, 1920), (Patches{{240, 0x313131},
                                                                   {549, 0x101010},
                                                                   {960, 0xEBEBEB},
                                                                   {1131, 0x101010},
                                                                   {1200, 0x0C0C0C},
                                                                   {1269, 0x101010},
                                                                   {1337, 0x141414},
                                                                   {1406, 0x101010},
                                                                   {1474, 0x191919},
                                                                   {1680, 0x101010},
                                                                   {1920, 0x313131}}));
  EXPECT_EQ(runsOf(Bars::smpteHd, 3, kFullRange, 720), (Patches{{90, 0x262626},
                                                                {206, 0},
                                                                {360, 0xFFFFFF},
                                                                {476, 0},
                                                                {501, 0x050505},
                                                                {527, 0},
                                                                {553, 0x0A0A0A},
                                                                {630, 0},
                                                                {720, 0x262626}}));
  EXPECT_EQ(runsOf(Bars::ebu, 0, kStudioRange, 720), (Patches{{90, 0xEBEBEB},
                                                              {180, 0xB4B410},
                                                              {270, 0x10B4B4},
                                                              {360, 0x10B410},
                                                              {450, 0xB410B4},
                                                              {540, 0xB41010},
                                                              {630, 0x1010B4},
                                                              {720, 0x101010}}));
  EXPECT_EQ(
      runsOf(Bars::ebu, 0, kFullRange, 7),
      (Patches{
          {1, 0xFFFFFF}, {2, 0xBFBF00}, {3, 0x00BFBF}, {4, 0x00BF00}, {5, 0xBF0000}, {6, 0x0000BF}, {7, 0}}));
  EXPECT_EQ(runsOf(Bars::full, 0, kFullRange, 8), (Patches{{1, 0xFFFFFF},
                                                           {2, 0xFFFF00},
                                                           {3, 0x00FFFF},
                                                           {4, 0x00FF00},
                                                           {5, 0xFF00FF},
                                                           {6, 0xFF0000},
                                                           {7, 0x0000FF},
                                                           {8, 0}}));
  EXPECT_EQ(runsOf(Bars::steps, 0, kFullRange, 11), (Patches{{1, 0},
                                                             {2, 0x1A1A1A},
                                                             {3, 0x333333},
                                                             {4, 0x4D4D4D},
                                                             {5, 0x666666},
                                                             {6, 0x808080},
                                                             {7, 0x999999},
                                                             {8, 0xB3B3B3},
                                                             {9, 0xCCCCCC},
                                                             {10, 0xE6E6E6},
                                                             {11, 0xFFFFFF}}));
  EXPECT_EQ(
      runsOf(Bars::ramp, 0, kFullRange, 7),
      (Patches{
          {1, 0}, {2, 0x2B2B2B}, {3, 0x555555}, {4, 0x808080}, {5, 0xAAAAAA}, {6, 0xD5D5D5}, {7, 0xFFFFFF}}));
  EXPECT_EQ(runsOf(Bars::smpteHd, 0, kFullRange, 1), (Patches{{1, 0x00BF00}}));

  const Patches third =
      runsOf(Bars::smpteHd, 2, kStudioRange, 1920); // with the ramp, of which every step shows
  ASSERT_EQ(third.size(), 1 + 220 + 1U);
  EXPECT_EQ(third[0], (Patch{240, 0xEBEB10}));
  EXPECT_EQ(third[1].rgb, 0x101010U);
  EXPECT_LT(third[1].end, 446 + 4);
  EXPECT_EQ(third[220], (Patch{1680, 0xEBEBEB}));
  EXPECT_EQ(third[221], (Patch{1920, 0xEB1010}));
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
