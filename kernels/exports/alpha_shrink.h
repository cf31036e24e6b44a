// Erosion of a picture's opaque area.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// Shrinks the opaque area of the picture's alpha in place: each alpha becomes the least within the
/// horizontal radius along its row, and of those the least within the vertical radius along its column. A
/// radius between two whole ones gives what lies between their results, so that it can be animated. A radius
/// of 0 or less, or NaN, does nothing in its direction; pixels outside the picture do not erode it; colours
/// stay. 1, or 0 when memory cannot be had or the host wants to stop, with the picture as it was.
ZOL_EXPORT int AlphaShrink(t_ZoHostInfo *host, pic *picture, float horizontalRadius, float verticalRadius);
