// The services as the library calls them, each over the thread's current session; and what all of them begin
// with.
#pragma once

#include "host/services/session.h"

#include <charconv>
#include <iterator>
#include <string>
#include <type_traits>

namespace zol::host {

/// One function a service, of the border's type and the service's name.
namespace service {
#define ZOL_SERVICE(Name) std::remove_pointer_t<decltype(t_ZoServices::Name)> Name;
#include "host/services/services.inc"
#undef ZOL_SERVICE
} // namespace service

template <class Value> void appendArgument(std::string &text, Value value) {
  if (text.back() != '(')
    text += ", ";
  if constexpr (std::is_same_v<Value, const char *>) {
    text += value == nullptr ? std::string("null") : '"' + std::string(value) + '"';
  } else {
    char digits[32];
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value).ptr);
  }
}

/// Counts and traces one call of the current session; whether it must fail.
template <class... Arguments> bool enter(Service called, Arguments... arguments) {
  Session &session = Session::current();
  if (session.tracing) {
    std::string text(serviceName(called));
    text += '(';
    (appendArgument(text, arguments), ...);
    session.trace.push_back(text + ')');
  }
  return session.faults.hit(called);
}

/// A colour as one number of a trace.
inline unsigned packed(const _color_t &color) {
  return unsigned{color.b} | unsigned{color.g} << 8 | unsigned{color.r} << 16 | unsigned{color.a} << 24;
}

} // namespace zol::host
