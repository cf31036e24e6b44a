// Pictures as PNG files, not compressed.
#pragma once

#include "host/model/effect.h"

#include <string>

namespace zol::studio {

std::string pngOf(const host::Icon &icon);

} // namespace zol::studio
