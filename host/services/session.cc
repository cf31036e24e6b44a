#include "host/services/session.h"

#include "host/services/calls.h"

#include <utility>

namespace zol::host {
namespace {

thread_local Session *currentSession = nullptr;

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

Session::Session(std::string identity)
    : identity_(std::move(identity)), previous_(std::exchange(currentSession, this)) {
  info_.Identity = identity_.c_str();
  info_.Services = &kTable;
  info_.FrameRate = 25;
  info_.PixelAspect = 1;
  info_.BitsPerPixel = 32;
  info_.ClipEnd = 1;
}

Session::~Session() {
  if (currentSession == this)
    currentSession = previous_;
}

Session &Session::current() { return *currentSession; }

const std::u16string &Session::keep(std::u16string text) { return kept_.emplace_back(std::move(text)); }

Session::Use::Use(Session &session) : previous_(std::exchange(currentSession, &session)) {}
Session::Use::~Use() { currentSession = previous_; }

} // namespace zol::host
