#include "kernels/color/color_ramp.h"

namespace zol {
namespace {

/// `share` of 65536 of the way from one colour to the other.
RampColor between(_color_t from, _color_t to, int share) {
  const int64_t ofFrom = from.a * (int64_t{65536} - share), ofTo = to.a * int64_t{share};
  const int64_t sum = ofFrom + ofTo;
  if (sum == 0)
    return {};
  const auto channel = [=](int a, int b) {
    return static_cast<uint16_t>((256 * (a * ofFrom + b * ofTo) + sum / 2) / sum);
  };
  return {channel(from.b, to.b), channel(from.g, to.g), channel(from.r, to.r),
          static_cast<uint16_t>(sum >> 8)};
}

} // namespace

ColorRamp::ColorRamp(std::span<const ColorStop> stops) {
  size_t next = 0;
  for (int i = 0; i <= kRampSteps; ++i) {
    const int position = i * (65536 / kRampSteps);
    while (next < stops.size() && stops[next].position <= position)
      ++next;
    if (next == 0 || next == stops.size()) {
      const _color_t end = stops[next == 0 ? 0 : next - 1].color;
      colors[i] = between(end, end, 0);
    } else {
      const ColorStop &from = stops[next - 1], &to = stops[next];
      const int64_t way = int64_t{position - from.position} * 65536;
      colors[i] = between(from.color, to.color, static_cast<int>(way / (to.position - from.position)));
    }
  }
}

} // namespace zol
