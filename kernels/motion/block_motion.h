// Block motion: each block of the frame before is searched in the frame after, once; then frames of any
// weight between the two are made by pasting the blocks where they stand by then.
#pragma once

#include "kernels/motion/block_search.h"
#include "kernels/motion/field.h"

namespace zol::slomo {

/// A field cut into blocks, row by row. The last ones of a row and of a column end at the field's edges and
/// overlap their neighbours.
struct BlockGrid {
  unsigned words, rows;   ///< of the field
  unsigned width, height; ///< of a block: 8 or 16 words and rows

  [[nodiscard]] size_t columns() const { return (size_t{words} + width - 1) / width; }
  /// None where the field is not larger than a block, and does not move.
  [[nodiscard]] unsigned blockRows() const {
    return words <= width || rows <= height ? 0 : (rows - 1) / height + 1;
  }
  [[nodiscard]] size_t count() const { return columns() * blockRows(); }
  [[nodiscard]] unsigned left(size_t block) const {
    return limited(block % columns() * width, words - width);
  }
  [[nodiscard]] unsigned top(size_t block) const {
    return limited(block / columns() * height, rows - height);
  }

  bool operator==(const BlockGrid &) const = default;

private:
  static unsigned limited(size_t place, unsigned last) {
    return place < last ? static_cast<unsigned>(place) : last;
  }
};

/// How far a block has moved by the frame after; 0, 0 where it is not found there.
struct BlockVector {
  int16_t dx, dy;
};

/// The search over one pair of fields.
class BlockFinder {
public:
  /// Entries of memory that the search takes; more than there can be where they do not count in size_t.
  static size_t entriesFor(const BlockGrid &grid);

  /// Where `memory` is null the same vectors are found, slowly.
  BlockFinder(const FieldPair &field, const BlockGrid &grid, uint16_t *memory);

  /// Finds `count` blocks from number `first` on.
  void find(size_t first, size_t count, BlockVector *vectors);

private:
  FieldPair field_;
  BlockGrid grid_;
  BlockSearch search_{};
};

/// Pastes the blocks from number `first` on that have moved by the weight w (32768 = 1.0) over the mixed
/// field `dst`: in the place that each has left stands what the frame after has there. In their order, since
/// later blocks cover earlier ones.
void pasteBlocks(const FieldPair &field, const BlockGrid &grid, size_t first, size_t count,
                 const BlockVector *vectors, unsigned w, uint8_t *dst);

// ---- The search in full ----

/// The sum of squared byte differences; once a row's end finds it above `limit`, extrapolated from there.
unsigned squaredError(const uint8_t *a, const uint8_t *b, size_t stride, unsigned words, unsigned rows,
                      unsigned limit);

/// Searches a's block at (bx, by) in b, around vec, which becomes the displacement, ring by ring and up to
/// the first good one; answers its error.
unsigned walkToBlock(const FieldPair &field, unsigned bx, unsigned by, unsigned width, unsigned height,
                     int *vec);

} // namespace zol::slomo
