// Both passes are one filter that runs over lines: down the picture, and, on a transposed band, along it.
// A band of rows is blurred at a time, so that what the first pass leaves is still in the cache when the
// second takes it up, and the running sums of the first wait in the row buffer for the next band. Small tents
// need neither sums nor transposition: their few neighbours are taken up one by one, row after row.

#include "kernels/blur/plane_blur.h"

#include "frame/zol.h"
#include "kernels/simd/transpose.h"

#include <algorithm>
#include <cstring>

namespace zol {
namespace {

constexpr int kLanes = kTentMaxLanes;
constexpr int kLaneGroup = kTentLaneGroup;

constexpr int kTapMargin = kTentMaxTaps * static_cast<int>(sizeof(_color_t));

constexpr int roundUp(int value, int unit) { return (value + unit - 1) / unit * unit; }

} // namespace

template <class Pixel>
PlaneBlur<Pixel>::PlaneBlur(const Tent &tent, const Pixel *src, size_t width, size_t height,
                            int32_t *rowBuffer)
    : tent_(tent), groups_(tent), stretch_(usesTaps()          ? 0
                                           : groups_.count > 0 ? kBandRows
                                                               : kBlockRows),
      src_(reinterpret_cast<const uint8_t *>(src)), width_(static_cast<int>(width)),
      height_(static_cast<int>(height)), wholeBytes_(rowBytes() / kLaneGroup * kLaneGroup),
      rowBuffer_(rowBuffer), slopes_(width * kPixelBytes),
      groupSums_((static_cast<size_t>(roundUp(rowBytes(), kLaneGroup)) + kLanes) * groups_.keptLines() +
                 kAlignment),
      tapRow_(2 * (rowBytes() + kTapMargin)), columns_(width * kPixelBytes * stretch_ + kAlignment),
      window_(static_cast<size_t>(kBandRows + 2 * tent.reach + 2) * kLaneGroup) {
  if (!*this)
    return;
  std::fill_n(rowBuffer_, wholeBytes_, 0);
  std::fill_n(slopes_.data(), wholeBytes_, int16_t{0});
  std::fill_n(groupSums(0), ptrdiff_t{roundUp(rowBytes(), kLaneGroup)} * groups_.keptLines(), int16_t{0});
  std::memset(columns(0), 0, width * kPixelBytes * stretch_);
  std::memset(tapRow_.data(), 0, 2 * (rowBytes() + kTapMargin));
}

template <class Pixel> void PlaneBlur<Pixel>::band(int top, Pixel *dst) {
  const int rows = std::min(kBandRows, height_ - top);
  if (usesTaps())
    return blurByTaps(top, rows, dst);
  for (int row = 0; row < rows; row += stretch_)
    blurStretch(top + row, std::min(stretch_, rows - row), dst + ptrdiff_t{row} * width_);
}

/// Both passes for some rows of the band, one behind the other.
template <class Pixel> void PlaneBlur<Pixel>::blurStretch(int top, int rows, Pixel *dst) {
  for (int at = 0; at < wholeBytes_; at += kLanes)
    blurColumns(top, rows, at, std::min(kLanes, wholeBytes_ - at),
                {rowBuffer_ + at, slopes_.data() + at, groupSums(at)});
  if (wholeBytes_ < rowBytes())
    blurColumns(top, rows, wholeBytes_, kLaneGroup, {restWeighted_, restSlopes_, groupSums(wholeBytes_)});
  for (int row = 0; row < rows; row += kBlockRows)
    blurRows(columns(row), std::min(kBlockRows, rows - row), dst + ptrdiff_t{row} * width_);
}

/// Both passes row by row: the second finds what the first left in its cache.
template <class Pixel> void PlaneBlur<Pixel>::blurByTaps(int top, int rows, Pixel *dst) {
  uint8_t *const row = tapRow_.data() + kTapMargin;
  const uint8_t *const absent = row + rowBytes() + kTapMargin;
  const auto blurPixels = [&](int x, int count, uint8_t *to) {
    const uint8_t *taps[2 * kTentMaxTaps + 1];
    for (int d = -kTentMaxTaps; d <= kTentMaxTaps; ++d)
      taps[kTentMaxTaps + d] = row + (x + d) * kPixelBytes;
    taps_(tent_, taps + kTentMaxTaps, tent_.sumAt(x, width_), count * kPixelBytes, to + x * kPixelBytes);
  };
  const int inside = std::max(0, width_ - 2 * tent_.reach);
  for (int y = top; y < top + rows; ++y, dst += width_) {
    const uint8_t *taps[2 * kTentMaxTaps + 1];
    for (int d = -kTentMaxTaps; d <= kTentMaxTaps; ++d)
      taps[kTentMaxTaps + d] = y + d >= 0 && y + d < height_ ? src_ + ptrdiff_t{y + d} * rowBytes() : absent;
    taps_(tent_, taps + kTentMaxTaps, tent_.sumAt(y, height_), rowBytes(), row);

    for (int x = 0; x < width_;) {
      const int count = x == tent_.reach && inside > 0 ? inside : 1;
      blurPixels(x, count, reinterpret_cast<uint8_t *>(dst));
      x += count;
    }
  }
}

/// The first pass for the columns of the stretch that begin `at` bytes into the row, which it leaves
/// transposed in columns_.
template <class Pixel>
void PlaneBlur<Pixel>::blurColumns(int top, int rows, int at, int lanes, const TentSums &sums) {
  alignas(32) uint8_t block[kBlockRows * kLanes];
  const int bytes = std::min(lanes, rowBytes() - at);
  const TentSource source =
      bytes < lanes ? gather(top, rows, at, bytes) : TentSource{src_ + at, rowBytes(), 0, height_};
  for (int row = 0; row < rows; row += kBlockRows) {
    const int from = top + row;
    const int count = std::min(kBlockRows, rows - row);
    lines_(tent_, groups_, source, from == 0 ? -tent_.reach : from, from + count, lanes, sums, block, kLanes);
    transpose(reinterpret_cast<const Pixel *>(block), kBlockRows, count, bytes / kPixelBytes,
              reinterpret_cast<Pixel *>(columns(row) + ptrdiff_t{at / kPixelBytes} * kLanes), kBlockRows);
  }
}

/// The last bytes of every row that the stretch needs, where they do not fill a group of lanes: beside zeros,
/// so that nothing is read beyond the picture.
template <class Pixel> TentSource PlaneBlur<Pixel>::gather(int top, int rows, int at, int bytes) {
  const int begin = std::max(0, top - 2 - tent_.reach);
  const int end = std::min(height_, top + rows + tent_.reach);
  uint8_t *to = window_.data();
  for (int y = begin; y < end; ++y, to += kLaneGroup) {
    std::memcpy(to, src_ + ptrdiff_t{y} * rowBytes() + at, static_cast<size_t>(bytes));
    std::memset(to + bytes, 0, static_cast<size_t>(kLaneGroup - bytes));
  }
  return {window_.data(), kLaneGroup, begin, height_};
}

/// The second pass: lines are a block's columns, lanes its rows.
template <class Pixel> void PlaneBlur<Pixel>::blurRows(const uint8_t *columns, int rows, Pixel *dst) {
  constexpr int kBlockColumns = 16;
  alignas(32) uint8_t block[kBlockColumns * kLanes];
  int32_t weighted[kLanes] = {};
  int16_t slopes[kLanes] = {};
  const int lanes = roundUp(rows * kPixelBytes, kLaneGroup);
  int16_t *const groupSums = this->groupSums(roundUp(rowBytes(), kLaneGroup));
  std::fill_n(groupSums, kLanes * groups_.keptLines(), int16_t{0});
  const TentSource source{columns, kLanes, 0, width_};
  for (int x = 0; x < width_; x += kBlockColumns) {
    const int count = std::min(kBlockColumns, width_ - x);
    lines_(tent_, groups_, source, x == 0 ? -tent_.reach : x, x + count, lanes, {weighted, slopes, groupSums},
           block, kLanes);
    transpose(reinterpret_cast<const Pixel *>(block), kBlockRows, count, rows, dst + x, width_);
  }
}

template class PlaneBlur<_color_t>;
template class PlaneBlur<uint8_t>;

} // namespace zol
