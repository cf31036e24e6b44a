#include "host/model/unicode.h"

namespace zol::host {

std::string toUtf8(std::u16string_view text) {
  const auto isSurrogate = [&](size_t at, char32_t kind) {
    return at < text.size() && (text[at] & 0xFC00u) == kind;
  };
  std::string result;
  const auto append = [&](char32_t byte) { result += static_cast<char>(byte); };
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (isSurrogate(i, 0xD800) && isSurrogate(i + 1, 0xDC00)) {
      c = 0x10000 + ((c & 0x3FFu) << 10) + (text[++i] & 0x3FFu);
    } else if (isSurrogate(i, 0xD800) || isSurrogate(i, 0xDC00)) {
      c = 0xFFFD;
    }
    if (c < 0x80) {
      append(c);
      continue;
    }
    if (c < 0x800) {
      append(0xC0 | c >> 6);
    } else {
      if (c < 0x10000) {
        append(0xE0 | c >> 12);
      } else {
        append(0xF0 | c >> 18);
        append(0x80 | (c >> 12 & 0x3F));
      }
      append(0x80 | (c >> 6 & 0x3F));
    }
    append(0x80 | (c & 0x3F));
  }
  return result;
}

} // namespace zol::host
