#include "kernels/compositing/lay_color.h"

#include "tests/support/levels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace zol {
namespace {

int channel(int colour, int pixel, int mask, int alpha) {
  const int w = 255 * mask, v = alpha * (255 - mask);
  return (w * colour + v * pixel) / (w + v);
}

TEST(LayColor, IsExactForEveryMaskAndAlpha) {
  constexpr int kCount = 65536;
  const auto before = test::randomPicture(256, 256, 1), mask = test::randomPicture(256, 256, 2);
  for (int i = 0; i < kCount; ++i) {
    before->record()->Pixels[i].a = static_cast<uint8_t>(i);
    mask->record()->Pixels[i].a = static_cast<uint8_t>(i >> 8);
  }
  for (const unsigned colour : {0x00ff0080U, 0x7f010203U}) {
    for (const SimdLevel level : test::levels()) {
      capSimdLevel(level);
      const auto lay = ZOL_SELECT(layColor);
      std::vector<_color_t> out(before->record()->Pixels, before->record()->Pixels + kCount);
      lay(out.data(), mask->record()->Pixels, kCount, colour);
      int wrong = 0;
      for (int i = 0; i < kCount; ++i) {
        const _color_t p = before->record()->Pixels[i], q = out[static_cast<size_t>(i)];
        const int m = i >> 8, d = i & 255;
        if (m == 0)
          wrong += q.b != p.b || q.g != p.g || q.r != p.r || q.a != p.a;
        else
          wrong += q.a != (255 * m + d * (255 - m)) / 255 || q.b != channel(colour & 255, p.b, m, d) ||
                   q.g != channel(colour >> 8 & 255, p.g, m, d) ||
                   q.r != channel(colour >> 16 & 255, p.r, m, d);
      }
      EXPECT_EQ(wrong, 0);
      for (int count = 0; count < 20; ++count) { // what lies behind the row stays
        std::vector<_color_t> row(before->record()->Pixels, before->record()->Pixels + 20);
        lay(row.data(), mask->record()->Pixels + 30000, count, colour);
        for (size_t i = static_cast<size_t>(count); i < 20; ++i)
          EXPECT_EQ(row[i].r, before->record()->Pixels[i].r);
      }
    }
  }
}

TEST(LayColor, TakesMasksOfBytesTimesTheOpacity) {
  const auto before = test::randomPicture(256, 1, 3);
  for (const unsigned opacity : {0U, 1U, 77U, 255U}) {
    const unsigned colour = opacity << 24 | 0x0140ffU;
    std::vector<uint8_t> mask(256);
    const auto scaled = test::randomPicture(256, 1, 4);
    for (unsigned i = 0; i < 256; ++i) {
      mask[i] = static_cast<uint8_t>(i * 37);
      scaled->record()->Pixels[i].a = static_cast<uint8_t>((mask[i] * opacity + 127) / 255);
    }
    test::atEveryLevel([&] {
      for (int count = 0; count <= 256; count = count < 70 ? count + 1 : count + 31) {
        std::vector<_color_t> out(before->record()->Pixels, before->record()->Pixels + 256), expected = out;
        ZOL_SELECT(layColor)(expected.data(), scaled->record()->Pixels, count, colour);
        ZOL_SELECT(layColorOnBytes)(out.data(), mask.data(), count, colour);
        ASSERT_EQ(std::memcmp(out.data(), expected.data(), 256 * sizeof(_color_t)), 0) << count;
      }
    });
  }
}

} // namespace
} // namespace zol
