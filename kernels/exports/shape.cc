#include "kernels/exports/shape.h"

#include "frame/convert.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/shape/shape_fill.h"
#include "kernels/shape/shape_length.h"

#include <cstring>

namespace {

/// What the host's enumeration of a geometry fills: segments, moved by the offset (handles are not moved).
struct Collection {
  double xOffset, yOffset;
  zol::ShapeSegments segments{};
};

int addSegment(void *user, const double P0[2], const double P1[2], const double H0[2], const double H1[2]) {
  auto &collection = *static_cast<Collection *>(user);
  const auto along = [&](int axis, double offset) {
    return zol::HermiteCubic{P0[axis] + offset, P1[axis] + offset, 3.0 * H0[axis], -3.0 * H1[axis]};
  };
  return collection.segments.add({along(0, collection.xOffset), along(1, collection.yOffset)}) ? 1 : 0;
}

/// Fetches a geometry's segments; false when the host fails or memory runs out.
bool collect(t_ZoHostInfo *host, void *geometry, double time, Collection &collection) {
  return host->Services->GeoGetCurves(host, geometry, time, 1, &collection, addSegment, 0) == 1;
}

/// Fills the shape into the picture; 0 when memory runs out or the host wants to stop.
int fill(t_ZoHostInfo *host, const zol::ShapeSegments &segments, pic *picture, unsigned colour) {
  zol::ShapeFill shape(segments, zol::Area::of(*picture));
  if (!shape)
    return 0;
  // A picture of one pixel more each way has room for the edges.
  const zol::OwnedPic edges(host, host->Services->PicCreate(picture->Width + 1, picture->Height + 1));
  if (!edges) {
    zol::showMessage(host, "FillText: Memory allocation failure");
    return 0;
  }
  for (int line = 0; line < shape.lineCount(); ++line) {
    if (zol::aborted(host))
      return 0;
    shape.orderLine(line);
  }
  shape.blend(picture->Pixels, reinterpret_cast<uint8_t *>(edges->Pixels), colour);
  return 1;
}

} // namespace

ZOL_EXPORT int FillShape(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                         unsigned colour) {
  return FillShapeXYOffset(host, errorText, picture, geometry, time, colour, 0.0, 0.0);
}

ZOL_EXPORT int FillShapeXYOffset(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry,
                                 double time, unsigned colour, double xOffset, double yOffset) {
  if (picture == nullptr || geometry == nullptr || errorText == nullptr) {
    if (errorText != nullptr)
      std::strcpy(errorText, "Illegal parameter(s)");
    return 0;
  }
  errorText[0] = '\0';
  Collection shape{xOffset, yOffset};
  if (!collect(host, geometry, time, shape)) {
    std::strcpy(errorText, "GeoGetCurves returns error");
    return 0;
  }
  return fill(host, shape.segments, picture, colour);
}

ZOL_EXPORT int PointIsInTheShape(t_ZoHostInfo *host, void *geometry, double x, double y, double time) {
  if (geometry == nullptr) {
    zol::showMessage(host, "Illegal parameter");
    return 0;
  }
  Collection shape{0.0, 0.0};
  if (!collect(host, geometry, time, shape))
    return 0;
  const zol::CrossingLines lines(shape.segments, zol::LineKind::rows, zol::truncate(y), 1);
  if (!lines)
    return 0;
  zol::sortCrossings(lines[0]);
  return zol::isInside(lines[0], x) ? 1 : 0;
}

ZOL_EXPORT void FillSegmentHull(double *hull, double X0, double Y0, double X1, double Y1, double TX0,
                                double TY0, double TX1, double TY1) {
  const zol::Range x = zol::rangeOf({X0, X1, TX0, -TX1}), y = zol::rangeOf({Y0, Y1, TY0, -TY1});
  hull[0] = x.low;
  hull[1] = y.low;
  hull[2] = x.high;
  hull[3] = y.high;
}

ZOL_EXPORT double CurveByDistant(const float *segments, int count, double distance, int *index) {
  const zol::ChainPlace place = zol::placeAlong(segments, count, distance);
  *index = place.segment;
  return place.share;
}

ZOL_EXPORT double SegmentLength(const float *segment, double t0, double t1) {
  return zol::segmentLength(segment, t0, t1);
}
