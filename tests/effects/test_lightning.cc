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
  kX1,
  kY1,
  kX2,
  kY2,
  kAmplitude,
  kDetail,
  kBranches,
  kWidth,
  kGlow,
  kGlowColor,
  kReach,
  kEvolution,
  kSpeed,
  kStrikes,
  kSeed
};

class Lightning : public testing::Test {
protected:
  Lightning() {
    painter.set(kWidth, 0.03);
    painter.set(kGlow, 0);
  }
  bool isSame(const host::PictureBuffer &a, const host::PictureBuffer &b) {
    return std::memcmp(a.record()->Pixels, b.record()->Pixels, a.pixels() * sizeof(_color_t)) == 0;
  }
  auto at(double seconds) {
    painter.session.info()->VideoClipStart = 10;
    painter.session.info()->FrameTime = 10 + seconds;
    return painter.render();
  }
  test::Painter painter{ProcessLightningDeclare, 100, 80};
};

TEST_F(Lightning, PaintsOverItsInput) {
  expectPaintsOverItsInput(painter, kInput, kAlpha);
  painter.draw(kGeometry, test::ellipse(50, 40, 30, 30));
  painter.session.faults.clear();
  painter.session.faults.failAt(host::Service::GeoGetCurves, 1);
  EXPECT_EQ(painter.render(), nullptr);
  EXPECT_EQ(painter.session.messages.back(), "GeoGetCurves returns error");
}

TEST_F(Lightning, TapersFromPlaceToPlace) {
  painter.set(kAmplitude, 0);
  painter.set(kBranches, 0);
  painter.set(kX1, -0.3);
  painter.set(kY1, 0);
  painter.set(kX2, 0.3);
  painter.set(kY2, 0.25);
  EXPECT_NEAR(painter.paintedArea(), std::hypot(60, 20) * 3 * 0.65 + 4, 3);
  painter.set(kReach, 0.5);
  const auto half = painter.render();
  EXPECT_GT(alphaAt(*half, 47, 49), 200);
  EXPECT_EQ(alphaAt(*half, 53, 51), 0);
  painter.set(kReach, 0);
  EXPECT_EQ(painter.paintedArea(), 0);

  painter.set(kReach, 1);
  painter.draw(kGeometry, test::ellipse(50, 40, 30, 30)); // and along a contour
  EXPECT_NEAR(painter.paintedArea(), 60 * 3.14159265 * 3 * 0.65, 6);
}

TEST_F(Lightning, GrowsWithItsReachAndLosesNothing) {
  painter.set(kBranches, 1);
  auto before = painter.render();
  double area = 0;
  for (int i = 0; i <= 50; ++i) {
    painter.set(kReach, i / 50.0);
    const double now = painter.paintedArea();
    EXPECT_GE(now, area - 2) << i;
    EXPECT_LT(now, area + 60) << i;
    area = now;
  }
  painter.set(kBranches, 0);
  EXPECT_LT(painter.paintedArea(), area - 20);
}

TEST_F(Lightning, MovesWithoutAJump) {
  painter.set(kWidth, 0.06);
  painter.set(kBranches, 1);
  auto before = painter.render();
  for (int i = 1; i <= 150; ++i) {
    painter.set(kEvolution, i * 0.01);
    auto now = painter.render();
    ASSERT_GT(test::psnr(*before->record(), *now->record()), 20) << i;
    before = std::move(now);
  }
  painter.set(kEvolution, 0.75);
  const auto still = painter.render();
  painter.set(kEvolution, 0.25);
  EXPECT_TRUE(isSame(*at(0.25), *still)); // two a second
  painter.set(kSpeed, 0);
  EXPECT_TRUE(isSame(*at(0.25), *at(17)));
}

TEST_F(Lightning, StrikesAnew) {
  painter.set(kSpeed, 0);
  painter.set(kStrikes, 5);
  EXPECT_TRUE(isSame(*at(0), *at(0.19)));
  EXPECT_FALSE(isSame(*at(0), *at(0.2)));
  EXPECT_TRUE(isSame(*at(0.2), *at(0.39)));
  const auto before = at(0);
  painter.choose(kSeed, 1);
  EXPECT_FALSE(isSame(*before, *at(0)));
}

TEST_F(Lightning, GlowsAroundThinBolts) {
  painter.set(kWidth, 0.004);
  const double thin = painter.paintedArea();
  painter.set(kGlow, 0.05);
  EXPECT_GT(painter.paintedArea(), 5 * thin);
}

} // namespace
} // namespace zol
