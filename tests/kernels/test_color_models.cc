#include "kernels/exports/color_models.h"

#include "plain/color_models.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>

namespace zol {
namespace {

using Triple = std::array<uint8_t, 3>;
using Convert = void (*)(uint8_t *, uint8_t *, uint8_t *, uint8_t, uint8_t, uint8_t);

Triple converted(Convert convert, unsigned x, unsigned y, unsigned z) {
  Triple result;
  convert(&result[0], &result[1], &result[2], uint8_t(x), uint8_t(y), uint8_t(z));
  return result;
}

Triple wheel(int h) {
  Triple rgb;
  hue_to_rgb(h, &rgb[0], &rgb[1], &rgb[2]);
  return rgb;
}

TEST(ColorModels, GiveThePlainFormsBytesForAllTriples) {
  for (unsigned i = 0; i < 1U << 24; ++i) {
    const unsigned x = i >> 16, y = i >> 8 & 255, z = i & 255;
    ASSERT_EQ(converted(HLS_to_RGB, x, y, z), converted(plain::hlsToRgb, x, y, z))
        << x << " " << y << " " << z;
    ASSERT_EQ(converted(RGB_to_HLS, x, y, z), converted(plain::rgbToHls, x, y, z))
        << x << " " << y << " " << z;
  }
}

TEST(ColorModels, KnowTheColorsOfRecord) {
  EXPECT_EQ(converted(RGB_to_HLS, 200, 0, 0), (Triple{255, 100, 200}));
  EXPECT_EQ(converted(RGB_to_HLS, 200, 100, 0), (Triple{20, 100, 200}));
  EXPECT_EQ(converted(RGB_to_HLS, 77, 77, 77), (Triple{0, 77, 0}));
  for (unsigned h = 0; h < 256; ++h)
    EXPECT_EQ(converted(HLS_to_RGB, h, 201, 0), (Triple{201, 201, 201}));
}

TEST(ColorModels, TheWheelRunsThroughItsSectorsAndWrapsBeyond) {
  const std::pair<int, Triple> known[] = {
      {0, {255, 0, 0}},      {255, {255, 255, 0}},   {256, {254, 255, 0}},     {509, {1, 255, 0}},
      {510, {0, 255, 0}},    {764, {0, 255, 254}},   {765, {0, 255, 255}},     {1019, {0, 1, 255}},
      {1020, {0, 0, 255}},   {1274, {254, 0, 255}},  {1275, {255, 0, 255}},    {1529, {255, 0, 1}},
      {1530, {255, 0, 0}},   {1531, {255, 0, 255}},  {2000, {255, 0, 42}},     {-1, {255, 255, 0}},
      {-300, {255, 212, 0}}, {INT_MIN, {255, 0, 0}}, {INT_MAX, {255, 0, 251}},
  };
  for (const auto &[h, rgb] : known)
    EXPECT_EQ(wheel(h), rgb) << h;
  for (int h = 0; h < 1530; ++h)
    EXPECT_EQ(rgb_to_hue(wheel(h)[0], wheel(h)[1], wheel(h)[2]), h);
  EXPECT_EQ(rgb_to_hue(77, 77, 77), 0);
  EXPECT_EQ(rgb_to_hue(0, 3, 2), 680);        // 510 and two thirds of 255
  EXPECT_EQ(rgb_to_hue(101, 100, 106), 1063); // 1020 and a sixth of it, rounded up
  for (int h = 1; h < 1530; ++h) {            // one channel at a time, one step a step
    const Triple last = wheel(h - 1), now = wheel(h);
    EXPECT_EQ(std::abs(now[0] - last[0]) + std::abs(now[1] - last[1]) + std::abs(now[2] - last[2]), 1) << h;
  }
}

} // namespace
} // namespace zol
