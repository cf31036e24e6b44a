// Readers of media as effects' inputs.
#pragma once

#include "host/media/audio_reader.h"
#include "host/media/video_reader.h"
#include "host/model/clip.h"
#include "host/render/scaled_pictures.h"
#include "host/services/pools.h"

#include <deque>
#include <memory>

namespace zol::host {

/// The pictures of a reader, which outlives it.
class VideoClip : public Clip {
public:
  /// Behind the end stands the last picture for ever, or nothing.
  enum class BehindEnd { last, nothing };

  explicit VideoClip(VideoReader &reader, BehindEnd behindEnd = BehindEnd::last)
      : reader_(reader), behindEnd_(behindEnd) {}

  pic *frame(double time, int width, int height) override;
  t_ZoAudio *audio(double, double) override { return nullptr; }
  bool describe(t_ZoMediaInfo &info) const override;
  void release() override {
    held_.clear();
    scaled_.clear();
  }

private:
  struct Held {
    std::shared_ptr<const Frame> frame;
    pic record;
  };
  VideoReader &reader_;
  BehindEnd behindEnd_;
  std::deque<Held> held_;
  ScaledPictures scaled_;
};

/// The sound of a reader, which outlives it; silence before its beginning and behind its end.
class AudioClip : public Clip {
public:
  explicit AudioClip(AudioReader &reader) : reader_(reader) {}

  pic *frame(double, int, int) override { return nullptr; }
  t_ZoAudio *audio(double from, double to) override;
  bool describe(t_ZoMediaInfo &info) const override;
  void release() override { held_.clear(); }

private:
  AudioReader &reader_;
  std::deque<std::unique_ptr<AudioBuffer>> held_;
};

} // namespace zol::host
