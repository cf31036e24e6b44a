#pragma once

#include "host/geometry/geometry.h"

#include <string_view>

namespace zol::host {

/// Reads SVG path data, all commands. Curves are kept exactly, elliptical arcs within 5e-6 of their radius.
/// Throws GeometryError, whose text has the character's place from 1.
Geometry readPath(std::string_view pathData);

} // namespace zol::host
