#include "frame/effects.h"
#include "kernels/exports/shape.h"
#include "tests/support/declared.h"
#include "tests/support/outline.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

namespace zol {
namespace {

using host::Session;

enum Field { kInput, kGeometry, kColor, kAlpha, kOffsetX, kOffsetY };

class FillGeometry : public testing::Test {
protected:
  FillGeometry() {
    session.info()->Width = 10;
    session.info()->Height = 8;
    session.info()->FrameTime = 2.5;
    *session.parameters.geometries.get(kGeometry, 0) = &box;
    EXPECT_EQ(effect.init(session.info()), 1);
    setColor({10, 20, 30, 0});
  }
  void setColor(_color_t color) {
    session.parameters.colors.get(kColor, 0)->set(0.5, host::colorValue(color));
  }
  void set(Field field, double value) { session.parameters.numbers.get(field, 0)->set(0.5, {value}); }
  void assign(host::Clip *clip) { *session.parameters.inputs.get(kInput, 0) = {clip}; }
  uint32_t pixel(const pic *out, int x, int y) {
    const _color_t p = out->Pixels[y * out->Width + x];
    return uint32_t{p.a} << 24 | uint32_t{p.r} << 16 | uint32_t{p.g} << 8 | p.b;
  }

  const test::Callbacks effect{ProcessFillAndShadowDeclare};
  Session session{"Halvenor"};
  test::OutlineShape box{test::polygon({{2, 1.5}, {6, 1.5}, {6, 4.75}, {2, 4.75}})};
};

TEST_F(FillGeometry, StandsOnATransparentFrameWithoutAnInput) {
  pic *out = effect.renderVideo(session.info());
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(pixel(out, 3, 3), 0xff1e140aU);
  EXPECT_EQ(pixel(out, 3, 1), 0x7f1e140aU); // half covered: straight alpha
  EXPECT_EQ(pixel(out, 6, 3), 0U);
  set(kAlpha, 0.5);
  set(kOffsetX, 0.4);
  set(kOffsetY, -0.125);
  out = effect.renderVideo(session.info());
  EXPECT_EQ(pixel(out, 5, 3), 0U);
  EXPECT_EQ(pixel(out, 8, 2), 0x7f1e140aU);
  EXPECT_EQ(pixel(out, 9, 4), 0U);
}

TEST_F(FillGeometry, LaysTheShapeOverItsInput) {
  const auto under = test::randomPicture(9, 7, 5, 1, 1);
  const pic *before = under->record();
  before->Pixels[2 * 9 + 2] = {100, 200, 0, 255};
  before->Pixels[2] = {100, 200, 0, 255};
  before->Pixels[3] = {100, 200, 0, 85};
  before->Pixels[4] = {100, 200, 0, 0};
  test::PictureClip clip(under->record());
  assign(&clip);
  pic *out = effect.renderVideo(session.info());
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(out->X, 1);
  EXPECT_EQ(out->Width, 9);
  EXPECT_EQ(pixel(out, 2, 2), 0xff1e140aU);
  EXPECT_EQ(pixel(out, 2, 0), 0xff0e6e37U); // 127 of 255 over opaque
  EXPECT_EQ(pixel(out, 3, 0), 0xa9164120U); // and over a third
  EXPECT_EQ(pixel(out, 4, 0), 0x7f1e140aU);
  EXPECT_EQ(pixel(out, 8, 6), pixel(before, 8, 6));
}

} // namespace
} // namespace zol
