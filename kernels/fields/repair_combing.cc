#include "kernels/fields/repair_combing.h"

#include "kernels/fields/deinterlace_rows.h"

#include <algorithm>
#include <cstddef>

namespace zol {
namespace {

constexpr int kEdgeLimit = 180;
constexpr int kStripWidth = 2048; // measures of three lines: 24 KiB of stack

/// Squares wrap at 32 bits, as far as a host drives them.
uint32_t square(int value) { return static_cast<uint32_t>(value) * static_cast<uint32_t>(value); }

/// One strip of columns, from the first line to the last; `step` leads from a line to the next.
class Strip {
public:
  Strip(const uint32_t *src, uint32_t *dst, ptrdiff_t step, int width, int height)
      : src_(src), dst_(dst), step_(step), width_(width), height_(height) {}

  void repair(int32_t limit, uint32_t edgeSquared, bool blend) const {
    const auto combingOf = ZOL_SELECT(combingOfLine);
    const auto repairOne = ZOL_SELECT(repairLine);
    int32_t combing[3][kStripWidth + kCombingPadding]; // of three lines in turn
    const auto clear = [this](int32_t *line) { std::fill_n(line, width_ + kCombingPadding, 0); };
    clear(combing[2]);
    combingOf(lines(0), width_, edgeSquared, combing[0]);
    const int32_t *before = combing[2];
    for (int y = 0; y < height_; ++y) {
      int32_t *after = combing[(y + 1) % 3];
      if (y + 1 < height_)
        combingOf(lines(y + 1), width_, edgeSquared, after);
      else
        clear(after);
      const int32_t *at = combing[y % 3];
      if (blend || y % 2 != 0) {
        const int32_t *const around[3] = {before, at, after};
        repairOne(lines(y), around, width_, limit, blend, dst_ + y * step_);
      } else {
        std::copy_n(line(y), width_, dst_ + y * step_);
      }
      before = at;
    }
  }

private:
  [[nodiscard]] const uint32_t *line(int y) const { return src_ + y * step_; }
  [[nodiscard]] DeinterlaceLines lines(int y) const {
    const int last = height_ - 1;
    return {line(y > 0 ? y - 1 : std::min(1, last)), line(y), line(y < last ? y + 1 : std::max(last - 1, 0))};
  }

  const uint32_t *src_;
  uint32_t *dst_;
  ptrdiff_t step_;
  int width_, height_;
};

} // namespace

void repairCombing(const uint32_t *src, uint32_t *dst, int width, int height, int threshold, int edge,
                   bool blend) {
  const auto limit = static_cast<int32_t>(4 * square(threshold));
  const uint32_t edgeSquared = square(std::min(edge, kEdgeLimit));
  for (int x = 0; x < width; x += kStripWidth)
    Strip(src + x, dst + x, width, std::min(width - x, kStripWidth), height)
        .repair(limit, edgeSquared, blend);
}

} // namespace zol
