#include "kernels/color/luma.h"

#include "tests/kernels/color_probe.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

namespace zol {
namespace {

constexpr int kCount = 64;

Rgb colorOf(uint32_t word) { return {int(word >> 16 & 255), int(word >> 8 & 255), int(word & 255)}; }

uint32_t wordOf(const Rgb &c) { return uint32_t(c.red) << 16 | uint32_t(c.green) << 8 | uint32_t(c.blue); }

TEST(Luma, MovesEveryColorToEveryLumaWithoutClipping) {
  for (uint32_t step = 0; step < 1U << 24; step += 251) {
    const Rgb color = colorOf(step * 5);
    EXPECT_EQ(wordOf(withLuma(color, luma(color))), wordOf(color));
    for (int y = 0; y < 256; y += 5) {
      const Rgb moved = withLuma(color, y);
      ASSERT_TRUE((wordOf(moved) & 0xFF000000) == 0 && std::abs(luma(moved) - y) <= 1)
          << wordOf(color) << " to " << y;
      // Hue: a channel that was above another is not below it.
      ASSERT_TRUE((color.red < color.green || moved.red >= moved.green) &&
                  (color.green < color.blue || moved.green >= moved.blue) &&
                  (color.blue < color.red || moved.blue >= moved.red));
    }
  }
}

TEST(Luma, IsThePlainFormsByLanes) {
  test::atEveryLevel([&] {
    const auto run = ZOL_SELECT(withLumas);
    test::Dice dice(1);
    for (int round = 0; round < 20000; ++round) {
      std::array<uint32_t, kCount> colors, lumas, out;
      for (int i = 0; i < kCount; ++i) { // every second channel black or white
        const uint32_t ends = dice.word() & 0xFFFFFF, flags = dice.word();
        const uint32_t mask = (flags & 1) * 255 | (flags >> 1 & 1) * 0xFF00 | (flags >> 2 & 1) * 0xFF0000;
        const uint32_t full =
            (flags >> 3 & 1) * 255 | (flags >> 4 & 1) * 0xFF00 | (flags >> 5 & 1) * 0xFF0000;
        colors[size_t(i)] = (ends & mask) | (full & ~mask);
        lumas[size_t(i)] = dice.word() & 255;
      }
      run(colors.data(), lumas.data(), out.data());
      for (size_t i = 0; i < kCount; ++i)
        ASSERT_EQ(out[i], wordOf(withLuma(colorOf(colors[i]), int(lumas[i]))))
            << colors[i] << " to " << lumas[i];
    }
  });
}

} // namespace
} // namespace zol
