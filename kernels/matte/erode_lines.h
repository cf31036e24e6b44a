// Erosion in one direction: each byte becomes the least of those in the lines around it.
#pragma once

#include "kernels/simd/levels.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// Bytes side by side that are eroded together, at most.
inline constexpr int kErodeMaxLanes = 128;

/// How far erosion reaches: `whole` lines, and `part` / 256 of the way on to one more.
struct ErodeReach {
  int whole; ///< below the count of lines
  int part;  ///< 0 to 256

  [[nodiscard]] bool reaches() const { return whole != 0 || part != 0; }
  /// Lines of kErodeMaxLanes bytes that the erosion needs to work in.
  [[nodiscard]] size_t workLines() const { return 2 * static_cast<size_t>(whole) + 1; }
};

/// Erodes `count` lines of `lanes` bytes from src into dst, which do not overlap. Lines outside do not
/// erode. The work does not depend on the reach.
ZOL_LEVELS_TO(avx2,
              void erodeLines(const uint8_t *src, ptrdiff_t srcStride, int count, int lanes,
                              const ErodeReach &reach, uint8_t *work, uint8_t *dst, ptrdiff_t dstStride);)

} // namespace zol
