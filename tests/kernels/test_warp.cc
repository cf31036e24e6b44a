#include "kernels/warp/warp_row.h"

#include "plain/warp.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol {
namespace {

/// Any way to see a source: still, moved, turned, zoomed, narrowed, or in perspective.
Projection anyProjection(test::Dice &dice, int width, int height) {
  const auto whole = [&](int reach) -> double { return dice.between(-reach, reach); };
  const double x = dice.below(3) == 0 ? whole(9) : 20 * dice.share() - 10,
               y = dice.below(3) == 0 ? whole(5) : 10 * dice.share() - 5;
  switch (dice.below(6)) {
  case 0: return Projection::moved(x, y);
  case 1: { // quarter turns and mirrors
    const double s = dice.below(2) * 2 - 1, t = dice.below(2) * 2 - 1;
    const double across = s < 0 ? width + whole(3) : whole(3), down = t < 0 ? height : 0;
    return dice.below(2) == 0 ? Projection{{{s, 0, across}, {0, t, down}, {0, 0, 1}}}
                              : Projection{{{0, s, across}, {t, 0, down}, {0, 0, 1}}};
  }
  case 2:
    return Projection::moved(x, y) *
           Projection::scaled(dice.scaled(-4, dice.below(4) == 0 ? 5 : 2), dice.scaled(-4, 2));
  case 3:
    return {{{3 * dice.share(), 3 * dice.share() - 1.5, x},
             {3 * dice.share() - 1.5, 3 * dice.share(), y},
             {0, 0, 1}}};
  default: {
    const auto corner = [&](int cx, int cy) {
      return Point{cx + width * (dice.share() - 0.5), cy + height * (dice.share() - 0.5)};
    };
    const Point corners[4] = {corner(0, 0), corner(width, 0), corner(width, height), corner(0, height)};
    const Projection quad = Projection::ofRectangle(width, height, corners);
    return dice.below(2) == 0 ? quad : quad.inverse();
  }
  }
}

plain::Warp plainForm(const WarpSource &source, const WarpMap &map, WarpFilter filter) {
  plain::Warp warp{source.pixels,
                   source.width,
                   source.height,
                   source.opaque,
                   static_cast<int>(source.beyond),
                   static_cast<int>(filter),
                   {},
                   {},
                   {}};
  const auto &[a, b, g] = map.toSource().rows;
  for (int i = 0; i < 3; ++i) {
    warp.a[i] = a[i];
    warp.b[i] = b[i];
    warp.g[i] = g[i];
  }
  return warp;
}

TEST(Warp, GivesThePlainFormsBytes) {
  test::Dice dice(1);
  for (int round = 0; round < 200; ++round) {
    const int width = dice.between(1, 40), height = dice.between(1, 16);
    const auto picture = test::randomPicture(width, height, dice.word());
    for (size_t i = 0; i < picture->pixels(); ++i) // opaque, transparent and other stretches
      if (const auto stretch = i / 12 % 4; stretch != 2)
        picture->record()->Pixels[i].a = stretch == 0 ? 255 : stretch == 1 ? 0 : 3;
    WarpSource source = WarpSource::of(*picture->record());
    source.opaque = dice.below(2) == 0;
    source.beyond = static_cast<WarpBeyond>(dice.below(3));
    const auto filter = static_cast<WarpFilter>(dice.below(8) == 0 ? 2 : dice.below(2));
    const WarpMap map(anyProjection(dice, width, height), width, height);
    if (map.drawsNothing())
      continue;
    plain::Warp want = plainForm(source, map, filter);
    want.opacity = dice.below(2) == 0 ? 4096 : dice.below(4097);
    want.outlined = dice.below(4) != 0;
    const int x0 = dice.between(-20, 10), x1 = x0 + dice.between(0, 150);
    for (int y = -3; y < 12; y += 1 + dice.below(4)) {
      std::vector<_color_t> wanted;
      if (!want.outlined)
        want.opacity = 4096;
      for (int x = x0; x < x1; ++x)
        wanted.push_back(want.at(x, y));
      test::atEveryLevel([&] {
        std::vector<_color_t> row(static_cast<size_t>(x1 - x0) + 1, {1, 2, 3, 4});
        if (want.outlined)
          warpRow(source, map, y, x0, x1, filter, want.opacity, row.data());
        else
          warpPixels(source, map, y, x0, x1, filter, row.data());
        EXPECT_EQ(row.back().a, 4);
        for (int x = x0; x < x1; ++x) {
          const _color_t p = row[size_t(x - x0)], q = wanted[size_t(x - x0)];
          ASSERT_EQ(std::memcmp(&p, &q, sizeof p), 0)
              << "round " << round << ": " << x << ", " << y << " of " << width << " by " << height << ": "
              << int(p.b) << ' ' << int(p.g) << ' ' << int(p.r) << ' ' << int(p.a) << " for " << int(q.b)
              << ' ' << int(q.g) << ' ' << int(q.r) << ' ' << int(q.a);
        }
      });
    }
  }
}

} // namespace
} // namespace zol
