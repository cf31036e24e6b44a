// How a source lies in an output: where each output pixel is found in it, and its outline.
#pragma once

#include "kernels/warp/footprint.h"

namespace zol {

/// Columns `begin` to `end`, which is not included.
struct Span {
  int begin, end;
};

/// A straight edge in the output.
struct WarpEdge {
  double x, y, rest; ///< what lies x right and y down is x x + y y + rest pixels inside

  /// 256 for a pixel that is all inside: the edge takes one pixel's width.
  [[nodiscard]] int coverage(int column, double atRow) const;
  [[nodiscard]] double atRow(int row) const { return y * (row + 0.5) + rest; }
};

/// Where in a span of a row's columns all of the edges give a coverage of that and more.
Span spanWithin(const WarpEdge *edges, int count, int row, Span span, int least);

class WarpMap {
public:
  /// Draws nothing.
  WarpMap() = default;
  /// From places in the output to places in a source of that size, both measured at pixels' edges. Whatever
  /// maps the plane to less than a plane draws nothing.
  WarpMap(const Projection &toSource, int width, int height);

  [[nodiscard]] bool drawsNothing() const { return !leads_; }
  /// Whether all pixels have the same footprint.
  [[nodiscard]] bool isAffine() const { return affine_; }
  /// Whether rows stay rows and columns columns, in even steps.
  [[nodiscard]] bool isUpright() const {
    return affine_ && toSource_.rows[0][1] == 0 && toSource_.rows[1][0] == 0;
  }
  /// Whether it moves the source by whole pixels and does nothing else, but for what no pixel shows.
  [[nodiscard]] bool isShift() const;

  /// What leads to the source; the third row is positive at the source's centre, and (0, 0, 1) where affine.
  [[nodiscard]] const Projection &toSource() const { return toSource_; }

  /// The footprint of the pixels of row y around the column's left edge; of all pixels where affine.
  [[nodiscard]] Footprint footprintAt(double column, int y) const;

  /// How much of a pixel lies within the outline: 256 = all.
  [[nodiscard]] int coverage(int x, int y) const;
  /// Where in [x0, x1) of row y coverage may be more than 0, and where it is 256 at least.
  [[nodiscard]] Span visible(int y, int x0, int x1) const { return spanOf(y, {x0, x1}, 1); }
  [[nodiscard]] Span whole(int y, const Span &visible) const { return spanOf(y, visible, 256); }

private:
  [[nodiscard]] Span spanOf(int y, const Span &span, int least) const {
    return leads_ ? spanWithin(edges_, 4, y, span, least) : Span{span.begin, span.begin};
  }

  Projection toSource_{};
  bool leads_ = false, affine_ = true;
  Footprint footprint_;
  WarpEdge edges_[4] = {}; ///< opposite ones in pairs
};

} // namespace zol
