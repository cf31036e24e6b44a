#include "frame/effects.h"
#include "tests/support/painting.h"

namespace zol {
namespace {

enum Field {
  kInputA,
  kInputB,
  kGeometry,
  kTransition,
  kMotion,
  kAngle,
  kSoftness,
  kBorder,
  kBorderColor,
  kInvert
};

class Wiper : public testing::Test {
protected:
  Wiper() {
    fill(*a->record(), {0, 0, 255, 255});
    fill(*b->record(), {255, 0, 0, 255});
    painter.assign(kInputA, &clipA);
    painter.assign(kInputB, &clipB);
  }
  static void fill(const pic &picture, _color_t color) {
    std::fill_n(picture.Pixels, picture.Width * picture.Height, color);
  }
  /// How much of the frame is B's, 0 to 1, where both are opaque.
  double shareOfB(double transition) {
    painter.set(kTransition, transition);
    const auto picture = painter.render();
    double sum = 0;
    for (size_t i = 0; picture != nullptr && i < picture->pixels(); ++i)
      sum += picture->record()->Pixels[i].b;
    return sum / 255 / (100 * 80);
  }
  bool shows(double transition, const host::PictureBuffer &input) {
    painter.set(kTransition, transition);
    const auto picture = painter.render();
    return picture != nullptr && std::memcmp(picture->record()->Pixels, input.record()->Pixels,
                                             input.pixels() * sizeof(_color_t)) == 0;
  }

  test::Painter painter{ProcessWiperDeclare, 100, 80};
  const std::unique_ptr<host::PictureBuffer> a = test::randomPicture(100, 80, 1),
                                             b = test::randomPicture(100, 80, 2);
  test::PictureClip clipA{a->record()}, clipB{b->record()};
  const test::Outline shape = test::ring(30, 50, 20, 12, 9, 4);
};

TEST_F(Wiper, LeadsFromOneInputToTheOther) {
  for (const bool shaped : {false, true})
    for (const double softness : {0.0, 0.3, 1.0})
      for (const bool invert : {false, true}) {
        if (shaped)
          painter.draw(kGeometry, shape);
        painter.set(kSoftness, softness);
        painter.set(kAngle, shaped ? 70 : 30);
        painter.choose(kInvert, invert);
        EXPECT_TRUE(shows(0, *a) && shows(1, *b));
        double before = 0;
        for (int i = 1; i < 40; ++i) {
          const double now = shareOfB(i / 40.0);
          EXPECT_GE(now, before - 1e-3) << i << ' ' << shaped << ' ' << softness << ' ' << invert;
          before = now;
        }
        EXPECT_LT(shareOfB(1e-5), 0.002);
        EXPECT_GT(shareOfB(1 - 1e-5), 0.998);
      }
}

TEST_F(Wiper, MovesAStraightEdgeInItsDirection) {
  EXPECT_NEAR(shareOfB(0.5), 0.5, 0.001);
  const auto at = [&](int x, int y) { return painter.render()->record()->Pixels[y * 100 + x].b; };
  EXPECT_EQ(at(10, 70), 255);
  EXPECT_EQ(at(90, 10), 0);
  painter.set(kAngle, -90);
  EXPECT_EQ(at(10, 70), 255);
  EXPECT_EQ(at(90, 10), 0);
  EXPECT_EQ(at(10, 10), 0);
  painter.choose(kInvert, 1);
  EXPECT_EQ(at(10, 10), 255);
}

TEST_F(Wiper, ShowsTheShapeAsItIsDrawn) {
  painter.draw(kGeometry, test::polygon({{20, 10}, {60, 10}, {60, 50}, {20, 50}}));
  painter.choose(kMotion, 1);
  for (const double transition : {0.0, 0.4, 1.0})
    EXPECT_NEAR(shareOfB(transition), 0.2, 0.001);
  painter.choose(kInvert, 1);
  EXPECT_NEAR(shareOfB(0), 0.8, 0.001);
  painter.choose(kInvert, 0);
  painter.set(kSoftness, 0.2);
  EXPECT_NEAR(shareOfB(0), 0.2, 0.002);
  painter.set(kBorder, 0.04);
  painter.setColor(kBorderColor, {0, 255, 0, 0});
  const auto bordered = painter.render();
  const _color_t edge = bordered->record()->Pixels[10 * 100 + 40];
  EXPECT_TRUE(edge.g == 255 && edge.b == 0 && edge.a == 255);
  EXPECT_EQ(bordered->record()->Pixels[30 * 100 + 40].g, 0);
}

TEST_F(Wiper, WeighsByAlphaAndCoversBothInputs) {
  const auto left = test::randomPicture(50, 80, 1, -10, 0), right = test::randomPicture(60, 40, 2, 50, 30);
  fill(*left->record(), {0, 0, 255, 255});
  fill(*right->record(), {255, 0, 0, 128});
  right->record()->Pixels[0] = {9, 9, 9, 0};
  test::PictureClip clipLeft(left->record()), clipRight(right->record());
  painter.assign(kInputA, &clipLeft);
  painter.assign(kInputB, &clipRight);
  painter.set(kSoftness, 1);
  painter.set(kTransition, 0.5);
  const auto out = painter.render();
  ASSERT_NE(out, nullptr);
  const pic &picture = *out->record();
  EXPECT_TRUE(picture.X == -10 && picture.Y == 0 && picture.Width == 120 && picture.Height == 80);
  int translucent = 0;
  for (size_t i = 0; i < out->pixels(); ++i) {
    const _color_t p = picture.Pixels[i];
    const bool none = p.a == 0 && p.b == 0 && p.r == 0;
    ASSERT_TRUE(none || (p.g == 0 && (p.r == 255 || p.b == 255))) << i; // neither black nor hidden colours
    translucent += p.a > 0 && p.a < 255 ? 1 : 0;
  }
  EXPECT_GT(translucent, 300);
}

TEST_F(Wiper, NeedsBothInputsAndItsGeometry) {
  painter.set(kTransition, 0.5);
  painter.draw(kGeometry, shape);
  for (const int nth : {1, 2}) {
    painter.session.faults.clear();
    painter.session.faults.failAt(host::Service::GeoGetCurves, nth);
    EXPECT_EQ(painter.render(), nullptr);
    EXPECT_EQ(painter.session.messages.back(), "GeoGetCurves returns error");
  }
  painter.assign(kInputB, nullptr);
  EXPECT_EQ(painter.render(), nullptr);
  EXPECT_EQ(painter.session.messages.back(), "Input not assigned");
  EXPECT_EQ(painter.session.pictures.live(), 0U);
}

} // namespace
} // namespace zol
