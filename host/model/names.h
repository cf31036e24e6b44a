// How names that users type resemble those that exist.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zol::host {

/// How many edits make a candidate of what was typed, both folded; nothing where they do
/// not resemble each other.
std::optional<size_t> resemblance(std::string_view wanted, std::string_view candidate);

/// A candidate and the edits that it is away.
using RatedName = std::pair<size_t, std::string>;

/// The nearest first, at most `count`; equals keep their order.
std::vector<std::string> nearestOf(std::vector<RatedName> rated, size_t count);

/// The candidates that resemble `wanted` (few edits, without regard to case), the nearest first, at most
/// `count`: what a "did you mean" offers.
std::vector<std::string> nearestNames(std::string_view wanted, std::span<const std::string> candidates,
                                      size_t count = 3);

} // namespace zol::host
