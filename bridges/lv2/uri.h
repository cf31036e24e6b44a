#pragma once

#include "bridges/sound/plugin.h"

#include <string>

namespace zol::bridge {

/// What hosts know a plug-in by, for ever.
inline std::string uriOf(const SoundPlugin &plugin) {
  return "urn:zol:" + plugin.id.substr(plugin.id.find('_') + 1);
}

} // namespace zol::bridge
