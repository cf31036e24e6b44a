// A part of one picture copied into another.
#pragma once

#include "frame/export.h"
#include "frame/zol.h"

/// Copies what of src lies within dst in the frame; the rest of dst stays. Returns the number of rows copied.
ZOL_EXPORT int PicAreaCopy(pic *dst, const pic *src);
