#include "kernels/keying/universal_key.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

constexpr double kLeastChroma = 2048; // of 32640 and more

} // namespace

UniversalKey::UniversalKey(KeyMethod keyMethod, _color_t keyColor, double hueRange)
    : method(keyMethod), color(keyColor) {
  const double chromaBlue = -43 * color.r - 85 * color.g + 128 * color.b;
  const double chromaRed = 128 * color.r - 107 * color.g - 21 * color.b;
  const double length = std::sqrt(chromaBlue * chromaBlue + chromaRed * chromaRed);
  if (length < kLeastChroma) {
    if (method == KeyMethod::chroma)
      method = KeyMethod::color;
    return;
  }
  const auto direction = [length](double part) {
    return static_cast<int>(std::floor(16384 * part / length + 0.5));
  };
  blue = direction(chromaBlue);
  red = direction(chromaRed);
  narrowing = hueRange > 0 ? static_cast<int>(std::min(256 * (1 - hueRange) / hueRange, 16384.0)) : 16384;
  perChroma = static_cast<int>(0x1p24 / length);
}

} // namespace zol
