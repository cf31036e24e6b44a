// The values of fields as users write them.
//   numbers         0.5, or keys: 0=0.1;1=0.9
//   times           2.5, 500ms, 50f (host/model/times.h), or keys of them
//   integers        20
//   toggles         on, off
//   selectors       an item's text or value
//   colours         #rrggbb, #rrggbbaa, orange, or keys of them
// A key's time is a share of the effect's span from 0 to 1, or a time within it such as 2s or 50f. From a key
// on the curve goes straight to the next; after |= it is held, after ~= it is smooth.
#pragma once

#include "host/model/curve.h"
#include "host/model/effect.h"
#include "host/model/times.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// A key as it was written: its time, the share of the span that this is, and the value's text.
struct KeyText {
  Time time;
  double share;
  Course course;
  std::string_view value;
};

// Each throws HostError, naming what the field takes, for what it does not take.

/// The keys of "0=a;2s|=b", or one at time 0 of a text without any.
std::vector<KeyText> keysIn(const Field &field, std::string_view text, const KeySpan &span);
NumberCurve numbersIn(const Field &field, std::string_view text, const KeySpan &span = {});
ColorCurve colorsIn(const Field &field, std::string_view text, const KeySpan &span = {});
/// Of an integer, a selector or a toggle.
int choiceIn(const Field &field, std::string_view text);

/// A line on the first key that lies outside of the effect's span; nothing where all are within it.
std::optional<std::string> strayKey(const Field &field, std::string_view text, const KeySpan &span);

std::string textOf(const NumberCurve &curve);
std::string textOf(const ColorCurve &curve);
std::string textOf(const Field &field, int choice);

/// Where a number starts that its effect leaves unset: opaque where it is an opacity, else as near to 0 as
/// its range has it.
double startOf(const Field &field);

} // namespace zol::host
