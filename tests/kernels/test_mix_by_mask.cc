#include "kernels/compositing/mix_by_mask.h"

#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

_color_t mixed(const _color_t &p, const _color_t &q, int m) {
  const int w = m * q.a, v = (255 - m) * p.a;
  const auto channel = [&](int first, int second) {
    return static_cast<uint8_t>(w + v == 0 ? 0 : (w * second + v * first) / (w + v));
  };
  return {channel(p.b, q.b), channel(p.g, q.g), channel(p.r, q.r), static_cast<uint8_t>((w + v) / 255)};
}

TEST(MixByMask, IsExactForEveryMaskAndAlpha) {
  const auto first = test::randomPicture(256, 256, 1), second = test::randomPicture(256, 256, 2);
  constexpr int kCount = 65536;
  std::vector<uint8_t> mask(kCount);
  test::Dice dice(3);
  for (const int run : {1, 40}) { // masks that change at every pixel, and such that stay
    for (int i = 0; i < kCount; ++i) {
      const bool opaque = run == 40 && i % 3000 < 1500;
      first->record()->Pixels[i].a = opaque ? 255 : static_cast<uint8_t>(i);
      second->record()->Pixels[i].a = opaque ? 255 : static_cast<uint8_t>(i * 7 >> 8);
      mask[size_t(i)] = i % run != 0              ? mask[size_t(i - 1)]
                        : run == 40 && i % 3 != 0 ? (i % 2 == 0 ? 0 : 255)
                                                  : static_cast<uint8_t>(dice.word());
    }
    test::atEveryLevel([&] {
      std::vector<_color_t> out(kCount + 1, _color_t{1, 2, 3, 4});
      for (const int count : {kCount, 13, 0}) {
        ZOL_SELECT(mixByMask)
        (first->record()->Pixels, second->record()->Pixels, mask.data(), out.data(), count);
        int wrong = 0;
        for (int i = 0; i < count; ++i) {
          const _color_t e = mixed(first->record()->Pixels[i], second->record()->Pixels[i], mask[size_t(i)]);
          const _color_t p = out[size_t(i)];
          wrong += p.b != e.b || p.g != e.g || p.r != e.r || p.a != e.a;
        }
        EXPECT_EQ(wrong, 0) << count;
        EXPECT_EQ(out[kCount].g, 2);
      }
    });
  }
}

} // namespace
} // namespace zol
