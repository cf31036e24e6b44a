// How far a file reaches, from the times of its packets: nothing is decoded.
#pragma once

#include "host/media/probe.h"

#include <optional>

namespace zol::host {

struct Extent {
  double end = 0;     ///< Of the last packet, in seconds from the beginning of the file.
  bool jumps = false; ///< Times begin anew within it, as in files that were put one behind another.
};

/// Of its pictures, or its sound where it has none. Nothing where that would take too long.
std::optional<Extent> measure(const InputAddress &input, const MediaInfo &info,
                              const MediaPrograms &programs);

} // namespace zol::host
