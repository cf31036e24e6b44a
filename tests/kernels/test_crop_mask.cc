#include "kernels/compositing/crop_mask.h"

#include "plain/crop.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <numbers>
#include <numeric>
#include <vector>

namespace zol {
namespace {

using Row = std::vector<uint16_t>;

TEST(CropRows, GiveThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 400; ++round) {
    const int count = dice.below(70), by = dice.below(4) == 0 ? 256 : dice.below(257);
    const auto pixels = test::randomPicture(70, 1, dice.word());
    const RoundCorner corner = {static_cast<float>(dice.scaled(-2, 6)),
                                static_cast<float>(0.5 + dice.share()),
                                static_cast<float>(dice.scaled(-2, 6)),
                                static_cast<float>(std::abs(dice.scaled(-2, 6))),
                                dice.below(2) != 0 ? static_cast<float>(20 * dice.share()) : 0,
                                dice.below(2) != 0 ? static_cast<float>(20 * dice.share()) : 0};
    Row coverage;
    std::vector<uint8_t> matte;
    for (int i = 0; i < 70; ++i) {
      coverage.push_back(static_cast<uint16_t>(dice.below(3) == 0 ? 256 * dice.below(2) : dice.below(257)));
      matte.push_back(static_cast<uint8_t>(dice.word()));
    }
    test::atEveryLevel([&] {
      Row scaled(70, 7), rounded = coverage, masked = coverage, inverted = coverage;
      const auto kept = test::randomPicture(70, 1, 1), before = test::randomPicture(70, 1, 1);
      ZOL_SELECT(scaleCoverage)(coverage.data(), by, scaled.data(), count);
      ZOL_SELECT(roundCoverage)(corner, rounded.data(), count);
      ZOL_SELECT(matteCoverage)(matte.data(), masked.data(), count);
      ZOL_SELECT(invertCoverage)(inverted.data(), count);
      ZOL_SELECT(keepPixels)(pixels->record()->Pixels, coverage.data(), kept->record()->Pixels, count);
      for (int i = 0; i < 70; ++i) {
        const bool done = i < count;
        const int c = coverage[size_t(i)];
        EXPECT_EQ(scaled[size_t(i)], done ? (c * by + 128) >> 8 : 7);
        EXPECT_EQ(rounded[size_t(i)], done ? std::min(c, plain::cornerCoverage(corner, i)) : c);
        EXPECT_EQ(masked[size_t(i)], done ? (c * matte[size_t(i)] + 127) / 255 : c);
        EXPECT_EQ(inverted[size_t(i)], done ? 256 - c : c);
        _color_t want = pixels->record()->Pixels[i];
        want.a = static_cast<uint8_t>((want.a * c + 128) >> 8);
        if (want.a == 0)
          want = {};
        if (!done)
          want = before->record()->Pixels[i];
        EXPECT_EQ(std::memcmp(kept->record()->Pixels + i, &want, sizeof want), 0) << i;
      }
    });
  }
}

plain::Crop randomCrop(test::Dice &dice) {
  const auto cut = [&](double most) { return dice.below(3) == 0 ? 0 : most * dice.share(); };
  return {dice.between(1, 80),
          dice.between(1, 50),
          cut(0.6),
          cut(0.6),
          cut(0.6),
          cut(0.6),
          cut(0.5),
          cut(1),
          cut(40),
          dice.below(2) == 0 ? 1 : 0.5 + dice.share()};
}

CropLook lookOf(const plain::Crop &crop) {
  return {.left = crop.left,
          .right = crop.right,
          .top = crop.top,
          .bottom = crop.bottom,
          .inset = crop.inset,
          .roundness = crop.roundness,
          .softness = crop.softness,
          .aspect = crop.aspect};
}

TEST(CropMask, KeepsWhatItsDefinitionDoes) {
  test::Dice dice(2);
  for (int round = 0; round < 600; ++round) {
    const plain::Crop crop = randomCrop(dice);
    CropMask mask(crop.width, crop.height, lookOf(crop));
    ASSERT_TRUE(mask);
    const Area touched = mask.touchedFrom(0, 0);
    EXPECT_EQ(coveredPart(Area::ofSize(crop.width, crop.height), touched), touched);
    EXPECT_GE(std::min(touched.width(), touched.height()), 1);
    bool all = true;
    for (int y = 0; y < crop.height; ++y) {
      const uint16_t *row = mask.row(y);
      for (int x = 0; x < crop.width; ++x) {
        const int want = crop.coverage(x, y);
        ASSERT_NEAR(row[x], want, crop.roundness > 0 ? 1 : 0) << round << ' ' << x << ' ' << y;
        EXPECT_TRUE(row[x] == 0 || (touched.hasColumn(x) && touched.hasRow(y)));
        EXPECT_TRUE(row[x] == 0 || !mask.keepsNothing());
        all &= row[x] == 256;
      }
    }
    EXPECT_TRUE(all || !mask.keepsAll());
  }
}

double areaOf(const CropLook &look, int width, int height) {
  CropMask mask(width, height, look);
  double sum = 0;
  for (int y = 0; y < height; ++y)
    sum = std::accumulate(mask.row(y), mask.row(y) + width, sum);
  return sum / 256;
}

TEST(CropMask, KeepsTheAreaOfItsShape) {
  EXPECT_NEAR(areaOf({.left = 0.1237, .bottom = 0.313}, 160, 90), 160 * (1 - 0.1237) * 90 * (1 - 0.313), 2);
  // 54 by 90 less 9 all around; round corners leave a circle of their squares.
  const double corners = (4 - std::numbers::pi) * 18 * 18;
  EXPECT_NEAR(areaOf({.left = 0.4, .inset = 0.2, .roundness = 1}, 90, 90), 36 * 72 - corners, 2);
}

// A side that glides, a softness and a radius that grow change the picture in steps as small as theirs.
TEST(CropMask, ChangesWithoutAJump) {
  using Change = void (*)(CropLook &, double);
  for (const Change change : {Change([](CropLook &look, double v) { look.left = look.top = v / 2; }),
                              Change([](CropLook &look, double v) { look.inset = v; }),
                              Change([](CropLook &look, double v) { look.softness = 40 * v; }),
                              Change([](CropLook &look, double v) { look.roundness = v; })}) {
    for (const double softness : {0.0, 12.0}) {
      double last = -1;
      for (int step = 0; step <= 200; ++step) {
        CropLook look{.left = 0.2, .right = 0.13, .roundness = 0.5, .softness = softness};
        change(look, step / 200.0);
        const double area = areaOf(look, 120, 90) / (120 * 90);
        if (last >= 0) {
          EXPECT_NEAR(area, last, 0.02) << step;
        }
        last = area;
      }
    }
  }
}

} // namespace
} // namespace zol
