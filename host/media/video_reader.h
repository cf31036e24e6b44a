// Frames of a video or still file, streamed through an ffmpeg child.
#pragma once

#include "host/media/aligned_bytes.h"
#include "host/media/conversion.h"
#include "host/media/damage.h"
#include "host/media/fit.h"
#include "host/media/frame_stream.h"
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

struct VideoReaderOptions {
  int width = 0; ///< 0 with height 0: the file's own size. Otherwise the pictures are brought to it by `fit`.
  int height = 0;
  Rational rate = 0; ///< Frames per second; 0: the file's own nominal rate (25 for stills).
  double start = 0;  ///< Time within the file of frame 0, in seconds.
  std::optional<double> end = std::nullopt; ///< Time within the file at which it is taken to end.
  bool strict = false;                      ///< Whether damage is an error.
  size_t window = 4; ///< Frames kept for going back, at least 1; more once more are asked for.
  bool raw = false;  ///< The bytes are raw BGRA frames of rawWidth by rawHeight at rawRate.
  Fit fit = Fit::stretch;
  double pixelAspect = 1; ///< of the pictures that `fit` gives
  int rawWidth = 0;
  int rawHeight = 0;
  Rational rawRate = 25;
  MediaPrograms programs;
};

/// Frames at a constant rate. What the file holds is known at once; children run from the first at() on.
/// Memory is bounded by the window, a few frames ahead of it, and the frames that callers still hold.
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

  /// Has all pictures brought to this size and pixel aspect; to be called before the first at().
  void scaleTo(int width, int height, double pixelAspect = 1, Fit fit = Fit::stretch);
  /// Has frames at this rate, taken from the file's own times; likewise.
  void setRate(Rational rate);

  /// Has the first sound of a stream, which nobody else can read, written beside into a file, as raw floats
  /// of the rate and the channels that info() tells, from the beginning on; to be called before the first
  /// at().
  void writeSoundTo(std::string file) { soundFile_ = std::move(file); }

  /// Begins to read at a frame, so that it is there sooner when at() asks for it.
  void prepare(size_t index);

  /// The frame shown at `start + index / rate`; the last one for every index behind the end; a still always.
  /// The same index gives the same bytes in any order of calls. Next frames, those of the window and those
  /// that were asked for lately are cheap, also at a few places of a file in turn; others start a child anew
  /// with a seek. Going backwards reads a stretch at once, as long as it fits into memory. Throws HostError
  /// when the file cannot be decoded, and for a step behind the window on standard input.
  std::shared_ptr<const Frame> at(size_t index);

  /// Seconds from the start to the end, as far as the file tells; 0 where it does not, and of a still.
  [[nodiscard]] double duration() const;

  /// Number of frames from the start, known once the end was met; a still has one.
  [[nodiscard]] std::optional<size_t> frameCount() const { return count_; }

  /// Whether there is a frame of this index: reads on to it where that is not known yet.
  bool reaches(size_t index);

  /// What is wrong with the file as far as it was read, in one line; empty where nothing is.
  [[nodiscard]] const std::string &damage() const { return damage_.text(); }

  /// The command that reads from frame 0, as a line for a shell.
  [[nodiscard]] std::string commandLine() const;

private:
  struct Known {
    size_t index;
    std::shared_ptr<const Frame> frame;
    AlignedBytes packed = nullptr; ///< in the frame's place, as the pipe carried it
  };
  /// A place where the file is being read.
  struct Cursor {
    std::unique_ptr<FrameStream> stream; ///< Null behind the end.
    size_t next = 0;                     ///< The frame that the stream yields next.
    std::deque<Known> recent;            ///< Those before it.
    size_t window = 1;                   ///< How many of these are kept.
    int stepsBack = 0;                   ///< One after another, each behind what it kept.
    uint64_t used = 0;
  };

  [[nodiscard]] PictureLayout sourceLayout() const;
  [[nodiscard]] PictureLayout pipeLayout() const;
  [[nodiscard]] PictureLayout frameLayout() const;
  [[nodiscard]] std::string scaling() const;
  [[nodiscard]] std::vector<std::string> arguments(size_t first) const;
  [[nodiscard]] FrameFormat format() const;
  void open(Cursor &cursor, size_t first, bool stretch = false);
  bool readNext(Cursor &cursor);
  void findEnd(Cursor &cursor, size_t behind);
  std::shared_ptr<const Frame> frameOf(const Known &known);
  std::shared_ptr<const Frame> known(size_t index);
  Cursor &cursorFor(size_t index);
  [[nodiscard]] size_t widestWindow(size_t frameBytes) const;
  void stepBack(Cursor &cursor, size_t index);
  void tellDamage(const std::string &said, size_t index);
  void checkEnd(Cursor &cursor);
  [[nodiscard]] double gridStart() const;
  [[nodiscard]] std::optional<size_t> limit() const;
  std::shared_ptr<const Frame> read(size_t index);

  Source source_;
  VideoReaderOptions options_;
  MediaInfo info_;
  Damage damage_;
  std::string soundFile_;
  std::shared_ptr<FramePool> pool_;
  std::optional<Converter> unpacking_;
  std::vector<Cursor> cursors_;
  std::deque<Known> asked_; ///< What was asked for lately, the latest last.
  uint64_t clock_ = 0;
  std::shared_ptr<const Frame> last_;
  std::optional<size_t> count_;
};

} // namespace zol::host
