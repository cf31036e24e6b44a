// What users should know of effects beyond what these declare.
#pragma once

#include "host/model/effect.h"

#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

/// What the numbers of a field count, with an example where they are relative to the frame; empty where the
/// declaration says nothing of it.
std::string unitOf(const Field &field);

/// Remarks on a field of an effect, or with no name on the effect as a whole; a line each.
std::vector<std::string_view> remarksOn(const Effect &effect, std::string_view field = {});

} // namespace zol::host
