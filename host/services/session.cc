#include "host/services/session.h"

#include "host/services/calls.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace zol::host {
namespace {

thread_local std::vector<Session *> sessions; // of this thread; the last one is current

constexpr t_ZoServices serviceTable() {
  t_ZoServices table{};
#define ZOL_SERVICE(Name) table.Name = service::Name;
#include "host/services/services.inc"
#undef ZOL_SERVICE
  return table;
}

constexpr t_ZoServices kTable = serviceTable();

} // namespace

const t_ZoServices &services() { return kTable; }

Session::Session(std::string identity) : identity_(std::move(identity)) {
  sessions.push_back(this);
  info_.Identity = identity_.c_str();
  info_.Services = &kTable;
  info_.FrameRate = 25;
  info_.PixelAspect = 1;
  info_.BitsPerPixel = 32;
  info_.ClipEnd = 1;
}

Session::~Session() { detach(); }

void Session::detach() { std::erase(sessions, this); }

Session &Session::current() { return *sessions.back(); }

const std::u16string &Session::keep(std::u16string text) { return kept_.emplace_back(std::move(text)); }

Session::Use::Use(Session &session) : session_(&session) { sessions.push_back(session_); }

Session::Use::~Use() {
  if (const auto place = std::find(sessions.rbegin(), sessions.rend(), session_); place != sessions.rend())
    sessions.erase(std::next(place).base());
}

} // namespace zol::host
