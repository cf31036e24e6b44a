#include "host/media/frame_stream.h"

#include <algorithm>
#include <utility>

namespace zol::host {
namespace {

/// Frames that wait to be taken: enough to even out what decoding costs, however large they are.
size_t framesAhead(const PictureLayout &frames) {
  constexpr size_t kBytes = size_t{64} << 20, kMost = 4;
  return std::clamp<size_t>(kBytes / std::max<size_t>(frames.bytes(), 1), 1, kMost);
}

} // namespace

std::shared_ptr<Frame> FramePool::take() {
  std::unique_ptr<Frame> frame;
  {
    const std::lock_guard lock(mutex_);
    if (!free_.empty()) {
      frame = std::move(free_.back());
      free_.pop_back();
    }
  }
  if (!frame) {
    frame = std::make_unique<Frame>();
    {
      const std::lock_guard lock(mutex_);
      free_.reserve(++made_); // so that giving back cannot fail
    }
    frame->width = width_;
    frame->height = height_;
    frame->pixels.resize(size_t{4} * static_cast<size_t>(width_) * static_cast<size_t>(height_));
  }
  return {frame.release(), [pool = shared_from_this()](Frame *used) { pool->giveBack(used); }};
}

void FramePool::giveBack(Frame *frame) {
  std::unique_ptr<Frame> owned(frame);
  const std::lock_guard lock(mutex_);
  free_.push_back(std::move(owned));
}

FrameStream::FrameStream(std::unique_ptr<Process> child, bool amid, const FrameFormat &format,
                         std::shared_ptr<FramePool> pool, bool packed)
    : child_(std::move(child)), listener_(amid), format_(format), pool_(std::move(pool)),
      packed_(packed && !format.isDirect()),
      ahead_(
          framesAhead(format.frames), [this] { return read(); }, [this] { child_->terminate(); }) {}

std::optional<HeardFrame> FrameStream::read() {
  HeardFrame heard;
  const PictureLayout &pipe = format_.pipe;
  const bool direct = format_.isDirect();
  if (!packed_)
    heard.frame = pool_->take();
  if (!direct && received_ == nullptr)
    received_ = alignedBytes(pipe.bytes());
  uint8_t *target = direct ? heard.frame->pixels.data() : received_.get();
  const size_t got = child_->read(target, pipe.bytes());
  if (got < pipe.bytes()) {
    brokeOff_ = got > 0;
    return std::nullopt;
  }
  if (packed_) {
    heard.packed = std::move(received_);
  } else if (!direct) {
    if (!converter_)
      converter_.emplace(pipe, format_.frames, format_.fit, format_.bars);
    converter_->convert(target, heard.frame->pixels.data());
  }
  heard.said = listener_.news(*child_);
  if (!heard.said.empty())
    heard.ahead = child_->waiting() / pipe.bytes();
  return heard;
}

} // namespace zol::host
