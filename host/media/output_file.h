// Where written media appear: whole under their names, or not at all.
#pragma once

#include "host/media/process.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace zol::host {

/// Where one child writes. Until publish() all of it stands beside the target under names of its own, which
/// go with this object; those of a process that was killed go with the next output into the same folder.
class Output {
public:
  virtual ~Output() = default;

  /// Makes the place; to be called once. What ffmpeg is to write to.
  virtual std::string begin() = 0;
  /// Gives what was written its name.
  virtual void publish() = 0;
  /// The place as texts of the child name it; empty where that is the target's own name.
  [[nodiscard]] virtual const std::string &place() const = 0;
  /// Makes another file beside, which goes with this object; empty where there is no place beside.
  virtual std::string spare() = 0;

protected:
  Output() = default;
  Output(const Output &) = default;
  Output &operator=(const Output &) = default;
};

/// Throw HostError for what can be told at once: a file that exists and is not to be replaced, a missing or
/// unwritable folder. Nothing is created yet. Later failures are HostErrors with the bare reason. Devices,
/// pipes, and standard output, as "-", are written in place.
std::unique_ptr<Output> makeOutputFile(const std::string &file, bool overwrite);
/// The same for pictures that are numbered where the name has "%d", "%06d" or the like. Where it is known
/// which numbers come, from the first to before the second, others may exist.
std::unique_ptr<Output> makeOutputSequence(const std::string &file, bool overwrite,
                                           std::optional<std::pair<uint64_t, uint64_t>> numbers = {});

/// The file of one of these numbers.
std::string numberedFile(const std::string &file, uint64_t number);

/// Whether the last part of a name has one such place for a number.
bool hasNumber(const std::string &file);

} // namespace zol::host
