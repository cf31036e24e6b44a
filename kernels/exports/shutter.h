// A shutter of wedges that turn about a centre.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// Multiplies the picture's alpha by how far the shutter is open; colours stay. `sectors` wedges, 1 to 64,
/// grow clockwise from `angle` (degrees from the right) and at even steps from there, until at an `opening`
/// of 1 they are all. The centre is in pixels of the frame, the softness of their moving edges in pixels
/// across; that of a single wedge is along the whole line through the centre. The host's PixelAspect says
/// what is round. 1, or 0 when the host wants to stop: the rows below stay as they were.
ZOL_EXPORT int shutter_radial_alpha(t_ZoHostInfo *host, pic *picture, double centerX, double centerY,
                                    double angle, double opening, int sectors, double softness);
