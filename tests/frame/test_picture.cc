#include "frame/picture.h"

#include "frame/canvas.h"
#include "kernels/exports/pic_area_copy.h"

#include <gtest/gtest.h>

#include <vector>

namespace zol {
namespace {

/// Areas of every place and size within a few pixels, turned-about ones among them.
template <class Visit> void forEachArea(Visit visit) {
  for (int left = -2; left <= 3; ++left)
    for (int top = -2; top <= 2; ++top)
      for (int width = -1; width <= 4; ++width)
        for (int height = -1; height <= 3; ++height)
          visit(Area{left, top, left + width, top + height});
}

TEST(Area, CoveredPartDividesTheWholeAndHasWhatBothHave) {
  const Area whole{0, -1, 3, 1};
  forEachArea([&](const Area &cover) {
    const Area part = coveredPart(whole, cover);
    EXPECT_TRUE(whole.left <= part.left && part.left <= part.right && part.right <= whole.right);
    EXPECT_TRUE(whole.top <= part.top && part.top <= part.bottom && part.bottom <= whole.bottom);
    EXPECT_TRUE(part.isEmpty() ? part.width() == 0 && part.height() == 0 : true);
    for (int y = -3; y < 4; ++y)
      for (int x = -3; x < 8; ++x) {
        const auto has = [&](const Area &area) { return area.hasColumn(x) && area.hasRow(y); };
        EXPECT_EQ(has(part), has(whole) && has(cover));
        EXPECT_EQ(has(intersectionOf(whole, cover)), has(whole) && has(cover));
        EXPECT_TRUE(cover.isEmpty() || has(unionOf(whole, cover)) || !(has(whole) || has(cover)));
      }
  });
  const Area nothing = coveredPart({2, 2, 1, 0}, {0, 0, 9, 9});
  EXPECT_TRUE(nothing.isEmpty() && nothing.left == 2 && nothing.top == 2);
}

TEST(Area, IndicesRunRowByRowAndMoveWithTheArea) {
  const Area area{-2, 5, 3, 9}, moved = area.moved(10, -4);
  ptrdiff_t expected = 0;
  for (int y = area.top; y < area.bottom; ++y)
    for (int x = area.left; x < area.right; ++x) {
      EXPECT_EQ(area.index(x, y), expected);
      EXPECT_EQ(moved.index(x + 10, y - 4), expected++);
    }
  EXPECT_EQ(moved.moved(-10, 4), area);
}

TEST(CopyShared, PicAreaCopyAndCanvasesTakeWhatBothHaveAndNothingElse) {
  forEachArea([](const Area &place) {
    if (place.width() < 0 || place.height() < 0)
      return;
    std::vector<_color_t> from;
    std::vector<_color_t> to(12, _color_t{9, 9, 9, 9});
    for (int i = 0; i < place.width() * place.height(); ++i)
      from.push_back({static_cast<uint8_t>(100 + i), 0, 0, 0});
    pic source{0, 0, static_cast<int16_t>(place.width()), static_cast<int16_t>(place.height()), from.data()};
    placeAt(source, place);
    const pic target{-1, 0, 4, 3, to.data()};
    pic receiver = target;
    EXPECT_EQ(PicAreaCopy(&receiver, &source), coveredPart(Area::of(target), place).height());
    for (int y = 0; y < 3; ++y)
      for (int x = -1; x < 3; ++x) {
        const bool shared = place.hasColumn(x) && place.hasRow(y);
        EXPECT_EQ(pixelAt(target, x, y)->b, shared ? pixelAt(source, x, y)->b : 9);
      }
    const Area canvas = unionOf(place, {0, 0, 2, 2});
    for (int y = canvas.top; y < canvas.bottom; ++y) {
      std::vector<_color_t> row(static_cast<size_t>(canvas.width()), _color_t{9, 9, 9, 9});
      writeCanvasRow(canvas, &source, y, row.data());
      for (int x = canvas.left; x < canvas.right; ++x)
        EXPECT_EQ(row[static_cast<size_t>(x - canvas.left)].b,
                  place.hasColumn(x) && place.hasRow(y) ? pixelAt(source, x, y)->b : 0);
    }
  });
}

} // namespace
} // namespace zol
