#include "apps/studio/png.h"

#include <cstdint>
#include <new>
#include <string_view>
#include <zlib.h>

namespace zol::studio {
namespace {

std::string big(uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
          static_cast<char>(value)};
}

std::string chunk(std::string_view kind, std::string_view data) {
  const std::string body = std::string(kind) + std::string(data);
  return big(static_cast<uint32_t>(data.size())) + body +
         big(static_cast<uint32_t>(
             crc32(0, reinterpret_cast<const Bytef *>(body.data()), static_cast<uInt>(body.size()))));
}

std::string compressed(const std::string &bytes) {
  uLongf size = compressBound(bytes.size());
  std::string stream(size, '\0');
  if (compress(reinterpret_cast<Bytef *>(stream.data()), &size, reinterpret_cast<const Bytef *>(bytes.data()),
               bytes.size()) != Z_OK)
    throw std::bad_alloc();
  stream.resize(size);
  return stream;
}

} // namespace

std::string pngOf(const host::Icon &icon) {
  std::string rows;
  for (size_t i = 0; i < icon.pixels.size(); ++i) {
    if (i % static_cast<size_t>(icon.width) == 0)
      rows += '\0'; // the row's filter: none
    const uint32_t pixel = icon.pixels[i];
    rows += big(pixel << 8 | pixel >> 24); // red, green, blue, alpha
  }
  constexpr char kRgba8[] = {8, 6, 0, 0, 0};
  const std::string header = big(static_cast<uint32_t>(icon.width)) +
                             big(static_cast<uint32_t>(icon.height)) + std::string(kRgba8, sizeof kRgba8);
  return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + chunk("IDAT", compressed(rows)) + chunk("IEND", "");
}

} // namespace zol::studio
