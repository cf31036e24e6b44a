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

namespace {

RenderPlan soundOf(RenderPlan plan, size_t stages) {
  plan.stages.resize(stages);
  plan.noPictures = true;
  return plan;
}

} // namespace

SoundBeside::SoundBeside(const RenderPlan &plan, const ChainSetup &pictures, const EffectLibrary &library,
                         const Timeline &timeline)
    : plan_(soundOf(plan, pictures.sounding)), setup_(plan_, library) {
  for (const InputPlan &input : setup_.inputs)
    inputs_.emplace_back(input, true, plan_).bringTo(timeline, true);
  chain_.emplace(setup_, plan_, timeline, inputs_);
}

void SoundBeside::write(uint64_t from, uint64_t to, MediaWriter &writer) {
  const Timeline &timeline = chain_->timeline();
  const auto samples = chain_->sound(timeline.timeOfSample(from), timeline.timeOfSample(to));
  if (samples->record()->Frames > 0)
    writer.writeSamples(samples->record()->Samples, samples->record()->Frames);
  chain_->release();
}

std::vector<std::string> SoundBeside::commandLines() const {
  std::vector<std::string> lines;
  for (const Input &input : inputs_)
    lines.push_back(input.commandLine());
  return lines;
}

} // namespace zol::host
