// The blending modes as users choose them.
#pragma once

#include "frame/host.h"
#include "kernels/compositing/lay_pixels.h"

#include <algorithm>
#include <iterator>

namespace zol {

// In the order of LayMode.
inline constexpr const char *kLayModeItems[] = {
    "Normal",     "Multiply",   "Screen",     "Overlay",   "Darken", "Lighten",  "Color dodge", "Color burn",
    "Hard light", "Soft light", "Difference", "Exclusion", "Add",    "Subtract", "Color",       "Luminosity",
};
static_assert(std::size(kLayModeItems) == kLayModes);

inline LayMode paramLayMode(t_ZoHostInfo *host, int field) {
  return static_cast<LayMode>(std::clamp(paramInt(host, field), 0, kLayModes - 1));
}

} // namespace zol
