#include "kernels/matte/erode_lines.h"

namespace zol::ZOL_LEVEL {
namespace {

inline void fill(uint8_t *line, int lanes, uint8_t value) {
  for (int x = 0; x < lanes; ++x)
    line[x] = value;
}

inline void copy(const uint8_t *from, int lanes, uint8_t *to) {
  for (int x = 0; x < lanes; ++x)
    to[x] = from[x];
}

/// to = min(a, b); to may be either of them.
inline void least(const uint8_t *a, const uint8_t *b, int lanes, uint8_t *to) {
  for (int x = 0; x < lanes; ++x)
    to[x] = a[x] < b[x] ? a[x] : b[x];
}

/// The minimum of each line and its `whole` neighbours on either side. The lines are cut into stretches as
/// long as the window; a window is the end of one and the beginning of the next.
void erodeWhole(const uint8_t *src, ptrdiff_t srcStride, int count, int lanes, int whole, uint8_t *work,
                uint8_t *dst, ptrdiff_t dstStride) {
  const int window = 2 * whole + 1;
  uint8_t beginning[kErodeMaxLanes];
  for (int first = 0; first < count; first += window) {
    // work[i]: the least of the window's lines from the i-th on, for the window around line `first`.
    fill(beginning, lanes, 255);
    for (int i = window - 1; i >= 0; --i) {
      const int line = first - whole + i;
      if (line >= 0 && line < count)
        least(beginning, src + line * srcStride, lanes, beginning);
      copy(beginning, lanes, work + ptrdiff_t{i} * kErodeMaxLanes);
    }
    fill(beginning, lanes, 255);
    for (int i = 0; i < window && first + i < count; ++i) {
      least(work + ptrdiff_t{i} * kErodeMaxLanes, beginning, lanes, dst + (first + i) * dstStride);
      if (const int line = first + i + whole + 1; line < count)
        least(beginning, src + line * srcStride, lanes, beginning);
    }
  }
}

/// Moves every line `part` / 256 of the way to the minimum of itself and its two neighbours, which is the
/// erosion that reaches one line further. Rounds to the nearest.
void erodeOnInPlace(uint8_t *lines, ptrdiff_t stride, int count, int lanes, int part) {
  uint8_t before[kErodeMaxLanes];
  uint8_t here[kErodeMaxLanes];
  copy(lines, lanes, before);
  for (int y = 0; y < count; ++y) {
    uint8_t *const line = lines + y * stride;
    const uint8_t *const after = y + 1 < count ? line + stride : line;
    copy(line, lanes, here);
    for (int x = 0; x < lanes; ++x) {
      uint8_t further = before[x] < here[x] ? before[x] : here[x];
      further = after[x] < further ? after[x] : further;
      const auto way = static_cast<uint16_t>((here[x] - further) * part + 128); // at most 255 * 256 + 128
      line[x] = static_cast<uint8_t>(here[x] - (way >> 8));
    }
    copy(here, lanes, before);
  }
}

} // namespace

void erodeLines(const uint8_t *src, ptrdiff_t srcStride, int count, int lanes, const ErodeReach &reach,
                uint8_t *work, uint8_t *dst, ptrdiff_t dstStride) {
  erodeWhole(src, srcStride, count, lanes, reach.whole, work, dst, dstStride);
  if (reach.part != 0)
    erodeOnInPlace(dst, dstStride, count, lanes, reach.part);
}

} // namespace zol::ZOL_LEVEL
