// The segments of a geometry, as many as come.
#pragma once

#include "kernels/shape/cubic.h"

#include <cstddef>

namespace zol {

struct ShapeSegment {
  HermiteCubic x, y;
};

class ShapeSegments {
public:
  ShapeSegments() = default;
  ~ShapeSegments();
  ShapeSegments(const ShapeSegments &) = delete;
  ShapeSegments &operator=(const ShapeSegments &) = delete;

  /// Adds one; false when memory runs out.
  bool add(const ShapeSegment &segment);

  [[nodiscard]] size_t count() const { return count_; }
  [[nodiscard]] const ShapeSegment *begin() const { return segments_; }
  [[nodiscard]] const ShapeSegment *end() const { return segments_ + count_; }

private:
  bool grow();

  ShapeSegment *segments_ = nullptr;
  size_t count_ = 0, capacity_ = 0;
};

} // namespace zol
