// What a shutter lets in while it is open: a clip at several moments, averaged.
#pragma once

#include "frame/zol.h"

namespace zol {

inline constexpr int kMostExposures = 32;

struct Shutter {
  double open;  ///< in frames; more than 0
  double phase; ///< 1: opens at the frame's time; -1: closes then
  int samples;  ///< 2 to kMostExposures

  /// When a sample is taken, in seconds.
  [[nodiscard]] double time(int sample, double frameTime, double frameRate) const {
    return frameTime + open / frameRate * ((sample + 0.5) / samples - 0.5 + phase / 2);
  }
};

/// The average of what the input gives at each moment: null, after a message where memory runs out, when
/// nothing can be had or the host wants to stop. The host's frame rate is finite and more than 0.
pic *exposeInput(t_ZoHostInfo *host, void *input, const Shutter &shutter);

/// The same of moments between the input's frames, into which blocks are moved. Frames of different places
/// are exposed as they are.
pic *exposeBetweenFrames(t_ZoHostInfo *host, void *input, const Shutter &shutter);

} // namespace zol
