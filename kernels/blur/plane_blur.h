// The blur in both directions, over a plane of pixels.
#pragma once

#include "kernels/blur/tent.h"
#include "kernels/blur/tent_lines.h"
#include "kernels/simd/scratch.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// Blurs a plane of pixels (_color_t, or a byte each), each of whose bytes is a channel, band by band from
/// the top: first down the columns, truncated, then along the rows.
template <class Pixel> class PlaneBlur {
public:
  static constexpr int kPixelBytes = sizeof(Pixel);
  static constexpr int kBandRows = kTentMaxLanes / kPixelBytes;

  /// `rowBuffer` has an element for every byte of a row. Tests as false afterwards when memory ran out.
  PlaneBlur(const Tent &tent, const Pixel *src, size_t width, size_t height, int32_t *rowBuffer);

  explicit operator bool() const { return slopes_ && columns_ && window_; }

  /// Writes the rows of the band that begins at row `top`, or as many as there are, to dst. Bands come in
  /// order, each once.
  void band(int top, Pixel *dst);

private:
  [[nodiscard]] int rowBytes() const { return width_ * kPixelBytes; }
  void blurColumns(int top, int rows, int at, int lanes, const TentSums &sums);
  TentSource gather(int top, int rows, int at, int bytes);
  void blurRows(int rows, Pixel *dst);

  const decltype(ZOL_SELECT(tentLines)) lines_ = ZOL_SELECT(tentLines);
  const Tent &tent_;
  const uint8_t *src_;
  int width_;
  int height_;
  int wholeBytes_; ///< of a row, in whole groups of lanes; the rest has sums of its own
  int32_t *rowBuffer_;
  Scratch<int16_t> slopes_;
  int32_t restWeighted_[kTentLaneGroup] = {};
  int16_t restSlopes_[kTentLaneGroup] = {};
  Scratch<uint8_t> columns_; ///< the band after the first pass, transposed: kTentMaxLanes bytes a column
  Scratch<uint8_t> window_;  ///< gathered rows, kTentLaneGroup bytes each
};

} // namespace zol
