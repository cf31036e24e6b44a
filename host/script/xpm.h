// Reads XPM pictures that are given as an array of texts: header, colour table, rows of pixels.
#pragma once

#include "host/model/effect.h"

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zol::host {

/// An XPM that is malformed; what() says in which way.
class XpmError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// What the first text says: enough to know how many texts the picture has.
struct XpmHeader {
  int width = 0, height = 0, colors = 0, charsPerPixel = 0;
  [[nodiscard]] size_t rows() const { return 1 + static_cast<size_t>(colors) + static_cast<size_t>(height); }
};

/// Throws XpmError. Pictures of more than 1024 pixels a side or 65,536 colours are refused.
XpmHeader parseXpmHeader(std::string_view header);

/// The picture of these texts, the header first, as many as it asks for. Throws XpmError.
Icon parseXpm(std::span<const std::string> rows);

} // namespace zol::host
