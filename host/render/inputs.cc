#include "host/render/inputs.h"

#include "host/media/source.h"
#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <utility>

namespace zol::host {

namespace {

/// What 8 bits of standard range and gamut do not hold of it, in one line; empty where they hold all.
std::string lossesOf(const MediaInfo &info) {
  std::string losses;
  const auto add = [&](bool lost, const std::string &what) {
    if (lost)
      losses += (losses.empty() ? "" : ", ") + what;
  };
  const bool pq = info.transfer == "smpte2084", hlg = info.transfer == "arib-std-b67";
  add(pq || hlg, std::string("HDR (") + (pq ? "PQ" : "HLG") + ')');
  add(info.primaries == "bt2020", "wide gamut (BT.2020)");
  add(info.primaries == "smpte432" || info.primaries == "smpte431", "wide gamut (P3)");
  add(info.deep, "more than 8 bits a component");
  add(info.otherColors, "its colour profile");
  return losses;
}

} // namespace

Input::Input(const InputPlan &input, bool sound, const RenderPlan &plan)
    : input_(input), sound_(sound),
      raw_(input.file == "-" && (sound ? plan.sampleRate && plan.channels : plan.size.has_value())),
      strict_(plan.strict), fit_(plan.fit), programs_(plan.programs) {
  const std::string named = '"' + input.file + '"';
  if (!(start() >= 0) || (input.end && !(*input.end > start())))
    throw HostError(named + " would end before it begins");
  if (raw_)
    return;
  Source source(input.file, {.playlists = plan.playlists, .sequenceRate = plan.rate.value_or(25)});
  const MediaInfo &info = source.look(programs_);
  if (!source.isStream() && !(sound ? info.hasAudio : info.hasVideo))
    throw HostError(named + " holds no " + (sound ? "sound" : "pictures"));
  if (const double all = sound ? info.soundDuration : info.duration; all > 0 && start() >= all)
    throw HostError(named + " ends before " + numberText(start()) + " s");
  if (!sound)
    if (const std::string losses = lossesOf(info); !losses.empty())
      notes_.push_back(named + ": not kept: " + losses);
  if (const auto &sequence = source.sequence(); sequence && sequence->goesOn)
    notes_.push_back(named + " ends at number " + std::to_string(sequence->first + sequence->count - 1) +
                     ": the next one is missing");
  const bool still = !sound && info.still;
  if (sound)
    samples_ = std::make_unique<AudioReader>(
        std::move(source),
        AudioReaderOptions{.start = start(), .end = input.end, .strict = strict_, .programs = programs_});
  else
    pictures_ = std::make_unique<VideoReader>(std::move(source),
                                              VideoReaderOptions{.start = still ? 0 : start(),
                                                                 .end = still ? std::nullopt : input.end,
                                                                 .strict = strict_,
                                                                 .programs = programs_});
}

double Input::duration() const {
  const MediaInfo *const known = info();
  const double all = known == nullptr ? 0 : sound_ ? known->soundDuration : known->duration;
  if (!input_.end)
    return std::max(0.0, all - start());
  return (all > 0 ? std::min(*input_.end, all) : *input_.end) - start();
}

void Input::bringTo(const Timeline &timeline, bool retimed) {
  rate_ = timeline.rate;
  const int sampleRate = static_cast<int>(timeline.sampleRate),
            channels = static_cast<int>(timeline.channels);
  if (raw_ && sound_)
    samples_ = std::make_unique<AudioReader>(file(), AudioReaderOptions{.start = start(),
                                                                        .end = input_.end,
                                                                        .strict = strict_,
                                                                        .raw = true,
                                                                        .rawRate = sampleRate,
                                                                        .rawChannels = channels,
                                                                        .programs = programs_});
  else if (raw_)
    pictures_ = std::make_unique<VideoReader>(file(), VideoReaderOptions{.start = start(),
                                                                         .end = input_.end,
                                                                         .strict = strict_,
                                                                         .raw = true,
                                                                         .rawWidth = timeline.width,
                                                                         .rawHeight = timeline.height,
                                                                         .rawRate = timeline.rate,
                                                                         .programs = programs_});
  else if (sound_)
    samples_->convertTo(sampleRate, channels);
  else {
    pictures_->scaleTo(timeline.width, timeline.height, timeline.pixelAspect, fit_);
    if (!retimed || info()->still)
      pictures_->setRate(timeline.rate);
  }
}

const MediaInfo *Input::info() const {
  return raw_ ? nullptr : sound_ ? &samples_->info() : &pictures_->info();
}

bool Input::isStream() const { return raw_ || (sound_ ? samples_->isStream() : pictures_->isStream()); }

std::optional<uint64_t> Input::length() const {
  if (sound_)
    return samples_->frameCount();
  const auto frames = pictures_->frameCount();
  if (!frames || pictures_->rate() == rate_)
    return frames;
  return indexAt(timeOf(*frames, pictures_->rate()) + timeOf(1, rate_) / 2, rate_);
}

bool Input::reaches(uint64_t index) const {
  if (sound_)
    return samples_->reaches(index);
  return pictures_->reaches(pictures_->rate() == rate_ ? static_cast<size_t>(index)
                                                       : indexAt(timeOf(index, rate_), pictures_->rate()));
}

std::string Input::commandLine() const { return sound_ ? samples_->commandLine() : pictures_->commandLine(); }

} // namespace zol::host
