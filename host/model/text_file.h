// Small files of text.
#pragma once

#include <string>

namespace zol::host {

// Both throw HostError, naming the file.

std::string readTextFile(const std::string &file);
/// Appears whole or not at all, in the place of what stands there.
void writeTextFile(const std::string &file, const std::string &text);

} // namespace zol::host
