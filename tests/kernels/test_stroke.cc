#include "kernels/shape/stroke.h"

#include "kernels/shape/outline.h"
#include "tests/support/outline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace zol {
namespace {

struct Lines : Growing<StrokePoint> {
  Lines(const std::vector<std::array<double, 2>> &points, double half) {
    for (const auto &[x, y] : points)
      add({x, y, half});
  }
};

struct Drawn {
  static constexpr int kSize = 200;
  Coverage coverage{kSize, kSize};

  Drawn &line(const std::vector<std::array<double, 2>> &points, double half, bool closed, Join join,
              Cap cap) {
    Lines lines(points, half);
    stroke(lines.data(), lines.count(), closed, join, cap, coverage);
    return *this;
  }
  double area() {
    coverage.merge();
    double sum = 0;
    for (int y = 0; y < kSize; ++y)
      sum += std::accumulate(coverage.row(y), coverage.row(y) + kSize, 0.0);
    return sum / 255;
  }
};

void append(ShapeSegments &segments, const test::Outline &outline) {
  for (const auto &s : outline.segments)
    segments.add(
        {{s.P0[0], s.P1[0], 3 * s.H0[0], -3 * s.H1[0]}, {s.P0[1], s.P1[1], 3 * s.H0[1], -3 * s.H1[1]}});
}

TEST(Stroke, HasTheAreaOfItsJoinsAndCaps) {
  constexpr double kPi = 3.14159265358979;
  const auto open = [](Join join, Cap cap) { // two legs of 60 at a right angle, 20 wide
    return Drawn().line({{40, 40}, {100, 40}, {100, 100}}, 10, false, join, cap).area();
  };
  const double legs = 2 * 60 * 20 - 100;
  EXPECT_NEAR(open(Join::miter, Cap::butt), legs + 100, 1);
  EXPECT_NEAR(open(Join::bevel, Cap::butt), legs + 50, 1);
  EXPECT_NEAR(open(Join::round, Cap::butt), legs + 25 * kPi, 1);
  EXPECT_NEAR(open(Join::miter, Cap::square), legs + 100 + 400, 1);
  EXPECT_NEAR(open(Join::miter, Cap::round), legs + 100 + 100 * kPi, 3);
  const auto sharp = [](Join join) { // the tip would be 5 times as long as the line is wide
    return Drawn().line({{20, 80}, {100, 100}, {20, 120}}, 8, false, join, Cap::butt).area();
  };
  EXPECT_EQ(sharp(Join::miter), sharp(Join::bevel));
  const auto square = [](Join join) {
    return Drawn().line({{40, 40}, {140, 40}, {140, 140}, {40, 140}}, 5, true, join, Cap::butt).area();
  };
  EXPECT_NEAR(square(Join::miter), 110 * 110 - 90 * 90, 1);
  EXPECT_NEAR(square(Join::bevel), 110 * 110 - 90 * 90 - 4 * 12.5, 1);
  const auto back = [](Join join) { // the whole way back
    return Drawn().line({{40, 90}, {120, 90}, {40, 90}}, 10, false, join, Cap::butt).area();
  };
  EXPECT_NEAR(back(Join::round), 80 * 20 + 50 * kPi, 2);
  EXPECT_NEAR(back(Join::miter), 80 * 20, 1);
  EXPECT_NEAR(Drawn().line({{90, 90}, {90, 90}}, 10, false, Join::round, Cap::round).area(), 100 * kPi,
              3); // of a polygon
}

TEST(Stroke, IsEvenlyWideOnCurvesWithoutASeam) {
  ShapeSegments circle;
  append(circle, test::ellipse(100.3, 99.6, 70, 70));
  const Outline outline(circle);
  ASSERT_EQ(outline.contours().count(), 1U);
  const Contour &contour = outline.contours()[0];
  ASSERT_TRUE(contour.closed);
  Growing<StrokePoint> points;
  for (size_t i = 0; i < contour.count; ++i)
    points.add({outline.points(contour)[i].x, outline.points(contour)[i].y, 6});
  Drawn drawn;
  stroke(points.data(), points.count(), true, Join::round, Cap::round, drawn.coverage);
  drawn.coverage.merge();
  for (int y = 0; y < Drawn::kSize; ++y)
    for (int x = 0; x < Drawn::kSize; ++x) {
      const double fromMiddle = std::hypot(x + 0.5 - 100.3, y + 0.5 - 99.6), off = std::fabs(fromMiddle - 70);
      const int expected = static_cast<int>(255 * std::clamp(6.5 - off, 0.0, 1.0));
      ASSERT_NEAR(drawn.coverage.row(y)[x], expected, off < 5.2 || off > 6.8 ? 0 : 45) << x << ',' << y;
    }
}

TEST(Outline, FindsContoursAndTheirLengths) {
  ShapeSegments segments;
  const auto line = [&](double x0, double y0, double x1, double y1) {
    segments.add({{x0, x1, x1 - x0, x1 - x0}, {y0, y1, y1 - y0, y1 - y0}});
  };
  line(0, 0, 30, 0);
  line(30, 0, 30, 40);
  line(30, 40, 0, 0);
  append(segments, test::ellipse(50, 50, 20, 20));
  line(5, 5, 10, 5);
  line(INFINITY, 5, 10, NAN);
  const Outline outline(segments);
  ASSERT_TRUE(outline);
  const auto &contours = outline.contours();
  ASSERT_EQ(contours.count(), 3U);
  EXPECT_TRUE(contours[0].closed && contours[1].closed && !contours[2].closed);
  EXPECT_EQ(contours[0].count, 4U);
  EXPECT_NEAR(outline.length(contours[0]), 120, 1e-9);
  EXPECT_NEAR(outline.length(contours[1]), 40 * 3.14159265, 0.5);

  const OutlinePlace corner = outline.at(contours[0], 50);
  EXPECT_NEAR(corner.x, 30, 1e-9);
  EXPECT_NEAR(corner.y, 20, 1e-9);
  EXPECT_NEAR(corner.alongY, 1, 1e-9);
  for (int i = 0; i <= 64; ++i) {
    const double angle = i * 3.14159265358979 / 32;
    const OutlinePlace place = outline.at(contours[1], outline.length(contours[1]) * i / 64);
    EXPECT_NEAR(place.x, 50 + 20 * std::cos(angle), 0.02) << i;
    EXPECT_NEAR(place.y, 50 + 20 * std::sin(angle), 0.02) << i;
    EXPECT_NEAR(place.alongX, -std::sin(angle), 0.01) << i;
  }
  EXPECT_EQ(outline.at(contours[0], -5).x, 0);
  EXPECT_EQ(outline.at(contours[2], 1e9).x, 10);
}

} // namespace
} // namespace zol
