// Combed fields repaired, or one of them dropped.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// Repairs the combed pixels of a picture, src and dst being width x height pixels each, apart from one
/// another. Lines beyond the picture mirror those inside.
///
/// A channel is combed by (u - c) * (d - c) - edge * edge * (u - d) * (u - d) / 4096, with c, u and d the
/// line, the one above and the one below; red counts three times, green six times, blue once. A pixel is
/// rebuilt where its own measure, twice, and those of the pixels above and below exceed
/// 4 * threshold * threshold: blended 1 2 1 with its neighbours or, without blending and on odd lines
/// alone, replaced by their mean. A rebuilt pixel's alpha is 0.
///
/// Any threshold is taken, its square wrapping at 32 bits; so is any edge up to 180, the limit. Returns 1.
ZOL_EXPORT int deinterlace(unsigned *dst, unsigned *src, int width, int height, int threshold, int edge,
                           bool blend);

/// Has the host stretch one field to full height: the odd lines at method 0, else the even ones. A single
/// line is copied. Returns 1.
ZOL_EXPORT int mydeinterlace(t_ZoHostInfo *host, _color_t *dst, _color_t *src, int width, int height,
                             int method);
