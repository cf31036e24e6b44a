// What an editor reads of a plug-in: an XML file for each effect, transition and generator.
#pragma once

#include "bridges/frei0r/plugin.h"

#include <string>

namespace zol::bridge {

/// The folder below the editor's own that a plug-in belongs into: effects, transitions or generators.
std::string assetFolder(const Plugin &plugin);

/// The file's contents. Numbers are shown in the field's own unit where that begins at 0, else from 0 to 1.
std::string assetText(const Plugin &plugin);

} // namespace zol::bridge
