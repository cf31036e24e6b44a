// How a render on a cluster ends other than well.
#pragma once

#include "host/model/error.h"

#include <string>

namespace zol::host {

/// Statuses of the command, beyond the 1 of other failures.
enum class FarmEnd : int { noSlurm = 3, noSharedFolder = 4, partFailed = 5, cancelled = 6, diskFull = 7 };

struct FarmError : HostError {
  FarmError(FarmEnd why, const std::string &line) : HostError(line), end(why) {}
  FarmEnd end;
};

} // namespace zol::host
