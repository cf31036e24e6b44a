// What a plan comes to once its inputs are known: sizes, rates, lengths.
#pragma once

#include "host/render/inputs.h"
#include "host/render/plan.h"
#include "host/render/timeline.h"

#include <cstddef>
#include <vector>

namespace zol::host {

/// The frames that are rendered, of those that the effects span.
struct Span {
  size_t first = 0, count = 1; ///< 0 where nothing tells how many
  bool openEnd = false; ///< `count` is what to expect; they end with the leading input, wherever that is
};

struct Settled {
  Timeline timeline;
  Span span;
  /// The input with whose end the frames end; null where they end at a time that was named.
  const Input *leading = nullptr;
};

// What the plan leaves open follows from the inputs, and what these leave open has a default. Throw HostError
// for what cannot be rendered.
Settled settlePictures(const RenderPlan &plan, const std::vector<Input> &inputs);
Settled settleSound(const RenderPlan &plan, const std::vector<Input> &inputs);

} // namespace zol::host
