#include "kernels/keying/color_keyer.h"

#include "frame/convert.h"

#include <algorithm>

namespace zol {
namespace {

int opacityOf(double value) { return std::clamp(truncate(255 * value), 0, 255); }

} // namespace

ColorKey::ColorKey(_color_t color, double lower, double upper, double near, double far) : color_(color) {
  // Thresholds span the whole of int: 64 bits hold their differences times 255.
  const int64_t threshold = truncate(255 * lower);
  const int64_t difference = truncate(255 * upper) - threshold;
  const int64_t range = difference == 0 ? 1 : difference;
  const int nearOpacity = opacityOf(near);
  const int farOpacity = opacityOf(far);
  for (int distance = 0; distance < 256; ++distance) {
    const int64_t ramp = nearOpacity + (farOpacity - nearOpacity) * (distance - threshold) / range;
    const auto opacity = static_cast<int>(
        std::clamp<int64_t>(ramp, std::min(nearOpacity, farOpacity), std::max(nearOpacity, farOpacity)));
    for (int sum = 3 * distance; sum < std::min(3 * distance + 3, kDistanceSums); ++sum)
      byDistanceSum_[sum] = weightAndAlpha(opacity * 4096 / 255, opacity);
  }
}

void ColorKey::layRow(const _color_t *foreground, const _color_t *background, _color_t *out,
                      int width) const {
  ZOL_SELECT(colorKeyRow)(foreground, background, out, width, color_, byDistanceSum_);
}

void underlay(const _color_t *background, _color_t *out, int width) {
  ZOL_SELECT(underlayRow)(background, out, width);
}

KeyedRows::KeyedRows(const ColorKey &key, const pic &foreground, const pic *background, const pic &out)
    : key_(key), foreground_(foreground), ground_(background != nullptr ? background->Pixels : out.Pixels),
      out_(out), covered_(coveredPart(Area::of(out), Area::of(foreground))) {
  const Area whole = Area::of(out);
  const auto rows = [&](int first, int last) {
    const ptrdiff_t at = whole.index(whole.left, first), pixels = ptrdiff_t{last - first} * whole.width();
    underlay(ground_ + at, out.Pixels + at, static_cast<int>(pixels));
  };
  if (background == nullptr)
    std::fill_n(out.Pixels, whole.index(whole.left, whole.bottom), _color_t{});
  rows(whole.top, covered_.top);
  rows(covered_.bottom, whole.bottom);
}

void KeyedRows::lay(int row) const {
  const Area whole = Area::of(out_);
  const int y = covered_.top + row, before = covered_.left - whole.left, width = covered_.width();
  const ptrdiff_t at = whole.index(whole.left, y);
  const _color_t *under = ground_ + at;
  _color_t *out = out_.Pixels + at;
  underlay(under, out, before);
  key_.layRow(pixelAt(foreground_, covered_.left, y), under + before, out + before, width);
  underlay(under + before + width, out + before + width, whole.right - covered_.right);
}

} // namespace zol
