#include "kernels/motion/pair_motion.h"

namespace zol::slomo {

PairMotion::PairMotion(const BlockGrid &grid)
    : grid_(grid), planes_(BlockFinder::entriesFor(grid)), vectors_(grid.count()) {}

void PairMotion::begin(const FieldPair &pair) { finder_.emplace(pair, grid_, planes_.data()); }

void PairMotion::searchRow(unsigned row) {
  const size_t first = row * grid_.columns();
  finder_->find(first, grid_.columns(), vectors_.data() + first);
}

void PairMotion::makeField(const FieldPair &pair, unsigned w, uint8_t *dst) const {
  mixField(pair, w, dst);
  moveBlocks(pair, w, dst);
}

void PairMotion::moveBlocks(const FieldPair &pair, unsigned w, uint8_t *dst) const {
  pasteBlocks(pair, grid_, 0, grid_.count(), vectors_.data(), w, dst);
}

} // namespace zol::slomo
