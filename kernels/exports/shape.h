// Filling a host's geometry into a picture, with exact coverage of pixel edges and the even-odd rule; and
// the small questions about a geometry: is a point inside, how far does a segment reach, how long is it.
//
// A geometry arrives segment by segment, each a cubic with ends P0, P1 and handles H0, H1 (vectors from the
// ends), in pixels of the frame. Its Hermite tangents are 3 H0 and -3 H1.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// Fills the geometry, as it is at `time`, into the picture. `colour` is 0xAARRGGBB. The picture's alpha
/// becomes the shape's coverage times the colour's alpha everywhere, 0 outside the shape; colours blend with
/// that alpha. `errorText` is set to the empty string, or to what went wrong.
/// 1, or 0 on failure or when the host wants to stop; then the picture is unchanged.
ZOL_EXPORT int FillShape(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry, double time,
                         unsigned colour);

/// The same with every point of the geometry moved, in pixels.
ZOL_EXPORT int FillShapeXYOffset(t_ZoHostInfo *host, char *errorText, pic *picture, void *geometry,
                                 double time, unsigned colour, double xOffset, double yOffset);

/// Whether the point lies inside the geometry on the point's scanline, borders included.
ZOL_EXPORT int PointIsInTheShape(t_ZoHostInfo *host, void *geometry, double x, double y, double time);

/// Writes the bounding box of one segment as minX, minY, maxX, maxY. TX0, TY0 are 3 H0; TX1, TY1 are 3 H1,
/// not negated.
ZOL_EXPORT void FillSegmentHull(double *hull, double X0, double Y0, double X1, double Y1, double TX0,
                                double TY0, double TX1, double TY1);

/// Where along a chain of segments the distance (pixels) is reached: the segment goes into `index`, the
/// result is the share of that segment's length. Beyond the end: 1 and the last segment.
/// A segment is 8 floats: P0.y, P1.y, P0.x, P1.x, 3 H0.x, 3 H1.x, 3 H0.y, 3 H1.y.
ZOL_EXPORT double CurveByDistant(const float *segments, int count, double distance, int *index);

/// Length in pixels between two parameters of a segment as above. The record's tangents count three times:
/// the measured curve bulges further than the drawn one.
ZOL_EXPORT double SegmentLength(const float *segment, double t0, double t1);
