#pragma once

#include <stdexcept>

namespace zol::host {

/// Something that the user asked for cannot be done; one line that says what and why.
struct HostError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace zol::host
