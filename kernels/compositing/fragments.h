// Fragments of a picture that have left their places, and what they leave behind.
#pragma once

#include "frame/picture.h"
#include "kernels/compositing/fragment_grid.h"
#include "kernels/simd/scratch.h"
#include "kernels/warp/warp_map.h"
#include "kernels/warp/warp_source.h"

#include <optional>
#include <span>

namespace zol {

struct FragmentMove {
  int fragment;
  Projection forward; ///< from its place to where it is, both in pixels from the picture's upper left corner
  int opacity;        ///< 4096 = 1.0
};

/// A convex polygon's edges, for shares of pixels.
class FragmentOutline {
public:
  FragmentOutline(const Point *corners, int count);

  /// Of rows, those that it may cover.
  [[nodiscard]] int top() const { return top_; }
  [[nodiscard]] int bottom() const { return bottom_; }
  /// Within columns of a row: where it may cover something, and where all of each pixel.
  [[nodiscard]] Span visible(int row, const Span &columns) const;
  [[nodiscard]] Span whole(int row, const Span &visible) const;
  /// How much of a pixel lies within: 256 = all.
  [[nodiscard]] int coverage(int column, int row) const;

private:
  int count_, top_, bottom_, left_, right_;
  WarpEdge edges_[Fragment::kMostCorners];
};

/// Things that reach over several rows, to be found by row and there in their order.
class RowIndex {
public:
  /// reach(i) gives the first row of thing i and the one behind its last; rows outside are left out.
  template <class Reach> RowIndex(int rows, int things, Reach reach);

  explicit operator bool() const { return begins_ && things_; }
  [[nodiscard]] std::span<const int> at(int row) const {
    return {things_.data() + begins_[size_t(row)], things_.data() + begins_[size_t(row) + 1]};
  }

private:
  Scratch<int> begins_, things_;
};

/// All fragments of a picture as one layer: those that have moved over what they have left, where all that
/// has not parted is whole. Tests as false when memory ran out.
class FragmentLayer {
public:
  /// Over the area, of the frame as the picture is; the moves in the order in which they are laid, later ones
  /// upon earlier ones.
  FragmentLayer(const pic &picture, const Area &area, const FragmentGrid &grid, const FragmentMove *moves,
                int count);

  explicit operator bool() const { return pieces_ && left_ && moved_ && *left_ && *moved_ && gone_ && row_; }

  /// Writes row y of the area.
  void write(int y, _color_t *out) const;

private:
  struct Piece {
    FragmentOutline home, moved;
    WarpMap map;
    int opacity;
  };

  void writeRest(int y, const Span &columns, _color_t *row) const;
  void warp(const Piece &piece, int y, const Span &columns, _color_t *row) const;

  WarpSource source_;
  Area area_; ///< in pixels of the picture
  bool allMoved_;
  Scratch<Piece> pieces_;
  std::optional<RowIndex> left_, moved_; ///< by rows of the picture and of the area
  Scratch<uint16_t> gone_;               ///< of a row of the picture, as takeAway() has it
  Scratch<_color_t> row_;
};

} // namespace zol
