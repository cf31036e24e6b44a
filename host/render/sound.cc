#include "host/render/sound.h"

#include <algorithm>
#include <cmath>

namespace zol::host {

SoundLoop::SoundLoop(Chain &chain, const Span &span, const Input *leading, const RenderPlan &plan)
    : chain_(chain), leading_(leading), block_(plan.block), openEnd_(span.openEnd), frame_(span.first),
      first_(chain.timeline().sampleOfFrame(span.first)), at_(first_) {
  const Timeline &timeline = chain.timeline();
  end_ = span.count == 0 ? 0
         : plan.frames   ? timeline.sampleOfFrame(span.first + span.count)
                         : static_cast<uint64_t>(std::floor(timeline.duration * timeline.sampleRate + 0.5));
}

/// Where the block that begins now ends.
uint64_t SoundLoop::nextStop() {
  uint64_t stop = at_ + block_.value_or(0);
  while (stop <= at_) // a frame may be shorter than a sample
    stop = chain_.timeline().sampleOfFrame(++frame_);
  return openEnd_ ? stop : std::min(stop, end_);
}

bool SoundLoop::step(MediaWriter &writer) {
  if (at_ >= end_ && !(openEnd_ && leading_->reaches(at_)))
    return false;
  const uint64_t stop = nextStop();
  const auto samples =
      chain_.sound(chain_.timeline().timeOfSample(at_), chain_.timeline().timeOfSample(stop));
  uint64_t frames = samples->record()->Frames;
  if (leading_ != nullptr)
    if (const auto length = leading_->length())
      frames = std::min(frames, *length - std::min(*length, at_));
  if (frames > 0)
    writer.writeSamples(samples->record()->Samples, static_cast<size_t>(frames));
  chain_.release();
  at_ = stop;
  return frames > 0;
}

} // namespace zol::host
