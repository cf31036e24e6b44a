// Pictures broken into convex fragments.
#pragma once

#include "kernels/warp/projection.h"

#include <cstdint>

namespace zol {

enum class FragmentShape {
  shards,  ///< triangles
  squares, ///< in rows and columns
  bricks,  ///< the same, every other row half a square on
};
inline constexpr int kFragmentShapes = 3;

struct Fragment {
  static constexpr int kMostCorners = 4, kGrain = 16;
  struct Corner {
    int x, y; ///< in 1/16 pixel from the picture's upper left corner
  };

  [[nodiscard]] Point corner(int i) const {
    return {corners[i].x / double{kGrain}, corners[i].y / double{kGrain}};
  }
  [[nodiscard]] Point centroid() const;

  int count;
  Corner corners[kMostCorners]; ///< clockwise
};

/// The fragments of a picture: they cover it, and none covers another.
class FragmentGrid {
public:
  static constexpr int kMost = 16384; ///< fragments
  static constexpr double kLeast = 4; ///< pixels of a square's side

  /// Of a picture that is not empty, in squares of about that size in pixels. Larger where they would be too
  /// many.
  FragmentGrid(FragmentShape shape, int width, int height, double across, double down, uint32_t seed);

  [[nodiscard]] int count() const;
  [[nodiscard]] Fragment operator[](int index) const;

private:
  [[nodiscard]] Fragment rectangle(int left, int right, int row) const;
  [[nodiscard]] Fragment::Corner corner(int column, int row) const;
  /// Part i of n of the picture's width or height.
  [[nodiscard]] int across(int i, int n) const { return part(width_, i, n); }
  [[nodiscard]] int down(int row) const { return part(height_, row, rows_); }
  static int part(int size, int i, int n) {
    return static_cast<int>(int64_t{Fragment::kGrain} * size * i / n);
  }

  FragmentShape shape_;
  int width_, height_, columns_, rows_;
  uint32_t seed_;
};

/// Of what is chosen at random for a fragment or a place, 0 to less than 1; `number` says what it is for.
double fragmentChance(uint32_t seed, int index, int number);
/// Numbers from this one on are free.
inline constexpr int kFirstFreeChance = 3;

} // namespace zol
