// The block motion of a pair of fields: searched once, it gives the frames of any number of weights.
#pragma once

#include "kernels/motion/block_motion.h"
#include "kernels/simd/scratch.h"

#include <optional>

namespace zol::slomo {

/// Serves one pair after the other, all of one size.
class PairMotion {
public:
  /// Where memory runs out the object tests as false and must not be used.
  explicit PairMotion(const BlockGrid &grid);
  explicit operator bool() const { return planes_ && vectors_; }
  [[nodiscard]] bool fits(const BlockGrid &grid) const { return grid == grid_; }

  /// Begins with a pair, which stays as it is until its last row of blocks has been searched.
  void begin(const FieldPair &pair);
  [[nodiscard]] unsigned blockRows() const { return grid_.blockRows(); }
  void searchRow(unsigned row);

  /// Makes the field that lies w / 32768 of the way (w below that) from the pair's first to its second; all
  /// rows of blocks have been searched in it or in its like.
  void makeField(const FieldPair &pair, unsigned w, uint8_t *dst) const;
  /// The same over what mixField() made.
  void moveBlocks(const FieldPair &pair, unsigned w, uint8_t *dst) const;

private:
  BlockGrid grid_;
  Scratch<uint16_t> planes_;
  Scratch<BlockVector> vectors_;
  std::optional<BlockFinder> finder_;
};

} // namespace zol::slomo
