// A media file as an effect's input.
#pragma once

#include "host/media/audio_reader.h"
#include "host/media/video_reader.h"
#include "host/model/parameters.h"
#include "host/services/pools.h"

#include <deque>
#include <memory>
#include <string>

namespace zol::host {

/// The pictures of a file, all scaled to one size; what it hands out lives until release().
class VideoClip : public Clip {
public:
  VideoClip(const std::string &file, VideoReaderOptions options) : reader_(file, std::move(options)) {}

  pic *frame(double time, int width, int height) override;
  t_ZoAudio *audio(double, double) override { return nullptr; }

  [[nodiscard]] const VideoReader &reader() const { return reader_; }
  /// Whether the end has been met and lies before a time.
  [[nodiscard]] bool endsBefore(double time) const;
  void release() { held_.clear(); }

private:
  struct Held {
    std::shared_ptr<const Frame> frame;
    pic record;
  };
  VideoReader reader_;
  std::deque<Held> held_;
};

/// The sound of a file; silence behind its end.
class AudioClip : public Clip {
public:
  AudioClip(const std::string &file, AudioReaderOptions options) : reader_(file, std::move(options)) {}

  pic *frame(double, int, int) override { return nullptr; }
  t_ZoAudio *audio(double from, double to) override;

  [[nodiscard]] const AudioReader &reader() const { return reader_; }
  void release() { held_.clear(); }

private:
  AudioReader reader_;
  std::deque<std::unique_ptr<AudioBuffer>> held_;
};

} // namespace zol::host
