// Working memory of kernels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <sys/mman.h>

namespace zol {

/// `count` uninitialised elements from the general allocator, freed with the object. Tests as false
/// when they could not be had (a count of 0 is always had).
///
/// Whole planes are asked for in large pages where the system has them: their memory is new at every render,
/// and thousands of small pages take longer to get than to fill.
template <class T> class Scratch {
public:
  explicit Scratch(size_t count) : memory_(allocated(count)), data_(static_cast<T *>(memory_)) {
    const size_t bytes = count * sizeof(T);
    if (memory_ == nullptr || bytes < kLargePage)
      return;
    const size_t before = kLargePage - reinterpret_cast<uintptr_t>(memory_) % kLargePage;
    void *const pages = static_cast<char *>(memory_) + before;
    madvise(pages, bytes, MADV_HUGEPAGE); // where it is refused the memory is as good as any
    data_ = static_cast<T *>(pages);
  }
  // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): takes the union within std::optional for a second owner
  ~Scratch() { std::free(memory_); }
  Scratch(const Scratch &) = delete;
  Scratch &operator=(const Scratch &) = delete;

  explicit operator bool() const { return data_ != nullptr; }
  [[nodiscard]] T *data() const { return data_; }
  T &operator[](size_t index) const { return data_[index]; }

private:
  static constexpr size_t kLargePage = size_t{2} << 20;

  /// With room to begin at a large page where it is worth one.
  static void *allocated(size_t count) {
    if (count > (std::numeric_limits<size_t>::max() - kLargePage) / sizeof(T))
      return nullptr;
    const size_t bytes = count * sizeof(T);
    return std::malloc(bytes == 0 ? 1 : bytes < kLargePage ? bytes : bytes + kLargePage);
  }

  void *memory_;
  T *data_;
};

/// The same, but up to `Few` elements stand within the object: what plays in real time asks for no memory.
template <class T, size_t Few> class ShortScratch {
public:
  explicit ShortScratch(size_t count) {
    if (count > Few)
      many_.emplace(count);
  }

  explicit operator bool() const { return !many_ || *many_; }
  [[nodiscard]] T *data() { return many_ ? many_->data() : few_; }

private:
  T few_[Few];
  std::optional<Scratch<T>> many_;
};

} // namespace zol
