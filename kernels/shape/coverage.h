// How much of every pixel is covered by polygons together.
#pragma once

#include "kernels/simd/growing.h"
#include "kernels/simd/scratch.h"

#include <cstddef>
#include <cstdint>

namespace zol {

/// The union of polygons over an area, one byte a pixel, in two steps: draw them, then merge() what they
/// cover into the bytes. Points are taken to the nearest 256th of a pixel. What polygons cover of a pixel is
/// summed up as if they did not overlap, at most all of it: edges that two of them share leave no seam. Every
/// kTogether polygons are merged of their own accord.
class Coverage {
public:
  /// Points come in a space whose columns are `squeeze` times as close as the area's.
  Coverage(int width, int height, double squeeze = 1);

  /// False once memory ran out.
  explicit operator bool() const { return !failed_; }

  /// A corner of polygons, in pixels from the area's corner; what is not a number spoils the polygon being
  /// drawn.
  struct Corner {
    int32_t x, y; ///< in 256ths of a pixel
  };
  Corner corner(double x, double y);

  /// Draws polygons by their edges, in any order, and ends with close(): which way round does not matter, but
  /// it must be the same for all. Edges that run there and back again leave nothing. Of a polygon that may
  /// lie upon itself `layers` says how often at most: no more than kTogether / 2.
  void edge(Corner from, Corner to);
  void close(int layers = 1);

  /// The same corner by corner; close() leads back to the first one.
  void lineTo(double x, double y);

  /// Takes the polygons' coverages, times `brightness` (256 = 1.0), into the bytes by maximum, and begins
  /// anew.
  void merge(int brightness = kWhole);

  /// Of what was merged; row upon row, stride() bytes apart.
  [[nodiscard]] uint8_t *row(int y) const { return bytes_.data() + ptrdiff_t{y} * stride_; }
  [[nodiscard]] ptrdiff_t stride() const { return stride_; }

  static constexpr int kWhole = 256;
  static constexpr int kTogether = 8192;

private:
  /// An edge downwards, in 256ths of a pixel.
  struct Edge {
    int32_t x0, y0, x1, y1;
    int32_t sign; ///< 1 where the polygon goes down here, or -1
    int32_t next; ///< of those that begin in its band; -1 behind the last
  };
  class Band;

  int width_, height_, stride_;
  double squeeze_;
  Scratch<uint8_t> bytes_;
  Scratch<uint32_t> cells_; ///< of one band: how the doubled area changes along rows, 131072 = a pixel's
  Scratch<uint32_t> marks_; ///< of one band: which blocks of cells are not all 0
  Scratch<int32_t> heads_;  ///< a band's first edge
  Growing<Edge> edges_;
  size_t polygon_ = 0;                       ///< the first edge of the one being drawn
  int leftmost_ = INT32_MAX, rightmost_ = 0; ///< of all edges, in columns
  int layers_ = 0;
  Corner origin_{}; ///< of the area, anywhere near
  double area_ = 0; ///< doubled
  Corner start_{}, last_{};
  bool drawing_ = false, going_ = false, isNumber_ = true, failed_ = false;
};

} // namespace zol
