// The blur in both directions, over a plane of pixels.
#pragma once

#include "kernels/blur/tent.h"
#include "kernels/blur/tent_lines.h"
#include "kernels/blur/tent_taps.h"
#include "kernels/simd/scratch.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// Blurs a plane of pixels (_color_t, or a byte each), each of whose bytes is a channel, band by band from
/// the top: first down the columns, truncated, then along the rows.
template <class Pixel> class PlaneBlur {
public:
  static constexpr int kPixelBytes = sizeof(Pixel);
  static constexpr int kBlockRows = kTentMaxLanes / kPixelBytes; ///< that are blurred at a time
  static constexpr int kBandRows = 4 * kBlockRows;

  /// `rowBuffer` has an element for every byte of a row. Tests as false afterwards when memory ran out.
  PlaneBlur(const Tent &tent, const Pixel *src, size_t width, size_t height, int32_t *rowBuffer);

  explicit operator bool() const { return slopes_ && groupSums_ && tapRow_ && columns_ && window_; }

  /// Writes the rows of the band that begins at row `top`, or as many as there are, to dst. Bands come in
  /// order, each once.
  void band(int top, Pixel *dst);

private:
  static constexpr size_t kAlignment = 64; ///< of what is loaded most: a cache line, or the widest vector
  template <class T> static T *aligned(T *memory) {
    return reinterpret_cast<T *>((reinterpret_cast<uintptr_t>(memory) + kAlignment - 1) / kAlignment *
                                 kAlignment);
  }
  [[nodiscard]] int rowBytes() const { return width_ * kPixelBytes; }
  /// Room for what is kept of the bytes from `at` on.
  [[nodiscard]] int16_t *groupSums(int at) const {
    return aligned(groupSums_.data()) + ptrdiff_t{at} * groups_.keptLines();
  }
  [[nodiscard]] bool usesTaps() const { return tent_.reach <= kTentMaxTaps; }
  void blurByTaps(int top, int rows, Pixel *dst);
  void blurStretch(int top, int rows, Pixel *dst);
  void blurColumns(int top, int rows, int at, int lanes, const TentSums &sums);
  /// The block that begins at row `row` of the band, after the first pass.
  [[nodiscard]] uint8_t *columns(int row) const {
    return aligned(columns_.data()) + ptrdiff_t{row} * rowBytes();
  }
  TentSource gather(int top, int rows, int at, int bytes);
  void blurRows(const uint8_t *columns, int rows, Pixel *dst);

  const decltype(ZOL_SELECT(tentTaps)) taps_ = ZOL_SELECT(tentTaps);
  const decltype(ZOL_SELECT(tentLines)) lines_ = ZOL_SELECT(tentLines);
  const Tent &tent_;
  const StepGroups groups_;
  /// Rows between the passes: the fewer the better, unless sums of groups wait, which many rows should share.
  const int stretch_;
  const uint8_t *src_;
  int width_;
  int height_;
  int wholeBytes_; ///< of a row, in whole groups of lanes; the rest has sums of its own
  int32_t *rowBuffer_;
  Scratch<int16_t> slopes_;
  Scratch<int16_t> groupSums_; ///< of each block of columns in turn, then those of the rows
  int32_t restWeighted_[kTentLaneGroup] = {};
  int16_t restSlopes_[kTentLaneGroup] = {};
  Scratch<uint8_t> tapRow_;  ///< a row after the first pass between absent pixels, and an absent row
  Scratch<uint8_t> columns_; ///< blocks after the first pass, transposed: kTentMaxLanes bytes a column
  Scratch<uint8_t> window_;  ///< gathered rows, kTentLaneGroup bytes each
};

} // namespace zol
