// Pictures out of a child, as effects take them.
#pragma once

#include "host/media/aligned_bytes.h"
#include "host/media/conversion.h"
#include "host/media/damage.h"
#include "host/media/process.h"
#include "host/media/queue.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// One picture: `height` rows of `width` pixels without padding, four bytes each (blue, green, red, straight
/// alpha; 255 where the file has none).
struct Frame {
  int width = 0;
  int height = 0;
  std::vector<uint8_t> pixels;
};

/// Frames of one size, used again when nobody holds them any more.
class FramePool : public std::enable_shared_from_this<FramePool> {
public:
  FramePool(int width, int height) : width_(width), height_(height) {}

  /// The contents are what the last use left. Throws std::bad_alloc.
  std::shared_ptr<Frame> take();

private:
  void giveBack(Frame *frame);

  int width_, height_;
  std::mutex mutex_;
  size_t made_ = 0;
  std::vector<std::unique_ptr<Frame>> free_;
};

/// What a child yields, and what becomes of it.
struct FrameFormat {
  PictureLayout pipe, frames;
  Fit fit = Fit::stretch;
  uint32_t bars = 0xFF000000; ///< the pixel of bars

  /// Whether the pipe carries frames as they are.
  [[nodiscard]] bool isDirect() const {
    return pipe.format == kBgra && pipe.width == frames.width && pipe.height == frames.height;
  }
};

/// A frame, or the bytes of the pipe that it is made of, with what the child said while it came, which
/// concerns one that is so many behind it.
struct HeardFrame {
  std::shared_ptr<Frame> frame;
  AlignedBytes packed;
  std::string said;
  size_t ahead = 0;
};

/// Reads and converts ahead in a thread of its own.
class FrameStream {
public:
  /// The child's output is pictures of `format.pipe`; `amid`: not from the beginning of the file. The pool's
  /// frames have the size of `format.frames`. `packed`: frames that are to be converted are handed out
  /// before, as bytes.
  FrameStream(std::unique_ptr<Process> child, bool amid, const FrameFormat &format,
              std::shared_ptr<FramePool> pool, bool packed);

  /// The next one; none at the end. Throws HostError where a picture cannot be converted or the child hangs,
  /// std::bad_alloc, Interrupted.
  std::optional<HeardFrame> next() { return ahead_.next(); }

  // Once next() has met the end:

  [[nodiscard]] Process &child() { return *child_; }
  /// Whether the end came within a picture.
  [[nodiscard]] bool brokeOff() const { return brokeOff_; }
  /// What the child said since the last frame.
  [[nodiscard]] std::string lastWords() { return listener_.news(*child_); }

private:
  std::optional<HeardFrame> read();

  std::unique_ptr<Process> child_;
  Listener listener_;
  FrameFormat format_;
  std::shared_ptr<FramePool> pool_;
  bool packed_;
  std::optional<Converter> converter_;
  AlignedBytes received_;
  bool brokeOff_ = false;
  ReadAhead<HeardFrame> ahead_; // last: its thread uses all of the above
};

} // namespace zol::host
