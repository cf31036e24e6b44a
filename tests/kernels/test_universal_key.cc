#include "kernels/keying/universal_key.h"

#include "kernels/color/wide_planes.h"
#include "plain/universal_key.h"
#include "plain/wide.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/same_pixels.h"

#include <gtest/gtest.h>

#include <vector>

namespace zol {
namespace {

using Pixels = std::vector<_color_t>;

Pixels pixelsOf(test::Dice &dice, int count, _color_t near) {
  Pixels pixels;
  for (int i = 0; i < count; ++i) {
    const uint32_t word = dice.word();
    const auto about = [&](uint8_t c) { return uint8_t(c + (word >> 24) % 9 - 4); };
    _color_t p = {uint8_t(word), uint8_t(word >> 8), uint8_t(word >> 16), uint8_t(word >> 20)};
    if (i % 5 == 0) // much as the key, dark, grey
      p = {about(near.b), about(near.g), about(near.r), p.a};
    if (i % 7 == 0)
      p = {uint8_t(p.b >> 5), uint8_t(p.g >> 5), uint8_t(p.r >> 5), 255};
    if (i % 11 == 0)
      p = {p.b, p.b, p.b, uint8_t(i % 22 == 0 ? 0 : p.a)};
    pixels.push_back(p);
  }
  return pixels;
}

TEST(UniversalKey, GivesThePlainFormsBytesByEveryMethod) {
  constexpr _color_t kColors[] = {{64, 177, 0, 255}, {255, 0, 0, 0},       {0, 255, 0, 255},
                                  {0, 0, 255, 255},  {90, 110, 98, 255},   {92, 110, 80, 255},
                                  {0, 0, 0, 255},    {255, 255, 255, 255}, {255, 255, 0, 255}};
  test::Dice dice(1);
  for (int round = 0; round < 60 * kKeyMethods; ++round) {
    const int method = round % kKeyMethods, count = dice.below(5) == 0 ? 700 : dice.below(70);
    _color_t color = kColors[dice.below(int(std::size(kColors)))];
    const double range = dice.below(4) == 0 ? dice.below(2) : dice.share();
    const auto share = [&] { return dice.below(3) == 0 ? 4096 * dice.below(2) : dice.below(4097); };
    plain::UniversalKey plain(method, color, range);
    UniversalKey key(static_cast<KeyMethod>(method), color, range);
    plain.shadows = key.shadows = share();
    plain.first = key.first = share();
    plain.range = key.range = std::max(1, share());
    plain.inverts = key.inverts = dice.below(3) == 0;
    plain.spill = share();
    key.spill = key.tellsLight() ? plain.spill : 0;
    const Pixels pixels = pixelsOf(dice, count, color), plate = pixelsOf(dice, count, color);
    test::atEveryLevel([&] {
      std::vector<uint8_t> matte(size_t(count) + 1, 77);
      Pixels out(size_t(count) + 1, _color_t{1, 2, 3, 4});
      ZOL_SELECT(universalMatteRow)(key, pixels.data(), plate.data(), matte.data(), count);
      for (size_t i = 0; i < size_t(count); ++i)
        ASSERT_EQ(matte[i], plain.matte(pixels[i], plate[i])) << "method " << method << ", pixel " << i;
      EXPECT_EQ(matte.back(), 77);
      for (size_t i = 0; i < size_t(count); i += 3) // others than the key's, too
        matte[i] = static_cast<uint8_t>(i * 85);
      ZOL_SELECT(universalColorRow)(key, pixels.data(), matte.data(), out.data(), count);
      for (size_t i = 0; i < size_t(count); ++i) {
        const _color_t want = plain.colored(pixels[i], matte[i]);
        ASSERT_EQ(std::memcmp(&out[i], &want, sizeof want), 0) << "method " << method << ", pixel " << i;
      }
      EXPECT_EQ(out.back().a, 4);
    });
  }
}

TEST(WidePlanes, TakePixelsApartAndPutThemTogether) {
  test::Dice dice(2);
  for (const int count : {0, 1, 7, 33, 500}) {
    const Pixels pixels = pixelsOf(dice, count, {});
    test::atEveryLevel([&] {
      std::vector<uint16_t> planes(4 * size_t(count) + 1, 9);
      uint16_t *const b = planes.data();
      const WidePlanes row = {b, b + count, b + 2 * count, b + 3 * count};
      ZOL_SELECT(toPlanes)(pixels.data(), row, count);
      for (int i = 0; i < count; ++i) {
        plain::Wide want;
        plain::toWide(pixels[size_t(i)], want);
        for (int c = 0; c < 4; ++c)
          ASSERT_EQ(b[c * count + i], want[c]);
        if (i % 3 == 0) // what a blur might leave
          for (int c = 0; c < 4; ++c)
            b[c * count + i] = static_cast<uint16_t>(std::max(0, want[c] - dice.below(200)));
      }
      Pixels out(size_t(count) + 1, _color_t{1, 2, 3, 4});
      ZOL_SELECT(planesToBytes)(row, out.data(), count);
      for (int i = 0; i < count; ++i) {
        plain::Wide wide;
        for (int c = 0; c < 4; ++c)
          wide[c] = b[c * count + i];
        const _color_t want = plain::toBytes(wide, 127, {});
        ASSERT_EQ(std::memcmp(&out[size_t(i)], &want, sizeof want), 0) << i;
      }
      EXPECT_TRUE(planes.back() == 9 && out.back().a == 4);
    });
  }
}

} // namespace
} // namespace zol
