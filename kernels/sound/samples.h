// Interleaved samples to read from, of any shape.
#pragma once

#include "frame/zol.h"

#include <cstddef>

namespace zol {

/// `frames` frames of `channels` interleaved samples. Readers ask for frames and channels by number and
/// meet silence where there are none, so that a short or narrow block contributes nothing there.
struct AudioSource {
  const float *samples;
  size_t frames;
  unsigned channels;

  [[nodiscard]] bool holds(size_t frame, unsigned channel) const {
    return frame < frames && channel < channels;
  }
  [[nodiscard]] const float &at(size_t frame, unsigned channel) const {
    return samples[frame * channels + channel];
  }
};

inline AudioSource sourceOf(const t_ZoAudio &block) { return {block.Samples, block.Frames, block.Channels}; }

} // namespace zol
