#include "kernels/exports/shape.h"

#include "host/services/session.h"
#include "kernels/exports/transformed_shape.h"
#include "kernels/shape/shape_points.h"
#include "kernels/simd/levels.h"
#include "plain/shape.h"
#include "tests/support/dice.h"
#include "tests/support/levels.h"
#include "tests/support/outline.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

namespace zol {
namespace {

using host::Session;
using test::Outline;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void *handleOf(const test::OutlineShape &shape) {
  return const_cast<host::Shape *>(static_cast<const host::Shape *>(&shape));
}

struct Filled {
  int result;
  std::vector<uint8_t> bytes;
  std::vector<std::string> calls;
  std::string error;
  bool operator==(const Filled &) const = default;
};

struct Work {
  Outline outline;
  int x, y, width, height;
  unsigned colour;
  double xOffset, yOffset;
};

Filled fill(const Work &work, decltype(FillShapeXYOffset) *function, SimdLevel level = kWidestLevel) {
  capSimdLevel(level);
  Session session("Halvenor");
  session.tracing = true;
  const test::OutlineShape geometry(work.outline);
  const auto picture = test::randomPicture(work.width, work.height, 7, work.x, work.y);
  char error[64] = "before";
  Filled filled;
  filled.result = function(session.info(), error, picture->record(), handleOf(geometry), 2.5, work.colour,
                           work.xOffset, work.yOffset);
  const auto *bytes = reinterpret_cast<const uint8_t *>(picture->record()->Pixels);
  filled.bytes.assign(bytes, bytes + picture->pixels() * 4);
  filled.calls = session.trace;
  filled.error = error;
  EXPECT_EQ(session.pictures.live(), 0U);
  EXPECT_TRUE(session.complaints.empty());
  capSimdLevel(kWidestLevel);
  return filled;
}

void expectPlain(const Work &work, const std::string &what) {
  const Filled plain = fill(work, plain::fillShapeXYOffset);
  for (const SimdLevel level : test::levels())
    EXPECT_TRUE(fill(work, FillShapeXYOffset, level) == plain) << what;
}

TEST(FillShape, GivesThePlainFormsBytesAndCallsOnRandomOutlines) {
  test::Dice dice(5);
  for (int round = 0; round < 250; ++round) {
    const int width = dice.below(8) == 0 ? dice.below(4) : dice.below(90),
              height = dice.below(8) == 0 ? dice.below(4) : dice.below(70);
    const bool whole = dice.below(3) == 0;
    const auto offset = [&] { return whole ? dice.below(21) - 10 : dice.below(2000) / 100.0 - 10; };
    const int segments = dice.below(10) == 0 ? 200 : 1 + dice.below(12);
    const unsigned opacity = dice.below(3) == 0 ? static_cast<unsigned>(dice.below(256)) : 255U;
    const Work work{test::scribble(segments, 70, dice.below(2) * 40, dice.below(4) != 0, whole, dice.word()),
                    dice.below(30) - 15,
                    dice.below(30) - 15,
                    width,
                    height,
                    opacity << 24 | (dice.word() & 0xffffffU),
                    offset(),
                    offset()};
    expectPlain(work, "round " + std::to_string(round));
  }
}

TEST(FillShape, GivesThePlainFormsBytesOnRegularOutlines) {
  const std::vector<Outline> outlines{
      test::polygon({{3, 2}, {40, 2}, {40, 30}, {3, 30}}), // on pixel borders
      test::polygon({{3.2, 2.7}, {40.9, 2.7}, {40.9, 30.1}, {3.2, 30.1}}),
      test::polygon({{10.2, 1}, {10.7, 1}, {10.7, 30}, {10.2, 30}}), // both ends within a pixel
      test::polygon({{1, 1}, {60, 1}, {1, 1}, {60, 39}}),            // twice the same way
      test::polygon({{5, 5}, {5, 5}, {30, 9}, {30, 9}, {17, 33}}),   // segments without length
      test::polygon({{-9e4, -9e4}, {9e4, -9e4}, {9e4, 9e4}, {-9e4, 9e4}}),
      test::polygon({{-20, 4}, {-5, 4}, {-5, 20}}),
      test::ellipse(30, 20, 16, 16),                    // extrema on scanlines
      test::ellipse(30, 20, 16, 16, 0.785398163397448), // its extrema inside the segments
      test::ellipse(30, 20, 90, 12.5, 0.3),
      test::ring(30, 20, 28, 19, 60, 3),
      Outline{{{{2, 9}, {50, 9}, {0, 30}, {0, 30}}}}, // open, an arch without cubic term
      Outline{},
  };
  for (size_t i = 0; i < outlines.size(); ++i)
    for (const unsigned colour : {0xff204080U, 0x7fc0ff00U, 0x00ffffffU})
      expectPlain({outlines[i], 0, 0, 64, 40, colour, 0, 0}, "outline " + std::to_string(i));
}

TEST(FillShape, TakesHostileCoordinates) {
  const std::vector<double> hostile{kNaN, kInfinity, -kInfinity, 1e300, -1e300, 1e18, -3e9, 1e-310, 5};
  test::Dice dice(11);
  for (int round = 0; round < 400; ++round) {
    Outline outline = test::scribble(1 + round % 5, 30, 5, true, false, dice.word());
    for (unsigned many = 1 + dice.word() % 3; many > 0; --many) {
      auto &segment = outline.segments[dice.word() % outline.segments.size()];
      test::Vector *const points[] = {&segment.P0, &segment.P1, &segment.H0, &segment.H1};
      (*points[dice.word() % 4])[dice.word() % 2] = hostile[dice.word() % hostile.size()];
    }
    const double offset = round % 9 == 0 ? hostile[dice.word() % hostile.size()] : 0;
    expectPlain({outline, 0, 0, 30, 30, 0xff204080U, offset, 0}, "round " + std::to_string(round));
    Session session("Halvenor");
    const test::OutlineShape geometry(outline);
    for (const double x : {15.0, hostile[dice.word() % hostile.size()]})
      for (const double y : {15.0, hostile[dice.word() % hostile.size()]})
        EXPECT_EQ(PointIsInTheShape(session.info(), handleOf(geometry), x, y, 0),
                  plain::pointIsInTheShape(session.info(), handleOf(geometry), x, y, 0));
  }
}

TEST(FillShape, RefusesMissingParameters) {
  Session session("Halvenor");
  const test::OutlineShape geometry{Outline{}};
  const auto picture = test::randomPicture(2, 2, 1);
  char error[64] = "";
  EXPECT_EQ(FillShape(session.info(), error, nullptr, handleOf(geometry), 0, 0), 0);
  EXPECT_STREQ(error, "Illegal parameter(s)");
  error[0] = 0;
  EXPECT_EQ(FillShape(session.info(), error, picture->record(), nullptr, 0, 0), 0);
  EXPECT_STREQ(error, "Illegal parameter(s)");
  EXPECT_EQ(FillShape(session.info(), nullptr, picture->record(), handleOf(geometry), 0, 0), 0);
  EXPECT_EQ(PointIsInTheShape(session.info(), nullptr, 1, 1, 0), 0);
  EXPECT_EQ(session.messages.size(), 1U);
  EXPECT_EQ(session.messages.at(0), "Illegal parameter");
}

TEST(PointIsInTheShape, WalksTheScanlinesCrossings) {
  Session session("Halvenor");
  const auto inside = [&](const Outline &outline, double x, double y) {
    const test::OutlineShape geometry(outline);
    const int result = PointIsInTheShape(session.info(), handleOf(geometry), x, y, 0);
    EXPECT_EQ(result, plain::pointIsInTheShape(session.info(), handleOf(geometry), x, y, 0));
    return result;
  };
  Outline two = test::polygon({{2, 0}, {4, 0}, {4, 9}, {2, 9}});
  const Outline second = test::polygon({{6, 0}, {8, 0}, {8, 9}, {6, 9}});
  two.segments.insert(two.segments.end(), second.segments.begin(), second.segments.end());
  const int expected[] = {0, 0, 1, 1, 1, 0, 0, 1, 1, 0}; // the third crossing belongs to the gap
  for (int x = 0; x < 10; ++x)
    EXPECT_EQ(inside(two, x, 5.9), expected[x]) << x;
  EXPECT_EQ(inside(two, 3, 9.5), 1);
  EXPECT_EQ(inside(two, 3, 10), 0);

  const Outline open{{{{5, 0}, {5, 9}, {0, 0}, {0, 0}}}}; // its only crossing is the last
  EXPECT_EQ(inside(open, 7, 4), 1);
  EXPECT_EQ(inside(open, 3, 4), 1);

  for (unsigned seed = 0; seed < 60; ++seed) {
    const Outline outline = test::scribble(9, 40, 5, seed % 3 != 0, seed % 2 == 0, seed);
    for (int i = 0; i < 50; ++i)
      inside(outline, i * 0.9 - 2, i * 7 % 43 - 1.5);
  }
}

TEST(ShapePoints, AnswerAsThePointAlone) {
  Session session("Halvenor");
  for (unsigned seed = 0; seed < 20; ++seed) {
    const test::OutlineShape geometry(test::scribble(9, 40, 5, seed % 3 != 0, seed % 2 == 0, seed));
    ShapeSegments segments;
    ASSERT_TRUE(fetchShape(session.info(), handleOf(geometry), 0, ShapeUse::filling, {}, segments));
    const ShapePoints points(segments, -8, 60);
    ASSERT_TRUE(points);
    for (int i = 0; i < 300; ++i) {
      const double x = i * 0.41 - 20, y = i * 7 % 57 - 7.5;
      EXPECT_EQ(points.has(x, y), PointIsInTheShape(session.info(), handleOf(geometry), x, y, 0) == 1);
    }
    EXPECT_FALSE(points.has(20, 1e9) || points.has(20, -9.5) || points.has(kNaN, kNaN));
  }
}

TEST(FillShapeTransformed, FillsTheTransformedShape) {
  Session session("Halvenor");
  const Affine matrix{0.5, -1.25, 1.5, 0.75, 20, -3};
  const auto turned = [&](const test::Vector &v, double dx, double dy) {
    return test::Vector{matrix.xx * v[0] + matrix.xy * v[1] + dx, matrix.yx * v[0] + matrix.yy * v[1] + dy};
  };
  Outline outline = test::scribble(12, 30, 5, true, false, 4), moved = outline;
  for (auto &[P0, P1, H0, H1] : moved.segments) {
    P0 = turned(P0, matrix.dx, matrix.dy);
    P1 = turned(P1, matrix.dx, matrix.dy);
    H0 = turned(H0, 0, 0);
    H1 = turned(H1, 0, 0);
  }
  const Filled expected = fill({moved, 0, 0, 40, 30, 0xff204080U, 0, 0}, FillShapeXYOffset);
  const test::OutlineShape geometry(outline);
  const auto picture = test::randomPicture(40, 30, 7);
  char error[64] = "before";
  EXPECT_EQ(fillShapeTransformed(session.info(), error, picture->record(), handleOf(geometry), 2.5,
                                 0xff204080U, matrix),
            1);
  EXPECT_EQ(std::memcmp(picture->record()->Pixels, expected.bytes.data(), expected.bytes.size()), 0);
}

TEST(FillSegmentHull, BoxesTheCurve) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> number(-50, 50);
  for (int round = 0; round < 300; ++round) {
    double v[8], hull[4], plainHull[4], sampled[4] = {kInfinity, kInfinity, -kInfinity, -kInfinity};
    for (double &value : v)
      value = round % 3 == 0 ? std::floor(number(random) / 25) : number(random);
    FillSegmentHull(hull, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
    plain::fillSegmentHull(plainHull, v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7]);
    EXPECT_EQ(std::memcmp(hull, plainHull, sizeof hull), 0);
    for (int i = 0; i <= 1000; ++i)
      for (int axis = 0; axis < 2; ++axis) {
        const double q = plain::hermite(i / 1000.0, v[axis], v[axis + 2], v[axis + 4], -v[axis + 6]);
        sampled[axis] = std::min(sampled[axis], q);
        sampled[axis + 2] = std::max(sampled[axis + 2], q);
      }
    const bool quadratic = 2 * (v[0] - v[2]) + v[4] - v[6] == 0 || 2 * (v[1] - v[3]) + v[5] - v[7] == 0;
    for (int i = 0; i < 4 && !quadratic; ++i)
      EXPECT_NEAR(hull[i], sampled[i], 1e-3);
  }
  double hull[4];
  FillSegmentHull(hull, kNaN, kInfinity, 1, 2, -kInfinity, 1e300, kNaN, -1e300);
}

TEST(SegmentLength, SumsTheChordsOfTheBulgingCurve) {
  const float straight[8] = {0, 0, 10, 110, 0, 0, 0, 0};
  EXPECT_NEAR(SegmentLength(straight, 0, 1), 100, 1e-9);
  EXPECT_NEAR(SegmentLength(straight, 1, 0), 100, 1e-9);
  EXPECT_EQ(SegmentLength(straight, 0.3, 0.3), 0);

  std::mt19937 random(8);
  std::uniform_real_distribution<float> number(-300, 300);
  for (int round = 0; round < 100; ++round) {
    float segment[8];
    for (float &value : segment)
      value = number(random);
    const double from = round % 2 == 0 ? 0 : 0.37;
    EXPECT_EQ(SegmentLength(segment, from, 1), plain::segmentLength(segment, from, 1));
  }
}

TEST(SegmentLength, EndsOnHostileSegments) {
  const float values[] = {std::numeric_limits<float>::quiet_NaN(),
                          std::numeric_limits<float>::infinity(),
                          3e38F,
                          -3e38F,
                          1e30F,
                          1e12F,
                          1e7F,
                          0};
  test::Dice dice(4);
  for (int round = 0; round < 300; ++round) {
    float segment[8];
    for (float &value : segment)
      value = values[dice.below(8)];
    const double length = SegmentLength(segment, 0, 1);
    EXPECT_TRUE(std::isnan(length) || length >= 0);
  }
  const float straight[8] = {0, 0, 0, 1e9F, 0, 0, 0, 0};
  EXPECT_NEAR(SegmentLength(straight, 0, 1), 1e9, 1);
  for (const double t : {kNaN, kInfinity, 1e300, -1e100}) {
    SegmentLength(straight, 0, t);
    SegmentLength(straight, t, 1);
  }
}

TEST(CurveByDistant, FindsTheSegmentAndItsShare) {
  // Lengths 100, 0, 50, 30.
  const float chain[4][8] = {{0, 0, 0, 100, 0, 0, 0, 0},
                             {0, 0, 100, 100, 0, 0, 0, 0},
                             {0, 0, 100, 150, 0, 0, 0, 0},
                             {0, 30, 150, 150, 0, 0, 0, 0}};
  struct Case {
    double distance, share;
    int index;
  };
  for (const Case &c : {Case{0, 0, 0},
                        {25, 0.25, 0},
                        {110, 0.2, 2},
                        {165, 0.5, 3},
                        {1000, 1, 3},
                        {-50, -0.5, 0},
                        {kNaN, 1, 3}}) {
    int index = -7;
    EXPECT_NEAR(CurveByDistant(chain[0], 4, c.distance, &index), c.share, 1e-9) << c.distance;
    EXPECT_EQ(index, c.index) << c.distance;
  }
  int index = -7;
  EXPECT_EQ(CurveByDistant(chain[1], 1, -1, &index), 0); // without length
  EXPECT_EQ(index, 0);
  EXPECT_EQ(CurveByDistant(nullptr, 0, 5, &index), 1);
  EXPECT_EQ(index, -1);
}

} // namespace
} // namespace zol
