// Colours as users write them.
#pragma once

#include <optional>
#include <string_view>

namespace zol::host {

/// The whole text as 0xAARRGGBB: #rgb, #rgba, #rrggbb, #rrggbbaa, likewise with 0x for #, a name of CSS, or
/// "transparent". Nothing for others.
std::optional<unsigned> colorIn(std::string_view text);

} // namespace zol::host
