#include "kernels/sampling/moved_picture.h"

#include "kernels/sampling/move_row.h"

#include <utility>

namespace zol {
namespace {

/// The row of the area that the part of a pixel adds.
int spill(const Sixteenths &distance) { return distance.part != 0 ? 1 : 0; }

} // namespace

MovedPicture::MovedPicture(const pic &picture, int right, int down)
    : picture_(picture), x_(-right), y_(-down), area_(Area::of(picture).moved(-x_.whole, -y_.whole)),
      rows_(isWhole() ? 0 : 2 * (static_cast<size_t>(picture.Width) + 2)),
      moved_(isWhole() ? 0 : static_cast<size_t>(picture.Width) + 1) {
  if (!area_.isEmpty()) {
    area_.left -= spill(x_);
    area_.top -= spill(y_);
  }
}

/// Row y of the picture, counted from its top, as moveRow wants it.
const _color_t *MovedPicture::padded(int y) {
  const int width = picture_.Width;
  _color_t *const row = rows_.data() + (y & 1) * (width + 2);
  if (std::exchange(held_[y & 1], y) != y) {
    row[0] = row[width + 1] = {};
    if (y < 0 || y >= picture_.Height)
      std::fill_n(row + 1, width, _color_t{});
    else
      std::copy_n(picture_.Pixels + ptrdiff_t{y} * width, width, row + 1);
  }
  return row + (x_.part != 0 ? 0 : 1);
}

const _color_t *MovedPicture::row(int y) {
  const int top = y - area_.top - spill(y_), width = area_.width();
  if (isWhole())
    return picture_.Pixels + ptrdiff_t{top} * width;
  const _color_t *above = padded(top);
  const _color_t *below = padded(top + 1);
  ZOL_SELECT(moveRow)(above, below, x_.part, y_.part, moved_.data(), width);
  return moved_.data();
}

} // namespace zol
