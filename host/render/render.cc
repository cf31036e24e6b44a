#include "host/render/render.h"

#include "host/model/error.h"
#include "host/render/pictures.h"
#include "host/render/sound.h"

#include <algorithm>
#include <utility>

namespace zol::host {

RenderJob::RenderJob(RenderPlan plan)
    : plan_(std::move(plan)),
      library_(plan_.library.empty() ? EffectLibrary::defaultFile() : plan_.library, plan_.host),
      setup_(plan_, library_) {
  checkOutput();
  for (const InputPlan &input : setup_.inputs)
    inputs_.emplace_back(input.file, setup_.sound, plan_);
  settled_ = setup_.sound ? settleSound(plan_, inputs_) : settlePictures(plan_, inputs_);
  for (Input &input : inputs_)
    input.bringTo(settled_.timeline);
  chain_.emplace(setup_, plan_, settled_.timeline, inputs_);
  writer_.emplace(plan_.output, writerOptions());
}

void RenderJob::checkOutput() const {
  const std::string &name = setup_.stages.front().effect->name;
  if (plan_.output.empty())
    throw HostError("no output was named; give one with -o");
  if (plan_.output == "-")
    return;
  if (!setup_.sound && MediaWriter::isSound(plan_.output))
    throw HostError("\"" + name + "\" makes pictures, which \"" + plan_.output + "\" cannot hold");
  if (setup_.sound && MediaWriter::isStill(plan_.output))
    throw HostError("\"" + name + "\" makes sound, which \"" + plan_.output + "\" cannot hold");
}

WriterOptions RenderJob::writerOptions() const {
  const Timeline &timeline = settled_.timeline;
  WriterOptions options;
  options.overwrite = plan_.overwrite;
  options.programs = plan_.programs;
  if (setup_.sound) {
    options.sampleRate = static_cast<int>(timeline.sampleRate);
    options.channels = static_cast<int>(timeline.channels);
    return options;
  }
  options.width = timeline.width;
  options.height = timeline.height;
  options.rate = timeline.rate;
  options.alpha = plan_.alpha != "drop";
  const auto withSound = std::find_if(inputs_.begin(), inputs_.end(), [](const Input &input) {
    return !input.isStream() && input.info()->hasAudio;
  });
  if (withSound != inputs_.end()) {
    options.soundFile = withSound->file();
    options.soundStart = timeline.timeOfFrame(settled_.span.first);
    options.soundDuration = timeline.timeOfFrame(settled_.span.count);
  }
  return options;
}

void RenderJob::run(const Progress &progress) {
  const Input *leading = inputs_.empty() ? nullptr : &inputs_.front();
  const auto toTheEnd = [&](auto loop) {
    while (loop.step(*writer_))
      progress(loop.done(), loop.all());
  };
  if (setup_.sound)
    toTheEnd(SoundLoop(*chain_, settled_.span, leading, plan_));
  else
    toTheEnd(PictureLoop(*chain_, settled_.span, leading));
  writer_->finish();
}

std::vector<std::string> RenderJob::commands() const {
  std::vector<std::string> lines;
  for (const Input &input : inputs_)
    lines.push_back(input.commandLine());
  lines.push_back(writer_->commandLine());
  std::erase(lines, "");
  return lines;
}

std::vector<std::string> RenderJob::notes() { return chain_->notes(); }

} // namespace zol::host
