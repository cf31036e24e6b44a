// A picture as particles show it: at any size and turned.
#pragma once

#include "frame/zol.h"
#include "kernels/sampling/path_rows.h"
#include "kernels/simd/scratch.h"

namespace zol {

/// One size of a picture, transparent around it.
struct SpriteSize {
  PathPicture picture;  ///< with a pixel of border on every side
  double width, height; ///< of what lies within the border
};

/// The picture in halves, quarters and so on, down to one pixel; colours weigh by their alphas.
class SpritePicture {
public:
  /// Takes it as opaque unless its alpha is used. Tests as false when memory ran out.
  SpritePicture(const pic &picture, bool usesAlpha);

  explicit operator bool() const { return pixels_ && row_; }
  [[nodiscard]] bool isEmpty() const { return width_ <= 0 || height_ <= 0; }

  [[nodiscard]] const SpriteSize &whole() const { return sizes_[0]; }
  /// The smallest one that is `width` pixels wide at least; the first where none is.
  [[nodiscard]] const SpriteSize &atLeast(double width) const;

private:
  static constexpr int kMostSizes = 17;

  void fill(const pic &picture, bool usesAlpha);
  void halve(const SpriteSize &from, const SpriteSize &to) const;

  int width_, height_;
  int count_ = 0;
  SpriteSize sizes_[kMostSizes];
  Scratch<WidePixel> pixels_; ///< of all sizes
  Scratch<_color_t> row_;
};

} // namespace zol
