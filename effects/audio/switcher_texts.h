// Texts that the audio effects take over from the picture switcher. Each effect keeps a table of its own.
#pragma once

#include "frame/export.h"

namespace zol {

inline constexpr char kMultiswitcherDescription[] =
    "&c0000FF&bMultiswitcher.\n&c000000&n\tCombines any number of inputs. Add and remove inputs with the "
    "buttons; use curves to set and animate the level of each.";

enum SwitcherText { kSwitcherTitle, kSwitcherDescription, kSwitcherNoInputs };

ZOL_TEXT_TABLE kSwitcherTexts[] = {
    "Audio Switcher  on", kMultiswitcherDescription, "No inputs",
    "&Add New Input",     "&Remove selected Inputs", "Multiinput R,G,B,A switcher.",
};

} // namespace zol
