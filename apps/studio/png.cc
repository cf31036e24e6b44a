#include "apps/studio/png.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace zol::studio {
namespace {

constexpr std::array<uint32_t, 256> crcTable() {
  std::array<uint32_t, 256> table{};
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t rest = i;
    for (int bit = 0; bit < 8; ++bit)
      rest = (rest & 1) != 0 ? 0xEDB88320 ^ rest >> 1 : rest >> 1;
    table[i] = rest;
  }
  return table;
}

uint32_t crcOf(std::string_view bytes) {
  static constexpr auto kTable = crcTable();
  uint32_t crc = 0xFFFFFFFF;
  for (const char c : bytes)
    crc = kTable[(crc ^ static_cast<unsigned char>(c)) & 255] ^ crc >> 8;
  return ~crc;
}

uint32_t adlerOf(std::string_view bytes) {
  constexpr uint32_t kPrime = 65521;
  uint32_t a = 1, b = 0;
  for (const char c : bytes) {
    a = (a + static_cast<unsigned char>(c)) % kPrime;
    b = (b + a) % kPrime;
  }
  return b << 16 | a;
}

std::string big(uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
          static_cast<char>(value)};
}

std::string little16(size_t value) { return {static_cast<char>(value), static_cast<char>(value >> 8)}; }

std::string chunk(std::string_view kind, std::string_view data) {
  const std::string body = std::string(kind) + std::string(data);
  return big(static_cast<uint32_t>(data.size())) + body + big(crcOf(body));
}

/// A zlib stream of stored blocks.
std::string stored(std::string_view bytes) {
  constexpr size_t kBlock = 65535;
  std::string stream = "\x78\x01";
  for (size_t at = 0; at < bytes.size(); at += kBlock) {
    const std::string_view block = bytes.substr(at, kBlock);
    stream += at + kBlock >= bytes.size() ? '\1' : '\0';
    stream += little16(block.size()) + little16(~block.size());
    stream += block;
  }
  return stream + big(adlerOf(bytes));
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
  return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + chunk("IDAT", stored(rows)) + chunk("IEND", "");
}

} // namespace zol::studio
