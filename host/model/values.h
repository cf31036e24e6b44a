// The values of fields as users write them.
//   numbers, times  0.5, or keys over the effect's span: 0=0.1;1=0.9
//   integers        20
//   toggles         on, off
//   selectors       an item's text or value
//   colours         #rrggbb or #rrggbbaa, or keys of them
#pragma once

#include "host/model/curve.h"
#include "host/model/effect.h"

#include <string>
#include <string_view>

namespace zol::host {

// Each throws HostError, naming what the field takes, for what it does not take.
NumberCurve numbersIn(const Field &field, std::string_view text);
ColorCurve colorsIn(const Field &field, std::string_view text);
/// Of an integer, a selector or a toggle.
int choiceIn(const Field &field, std::string_view text);

std::string textOf(const NumberCurve &curve);
std::string textOf(const ColorCurve &curve);
std::string textOf(const Field &field, int choice);

/// Where a number starts that its effect leaves unset: opaque where it is an opacity, else as near to 0 as
/// its range has it.
double startOf(const Field &field);

} // namespace zol::host
