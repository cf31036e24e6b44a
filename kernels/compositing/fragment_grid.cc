#include "kernels/compositing/fragment_grid.h"

#include "frame/direction.h"
#include "kernels/noise/hash.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

enum Chance { kTurn, kWay, kDiagonal };

/// Corners move by that share of a square at the most: no triangle turns over.
constexpr double kFarthest = 0.35;

int fitting(int size, double part) { return std::clamp(static_cast<int>(size / part + 0.5), 1, size); }

} // namespace

double fragmentChance(uint32_t seed, int index, int number) {
  return hash(seed, static_cast<uint32_t>(index), static_cast<uint32_t>(number), 0) * 0x1p-32;
}

Point Fragment::centroid() const {
  Point sum{};
  for (int i = 0; i < count; ++i) {
    sum.x += corner(i).x;
    sum.y += corner(i).y;
  }
  return {sum.x / count, sum.y / count};
}

FragmentGrid::FragmentGrid(FragmentShape shape, int width, int height, double across, double down,
                           uint32_t seed)
    : shape_(shape), width_(width), height_(height), seed_(seed) {
  for (double scale = 1;; scale *= 1.01) {
    columns_ = fitting(width, std::max(kLeast, across) * scale);
    rows_ = fitting(height, std::max(kLeast, down) * scale);
    if (count() <= kMost)
      return;
  }
}

int FragmentGrid::count() const {
  const int squares = columns_ * rows_;
  return shape_ == FragmentShape::shards   ? 2 * squares
         : shape_ == FragmentShape::bricks ? squares + rows_ / 2
                                           : squares;
}

Fragment FragmentGrid::rectangle(int left, int right, int row) const {
  const int top = down(row), bottom = down(row + 1);
  return {4, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

Fragment::Corner FragmentGrid::corner(int column, int row) const {
  Fragment::Corner at{across(column, columns_), down(row)};
  if (column == 0 || column == columns_ || row == 0 || row == rows_)
    return at;
  const int index = row * (columns_ + 1) + column;
  const Direction turn(360 * fragmentChance(seed_, index, kTurn));
  const double way = kFarthest * Fragment::kGrain * std::sqrt(fragmentChance(seed_, index, kWay));
  at.x += static_cast<int>(turn.right * way * width_ / columns_);
  at.y += static_cast<int>(turn.down * way * height_ / rows_);
  return at;
}

Fragment FragmentGrid::operator[](int index) const {
  if (shape_ == FragmentShape::bricks) {
    const int pair = index / (2 * columns_ + 1), rest = index % (2 * columns_ + 1);
    if (rest < columns_)
      return rectangle(across(rest, columns_), across(rest + 1, columns_), 2 * pair);
    const auto side = [&](int i) { return across(std::clamp(2 * i - 1, 0, 2 * columns_), 2 * columns_); };
    return rectangle(side(rest - columns_), side(rest - columns_ + 1), 2 * pair + 1);
  }
  const int square = shape_ == FragmentShape::shards ? index / 2 : index;
  const int column = square % columns_, row = square / columns_;
  if (shape_ == FragmentShape::squares)
    return rectangle(across(column, columns_), across(column + 1, columns_), row);
  const Fragment::Corner corners[] = {corner(column, row), corner(column + 1, row),
                                      corner(column + 1, row + 1), corner(column, row + 1)};
  const int first = (fragmentChance(seed_, square, kDiagonal) < 0.5 ? 0 : 1) + index % 2 * 2;
  return {3, {corners[first], corners[(first + 1) % 4], corners[(first + 2) % 4]}};
}

} // namespace zol
