// What all stages of a render share: sizes, rates, the length that the effects span.
#pragma once

#include "frame/zol.h"
#include "host/model/rational.h"

#include <cstdint>

namespace zol::host {

/// The effects span `duration` seconds from time 0.
struct Timeline {
  int width = 720, height = 576;
  Rational rate = 25; ///< frames a second
  double pixelAspect = 1;
  double duration = 1;
  unsigned sampleRate = 48000, channels = 2;
  /// The part that this is of the size in whose pixels geometries are drawn.
  double drawingScaleX = 1, drawingScaleY = 1;

  /// Writes all of it into a context.
  void describe(t_ZoHostInfo &info) const;

  [[nodiscard]] double timeOfFrame(uint64_t frame) const { return timeOf(frame, rate); }
  [[nodiscard]] double timeOfSample(uint64_t sample) const {
    return static_cast<double>(sample) / static_cast<double>(sampleRate);
  }
  /// The first sample of a frame.
  [[nodiscard]] uint64_t sampleOfFrame(uint64_t frame) const {
    return samplesBefore(frame, rate, sampleRate);
  }
};

} // namespace zol::host
