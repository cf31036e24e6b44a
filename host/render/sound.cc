#include "host/render/sound.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zol::host {

SoundLoop::SoundLoop(Chain &chain, ChainThreads threads, const Span &span, const Input *leading,
                     const RenderPlan &plan)
    : chain_(chain), threads_(std::move(threads)), leading_(leading), block_(plan.block),
      openEnd_(span.openEnd), frame_(span.first), first_(chain.timeline().sampleOfFrame(span.first)),
      begun_(first_), at_(first_) {
  const Timeline &timeline = chain.timeline();
  end_ = span.count == 0 ? 0
         : plan.frames   ? timeline.sampleOfFrame(span.first + span.count)
                         : static_cast<uint64_t>(std::floor(timeline.duration * timeline.sampleRate + 0.5));
}

/// As far as can be told before it is rendered.
std::optional<SoundLoop::Block> SoundLoop::nextBlock() {
  const bool behind = begun_ >= end_;
  if (behind && !(openEnd_ && leading_->reaches(begun_)))
    return std::nullopt;
  uint64_t stop = begun_ + block_.value_or(0);
  while (stop <= begun_) // a frame may be shorter than a sample
    stop = chain_.timeline().sampleOfFrame(++frame_);
  if (!openEnd_)
    stop = std::min(stop, end_);
  const uint64_t from = std::exchange(begun_, stop);
  return Block{from, stop, behind && leading_->samples()->meetsEnd(from, 1)};
}

std::optional<SoundLoop::Run> SoundLoop::nextRun() {
  Run run;
  while (run.empty() || run.back().to - run.front().from < kRun) {
    const auto block = nextBlock();
    if (!block)
      break;
    run.push_back(*block);
  }
  return run.empty() ? std::nullopt : std::optional(std::move(run));
}

SoundLoop::Made SoundLoop::make(Chain &chain, const Block &block) const {
  const Timeline &timeline = chain.timeline();
  auto samples = chain.sound(timeline.timeOfSample(block.from), timeline.timeOfSample(block.to));
  chain.release();
  return {block, std::move(samples), block.metEnd || chain.metEnd(leading_)};
}

std::optional<SoundLoop::Made> SoundLoop::next() {
  if (threads_.count == 1 || at_ == first_) {
    const auto block = nextBlock();
    return block ? std::optional(make(chain_, *block)) : std::nullopt;
  }
  if (others_ == nullptr)
    others_ = share<Run, Made>(
        threads_, [this] { return nextRun(); },
        [this](Chain &chain, const Run &run, const auto &handOn) {
          for (const Block &block : run)
            handOn(make(chain, block));
        });
  return others_->take();
}

bool SoundLoop::step(MediaWriter &writer) {
  const std::optional<Made> made = next();
  if (!made)
    return false;
  uint64_t frames = made->samples->record()->Frames;
  metEnd_ = metEnd_ || made->metEnd;
  if (metEnd_)
    if (const auto length = leading_->length())
      frames = std::min(frames, *length - std::min(*length, at_));
  if (frames > 0)
    writer.writeSamples(made->samples->record()->Samples, static_cast<size_t>(frames));
  at_ = made->block.to;
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
