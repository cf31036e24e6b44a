// The effects that a bridge holds, and what it calls them.
#pragma once

#include "host/script/library.h"

#include <string>

namespace zol::bridge {

/// All effects, declared when first asked for and kept as long as the process lives: threads of the host may
/// still render while it leaves. Throws HostError.
const host::EffectLibrary &catalogue();

/// A menu path as an identifier, of its family and its last word: "Filters/Color/Recolor" is
/// "filters_recolor".
std::string identifier(const std::string &path);

/// The last word of a menu path.
std::string lastWord(const std::string &path);

} // namespace zol::bridge
