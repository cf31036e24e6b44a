#include "apps/studio/guard.h"

#include "apps/studio/limits.h"
#include "apps/studio/reply.h"
#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>
#include <sys/random.h>

namespace zol::studio {
namespace {

constexpr size_t kTokenBytes = 24;

// Nothing but what this program serves; pictures and sounds that the page makes itself.
constexpr char kPolicy[] = "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob:; "
                           "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

std::string randomToken() {
  std::array<unsigned char, kTokenBytes> bytes{};
  if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
    throw host::HostError("the system gives no random bytes");
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

/// In a time that does not tell how much of it is right.
bool sameSecret(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0 : 1;
  for (size_t i = 0; i < std::min(a.size(), b.size()); ++i)
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned char>(b[i]);
  return difference == 0;
}

std::string cookieIn(const httplib::Request &request, const std::string &name) {
  const std::string header = request.get_header_value("Cookie");
  for (const std::string_view part : host::split(header, ';'))
    if (const std::string_view cookie = host::trimmed(part); cookie.starts_with(name + '='))
      return std::string(cookie.substr(name.size() + 1));
  return "";
}

bool hasBody(const httplib::Request &request) {
  return request.method != "GET" && request.method != "DELETE";
}

std::optional<uint64_t> lengthOf(const httplib::Request &request) {
  const std::string text = request.get_header_value("Content-Length");
  uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  return error == std::errc() && end == text.data() + text.size() && !text.empty() ? std::optional(length)
                                                                                   : std::nullopt;
}

} // namespace

Guard::Guard() : token_(randomToken()) {}

std::string Guard::address() const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/?token=" + token_;
}

/// Cookies are shared by all ports of a machine.
std::string Guard::cookieName() const { return "zol-studio-" + std::to_string(port_); }

bool Guard::knowsToken(const httplib::Request &request) const {
  return sameSecret(cookieIn(request, cookieName()), token_) ||
         (request.method == "GET" && request.path == "/" &&
          sameSecret(request.get_param_value("token"), token_));
}

std::optional<int> Guard::refuses(const httplib::Request &request) const {
  const std::string host = request.get_header_value("Host");
  const std::string port = ':' + std::to_string(port_);
  if (request.get_header_value_count("Host") != 1 ||
      (host != "127.0.0.1" + port && host != "localhost" + port))
    return kForbidden; // a name of somebody else's that leads here
  if (request.has_header("Origin") && request.get_header_value("Origin") != "http://" + host)
    return kForbidden;
  const std::string site = request.get_header_value("Sec-Fetch-Site");
  if (request.path != "/" && !site.empty() && site != "same-origin" && site != "none")
    return kForbidden;
  if (!knowsToken(request))
    return kUnauthorized;
  if (!hasBody(request))
    return std::nullopt;
  const auto length = lengthOf(request);
  if (!length || request.has_header("Transfer-Encoding"))
    return kLengthRequired;
  if (*length > (request.path == kDropPath ? kLargestDrop : kLargestBody))
    return kTooLarge;
  return std::nullopt;
}

void Guard::sign(const httplib::Request &request, httplib::Response &response) const {
  response.set_header("Content-Security-Policy", kPolicy);
  response.set_header("X-Content-Type-Options", "nosniff");
  response.set_header("Referrer-Policy", "no-referrer");
  response.set_header("Cross-Origin-Resource-Policy", "same-origin");
  response.set_header("Cross-Origin-Opener-Policy", "same-origin");
  response.set_header("Cache-Control", "no-store");
  if (request.has_param("token") && knowsToken(request))
    response.set_header("Set-Cookie", cookieName() + '=' + token_ + "; Path=/; HttpOnly; SameSite=Strict");
}

} // namespace zol::studio
