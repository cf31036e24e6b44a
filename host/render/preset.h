// Presets: stages kept in a file.
#pragma once

#include "host/render/plan.h"

#include <string>
#include <vector>

namespace zol::host {

// A preset is the JSON of a plan that has stages alone. All throw HostError, naming the file.

std::vector<StagePlan> loadPreset(const std::string &file);
/// Refuses a file that exists, unless it may be replaced.
void checkPreset(const std::string &file, bool overwrite);
/// Appears whole or not at all.
void savePreset(const std::string &file, const std::vector<StagePlan> &stages, bool overwrite);

} // namespace zol::host
