#include "frame/effects.h"
#include "tests/support/painting.h"
#include "tests/support/psnr.h"

#include <cmath>

namespace zol {
namespace {

using test::alphaAt;

enum Field {
  kInput,
  kGeometry,
  kColor,
  kAlpha,
  kX,
  kY,
  kRadius,
  kInner,
  kPoints,
  kAngle,
  kGlow,
  kGlowColor,
  kStars,
  kSeed,
  kSpread,
  kTwinkle,
  kDepth
};

class StarGenerator : public testing::Test {
protected:
  /// Of one star of a radius of 20, without its inner corners: a pentagram's outline with the inner share of
  /// 0.4.
  static double areaOf(int points, double radius, double inner) {
    return points * radius * radius * inner * std::sin(3.14159265358979 / points);
  }
  test::Painter painter{ProcessStarGenDeclare, 100, 80};
};

TEST_F(StarGenerator, PaintsOverItsInput) {
  painter.set(kRadius, 0.3);
  expectPaintsOverItsInput(painter, kInput, kAlpha);
}

TEST_F(StarGenerator, DrawsAStarOfSomePoints) {
  painter.set(kRadius, 0.3);
  for (const int points : {2, 3, 5, 64}) {
    painter.choose(kPoints, points);
    EXPECT_NEAR(painter.paintedArea(), areaOf(points, 30, 0.4), 3) << points;
  }
  painter.choose(kPoints, 5);
  const auto star = painter.render();
  EXPECT_GT(alphaAt(*star, 49, 12) + alphaAt(*star, 50, 12), 200); // one point upright
  EXPECT_EQ(alphaAt(*star, 50, 68), 0);
  painter.set(kAngle, 180);
  painter.set(kX, 0.2);
  painter.set(kY, -0.1);
  const auto turned = painter.render();
  EXPECT_GT(alphaAt(*turned, 69, 60) + alphaAt(*turned, 70, 60), 200);

  painter.session.info()->PixelAspect = 2;
  painter.set(kX, 0);
  painter.set(kY, 0);
  EXPECT_NEAR(painter.paintedArea(), areaOf(5, 30, 0.4) / 2, 3);
}

TEST_F(StarGenerator, FillsAGeometrysBox) {
  painter.draw(kGeometry, test::polygon({{60, 20}, {90, 20}, {90, 60}, {60, 60}}));
  painter.choose(kPoints, 64);
  painter.set(kInner, 1);
  EXPECT_NEAR(painter.paintedArea(), 15 * 15 * 3.14159265, 4);
  EXPECT_EQ(alphaAt(*painter.render(), 75, 40), 255);
}

TEST_F(StarGenerator, ScattersStarsWithinAGeometry) {
  painter.set(kRadius, 0.01);
  painter.set(kSpread, 0);
  painter.choose(kPoints, 64);
  painter.set(kInner, 1);
  painter.choose(kStars, 40);
  EXPECT_NEAR(painter.paintedArea(), 40 * 3.14159265, 12); // some lie upon others, or beyond the frame
  painter.draw(kGeometry, test::ellipse(30, 40, 20, 30));
  const auto within = painter.render();
  int seen = 0;
  for (int y = 0; y < 80; ++y)
    for (int x = 0; x < 100; ++x)
      if (alphaAt(*within, x, y) > 0) {
        ++seen;
        EXPECT_LT(std::hypot((x + 0.5 - 30) / 22.5, (y + 0.5 - 40) / 32.5), 1) << x << ',' << y;
      }
  EXPECT_GT(seen, 60);
  painter.choose(kSeed, 8);
  const auto other = painter.render();
  EXPECT_LT(test::psnr(*within->record(), *other->record()), 25);
  painter.session.faults.failAt(host::Service::GeoGetCurves,
                                1 + painter.session.faults.calls(host::Service::GeoGetCurves));
  EXPECT_EQ(painter.render(), nullptr);
  EXPECT_EQ(painter.session.messages.back(), "GeoGetCurves returns error");
}

TEST_F(StarGenerator, TwinklesSmoothly) {
  painter.choose(kStars, 30);
  painter.set(kRadius, 0.04);
  const double bright = painter.paintedArea();
  painter.set(kTwinkle, 7.3);
  EXPECT_EQ(painter.paintedArea(), bright);
  painter.set(kDepth, 1);
  EXPECT_NEAR(painter.paintedArea(), bright / 2, bright / 5);
  auto before = painter.render();
  for (int i = 1; i <= 100; ++i) {
    painter.set(kTwinkle, 7.3 + i * 0.01);
    auto now = painter.render();
    ASSERT_GT(test::psnr(*before->record(), *now->record()), 35) << i;
    before = std::move(now);
  }
}

TEST_F(StarGenerator, GlowsBelowItself) {
  painter.set(kRadius, 0.1);
  const auto sharp = painter.render();
  painter.set(kGlow, 0.1);
  painter.setColor(kGlowColor, {0, 0, 200, 0});
  const auto glowing = painter.render();
  EXPECT_EQ(alphaAt(*sharp, 62, 40), 0);
  EXPECT_GT(alphaAt(*glowing, 62, 40), 5);
  EXPECT_EQ(glowing->record()->Pixels[40 * 100 + 62].r, 200);
  EXPECT_EQ(glowing->record()->Pixels[40 * 100 + 50].g, 255);
}

TEST_F(StarGenerator, PutsDefaultsOnDialogsOfEarlierProjects) {
  const test::Callbacks effect(ProcessStarGenDeclare);
  host::Session session("Halvenor");
  EXPECT_EQ(effect.onDialogOpen(session.info()), 1);
  EXPECT_EQ(*session.parameters.integers.find(kPoints, 0), 5);
  *session.parameters.integers.get(kPoints, 0) = 7;
  EXPECT_EQ(effect.onDialogOpen(session.info()), 1);
  EXPECT_EQ(*session.parameters.integers.find(kPoints, 0), 7);
  EXPECT_EQ(session.faults.calls(host::Service::DialogRefresh), 2);
}

} // namespace
} // namespace zol
