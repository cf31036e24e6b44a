// The values of one effect's data fields: curves, numbers, colours, geometries, inputs, data sets.
#pragma once

#include "frame/zol.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
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

/// What an input handle names: something that delivers pictures or sound. What it hands out stays its own
/// and lives at least until the render callback has returned.
class Clip {
public:
  Clip() = default;
  Clip(const Clip &) = delete;
  Clip &operator=(const Clip &) = delete;
  virtual ~Clip() = default;
  /// The frame at a time in seconds, at the given size where the clip can be scaled; null on failure.
  virtual pic *frame(double time, int width, int height) = 0;
  /// The sound of a stretch of time in seconds; null on failure.
  virtual t_ZoAudio *audio(double from, double to) = 0;
};

/// What a geometry handle names.
class Shape {
public:
  Shape() = default;
  Shape(const Shape &) = delete;
  Shape &operator=(const Shape &) = delete;
  virtual ~Shape() = default;
  /// Left, top, right, bottom in pixels of the frame.
  virtual void box(double out[4], double time) const = 0;
  /// Hands over every segment, and with `closed` a line for each gap of an open contour; 1, or 0 as soon as
  /// the callback answers 0.
  virtual int curves(double time, bool closed, void *user, t_ZoSegmentFn callback) const = 0;
};

/// One T for every field and item, made when first asked for.
template <class T> class PerItem {
public:
  /// Null outside the indices that a field list can have.
  T *get(int field, int item) {
    if (field < 0 || item < 0 || field >= kMost || item >= kMost)
      return nullptr;
    if (static_cast<size_t>(field) >= values_.size())
      values_.resize(static_cast<size_t>(field) + 1);
    auto &items = values_[static_cast<size_t>(field)];
    if (static_cast<size_t>(item) >= items.size())
      items.resize(static_cast<size_t>(item) + 1);
    return &items[static_cast<size_t>(item)];
  }
  [[nodiscard]] const T *find(int field, int item) const {
    if (field < 0 || item < 0 || static_cast<size_t>(field) >= values_.size() ||
        static_cast<size_t>(item) >= values_[static_cast<size_t>(field)].size())
      return nullptr;
    return &values_[static_cast<size_t>(field)][static_cast<size_t>(item)];
  }
  /// All items of a field.
  std::vector<T> *items(int field) {
    return get(field, 0) == nullptr ? nullptr : &values_[static_cast<size_t>(field)];
  }

private:
  static constexpr int kMost = 4096;
  std::vector<std::vector<T>> values_;
};

/// An item of a "Dataset" field; its curve is the field's number at the item's index.
struct DatasetItem {
  std::string kind, name;
  t_ZoDatasetDisplay display;
};

struct Parameters {
  PerItem<NumberCurve> numbers;
  PerItem<ColorCurve> colors;
  PerItem<int> integers;
  PerItem<const Shape *> geometries;
  /// The slots of an input list; a plain input has one.
  PerItem<std::vector<Clip *>> inputs;        // item 0 alone
  PerItem<std::vector<DatasetItem>> datasets; // item 0 alone
};

} // namespace zol::host
