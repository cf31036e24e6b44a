// What is wrong with an input, told by its first sign.
#pragma once

#include "host/media/process.h"

#include <cstddef>
#include <optional>
#include <string>

namespace zol::host {

class Damage {
public:
  /// Of an input that texts call `name`. `strict`: it is an error.
  Damage(std::string name, bool strict) : name_(std::move(name)), strict_(strict) {}

  /// A child begins to decode. What it says before the first listen() counts only from the beginning of the
  /// file on: amid it, pictures may need others that were not read.
  void begin(bool amid);

  /// Takes what the child of that input address has said since as a sign of damage, at a time in seconds
  /// unless the input has none. Throws HostError where that is an error.
  void listen(Process &process, const std::string &url, std::optional<double> time);

  /// The input ended at a time although it should have gone on until another.
  void endedEarly(double time, double expected);

  /// It goes on behind the end that it tells of.
  void goesOn(double expected);

  /// The first sign in one line; empty where there was none.
  [[nodiscard]] const std::string &text() const { return text_; }

private:
  void tell(const std::string &text);

  std::string name_, text_;
  bool strict_, amid_ = false;
  size_t heard_ = 0; ///< bytes
};

} // namespace zol::host
