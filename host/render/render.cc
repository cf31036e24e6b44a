#include "host/render/render.h"

#include "host/render/opacity.h"
#include "host/render/pictures.h"
#include "host/render/sound.h"

#include <algorithm>
#include <future>
#include <utility>

namespace zol::host {
namespace {

std::shared_ptr<const EffectLibrary> libraryOf(const RenderPlan &plan) {
  return std::make_shared<EffectLibrary>(plan.library.empty() ? EffectLibrary::defaultFile() : plan.library,
                                         plan.host);
}

} // namespace

RenderJob::RenderJob(RenderPlan plan) : RenderJob(plan, libraryOf(plan)) {}

RenderJob::RenderJob(RenderPlan plan, std::shared_ptr<const EffectLibrary> library)
    : plan_(std::move(plan)), library_(std::move(library)), setup_(plan_, *library_) {
  checkOutput(plan_, setup_);
  std::vector<std::future<Input>> opened; // all at once: each waits for a child that looks into its file
  for (const InputPlan &input : setup_.inputs)
    opened.push_back(std::async(std::launch::async, [&] { return Input(input, setup_.sound, plan_); }));
  for (std::future<Input> &input : opened)
    inputs_.push_back(input.get());
  settled_ = settle(setup_, plan_, inputs_);
  for (size_t i = 0; i < inputs_.size(); ++i)
    inputs_[i].bringTo(settled_.timeline, setup_.retimed[i]);
  chain_.emplace(setup_, plan_, settled_.timeline, inputs_);
  output_ = settleOutput(plan_, setup_, *chain_, inputs_, settled_);
  writer_.emplace(plan_.output, output_.writing);
  if (!output_.voices.empty())
    crossfade_.emplace(output_.voices, output_.voiceSources, output_.soundTimeline, plan_.programs);
  if (output_.ownSound)
    soundBeside_.emplace(plan_, setup_, *library_, output_.soundTimeline);
  for (const std::string &line : chain_->notes())
    note(line);
  for (const Input &input : inputs_)
    for (const std::string &line : input.notes())
      note(line);
  for (const std::string &line : output_.notes)
    note(line);
}

void RenderJob::run(const Progress &progress) {
  if (setup_.sound) {
    SoundLoop loop(*chain_, settled_.span, settled_.leading, plan_);
    while (loop.step(*writer_))
      progress(loop.done(), loop.all());
  } else {
    runPictures(progress);
  }
  writer_->finish();
  for (const Input &input : inputs_)
    note(input.damage());
  if (soundBeside_)
    for (const Input &input : soundBeside_->inputs())
      note(input.damage());
}

void RenderJob::runPictures(const Progress &progress) {
  writer_->prepare();
  if (output_.soundStream)
    inputs_[*output_.soundStream].pictures()->writeSoundTo(writer_->soundBeside());
  for (size_t i = 0; i < inputs_.size(); ++i)
    if (!setup_.retimed[i])
      inputs_[i].pictures()->prepare(settled_.span.first);
  Opacity opacity(output_.watchAlpha, output_.forceOpaque);
  PictureLoop loop(*chain_, settled_.span, settled_.leading, opacity);
  uint64_t sample = output_.soundTimeline.sampleOfFrame(settled_.span.first);
  for (;;) {
    const uint64_t end = output_.soundTimeline.sampleOfFrame(settled_.span.first + loop.done() + 1);
    if (loop.goesOn()) // the sound of a picture comes before it
      writeSound(std::exchange(sample, end), end);
    if (!loop.step(*writer_))
      break;
    progress(loop.done(), loop.all());
  }
  note(opacityNote(plan_, output_, opacity));
}

void RenderJob::writeSound(uint64_t from, uint64_t to) {
  if (crossfade_)
    crossfade_->write(from, to, *writer_);
  if (soundBeside_)
    soundBeside_->write(from, to, *writer_);
}

std::vector<std::string> RenderJob::commands() const {
  std::vector<std::string> lines;
  const auto add = [&](std::vector<std::string> more) {
    lines.insert(lines.end(), more.begin(), more.end());
  };
  if (output_.soundStream)
    inputs_[*output_.soundStream].pictures()->writeSoundTo(output_.writing.companion.file);
  for (const Input &input : inputs_)
    lines.push_back(input.commandLine());
  if (crossfade_)
    add(crossfade_->commandLines());
  if (soundBeside_)
    add(soundBeside_->commandLines());
  add(writer_->commandLines());
  return lines;
}

void RenderJob::note(const std::string &line) {
  if (!line.empty() && known_.insert(line).second)
    notes_.push_back(line);
}

std::vector<std::string> RenderJob::notes() { return std::exchange(notes_, {}); }

} // namespace zol::host
