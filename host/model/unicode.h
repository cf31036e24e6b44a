// Texts between the border's 8 and 16 bits. What is no text, such as overlong forms and halves of surrogate
// pairs, becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace zol::host {

std::string toUtf8(std::u16string_view text);
std::u16string toUtf16(std::string_view text);

} // namespace zol::host
