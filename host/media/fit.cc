#include "host/media/fit.h"

#include <algorithm>
#include <cmath>

namespace zol::host {
namespace {

constexpr std::pair<Fit, std::string_view> kNames[] = {
    {Fit::letterbox, "letterbox"}, {Fit::crop, "crop"}, {Fit::stretch, "stretch"}};

constexpr double kLargestSide = 32767;

} // namespace

std::string_view fitName(Fit fit) {
  for (const auto &[candidate, name] : kNames)
    if (candidate == fit)
      return name;
  return "";
}

std::optional<Fit> fitNamed(std::string_view name) {
  for (const auto &[fit, candidate] : kNames)
    if (candidate == name)
      return fit;
  return std::nullopt;
}

std::pair<int, int> fittedSize(const Raster &from, const Raster &to, Fit fit) {
  if (fit == Fit::stretch)
    return {to.width, to.height};
  const double width = from.width * from.pixelAspect / to.pixelAspect, height = from.height;
  const double across = to.width / width, down = to.height / height;
  const double scale = fit == Fit::letterbox ? std::min(across, down) : std::max(across, down);
  const auto side = [scale](double length, int whole) {
    const double scaled = length * scale;
    return std::abs(scaled - whole) < std::max(1.0, scale)
               ? whole
               : static_cast<int>(std::lround(std::clamp(scaled, 1.0, kLargestSide)));
  };
  return {side(width, to.width), side(height, to.height)};
}

} // namespace zol::host
