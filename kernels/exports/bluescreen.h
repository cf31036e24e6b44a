// The blue and the green screen.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// Lays `key` on `out`, in place, where it is not the backdrop. A pixel's matte is 0 where its blue exceeds
/// the larger of red and green by delta1 (1.0 = 255) or more, 255 where it falls short of it by delta2 or
/// more, and linear between. `blur` softens the picture that the matte is taken from, `shrink` erodes the
/// matte (radii in pixels; `aspect` is the vertical radius over the horizontal one). The matte times
/// `opacity` is the weight of key's colours, the matte itself the alpha of the result; blue is never laid on
/// above red and green. Outside of `key` there is transparent black. Answers 1, or 0 when memory ran out or
/// the host wants to stop: `out` is half made then.
ZOL_EXPORT int Bluescreen(t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2, float opacity,
                          float shrink, float blur, float aspect);

/// The same with green as the key channel, against the larger of red and blue.
ZOL_EXPORT int Greenscreen(t_ZoHostInfo *host, pic *out, pic *key, float delta1, float delta2, float opacity,
                           float shrink, float blur, float aspect);
