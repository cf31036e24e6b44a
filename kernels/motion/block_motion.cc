#include "kernels/motion/block_motion.h"

#include "kernels/motion/words.h"

namespace zol::slomo {
namespace {

/// How far a displacement has come at weight w, truncated toward zero.
int travelled(int distance, unsigned w) {
  return static_cast<int>(static_cast<int64_t>(distance) * w / static_cast<int64_t>(kWeightOne));
}

} // namespace

// Two planes and three single rows.
size_t BlockFinder::entriesFor(const BlockGrid &grid) {
  const uint64_t entries = (2ull * grid.rows + 3) * planeStepFor(static_cast<int>(grid.words));
  return entries > SIZE_MAX ? SIZE_MAX : static_cast<size_t>(entries);
}

BlockFinder::BlockFinder(const FieldPair &field, const BlockGrid &grid, uint16_t *memory)
    : field_(field), grid_(grid) {
  search_.a = field.a;
  search_.b = field.b;
  search_.stride = field.stride;
  search_.words = static_cast<int>(field.words);
  search_.rows = static_cast<int>(field.rows);
  search_.bw = static_cast<int>(grid.width);
  search_.bh = static_cast<int>(grid.height);
  search_.planeStep = planeStepFor(search_.words);
  search_.sums = memory;
  if (memory == nullptr || grid.count() == 0)
    return;
  search_.squaresMemory = search_.sums + field.rows * search_.planeStep;
  search_.rowMemory = search_.squaresMemory + field.rows * search_.planeStep;
  ZOL_SELECT(prepareSearch)(search_);
}

void BlockFinder::find(size_t first, size_t count, BlockVector *vectors) {
  const unsigned worst = grid_.width * grid_.height * 8;
  const auto search = ZOL_SELECT(searchBlock);
  for (size_t i = 0; i < count; ++i) {
    const unsigned bx = grid_.left(first + i), by = grid_.top(first + i);
    int vec[2] = {0, 0};
    const bool found = search_.sums != nullptr
                           ? search(search_, static_cast<int>(bx), static_cast<int>(by), worst, vec)
                           : walkToBlock(field_, bx, by, grid_.width, grid_.height, vec) <= worst;
    vectors[i] =
        found ? BlockVector{static_cast<int16_t>(vec[0]), static_cast<int16_t>(vec[1])} : BlockVector{};
  }
}

void pasteBlocks(const FieldPair &field, const BlockGrid &grid, size_t first, size_t count,
                 const BlockVector *vectors, unsigned w, uint8_t *dst) {
  const auto paste = [&](size_t fromX, size_t fromY, size_t toX, size_t toY) {
    copyRows(field.b + fromY * field.stride + fromX * 4, dst + toY * field.stride + toX * 4, grid.width,
             grid.height, field.stride);
  };
  for (size_t i = 0; i < count; ++i) {
    const auto [dx, dy] = vectors[i];
    const int sx = travelled(dx, w), sy = travelled(dy, w);
    if (sx == 0 && sy == 0)
      continue;
    const unsigned x = grid.left(first + i), y = grid.top(first + i);
    paste(x, y, x, y);
    paste(x + dx, y + dy, x + sx, y + sy);
  }
}

unsigned squaredError(const uint8_t *a, const uint8_t *b, size_t stride, unsigned words, unsigned rows,
                      unsigned limit) {
  const auto error = ZOL_SELECT(rowError);
  unsigned sum = 0;
  for (unsigned y = 0; y < rows; ++y) {
    sum += error(a + y * stride, b + y * stride, words);
    if (sum > limit)
      return sum * rows / (y + 1);
  }
  return sum;
}

unsigned walkToBlock(const FieldPair &field, unsigned bx, unsigned by, unsigned width, unsigned height,
                     int *vec) {
  const int64_t lastX = int64_t{field.words} - width, lastY = int64_t{field.rows} - height;
  const int64_t cx = int64_t{bx} + vec[0], cy = int64_t{by} + vec[1];
  int64_t bestX = cx, bestY = cy;
  unsigned best = 0xFFFFFFFF;
  const uint8_t *block = field.a + by * field.stride + size_t{bx} * 4;
  walkRings(cx, cy, 0, kSearchRadius, [&](int64_t x, int64_t y) {
    if (x < 0 || x > lastX || y < 0 || y > lastY)
      return false;
    const uint8_t *other = field.b + static_cast<size_t>(y) * field.stride + static_cast<size_t>(x) * 4;
    const unsigned error = squaredError(block, other, field.stride, width, height, best);
    if (error < best) {
      best = error;
      bestX = x;
      bestY = y;
    }
    return best < kGoodEnough;
  });
  vec[0] = static_cast<int>(bestX - bx);
  vec[1] = static_cast<int>(bestY - by);
  return best;
}

} // namespace zol::slomo
