// Readers of media as effects' inputs.
#pragma once

#include "host/media/audio_reader.h"
#include "host/media/video_reader.h"
#include "host/model/clip.h"
#include "host/services/pools.h"

#include <deque>
#include <memory>

namespace zol::host {

/// The pictures of a reader, which outlives it; all of the reader's size, whatever is asked for.
class VideoClip : public Clip {
public:
  /// Behind the end stands the last picture for ever, or nothing.
  enum class BehindEnd { last, nothing };

  explicit VideoClip(VideoReader &reader, BehindEnd behindEnd = BehindEnd::last)
      : reader_(reader), behindEnd_(behindEnd) {}

  pic *frame(double time, int width, int height) override;
  t_ZoAudio *audio(double, double) override { return nullptr; }
  void release() override { held_.clear(); }

private:
  struct Held {
    std::shared_ptr<const Frame> frame;
    pic record;
  };
  VideoReader &reader_;
  BehindEnd behindEnd_;
  std::deque<Held> held_;
};

/// The sound of a reader, which outlives it; silence behind its end.
class AudioClip : public Clip {
public:
  explicit AudioClip(AudioReader &reader) : reader_(reader) {}

  pic *frame(double, int, int) override { return nullptr; }
  t_ZoAudio *audio(double from, double to) override;
  void release() override { held_.clear(); }

private:
  AudioReader &reader_;
  std::deque<std::unique_ptr<AudioBuffer>> held_;
};

} // namespace zol::host
