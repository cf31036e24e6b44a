// The part of a source that an output pixel stands for, and the probes that are taken of it.
#pragma once

#include "kernels/warp/projection.h"

namespace zol {

/// Probes along one side of a footprint: their weights rise evenly to the middle and fall, as a tent that
/// ends where the side does, or they are two of the same.
struct ProbeLine {
  int count = 1;
  double apart = 0; ///< from one to the next, in pixels
  Point along{};    ///< a step of one pixel

  [[nodiscard]] double distance(int i) const { return (i - (count - 1) * 0.5) * apart; }
  [[nodiscard]] int weight(int i) const {
    return count == 2 ? 1 : 1 + (i < count - 1 - i ? i : count - 1 - i);
  }
  [[nodiscard]] int totalWeight() const { return count == 2 ? 2 : (count + 1) / 2 * ((count + 1) / 2); }
};

/// A mean of probes, each as wide as the narrower side as far as four by four pixels reach.
struct Footprint {
  static constexpr double kLongest = 64; ///< a side, in pixels

  Footprint() = default;
  /// Of the changes of the place in the source for a pixel's step to the right and down.
  Footprint(const Point &right, const Point &down, double longest = kLongest);

  [[nodiscard]] bool isOneProbe() const { return across.count == 1 && downwards.count == 1; }

  int radius = 64; ///< of a probe, in 1/64 pixel: 64 to 128
  ProbeLine across, downwards;
};

} // namespace zol
