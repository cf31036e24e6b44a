#pragma once

#include <string>
#include <string_view>

namespace zol::host {

/// UTF-8 of UTF-16; a surrogate without its other half becomes U+FFFD.
std::string toUtf8(std::u16string_view text);

} // namespace zol::host
