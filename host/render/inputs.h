// The files of a render, opened: what they hold settles the render's format, to which they are then brought.
#pragma once

#include "host/media/audio_reader.h"
#include "host/media/video_reader.h"
#include "host/render/plan.h"
#include "host/render/timeline.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// One file or pipe. A render of pictures reads its pictures, a render of sound its samples.
class Input {
public:
  /// Opens it and looks into it. Standard input is raw where the plan has the words that raw needs, else what
  /// ffmpeg can tell of it. Throws HostError where it holds nothing of the wanted.
  Input(const std::string &file, bool sound, const RenderPlan &plan);

  /// Brings what it delivers to the render's format, in which raw input already is.
  void bringTo(const Timeline &timeline);

  [[nodiscard]] const std::string &file() const { return file_; }
  /// Nothing of raw input.
  [[nodiscard]] const MediaInfo *info() const;
  [[nodiscard]] bool isStream() const;
  /// Number of frames or sample frames, once the end was met.
  [[nodiscard]] std::optional<uint64_t> length() const;
  /// The command that reads it, as a line for a shell.
  [[nodiscard]] std::string commandLine() const;

  /// The readers; null where it is of the other kind.
  [[nodiscard]] VideoReader *pictures() const { return pictures_.get(); }
  [[nodiscard]] AudioReader *samples() const { return samples_.get(); }

private:
  std::string file_;
  bool sound_, raw_;
  Fit fit_;
  MediaPrograms programs_;
  std::unique_ptr<VideoReader> pictures_;
  std::unique_ptr<AudioReader> samples_;
};

} // namespace zol::host
