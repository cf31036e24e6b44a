// Who is answered: requests of the page that was opened with this start's address, and no others.
#pragma once

#include <httplib.h>
#include <optional>
#include <string>

namespace zol::studio {

class Guard {
public:
  /// Draws a token of this start. Throws HostError where the system gives no random bytes.
  Guard();

  void setPort(int port) { port_ = port; }
  /// What the user opens.
  [[nodiscard]] std::string address() const;

  /// The status of a request that is refused; nothing for those that are answered. Nothing of its body has
  /// been read.
  [[nodiscard]] std::optional<int> refuses(const httplib::Request &request) const;

  /// The headers of every answer; the cookie for a request that brought the token in its address.
  void sign(const httplib::Request &request, httplib::Response &response) const;

private:
  [[nodiscard]] bool knowsToken(const httplib::Request &request) const;
  [[nodiscard]] std::string cookieName() const;

  std::string token_;
  int port_ = 0;
};

} // namespace zol::studio
