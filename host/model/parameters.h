// The values of one effect's data fields: curves, numbers, colours, geometries, inputs, data sets.
#pragma once

#include "host/model/clip.h"
#include "host/model/curve.h"
#include "host/model/shape.h"

#include <cstddef>
#include <string>
#include <vector>

namespace zol::host {

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
