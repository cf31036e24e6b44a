// What is wrong with an input, told by its first sign.
#pragma once

#include "host/media/process.h"

#include <cstddef>
#include <optional>
#include <string>

namespace zol::host {

/// Hears what a child that decodes says, from one time to the next.
class Listener {
public:
  /// What it says before the first news() counts only from the beginning of the file on: amid it, pictures
  /// may need others that were not read.
  explicit Listener(bool amid) : amid_(amid) {}

  /// The first line that it has said since; empty where it kept silent.
  std::string news(Process &process);

private:
  bool amid_;
  size_t heard_ = 0; ///< bytes
};

class Damage {
public:
  /// Of an input that texts call `name`. `strict`: it is an error.
  Damage(std::string name, bool strict) : name_(std::move(name)), strict_(strict) {}

  /// Takes what the child of that input address says as a sign of damage, at a time in seconds unless the
  /// input has none. Throws HostError where that is an error.
  void heard(const std::string &line, const std::string &url, std::optional<double> time);

  /// The input ended at a time although it should have gone on until another.
  void endedEarly(double time, double expected);

  /// It goes on behind the end that it tells of.
  void goesOn(double expected);

  /// The first sign in one line; empty where there was none.
  [[nodiscard]] const std::string &text() const { return text_; }

private:
  void tell(const std::string &text);

  std::string name_, text_;
  bool strict_;
};

} // namespace zol::host
