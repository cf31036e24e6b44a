#include "kernels/exports/shape.h"

#include "host/services/session.h"
#include "kernels/simd/levels.h"
#include "plain/shape.h"
#include "tests/support/failing_malloc.h"
#include "tests/support/levels.h"
#include "tests/support/outline.h"
#include "tests/support/same_pixels.h"
#include "tests/support/test_clip.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <memory>

namespace zol {
namespace {

using host::Service;
using host::Session;
using test::Outline;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Draws 32 random bits at a time.
auto randomWords(unsigned seed) {
  return [engine = std::make_shared<std::mt19937>(seed)] { return static_cast<unsigned>((*engine)()); };
}

/// An outline as a handle of the host; hands over `most` segments and then fails.
class Geometry : public host::Shape {
public:
  explicit Geometry(Outline outline) : outline_(std::move(outline)) {}
  void box(double out[4], double) const override { std::fill_n(out, 4, 0.0); }
  int curves(double, bool, void *user, t_ZoSegmentFn callback) const override {
    return outline_.handOver(user, callback);
  }
  void *handle() { return static_cast<host::Shape *>(this); }

private:
  Outline outline_;
};

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
  Geometry geometry(work.outline);
  const auto picture = test::randomPicture(work.width, work.height, 7, work.x, work.y);
  char error[64] = "before";
  Filled filled;
  filled.result = function(session.info(), error, picture->record(), geometry.handle(), 2.5, work.colour,
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
  const auto random = randomWords(5);
  const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  for (int round = 0; round < 250; ++round) {
    const int width = below(8) == 0 ? below(4) : below(90), height = below(8) == 0 ? below(4) : below(70);
    const bool whole = below(3) == 0;
    const auto offset = [&] { return whole ? below(21) - 10 : below(2000) / 100.0 - 10; };
    const int segments = below(10) == 0 ? 200 : 1 + below(12);
    const unsigned opacity = below(3) == 0 ? static_cast<unsigned>(below(256)) : 255U;
    const Work work{test::scribble(segments, 70, below(2) * 40, below(4) != 0, whole, random()),
                    below(30) - 15,
                    below(30) - 15,
                    width,
                    height,
                    opacity << 24 | (random() & 0xffffffU),
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
  const auto random = randomWords(11);
  for (int round = 0; round < 400; ++round) {
    Outline outline = test::scribble(1 + round % 5, 30, 5, true, false, random());
    for (unsigned many = 1 + random() % 3; many > 0; --many) {
      auto &segment = outline.segments[random() % outline.segments.size()];
      test::Vector *const points[] = {&segment.P0, &segment.P1, &segment.H0, &segment.H1};
      (*points[random() % 4])[random() % 2] = hostile[random() % hostile.size()];
    }
    const double offset = round % 9 == 0 ? hostile[random() % hostile.size()] : 0;
    expectPlain({outline, 0, 0, 30, 30, 0xff204080U, offset, 0}, "round " + std::to_string(round));
    Session session("Halvenor");
    Geometry geometry(outline);
    for (const double x : {15.0, hostile[random() % hostile.size()]})
      for (const double y : {15.0, hostile[random() % hostile.size()]})
        EXPECT_EQ(PointIsInTheShape(session.info(), geometry.handle(), x, y, 0),
                  plain::pointIsInTheShape(session.info(), geometry.handle(), x, y, 0));
  }
}

// Coverage from edges alone is an estimate. On convex shapes it stays this close to the area, in 255ths of
// a pixel, averaged over the pixels that the outline touches: 5.9 measured, 2.3 percent.
TEST(FillShape, CoverageIsNearTheAreaOfConvexShapes) {
  constexpr int kSize = 96, kSamples = 32;
  struct Ellipse {
    double x, y, rx, ry;
  };
  double sum = 0;
  int touched = 0, worst = 0;
  for (const Ellipse &e : {Ellipse{48, 48, 40, 40}, {47.3, 48.6, 41.7, 23.1}, {48.5, 47.9, 11.3, 44.2}}) {
    const Filled filled =
        fill({test::ellipse(e.x, e.y, e.rx, e.ry), 0, 0, kSize, kSize, 0xffffffffU, 0, 0}, FillShapeXYOffset);
    for (int y = 0; y < kSize; ++y)
      for (int x = 0; x < kSize; ++x) {
        int inside = 0;
        for (int i = 0; i < kSamples * kSamples; ++i) {
          const double dx = (x + (i % kSamples + 0.5) / kSamples - e.x) / e.rx;
          const double dy = (y + (i / kSamples + 0.5) / kSamples - e.y) / e.ry;
          inside += dx * dx + dy * dy <= 1;
        }
        const double area = 255.0 * inside / (kSamples * kSamples);
        const double error = std::fabs(filled.bytes[static_cast<size_t>(y * kSize + x) * 4 + 3] - area);
        if (inside == 0 || inside == kSamples * kSamples) {
          EXPECT_LE(error, 8) << x << ", " << y;
          continue;
        }
        sum += error;
        worst = std::max(worst, static_cast<int>(error));
        ++touched;
      }
  }
  EXPECT_LT(sum / touched, 6.0);
  EXPECT_LT(worst, 120);
}

TEST(FillShape, RefusesMissingParameters) {
  Session session("Halvenor");
  Geometry geometry{Outline{}};
  const auto picture = test::randomPicture(2, 2, 1);
  char error[64] = "";
  EXPECT_EQ(FillShape(session.info(), error, nullptr, geometry.handle(), 0, 0), 0);
  EXPECT_STREQ(error, "Illegal parameter(s)");
  error[0] = 0;
  EXPECT_EQ(FillShape(session.info(), error, picture->record(), nullptr, 0, 0), 0);
  EXPECT_STREQ(error, "Illegal parameter(s)");
  EXPECT_EQ(FillShape(session.info(), nullptr, picture->record(), geometry.handle(), 0, 0), 0);
  EXPECT_EQ(PointIsInTheShape(session.info(), nullptr, 1, 1, 0), 0);
  EXPECT_EQ(session.messages.size(), 1U);
  EXPECT_EQ(session.messages.at(0), "Illegal parameter");
}

/// Fills under faults and expects 0, an untouched picture and nothing left behind; returns the error text.
std::string failToFill(Session &session, const Outline &outline) {
  Geometry geometry(outline);
  const auto picture = test::randomPicture(20, 10, 1), before = test::randomPicture(20, 10, 1);
  char error[64] = "before";
  EXPECT_EQ(FillShape(session.info(), error, picture->record(), geometry.handle(), 0, ~0U), 0);
  EXPECT_TRUE(test::samePixels(*picture->record(), *before->record()));
  EXPECT_EQ(session.pictures.live(), 0U);
  return error;
}

TEST(FillShape, LeavesNothingBehindWhenTheHostFailsOrStops) {
  const Outline outline = test::ellipse(10, 5, 8, 4);
  {
    Session session("Halvenor");
    session.faults.failAt(Service::GeoGetCurves, 1);
    EXPECT_EQ(failToFill(session, outline), "GeoGetCurves returns error");
    EXPECT_TRUE(session.messages.empty());
  }
  {
    Session session("Halvenor");
    session.faults.failAt(Service::PicCreate, 1);
    EXPECT_EQ(failToFill(session, outline), "");
    EXPECT_EQ(session.messages.at(0), "FillText: Memory allocation failure");
  }
  for (int poll = 1; poll <= 20 + 10 + 2; ++poll) {
    Session session("Halvenor");
    session.faults.abortAtPoll(poll);
    EXPECT_EQ(failToFill(session, outline), "");
    EXPECT_EQ(session.faults.calls(Service::IsAborted), poll);
    EXPECT_TRUE(session.messages.empty());
  }
}

TEST(FillShape, TakesFailingAllocations) {
  Outline outline = test::ring(10, 5, 9, 4, 200, 2); // more than the first block of segments
  Geometry geometry(outline);
  int failures = 0;
  for (bool failed = true; failed; ++failures) {
    Session session("Halvenor");
    const auto picture = test::randomPicture(20, 10, 1);
    char error[64];
    const test::FailingMalloc failing(failures + 1);
    const int result = FillShape(session.info(), error, picture->record(), geometry.handle(), 0, ~0U);
    failed = failing.failed();
    EXPECT_EQ(result, failed ? 0 : 1);
    EXPECT_EQ(session.pictures.live(), 0U);
    const test::FailingMalloc again(failures + 1);
    const int inside = PointIsInTheShape(session.info(), geometry.handle(), 10, 4, 0);
    EXPECT_EQ(inside, again.failed() ? 0 : 1);
  }
  EXPECT_GE(failures, 9);
}

TEST(PointIsInTheShape, WalksTheScanlinesCrossings) {
  Session session("Halvenor");
  const auto inside = [&](const Outline &outline, double x, double y) {
    Geometry geometry(outline);
    const int result = PointIsInTheShape(session.info(), geometry.handle(), x, y, 0);
    EXPECT_EQ(result, plain::pointIsInTheShape(session.info(), geometry.handle(), x, y, 0));
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
  const auto random = randomWords(4);
  for (int round = 0; round < 300; ++round) {
    float segment[8];
    for (float &value : segment)
      value = values[random() % 8];
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
