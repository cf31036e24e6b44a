// Connections of the server: a thread for each, and a time within which requests come and answers are taken.
#pragma once

#include <httplib.h>
#include <optional>

namespace zol::studio {

/// Gives up a client that is silent, and one that is not but takes for ever, a byte at a time.
class PatientServer : public httplib::Server {
public:
  PatientServer();

  /// Takes a port of this machine, by default a free one; what it is, or nothing where it is not to be had.
  std::optional<int> bind(std::optional<int> port);

private:
  bool process_and_close_socket(socket_t socket) override;
};

} // namespace zol::studio
