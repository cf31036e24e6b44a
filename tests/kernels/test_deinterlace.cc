#include "kernels/exports/deinterlace.h"

#include "host/services/session.h"
#include "plain/deinterlace.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <vector>

namespace zol {
namespace {

using Pixels = std::vector<unsigned>;

/// Noise, or a smooth picture of which some lines are off: measures near the usual thresholds.
Pixels picture(int width, int height, unsigned seed) {
  std::mt19937 random(seed);
  Pixels pixels(static_cast<size_t>(width) * static_cast<size_t>(height));
  for (size_t i = 0; i < pixels.size(); ++i) {
    const auto word = static_cast<unsigned>(random());
    const unsigned y = static_cast<unsigned>(i) / static_cast<unsigned>(width);
    const unsigned shift = y % 2 != 0 && word % 3 != 0 ? 12 : 0;
    pixels[i] = seed % 2 == 0 ? word : (word & 0xFF030303) + 0x204060U + (y + shift) * 0x010101U;
  }
  return pixels;
}

void expectPlain(int width, int height, const Pixels &source, int threshold, int edge, bool blend) {
  Pixels from = source, result(source.size()), expected(source.size());
  EXPECT_EQ(deinterlace(result.data(), from.data(), width, height, threshold, edge, blend), 1);
  plain::deinterlace(expected.data(), source.data(), width, height, threshold, edge, blend);
  ASSERT_EQ(result, expected) << width << "x" << height << ", threshold " << threshold << ", edge " << edge
                              << (blend ? ", blended" : "");
}

TEST(Deinterlace, GivesThePlainFormsBytes) {
  constexpr int kThresholds[] = {10, 0, 1, 5, 50, 100, -10, 16384, 23170, 23171, 40000, INT_MIN, INT_MAX};
  constexpr int kEdges[] = {20, 0, 1, 45, 46, 180, 181, -1, -45, -180, -181, -5000, -40000, INT_MIN, INT_MAX};
  test::atEveryLevel([&] {
    unsigned seed = 0;
    for (int width = 0; width < 20; ++width)
      for (int height = 0; height < 7; ++height, ++seed)
        for (const bool blend : {false, true})
          expectPlain(width, height, picture(width, height, seed), int(seed % 4) * 4, 20, blend);
    for (const int threshold : kThresholds)
      for (const int edge : kEdges)
        for (const bool blend : {false, true})
          expectPlain(21, 11, picture(21, 11, ++seed), threshold, edge, blend);
    expectPlain(4099, 4, picture(4099, 4, 1), 10, 20, true); // several strips
  });
}

TEST(Deinterlace, MeasuresEveryDifferenceExactly) {
  // Columns of every pair of bytes around a line, under the strongest edge detections.
  constexpr int kWidth = 256 * 256;
  Pixels source(3 * kWidth);
  for (unsigned i = 0; i < kWidth; ++i) {
    source[i] = (i & 255) * 0x010101U;
    source[kWidth + i] = 0x808080;
    source[2 * kWidth + i] = (i >> 8) * 0x010101U;
  }
  test::atEveryLevel([&] {
    for (const int edge : {20, 45, 46, 180})
      for (const int threshold : {0, 30, 100})
        expectPlain(kWidth, 3, source, threshold, edge, true);
  });
}

TEST(Deinterlace, TakesEmptyPictures) {
  EXPECT_EQ(deinterlace(nullptr, nullptr, 0, 5, 10, 20, true), 1);
  EXPECT_EQ(deinterlace(nullptr, nullptr, -3, 5, 10, 20, true), 1);
  EXPECT_EQ(deinterlace(nullptr, nullptr, 5, -1, 10, 20, false), 1);
}

TEST(DeinterlaceBasic, HasTheHostStretchOneField) {
  host::Session session("Halvenor");
  session.tracing = true;
  std::vector<_color_t> source(4 * 5), result(source.size());
  for (uint8_t y = 0; y < 5; ++y)
    for (size_t x = 0; x < 4; ++x)
      source[y * 4U + x] = {y, y, y, 255};
  EXPECT_EQ(mydeinterlace(session.info(), result.data(), source.data(), 4, 5, 0), 1);
  EXPECT_EQ(result.front().r, 1);
  EXPECT_EQ(result.back().r, 3);
  EXPECT_EQ(mydeinterlace(session.info(), result.data(), source.data(), 4, 5, 1), 1);
  EXPECT_EQ(result.front().r, 0);
  EXPECT_EQ(result.back().r, 2);
  EXPECT_EQ(session.trace, std::vector<std::string>(2, "PicResample(8, 4, 2, 4, 4, 5, 2)"));

  session.trace.clear();
  EXPECT_EQ(mydeinterlace(session.info(), result.data(), source.data() + 12, 4, 1, 0), 1);
  EXPECT_EQ(result[3].r, 3);
  EXPECT_EQ(mydeinterlace(session.info(), result.data(), source.data(), 4, 0, 0), 1);
  EXPECT_EQ(mydeinterlace(session.info(), result.data(), source.data(), 0, 5, 1), 1);
  EXPECT_EQ(mydeinterlace(session.info(), result.data(), source.data(), -1, 1, 1), 1);
  EXPECT_TRUE(session.trace.empty());
}

} // namespace
} // namespace zol
