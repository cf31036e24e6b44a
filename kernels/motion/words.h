// Frames as words, and the walks over them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zol::slomo {

typedef uint32_t Word __attribute__((may_alias, aligned(1)));

inline constexpr uint32_t kChanged = 0x01000000; // marks a changed word that belongs to no object yet
inline constexpr uint32_t kKeyBits = 0xE0E0E0E0; // words are alike when these bits are
inline constexpr uint32_t kTaken = 0x1F1F1F1F;   // with a key: marks a word taken into an object
inline constexpr uint32_t kWeightOne = 32768;

inline Word *rowOf(void *frame, size_t stride, size_t y) {
  return reinterpret_cast<Word *>(static_cast<uint8_t *>(frame) + y * stride);
}
inline const Word *rowOf(const void *frame, size_t stride, size_t y) {
  return reinterpret_cast<const Word *>(static_cast<const uint8_t *>(frame) + y * stride);
}
inline uint32_t keyOf(uint32_t word) { return word & kKeyBits; }

inline uint32_t blendWord(uint32_t a, uint32_t b, uint32_t w) {
  uint32_t out = 0;
  for (int shift = 0; shift < 32; shift += 8)
    out |= (((a >> shift & 255) * (kWeightOne - w) + (b >> shift & 255) * w) >> 15 & 255) << shift;
  return out;
}

/// Visits the square rings 0..last around (cx, cy), each from its upper left corner to the right and round,
/// until visit(x, y) answers true; whether it did.
template <class Visit> bool walkRings(int64_t cx, int64_t cy, int64_t first, int64_t last, Visit visit) {
  for (int64_t r = first; r <= last; ++r) {
    for (int64_t x = cx - r; x <= cx + r; ++x)
      if (visit(x, cy - r))
        return true;
    for (int64_t y = cy - r + 1; y <= cy + r; ++y)
      if (visit(cx + r, y))
        return true;
    for (int64_t x = cx + r - 1; x >= cx - r; --x)
      if (visit(x, cy + r))
        return true;
    for (int64_t y = cy + r - 1; y >= cy - r; --y)
      if (visit(cx - r, y))
        return true;
  }
  return false;
}

struct Place {
  int16_t x, y;
};

/// Depth-first fill from (x, y), which the caller has taken: take(x, y) answers whether the neighbour
/// belongs and marks it. `capacity` places suffice when every word of the frame fits, since a word is on
/// the stack at most once; what would not fit is not followed.
template <class Take>
void floodFill(Place *stack, size_t capacity, unsigned words, unsigned rows, unsigned x, unsigned y,
               Take take) {
  static constexpr int kSteps[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
  if (capacity == 0)
    return;
  size_t top = 0;
  stack[top++] = {static_cast<int16_t>(x), static_cast<int16_t>(y)};
  while (top != 0) {
    const Place from = stack[--top];
    for (const auto &step : kSteps) {
      const unsigned nx = static_cast<unsigned>(from.x + step[0]),
                     ny = static_cast<unsigned>(from.y + step[1]);
      if (nx < words && ny < rows && top < capacity && take(nx, ny))
        stack[top++] = {static_cast<int16_t>(nx), static_cast<int16_t>(ny)};
    }
  }
}

} // namespace zol::slomo
