// What the engine's own sources share beyond its public header.
#pragma once

#include "Runtimes/slomo_sdk/SlowMotion.h"
#include "kernels/motion/pair_motion.h"

#include <cstdint>
#include <optional>

/// One field of the frames, or the whole of progressive ones, and where it is made.
struct CSlowMotion::SField : zol::slomo::FieldPair {
  unsigned char *dst;
};

namespace zol::slomo {

/// The motion of the pair that was searched last, for as long as the same is asked for. A provider may put
/// other frames in the same place: only copies tell.
class KnownPair {
public:
  /// Where memory runs out the object tests as false and must not be used.
  explicit KnownPair(const BlockGrid &grid);
  explicit operator bool() const { return motion_ && a_ && b_; }
  [[nodiscard]] bool fits(const BlockGrid &grid) const { return motion_.fits(grid); }

  /// Of a pair of the grid's size; searched unless it is known.
  const PairMotion &motionOf(const FieldPair &pair);

private:
  PairMotion motion_;
  Scratch<uint8_t> a_, b_;
  bool known_ = false;
};

} // namespace zol::slomo

/// Memory that is kept from frame to frame.
struct CSlowMotion::SWork {
  std::optional<zol::slomo::KnownPair> pair;
  std::optional<zol::Scratch<unsigned char>> tables;
  uint64_t tableBytes = 0;

  /// Uninitialised; null when it cannot be had.
  void *tablesOf(uint64_t bytes) {
    if (!tables || !*tables || bytes > tableBytes) {
      tables.reset();
      tables.emplace(bytes > PTRDIFF_MAX ? SIZE_MAX : static_cast<size_t>(bytes));
      tableBytes = bytes;
    }
    return tables->data();
  }
};
