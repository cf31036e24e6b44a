#include "host/services/resample.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace zol::host {
namespace {

constexpr int kOne = 256; // weights of the right or lower neighbour, 256 = 1.0

struct Tap {
  int first, second, weight;
};

/// Where each target place reads, and the weight of the second neighbour.
std::vector<Tap> taps(int from, int to) {
  std::vector<Tap> result;
  result.reserve(static_cast<size_t>(to));
  for (int i = 0; i < to; ++i) {
    const double centre = std::clamp((i + 0.5) * from / to - 0.5, 0.0, double(from - 1));
    const int first = static_cast<int>(centre);
    result.push_back({first, std::min(first + 1, from - 1), static_cast<int>((centre - first) * kOne + 0.5)});
  }
  return result;
}

int between(int a, int b, int weight) { return a * (kOne - weight) + b * weight; }

} // namespace

void resampleLinear(const PixelRows &src, _color_t *dst, int dstStep, int dstWidth, int dstHeight) {
  if (src.width <= 0 || src.height <= 0 || dstWidth <= 0 || dstHeight <= 0)
    return;
  const std::vector<Tap> columns = taps(src.width, dstWidth);
  const std::vector<Tap> rows = taps(src.height, dstHeight);
  for (int y = 0; y < dstHeight; ++y) {
    const Tap &row = rows[static_cast<size_t>(y)];
    const _color_t *upper = src.pixels + static_cast<ptrdiff_t>(row.first) * src.step;
    const _color_t *lower = src.pixels + static_cast<ptrdiff_t>(row.second) * src.step;
    _color_t *out = dst + static_cast<ptrdiff_t>(y) * dstStep;
    for (int x = 0; x < dstWidth; ++x) {
      const Tap &column = columns[static_cast<size_t>(x)];
      const auto channel = [&](uint8_t _color_t::*c) {
        const int top = between(upper[column.first].*c, upper[column.second].*c, column.weight);
        const int bottom = between(lower[column.first].*c, lower[column.second].*c, column.weight);
        return static_cast<uint8_t>((between(top, bottom, row.weight) + kOne * kOne / 2) / (kOne * kOne));
      };
      out[x] = {channel(&_color_t::b), channel(&_color_t::g), channel(&_color_t::r), channel(&_color_t::a)};
    }
  }
}

} // namespace zol::host
