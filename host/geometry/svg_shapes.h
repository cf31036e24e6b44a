// SVG elements that draw.
#pragma once

#include "host/geometry/geometry.h"
#include "host/geometry/xml.h"

namespace zol::host {

/// What `read` gives; its error gets the element's line.
template <class Read> auto readAt(const XmlReader &element, Read read) {
  try {
    return read();
  } catch (const GeometryError &error) {
    element.fail(error.what());
  }
}

/// The length that the attribute says, % of `whole`; `otherwise` where it is not there or "auto".
double length(const XmlReader &element, std::string_view name, double whole, double otherwise = 0);

bool isShape(std::string_view elementName);

/// What a shape's element draws, in its own units; percentages are of the given size.
Geometry shapeOf(const XmlReader &element, double width, double height);

} // namespace zol::host
