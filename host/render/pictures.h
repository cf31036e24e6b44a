// The pictures of a render, from one frame to the next.
#pragma once

#include "host/media/writer.h"
#include "host/render/opacity.h"
#include "host/render/settle.h"
#include "host/render/threads.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace zol::host {

/// Pictures are made in their order, or by several threads that are a few frames apart, and written in their
/// order. The first is always made alone: it opens the inputs where they are to be read on from.
class PictureLoop {
public:
  /// `leading` is the input at whose end an open end is.
  PictureLoop(Chain &chain, ChainThreads threads, const Span &span, const Input *leading, Opacity &opacity)
      : chain_(chain), threads_(std::move(threads)), span_(span), leading_(leading), opacity_(opacity) {}

  /// Whether there is a next picture, as far as can be told before it is rendered.
  [[nodiscard]] bool goesOn() const { return has(done_); }
  /// Renders the next picture into the writer; false where there is none.
  bool step(MediaWriter &writer);
  [[nodiscard]] uint64_t done() const { return done_; }
  /// As far as can be told.
  [[nodiscard]] uint64_t all() const { return std::max(done_, span_.count); }

private:
  struct Made {
    std::shared_ptr<PictureBuffer> picture;
    bool transparent, metEnd;
  };

  [[nodiscard]] bool has(size_t place) const;
  Made make(Chain &chain, size_t place) const;
  std::optional<Made> next();

  Chain &chain_;
  ChainThreads threads_;
  Span span_;
  const Input *leading_;
  Opacity &opacity_;
  size_t done_ = 0;
  bool metEnd_ = false;
  size_t shared_ = 1; ///< places of the span that threads have begun, or behind
  std::unique_ptr<OrderedWork<size_t, Made>> others_; // last: its threads use all of the above
};

} // namespace zol::host
