#include "host/render/media_clip.h"

#include <algorithm>
#include <cmath>

namespace zol::host {

pic *VideoClip::frame(double time, int, int) {
  const size_t index = indexAt(time, reader_.rate());
  const auto frame = reader_.at(index);
  if (frame == nullptr ||
      (behindEnd_ == BehindEnd::nothing && index >= reader_.frameCount().value_or(SIZE_MAX)))
    return nullptr;
  for (Held &held : held_)
    if (held.frame == frame)
      return &held.record;
  // Effects only read what an input hands out.
  auto *pixels = const_cast<uint8_t *>(frame->pixels.data());
  held_.push_back({frame,
                   {0, 0, static_cast<int16_t>(frame->width), static_cast<int16_t>(frame->height),
                    reinterpret_cast<_color_t *>(pixels)}});
  return &held_.back().record;
}

t_ZoAudio *AudioClip::audio(double from, double to) {
  const double rate = reader_.sampleRate();
  auto block =
      AudioBuffer::make(std::floor((to - from) * rate + 0.5), static_cast<unsigned>(reader_.sampleRate()),
                        static_cast<unsigned>(reader_.channels()));
  if (block == nullptr)
    return nullptr;
  const double first = std::max(0.0, std::floor(from * rate + 0.5));
  reader_.read(static_cast<uint64_t>(first), block->record()->Frames, block->record()->Samples);
  held_.push_back(std::move(block));
  return held_.back()->record();
}

} // namespace zol::host
