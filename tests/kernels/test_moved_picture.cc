#include "kernels/sampling/moved_picture.h"

#include "kernels/color/wide.h"
#include "kernels/compositing/shadow_rows.h"
#include "plain/moved.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

TEST(MovedPicture, GivesThePlainFormsBytesWhereverItIsMoved) {
  test::atEveryLevel([] {
    test::Dice dice(1);
    for (int round = 0; round < 300; ++round) {
      const auto picture = dice.picture(40, 5);
      for (size_t i = 0; i < picture->pixels(); ++i) // opaque, transparent and other stretches
        if (const auto stretch = i / 12 % 3; stretch != 2)
          picture->record()->Pixels[i].a = stretch == 0 ? 255 : 0;
      const pic &source = *picture->record();
      const int right = dice.between(-300, 300), down = dice.between(-300, 300);
      const int dx = round % 5 == 0 ? right & ~15 : right, dy = round % 4 == 0 ? down & ~15 : down;
      MovedPicture moved(source, dx, dy);
      ASSERT_TRUE(moved);
      const Area area = moved.area();
      EXPECT_EQ(area.isEmpty(), Area::of(source).isEmpty());
      for (int y = area.top - 1; y <= area.bottom; ++y)
        for (int x = area.left - 1; x <= area.right; ++x) {
          const _color_t want = plain::moved(source, dx, dy, x, y);
          const bool has = area.hasColumn(x) && area.hasRow(y);
          const _color_t got = has ? moved.row(y)[x - area.left] : _color_t{};
          if (want.a != 0 || got.a != 0) { // where nothing shows, what is hidden does not count
            ASSERT_EQ(std::memcmp(&got, &want, sizeof want), 0) << round << ": " << x << ", " << y;
          }
        }
    }
  });
}

TEST(ShadowRows, GiveThePlainFormsBytesWhateverTheLook) {
  test::atEveryLevel([] {
    test::Dice dice(2);
    for (int round = 0; round < 200; ++round) {
      const int width = dice.between(1, 50), height = dice.between(1, 5);
      const int left = dice.between(-9, 9), top = dice.between(-9, 9), density = round % 3 * dice.below(2049);
      std::vector<uint16_t> alphas(static_cast<size_t>(width * height));
      for (uint16_t &alpha : alphas)
        alpha = static_cast<uint16_t>(dice.below(4) == 0 ? kWideOne : dice.below(kWideOne + 1));
      const auto picture = test::randomPicture(width, height, dice.word());
      const ShadowLook look{dice.between(-1200, 1200),
                            dice.between(-100, 100),
                            4096 + 7 * density,
                            round % 4 != 0 ? dice.below(4097) : 4096,
                            {1, 2, 3, 9},
                            round % 2 == 0};
      ShadowRows rows(alphas.data(), width, height, left, top, look);
      for (int y = 0; y < height; ++y) {
        const _color_t *hidden = picture->record()->Pixels + y * width;
        std::vector<_color_t> out(static_cast<size_t>(width));
        rows.cast(y, hidden, out.data());
        for (int x = 0; x < width; ++x) {
          const uint8_t alpha =
              plain::shadowAlpha(alphas.data(), width, height, look.right, look.down, density, look.opacity,
                                 x, y, plain::roundingTerm(look.dithers, left + x, top + y));
          const _color_t under = hidden[x], want = alpha != 0 ? _color_t{1, 2, 3, alpha}
                                                              : _color_t{under.b, under.g, under.r, 0};
          ASSERT_EQ(std::memcmp(&out[static_cast<size_t>(x)], &want, sizeof want), 0)
              << round << ": " << x << ", " << y;
        }
      }
    }
  });
}

} // namespace
} // namespace zol
