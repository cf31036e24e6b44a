#include "kernels/exports/blur.h"

#include "frame/host.h"
#include "frame/picture.h"
#include "kernels/blur/plane_blur.h"
#include "kernels/simd/alpha_plane.h"

#include <algorithm>
#include <cstring>

namespace {

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
  using Blur = zol::PlaneBlur<_color_t>;
  const zol::Tent tent(radius);
  const size_t width = extent(src->Width);
  const zol::Scratch<int32_t> rowBuffer(width * 4);
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
  using Blur = zol::PlaneBlur<uint8_t>;
  const zol::Tent tent(radius);
  const size_t width = extent(src->Width);
  const size_t pixels = width * extent(src->Height);
  const zol::Scratch<int32_t> rowBuffer(width);
  if (!rowBuffer)
    return memoryError(host);
  if (tent.isCopy())
    return fillRows(host, src, [&](int, const _color_t *from, _color_t *to) { copyRow(from, width, to); });

  const zol::Scratch<uint8_t> alpha(pixels);
  const zol::Scratch<uint8_t> band(width * Blur::kBandRows);
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
