#include "host/media/media_clip.h"

#include <algorithm>
#include <cmath>

namespace zol::host {
namespace {

/// Of a frame's length: a time that misses a frame's beginning by no more is meant to be in that frame.
constexpr double kTolerance = 1e-6;

} // namespace

pic *VideoClip::frame(double time, int, int) {
  const double index = std::floor(time * reader_.rate() + kTolerance);
  const auto frame = reader_.at(index > 0 ? static_cast<size_t>(std::min(index, 4e9)) : 0);
  if (frame == nullptr)
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

bool VideoClip::endsBefore(double time) const {
  const auto count = reader_.frameCount();
  return count && time * reader_.rate() + kTolerance >= static_cast<double>(*count);
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
