// The border: the canvases of effects that reach beyond their picture.
#pragma once

#include "frame/host.h"
#include "frame/picture.h"

#include <climits>

namespace zol {

/// The smallest area that holds the host's frame, and the picture too where there is one.
inline Area canvasOf(const t_ZoHostInfo *host, const pic *picture) {
  const Area frame = Area::ofSize(host->Width, host->Height);
  return picture != nullptr ? unionOf(Area::of(*picture), frame) : frame;
}

/// Writes row y of the canvas: the picture's pixels where it lies, transparent black elsewhere.
inline void writeCanvasRow(const Area &canvas, const pic *picture, int y, _color_t *row) {
  const Area lies = picture != nullptr ? coveredPart(canvas, Area::of(*picture)) : Area{};
  if (!lies.hasRow(y)) {
    std::fill_n(row, canvas.width(), _color_t{});
    return;
  }
  _color_t *at = std::fill_n(row, lies.left - canvas.left, _color_t{});
  at = std::copy_n(pixelAt(*picture, lies.left, y), lies.width(), at);
  std::fill_n(at, canvas.right - lies.right, _color_t{});
}

/// Row y of the canvas: the picture's own pixels where they are the row, else what is written to `buffer`.
inline const _color_t *canvasRow(const Area &canvas, const pic *picture, int y, _color_t *buffer) {
  if (picture != nullptr && Area::of(*picture) == canvas)
    return pixelAt(*picture, canvas.left, y);
  writeCanvasRow(canvas, picture, y, buffer);
  return buffer;
}

/// A new picture of the area, its pixels still to be written; null after a message when it cannot be had.
inline pic *createAt(t_ZoHostInfo *host, const Area &area) {
  const bool fits = area.width() <= SHRT_MAX && area.height() <= SHRT_MAX;
  pic *picture = fits ? host->Services->PicCreate(area.width(), area.height()) : nullptr;
  if (picture == nullptr)
    showMemoryError(host);
  else
    placeAt(*picture, area);
  return picture;
}

/// The picture on its canvas, as a new picture; null after a message when it cannot be had.
inline pic *createCanvas(t_ZoHostInfo *host, const pic *picture) {
  const Area area = canvasOf(host, picture);
  pic *canvas = createAt(host, area);
  for (int y = area.top; canvas != nullptr && y < area.bottom; ++y)
    writeCanvasRow(area, picture, y, canvas->Pixels + area.index(area.left, y));
  return canvas;
}

} // namespace zol
