// Icons as PNG files.
#pragma once

#include "host/model/effect.h"

#include <string>

namespace zol::studio {

std::string pngOf(const host::Icon &icon);

} // namespace zol::studio
