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
  Input(const InputPlan &input, bool sound, const RenderPlan &plan);

  /// Brings what it delivers to the render's format, in which raw input already is; `retimed`: frames stay at
  /// the file's own rate.
  void bringTo(const Timeline &timeline, bool retimed);

  [[nodiscard]] const std::string &file() const { return input_.file; }
  /// The time within the file at which it begins, in seconds.
  [[nodiscard]] double start() const { return input_.start.value_or(0); }
  /// Seconds from there to its end; 0 where that is not known, and of a still that was given none.
  [[nodiscard]] double duration() const;
  [[nodiscard]] bool isStill() const { return info() != nullptr && !sound_ && info()->still; }
  /// Nothing of raw input.
  [[nodiscard]] const MediaInfo *info() const;
  [[nodiscard]] bool isStream() const;
  /// Number of frames, at the render's rate, or sample frames, once the end was met.
  [[nodiscard]] std::optional<uint64_t> length() const;
  /// Whether it has a frame or sample frame of that number: reads on to it where that is not known yet.
  [[nodiscard]] bool reaches(uint64_t index) const;
  /// What of it is not kept, however it is read; a line each.
  [[nodiscard]] const std::vector<std::string> &notes() const { return notes_; }
  /// What is wrong with it as far as it was read, in one line; empty where nothing is.
  [[nodiscard]] const std::string &damage() const {
    return sound_ ? samples_->damage() : pictures_->damage();
  }
  /// The command that reads it, as a line for a shell.
  [[nodiscard]] std::string commandLine() const;

  /// The readers; null where it is of the other kind.
  [[nodiscard]] VideoReader *pictures() const { return pictures_.get(); }
  [[nodiscard]] AudioReader *samples() const { return samples_.get(); }

private:
  InputPlan input_;
  bool sound_, raw_, strict_;
  Fit fit_;
  Rational rate_ = 0; ///< the render's
  MediaPrograms programs_;
  std::vector<std::string> notes_;
  std::unique_ptr<VideoReader> pictures_;
  std::unique_ptr<AudioReader> samples_;
};

} // namespace zol::host
