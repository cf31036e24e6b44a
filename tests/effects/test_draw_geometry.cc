#include "frame/effects.h"
#include "tests/support/painting.h"

#include <cmath>

namespace zol {
namespace {

enum Field {
  kInput,
  kGeometry,
  kColor,
  kAlpha,
  kWidth,
  kJoin,
  kCap,
  kStart,
  kEnd,
  kShift,
  kDash,
  kGap,
  kContours
};
enum Cap { kRound, kButt, kSquare };

using test::alphaAt;

class DrawGeometry : public testing::Test {
protected:
  DrawGeometry() {
    painter.draw(kGeometry, test::ellipse(50, 40, 30, 30));
    painter.set(kWidth, 0.04);
  }

  static constexpr double kRing = 2 * 3.14159265 * 30 * 4; ///< its area
  test::Painter painter{ProcessDrawShapeDeclare, 100, 80};
};

TEST_F(DrawGeometry, PaintsOverItsInput) {
  expectPaintsOverItsInput(painter, kInput, kAlpha);
  expectNeedsAGeometry(painter, kGeometry);
}

TEST_F(DrawGeometry, DrawsAPartOfTheLength) {
  painter.choose(kCap, kButt);
  EXPECT_NEAR(painter.paintedArea(), kRing, 4);
  painter.set(kEnd, 0.5);
  EXPECT_NEAR(painter.paintedArea(), kRing / 2, 3);
  painter.set(kShift, 0.8); // over the seam
  EXPECT_NEAR(painter.paintedArea(), kRing / 2, 3);
  painter.set(kStart, 0.4);
  EXPECT_NEAR(painter.paintedArea(), kRing / 10, 2);
  painter.set(kStart, 0.5);
  EXPECT_EQ(painter.paintedArea(), 0);

  painter.draw(kGeometry,
               {{{{10, 40}, {90, 40}, {0, 0}, {0, 0}}}}); // open: what moves beyond its end is gone
  painter.set(kStart, 0);
  EXPECT_NEAR(painter.paintedArea(), 40 * 0.2 * 2 * 4, 3);
}

TEST_F(DrawGeometry, LeavesNoSeamInAWholeRing) {
  for (const double shift : {0.0, 0.3}) {
    painter.set(kShift, shift);
    const auto ring = painter.render();
    for (int i = 0; i < 1000; ++i) {
      const double angle = i * 0.00628319;
      ASSERT_EQ(alphaAt(*ring, int(50 + 30 * std::cos(angle)), int(40 + 30 * std::sin(angle))), 255) << i;
    }
  }
}

TEST_F(DrawGeometry, FitsDashesToClosedOutlines) {
  painter.choose(kCap, kButt);
  painter.set(kDash, 0.1);
  painter.set(kGap, 0.08);
  EXPECT_NEAR(painter.paintedArea(), kRing * 10 / 18, 5);
  const auto before = painter.render();
  painter.set(kShift, 0.1); // of 10 dashes
  const auto after = painter.render();
  for (int y = 0; y < 80; ++y)
    for (int x = 0; x < 100; ++x)
      ASSERT_NEAR(alphaAt(*before, x, y), alphaAt(*after, x, y), 2) << x << ',' << y;
}

TEST_F(DrawGeometry, DrawsContoursOneAfterAnother) {
  test::Outline two = test::polygon({{10, 10}, {30, 10}, {30, 30}, {10, 30}});
  const test::Outline second = test::polygon({{50, 10}, {90, 10}, {90, 50}, {50, 50}});
  two.segments.insert(two.segments.end(), second.segments.begin(), second.segments.end());
  painter.draw(kGeometry, two);
  painter.choose(kContours, 1);
  painter.set(kEnd, 1.0 / 3);
  const auto first = painter.render();
  EXPECT_EQ(alphaAt(*first, 10, 20), 255);
  EXPECT_EQ(alphaAt(*first, 70, 10), 0);
  painter.set(kStart, 0.5);
  painter.set(kEnd, 1);
  const auto rest = painter.render();
  EXPECT_EQ(alphaAt(*rest, 10, 20), 0);
  EXPECT_EQ(alphaAt(*rest, 60, 10), 0);
  EXPECT_EQ(alphaAt(*rest, 90, 30), 255);
  painter.set(kShift, -0.25); // round again
  EXPECT_EQ(alphaAt(*painter.render(), 60, 10), 255);
  painter.set(kShift, 0.3);
  EXPECT_EQ(alphaAt(*painter.render(), 20, 10), 255);
}

TEST_F(DrawGeometry, KeepsCirclesRoundWherePixelsAreWide) {
  painter.session.info()->PixelAspect = 2;
  painter.draw(kGeometry, {{{{50, 40}, {50.01, 40}, {0, 0}, {0, 0}}}});
  painter.set(kWidth, 0.4);
  const auto dot = painter.render();
  EXPECT_EQ(alphaAt(*dot, 50, 22), 255);
  EXPECT_EQ(alphaAt(*dot, 58, 40), 255);
  EXPECT_EQ(alphaAt(*dot, 62, 40), 0);
}

TEST(DrawGeometryInit, DrawsACircleByStatements) {
  const test::Callbacks effect(ProcessDrawShapeDeclare);
  host::Session session("Halvenor");
  session.info()->Width = 720;
  session.info()->Height = 400;
  session.info()->PixelAspect = 2;
  std::vector<std::string> sent;
  size_t most = 99;
  session.onStatement = [&](const char *text) -> long long {
    sent.emplace_back(text);
    return sent.size() < most ? 1 : 0;
  };
  EXPECT_EQ(effect.init(session.info()), 1);
  const std::vector<std::string> expected = {
      "ZoGeo *gg = ZoGeoContourCreate( ZoClipFrom( ZoCurrentClip ) );",
      "ZoGeoMove( gg, 360.000000, 200.000000 );",
      "ZoGeoContourVertexAdd( gg, 50.000000, 0.000000, 0.000000, -55.228475, 0.000000, 55.228475 );",
      "ZoGeoContourVertexAdd( gg, 0.000000, 100.000000, 27.614237, 0.000000, -27.614237, 0.000000 );",
      "ZoGeoContourVertexAdd( gg, -50.000000, 0.000000, 0.000000, 55.228475, 0.000000, -55.228475 );",
      "ZoGeoContourVertexAdd( gg, 0.000000, -100.000000, -27.614237, 0.000000, 27.614237, 0.000000 );",
      "ZoGeoContourClose( gg );",
      "ZoParamSet( ZoCurrentClip, 1, 0, gg );",
      "ZoGeoSetPrivate( gg );"};
  EXPECT_EQ(sent, expected);
  sent.clear();
  most = 4;
  EXPECT_EQ(effect.init(session.info()), 1);
  EXPECT_EQ(sent.size(), 4U);
}

} // namespace
} // namespace zol
