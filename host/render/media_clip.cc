#include "host/render/media_clip.h"

#include <algorithm>
#include <cmath>

namespace zol::host {

pic *VideoClip::frame(double time, int width, int height) {
  const size_t index = indexAt(time, reader_.rate());
  const auto frame = reader_.at(index);
  if (frame == nullptr ||
      (behindEnd_ == BehindEnd::nothing && index >= reader_.frameCount().value_or(SIZE_MAX)))
    return nullptr;
  for (Held &held : held_)
    if (held.frame == frame)
      return scaled_.at(&held.record, width, height);
  // Effects only read what an input hands out.
  auto *pixels = const_cast<uint8_t *>(frame->pixels.data());
  held_.push_back({frame,
                   {0, 0, static_cast<int16_t>(frame->width), static_cast<int16_t>(frame->height),
                    reinterpret_cast<_color_t *>(pixels)}});
  return scaled_.at(&held_.back().record, width, height);
}

bool VideoClip::describe(t_ZoMediaInfo &info) const {
  const MediaInfo &media = reader_.info();
  const double rate = reader_.rate().value();
  info = {};
  info.HasVideo = 1;
  info.HasAudio = media.hasAudio;
  info.Width = reader_.width();
  info.Height = reader_.height();
  info.Interlaced = media.interlaced;
  info.TopFieldFirst = media.topFieldFirst;
  if (!media.still) {
    info.Rate = rate;
    info.Duration = std::round(reader_.duration() * rate) / rate; // every frame is shown to its end
  }
  return true;
}

t_ZoAudio *AudioClip::audio(double from, double to) {
  const double rate = reader_.sampleRate();
  auto block =
      AudioBuffer::make(std::floor((to - from) * rate + 0.5), static_cast<unsigned>(reader_.sampleRate()),
                        static_cast<unsigned>(reader_.channels()));
  if (block == nullptr)
    return nullptr;
  const double first = std::floor(from * rate + 0.5);
  const double before = std::clamp(-first, 0.0, static_cast<double>(block->record()->Frames));
  const auto silent = static_cast<size_t>(before);
  reader_.read(static_cast<uint64_t>(std::max(0.0, first)), block->record()->Frames - silent,
               block->record()->Samples + silent * block->record()->Channels);
  held_.push_back(std::move(block));
  return held_.back()->record();
}

bool AudioClip::describe(t_ZoMediaInfo &info) const {
  const MediaInfo &media = reader_.info();
  info = {};
  info.HasAudio = 1;
  info.HasVideo = media.hasVideo;
  if (media.hasVideo && !media.still)
    info.Rate = media.frameRate.value();
  info.Duration = reader_.duration();
  return true;
}

} // namespace zol::host
