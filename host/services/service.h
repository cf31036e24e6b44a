// The services by name.
#pragma once

#include "frame/zol.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace zol::host {

/// A service's value is its slot in the table.
enum class Service {
#define ZOL_SERVICE(Name) Name = offsetof(t_ZoServices, Name) / sizeof(t_ZoSlot),
#include "host/services/services.inc"
#undef ZOL_SERVICE
};

constexpr size_t kServiceSlots = sizeof(t_ZoServices) / sizeof(t_ZoSlot);

/// The service's name, and the service of a name.
std::string_view serviceName(Service service);
std::optional<Service> serviceNamed(std::string_view name);

} // namespace zol::host
