// The declared effects, and how users find them.
#pragma once

#include "host/model/effect.h"

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// All effects in the order of their registration. Effects keep their addresses while others are added.
class Registry {
public:
  /// Appends, or replaces in place the effect that has the same sign.
  Effect &add(Effect effect);

  [[nodiscard]] const std::deque<Effect> &effects() const { return effects_; }

  /// The effects that a user may mean: of the first rule that fits any, all that it fits. The rules, best
  /// first: the exact name or sign; the end of the name from a '/' on, or all of it, without regard to case
  /// ("blur" for "Filters/Blur"); any end of the name, likewise ("warp" for "Time/Time Warp").
  [[nodiscard]] std::vector<const Effect *> matches(std::string_view wanted) const;

  /// The one effect that matches; null when none does or more than one.
  [[nodiscard]] const Effect *find(std::string_view wanted) const;

  /// Names of effects that resemble `wanted`, the nearest first, at most `count`.
  [[nodiscard]] std::vector<std::string> nearest(std::string_view wanted, size_t count = 3) const;

private:
  std::deque<Effect> effects_;
};

} // namespace zol::host
