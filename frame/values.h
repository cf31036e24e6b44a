// The border: parameters at the context's time within what an effect can work with, whatever a host answers.
#pragma once

#include "frame/direction.h"
#include "frame/host.h"

#include <algorithm>
#include <cmath>

namespace zol {

/// Where fields without a limit end.
inline constexpr double kOpenEnd = 16;

/// What is not a number gives `otherwise`.
inline double within(double value, double least, double most, double otherwise = 0) {
  return std::isnan(value) ? otherwise : std::clamp(value, least, most);
}

inline double paramWithin(t_ZoHostInfo *host, int field, double least, double most, double otherwise = 0) {
  return within(paramDouble(host, field), least, most, otherwise);
}
inline double paramShare(t_ZoHostInfo *host, int field, double otherwise = 0) {
  return paramWithin(host, field, 0, 1, otherwise);
}
inline double paramSigned(t_ZoHostInfo *host, int field) { return paramWithin(host, field, -1, 1); }

/// In degrees; what is not finite gives 0.
inline double paramAngle(t_ZoHostInfo *host, int field) {
  const double degrees = paramDouble(host, field);
  return std::isfinite(degrees) ? degrees : 0;
}

inline _color_t paramColor(t_ZoHostInfo *host, int field) {
  _color_t color = {};
  host->Services->ParamGetColor(host, field, 0, &color, host->Time);
  return color;
}

/// The frame's pixel aspect; 1 where the host's cannot be one.
inline double pixelAspect(const t_ZoHostInfo *host) {
  const double aspect = host->PixelAspect;
  return std::isfinite(aspect) && aspect > 0 ? aspect : 1;
}

/// The same within what distances on the screen can be worked out with.
inline double shownAspect(const t_ZoHostInfo *host) { return std::clamp(pixelAspect(host), 0.001, 1000.0); }

/// The pixels across of a length, which is given in tenths of the frame's width.
inline double pixelsOf(const t_ZoHostInfo *host, double length) { return length * host->Width / 10; }

/// The nearest whole number of sixteenths of a pixel; distances beyond every frame are cut.
inline int inSixteenths(double pixels) {
  return static_cast<int>(std::floor(16 * std::clamp(pixels, -1e6, 1e6) + 0.5));
}

/// In integers, 4096 = 1.0.
inline int in4096ths(double value) { return static_cast<int>(value * 4096); }

} // namespace zol
