// Geometries in the terms of tests.
#pragma once

#include "host/geometry/path.h"

#include <array>
#include <gtest/gtest.h>

namespace zol::host {

using Ends = std::vector<std::array<double, 4>>;

/// All segments as a fill has them: open contours closed by a line.
inline std::vector<Segment> segmentsOf(const Geometry &geometry) {
  std::vector<Segment> segments;
  for (const Contour &contour : geometry.contours) {
    segments.insert(segments.end(), contour.segments.begin(), contour.segments.end());
    if (const auto line = contour.closingLine())
      segments.push_back(*line);
  }
  return segments;
}

inline Ends endsOf(const Geometry &geometry) {
  Ends ends;
  for (const Segment &s : segmentsOf(geometry))
    ends.push_back({s.P0[0], s.P0[1], s.P1[0], s.P1[1]});
  return ends;
}

inline void expectSame(const Geometry &one, const Geometry &other, const std::string &what,
                       double tolerance = 1e-12) {
  const auto a = segmentsOf(one), b = segmentsOf(other);
  ASSERT_EQ(a.size(), b.size()) << what;
  for (size_t i = 0; i < a.size(); ++i)
    for (const auto part : {&Segment::P0, &Segment::P1, &Segment::H0, &Segment::H1})
      for (int axis = 0; axis < 2; ++axis)
        EXPECT_NEAR((a[i].*part)[axis], (b[i].*part)[axis], tolerance) << what << ", segment " << i;
}

inline void expectSame(const std::string &one, const std::string &other) {
  expectSame(readPath(one), readPath(other), one + " | " + other);
}

} // namespace zol::host
