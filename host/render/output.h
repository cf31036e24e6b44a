// What of a render goes into its file, in which form, and what does not.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/crossfade.h"
#include "host/render/inputs.h"
#include "host/render/opacity.h"
#include "host/render/plan.h"
#include "host/render/settle.h"

#include <optional>
#include <string>
#include <vector>

namespace zol::host {

struct OutputSetup {
  WriterOptions writing;
  bool watchAlpha = false, forceOpaque = false; ///< as Opacity has them
  /// Sound of pictures that has to be mixed: then it comes as samples, of this format.
  std::vector<Voice> voices;
  std::vector<Crossfade::Source> voiceSources;
  Timeline soundTimeline;
  bool ownSound = false;             ///< or the effects make it, in the same format
  std::optional<size_t> soundStream; ///< the input of which the sound comes with the pictures alone
  std::vector<std::string> notes;    ///< what is left out, a line each
};

/// What the plan says of the encoders. Throws HostError for a quality that there is not.
EncodingChoice encodingOf(const RenderPlan &plan);

/// Throws HostError where the plan's output cannot hold what its effects make.
void checkOutput(const RenderPlan &plan, const ChainSetup &setup);

OutputSetup settleOutput(const RenderPlan &plan, const ChainSetup &setup, const Chain &chain,
                         const std::vector<Input> &inputs, const Settled &settled);

/// What there is to say of transparent pixels when all pictures are written; empty: nothing.
std::string opacityNote(const RenderPlan &plan, const OutputSetup &output, const Opacity &opacity);

} // namespace zol::host
