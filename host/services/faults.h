// Services that fail on purpose.
#pragma once

#include "host/services/service.h"

#include <array>

namespace zol::host {

/// Makes services fail on purpose and counts their calls.
class Faults {
public:
  /// The nth call (from 1) of the service fails: it answers null, 0 or an error. IsAborted answers "stop"
  /// from its nth poll on.
  void failAt(Service service, int nth) { failing_.at(index(service)) = nth; }
  void abortAtPoll(int nth) { failAt(Service::IsAborted, nth); }
  /// Forgets faults and counts.
  void clear() { *this = Faults(); }
  [[nodiscard]] int calls(Service service) const { return calls_.at(index(service)); }
  /// Whether a poll has answered "stop".
  [[nodiscard]] bool aborted() const {
    const int nth = failing_.at(index(Service::IsAborted));
    return nth != 0 && calls(Service::IsAborted) >= nth;
  }

  /// Counts one call; whether it must fail.
  bool hit(Service service) {
    const int call = ++calls_[index(service)];
    const int nth = failing_[index(service)];
    return nth != 0 && (service == Service::IsAborted ? call >= nth : call == nth);
  }

private:
  static size_t index(Service service) { return static_cast<size_t>(service); }
  std::array<int, kServiceSlots> calls_{};
  std::array<int, kServiceSlots> failing_{};
};

} // namespace zol::host
