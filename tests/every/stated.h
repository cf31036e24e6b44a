// What effects state of themselves and their declarations do not say.
#pragma once

#include <cstddef>

namespace zol::test {

/// Settings that make an effect copy an input.
struct Neutral {
  const char *sign;
  const char *settings; ///< "Field=value;Field=value"
  size_t input = 0;     ///< the one that is copied
  bool alone = false;   ///< whether the others must be unassigned
};

inline constexpr Neutral kNeutral[] = {
    {"Copy (Zo2)", ""},
    {"Blur 1.0 (Zo2)", "Blurriness=0"},
    {"Mix Zo2 native", "Transition=0"},
    {"Mix Zo2 native", "Transition=1", 1},
    {"Overlay for Qb4", "Opacity=0"},
    {"DropShadow Zo2 native", "Opacity=0"},
    {"FillGeometry Zo2 native", "Alpha=0"},
    {"Recolor Zo2 native", ""},
    {"Recolor Zo2 native", "KeepBrightness=1;Range=0.3"},
    {"Spread Zo2 native", "Horizontal=0;Vertical=0;Grain=0.5"},
    {"MotionBlur Zo2 native", "Shutter=0"},
    {"MotionBlur Zo2 native", "Kind=Spin;Amount=0"},
    {"Aureole Zo2 native", "Intensity=0"},
    {"ScatterEx Zo2 native", "Alpha=0"},
    {"ScatterEx Zo2 native", "Rate=0"},
    {"Simple Audio Switcher [rul]", ""},
    {"Audio Transition [PW]", "FadeIn=0;FadeOut=0", 0, true},
    {"Audio Transition [PW]", "FadeIn=0;FadeOut=0", 1, true},
    {"AudioSwitcher (Zo2)", "Level 0=1;Level 1=0;Level 2=0;Master=1"},
};

/// Effects that may show what a new picture holds before anybody has written to it.
struct ShowsNewPictures {
  const char *sign;
  const char *why;
};

inline constexpr ShowsNewPictures kShowNewPictures[] = {
    {"Mix Zo2 native", "where neither input lies, its picture keeps what the host gave"},
};

} // namespace zol::test
