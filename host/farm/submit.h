// Hands a film to the cluster, anew or where it was left.
#pragma once

#include "host/farm/plan.h"
#include "host/farm/state.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

struct FarmRequest {
  RenderPlan render;             ///< as the words say
  std::optional<unsigned> parts; ///< nothing: from what a frame costs
  std::string partition, time;
  std::string within; ///< the folder for the work; empty: the film's
};

struct Submitted {
  FarmPlace place;
  FarmPlan plan;
  bool there = false;             ///< the film is finished already
  bool underWay = false;          ///< its jobs were submitted before
  unsigned kept = 0;              ///< parts that were complete before
  std::vector<std::string> notes; ///< of the render
};

/// Submits what is missing: a job with a task for each part, and one that joins them. Throws HostError with
/// one clear line.
Submitted submitFarm(const FarmRequest &request);

/// What the scheduler and the place tell at the moment. Throws FarmError where the scheduler does not answer.
FarmState stateNow(const FarmPlace &place, const FarmPlan &plan);

/// Ends what is under way, and waits until it has ended. Complete parts stay. Throws HostError where nothing
/// is under way.
FarmState cancelFarm(const FarmPlace &place);

/// Sleeps; throws Interrupted when asked to stop.
void pauseFor(double seconds);

/// Parts of a film of so many frames, each within a minute or a few: long enough for its start to weigh
/// little, short enough for a node's death to cost little.
unsigned partsFor(uint64_t frames, double secondsAFrame);

} // namespace zol::host
