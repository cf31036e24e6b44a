#pragma once

#include "host/geometry/geometry.h"

#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// What was drawn, in pixels, and a line on each kind of thing that was left out, such as "2 text elements
/// are not read".
struct Drawing {
  Geometry geometry;
  std::vector<std::string> notes;
};

/// The outlines of all shapes of an SVG text, in order, whatever they are painted with. Nothing outside of
/// the text is looked at. Throws GeometryError.
Drawing readSvg(std::string_view xml);

/// The same of a file; the error names it.
Drawing readSvgFile(const std::string &file);

/// SVG path data, or `@file.svg`.
Drawing readDrawing(const std::string &text);

} // namespace zol::host
