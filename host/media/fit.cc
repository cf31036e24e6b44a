#include "host/media/fit.h"

#include <algorithm>
#include <cmath>

namespace zol::host {
namespace {

constexpr std::pair<Fit, std::string_view> kNames[] = {
    {Fit::letterbox, "letterbox"}, {Fit::crop, "crop"}, {Fit::stretch, "stretch"}};

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

Placement place(const PictureLayout &from, const PictureLayout &to, Fit fit) {
  const double width = from.width, height = from.height;
  const Rect all{0, 0, width, height}, frame{0, 0, double(to.width), double(to.height)};
  if (fit == Fit::stretch || fit == Fit::extend)
    return {all, frame};
  const double shown = width * from.pixelAspect / to.pixelAspect, // its width in pixels of the frame
      across = frame.width / shown, down = frame.height / height, scale = std::min(across, down);
  const auto fills = [&](double side, double whole) {
    return std::abs(side * scale - whole) < std::max(1.0, scale);
  };
  if (fills(shown, frame.width) && fills(height, frame.height))
    return {all, frame};
  if (fit == Fit::crop) {
    Rect part = all;
    part.width = width * std::min(1.0, across / down);
    part.height = height * std::min(1.0, down / across);
    part.x = (width - part.width) / 2;
    part.y = (height - part.height) / 2;
    return {part, frame};
  }
  Rect within = frame;
  within.width = std::clamp(std::round(shown * scale), 1.0, frame.width);
  within.height = std::clamp(std::round(height * scale), 1.0, frame.height);
  const int above = (to.height - static_cast<int>(within.height)) / 2;
  const int before = (to.width - static_cast<int>(within.width)) / 2;
  const bool keepsFields = from.interlaced || to.interlaced;
  within.x = before;
  within.y = keepsFields ? above - above % 2 : above;
  return {all, within};
}

} // namespace zol::host
