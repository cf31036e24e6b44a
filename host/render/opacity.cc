#include "host/render/opacity.h"

#include <algorithm>
#include <cstring>

namespace zol::host {
namespace {

constexpr uint32_t kAlpha = 0xFF000000U; // of a pixel as a word
constexpr size_t kBlock = 4096;          // pixels, after which a transparent one is noticed

uint32_t wordAt(const uint8_t *bytes, size_t pixel) {
  uint32_t word;
  std::memcpy(&word, bytes + pixel * sizeof word, sizeof word);
  return word;
}

} // namespace

bool isOpaque(const _color_t *pixels, size_t count) {
  const auto *bytes = reinterpret_cast<const uint8_t *>(pixels);
  for (size_t first = 0; first < count; first += kBlock) {
    const size_t end = std::min(count, first + kBlock);
    uint32_t all = kAlpha;
    for (size_t i = first; i < end; ++i)
      all &= wordAt(bytes, i);
    if (all != kAlpha)
      return false;
  }
  return true;
}

void makeOpaque(_color_t *pixels, size_t count) {
  auto *bytes = reinterpret_cast<uint8_t *>(pixels);
  for (size_t i = 0; i < count; ++i) {
    const uint32_t word = wordAt(bytes, i) | kAlpha;
    std::memcpy(bytes + i * sizeof word, &word, sizeof word);
  }
}

void Opacity::settle(_color_t *pixels, size_t count) {
  if (!watched_ || isOpaque(pixels, count))
    return;
  ++transparent_;
  if (forced_)
    makeOpaque(pixels, count);
}

} // namespace zol::host
