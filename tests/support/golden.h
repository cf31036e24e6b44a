// What results are compared with that are kept in files; ZOL_WRITE_GOLDEN in the environment writes those
// anew.
#pragma once

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace zol::test {

inline bool writesGolden() { return std::getenv("ZOL_WRITE_GOLDEN") != nullptr; }

/// 64 bits as hexadecimal digits (FNV-1a).
inline std::string hashOf(std::string_view bytes) {
  uint64_t hash = 14695981039346656037U;
  for (const char byte : bytes)
    hash = (hash ^ static_cast<uint8_t>(byte)) * 1099511628211U;
  char text[17];
  std::snprintf(text, sizeof text, "%016" PRIx64, hash);
  return text;
}

} // namespace zol::test
