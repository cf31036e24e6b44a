// How far a render on a cluster is.
#pragma once

#include "host/farm/error.h"
#include "host/farm/plan.h"
#include "host/farm/slurm.h"

#include <string>
#include <vector>

namespace zol::host {

struct FarmState {
  struct Failure {
    unsigned part; ///< 0: the joining
    FarmEnd end;
    std::string line; ///< what and why, for the user
  };
  unsigned parts = 0, done = 0, running = 0, waiting = 0;
  std::string reason; ///< why a part waits, as the scheduler has it
  bool partsActive = false, joinActive = false;
  bool finished = false;
  std::vector<Failure> failures; ///< parts that are not tried any more

  [[nodiscard]] bool active() const { return partsActive || joinActive; }
};

/// Of the tasks that the scheduler tells of and of what stands in the place.
FarmState stateOf(const FarmPlace &place, const FarmPlan &plan, const std::vector<SlurmTask> &tasks);

/// Of one that is neither active nor finished: why.
FarmError endOf(const FarmState &state, const FarmPlace &place);

/// "3 running, 4 waiting (Resources), 1 failed": all that there is.
std::string textOf(const FarmState &state);

} // namespace zol::host
