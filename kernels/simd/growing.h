// Lists of kernels that grow as they are written.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace zol {

/// Elements in a row, as many as come, from the general allocator.
template <class T> class Growing {
  static_assert(std::is_trivially_copyable_v<T>);

public:
  Growing() = default;
  ~Growing() { std::free(elements_); }
  Growing(const Growing &) = delete;
  Growing &operator=(const Growing &) = delete;

  /// Adds one; false when memory runs out.
  bool add(const T &element) {
    if (count_ == capacity_ && !grow())
      return false;
    elements_[count_++] = element;
    return true;
  }
  /// Drops all but the first ones.
  void cut(size_t count) { count_ = std::min(count, count_); }

  [[nodiscard]] size_t count() const { return count_; }
  [[nodiscard]] T *data() const { return elements_; }
  T &operator[](size_t index) const { return elements_[index]; }
  [[nodiscard]] T *begin() const { return elements_; }
  [[nodiscard]] T *end() const { return elements_ + count_; }
  [[nodiscard]] T &back() const { return elements_[count_ - 1]; }

private:
  bool grow() {
    const size_t capacity = capacity_ == 0 ? 64 : capacity_ * 2;
    if (capacity > std::numeric_limits<size_t>::max() / sizeof(T))
      return false;
    auto *larger = static_cast<T *>(std::malloc(capacity * sizeof(T)));
    if (larger == nullptr)
      return false;
    std::copy(elements_, elements_ + count_, larger);
    std::free(elements_);
    elements_ = larger;
    capacity_ = capacity;
    return true;
  }

  T *elements_ = nullptr;
  size_t count_ = 0, capacity_ = 0;
};

} // namespace zol
