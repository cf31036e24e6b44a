#include "kernels/shape/shape_segments.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace zol {

ShapeSegments::~ShapeSegments() { std::free(segments_); }

bool ShapeSegments::add(const ShapeSegment &segment) {
  if (count_ == capacity_ && !grow())
    return false;
  segments_[count_++] = segment;
  return true;
}

bool ShapeSegments::grow() {
  const size_t capacity = capacity_ == 0 ? 64 : capacity_ * 2;
  if (capacity > std::numeric_limits<size_t>::max() / sizeof(ShapeSegment))
    return false;
  auto *larger = static_cast<ShapeSegment *>(std::malloc(capacity * sizeof(ShapeSegment)));
  if (larger == nullptr)
    return false;
  std::copy(segments_, segments_ + count_, larger);
  std::free(segments_);
  segments_ = larger;
  capacity_ = capacity;
  return true;
}

} // namespace zol
