// A whole render: effects in a chain, files in, one file out.
#pragma once

#include "host/media/writer.h"
#include "host/render/chain.h"
#include "host/render/crossfade.h"
#include "host/render/inputs.h"
#include "host/render/output.h"
#include "host/render/part.h"
#include "host/render/plan.h"
#include "host/render/settle.h"
#include "host/render/sound.h"
#include "host/render/threads.h"
#include "host/script/library.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zol::host {

/// Told after each frame or block how much of all is done.
using Progress = std::function<void(uint64_t done, uint64_t all)>;

/// The parts of a film, in order.
struct JoinedParts {
  EncodedPictures pictures;
  uint64_t frames = 0; ///< of all
};

/// Loads the library that the plan names, or the default one, for the plan's host.
std::shared_ptr<const EffectLibrary> libraryOf(const RenderPlan &plan);

class RenderJob {
public:
  /// Finds the effects, opens the inputs, settles sizes and times. Throws HostError, with one clear line, for
  /// everything that can be told before rendering.
  explicit RenderJob(const RenderPlan &plan);
  /// The same with a library that is already loaded, under the plan's host.
  RenderJob(RenderPlan plan, std::shared_ptr<const EffectLibrary> library);
  /// The same with pictures that parts have; all that a render has besides goes along.
  RenderJob(RenderPlan plan, std::shared_ptr<const EffectLibrary> library, std::optional<JoinedParts> parts);

  /// Pictures of the whole: counted where a part is rendered, else as far as the inputs tell.
  [[nodiscard]] uint64_t frames() const { return part_ ? part_->all : settled_.span.count; }

  /// Writes the output, whole or not at all.
  void run(const Progress &progress);

  /// The commands that run() would start, a line each, to be pasted into a shell.
  [[nodiscard]] std::vector<std::string> commands() const;

  /// What is left out or guessed, a line each: once known before run(), more of it behind. Each is told once.
  [[nodiscard]] std::vector<std::string> notes();

private:
  [[nodiscard]] bool needsOneThread() const;
  ChainThreads threads(size_t frames);
  void writeSound(uint64_t from, uint64_t to);
  void beginPart();
  void runPictures(const Progress &progress);
  void runJoined(const Progress &progress);
  void note(const std::string &line);

  std::shared_ptr<const EffectLibrary> library_;
  std::optional<PartRecord> part_;
  std::optional<JoinedParts> joined_;
  RenderPlan plan_;
  ChainSetup setup_;
  std::vector<Input> inputs_;
  Settled settled_;
  std::optional<Chain> chain_;
  OutputSetup output_;
  std::optional<Crossfade> crossfade_;
  std::optional<SoundBeside> soundBeside_;
  std::optional<MediaWriter> writer_;
  std::vector<std::string> notes_;
  std::set<std::string> known_; ///< notes so far
};

} // namespace zol::host
