#include "host/services/service.h"

#include <utility>

namespace zol::host {
namespace {

constexpr std::pair<Service, std::string_view> kNames[] = {
#define ZOL_SERVICE(Name) {Service::Name, #Name},
#include "host/services/services.inc"
#undef ZOL_SERVICE
};

} // namespace

std::string_view serviceName(Service service) {
  for (const auto &[candidate, name] : kNames)
    if (candidate == service)
      return name;
  return "";
}

std::optional<Service> serviceNamed(std::string_view name) {
  for (const auto &[service, candidate] : kNames)
    if (candidate == name)
      return service;
  return std::nullopt;
}

} // namespace zol::host
