// The vocabulary for vectors as the tests reach it: every level's form over plain memory.
#pragma once

#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

inline constexpr int kMaxVectorBytes = 64;

using VectorCase = void (*)(const void *a, const void *b, void *out, size_t bytes);

ZOL_LEVELS(
    /// The operations of vector_cases.inc, in its order; bytes are a multiple of kMaxVectorBytes.
    const VectorCase *vectorCases();

    /// Lanes of a vector of 32-bit lanes.
    int wordLanes();
    /// Copies `count` elements through vectors, whole ones and the rest; returns the number of steps.
    int copyWords(const uint32_t *from, uint32_t *to, int count);
    int copyBytes(const uint8_t *from, uint8_t *to, int count);
    /// Through narrow(): the lower halves of wordLanes() words of each.
    void narrowWords(const uint32_t *low, const uint32_t *high, uint16_t *to);
    /// Looks up wordLanes() entries.
    void gatherWords(const uint32_t *table, const uint32_t *index, uint32_t *to);
    /// Loads wordLanes() / 4 blocks each from a place of its own and stores them so.
    void moveBlocks(const void *const *from, void *const *to); uint32_t sumWords(const uint32_t *words);
    /// The mask of the bytes of a vector that are 255, bit by bit as lowestBit() finds them, and their
    /// number.
    int setBytes(const uint8_t *bytes, int *places, bool *any, bool *all);
    void splatNumber(double number, float *to);)

} // namespace zol
