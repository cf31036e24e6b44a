// Fuzzes path data: whatever it is, an error with a place in it or finite contours that join, also in the
// pieces that effects are given, and then without gaps.
#include "host/geometry/path.h"
#include "host/geometry/shape.h"
#include "tests/fuzz/contours.h"

#include <algorithm>
#include <vector>

namespace {

using namespace zol::host;
using fuzz::require;

int collect(void *user, const double P0[2], const double P1[2], const double H0[2], const double H1[2]) {
  static_cast<std::vector<Segment> *>(user)->push_back(
      {{P0[0], P0[1]}, {P1[0], P1[1]}, {H0[0], H0[1]}, {H1[0], H1[1]}});
  return 1;
}

/// Every contour ends where it began.
void checkClosed(const std::vector<Segment> &segments) {
  const double *start = nullptr;
  for (size_t i = 0; i < segments.size(); ++i) {
    if (i == 0 || !fuzz::isSame(segments[i - 1].P1, segments[i].P0)) {
      require(i == 0 || fuzz::isSame(segments[i - 1].P1, start));
      start = segments[i].P0;
    }
  }
  require(segments.empty() || fuzz::isSame(segments.back().P1, start));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  Geometry geometry;
  try {
    geometry = readPath(text);
  } catch (const GeometryError &error) {
    require(error.position <= size);
    return 0;
  }
  fuzz::check(geometry);
  const Box box = geometry.box();
  const double slack =
      1e-6 *
      (1 + std::max({std::abs(box.left), std::abs(box.right), std::abs(box.top), std::abs(box.bottom)}));
  std::vector<Segment> pieces;
  require(GeometryShape(geometry).curves(0, true, &pieces, collect) == 1);
  checkClosed(pieces);
  for (const Segment &piece : pieces)
    for (const double *end : {piece.P0, piece.P1})
      require(end[0] - box.left >= -slack && box.right - end[0] >= -slack - 0.001 &&
              end[1] - box.top >= -slack && box.bottom - end[1] >= -slack - 0.001);
  return 0;
}
