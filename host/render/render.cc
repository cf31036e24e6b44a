#include "host/render/render.h"

#include "host/render/opacity.h"
#include "host/render/pictures.h"
#include "host/render/sound.h"

#include <algorithm>
#include <filesystem>
#include <future>
#include <utility>

namespace zol::host {
std::shared_ptr<const EffectLibrary> libraryOf(const RenderPlan &plan) {
  return std::make_shared<const EffectLibrary>(EffectLibrary::fileFor(plan.library), plan.host);
}

RenderJob::RenderJob(const RenderPlan &plan) : RenderJob(plan, libraryOf(plan)) {}

RenderJob::RenderJob(RenderPlan plan, std::shared_ptr<const EffectLibrary> library)
    : RenderJob(std::move(plan), std::move(library), {}) {}

RenderJob::RenderJob(RenderPlan plan, std::shared_ptr<const EffectLibrary> library,
                     std::optional<JoinedParts> parts)
    : library_(std::move(library)),
      part_(plan.part ? std::optional(recordOf(plan, *library_)) : std::nullopt), joined_(std::move(parts)),
      plan_(part_ ? planOfPart(plan, *part_) : std::move(plan)), setup_(plan_, *library_) {
  checkOutput(plan_, setup_);
  std::vector<std::future<Input>> opened; // all at once: each waits for a child that looks into its file
  for (const InputPlan &input : setup_.inputs)
    opened.push_back(std::async(std::launch::async, [&] { return Input(input, setup_.sound, plan_); }));
  for (std::future<Input> &input : opened)
    inputs_.push_back(input.get());
  settled_ = settle(setup_, plan_, inputs_);
  for (size_t i = 0; i < inputs_.size(); ++i)
    inputs_[i].bringTo(settled_.timeline, setup_.retimed[i]);
  if (part_)
    beginPart();
  chain_.emplace(setup_, plan_, settled_.timeline, inputs_);
  output_ = settleOutput(plan_, setup_, *chain_, inputs_, settled_);
  if (part_) {
    output_.writing.pictures = part_->frames;
    if (!MediaWriter::isSequence(plan_.output))
      output_.writing.tag = {kPartTag, textOf(*part_)};
  }
  if (joined_)
    output_.writing.encoded = joined_->pictures;
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

/// Counts the frames, and leaves those of the part.
void RenderJob::beginPart() {
  Span &span = settled_.span;
  if (plan_.part->all) {
    span.count = static_cast<size_t>(*plan_.part->all);
  } else if (const Input *leading = settled_.leading) {
    const bool reached = span.count == 0 || leading->reaches(span.first + span.count - 1);
    while (reached && span.openEnd && leading->reaches(span.first + span.count))
      ++span.count;
    if (!reached)
      span.count = static_cast<size_t>(std::max<uint64_t>(*leading->length(), span.first)) - span.first;
  }
  cutPart(*part_, span.first, span.count);
  span = {static_cast<size_t>(part_->first), static_cast<size_t>(part_->frames), false};
}

/// Whether the plan must be followed by one chain alone: where services fail at their nth call, where media
/// come through a pipe at other times than their own, and where a shape does, which each chain reads.
bool RenderJob::needsOneThread() const {
  for (size_t i = 0; i < inputs_.size(); ++i)
    if (setup_.retimed[i] && inputs_[i].isStream())
      return true;
  const auto isPipe = [](const auto &setting) {
    std::error_code error;
    return setting.second.starts_with('@') &&
           !std::filesystem::is_regular_file(setting.second.substr(1), error);
  };
  return !plan_.faults.empty() ||
         std::any_of(setup_.stages.begin(), setup_.stages.end(), [&](const StageSetup &stage) {
           return std::any_of(stage.settings.begin(), stage.settings.end(), isPipe);
         });
}

/// Those that share the work, in jobs of so many frames.
ChainThreads RenderJob::threads(size_t frames) {
  ChainThreads threads;
  threads.chain = [this] { return std::make_unique<Chain>(setup_, plan_, settled_.timeline, inputs_); };
  threads.unblock = [this] {
    for (const Input &input : inputs_)
      input.giveUp();
  };
  if (needsOneThread())
    return threads;
  constexpr size_t kOwn = 3; // pictures that an effect works with
  const size_t pictures = setup_.sound ? 0 : inputs_.size() + 2 * setup_.stages.size() + kOwn;
  const Timeline &timeline = settled_.timeline;
  threads.count = threadsFor(plan_.threads, pictures,
                             sizeof(_color_t) * static_cast<size_t>(timeline.width) *
                                 static_cast<size_t>(timeline.height));
  if (threads.count > 1)
    for (Input &input : inputs_)
      input.keepMore(leadOf(threads.count) * frames);
  return threads;
}

void RenderJob::run(const Progress &progress) {
  if (joined_) {
    runJoined(progress);
  } else if (setup_.sound) {
    SoundLoop loop(*chain_, threads(SoundLoop::kRun), settled_.span, settled_.leading, plan_);
    while (loop.step(*writer_))
      progress(loop.done(), loop.all());
  } else {
    runPictures(progress);
  }
  writer_->finish();
  if (part_ && MediaWriter::isSequence(plan_.output))
    keepRecord(plan_.output, *part_);
  else if (MediaWriter::isSequence(plan_.output))
    dropRecords(plan_.output);
  for (const Input &input : inputs_)
    note(input.damage());
  if (soundBeside_)
    for (const Input &input : soundBeside_->inputs())
      note(input.damage());
}

void RenderJob::runPictures(const Progress &progress) {
  writer_->prepare();
  Opacity opacity(output_.watchAlpha, output_.forceOpaque);
  PictureLoop loop(*chain_, threads(1), settled_.span, settled_.leading, opacity);
  if (output_.soundStream)
    inputs_[*output_.soundStream].pictures()->writeSoundTo(writer_->soundBeside());
  for (size_t i = 0; i < inputs_.size(); ++i)
    if (!setup_.retimed[i])
      inputs_[i].pictures()->prepare(settled_.span.first);
  uint64_t sample = output_.soundTimeline.sampleOfFrame(settled_.span.first);
  for (;;) {
    const uint64_t end = output_.soundTimeline.sampleOfFrame(settled_.span.first + loop.done() + 1);
    if (loop.goesOn()) // the sound of a picture comes before it
      writeSound(std::exchange(sample, end), end);
    if (!loop.step(*writer_))
      break;
    progress(loop.done(), loop.all());
  }
  if (part_ && loop.done() != part_->frames)
    throw HostError("only " + std::to_string(loop.done()) + " of the part's " +
                    std::to_string(part_->frames) + " frames came");
  note(opacityNote(plan_, output_, opacity));
}

/// Writes the sound that rendering the pictures would: where more of them were expected, the end is found by
/// one that does not come, and whose sound is written.
void RenderJob::runJoined(const Progress &progress) {
  writer_->prepare();
  const Span &span = settled_.span;
  const uint64_t frames = joined_->frames, end = span.first + frames + (span.count > frames ? 1 : 0);
  for (uint64_t frame = span.first; frame < end; ++frame) {
    writeSound(output_.soundTimeline.sampleOfFrame(frame), output_.soundTimeline.sampleOfFrame(frame + 1));
    progress(std::min(frame + 1 - span.first, frames), frames);
  }
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
