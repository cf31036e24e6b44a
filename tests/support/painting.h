// Effects that paint shapes in one colour, on a transparent frame.
#pragma once

#include "tests/support/filter.h"
#include "tests/support/outline.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zol::test {

class Painter : public Filter {
public:
  using Filter::Filter;

  void draw(int field, const Outline &outline) {
    shapes_.push_back(std::make_unique<OutlineShape>(outline));
    *session.parameters.geometries.get(field, 0) = shapes_.back().get();
  }
  /// In pixels; -1 where there is no picture.
  double paintedArea() {
    const auto picture = render();
    double sum = 0;
    for (size_t i = 0; picture != nullptr && i < picture->pixels(); ++i)
      sum += picture->record()->Pixels[i].a;
    return picture != nullptr ? sum / 255 : -1;
  }

private:
  std::vector<std::unique_ptr<OutlineShape>> shapes_;
};

/// The alpha of a pixel of the frame; 0 outside of the picture.
inline int alphaAt(const host::PictureBuffer &picture, int x, int y) {
  const pic &p = *picture.record();
  const bool inside = x >= p.X && y >= p.Y && x < p.X + p.Width && y < p.Y + p.Height;
  return inside ? p.Pixels[ptrdiff_t{y - p.Y} * p.Width + (x - p.X)].a : 0;
}

/// What an effect does whatever it paints: without paint it copies its input, it leaves the rest of it alone,
/// its input's place does not move what it paints, and it says why it renders nothing.
inline void expectPaintsOverItsInput(Painter &painter, int inputField, int alphaField) {
  const int width = painter.session.info()->Width, height = painter.session.info()->Height;
  const auto alone = painter.render();
  ASSERT_NE(alone, nullptr);
  const auto under = randomPicture(width - 7, height - 5, 3, 4, -2);
  PictureClip clip(under->record());
  painter.assign(inputField, &clip);
  const auto over = painter.render();
  ASSERT_NE(over, nullptr);
  const pic &from = *under->record(), &to = *over->record();
  ASSERT_TRUE(to.X == from.X && to.Y == from.Y && to.Width == from.Width && to.Height == from.Height);
  int changed = 0;
  for (int y = std::max<int>(-to.Y, 0); y < to.Height; ++y) // within the frame
    for (int x = 0; x < to.Width; ++x) {
      const ptrdiff_t i = ptrdiff_t{y} * to.Width + x;
      const int paint = alphaAt(*alone, x + to.X, y + to.Y);
      changed += paint != 0 ? 1 : 0;
      if (paint == 0)
        ASSERT_EQ(std::memcmp(&to.Pixels[i], &from.Pixels[i], sizeof(_color_t)), 0) << x << ',' << y;
      else
        ASSERT_GE(to.Pixels[i].a + 1, std::max<int>(from.Pixels[i].a, paint)) << x << ',' << y;
    }
  EXPECT_GT(changed, 20);
  painter.set(alphaField, 0);
  const auto copy = painter.render();
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(std::memcmp(copy->record()->Pixels, from.Pixels, under->pixels() * sizeof(_color_t)), 0);
  painter.set(alphaField, 1);
  painter.assign(inputField, nullptr);
}

inline void expectNeedsAGeometry(Painter &painter, int geometryField) {
  painter.session.faults.clear();
  painter.session.faults.failAt(host::Service::GeoGetCurves, 1);
  EXPECT_EQ(painter.render(), nullptr);
  ASSERT_FALSE(painter.session.messages.empty());
  EXPECT_EQ(painter.session.messages.back(), "GeoGetCurves returns error");
  *painter.session.parameters.geometries.get(geometryField, 0) = nullptr;
  EXPECT_EQ(painter.render(), nullptr);
  EXPECT_EQ(painter.session.messages.back(), "Geometry not assigned");
  EXPECT_EQ(painter.session.pictures.live(), 0U);
}

} // namespace zol::test
