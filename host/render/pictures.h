// The pictures of a render, from one frame to the next.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/settle.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace zol::host {

class PictureLoop {
public:
  /// `leading` is the input with whose end the pictures end; null where there is none.
  PictureLoop(Chain &chain, const Span &span, const Input *leading)
      : chain_(chain), span_(span), leading_(leading) {}

  /// Renders the next picture into the writer; false where there is none.
  bool step(MediaWriter &writer);
  [[nodiscard]] uint64_t done() const { return done_; }
  /// As far as can be told.
  [[nodiscard]] uint64_t all() const { return std::max(done_, span_.count); }

private:
  Chain &chain_;
  Span span_;
  const Input *leading_;
  size_t done_ = 0;
};

} // namespace zol::host
