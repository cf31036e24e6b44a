#include "frame/effects.h"
#include "tests/support/declared.h"

#include <gtest/gtest.h>

#include <limits>

namespace zol {
namespace {

using host::Session;

class FixedBox : public host::Shape {
public:
  FixedBox(double left, double top, double right, double bottom) : box_{left, top, right, bottom} {}
  void box(double out[4], double) const override { std::copy(box_, box_ + 4, out); }
  int curves(double, bool, void *, t_ZoSegmentFn) const override { return 1; }

private:
  double box_[4];
};

TEST(SolidColor, FillsTheFrameOrTheGeometrysBox) {
  const test::Callbacks solid(ProcessMatteDeclare);
  Session session("Quorbel");
  t_ZoHostInfo *info = session.info();
  info->Width = 4;
  info->Height = 3;
  EXPECT_EQ(solid.init(info), 1);

  pic *frame = solid.renderVideo(info);
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->Width, 4);
  EXPECT_EQ(frame->Height, 3);
  EXPECT_EQ(frame->Pixels[11].b, 255);
  EXPECT_EQ(frame->Pixels[11].a, 255);

  struct Case {
    double box[4];
    int x, y, width, height;
  };
  for (const Case &c : {Case{{10, 5, 20, 6}, 10, 5, 10, 1}, Case{{10.5, 5.5, 20.5, 6.5}, 10, 5, 11, 2},
                        Case{{8, 8, 2, 2}, 8, 8, 1, 1}, Case{{-3.7, -0.5, 1.2, 0.5}, -3, 0, 5, 1}}) {
    const FixedBox shape(c.box[0], c.box[1], c.box[2], c.box[3]);
    *session.parameters.geometries.get(0, 0) = &shape;
    pic *out = solid.renderVideo(info);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->X, c.x);
    EXPECT_EQ(out->Y, c.y);
    EXPECT_EQ(out->Width, c.width);
    EXPECT_EQ(out->Height, c.height);
  }
}

TEST(SolidColor, OpacityIsTruncatedAndReplacesTheColorsAlpha) {
  const test::Callbacks solid(ProcessMatteDeclare);
  Session session("Quorbel");
  t_ZoHostInfo *info = session.info();
  info->Width = info->Height = 1;
  session.parameters.colors.get(1, 0)->set(0, host::colorValue({1, 2, 3, 77}));
  for (const auto &[opacity, alpha] : {std::pair{0.5, 127}, {1.0, 255}, {0.0, 0}, {1.01, 1}}) {
    session.parameters.numbers.get(2, 0)->set(0, {opacity});
    pic *out = solid.renderVideo(info);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out->Pixels[0].a, alpha);
    EXPECT_EQ(out->Pixels[0].r, 3);
  }
  session.parameters.numbers.get(2, 0)->set(0, {std::numeric_limits<double>::quiet_NaN()});
  EXPECT_NE(solid.renderVideo(info), nullptr);
}

} // namespace
} // namespace zol
