// Requests to stop, as signals bring them.
#pragma once

#include <exception>

namespace zol::host {

/// Unwinds whatever goes on, so that no unfinished file and no child stays behind.
struct Interrupted : std::exception {
  [[nodiscard]] const char *what() const noexcept override { return "interrupted"; }
};

/// From now on SIGINT, SIGTERM, SIGHUP and SIGQUIT ask to stop instead of ending the process at once. One
/// that is ignored stays so.
void heedInterruptions();

/// Whether such a signal has come.
[[nodiscard]] bool interrupted();
/// The first that came; 0: none.
[[nodiscard]] int interruption();

/// Throws Interrupted if so.
void stopIfInterrupted();

/// Waits until the descriptor is ready for the events of poll(); throws Interrupted when asked to stop.
void awaitDescriptor(int fd, short events);

/// A descriptor that becomes readable with the request and stays so; -1 where signals are not heeded.
[[nodiscard]] int interruptionDescriptor();

} // namespace zol::host
