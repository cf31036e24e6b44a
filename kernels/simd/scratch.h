// Working memory of kernels.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>

namespace zol {

/// `count` uninitialised elements from the general allocator, freed with the object. Tests as false
/// when they could not be had (a count of 0 is always had).
template <class T> class Scratch {
public:
  explicit Scratch(size_t count)
      : data_(count > std::numeric_limits<size_t>::max() / sizeof(T)
                  ? nullptr
                  : static_cast<T *>(std::malloc(count == 0 ? 1 : count * sizeof(T)))) {}
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): takes the union within std::optional for a second owner
  ~Scratch() { std::free(data_); }
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  explicit operator bool() const { return data_ != nullptr; }
  [[nodiscard]] T *data() const { return data_; }
  T &operator[](size_t index) const { return data_[index]; }

private:
  T *data_;
};

} // namespace zol
