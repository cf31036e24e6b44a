#include "effects/compositing/warped_picture.h"

namespace zol {
namespace {

Span unionOf(const Span &a, const Span &b) {
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

} // namespace

bool layWarped(t_ZoHostInfo *host, const Area &ground, const pic *background, const WarpedPicture &picture,
               const Laying &laying, _color_t *out) {
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

pic *renderWarped(t_ZoHostInfo *host, const pic *background, const WarpedPicture &picture,
                  const Laying &laying) {
  const Area ground = groundOf(host, background);
  OwnedPic out(host, createAt(host, ground));
  const bool done = out && layWarped(host, ground, background, picture, laying, out->Pixels);
  return done ? out.release() : nullptr;
}

} // namespace zol
