// The sound of a render, from one block to the next.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/settle.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace zol::host {

class SoundLoop {
public:
  /// In blocks of the plan's size, or of a video frame's worth. Where the plan names no frames, sound ends
  /// with the duration, which need not be a whole number of them.
  SoundLoop(Chain &chain, const Span &span, const Input *leading, const RenderPlan &plan);

  /// Renders the next block into the writer; false where there is none.
  bool step(MediaWriter &writer);
  /// In sample frames.
  [[nodiscard]] uint64_t done() const { return at_ - first_; }
  [[nodiscard]] uint64_t all() const { return std::max(at_, end_) - first_; }

private:
  uint64_t nextStop();

  Chain &chain_;
  const Input *leading_;
  std::optional<size_t> block_;
  bool openEnd_;
  uint64_t frame_;            ///< the video frame that the next block belongs to
  uint64_t first_, end_, at_; ///< sample frames
};

} // namespace zol::host
