#include "kernels/sampling/moved_picture.h"

#include "tests/support/dice.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

/// The frame's pixel (x, y) of the picture moved by sixteenths.
_color_t plainMoved(const pic &picture, int right, int down, int x, int y) {
  int total = 0, sums[3] = {};
  const int px = 16 * x - right, py = 16 * y - down, fx = px & 15, fy = py & 15;
  for (int corner = 0; corner < 4; ++corner) {
    const int sx = (px >> 4) + corner % 2, sy = (py >> 4) + corner / 2;
    if (!Area::of(picture).hasColumn(sx) || !Area::of(picture).hasRow(sy))
      continue;
    const _color_t p = *pixelAt(picture, sx, sy);
    const int weight = (corner % 2 != 0 ? fx : 16 - fx) * (corner / 2 != 0 ? fy : 16 - fy) * p.a;
    total += weight;
    sums[0] += weight * p.b;
    sums[1] += weight * p.g;
    sums[2] += weight * p.r;
  }
  if (total == 0)
    return {};
  const auto color = [&](int sum) { return static_cast<uint8_t>((sum + total / 2) / total); };
  return {color(sums[0]), color(sums[1]), color(sums[2]), static_cast<uint8_t>((total + 128) >> 8)};
}

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
      const MovedPicture moved(source, dx, dy);
      ASSERT_TRUE(moved);
      const Area area = moved.area();
      EXPECT_EQ(area.isEmpty(), Area::of(source).isEmpty());
      for (int y = area.top - 1; y <= area.bottom; ++y)
        for (int x = area.left - 1; x <= area.right; ++x) {
          const _color_t want = plainMoved(source, dx, dy, x, y);
          const bool has = area.hasColumn(x) && area.hasRow(y);
          const _color_t got = has ? moved.row(y)[x - area.left] : _color_t{};
          if (want.a != 0 || got.a != 0) { // where nothing shows, what is hidden does not count
            ASSERT_EQ(std::memcmp(&got, &want, sizeof want), 0) << round << ": " << x << ", " << y;
          }
        }
    }
  });
}

} // namespace
} // namespace zol
