// The inputs of effects.
#pragma once

#include "frame/zol.h"

namespace zol::host {

/// What an input handle names: something that delivers pictures or sound. What it hands out stays its own
/// and lives until release().
class Clip {
public:
  Clip() = default;
  Clip(const Clip &) = delete;
  Clip &operator=(const Clip &) = delete;
  virtual ~Clip() = default;
  /// The frame at a time in seconds, at the given size where the clip can be scaled; null on failure.
  virtual pic *frame(double time, int width, int height) = 0;
  /// The sound of a stretch of time in seconds; null on failure.
  virtual t_ZoAudio *audio(double from, double to) = 0;
  /// Fills in what is known of the clip as a whole; false where nothing is.
  virtual bool describe(t_ZoMediaInfo &) const { return false; }
  /// Takes back everything that was handed out.
  virtual void release() {}
};

} // namespace zol::host
