// Pictures that lie in the frame as maps say, for effects that lay them over a background.
#pragma once

#include "frame/canvas.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/motion/frame_average.h"
#include "kernels/simd/scratch.h"
#include "kernels/warp/warp_row.h"

#include <span>

namespace zol {

// In the order of WarpFilter.
inline constexpr const char *kWarpFilters[] = {"Sharp", "Smooth", "Pixels"};

inline WarpFilter paramWarpFilter(t_ZoHostInfo *host, int field) {
  constexpr int kLast = static_cast<int>(WarpFilter::pixels);
  return static_cast<WarpFilter>(std::clamp(paramInt(host, field), 0, kLast));
}

inline constexpr int kMostMaps = 64;

struct WarpedPicture {
  WarpSource source;
  std::span<const WarpMap> maps; ///< from the frame; 1 to kMostMaps, the average of which shows
  WarpFilter filter;
  int opacity = 4096; ///< 4096 = 1.0
};

/// The area that an effect writes: the background's, or the frame's where there is none.
inline Area groundOf(const t_ZoHostInfo *host, const pic *background) {
  return background != nullptr ? Area::of(*background) : Area::ofSize(host->Width, host->Height);
}

inline Span unionOf(const Span &a, const Span &b) {
  if (a.begin == a.end || b.begin == b.end)
    return a.begin == a.end ? b : a;
  return {std::min(a.begin, b.begin), std::max(a.end, b.end)};
}

/// Rows of a warped picture.
class WarpedRows {
public:
  /// Of pictures as wide as the area.
  WarpedRows(const WarpedPicture &picture, const Area &area)
      : picture_(picture), area_(area), width_(static_cast<size_t>(area.width())),
        rows_(width_ * picture.maps.size()), average_(picture.maps.size() > 1 ? width_ : 0) {}

  explicit operator bool() const { return rows_ && average_; }

  /// Calls use(column, pixels, count) with what may show of row y, if anything does.
  template <class Use> void at(int y, Use use) const {
    Span seen{};
    for (const WarpMap &map : picture_.maps)
      seen = unionOf(seen, map.visible(y, area_.left, area_.right));
    const int count = seen.end - seen.begin;
    if (count == 0)
      return;
    const _color_t *rows[kMostMaps];
    uint16_t weights[kMostMaps];
    const size_t all = picture_.maps.size();
    for (size_t i = 0; i < all; ++i) {
      _color_t *row = rows_.data() + width_ * i;
      warpRow(picture_.source, picture_.maps[i], y, seen.begin, seen.end, picture_.filter, picture_.opacity,
              row);
      rows[i] = row;
      weights[i] = static_cast<uint16_t>((i + 1) * kWhole / all - i * kWhole / all);
    }
    if (all == 1)
      return use(seen.begin, rows[0], count);
    ZOL_SELECT(averageRows)(rows, weights, static_cast<int>(all), average_.data(), count);
    use(seen.begin, average_.data(), count);
  }

private:
  static constexpr size_t kWhole = 256; // of all weights

  const WarpedPicture &picture_;
  const Area &area_;
  size_t width_;
  Scratch<_color_t> rows_, average_;
};

/// Writes the ground's pixels: the background, or nothing where it is null, and the picture over it. False
/// when the host wants to stop or, after a message, when memory runs out.
inline bool layWarped(t_ZoHostInfo *host, const Area &ground, const pic *background,
                      const WarpedPicture &picture, const Laying &laying, _color_t *out) {
  const auto rowOf = [&](int row) { return out + ground.index(ground.left, ground.top + row); };
  if (background == nullptr && picture.maps.size() == 1)
    return forEachRow(host, ground.height(), [&](int row) {
      warpRow(picture.source, picture.maps[0], ground.top + row, ground.left, ground.right, picture.filter,
              picture.opacity, rowOf(row));
    });
  const WarpedRows warped(picture, ground);
  if (!warped) {
    showMemoryError(host);
    return false;
  }
  const auto layRow = ZOL_SELECT(layPixels);
  return forEachRow(host, ground.height(), [&](int row) {
    const int y = ground.top + row;
    writeCanvasRow(ground, background, y, rowOf(row));
    warped.at(y, [&](int x, const _color_t *pixels, int count) {
      layRow(rowOf(row) + (x - ground.left), pixels, count, laying);
    });
  });
}

/// The same as a new picture; null where false.
inline pic *renderWarped(t_ZoHostInfo *host, const pic *background, const WarpedPicture &picture,
                         const Laying &laying) {
  const Area ground = groundOf(host, background);
  OwnedPic out(host, createAt(host, ground));
  const bool done = out && layWarped(host, ground, background, picture, laying, out->Pixels);
  return done ? out.release() : nullptr;
}

} // namespace zol
