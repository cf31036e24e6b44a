// The pictures of a render, from one frame to the next.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/opacity.h"
#include "host/render/settle.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace zol::host {

class PictureLoop {
public:
  /// `leading` is the input at whose end an open end is.
  PictureLoop(Chain &chain, const Span &span, const Input *leading, Opacity &opacity)
      : chain_(chain), span_(span), leading_(leading), opacity_(opacity) {}

  /// Whether there is a next picture, as far as can be told before it is rendered.
  [[nodiscard]] bool goesOn() const;
  /// Renders the next picture into the writer; false where there is none.
  bool step(MediaWriter &writer);
  [[nodiscard]] uint64_t done() const { return done_; }
  /// As far as can be told.
  [[nodiscard]] uint64_t all() const { return std::max(done_, span_.count); }

private:
  Chain &chain_;
  Span span_;
  const Input *leading_;
  Opacity &opacity_;
  size_t done_ = 0;
};

} // namespace zol::host
