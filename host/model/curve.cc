#include "host/model/curve.h"

#include <algorithm>
#include <cmath>

namespace zol::host {

template <class Numbers> void KeyedCurve<Numbers>::set(double time, const Value &value, Course course) {
  const auto place = std::lower_bound(keys_.begin(), keys_.end(), time,
                                      [](const Key &key, double wanted) { return key.time < wanted; });
  if (place != keys_.end() && place->time == time)
    *place = {time, value, course};
  else
    keys_.insert(place, {time, value, course});
}

/// How steep a smooth curve is at a key: level at turning points and where it is held beside the key, else
/// between the slopes of both sides, nearer to the flatter, so that no value is overshot.
template <class Numbers> double KeyedCurve<Numbers>::slope(size_t key, size_t number) const {
  if (key == 0 || key + 1 == keys_.size())
    return 0;
  const Key &left = keys_[key - 1], &middle = keys_[key], &right = keys_[key + 1];
  if (left.course == Course::hold || middle.course == Course::hold)
    return 0;
  const double before = middle.time - left.time, after = right.time - middle.time;
  const double rise = (middle.value[number] - left.value[number]) / before;
  const double next = (right.value[number] - middle.value[number]) / after;
  if (!(rise * next > 0))
    return 0;
  const double weight = 2 * after + before, nextWeight = after + 2 * before;
  return (weight + nextWeight) / (weight / rise + nextWeight / next);
}

template <class Numbers> typename KeyedCurve<Numbers>::Value KeyedCurve<Numbers>::at(double time) const {
  if (keys_.empty())
    return {};
  const auto after = std::upper_bound(keys_.begin(), keys_.end(), time,
                                      [](double wanted, const Key &key) { return wanted < key.time; });
  if (after == keys_.begin())
    return after->value;
  const Key &left = *(after - 1);
  if (after == keys_.end() || left.time == time || left.course == Course::hold)
    return left.value;
  const double length = after->time - left.time, position = (time - left.time) / length;
  Value value = left.value;
  if (left.course == Course::line) {
    for (size_t i = 0; i < value.size(); ++i)
      value[i] = left.value[i] + (after->value[i] - left.value[i]) * position;
    return value;
  }
  const auto key = static_cast<size_t>(after - keys_.begin());
  const double rest = 1 - position, share = position * position * (3 - 2 * position);
  for (size_t i = 0; i < value.size(); ++i)
    value[i] = left.value[i] + (after->value[i] - left.value[i]) * share +
               length * position * rest * (slope(key - 1, i) * rest - slope(key, i) * position);
  return value;
}

template class KeyedCurve<NumberCurve::Value>;
template class KeyedCurve<ColorCurve::Value>;
template class KeyedCurve<PathCurve::Value>;

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
