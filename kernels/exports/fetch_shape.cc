#include "kernels/exports/fetch_shape.h"

namespace zol {
namespace {

struct Collection {
  const Affine &matrix;
  ShapeSegments &segments;
};

/// Without the term of a factor 0, which would pass on what is not a number.
double scaled(double factor, double value) { return factor == 0 ? 0 : factor * value; }

int addSegment(void *user, const double P0[2], const double P1[2], const double H0[2], const double H1[2]) {
  const auto &[m, segments] = *static_cast<Collection *>(user);
  const auto along = [&](double byX, double byY, double shift) {
    const auto turned = [&](const double *v) { return scaled(byX, v[0]) + scaled(byY, v[1]); };
    return HermiteCubic{turned(P0) + shift, turned(P1) + shift, 3.0 * turned(H0), -3.0 * turned(H1)};
  };
  return segments.add({along(m.xx, m.xy, m.dx), along(m.yx, m.yy, m.dy)}) ? 1 : 0;
}

} // namespace

bool fetchShape(t_ZoHostInfo *host, void *geometry, double time, ShapeUse use, const Affine &matrix,
                ShapeSegments &segments) {
  Collection collection{matrix, segments};
  const int closed = use == ShapeUse::filling ? 1 : 0;
  return host->Services->GeoGetCurves(host, geometry, time, closed, &collection, addSegment, 0) == 1;
}

} // namespace zol
