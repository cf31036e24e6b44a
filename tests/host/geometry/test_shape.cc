// What a geometry handle hands over, and that the library's fill of it covers the outline's own area.
#include "host/geometry/keyed_shape.h"
#include "host/geometry/shape.h"
#include "host/services/session.h"
#include "kernels/exports/shape.h"
#include "tests/host/geometry/geometries.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace zol::host {
namespace {

struct Recorded {
  std::vector<Segment> segments;
  size_t most;
};

int record(void *user, const double P0[2], const double P1[2], const double H0[2], const double H1[2]) {
  auto &recorded = *static_cast<Recorded *>(user);
  recorded.segments.push_back({{P0[0], P0[1]}, {P1[0], P1[1]}, {H0[0], H0[1]}, {H1[0], H1[1]}});
  return recorded.segments.size() < recorded.most ? 1 : 0;
}

/// Through the service, as the library asks; 0 for `one` leaves open contours open.
std::vector<Segment> handedOver(const std::string &path, int one, size_t most = 1000, int answer = 1) {
  Session session("Halvenor");
  GeometryShape shape(readPath(path));
  Recorded recorded{{}, most};
  EXPECT_EQ(session.info()->Services->GeoGetCurves(session.info(), static_cast<Shape *>(&shape), 0.5, one,
                                                   &recorded, record, 0),
            answer);
  return recorded.segments;
}

TEST(Shape, HandsOverContoursAsDrawnOrClosed) {
  const char *path = "M0 0H9V9 M20 0h9v9z M40 0h9v9";
  EXPECT_EQ(handedOver(path, 0).size(), 2u + 3 + 2);
  const std::vector<Segment> closed = handedOver(path, 1);
  ASSERT_EQ(closed.size(), 9u);
  for (size_t i = 0; i < 9; ++i)
    for (int axis = 0; axis < 2; ++axis)
      EXPECT_EQ(closed[i].P1[axis], closed[i % 3 == 2 ? i - 2 : i + 1].P0[axis]) << i;
  EXPECT_EQ(handedOver(path, 1, 3, 0).size(), 3u) << "stops when told to, at a closing line";
  EXPECT_EQ(handedOver(path, 1, 4, 0).size(), 4u);
}

TEST(Shape, CutsOnlyWhatFillersCannot) {
  const auto heart = "M100 60 C130 20 200 60 100 160 C0 60 70 20 100 60 Z";
  const std::vector<Segment> curves = readPath(heart).contours[0].segments;
  const std::vector<Segment> handed = handedOver(heart, 1);
  ASSERT_EQ(handed.size(), curves.size());
  for (size_t i = 0; i < curves.size(); ++i)
    EXPECT_NEAR(handed[i].P0[0] - curves[i].P0[0], 1.0 / 1024, 1e-12);
  // A symmetric arch has no cubic term in y: cut at its top, the halves are the curve by de Casteljau.
  const std::vector<Segment> halves = handedOver("M0 0 C0 40 60 40 60 0", 0);
  ASSERT_EQ(halves.size(), 2u);
  EXPECT_NEAR(halves[0].P1[0], 30 + 1.0 / 1024, 1e-12);
  EXPECT_NEAR(halves[0].P1[1], 30 + 1.0 / 1024, 1e-12);
  EXPECT_NEAR(halves[0].H0[1], 20, 1e-12);
  EXPECT_NEAR(halves[0].H1[0], -15, 1e-12);
  EXPECT_EQ(halves[0].H1[1], 0);
  EXPECT_EQ(halves[1].H0[1], 0);
  EXPECT_EQ(halves[1].P0[0], halves[0].P1[0]);
  // A quadratic turns once in x and once in y, and its pieces stay on it.
  const Segment whole = handedOver("M10 10 Q90 20 20 80", 0, 1, 0)[0];
  const std::vector<Segment> pieces = handedOver("M10 20 Q90 0 20 80", 0);
  ASSERT_EQ(pieces.size(), 3u);
  EXPECT_EQ(whole.P0[0], 10 + 1.0 / 1024);
  for (const Segment &piece : pieces)
    for (int k = 0; k <= 10; ++k) {
      double p[2];
      pointAt(piece, k / 10.0, p);
      double off = 1e9;
      for (int i = 0; i <= 4000; ++i) {
        const double t = i / 4000.0, s = 1 - t;
        off = std::min(
            off, std::hypot(s * s * 10 + 2 * s * t * 90 + t * t * 20 - p[0], s * s * 20 + t * t * 80 - p[1]));
      }
      EXPECT_LT(off, 0.03);
    }
}

// ---- Fills ----

constexpr int kWidth = 200, kHeight = 180;

/// Alpha of the library's fill.
std::vector<int> filled(const std::string &path) {
  Session session("Halvenor");
  GeometryShape shape(readPath(path));
  pic *picture = session.info()->Services->PicCreate(kWidth, kHeight);
  char error[256];
  EXPECT_EQ(FillShape(session.info(), error, picture, static_cast<Shape *>(&shape), 0, 0xffffffffU), 1);
  std::vector<int> alpha;
  for (int i = 0; i < kWidth * kHeight; ++i)
    alpha.push_back(picture->Pixels[i].a);
  session.info()->Services->PicFree(picture);
  return alpha;
}

/// Coverage by even-odd, from 16 samples along each of 16 lines a row through 500 chords a segment.
std::vector<double> covered(const std::string &path) {
  constexpr int kLines = 16, kChords = 500;
  std::vector<std::vector<double>> crossings(static_cast<size_t>(kHeight * kLines));
  for (const Segment &segment : segmentsOf(readPath(path))) {
    double a[2] = {segment.P0[0], segment.P0[1]}, b[2];
    for (int i = 1; i <= kChords; ++i, std::copy(b, b + 2, a)) {
      pointAt(segment, static_cast<double>(i) / kChords, b);
      const double low = std::min(a[1], b[1]) * kLines - 0.5, high = std::max(a[1], b[1]) * kLines - 0.5;
      for (auto line = static_cast<int>(std::ceil(std::max(0.0, low)));
           line < high && line < kHeight * kLines; ++line) {
        const double y = (line + 0.5) / kLines;
        crossings[static_cast<size_t>(line)].push_back(a[0] + (y - a[1]) / (b[1] - a[1]) * (b[0] - a[0]));
      }
    }
  }
  std::vector<double> coverage(static_cast<size_t>(kWidth * kHeight));
  for (size_t line = 0; line < crossings.size(); ++line) {
    std::sort(crossings[line].begin(), crossings[line].end());
    for (int x = 0; x < kWidth * kLines; ++x) {
      const double at = (x + 0.5) / kLines;
      const auto left = std::lower_bound(crossings[line].begin(), crossings[line].end(), at);
      if ((left - crossings[line].begin()) % 2 == 1)
        coverage[line / kLines * kWidth + static_cast<size_t>(x / kLines)] += 1.0 / (kLines * kLines);
    }
  }
  return coverage;
}

// Curves that turn between their ends, coordinates without a cubic term or with hardly one, ends and edges on
// whole pixels, loops, holes, and open contours.
TEST(Shape, IsFilledByItsOwnArea) {
  for (const char *path : {
           "M40 20 H160 V120 H40 Z M80 40 H140 V100 H80 Z",
           "M160 90 A60 60 0 1 1 40 90 A60 60 0 1 1 160 90 Z",
           "M57.574 47.574 A60 60 0 0 1 142.426 132.426 A60 60 0 0 1 57.574 47.574 Z",
           "M100 60 C130 20 200 60 100 160 C0 60 70 20 100 60 Z",
           "M10 160 Q100 -80 190 160 Z",
           "M20 20 Q180 90 20 160 Z",
           "M20 100 C20 10 180 10 180 100",
           "M20 100 C20 10.000001 180 10 180 100",
           "M20 100 C20 10.0001 180 10 180 100",
           "M10 90 Q40 10 70 90 T130 90 T190 90 L190 170 H10",
           "M20 20 C 260 170 -60 170 180 20",
           "M30 90 C 30 -40 170 220 170 90 S 30 -40 30 90",
           "M100 10 L150 170 L15 70 H185 L50 170 Z",
           "M60 20 C60 60 100 60 100 100 M100 100 S 20 170 20 90",
           "M-50 90 C 50 -200 150 380 250 90 L250 200 H-50",
       }) {
    const std::vector<int> alpha = filled(path);
    const std::vector<double> expected = covered(path);
    double area = 0, filledArea = 0, off = 0;
    for (size_t i = 0; i < alpha.size(); ++i) {
      area += expected[i];
      filledArea += alpha[i] / 255.0;
      // At a corner that is a pixel's, the fill may have half of it.
      if ((expected[i] == 0 || expected[i] == 1) && std::abs(expected[i] - alpha[i] / 255.0) > 0.51)
        ADD_FAILURE() << path << ": pixel " << i % kWidth << ", " << i / kWidth << " is " << alpha[i];
      off += std::abs(expected[i] - alpha[i] / 255.0);
    }
    EXPECT_NEAR(filledArea / area, 1, 0.011) << path;
    EXPECT_LT(off / area, 0.015) << path;
  }
}

TEST(Shape, GoesFromKeyToKeyPointByPoint) {
  const auto boxAt = [](const Shape &shape, double time) {
    double box[4];
    shape.box(box, time);
    return std::vector<double>(box, box + 4);
  };
  const auto key = [](double time, const char *path, Course course = Course::line) {
    return GeometryKey{time, readPath(path), course};
  };
  const auto shape =
      shapeOf({key(2, "M0 0H10V10Z"), key(4, "M20 0H40V20Z", Course::hold), key(6, "M0 0H1V1Z")});
  EXPECT_EQ(boxAt(*shape, 0), (std::vector<double>{0, 0, 10, 10}));
  EXPECT_EQ(boxAt(*shape, 3), (std::vector<double>{10, 0, 25, 15}));
  EXPECT_EQ(boxAt(*shape, 5.9), (std::vector<double>{20, 0, 40, 20}));
  Recorded recorded{{}, 9};
  EXPECT_EQ(shape->curves(3, true, &recorded, record), 1);
  ASSERT_EQ(recorded.segments.size(), 3U);
  EXPECT_NEAR(recorded.segments[1].P1[0], 25 + 1.0 / 1024, 1e-12);
  EXPECT_NEAR(recorded.segments[1].P1[1], 15 + 1.0 / 1024, 1e-12);
  for (const char *other : {"M0 0H1V1H0Z", "M0 0H1V1", "M0 0H1V1Z M5 5H6V6Z", ""})
    EXPECT_THROW(shapeOf({key(0, "M0 0H10V10Z"), key(1, other)}), GeometryError) << other;
}

} // namespace
} // namespace zol::host
