// Memory for pictures, aligned for the widest vectors, not initialised.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace zol::host {

inline constexpr std::align_val_t kPictureAlignment{64};

struct AlignedDelete {
  void operator()(uint8_t *bytes) const { ::operator delete[](bytes, kPictureAlignment); }
};
using AlignedBytes = std::unique_ptr<uint8_t[], AlignedDelete>;

/// Throws std::bad_alloc.
inline AlignedBytes alignedBytes(size_t size) {
  return AlignedBytes(static_cast<uint8_t *>(::operator new[](size, kPictureAlignment)));
}

} // namespace zol::host
