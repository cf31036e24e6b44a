#include "kernels/compositing/fragments.h"

#include "plain/fragments.h"
#include "tests/support/dice.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace zol {
namespace {

FragmentGrid anyGrid(test::Dice &dice, int width, int height, double least = 1) {
  const double size = least + 20 * dice.share();
  return {static_cast<FragmentShape>(dice.below(kFragmentShapes)),
          width,
          height,
          size,
          size * (0.5 + dice.share()),
          dice.word()};
}

TEST(FragmentGrid, CoversThePictureOnce) {
  test::Dice dice(1);
  for (int round = 0; round < 300; ++round) {
    const int width = dice.between(1, 60), height = dice.between(1, 40);
    const FragmentGrid grid = anyGrid(dice, width, height);
    int64_t area = 0;
    std::vector<int> touched(size_t(width * height)), owned(size_t(width * height));
    for (int i = 0; i < grid.count(); ++i) {
      const Fragment fragment = grid[i];
      int64_t own = 0;
      for (int k = 0; k < fragment.count; ++k) {
        const auto &p = fragment.corners[k], &q = fragment.corners[(k + 1) % fragment.count];
        own += int64_t{p.x} * q.y - int64_t{q.x} * p.y;
      }
      ASSERT_GT(own, 0) << "fragment " << i << " is turned over";
      area += own;
      for (int at = 0; at < width * height; ++at) {
        const int x = at % width * 16 + 8, y = at / width * 16 + 8;
        int64_t nearest = 1;
        for (int k = 0; k < fragment.count; ++k) {
          const auto &p = fragment.corners[k], &q = fragment.corners[(k + 1) % fragment.count];
          nearest = std::min(nearest, int64_t{q.x - p.x} * (y - p.y) - int64_t{q.y - p.y} * (x - p.x));
        }
        touched[size_t(at)] += nearest >= 0 ? 1 : 0;
        owned[size_t(at)] += nearest > 0 ? 1 : 0;
      }
    }
    EXPECT_EQ(area, int64_t{2 * 256} * width * height);
    EXPECT_TRUE(std::all_of(touched.begin(), touched.end(), [](int n) { return n >= 1; }));
    EXPECT_TRUE(std::all_of(owned.begin(), owned.end(), [](int n) { return n <= 1; }));
  }
  for (int shape = 0; shape < kFragmentShapes; ++shape) {
    const int count = FragmentGrid(static_cast<FragmentShape>(shape), 32767, 32767, 4, 4, 1).count();
    EXPECT_LE(count, FragmentGrid::kMost);
    EXPECT_GT(count, FragmentGrid::kMost * 9 / 10);
  }
}

/// Turned, narrowed, mirrored, or hardly moved.
Projection anyMove(test::Dice &dice, const Point &about) {
  const auto some = [&](double most) { return most * (2 * dice.share() - 1); };
  const bool isNear = dice.below(3) == 0;
  const Projection change = {{{isNear ? 1 : some(1.5), isNear ? 0 : some(1), 0},
                              {isNear ? 0 : some(1), isNear ? 1 : some(1.5), 0},
                              {0, 0, 1}}};
  const double reach = isNear ? 1 : 15;
  return Projection::moved(about.x + some(reach), about.y + some(reach)) * change *
         Projection::moved(-about.x, -about.y);
}

plain::Fragments plainForm(const pic &picture, const FragmentGrid &grid,
                           const std::vector<FragmentMove> &moves) {
  plain::Fragments form{picture, {}, static_cast<int>(moves.size()) == grid.count()};
  for (const FragmentMove &move : moves) {
    const WarpMap map(move.forward.inverse(), picture.Width, picture.Height);
    plain::Outline home, moved;
    for (int k = 0; k < grid[move.fragment].count; ++k) {
      const Point from = grid[move.fragment].corner(k), to = move.forward.of(from);
      home.corners.push_back({from.x, from.y});
      moved.corners.push_back({to.x, to.y});
    }
    plain::Warp warp{picture.Pixels,
                     picture.Width,
                     picture.Height,
                     WarpSource::of(picture).opaque,
                     plain::Warp::extend,
                     plain::Warp::sharp,
                     {},
                     {},
                     {}};
    const auto &[a, b, g] = map.toSource().rows;
    std::copy_n(a, 3, warp.a);
    std::copy_n(b, 3, warp.b);
    std::copy_n(g, 3, warp.g);
    form.pieces.push_back({home, moved, warp, !map.drawsNothing(), move.opacity});
  }
  return form;
}

TEST(FragmentLayer, GivesThePlainFormsBytes) {
  test::Dice dice(2);
  for (int round = 0; round < 80; ++round) {
    const int width = dice.between(1, 50), height = dice.between(1, 30);
    const auto picture = test::randomPicture(width, height, dice.word(), dice.between(-20, 20), 3);
    if (dice.below(2) != 0)
      for (size_t i = 0; i < picture->pixels(); ++i)
        picture->record()->Pixels[i].a = 255;
    const FragmentGrid grid = anyGrid(dice, width, height, 6);
    const int resting = dice.below(3);
    std::vector<FragmentMove> moves;
    for (int i = 0; i < grid.count(); ++i)
      if (dice.below(3) >= resting)
        moves.push_back({i, anyMove(dice, grid[i].centroid()), dice.below(2) == 0 ? 4096 : dice.below(4097)});
    const int left = dice.between(-25, 10), top = dice.between(-5, 10);
    const Area area{left, top, left + dice.between(1, 70), top + dice.between(1, 30)};
    const plain::Fragments want = plainForm(*picture->record(), grid, moves);
    test::atEveryLevel([&] {
      const FragmentLayer layer(*picture->record(), area, grid, moves.data(), int(moves.size()));
      ASSERT_TRUE(layer);
      std::vector<_color_t> row(size_t(area.width()) + 1, {1, 2, 3, 4});
      for (int y = 0; y < area.height(); ++y) {
        layer.write(y, row.data());
        ASSERT_EQ(row.back().a, 4);
        for (int x = 0; x < area.width(); ++x) {
          const _color_t p = want.at(x + area.left - picture->record()->X, y + area.top - 3);
          ASSERT_EQ(std::memcmp(&row[size_t(x)], &p, sizeof p), 0) << round << ": " << x << ", " << y;
        }
      }
    });
  }
}

// Whichever fragments have started: while none has moved the picture is whole.
TEST(FragmentLayer, LeavesNoSeamsInWhatHasNotParted) {
  test::Dice dice(3);
  for (int round = 0; round < 60; ++round) {
    const int width = dice.between(20, 60), height = dice.between(20, 40);
    const auto picture = test::randomPicture(width, height, dice.word());
    for (size_t i = 0; i < picture->pixels(); ++i)
      picture->record()->Pixels[i].a = 255;
    const FragmentGrid grid = anyGrid(dice, width, height, 4);
    std::vector<FragmentMove> moves;
    for (int i = 0; i < grid.count(); ++i)
      if (dice.below(2) != 0)
        moves.push_back({i, Projection::moved(0, 0), 4096});
    const FragmentLayer layer(*picture->record(), Area::ofSize(width, height), grid, moves.data(),
                              int(moves.size()));
    std::vector<_color_t> row(static_cast<size_t>(width));
    for (int y = 0; y < height; ++y) {
      layer.write(y, row.data());
      for (int x = 0; x < width; ++x) {
        const _color_t p = picture->record()->Pixels[y * width + x];
        ASSERT_EQ(std::memcmp(&row[size_t(x)], &p, sizeof p), 0) << round << ": " << x << ", " << y;
      }
    }
  }
}

// What is seen from the side vanishes, and its pixels add up to its area on the way there.
TEST(FragmentLayer, NarrowsEvenlyToNothing) {
  constexpr int kSize = 64;
  const auto picture = test::randomPicture(kSize, kSize, 1);
  for (size_t i = 0; i < picture->pixels(); ++i)
    picture->record()->Pixels[i].a = 255;
  const FragmentGrid grid(FragmentShape::squares, kSize, kSize, kSize, kSize, 0);
  ASSERT_EQ(grid.count(), 1);
  for (const double narrow : {0.5, 0.1, 0.02, 0.011, 0.004, 0.0}) {
    const FragmentMove move{0, Projection::moved(30.3, 0) * Projection::scaled(narrow, 1), 4096};
    const FragmentLayer layer(*picture->record(), Area::ofSize(kSize, kSize), grid, &move, 1);
    double sum = 0;
    std::vector<_color_t> row(kSize);
    for (int y = 0; y < kSize; ++y) {
      layer.write(y, row.data());
      for (const _color_t &p : row)
        sum += p.a / 255.0;
    }
    const double area = kSize * std::min(narrow * kSize, kSize - 30.3);
    EXPECT_NEAR(sum, area, 0.15 * std::min(area, 64.0)) << narrow;
  }
}

TEST(FragmentLayer, SaysWhenMemoryRunsOut) {
  const auto picture = test::randomPicture(30, 20, 1);
  const FragmentGrid grid(FragmentShape::squares, 30, 20, 10, 10, 0);
  const FragmentMove move{1, Projection::moved(3, 2), 4096};
  int failed = 0;
  for (bool gaveUp = true; gaveUp; ++failed) {
    const test::FailingMalloc fails(failed + 1);
    const FragmentLayer layer(*picture->record(), Area::ofSize(30, 20), grid, &move, 1);
    gaveUp = fails.failed();
    EXPECT_EQ(static_cast<bool>(layer), !gaveUp);
  }
  EXPECT_GT(failed, 5);
}

} // namespace
} // namespace zol
