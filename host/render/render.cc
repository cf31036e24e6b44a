#include "host/render/render.h"

#include "host/media/media_clip.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/render/stage.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace zol::host {
namespace {

constexpr double kDefaultDuration = 5; // of sources and stills, in seconds
constexpr double kMostFrames = 1e9;

/// An input file and what is known of it before it is opened.
struct InputFile {
  std::string file;
  MediaInfo info;
  bool raw = false;                 // standard input without a header
  std::shared_ptr<VideoClip> video; // standard input that tells its own format: it cannot be looked at twice
  std::shared_ptr<AudioClip> audio;
};

/// How long the effects span, and which frames of that are rendered.
struct Span {
  double duration;
  size_t first, count;
  bool openEnd = false; // up to the end of standard input, wherever that is
};

size_t framesIn(double duration, double rate) {
  const double frames = std::round(duration * rate);
  if (!(frames < kMostFrames))
    throw HostError("that is too long to render");
  return frames < 1 ? 1 : static_cast<size_t>(frames);
}

Span spanOf(const RenderPlan &plan, double rate, double inputDuration, bool still) {
  double duration = plan.duration.value_or(inputDuration);
  if (duration <= 0 && plan.frames)
    duration = static_cast<double>(plan.frames->second + 1) / rate;
  if (duration <= 0)
    duration = still ? 1 / rate : kDefaultDuration;
  const size_t all = framesIn(duration, rate);
  Span span{duration, 0, still ? 1 : all};
  if (plan.frames) {
    if (plan.frames->first > plan.frames->second)
      throw HostError("--frames: the first frame comes after the last");
    if (plan.frames->first >= all)
      throw HostError("--frames: there are only " + std::to_string(all) + " frames, from 0 on");
    span.first = plan.frames->first;
    span.count = std::min(plan.frames->second, all - 1) - span.first + 1;
  }
  if (still && span.count != 1)
    throw HostError("\"" + plan.output + "\" holds a single picture; choose one with --frames N-N");
  return span;
}

} // namespace

struct RenderJob::Parts {
  explicit Parts(RenderPlan p) : plan(std::move(p)), library(libraryFile(), plan.host) {
    if (plan.stages.empty())
      throw HostError("no effect was named");
    for (const StagePlan &stage : plan.stages)
      effects.push_back(&library.effect(stage.effect));
    for (const Effect *effect : effects) {
      Stage::checkRenders(*effect);
      if (Stage::isSound(*effect) != Stage::isSound(*effects.front()))
        throw HostError("\"" + effect->name + "\" and \"" + effects.front()->name +
                        "\" cannot be chained: one makes pictures, the other sound");
    }
    sound = Stage::isSound(*effects.front());
    checkOutput();
    separateInputSettings();
    for (const StagePlan &stage : plan.stages)
      for (const std::string &file : stage.inputs)
        sources.push_back(look(file));
    for (const auto &assignment : inputSettings)
      sources.push_back(look(assignment.file));
    if (sound)
      planSound();
    else
      planPictures();
    buildStages();
    openWriter();
  }

  std::string libraryFile() const {
    return plan.library.empty() ? EffectLibrary::defaultFile() : plan.library;
  }

  void checkOutput() const {
    if (plan.output.empty())
      throw HostError("no output was named; give one with -o");
    if (plan.output == "-")
      return;
    if (!sound && MediaWriter::isSound(plan.output))
      throw HostError("\"" + effects.front()->name + "\" makes pictures, which \"" + plan.output +
                      "\" cannot hold");
    if (sound && MediaWriter::isStill(plan.output))
      throw HostError("\"" + effects.front()->name + "\" makes sound, which \"" + plan.output +
                      "\" cannot hold");
  }

  /// `--set Background=file` names a file for an input field: those are opened like other inputs.
  void separateInputSettings() {
    for (size_t i = 0; i < plan.stages.size(); ++i)
      std::erase_if(plan.stages[i].settings, [&](const auto &setting) {
        for (size_t field = 0; field < effects[i]->fields.size(); ++field) {
          const Field &declared = effects[i]->fields[field];
          if (declared.type == FieldType::input && declared.name == setting.first) {
            inputSettings.push_back({i, static_cast<int>(field), setting.second});
            return true;
          }
        }
        return false;
      });
  }

  /// Standard input is raw where the words that raw needs are given, else what ffmpeg can tell of it.
  InputFile look(const std::string &file) const {
    InputFile source{file, {}, false, nullptr, nullptr};
    if (file != "-") {
      source.info = probe(file, plan.programs);
    } else if (sound ? plan.sampleRate && plan.channels : plan.size.has_value()) {
      source.raw = true;
      return source;
    } else if (sound) {
      source.audio = std::make_shared<AudioClip>(file, AudioReaderOptions{.programs = plan.programs});
      source.info = source.audio->reader().info();
    } else {
      source.video = std::make_shared<VideoClip>(file, VideoReaderOptions{.programs = plan.programs});
      source.info = source.video->reader().info();
    }
    if (!(sound ? source.info.hasAudio : source.info.hasVideo))
      throw HostError("\"" + file + "\" holds no " + (sound ? "sound" : "pictures"));
    return source;
  }

  /// What comes through a pipe is rendered to its end, unless the words say how long.
  bool endIsUnknown(double duration) const {
    return !sources.empty() && sources.front().file == "-" && !sources.front().info.still && duration <= 0 &&
           !plan.duration && !plan.frames && !MediaWriter::isStill(plan.output);
  }

  void planPictures() {
    timeline.width = 720;
    timeline.height = 576;
    double duration = 0;
    for (const InputFile &source : sources)
      if (!source.raw) {
        timeline.width = source.info.width;
        timeline.height = source.info.height;
        timeline.pixelAspect = source.info.pixelAspect;
        break;
      }
    for (const InputFile &source : sources)
      if (!source.raw && !source.info.still) {
        timeline.rate = source.info.frameRate;
        duration = source.info.duration;
        break;
      }
    if (plan.size)
      std::tie(timeline.width, timeline.height) = *plan.size;
    if (timeline.width < 1 || timeline.height < 1 || timeline.width > INT16_MAX ||
        timeline.height > INT16_MAX)
      throw HostError("a picture of " + std::to_string(timeline.width) + "x" +
                      std::to_string(timeline.height) + " cannot be made; sides go from 1 to 32767");
    timeline.rate = plan.rate.value_or(timeline.rate);
    span = spanOf(plan, timeline.rate, duration, MediaWriter::isStill(plan.output));
    span.openEnd = endIsUnknown(duration);
    timeline.duration = span.duration;
  }

  void planSound() {
    double duration = 0;
    if (!sources.empty() && !sources.front().raw) {
      timeline.sampleRate = static_cast<unsigned>(sources.front().info.sampleRate);
      timeline.channels = static_cast<unsigned>(sources.front().info.channels);
      duration = sources.front().info.duration;
    }
    timeline.sampleRate = plan.sampleRate.value_or(timeline.sampleRate);
    timeline.channels = plan.channels.value_or(timeline.channels);
    timeline.rate = plan.rate.value_or(timeline.rate);
    span = spanOf(plan, timeline.rate, duration, false);
    span.openEnd = endIsUnknown(duration);
    timeline.duration = span.duration;
    block =
        plan.block.value_or(std::max<size_t>(1, static_cast<size_t>(timeline.sampleRate / timeline.rate)));
    if (block == 0)
      throw HostError("--block: a block has at least one sample frame");
  }

  Clip *open(const InputFile &source) {
    if (source.audio != nullptr || source.video != nullptr)
      return openPiped(source);
    if (sound) {
      AudioReaderOptions options;
      options.sampleRate = static_cast<int>(timeline.sampleRate);
      options.channels = static_cast<int>(timeline.channels);
      options.raw = source.raw;
      options.rawRate = options.sampleRate;
      options.rawChannels = options.channels;
      options.programs = plan.programs;
      audioClips.push_back(std::make_shared<AudioClip>(source.file, options));
      return audioClips.back().get();
    }
    VideoReaderOptions options;
    options.width = timeline.width;
    options.height = timeline.height;
    options.raw = source.raw;
    options.rawWidth = timeline.width;
    options.rawHeight = timeline.height;
    options.rawRate = timeline.rate;
    options.programs = plan.programs;
    videoClips.push_back(std::make_shared<VideoClip>(source.file, options));
    return videoClips.back().get();
  }

  Clip *openPiped(const InputFile &source) {
    if (sound) {
      const AudioReader &reader = source.audio->reader();
      if (reader.sampleRate() != static_cast<int>(timeline.sampleRate) ||
          reader.channels() != static_cast<int>(timeline.channels))
        throw HostError("standard input has another rate or other channels than the render");
      audioClips.push_back(source.audio);
      return source.audio.get();
    }
    if (source.video->reader().width() != timeline.width ||
        source.video->reader().height() != timeline.height)
      throw HostError("standard input has another picture size than the render");
    videoClips.push_back(source.video);
    return source.video.get();
  }

  void buildStages() {
    size_t next = 0;
    for (size_t i = 0; i < effects.size(); ++i) {
      std::vector<Clip *> clips;
      if (i > 0) {
        stageClips.push_back(std::make_unique<StageClip>(*stages.back()));
        clips.push_back(stageClips.back().get());
      }
      for (size_t k = 0; k < plan.stages[i].inputs.size(); ++k)
        clips.push_back(open(sources[next++]));
      stages.push_back(std::make_unique<Stage>(*effects[i], plan.host, timeline, plan.realTime,
                                               clips.empty() ? nullptr : clips.front()));
      Instance &instance = stages.back()->instance();
      instance.assignInputs(clips);
      for (const auto &[field, value] : plan.stages[i].settings)
        instance.set(field, value);
      for (const PlannedFault &fault : plan.faults)
        instance.session().faults.failAt(fault.service,
                                         instance.session().faults.calls(fault.service) + fault.nth);
    }
    for (const auto &assignment : inputSettings)
      stages[assignment.stage]->instance().assignInput(assignment.field, 0, open(sources[next++]));
  }

  void openWriter() {
    WriterOptions options;
    options.overwrite = plan.overwrite;
    options.programs = plan.programs;
    if (sound) {
      options.sampleRate = static_cast<int>(timeline.sampleRate);
      options.channels = static_cast<int>(timeline.channels);
    } else {
      options.width = timeline.width;
      options.height = timeline.height;
      options.rate = timeline.rate;
      options.alpha = plan.keepAlpha;
      const auto withSound = std::find_if(sources.begin(), sources.end(), [](const InputFile &source) {
        return source.info.hasAudio && source.file != "-";
      });
      if (withSound != sources.end()) {
        options.soundFile = withSound->file;
        options.soundStart = static_cast<double>(span.first) / timeline.rate;
        options.soundDuration = static_cast<double>(span.count) / timeline.rate;
      }
    }
    writer = std::make_unique<MediaWriter>(plan.output, options);
  }

  void release() {
    for (const auto &clip : videoClips)
      clip->release();
    for (const auto &clip : audioClips)
      clip->release();
    for (const auto &clip : stageClips)
      clip->release();
  }

  void runPictures(const Progress &progress) {
    for (size_t i = 0; span.openEnd || i < span.count; ++i) {
      const double time = static_cast<double>(span.first + i) / timeline.rate;
      const auto picture = stages.back()->video(time);
      if (span.openEnd && videoClips.front()->endsBefore(time))
        break;
      writer->writeFrame(picture->record()->Pixels);
      release();
      progress(i + 1, std::max(i + 1, span.openEnd ? 0 : span.count));
    }
  }

  void runSound(const Progress &progress) {
    const auto sampleAt = [&](size_t frame) {
      return static_cast<uint64_t>(
          std::floor(static_cast<double>(frame) / timeline.rate * timeline.sampleRate + 0.5));
    };
    const uint64_t first = sampleAt(span.first);
    const uint64_t end = plan.frames
                             ? sampleAt(span.first + span.count)
                             : static_cast<uint64_t>(std::floor(span.duration * timeline.sampleRate + 0.5));
    for (uint64_t at = first; span.openEnd || at < end; at += block) {
      const uint64_t stop = span.openEnd ? at + block : std::min<uint64_t>(at + block, end);
      const auto sample = [&](uint64_t index) { return static_cast<double>(index) / timeline.sampleRate; };
      const auto samples = stages.back()->audio(sample(at), sample(stop));
      size_t frames = samples->record()->Frames;
      const auto inPipe = span.openEnd ? audioClips.front()->reader().frameCount() : std::nullopt;
      if (inPipe)
        frames = static_cast<size_t>(std::min<uint64_t>(frames, *inPipe - std::min(*inPipe, at)));
      if (frames > 0)
        writer->writeSamples(samples->record()->Samples, frames);
      release();
      progress(stop - first, span.openEnd ? stop - first : end - first);
      if (inPipe && *inPipe <= stop)
        break;
    }
  }

  struct InputSetting {
    size_t stage;
    int field;
    std::string file;
  };

  RenderPlan plan;
  EffectLibrary library;
  std::vector<const Effect *> effects;
  bool sound = false;
  std::vector<InputSetting> inputSettings;
  std::vector<InputFile> sources;
  Timeline timeline;
  Span span{};
  size_t block = 0;
  std::vector<std::shared_ptr<VideoClip>> videoClips;
  std::vector<std::shared_ptr<AudioClip>> audioClips;
  std::vector<std::unique_ptr<StageClip>> stageClips;
  std::vector<std::unique_ptr<Stage>> stages;
  std::unique_ptr<MediaWriter> writer;
};

RenderJob::RenderJob(RenderPlan plan) : parts_(std::make_unique<Parts>(std::move(plan))) {}
RenderJob::~RenderJob() = default;

void RenderJob::run(const Progress &progress) {
  if (parts_->sound)
    parts_->runSound(progress);
  else
    parts_->runPictures(progress);
  parts_->writer->finish();
}

std::vector<std::string> RenderJob::commands() const {
  std::vector<std::string> lines;
  for (const auto &clip : parts_->videoClips)
    lines.push_back(clip->reader().commandLine());
  for (const auto &clip : parts_->audioClips)
    lines.push_back(clip->reader().commandLine());
  lines.push_back(parts_->writer->commandLine());
  std::erase(lines, "");
  return lines;
}

std::vector<std::string> RenderJob::notes() const {
  std::vector<std::string> lines;
  for (const auto &stage : parts_->stages)
    lines.insert(lines.end(), stage->instance().notes().begin(), stage->instance().notes().end());
  return lines;
}

std::string RenderJob::summary() const {
  const Timeline &timeline = parts_->timeline;
  if (parts_->sound)
    return std::to_string(timeline.sampleRate) + " Hz, " + std::to_string(timeline.channels) + " channels, " +
           numberText(std::round(timeline.duration * 1000) / 1000) + " s";
  return std::to_string(timeline.width) + "x" + std::to_string(timeline.height) + ", " +
         std::to_string(parts_->span.count) + (parts_->span.count == 1 ? " frame" : " frames") + " at " +
         numberText(std::round(timeline.rate * 1000) / 1000) + " a second";
}

} // namespace zol::host
