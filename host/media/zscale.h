// Conversions that ffmpeg does in the place of this program, where it was built without zimg.
#pragma once

#include "host/media/pixel_format.h"
#include "host/media/probe.h"

#include <string>

namespace zol::host {

/// Whether this ffmpeg has the filter. Asked once.
bool hasZscale(const MediaPrograms &programs);

/// The filters that bring progressive pictures of one layout, either YUV or BGRA, to the other, scaled to
/// fill it.
std::string zscaleFilters(const PictureLayout &from, const PictureLayout &to);

} // namespace zol::host
