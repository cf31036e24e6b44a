// Slow motion of a clip, over the library's interpolation engine.
#pragma once

#include "host/media/probe.h"
#include "host/render/render.h"

#include <string>

namespace zol::host {

struct SlowMotionPlan {
  enum class Method : unsigned { mix = 0, vector = 1, object = 2 };
  enum class Fields { none, topFirst, bottomFirst };

  std::string input, output;
  double factor = 2; ///< how many times longer; at least 1
  Method method = Method::vector;
  Fields fields = Fields::none;
  bool overwrite = false;
  MediaPrograms programs;
};

/// Writes the clip `factor` times as long at its own frame rate, without its sound. Throws HostError or
/// MediaError with one clear line; the output appears whole or not at all.
void slowMotion(const SlowMotionPlan &plan, const Progress &progress);

} // namespace zol::host
