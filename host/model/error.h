// The one way in which the host refuses and fails.
#pragma once

#include <stdexcept>

namespace zol::host {

/// Something that the user asked for cannot be done: one line that says what and why, without a newline,
/// naming the file where one is concerned; where a child process failed, with its own last line.
struct HostError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace zol::host
