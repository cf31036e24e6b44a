// A sound at other steps in its plain form: the windowed sinc from the functions themselves.
#pragma once

#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <vector>

namespace zol::plain {

/// The value at so many 1024ths of a zero crossing.
inline double windowedSinc(int phase) {
  static std::map<int, double> known;
  if (const auto found = known.find(phase); found != known.end())
    return found->second;
  const double x = phase / 1024.0;
  const double sinc = x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
  const double window =
      x < 32 ? std::cyl_bessel_i(0, 9 * std::sqrt(1 - x * x / 1024)) / std::cyl_bessel_i(0, 9.0) : 0;
  return known[phase] = std::round(sinc * window * 0x1p32) / 0x1p32;
}

/// The sample at a place of one channel, which is silent outside.
inline float resampled(const std::vector<float> &sound, double place, double step) {
  const double cut = std::abs(step) > 1 ? 1 / std::abs(step) : 1;
  double sum = 0;
  for (size_t i = 0; i < sound.size(); ++i) {
    const double phase = std::abs(double(i) - place) * cut * 1024;
    if (phase > 32 * 1024)
      continue;
    const double a = windowedSinc(int(phase)), b = windowedSinc(int(phase) + 1);
    sum += (a + (b - a) * (phase - std::floor(phase))) * double(sound[i]);
  }
  return float(sum * cut);
}

} // namespace zol::plain
