// One plan for many files.
#pragma once

#include "host/render/plan.h"
#include "host/script/library.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zol::host {

/// Whether the plan makes an output of every file that a pattern matches: its output's name has "{name}".
bool isBatch(const RenderPlan &plan);

/// A plan for each file that the one pattern among the inputs matches ("folder/*.jpg", with *, ? and [...]),
/// in the order of their names; "{name}" is the file's name without folder and extension. A file that has a
/// pattern for its name is that file. Throws HostError where nothing matches, where several inputs are
/// patterns, and where two files would get one output.
std::vector<RenderPlan> batchPlans(const RenderPlan &plan);

/// One file of a batch: its output, what there is to note, and why it failed, or empty.
struct BatchResult {
  std::string output;
  std::vector<std::string> notes;
  std::string error;
};

/// Renders the plans, several at once, and tells of each when it is through, one at a time. A failure does
/// not keep the others from going on. Throws Interrupted when asked to stop.
void runBatch(const std::vector<RenderPlan> &plans, const std::shared_ptr<const EffectLibrary> &library,
              const std::function<void(const BatchResult &, size_t done)> &told);

} // namespace zol::host
