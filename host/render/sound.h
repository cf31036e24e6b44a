// The sound of a render, from one block to the next.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/settle.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

/// The sound of effects that make pictures too, rendered beside them by instances of its own.
class SoundBeside {
public:
  /// Of the first `sounding` effects of a plan of pictures, along their timeline. Throws HostError as a
  /// render of sound does.
  SoundBeside(const RenderPlan &plan, const ChainSetup &pictures, const EffectLibrary &library,
              const Timeline &timeline);

  /// Writes the sample frames from one to before another, as numbered by the timeline.
  void write(uint64_t from, uint64_t to, MediaWriter &writer);

  [[nodiscard]] std::vector<std::string> commandLines() const;
  [[nodiscard]] const std::vector<Input> &inputs() const { return inputs_; }

private:
  RenderPlan plan_;
  ChainSetup setup_;
  std::vector<Input> inputs_;
  std::optional<Chain> chain_;
};

} // namespace zol::host
