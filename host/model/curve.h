// Values over time.
#pragma once

#include "frame/zol.h"

#include <array>
#include <cstddef>
#include <vector>

namespace zol::host {

/// A value over time: linear between keys, held before the first and after the last.
template <size_t N> class KeyedCurve {
public:
  using Value = std::array<double, N>;

  /// Puts a key; one at the same time is replaced.
  void set(double time, const Value &value);
  void clear() { keys_.clear(); }
  [[nodiscard]] bool empty() const { return keys_.empty(); }
  /// The value at a time; zeros where there is no key.
  [[nodiscard]] Value at(double time) const;

  struct Key {
    double time;
    Value value;
  };
  [[nodiscard]] const std::vector<Key> &keys() const { return keys_; }

private:
  std::vector<Key> keys_; // ascending in time
};

extern template class KeyedCurve<1>;
extern template class KeyedCurve<4>;

using NumberCurve = KeyedCurve<1>;
/// Blue, green, red, alpha, each 0 to 255.
using ColorCurve = KeyedCurve<4>;

ColorCurve::Value colorValue(_color_t color);
/// Rounded to the nearest byte.
_color_t colorAt(const ColorCurve &curve, double time);

} // namespace zol::host
