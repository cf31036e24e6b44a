#include "host/services/picture_memory.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <new>

namespace zol::host {
namespace {

constexpr size_t kLine = 64;                // of the cache
constexpr size_t kLeast = size_t{64} << 10; // smaller pieces the allocator has at hand

struct Piece {
  void *memory;
  size_t bytes;
};

/// Frames of a render have one size: memory serves the next picture of exactly as many bytes. The system's
/// own allocator gives such large pieces back to the system, most of all for threads of 32-bit programs.
class KeptMemory {
public:
  ~KeptMemory() { keepAtMost(0); }

  void keepAtMost(size_t bytes) {
    const std::scoped_lock lock(mutex_);
    most_ = bytes;
    makeRoom(0);
  }
  /// The latest that was left, which caches may still hold; null where none has the size.
  void *take(size_t bytes) {
    const std::scoped_lock lock(mutex_);
    const auto found =
        std::find_if(pieces_.rbegin(), pieces_.rend(), [=](const Piece &p) { return p.bytes == bytes; });
    if (found == pieces_.rend())
      return nullptr;
    void *const memory = found->memory;
    pieces_.erase(std::prev(found.base()));
    kept_ -= bytes;
    return memory;
  }
  /// False where it is not kept.
  bool keep(void *memory, size_t bytes) {
    const std::scoped_lock lock(mutex_);
    if (bytes < kLeast || bytes > most_)
      return false;
    makeRoom(bytes);
    try {
      pieces_.push_back({memory, bytes});
    } catch (const std::bad_alloc &) {
      return false;
    }
    kept_ += bytes;
    return true;
  }

private:
  /// The oldest go.
  void makeRoom(size_t bytes) {
    while (kept_ + bytes > most_) {
      std::free(pieces_.front().memory);
      kept_ -= pieces_.front().bytes;
      pieces_.pop_front();
    }
  }

  std::mutex mutex_;
  std::deque<Piece> pieces_;
  size_t most_ = 0, kept_ = 0;
};

KeptMemory &keptMemory() {
  static KeptMemory kept;
  return kept;
}

} // namespace

void keepPictureMemory(size_t bytes) { keptMemory().keepAtMost(bytes); }

void *unwrittenPictureMemory(size_t bytes) {
  if (void *const kept = keptMemory().take(bytes))
    return kept;
  return bytes > SIZE_MAX - kLine ? nullptr : std::aligned_alloc(kLine, (bytes + kLine) / kLine * kLine);
}

void *clearPictureMemory(size_t bytes) {
  if (void *const kept = keptMemory().take(bytes))
    return std::memset(kept, 0, bytes);
  return std::calloc(bytes == 0 ? 1 : bytes, 1); // new to the process it is clear already
}

void releasePictureMemory(void *memory, size_t bytes) {
  if (memory != nullptr && !keptMemory().keep(memory, bytes))
    std::free(memory);
}

} // namespace zol::host
