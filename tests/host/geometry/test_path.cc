// Path data, and the boxes of what it draws.
#include "tests/host/geometry/geometries.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

namespace zol::host {
namespace {

Box sampledBox(const std::vector<Segment> &segments) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  Box box{kInf, kInf, -kInf, -kInf};
  for (const Segment &segment : segments)
    for (int i = 0; i <= 2000; ++i) {
      double p[2];
      pointAt(segment, i / 2000.0, p);
      box = {std::min(box.left, p[0]), std::min(box.top, p[1]), std::max(box.right, p[0]),
             std::max(box.bottom, p[1])};
    }
  return box;
}

const char *const kShapes[] = {
    "M10 10 L90 20 50 80 Z",
    "M10 80 C 40 10, 65 10, 95 80 S 150 150, 180 80",
    "M10 80 Q 52.5 -10, 95 80 T 180 80 T 40 200",
    "M80 80 A 45 30 33 1 0 125 125 L 125 80 Z",
    "M0 0 C 100 100 0 100 100 0",          // a loop
    "M50 0 Q 100 50 50 100 Q 0 50 50 0 Z", // x and y without a cubic term
    "m 20 20 h 30 v 40 h -30 z m 50 50 c 300 -200 -300 -200 0 0",
    "M5 5 C 5 5 80 90 80 90",
};

TEST(Path, ReadsEveryCommandAbsoluteAndRelative) {
  const Ends square{{1, 2, 11, 2}, {11, 2, 11, 12}, {11, 12, 1, 12}, {1, 12, 1, 2}};
  EXPECT_EQ(endsOf(readPath("M1 2H11V12H1Z")), square);
  EXPECT_EQ(endsOf(readPath("m1 2h10v10h-10z")), square);
  EXPECT_EQ(endsOf(readPath("M1,2 11,2 11,12 1,12")), square) << "pairs after M are lines, and it closes";
  EXPECT_EQ(endsOf(readPath("m1 2 10 0 0 10-10 0 0-10z")), square) << "no segment of zero length";
  expectSame("M1 1 C2 3 4 5 6 7 8 9 10 11 12 14", "M1 1c1 2 3 4 5 6 2 2 4 4 6 7");
  expectSame("M1 1 C2 3 4 5 6 7 S 10 11 12 14", "M1 1 C2 3 4 5 6 7 C 8 9 10 11 12 14");
  expectSame("M1 1 C2 3 4 5 6 7 s 4 4 6 7", "M1 1 C2 3 4 5 6 7 S 10 11 12 14");
  expectSame("M1 1 L6 7 S 10 11 12 14", "M1 1 L6 7 C 6 7 10 11 12 14");
  expectSame("M0 0 Q 3 6 9 0", "M0 0 C 2 4 5 4 9 0");
  expectSame("M0 0 Q 3 6 9 0 T 12 3 t 5 5", "M0 0 Q 3 6 9 0 Q 15 -6 12 3 Q 9 12 17 8");
  expectSame("M0 0 C 1 1 2 2 9 0 T 12 3", "M0 0 C 1 1 2 2 9 0 Q 9 0 12 3");
  expectSame("M5 5 a 3 4 0 0 1 6 0", "M5 5 A 3 4 0 0 1 11 5");
  expectSame("M0 0H9V9Zl5 8", "M0 0H9V9ZM0 0L5 8");
  expectSame("M0 0H9V9M20 20h1v1m9 9h2v2", "M0 0H9V9ZM20 20h1v1zM30 30h2v2z");
  EXPECT_TRUE(readPath("").contours.empty());
  EXPECT_TRUE(readPath(" M 3 4 z M5 5").contours.empty());
}

TEST(Path, KeepsWhichContoursAreOpen) {
  const auto closed = [](const char *path) {
    std::vector<bool> each;
    for (const Contour &contour : readPath(path).contours)
      each.push_back(contour.closed);
    return each;
  };
  using Each = std::vector<bool>;
  EXPECT_EQ(closed("M0 0H9V9Z M20 0h5 m5 5 h1 v1 z l-3 3"), (Each{true, false, true, false}));
  EXPECT_EQ(closed("M0 0H9V9H0V0"), Each{false}) << "where it begins, but not closed";
  EXPECT_EQ(closed("M0 0H9V9H0V0Z"), Each{true});
  EXPECT_EQ(closed("M0 0zM4 4z"), Each{});
  const Geometry corner = readPath("M0 0H9V9");
  EXPECT_EQ(corner.contours[0].segments.size(), 2u);
  ASSERT_TRUE(corner.contours[0].closingLine());
  EXPECT_EQ(corner.contours[0].closingLine()->P1[1], 0);
  EXPECT_FALSE(readPath("M0 0H9V9L0 0").contours[0].closingLine());
}

TEST(Path, ReadsCompactNumbers) {
  EXPECT_EQ(endsOf(readPath("M1.5.5-3e2-1E-1z")), (Ends{{1.5, 0.5, -300, -0.1}, {-300, -0.1, 1.5, 0.5}}));
  expectSame("M0 0a3 3 0 013 3", "M 0,0 A 3,3 0 0,1 3,3");
  expectSame("M0 0a3 3 0 01.5.5", "M 0,0 A 3 3 0 0 1 0.5 0.5");
  expectSame("M+1-1L1.,2", "M1 -1 L 1 2");
  expectSame("M0 0L1e-999 5", "M0 0L0 5");
}

TEST(Path, SaysWhereItIsWrong) {
  const struct {
    const char *data;
    size_t place;
  } cases[] = {
      {"L 1 2", 0},          {"M 1", 3},           {"M 1 2 L 3", 9},     {"M 1 2 x", 6},
      {"M nan 2", 2},        {"M 1 inf", 4},       {"M 1e999 2", 2},     {"M 1 2 a 3 3 0 2 0 1 1", 14},
      {"M 1 2,", 6},         {"M 1 2 3 e4", 8},    {"M 1 2 L1e10 0", 7}, {"M 1 2 z 4", 8},
      {"M 1 2 L 3 4 5", 13}, {"M9e8 0 l9e8 0", 13}};
  for (const auto &c : cases)
    try {
      (void)readPath(c.data);
      ADD_FAILURE() << c.data;
    } catch (const GeometryError &error) {
      EXPECT_EQ(error.position, c.place) << c.data << ": " << error.what();
      EXPECT_NE(std::string(error.what()).find("character " + std::to_string(c.place + 1)),
                std::string::npos);
    }
}

TEST(Path, ArcsFollowTheEllipse) {
  const double pi = std::numbers::pi;
  for (const double rx : {1.0, 40.0, 500.0})
    for (const double degrees : {0.0, 30.0, -77.0, 400.0})
      for (const bool large : {false, true})
        for (const bool sweep : {false, true}) {
          // From the ellipse at angle 0.3 to angle 1.9: the short way is the positive one.
          const double ry = 0.6 * rx, cx = 100, cy = -20;
          const double c = std::cos(degrees * pi / 180), s = std::sin(degrees * pi / 180);
          const auto on = [&](double a) {
            const double x = rx * std::cos(a), y = ry * std::sin(a);
            return std::array{cx + c * x - s * y, cy + s * x + c * y};
          };
          // The large positive arc and the small negative one begin at 1.9.
          const auto a = on(sweep != large ? 0.3 : 1.9), b = on(sweep != large ? 1.9 : 0.3);
          char path[400];
          std::snprintf(path, sizeof path, "M%.15f %.15f A%.15f %.15f %.15f %d %d %.15f %.15f", a[0], a[1],
                        rx, ry, degrees, large, sweep, b[0], b[1]);
          const Geometry arc = readPath(path);
          ASSERT_EQ(arc.contours.size(), 1u);
          const std::vector<Segment> &segments = arc.contours[0].segments;
          double angle = 0, before = 0;
          for (size_t i = 0; i < segments.size(); ++i)
            for (int k = 0; k <= 64; ++k) {
              double p[2];
              pointAt(segments[i], k / 64.0, p);
              const double x = (c * (p[0] - cx) + s * (p[1] - cy)) / rx,
                           y = (c * (p[1] - cy) - s * (p[0] - cx)) / ry;
              EXPECT_NEAR(std::hypot(x, y), 1, 5e-6) << path;
              const double now = std::atan2(y, x);
              if (i + static_cast<size_t>(k) > 0)
                angle += std::remainder(now - before, 2 * pi);
              before = now;
            }
          EXPECT_NEAR(angle, (sweep ? 1 : -1) * (large ? 2 * pi - 1.6 : 1.6), 1e-4) << path;
        }
}

TEST(Path, DegenerateArcs) {
  expectSame("M0 0 A0 5 0 0 1 8 8", "M0 0 L8 8");
  expectSame("M0 0 A5 0 0 1 1 8 8", "M0 0 L8 8");
  EXPECT_TRUE(readPath("M3 3 A5 5 0 1 1 3 3").contours.empty());
  // Radii too small for the way grow to half of it.
  const Box box = readPath("M0 0 A1 1 0 0 1 20 0").box();
  EXPECT_NEAR(box.top, -10, 1e-4);
  EXPECT_NEAR(box.right, 20, 1e-4);
}

TEST(Box, IsThatOfTheCurves) {
  for (const char *shape : kShapes) {
    const Geometry geometry = readPath(shape);
    const Box box = geometry.box(), sampled = sampledBox(segmentsOf(geometry));
    const double size = std::max(box.right - box.left, box.bottom - box.top);
    for (auto side : {&Box::left, &Box::top, &Box::right, &Box::bottom})
      EXPECT_NEAR(box.*side, sampled.*side, 1e-5 * size) << shape;
    EXPECT_TRUE(box.left <= sampled.left + 1e-9 && box.right >= sampled.right - 1e-9 &&
                box.top <= sampled.top + 1e-9 && box.bottom >= sampled.bottom - 1e-9)
        << shape;
    const Box moved = geometry.transformed({2, 0, 0, -1, 7, 3}).box();
    EXPECT_NEAR(moved.left, 2 * box.left + 7, 1e-9);
    EXPECT_NEAR(moved.bottom, 3 - box.top, 1e-9);
  }
  const Box none = Geometry().box();
  EXPECT_TRUE(none.left == 0 && none.top == 0 && none.right == 0 && none.bottom == 0);
}

} // namespace
} // namespace zol::host
