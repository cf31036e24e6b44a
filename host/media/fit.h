// How pictures of one shape become pictures of another.
#pragma once

#include "host/media/pixel_format.h"

#include <optional>
#include <string_view>

namespace zol::host {

enum class Fit {
  letterbox, ///< all of it, with bars: black, or transparent where the picture has alpha
  crop,      ///< what fills the frame from its middle
  stretch,   ///< all of it, in the frame's shape
  extend,    ///< not scaled, from the top left; at the right and bottom its last column and row go on
};

/// Of those that users choose from.
std::string_view fitName(Fit fit);
std::optional<Fit> fitNamed(std::string_view name);

struct Rect {
  double x, y, width, height;
};

/// Where a picture lies: `source` of it fills `target`, whose corners are whole pixels.
struct Placement {
  Rect source;
  Rect target;
};

/// Heeds the pixel aspects. Shapes that differ by less than a pixel are the same.
Placement place(const PictureLayout &from, const PictureLayout &to, Fit fit);

} // namespace zol::host
