// Pictures out of a child, as effects take them.
#pragma once

#include "host/media/aligned_bytes.h"
#include "host/media/conversion.h"
#include "host/media/process.h"
#include "host/media/queue.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
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
  Fit fit = Fit::Stretch;
};

/// Reads and converts ahead in a thread of its own.
class FrameStream {
public:
  /// The child's output is pictures of `format.pipe`. The pool's frames have the size of `format.frames`.
  FrameStream(std::unique_ptr<Process> child, const FrameFormat &format, std::shared_ptr<FramePool> pool);

  /// The next one; null at the end. Throws HostError where a picture cannot be converted or the child hangs,
  /// std::bad_alloc, Interrupted.
  std::shared_ptr<Frame> next();

  /// The child, once next() has met the end.
  [[nodiscard]] Process &child() { return *child_; }
  /// Whether the end came within a picture.
  [[nodiscard]] bool brokeOff() const { return brokeOff_; }

private:
  std::optional<std::shared_ptr<Frame>> read();

  std::unique_ptr<Process> child_;
  FrameFormat format_;
  std::shared_ptr<FramePool> pool_;
  std::optional<Converter> converter_;
  AlignedBytes received_;
  bool brokeOff_ = false;
  ReadAhead<std::shared_ptr<Frame>> ahead_; // last: its thread uses all of the above
};

} // namespace zol::host
