// What a crop keeps of a picture: a rectangle with hard or soft sides and round corners.
#pragma once

#include "frame/picture.h"
#include "kernels/simd/levels.h"
#include "kernels/simd/scratch.h"

#include <cstdint>

namespace zol {

struct CropLook {
  double left = 0, right = 0, top = 0, bottom = 0; ///< cut off, in shares of the picture's width and height
  double inset = 0;     ///< cut off all sides, a share of half the side that is seen as the smaller
  double roundness = 0; ///< radius of the corners, such a share of what is kept
  double softness = 0;  ///< over what a side fades in at most, in pixels across
  double aspect = 1;    ///< widths of pixels in their heights
};

/// Pixels from `begin` to before `end`.
struct CropPixels {
  int begin, end;
};

/// What is kept of rows or of columns. A side fades in over so many pixels, those that are not cut over one.
struct CropSpan {
  CropSpan(int pixels, double cutBefore, double cutBehind, double softness);

  [[nodiscard]] double length() const { return end - begin; }
  [[nodiscard]] double middle() const { return (begin + end) / 2; }
  [[nodiscard]] bool isWhole() const { return begin == 0 && end == size; }
  [[nodiscard]] int coverage(int pixel) const;
  /// The pixels that are touched; one where none is kept.
  [[nodiscard]] CropPixels touched() const;

  int size;
  double begin, end; ///< in 1/256 pixel
  double fadeBefore, fadeBehind;
};

/// Tests as false when memory ran out.
class CropMask {
public:
  /// The picture's pixels are counted from its own corner. Of one that is empty nothing but keepsAll() may be
  /// asked.
  CropMask(int width, int height, const CropLook &look);

  explicit operator bool() const { return static_cast<bool>(rows_); }

  [[nodiscard]] const CropSpan &columns() const { return columns_; }
  [[nodiscard]] const CropSpan &rows() const { return down_; }
  [[nodiscard]] bool keepsAll() const { return columns_.isWhole() && down_.isWhole() && radius_ == 0; }
  [[nodiscard]] bool keepsNothing() const { return columns_.length() <= 0 || down_.length() <= 0; }

  /// The pixels that are touched, in the frame when the picture begins at (left, top).
  [[nodiscard]] Area touchedFrom(int left, int top) const {
    const CropPixels across = columns_.touched(), down = down_.touched();
    return Area{across.begin, down.begin, across.end, down.end}.moved(left, top);
  }

  /// Coverages of row y, 256 = kept, until the next call.
  const uint16_t *row(int y);

private:
  void roundEnds(double center, uint16_t *row) const;

  CropSpan columns_, down_;
  double aspect_, radius_;
  Scratch<uint16_t> rows_; ///< of the columns, then of a row
};

/// Of a circle along a row: pixel x lies start + perColumn x to the side of its centre and `down` above or
/// below it. The edge is as wide as a pixel, which is perColumn by 1, and as much wider across and down as
/// the fades say.
struct RoundCorner {
  float start, perColumn, down, radius, fadeAcross, fadeDown;
};

// Of coverages, 256 = whole.
//
// scaleCoverage   each times `by`, rounded to the nearest.
// roundCoverage   each, but no more than the corner's.
// matteCoverage   each times that of a matte of bytes, rounded to the nearest.
// invertCoverage  256 less each.
// keepPixels      pixels, their alphas times the coverage; 0 where alpha becomes 0.
ZOL_LEVELS_TO(avx2, void scaleCoverage(const uint16_t *coverage, int by, uint16_t *out, int count);
              void roundCoverage(const RoundCorner &corner, uint16_t *coverage, int count);
              void matteCoverage(const uint8_t *matte, uint16_t *coverage, int count);
              void invertCoverage(uint16_t *coverage, int count);
              void keepPixels(const _color_t *pixels, const uint16_t *coverage, _color_t *out, int count);)

} // namespace zol
