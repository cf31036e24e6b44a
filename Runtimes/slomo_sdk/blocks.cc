// The class's block motion, over kernels/motion/block_motion.h.

#include "Runtimes/slomo_sdk/assertion.h"
#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/words.h"

#include <algorithm>
#include <cstring>

using namespace zol;

namespace {

/// Below this weight the farthest displacement, 64, is truncated to 0.
constexpr unsigned kLeastMovingWeight = slomo::kWeightOne / kSearchRadius;

const unsigned char *bytesOf(const void *frame) { return static_cast<const unsigned char *>(frame); }

/// Calls row(bytes, copy, size) with each row of one field of a pair until it answers false; whether none
/// did.
template <class Row>
bool forEachRow(const slomo::FieldPair &pair, const uint8_t *field, uint8_t *copy, Row row) {
  const size_t size = size_t{pair.words} * 4;
  for (size_t y = 0; y < pair.rows; ++y)
    if (!row(field + y * pair.stride, copy + y * size, size))
      return false;
  return true;
}

} // namespace

namespace zol::slomo {

KnownPair::KnownPair(const BlockGrid &grid)
    : motion_(grid), a_(size_t{grid.words} * 4 * grid.rows), b_(size_t{grid.words} * 4 * grid.rows) {}

const PairMotion &KnownPair::motionOf(const FieldPair &pair) {
  const auto same = [](const uint8_t *row, const uint8_t *copy, size_t size) {
    return std::memcmp(row, copy, size) == 0;
  };
  const auto keep = [](const uint8_t *row, uint8_t *copy, size_t size) {
    std::memcpy(copy, row, size);
    return true;
  };
  if (known_ && forEachRow(pair, pair.a, a_.data(), same) && forEachRow(pair, pair.b, b_.data(), same))
    return motion_;
  motion_.begin(pair);
  for (unsigned row = 0; row < motion_.blockRows(); ++row)
    motion_.searchRow(row);
  forEachRow(pair, pair.a, a_.data(), keep);
  forEachRow(pair, pair.b, b_.data(), keep);
  known_ = true;
  return motion_;
}

} // namespace zol::slomo

void CSlowMotion::Vector(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  Interpol(dst, frameA, frameB, w, field);
  const SField f = FieldOf(dst, frameA, frameB, field);
  const slomo::BlockGrid grid{f.words, f.rows, 4 * m_nBytesPerPixel, m_bInterlaced != 0 ? 8u : 16u};
  const size_t count = grid.count();
  if (count == 0 || w < kLeastMovingWeight || (m_nCPUFlags & 1) != 0)
    return;
  if (SWork *work = Work(); work != nullptr) {
    if (!work->pair || !work->pair->fits(grid)) {
      work->pair.reset();
      work->pair.emplace(grid);
    }
    if (*work->pair)
      return work->pair->motionOf(f).moveBlocks(f, w, f.dst);
  }
  slomo::BlockFinder finder(f, grid, nullptr);
  constexpr size_t kAtOnce = 256; // a table that needs no memory of its own
  slomo::BlockVector vectors[kAtOnce];
  for (size_t first = 0; first < count; first += kAtOnce) {
    const size_t blocks = std::min(kAtOnce, count - first);
    finder.find(first, blocks, vectors);
    slomo::pasteBlocks(f, grid, first, blocks, vectors, w, f.dst);
  }
}

unsigned CSlowMotion::GetVector(const void *pBuf1, const void *pBuf2, unsigned words, unsigned rows,
                                unsigned stride, unsigned bx, unsigned by, unsigned bw, unsigned bh,
                                int *vec) {
  ZOL_SLOMO_ASSERT(pBuf1 != nullptr, "pBuf1", 843);
  ZOL_SLOMO_ASSERT(pBuf2 != nullptr, "pBuf2", 844);
  if ((m_nCPUFlags & 1) != 0)
    return 0xFFFFFFFF;
  return slomo::walkToBlock({bytesOf(pBuf1), bytesOf(pBuf2), words, rows, stride}, bx, by, bw, bh, vec);
}

unsigned CSlowMotion::ComputeMSE(const void *a, const void *b, unsigned stride, unsigned words, unsigned rows,
                                 unsigned limit) {
  return slomo::squaredError(bytesOf(a), bytesOf(b), stride, words, rows, limit);
}
