// Both passes are one filter that runs over lines: down the picture, and, on a transposed band, along it.
// A band of rows is blurred at a time, so that what the first pass leaves is still in the cache when the
// second takes it up, and the running sums of the first wait in the row buffer for the next band.

#include "kernels/exports/blur.h"

#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/blur/tent.h"
#include "kernels/blur/tent_lines.h"
#include "kernels/simd/alpha_plane.h"
#include "kernels/simd/scratch.h"
#include "kernels/simd/transpose.h"

#include <algorithm>
#include <cstring>

namespace {

using zol::Scratch;
using zol::Tent;

constexpr int kLanes = zol::kTentMaxLanes;
constexpr int kLaneGroup = zol::kTentLaneGroup;

constexpr int roundUp(int value, int unit) { return (value + unit - 1) / unit * unit; }

/// Blurs a plane of pixels, each of whose bytes is a channel, band by band from the top.
template <class Pixel> class PlaneBlur {
public:
  static constexpr int kPixelBytes = sizeof(Pixel);
  static constexpr int kBandRows = kLanes / kPixelBytes;

  /// `rowBuffer` has an element for every byte of a row.
  PlaneBlur(const Tent &tent, const Pixel *src, size_t width, size_t height, int32_t *rowBuffer)
      : tent_(tent), src_(reinterpret_cast<const uint8_t *>(src)), width_(static_cast<int>(width)),
        height_(static_cast<int>(height)), wholeBytes_(rowBytes() / kLaneGroup * kLaneGroup),
        rowBuffer_(rowBuffer), slopes_(width * kPixelBytes), columns_(width * kLanes),
        window_(static_cast<size_t>(kBandRows + 2 * tent.reach + 2) * kLaneGroup) {
    if (!*this)
      return;
    std::fill_n(rowBuffer_, wholeBytes_, 0);
    std::fill_n(slopes_.data(), wholeBytes_, int16_t{0});
    std::memset(columns_.data(), 0, width * kLanes);
  }

  explicit operator bool() const { return slopes_ && columns_ && window_; }

  /// Writes the rows of the band that begins at row `top`, or as many as there are, to dst. Bands come in
  /// order, each once.
  void band(int top, Pixel *dst) {
    const int rows = std::min(kBandRows, height_ - top);
    for (int at = 0; at < wholeBytes_; at += kLanes)
      blurColumns(top, rows, at, std::min(kLanes, wholeBytes_ - at), {rowBuffer_ + at, slopes_.data() + at});
    if (wholeBytes_ < rowBytes())
      blurColumns(top, rows, wholeBytes_, kLaneGroup, {restWeighted_, restSlopes_});
    blurRows(rows, dst);
  }

private:
  [[nodiscard]] int rowBytes() const { return width_ * kPixelBytes; }

  /// The first pass for the columns of the band that begin `at` bytes into the row, which it leaves
  /// transposed in columns_.
  void blurColumns(int top, int rows, int at, int lanes, const zol::TentSums &sums) {
    alignas(32) uint8_t block[kBandRows * kLanes];
    const int bytes = std::min(lanes, rowBytes() - at);
    const zol::TentSource source =
        bytes < lanes ? gather(top, rows, at, bytes) : zol::TentSource{src_ + at, rowBytes(), 0, height_};
    lines_(tent_, source, top == 0 ? -tent_.reach : top, top + rows, lanes, sums, block, kLanes);
    zol::transpose(reinterpret_cast<const Pixel *>(block), kBandRows, rows, bytes / kPixelBytes,
                   reinterpret_cast<Pixel *>(columns_.data() + ptrdiff_t{at / kPixelBytes} * kLanes),
                   kBandRows);
  }

  /// The last bytes of every row that the band needs, where they do not fill a group of lanes: beside zeros,
  /// so that nothing is read beyond the picture.
  zol::TentSource gather(int top, int rows, int at, int bytes) {
    const int begin = std::max(0, top - 2 - tent_.reach);
    const int end = std::min(height_, top + rows + tent_.reach);
    uint8_t *to = window_.data();
    for (int y = begin; y < end; ++y, to += kLaneGroup) {
      std::memcpy(to, src_ + ptrdiff_t{y} * rowBytes() + at, static_cast<size_t>(bytes));
      std::memset(to + bytes, 0, static_cast<size_t>(kLaneGroup - bytes));
    }
    return {window_.data(), kLaneGroup, begin, height_};
  }

  /// The second pass: lines are the band's columns, lanes its rows.
  void blurRows(int rows, Pixel *dst) {
    constexpr int kBlockColumns = 16;
    alignas(32) uint8_t block[kBlockColumns * kLanes];
    int32_t weighted[kLanes] = {};
    int16_t slopes[kLanes] = {};
    const int lanes = roundUp(rows * kPixelBytes, kLaneGroup);
    const zol::TentSource source{columns_.data(), kLanes, 0, width_};
    for (int x = 0; x < width_; x += kBlockColumns) {
      const int columns = std::min(kBlockColumns, width_ - x);
      lines_(tent_, source, x == 0 ? -tent_.reach : x, x + columns, lanes, {weighted, slopes}, block, kLanes);
      zol::transpose(reinterpret_cast<const Pixel *>(block), kBandRows, columns, rows, dst + x, width_);
    }
  }

  const decltype(&zol::sse2::tentLines) lines_ = ZOL_SELECT(tentLines);
  const Tent &tent_;
  const uint8_t *src_;
  int width_;
  int height_;
  int wholeBytes_; ///< of a row, in whole groups of lanes; the rest has sums of its own
  int32_t *rowBuffer_;
  Scratch<int16_t> slopes_;
  int32_t restWeighted_[kLaneGroup] = {};
  int16_t restSlopes_[kLaneGroup] = {};
  Scratch<uint8_t> columns_; ///< the band after the first pass, transposed: kLanes bytes a column
  Scratch<uint8_t> window_;  ///< gathered rows, kLaneGroup bytes each
};

pic *memoryError(t_ZoHostInfo *host) {
  zol::showMessage(host, "Filler: Memory allocation error");
  return nullptr;
}

/// A new picture like src, whose rows row(y, source row, destination row) fills in order.
template <class Row> pic *fillRows(t_ZoHostInfo *host, const pic *src, Row row) {
  zol::OwnedPic out(host, host->Services->PicCreate(src->Width, src->Height));
  if (!out)
    return memoryError(host);
  out->X = src->X;
  out->Y = src->Y;
  const bool done = zol::forEachRow(host, src->Height, [&](int y) {
    const ptrdiff_t at = ptrdiff_t{y} * src->Width;
    row(y, src->Pixels + at, out->Pixels + at);
  });
  return done ? out.release() : nullptr;
}

size_t extent(int16_t size) { return static_cast<size_t>(std::max<int>(size, 0)); }

void copyRow(const _color_t *from, size_t width, _color_t *to) {
  std::memcpy(to, from, width * sizeof(_color_t));
}

} // namespace

ZOL_EXPORT pic *FillBlurImage(t_ZoHostInfo *host, pic *src, double radius) {
  using Blur = PlaneBlur<_color_t>;
  const Tent tent(radius);
  const size_t width = extent(src->Width);
  const Scratch<int32_t> rowBuffer(width * 4);
  if (!rowBuffer)
    return memoryError(host);
  if (tent.isCopy())
    return fillRows(host, src, [&](int, const _color_t *from, _color_t *to) { copyRow(from, width, to); });

  Blur blur(tent, src->Pixels, extent(src->Width), extent(src->Height), rowBuffer.data());
  if (!blur)
    return memoryError(host);
  return fillRows(host, src, [&](int y, const _color_t *, _color_t *to) {
    if (y % Blur::kBandRows == 0)
      blur.band(y, to);
  });
}

ZOL_EXPORT pic *FillBlurAlpha(t_ZoHostInfo *host, pic *src, double radius) {
  using Blur = PlaneBlur<uint8_t>;
  const Tent tent(radius);
  const size_t width = extent(src->Width);
  const size_t pixels = width * extent(src->Height);
  const Scratch<int32_t> rowBuffer(width);
  if (!rowBuffer)
    return memoryError(host);
  if (tent.isCopy())
    return fillRows(host, src, [&](int, const _color_t *from, _color_t *to) { copyRow(from, width, to); });

  const Scratch<uint8_t> alpha(pixels);
  const Scratch<uint8_t> band(width * Blur::kBandRows);
  if (!alpha || !band)
    return memoryError(host);
  zol::takeAlpha(src->Pixels, pixels, alpha.data());
  Blur blur(tent, alpha.data(), extent(src->Width), extent(src->Height), rowBuffer.data());
  if (!blur)
    return memoryError(host);
  return fillRows(host, src, [&](int y, const _color_t *from, _color_t *to) {
    const int bandRow = y % Blur::kBandRows;
    if (bandRow == 0)
      blur.band(y, band.data());
    zol::putAlpha(from, band.data() + static_cast<size_t>(bandRow) * width, width, to);
  });
}
