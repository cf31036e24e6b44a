// The words of `zol render` as a plan.
#pragma once

#include "apps/zol/commands.h"

#include "host/render/plan.h"

#include <functional>
#include <string>
#include <vector>

namespace zol::command {

/// What the words ask for besides the plan.
struct RenderWords {
  host::RenderPlan plan;
  std::string savePreset; ///< a file, or empty
  std::string planFile;   ///< likewise
  bool dryRun = false, help = false;
  TellingOptions telling;
};

/// For help and completion: what renderWords reads in every stage.
void addRenderOptions(CLI::App &app);

/// Reads the words behind "render". Throws CLI::ParseError, and HostError for a preset that cannot be read.
/// `addMore` adds options that stand among them.
RenderWords renderWords(
    const std::vector<std::string> &words,
    const std::function<void(CLI::App &)> &addMore = [](CLI::App &) {});

} // namespace zol::command
