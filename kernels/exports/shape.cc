#include "kernels/exports/shape.h"

#include "frame/convert.h"
#include "frame/host.h"
#include "kernels/exports/transformed_shape.h"
#include "kernels/shape/cubic.h"
#include "kernels/shape/shape_length.h"
#include "kernels/shape/shape_points.h"

ZOL_EXPORT int FillShape(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                         unsigned colour) {
  return FillShapeXYOffset(host, errorText, picture, geometry, time, colour, 0.0, 0.0);
}

ZOL_EXPORT int FillShapeXYOffset(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry,
                                 double time, unsigned colour, double xOffset, double yOffset) {
  return zol::fillShapeTransformed(host, errorText, picture, geometry, time, colour,
                                   zol::Affine::moving(xOffset, yOffset));
}

ZOL_EXPORT int PointIsInTheShape(t_ZoHostInfo *host, void *geometry, double x, double y, double time) {
  if (geometry == nullptr) {
    zol::showMessage(host, "Illegal parameter");
    return 0;
  }
  zol::ShapeSegments segments;
  if (!zol::fetchShape(host, geometry, time, zol::ShapeUse::filling, {}, segments))
    return 0;
  const zol::ShapePoints points(segments, zol::truncate(y), 1);
  return points && points.has(x, y) ? 1 : 0;
}

ZOL_EXPORT void FillSegmentHull(double *hull, double X0, double Y0, double X1, double Y1, double TX0,
                                double TY0, double TX1, double TY1) {
  const zol::Extent x = zol::rangeOf({X0, X1, TX0, -TX1}), y = zol::rangeOf({Y0, Y1, TY0, -TY1});
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
