// A film that a cluster renders in parts: what is asked for, and the folder in which the work stands.
#pragma once

#include "host/render/plan.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace zol::host {

/// What all tasks read. Paths are absolute.
struct FarmPlan {
  RenderPlan render;   ///< of the whole film
  uint64_t frames = 0; ///< that it has
  unsigned parts = 1;
  unsigned threads = 1; ///< and processors of a part
  std::string program;  ///< zol, as the nodes find it
  std::string folder;   ///< in which the words were given
  std::string partition, time;
  std::string partsJob, joinJob; ///< the scheduler's ids; empty: none

  [[nodiscard]] const std::string &film() const { return render.output; }
  [[nodiscard]] std::vector<std::string> jobs() const;
};

/// Where the work on a film stands: one folder, on a disk that every node sees.
class FarmPlace {
public:
  explicit FarmPlace(std::filesystem::path folder) : folder_(std::move(folder)) {}
  /// The place of a film; empty `within`: beside it.
  static FarmPlace of(const std::string &film, const std::string &within);
  /// The place that a user means, by its folder or the plan in it.
  static FarmPlace named(const std::string &name);

  [[nodiscard]] std::string folder() const { return folder_; }
  [[nodiscard]] std::string plan() const { return folder_ / "plan.json"; }
  /// The script that every task runs.
  [[nodiscard]] std::string script() const { return folder_ / "task.sh"; }
  /// Each part has a folder of its own: what is unfinished in it is no other task's to clear.
  [[nodiscard]] std::string part(unsigned number) const;
  [[nodiscard]] std::string parts() const { return folder_ / "parts"; }
  /// A part that is rendered to see what a frame costs.
  [[nodiscard]] std::string probe() const { return folder_ / "probe.mkv"; }
  /// Of a part, or of the joining for 0: what its last run said, and why runs failed, a line each.
  [[nodiscard]] std::string log(unsigned number) const;
  [[nodiscard]] std::string failures(unsigned number) const;
  /// Marks of how it ended.
  [[nodiscard]] std::string finished() const { return folder_ / "finished"; }
  [[nodiscard]] std::string cancelled() const { return folder_ / "cancelled"; }

  /// Throw HostError, naming the file.
  [[nodiscard]] FarmPlan load() const;
  void save(const FarmPlan &plan) const;

  /// Parts of which there is no complete one.
  [[nodiscard]] std::vector<unsigned> missing(unsigned parts) const;
  /// Makes it ready for new tasks: clears how the last ended, and the parts too unless they are `kept`.
  void prepare(bool kept) const;

private:
  std::filesystem::path folder_;
};

/// The plan of one part, into a file of its own.
RenderPlan partOf(const FarmPlan &plan, unsigned number, const std::string &file);

/// Whether parts of one serve the other: all but what concerns only how and when they are made.
bool makeSameFilm(RenderPlan a, RenderPlan b);

} // namespace zol::host
