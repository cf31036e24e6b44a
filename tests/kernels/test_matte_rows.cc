#include "kernels/matte/matte_rows.h"

#include "plain/alpha_ex.h"
#include "tests/support/levels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

TEST(MatteRows, GiveThePlainFormsBytes) {
  constexpr int kCount = 65536;
  const auto picture = test::randomPicture(256, 256, 1);
  _color_t *const pixels = picture->record()->Pixels;
  for (int i = 0; i < kCount; ++i) // every byte in every alpha
    pixels[i] = {uint8_t(i), uint8_t(i * 3), uint8_t(i), uint8_t(i >> 8)};
  test::atEveryLevel([&] {
    std::vector<uint8_t> matte(kCount), faded(kCount);
    std::vector<uint16_t> wide(kCount);
    std::vector<_color_t> grey(kCount);
    for (int source = 0; source < kMatteSources; ++source) {
      ZOL_SELECT(matteRow)(pixels, static_cast<MatteSource>(source), matte.data(), kCount);
      for (size_t i = 0; i < kCount; ++i)
        ASSERT_EQ(matte[i], plain::matteValue(pixels[i], source)) << source << ' ' << i;
    }
    for (int count = 0; count < 200; ++count) { // nothing behind them is touched
      const int share = count * 4096 / 199, shift = count % 7;
      for (int i = 0; i < kCount; ++i)
        faded[size_t(i)] = matte[size_t(i)] = static_cast<uint8_t>(i * 37 >> shift);
      wide[size_t(count)] = 7;
      grey[size_t(count)].a = 3;
      ZOL_SELECT(fadeRow)(faded.data(), share, count);
      ZOL_SELECT(widenRow)(matte.data(), wide.data(), count);
      ZOL_SELECT(greyRow)(matte.data(), grey.data(), count);
      for (size_t i = 0; i < size_t(count); ++i) {
        const _color_t g = grey[i];
        ASSERT_EQ(faded[i], matte[i] * share >> 12);
        ASSERT_EQ(wide[i], matte[i] * 255);
        ASSERT_TRUE(g.b == matte[i] && g.g == matte[i] && g.r == matte[i] && g.a == 255);
      }
      EXPECT_TRUE(faded[size_t(count)] == matte[size_t(count)] && wide[size_t(count)] == 7 &&
                  grey[size_t(count)].a == 3);
      uint8_t levels[256];
      for (size_t i = 0; i < 256; ++i)
        levels[i] = grey[i * 3 % 199].b;
      std::vector<uint8_t> found = matte;
      ZOL_SELECT(lookUpRow)(levels, found.data(), 256 + count);
      for (size_t i = 0; i < 500; ++i)
        ASSERT_EQ(found[i], i < 256 + size_t(count) ? levels[matte[i]] : matte[i]) << i;
      std::vector<uint8_t> masked = matte;
      ZOL_SELECT(maskRow)(pixels + 300 * count, masked.data(), count);
      for (int i = 0; i < 256; ++i)
        ASSERT_EQ(masked[size_t(i)],
                  i < count ? (matte[size_t(i)] * pixels[300 * count + i].a + 127) / 255 : matte[size_t(i)]);
      std::vector<uint16_t> light(200);
      for (size_t i = 0; i < 200; ++i)
        light[i] = static_cast<uint16_t>((i * 3571 + size_t(count) * 97) % 65026);
      std::vector<uint8_t> amplified(200, 9);
      ZOL_SELECT(amplifyRow)(light.data(), share, amplified.data(), count);
      for (size_t i = 0; i < 200; ++i)
        ASSERT_EQ(amplified[i], i < size_t(count) ? (std::min(light[i] * share >> 8, 65025) + 127) / 255 : 9);
      std::vector<uint8_t> inverted = matte;
      ZOL_SELECT(invertRow)(inverted.data(), count);
      for (int i = 0; i < 256; ++i)
        ASSERT_EQ(inverted[size_t(i)], i < count ? 255 - matte[size_t(i)] : matte[size_t(i)]);
    }
  });
}

} // namespace
} // namespace zol
