// What runs on a node of the cluster.
#pragma once

#include "host/farm/plan.h"

#include <string>

namespace zol::host {

/// A part is tried so often before it has failed.
constexpr int kMostFailures = 3;

// Both take the file of a plan and yield the status of the task. Why they failed is kept in the plan's place.

/// Renders the part of which the scheduler's environment gives the number; has it started anew, perhaps on
/// another node, after a failure that may not come again.
int renderFarmPart(const std::string &file);
/// Joins the parts to the film, and then removes them.
int joinFarmParts(const std::string &file);

struct TaskEnd {
  std::string why;  ///< it failed; empty: it did not
  std::string said; ///< the end of its standard error
};

/// Renders a part into a file, in a process of its own.
TaskEnd runPart(const FarmPlan &plan, unsigned number, const std::string &file);

/// Why a render failed that said this last: there was no space left.
bool tellsOfFullDisk(const std::string &line);

} // namespace zol::host
