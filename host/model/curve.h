// Values over time.
#pragma once

#include "frame/zol.h"

#include <array>
#include <cstddef>
#include <vector>

namespace zol::host {

/// How a curve goes on from a key to the next.
enum class Course {
  line,
  hold,   ///< the key's value up to the next key
  smooth, ///< without a bend at either end, and never beyond the two values
};

/// A value over time, given at keys; held before the first and after the last. A value is a list of numbers,
/// of one length in all keys.
template <class Numbers> class KeyedCurve {
public:
  using Value = Numbers;

  /// Puts a key; one at the same time is replaced.
  void set(double time, const Value &value, Course course = Course::line);
  void clear() { keys_.clear(); }
  [[nodiscard]] bool empty() const { return keys_.empty(); }
  /// The value at a time; an empty list or zeros where there is no key.
  [[nodiscard]] Value at(double time) const;

  struct Key {
    double time;
    Value value;
    Course course;
  };
  [[nodiscard]] const std::vector<Key> &keys() const { return keys_; }

private:
  [[nodiscard]] double slope(size_t key, size_t number) const;

  std::vector<Key> keys_; // ascending in time
};

using NumberCurve = KeyedCurve<std::array<double, 1>>;
/// Blue, green, red, alpha, each 0 to 255.
using ColorCurve = KeyedCurve<std::array<double, 4>>;
/// Coordinates.
using PathCurve = KeyedCurve<std::vector<double>>;

extern template class KeyedCurve<NumberCurve::Value>;
extern template class KeyedCurve<ColorCurve::Value>;
extern template class KeyedCurve<PathCurve::Value>;

ColorCurve::Value colorValue(_color_t color);
/// Rounded to the nearest byte.
_color_t colorAt(const ColorCurve &curve, double time);

} // namespace zol::host
