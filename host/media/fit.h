// How pictures of one shape become pictures of another.
#pragma once

#include <optional>
#include <string_view>
#include <utility>

namespace zol::host {

enum class Fit {
  letterbox, ///< all of it, with bars: black, or transparent where the picture has alpha
  crop,      ///< what fills the frame from its middle
  stretch,   ///< all of it, in the frame's shape
};

std::string_view fitName(Fit fit);
std::optional<Fit> fitNamed(std::string_view name);

struct Raster {
  int width = 0, height = 0;
  double pixelAspect = 1; ///< width of a pixel by its height
};

/// The width and height that `from` is scaled to before bars are put around it, or its edges are cut off, to
/// make it `to`. Shapes that differ by less than a pixel are the same.
std::pair<int, int> fittedSize(const Raster &from, const Raster &to, Fit fit);

} // namespace zol::host
