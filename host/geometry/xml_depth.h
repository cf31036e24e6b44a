#pragma once

#include <string_view>

namespace zol::host {

/// Whether elements nest deeper than the limit before the first fault of form, if there is one.
bool nestsDeeperThan(int limit, std::string_view xml);

} // namespace zol::host
