#include "frame/effects.h"
#include "tests/support/painting.h"

namespace zol {
namespace {

using test::alphaAt;

enum Field {
  kInput,
  kGeometry,
  kColor,
  kAlpha,
  kSize,
  kSpacing,
  kOffset,
  kStart,
  kEnd,
  kEndSize,
  kDot,
  kFollow,
  kFit
};
enum Dot { kRound, kSquare, kDiamond, kDash };

class DottedShape : public testing::Test {
protected:
  DottedShape() { painter.set(kSize, 0.06); }

  static constexpr double kArea = 6 * 6; ///< of a square dot
  test::Painter painter{ProcessDottDeclare, 100, 80};
  const test::Outline line{{{{10, 40}, {90, 40}, {20, 0}, {-20, 0}}}};
  const test::Outline ring = test::ellipse(50, 40, 30, 30);
};

TEST_F(DottedShape, PaintsOverItsInput) {
  painter.draw(kGeometry, ring);
  expectPaintsOverItsInput(painter, kInput, kAlpha);
  expectNeedsAGeometry(painter, kGeometry);
}

TEST_F(DottedShape, SetsDotsByLength) {
  painter.draw(kGeometry, line);
  painter.choose(kDot, kSquare);
  painter.set(kSpacing, 0.2);
  EXPECT_NEAR(painter.paintedArea(), 5 * kArea, 1); // at both ends, too
  painter.set(kStart, 0.3);
  EXPECT_NEAR(painter.paintedArea(), 3 * kArea, 1);
  painter.set(kEnd, 0.7);
  painter.set(kOffset, -0.4); // at 52 and 72
  const auto two = painter.render();
  EXPECT_EQ(alphaAt(*two, 42, 40), 255);
  EXPECT_EQ(alphaAt(*two, 62, 40), 255);
  EXPECT_EQ(alphaAt(*two, 22, 40) + alphaAt(*two, 82, 40), 0);
}

TEST_F(DottedShape, MarchesRoundWithoutASeam) {
  painter.draw(kGeometry, ring);
  painter.set(kSpacing, 0.11);
  const double area = painter.paintedArea();
  EXPECT_NEAR(area, 17 * 3.14159265 * 9, 14);
  const auto before = painter.render();
  painter.set(kOffset, 3);
  const auto whole = painter.render();
  EXPECT_EQ(std::memcmp(whole->record()->Pixels, before->record()->Pixels, 8000 * sizeof(_color_t)), 0);
  for (int i = 1; i < 40; ++i) {
    painter.set(kOffset, i * 0.025);
    EXPECT_NEAR(painter.paintedArea(), area, 2) << i;
  }
  painter.set(kOffset, 0);
  painter.choose(kFit, 0);
  painter.set(kSpacing, 0.5);
  EXPECT_NEAR(painter.paintedArea(), 4 * 3.14159265 * 9, 4);
}

TEST_F(DottedShape, ShapesDots) {
  painter.draw(kGeometry, line);
  painter.set(kSize, 0.2);
  painter.set(kSpacing, 1);
  painter.choose(kDot, kDiamond);
  EXPECT_NEAR(painter.paintedArea(), 20 * 20 / 2, 1);
  painter.choose(kDot, kDash);
  EXPECT_NEAR(painter.paintedArea(), 20 * 20 / 3.0, 1);
  painter.draw(kGeometry, {{{{50, 10}, {50, 50}, {0, 10}, {0, -10}}}});
  EXPECT_EQ(alphaAt(*painter.render(), 50, 18), 255);
  EXPECT_EQ(alphaAt(*painter.render(), 58, 10), 0);
  painter.choose(kFollow, 0);
  EXPECT_EQ(alphaAt(*painter.render(), 50, 18), 0);
  EXPECT_EQ(alphaAt(*painter.render(), 58, 10), 255);

  painter.draw(kGeometry, line);
  painter.choose(kDot, kSquare);
  painter.set(kSize, 0.1);
  painter.set(kSpacing, 0.4);
  painter.set(kEndSize, 0); // halfway: half as large
  EXPECT_NEAR(painter.paintedArea(), 10 * 10 + 5 * 5, 1);
}

} // namespace
} // namespace zol
