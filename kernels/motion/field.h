// Two frames between which a third is made, or one field of them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zol::slomo {

/// Rows of words of 32 bits: of a frame all, of a field every second one.
struct FieldPair {
  const uint8_t *a, *b; ///< before and after the moment that is made
  unsigned words, rows;
  size_t stride; ///< bytes, of whatever is made too
};

/// a * (32768 - w) + b * w, byte by byte.
void mixField(const FieldPair &field, unsigned w, uint8_t *dst);

/// Sets the words that differ in a and b to the mark of a changed word.
void markField(const FieldPair &field, uint8_t *dst);

void copyRows(const uint8_t *src, uint8_t *dst, unsigned words, unsigned rows, size_t stride);

} // namespace zol::slomo
