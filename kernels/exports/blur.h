// Blur by a tent in both directions.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// A new picture at the source's place and of its size, each channel the mean of the source's pixels within
/// `radius` (in pixels, to the left and right, above and below), weighted by distance; the mean of a column
/// is truncated before the rows are averaged. Pixels outside the picture have no weight. Colours are not
/// weighted by alpha. A radius up to 1, or NaN, gives a copy; more than 100 pixels away nothing is looked at.
/// Null when the host wants to stop, and, after a message, when memory cannot be had.
ZOL_EXPORT pic *FillBlurImage(t_ZoHostInfo *host, pic *src, double radius);

/// The same for alpha alone; the colours are the source's.
ZOL_EXPORT pic *FillBlurAlpha(t_ZoHostInfo *host, pic *src, double radius);
