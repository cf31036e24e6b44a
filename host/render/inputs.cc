#include "host/render/inputs.h"

#include "host/media/source.h"
#include "host/model/error.h"

#include <utility>

namespace zol::host {

Input::Input(const std::string &file, bool sound, const RenderPlan &plan)
    : file_(file), sound_(sound),
      raw_(file == "-" && (sound ? plan.sampleRate && plan.channels : plan.size.has_value())), fit_(plan.fit),
      programs_(plan.programs) {
  if (raw_)
    return;
  Source source(file);
  const MediaInfo &info = source.look(programs_);
  if (!source.isStream() && !(sound ? info.hasAudio : info.hasVideo))
    throw HostError("\"" + file + "\" holds no " + (sound ? "sound" : "pictures"));
  if (sound)
    samples_ = std::make_unique<AudioReader>(std::move(source), AudioReaderOptions{.programs = programs_});
  else
    pictures_ = std::make_unique<VideoReader>(std::move(source), VideoReaderOptions{.programs = programs_});
}

void Input::bringTo(const Timeline &timeline) {
  const int sampleRate = static_cast<int>(timeline.sampleRate),
            channels = static_cast<int>(timeline.channels);
  if (raw_ && sound_)
    samples_ = std::make_unique<AudioReader>(
        file_, AudioReaderOptions{
                   .raw = true, .rawRate = sampleRate, .rawChannels = channels, .programs = programs_});
  else if (raw_)
    pictures_ = std::make_unique<VideoReader>(file_, VideoReaderOptions{.raw = true,
                                                                        .rawWidth = timeline.width,
                                                                        .rawHeight = timeline.height,
                                                                        .rawRate = timeline.rate,
                                                                        .programs = programs_});
  else if (sound_)
    samples_->convertTo(sampleRate, channels);
  else
    pictures_->scaleTo({timeline.width, timeline.height, timeline.pixelAspect}, fit_);
}

const MediaInfo *Input::info() const {
  return raw_ ? nullptr : sound_ ? &samples_->info() : &pictures_->info();
}

bool Input::isStream() const { return raw_ || (sound_ ? samples_->isStream() : pictures_->isStream()); }

std::optional<uint64_t> Input::length() const {
  if (sound_)
    return samples_->frameCount();
  return pictures_->frameCount();
}

std::string Input::commandLine() const { return sound_ ? samples_->commandLine() : pictures_->commandLine(); }

} // namespace zol::host
