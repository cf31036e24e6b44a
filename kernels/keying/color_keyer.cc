#include "kernels/keying/color_keyer.h"

#include "frame/convert.h"
#include "frame/host.h"
#include "kernels/compositing/overlap.h"

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

bool layOver(t_ZoHostInfo *host, const ColorKey &key, const pic &foreground, const pic *background,
             pic &out) {
  const auto pixels = [width = static_cast<size_t>(out.Width)](int rows) {
    return static_cast<size_t>(rows) * width;
  };
  if (background == nullptr)
    std::fill_n(out.Pixels, pixels(out.Height), _color_t{});
  const _color_t *ground = background != nullptr ? background->Pixels : out.Pixels;

  const Overlap covered(out, foreground);
  underlay(ground, out.Pixels, covered.top * out.Width);
  underlay(ground + pixels(covered.bottom), out.Pixels + pixels(covered.bottom),
           (out.Height - covered.bottom) * out.Width);
  return forEachRow(host, covered.bottom - covered.top, [&](int rowOfOverlap) {
    const int y = covered.top + rowOfOverlap;
    const _color_t *under = ground + pixels(y);
    _color_t *row = out.Pixels + pixels(y);
    underlay(under, row, covered.left);
    key.layRow(foreground.Pixels + coverIndex(out, foreground, covered.left, y), under + covered.left,
               row + covered.left, covered.right - covered.left);
    underlay(under + covered.right, row + covered.right, out.Width - covered.right);
  });
}

} // namespace zol
