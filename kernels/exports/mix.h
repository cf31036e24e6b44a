// Two pictures mixed over the frame.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// A * (1 - ratio) + B * ratio in all four channels, over the smallest rectangle that covers both pictures.
/// Where B does not reach, A fades toward transparent black; where A does not reach, what PicCreate put
/// there stands in for it. What truncation leaves of a channel goes on to the next pixel of the row, so
/// that flat areas keep their mean.
///
/// The result is the caller's. Null when the host wants to stop, and, after a message, when the result
/// cannot be created. A ratio outside 0 to 1 extrapolates, each channel limited to 0..255.
ZOL_EXPORT pic *mix_pics_union(pic *a, pic *b, float ratio, t_ZoHostInfo *host);

/// The same over the rectangle that both pictures cover, truncated pixel by pixel. Null without a message
/// when the result cannot be created. A ratio outside 0 to 1 extrapolates modulo 256.
ZOL_EXPORT pic *mix_pics_intersect(pic *a, pic *b, float ratio, t_ZoHostInfo *host);
