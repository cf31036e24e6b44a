// Fuzzes path data: whatever it is, an error with a place in it or finite, closed, splittable outlines.
#include "host/geometry/geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds) {
  if (!holds)
    std::abort();
}

bool joined(const double *a, const double *b) { return a[0] == b[0] && a[1] == b[1]; }

/// Every subpath ends where it began.
void checkClosed(const std::vector<zol::host::Segment> &segments) {
  const double *start = nullptr;
  for (size_t i = 0; i < segments.size(); ++i) {
    if (i == 0 || !joined(segments[i - 1].P1, segments[i].P0)) {
      require(i == 0 || joined(segments[i - 1].P1, start));
      start = segments[i].P0;
    }
  }
  require(segments.empty() || joined(segments.back().P1, start));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace zol::host;
  const std::string_view text(reinterpret_cast<const char *>(data), size);
  Geometry geometry;
  try {
    geometry = Geometry::fromPath(text);
  } catch (const GeometryError &error) {
    require(error.position <= size);
    return 0;
  }
  checkClosed(geometry.segments);
  const Box box = geometry.box();
  const std::vector<Segment> pieces = geometry.splitAtExtrema();
  require(pieces.size() >= geometry.segments.size() && pieces.size() <= 5 * geometry.segments.size());
  checkClosed(pieces);
  for (const Segment &piece : pieces) {
    for (const double *vector : {piece.P0, piece.P1, piece.H0, piece.H1})
      require(std::isfinite(vector[0]) && std::isfinite(vector[1]));
    const double slack =
        1e-6 *
        (1 + std::max({std::abs(box.left), std::abs(box.right), std::abs(box.top), std::abs(box.bottom)}));
    require(piece.P1[0] >= box.left - slack && piece.P1[0] <= box.right + slack &&
            piece.P1[1] >= box.top - slack && piece.P1[1] <= box.bottom + slack);
  }
  return 0;
}
