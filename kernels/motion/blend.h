// Row kernels of mixing.
#pragma once

#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

ZOL_LEVELS_TO(avx2,
              /// dst = (a * (32768 - w) + b * w) >> 15 for each byte of `words` words.
              void blendWords(uint8_t *dst, const uint8_t *a, const uint8_t *b, size_t words, uint32_t w);
              /// Sets the words whose keys differ in a and b to the mark of a changed word.
              void markChanged(uint8_t *dst, const uint8_t *a, const uint8_t *b, size_t words);
              /// Whether one of the words is the mark of a changed word.
              bool hasMark(const uint8_t *row, size_t words);)

} // namespace zol
