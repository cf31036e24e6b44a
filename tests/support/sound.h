// Audio blocks for tests.
#pragma once

#include "host/services/session.h"
#include "tests/support/test_clip.h"

#include <utility>
#include <vector>

namespace zol::test {

/// A clip that delivers the same samples for every block.
class Sound {
public:
  Sound(std::vector<float> samples, uint16_t channels)
      : samples_(std::move(samples)), block_{{},
                                             channels == 0
                                                 ? 0
                                                 : static_cast<uint32_t>(samples_.size() / channels),
                                             48000,
                                             channels,
                                             samples_.data()} {}
  Sound(const Sound &) = delete;
  Sound &operator=(const Sound &) = delete;

  SoundClip clip{&block_};

private:
  std::vector<float> samples_;
  t_ZoAudio block_;
};

/// Sets the block to render: `frames` frames at `rate` from `start` on, in a clip of one second.
inline void setBlock(host::Session &session, double start, unsigned frames, unsigned rate,
                     unsigned channels) {
  session.info()->BlockStart = start;
  session.info()->BlockEnd = start + (rate == 0 ? 0.0 : static_cast<double>(frames) / rate);
  session.info()->AudioFormat[0] = rate;
  session.info()->AudioFormat[1] = channels;
}

/// The samples of a block that a render returned, taken out of the host's pool; none for null.
inline std::vector<float> taken(host::Session &session, t_ZoAudio *block) {
  const auto buffer = session.audio.take(block);
  if (buffer == nullptr)
    return {};
  const t_ZoAudio &record = *buffer->record();
  return {record.Samples, record.Samples + size_t{record.Frames} * record.Channels};
}

} // namespace zol::test
