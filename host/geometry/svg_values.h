// What SVG's attributes say, path data aside. Throws GeometryError with the character's place.
#pragma once

#include "host/geometry/geometry.h"
#include "host/geometry/outline.h"

#include <string_view>
#include <vector>

namespace zol::host {

Matrix translation(double x, double y);
Matrix scaling(double x, double y);

/// A list of matrix, translate, scale, rotate, skewX and skewY.
Matrix readTransform(std::string_view text);

/// A length in user units: plain, px, in, cm, mm, Q, pt, pc, or % of `whole`.
double readLength(std::string_view text, double whole);

std::vector<Point> readPoints(std::string_view text);

struct ViewBox {
  double x, y, width, height;
};
ViewBox readViewBox(std::string_view text);

/// Maps the box, of some size, to a viewport at 0, 0, as the text (preserveAspectRatio) has it.
Matrix fit(const ViewBox &box, double width, double height, std::string_view aspectRatio);

} // namespace zol::host
