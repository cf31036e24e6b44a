// The one way in which media fail.
#pragma once

#include <stdexcept>

namespace zol::host {

/// A file could not be read, understood or written: one line for the user, without a newline, naming the
/// file; where a child process failed, with its own last line.
struct MediaError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace zol::host
