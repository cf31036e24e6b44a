// The class's block motion, over kernels/motion/block_motion.h.

#include "Runtimes/slomo_sdk/assertion.h"
#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/block_motion.h"
#include "kernels/motion/words.h"

#include <algorithm>

using namespace zol;

namespace {

/// Below this weight the farthest displacement, 64, is truncated to 0.
constexpr unsigned kLeastMovingWeight = slomo::kWeightOne / kSearchRadius;

const unsigned char *bytesOf(const void *frame) { return static_cast<const unsigned char *>(frame); }

} // namespace

void CSlowMotion::Vector(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  Interpol(dst, frameA, frameB, w, field);
  const SField f = FieldOf(dst, frameA, frameB, field);
  const slomo::BlockGrid grid{f.words, f.rows, 4 * m_nBytesPerPixel, m_bInterlaced != 0 ? 8u : 16u};
  const size_t count = grid.count();
  if (count == 0 || w < kLeastMovingWeight || (m_nCPUFlags & 1) != 0)
    return;
  slomo::BlockFinder finder(f, grid, Scratch(slomo::BlockFinder::bytesFor(f)));
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
