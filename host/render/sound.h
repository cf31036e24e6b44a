// The sound of a render, from one block to the next.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/settle.h"
#include "host/render/threads.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// Blocks are shared among threads as pictures are, several in a row.
class SoundLoop {
public:
  /// Sample frames of what a thread does in one go, unless a block is longer.
  static constexpr size_t kRun = 16384;

  /// In blocks of the plan's size, or of a video frame's worth. Where the plan names no frames, sound ends
  /// with the duration, which need not be a whole number of them.
  SoundLoop(Chain &chain, ChainThreads threads, const Span &span, const Input *leading,
            const RenderPlan &plan);

  /// Renders the next block into the writer; false where there is none.
  bool step(MediaWriter &writer);
  /// In sample frames.
  [[nodiscard]] uint64_t done() const { return at_ - first_; }
  [[nodiscard]] uint64_t all() const { return std::max(at_, end_) - first_; }

private:
  struct Block {
    uint64_t from, to; // sample frames
    bool metEnd;       // of the leading input, in telling that there is one
  };
  struct Made {
    Block block;
    std::unique_ptr<AudioBuffer> samples;
    bool metEnd;
  };
  using Run = std::vector<Block>;

  std::optional<Block> nextBlock();
  std::optional<Run> nextRun();
  Made make(Chain &chain, const Block &block) const;
  std::optional<Made> next();

  Chain &chain_;
  ChainThreads threads_;
  const Input *leading_;
  std::optional<size_t> block_;
  bool openEnd_, metEnd_ = false;
  uint64_t frame_;                                 ///< the video frame that the next block belongs to
  uint64_t first_, end_, begun_, at_;              ///< sample frames
  std::unique_ptr<OrderedWork<Run, Made>> others_; // last: its threads use all of the above
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
