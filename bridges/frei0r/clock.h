// What time it is, from hosts that disagree on the unit.
#pragma once

#include "bridges/frei0r/caller.h"

#include <cmath>

namespace zol::bridge {

class Clock {
public:
  explicit Clock(Caller caller) : caller_(caller) {}

  /// The time in seconds of the next frame, of which the host says `told`. From the first time on that cannot
  /// be one, or that does not follow the one before as frames do, frames are counted instead.
  double next(double told) {
    const double second = caller_ == Caller::ffmpeg ? told / 1000 : told;
    const bool plausible = std::isfinite(second) && second >= 0 && second < kLongest;
    const bool follows =
        frames_ == 0 || caller_ == Caller::mlt || (second > last_ && second <= last_ + kLongestStep);
    told_ = told_ && plausible && follows;
    last_ = second;
    const double counted = static_cast<double>(frames_++) / kCountedRate;
    return told_ ? second : counted;
  }

private:
  static constexpr double kCountedRate = 25, kLongestStep = 1, kLongest = 1e7;

  Caller caller_;
  long long frames_ = 0;
  double last_ = 0;
  bool told_ = true;
};

} // namespace zol::bridge
