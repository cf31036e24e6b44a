// Frames of a video or still file, streamed through an ffmpeg child.
#pragma once

#include "host/media/fit.h"
#include "host/media/probe.h"
#include "host/media/process.h"
#include "host/media/source.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zol::host {

/// One picture: `height` rows of `width` pixels without padding, four bytes each (blue, green, red, straight
/// alpha; 255 where the file has none).
struct Frame {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> pixels;
};

struct VideoReaderOptions {
  int width = 0; ///< 0 with height 0: the file's own size. Otherwise the pictures are brought to it by `fit`.
  int height = 0;
  Fit fit = Fit::stretch;
  double pixelAspect = 1; ///< of the pictures that `fit` gives
  Rational rate = 0;      ///< Frames per second; 0: the file's own average rate (25 for stills).
  double start = 0;       ///< Time within the file of frame 0, in seconds.
  size_t window = 4;      ///< Frames kept for going back, at least 1.
  bool raw = false;       ///< The bytes are raw BGRA frames of rawWidth by rawHeight at rawRate.
  int rawWidth = 0;
  int rawHeight = 0;
  Rational rawRate = 25;
  MediaPrograms programs;
};

/// Frames at a constant rate. What the file holds is known at once; the child runs from the first at() on.
/// Memory is bounded by the window and the frames that callers still hold.
class VideoReader {
public:
  /// `-` is standard input: raw, or what ffmpeg can tell from a stream. Named pipes likewise. Only one
  /// reader can have it.
  VideoReader(const std::string &file, VideoReaderOptions options)
      : VideoReader(Source(file), std::move(options)) {}
  /// The same for a source that may have been looked at.
  VideoReader(Source source, VideoReaderOptions options);
  ~VideoReader();
  VideoReader(const VideoReader &) = delete;
  VideoReader &operator=(const VideoReader &) = delete;

  [[nodiscard]] const MediaInfo &info() const { return info_; }
  /// Whether frames come from a pipe, in their order alone and to an end that is not known in advance.
  [[nodiscard]] bool isStream() const { return source_.isStream(); }
  [[nodiscard]] int width() const { return options_.width; }
  [[nodiscard]] int height() const { return options_.height; }
  [[nodiscard]] Rational rate() const { return options_.rate; }

  /// Has all pictures brought to this size; to be called before the first at().
  void scaleTo(const Raster &raster, Fit fit);

  /// The frame shown at `start + index / rate`; the last one for every index behind the end; a still always.
  /// The same index gives the same bytes in any order of calls. Next frames and those of the window are
  /// cheap, others start the child anew with a seek. Throws HostError when the file cannot be decoded, and
  /// for a step behind the window on standard input.
  std::shared_ptr<const Frame> at(size_t index);

  /// Number of frames from the start, known once the end was met; a still has one.
  [[nodiscard]] std::optional<size_t> frameCount() const { return count_; }

  /// The command that reads from frame 0, as a line for a shell.
  [[nodiscard]] std::string commandLine() const;

private:
  [[nodiscard]] std::vector<std::string> arguments(size_t first) const;
  [[nodiscard]] std::string scaling() const;
  void open(size_t first);
  bool readNext();
  void findEnd(size_t behind);

  Source source_;
  VideoReaderOptions options_;
  MediaInfo info_;
  std::unique_ptr<Process> process_;
  std::deque<std::shared_ptr<Frame>> recent_; ///< Frames next_ - size ... next_ - 1.
  std::shared_ptr<Frame> spare_;
  std::shared_ptr<const Frame> last_;
  size_t next_ = 0;
  std::optional<size_t> count_;
};

} // namespace zol::host
