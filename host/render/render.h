// A whole render: effects in a chain, files in, one file out.
#pragma once

#include "host/media/probe.h"
#include "host/script/library.h"
#include "host/services/session.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zol::host {

/// Makes a service fail at its nth call in every stage, or IsAborted answer at its nth poll.
struct PlannedFault {
  Service service;
  int nth;
};

struct StagePlan {
  std::string effect;
  std::vector<std::string> inputs; ///< files, in field order; behind the first stage after the chain's input
  std::vector<std::pair<std::string, std::string>> settings; ///< field and value; an input field takes a file
};

struct RenderPlan {
  std::vector<StagePlan> stages; ///< at least one; each is the first input of the next
  std::string output;
  std::string library; ///< empty: the one beside the program
  std::string host = "Halvenor";
  std::optional<std::pair<int, int>> size;
  std::optional<double> rate;
  std::optional<double> duration;                  ///< seconds
  std::optional<std::pair<size_t, size_t>> frames; ///< first and last
  std::optional<unsigned> sampleRate, channels;
  std::optional<size_t> block; ///< sample frames a block of sound
  bool realTime = false;
  bool overwrite = false;
  bool keepAlpha = true;
  std::vector<PlannedFault> faults;
  MediaPrograms programs;
};

/// Told after each frame or block how much of all is done.
using Progress = std::function<void(uint64_t done, uint64_t all)>;

class RenderJob {
public:
  /// Finds the effects, looks at the inputs, settles sizes and times. Throws HostError or MediaError, with
  /// one clear line, for everything that can be told before rendering.
  explicit RenderJob(RenderPlan plan);
  ~RenderJob();

  /// Writes the output, whole or not at all.
  void run(const Progress &progress);

  /// The commands that run() would start, a line each, to be pasted into a shell.
  [[nodiscard]] std::vector<std::string> commands() const;

  /// What the files of geometries have in them that is not drawn, a line each.
  [[nodiscard]] std::vector<std::string> notes() const;

  /// What is rendered, in one line: sizes, rate, length.
  [[nodiscard]] std::string summary() const;

private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

} // namespace zol::host
