// Chance that is the same for every frame, order of rendering and machine: numbers that follow from a seed, a
// step in time and a place. For words and, in level sources, for lanes of them.
#pragma once

#include <cstdint>

namespace zol {
namespace { // of each source alone: those of different levels are compiled for different machines

/// Every bit of the result depends on every bit of v; no two v give the same.
template <class Word> constexpr Word mixBits(Word v) {
  v ^= v >> 16;
  v *= 0x7FEB352DU;
  v ^= v >> 15;
  v *= 0x846CA68BU;
  return v ^ (v >> 16);
}

/// What the places of row y have in common: the hash of column x is mixBits(hashRow(seed, step, y) + x).
constexpr uint32_t hashRow(uint32_t seed, uint32_t step, uint32_t y) {
  return mixBits(mixBits(mixBits(seed) + step) + y);
}

constexpr uint32_t hash(uint32_t seed, uint32_t step, uint32_t y, uint32_t x) {
  return mixBits(hashRow(seed, step, y) + x);
}

} // namespace
} // namespace zol
