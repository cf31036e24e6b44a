#include "host/model/curve.h"

#include <algorithm>
#include <cmath>

namespace zol::host {

template <size_t N> void KeyedCurve<N>::set(double time, const Value &value) {
  const auto place = std::lower_bound(keys_.begin(), keys_.end(), time,
                                      [](const Key &key, double wanted) { return key.time < wanted; });
  if (place != keys_.end() && place->time == time)
    place->value = value;
  else
    keys_.insert(place, {time, value});
}

template <size_t N> typename KeyedCurve<N>::Value KeyedCurve<N>::at(double time) const {
  if (keys_.empty())
    return {};
  const auto after = std::upper_bound(keys_.begin(), keys_.end(), time,
                                      [](double wanted, const Key &key) { return wanted < key.time; });
  if (after == keys_.begin())
    return after->value;
  const Key &left = *(after - 1);
  if (after == keys_.end() || left.time == time)
    return left.value;
  const double position = (time - left.time) / (after->time - left.time);
  Value value;
  for (size_t i = 0; i < N; ++i)
    value[i] = left.value[i] + (after->value[i] - left.value[i]) * position;
  return value;
}

template class KeyedCurve<1>;
template class KeyedCurve<4>;

ColorCurve::Value colorValue(_color_t color) {
  return {double(color.b), double(color.g), double(color.r), double(color.a)};
}

_color_t colorAt(const ColorCurve &curve, double time) {
  const auto value = curve.at(time);
  const auto channel = [&](size_t i) {
    return static_cast<uint8_t>(std::lround(std::clamp(value[i], 0.0, 255.0)));
  };
  return {channel(0), channel(1), channel(2), channel(3)};
}

} // namespace zol::host
