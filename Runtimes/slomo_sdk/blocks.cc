// Block motion: each block of the frame before the time is searched in the frame after it and pasted where
// it stands in between.

#include "Runtimes/slomo_sdk/assertion.h"
#include "Runtimes/slomo_sdk/engine.h"
#include "kernels/motion/block_search.h"

#include <cstdint>

using namespace zol;

namespace {

/// Below this weight the farthest displacement, 64, is truncated to 0.
constexpr unsigned kLeastMovingWeight = slomo::kWeightOne / kSearchRadius;

/// How far a displacement has come at weight w, truncated toward zero.
int travelled(int distance, unsigned w) {
  return static_cast<int>(static_cast<int64_t>(distance) * w / static_cast<int64_t>(slomo::kWeightOne));
}

} // namespace

void CSlowMotion::Vector(void *dst, const void *frameA, const void *frameB, unsigned w, unsigned field) {
  Interpol(dst, frameA, frameB, w, field);
  const SField f = FieldOf(dst, frameA, frameB, field);
  const unsigned bw = 4 * m_nBytesPerPixel, bh = m_bInterlaced != 0 ? 8 : 16;
  if (f.words <= bw || f.rows <= bh || w < kLeastMovingWeight || (m_nCPUFlags & 1) != 0)
    return;

  const unsigned worst = bh * bw * 8;
  const size_t step = planeStepFor(static_cast<int>(f.words));
  auto *memory = static_cast<uint16_t *>(Scratch((2ull * f.rows + 3) * step * sizeof(uint16_t)));
  BlockSearch search{f.a,
                     f.b,
                     f.stride,
                     static_cast<int>(f.words),
                     static_cast<int>(f.rows),
                     static_cast<int>(bw),
                     static_cast<int>(bh),
                     step,
                     memory,
                     nullptr,
                     nullptr,
                     nullptr,
                     0,
                     0};
  if (memory != nullptr) {
    search.squaresMemory = memory + f.rows * step;
    search.rowMemory = search.squaresMemory + f.rows * step;
    ZOL_SELECT(prepareSearch)(search);
  }
  const auto find = [&, searchFast = ZOL_SELECT(searchBlock)](unsigned bx, unsigned by, int *vec) {
    if (memory != nullptr)
      return searchFast(search, static_cast<int>(bx), static_cast<int>(by), worst, vec);
    return GetVector(f.a, f.b, f.words, f.rows, f.stride, bx, by, bw, bh, vec) <= worst;
  };

  // The last blocks of a row and of a column end at the frame's edges and overlap their neighbours.
  for (unsigned y = 0; y < f.rows; y += bh) {
    const unsigned by = y + bh > f.rows ? f.rows - bh : y;
    for (unsigned x = 0; x < f.words; x += bw) {
      const unsigned bx = x + bw > f.words ? f.words - bw : x;
      int vec[2] = {0, 0};
      if (!find(bx, by, vec))
        continue;
      const int sx = travelled(vec[0], w), sy = travelled(vec[1], w);
      if (sx == 0 && sy == 0)
        continue;
      const auto paste = [&](unsigned fromX, unsigned fromY, unsigned toX, unsigned toY) {
        CopyFrame(f.b + size_t{fromY} * f.stride + fromX * 4, f.dst + size_t{toY} * f.stride + toX * 4, bw,
                  bh, f.stride);
      };
      paste(bx, by, bx, by);
      paste(bx + vec[0], by + vec[1], bx + sx, by + sy);
    }
  }
}

unsigned CSlowMotion::GetVector(const void *pBuf1, const void *pBuf2, unsigned words, unsigned rows,
                                unsigned stride, unsigned bx, unsigned by, unsigned bw, unsigned bh,
                                int *vec) {
  ZOL_SLOMO_ASSERT(pBuf1 != nullptr, "pBuf1", 843);
  ZOL_SLOMO_ASSERT(pBuf2 != nullptr, "pBuf2", 844);
  const int64_t lastX = static_cast<int64_t>(words) - bw, lastY = static_cast<int64_t>(rows) - bh;
  const int64_t cx = static_cast<int64_t>(bx) + vec[0], cy = static_cast<int64_t>(by) + vec[1];
  int64_t bestX = cx, bestY = cy;
  unsigned best = 0xFFFFFFFF;
  const auto *block = slomo::rowOf(pBuf1, stride, by) + bx;
  const auto visit = [&](int64_t x, int64_t y) {
    if (x < 0 || x > lastX || y < 0 || y > lastY)
      return false;
    const unsigned error =
        ComputeMSE(block, slomo::rowOf(pBuf2, stride, static_cast<size_t>(y)) + x, stride, bw, bh, best);
    if (error < best) {
      best = error;
      bestX = x;
      bestY = y;
    }
    return best < kGoodEnough;
  };
  if ((m_nCPUFlags & 1) == 0)
    slomo::walkRings(cx, cy, 0, kSearchRadius, visit);
  vec[0] = static_cast<int>(bestX - bx);
  vec[1] = static_cast<int>(bestY - by);
  return best;
}

unsigned CSlowMotion::ComputeMSE(const void *a, const void *b, unsigned stride, unsigned words, unsigned rows,
                                 unsigned limit) {
  const auto error = ZOL_SELECT(rowError);
  const auto *p = static_cast<const unsigned char *>(a), *q = static_cast<const unsigned char *>(b);
  unsigned sum = 0;
  for (unsigned y = 0; y < rows; ++y) {
    sum += error(p + size_t{y} * stride, q + size_t{y} * stride, words);
    if (sum > limit)
      return sum * rows / (y + 1);
  }
  return sum;
}
