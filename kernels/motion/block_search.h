// Kernels of the block search.
//
// The search answers what a walk over all rings answers: the first position with an error under 64, else the
// least error, the first in ring order of equal ones. It looks at positions in an order of its own, and only
// at those whose error might be small enough: the squared differences of the four quarters' byte sums, added,
// are at most the number of bytes of a quarter times the block's error.
#pragma once

#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

inline constexpr int kSearchRadius = 64;
inline constexpr unsigned kGoodEnough = 64; // an error below it ends the search

/// A field whose blocks are searched, and box sums of frame B. A box is a quarter of a block; plane entry
/// (x, y) stands for the box with that upper left corner and is kept modulo 2^16.
struct BlockSearch {
  const uint8_t *a, *b;
  size_t stride; // bytes
  int words, rows;
  int bw, bh;        // of a block, in words and rows; at most 16 by 16
  size_t planeStep;  // entries
  uint16_t *sums;    // of bytes; exact, since 8 x 8 words sum up to 65280
  uint16_t *squares; // of squared bytes; null until a flat block asks for them
  uint16_t *squaresMemory;
  uint16_t *rowMemory; // 3 x planeStep entries
  int guessX, guessY;  // displacement of the block found last
};

/// Entries of one row of a plane: the vectors read past its end.
inline size_t planeStepFor(int words) { return (static_cast<size_t>(words) + 63) & ~size_t{31}; }

ZOL_LEVELS_TO(
    avx2,
    /// Sum of the squared differences of the bytes of `words` words, modulo 2^32.
    uint32_t rowError(const uint8_t *a, const uint8_t *b, unsigned words);
    /// Fills `sums`.
    void prepareSearch(BlockSearch &search);
    /// Finds the block of A at (bx, by) in B with an error of at most `worst` (below 2^15); false without.
    bool searchBlock(BlockSearch &search, int bx, int by, unsigned worst, int *vec);)

} // namespace zol
