#include "kernels/shape/coverage.h"

#include "kernels/shape/coverage_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace zol {
namespace {

constexpr int kShift = 8;
constexpr int kOne = 1 << kShift; // a pixel
constexpr int kBandRows = 16;     // whose cells stay in the cache
constexpr int kBandHeight = kBandRows << kShift;

int blocksOf(int width) { return width / kCoverBlock + 1; } // with a cell behind the last pixel
int bandsOf(int height) { return (height + kBandRows - 1) / kBandRows; }

/// 256ths, rounded, halves up. Beyond a million pixels points do not move on.
int inSteps(double pixels) {
  constexpr double kFar = 1 << 20;
  const double steps = kOne * std::clamp(pixels, -kFar, kFar) + 0.5;
  const int towardZero = static_cast<int>(steps);
  return towardZero - (towardZero > steps ? 1 : 0);
}

int borderBehind(int place) { return (place | (kOne - 1)) + 1; }

/// Where a line from (p0, q0) to (p1, q1), p1 > p0, crosses borders: the q's, to the nearest, halves up.
template <class Number> class Crossings {
public:
  Crossings(Number p0, Number q0, Number p1, Number q1) : p0_(p0), q0_(q0), rise_(q1 - q0), run_(p1 - p0) {}

  [[nodiscard]] int at(Number p) {
    const auto [whole, rest] = divide(2 * (p - p0_) * rise_ + run_);
    q_ = {q0_ + whole, rest};
    return static_cast<int>(q_.whole);
  }
  /// One border further than the last time.
  [[nodiscard]] int next() {
    if (!stepped_)
      step_ = divide(2 * kOne * rise_);
    stepped_ = true;
    q_.whole += step_.whole;
    q_.rest += step_.rest;
    if (q_.rest >= 2 * run_) {
      q_.rest -= 2 * run_;
      ++q_.whole;
    }
    return static_cast<int>(q_.whole);
  }

private:
  struct Mixed {
    Number whole, rest;
  };
  /// By twice the run, rounded down.
  [[nodiscard]] Mixed divide(Number dividend) const {
    const Number divisor = 2 * run_, whole = dividend / divisor, rest = dividend % divisor;
    return rest < 0 ? Mixed{whole - 1, rest + divisor} : Mixed{whole, rest};
  }

  Number p0_, q0_, rise_, run_;
  Mixed q_{}, step_{};
  bool stepped_ = false;
};

} // namespace

/// The cells of kBandRows rows, to which edges add what they cut off.
class Coverage::Band {
public:
  Band(const Coverage &coverage, int band)
      : cells_(coverage.cells_.data()), marks_(coverage.marks_.data()), stride_(coverage.stride_),
        width_(coverage.width_), top_(band * kBandHeight) {}

  void add(const Edge &edge) {
    constexpr int kNear = 1 << 14; // the products of lengths below it fit 32 bits
    if (std::abs(edge.x1 - edge.x0) < kNear && edge.y1 - edge.y0 < kNear)
      cutAtRows<int32_t>(edge);
    else
      cutAtRows<int64_t>(edge);
  }

private:
  template <class Number> void cutAtRows(const Edge &edge) {
    Crossings<Number> crossings(edge.y0, edge.x0, edge.y1, edge.x1);
    const int bottom = std::min(edge.y1, top_ + kBandHeight);
    int y = std::max(edge.y0, top_), x = edge.x0;
    bool crossed = y > edge.y0;
    if (crossed)
      x = crossings.at(y);
    while (y < bottom) {
      const int border = borderBehind(y), end = std::min(border, edge.y1);
      const int to = border >= edge.y1 ? edge.x1 : crossed ? crossings.next() : crossings.at(border);
      crossed = true;
      cutAtColumns((y - top_) >> kShift, x, to, end - y, edge.sign);
      y = end;
      x = to;
    }
  }

  /// A piece within a row.
  void cutAtColumns(int row, int x0, int x1, int height, int sign) {
    const int left = std::min(x0, x1), right = std::max(x0, x1);
    if (left >= width_ << kShift)
      return;
    uint32_t *const cells = cells_ + ptrdiff_t{row} * stride_;
    const int column = left >> kShift;
    int last = std::max(column, 0);
    if (right <= 0)
      addTo(cells, height * sign, 0);
    else if (right <= (column + 1) << kShift)
      addTo(cells + column, height * sign, (left + right) - (column << (kShift + 1)));
    else if (constexpr int kNear = 1 << 20; right - left < kNear)
      last = cutLong<int32_t>(cells, left, right, height, sign);
    else
      last = cutLong<int64_t>(cells, left, right, height, sign);
    uint32_t *const marks = marks_ + ptrdiff_t{row} * (stride_ / kCoverBlock);
    for (int block = std::max(column, 0) / kCoverBlock; block <= (last + 1) / kCoverBlock; ++block)
      marks[block] = 1;
  }

  /// A piece within a row that crosses borders of columns; the last column that it reaches.
  template <class Number> int cutLong(uint32_t *cells, int left, int right, int height, int sign) {
    Crossings<Number> crossings(left, 0, right, height);
    int column = std::max(left >> kShift, 0), from = left - column * kOne, before = 0;
    const bool fromOutside = left < 0;
    if (fromOutside) {
      before = crossings.at(0);
      addTo(cells, before * sign, 0);
      from = 0;
    }
    for (bool crossed = fromOutside;; crossed = true) {
      const int border = (column + 1) * kOne;
      if (border >= right) {
        addTo(cells + column, (height - before) * sign, from + right - column * kOne);
        return column;
      }
      const int reached = crossed ? crossings.next() : crossings.at(border);
      addTo(cells + column, (reached - before) * sign, from + kOne);
      if (column == width_ - 1)
        return column;
      ++column;
      from = 0;
      before = reached;
    }
  }

  /// A piece of this height, `twiceLeft` being twice what it leaves of the pixel's width to its left.
  static void addTo(uint32_t *cell, int height, int twiceLeft) {
    cell[0] += static_cast<uint32_t>(height * (2 * kOne - twiceLeft));
    cell[1] += static_cast<uint32_t>(height * twiceLeft);
  }

  uint32_t *cells_;
  uint32_t *marks_;
  int stride_, width_, top_;
};

Coverage::Coverage(int width, int height, double squeeze)
    : width_(std::max(width, 0)), height_(std::max(height, 0)), stride_(blocksOf(width_) * kCoverBlock),
      squeeze_(squeeze), bytes_(static_cast<size_t>(stride_) * static_cast<size_t>(height_)),
      cells_(static_cast<size_t>(stride_) * kBandRows),
      marks_(static_cast<size_t>(stride_ / kCoverBlock) * kBandRows),
      heads_(static_cast<size_t>(bandsOf(height_))) {
  failed_ = !bytes_ || !cells_ || !marks_ || !heads_;
  if (failed_)
    return;
  std::memset(bytes_.data(), 0, static_cast<size_t>(stride_) * static_cast<size_t>(height_));
  std::memset(cells_.data(), 0, static_cast<size_t>(stride_) * kBandRows * sizeof(uint32_t));
  std::fill_n(marks_.data(), stride_ / kCoverBlock * kBandRows, 0U);
  std::fill_n(heads_.data(), bandsOf(height_), -1);
}

Coverage::Corner Coverage::corner(double x, double y) {
  const double inColumns = x / squeeze_;
  const bool isNumber = !std::isnan(inColumns) && !std::isnan(y);
  isNumber_ = isNumber_ && isNumber;
  return isNumber ? Corner{inSteps(inColumns), inSteps(y)} : Corner{};
}

void Coverage::lineTo(double x, double y) {
  const Corner to = corner(x, y);
  if (going_)
    edge(last_, to);
  else
    start_ = to;
  going_ = true;
  last_ = to;
}

void Coverage::close(int layers) {
  if (going_)
    edge(last_, start_);
  // Areas lie to the right of edges that go down: these are on the left of what turns the other way round.
  const int sign = !isNumber_ ? 0 : area_ > 0 ? -1 : 1;
  if (sign != 1)
    for (Edge *added = edges_.begin() + polygon_; added != edges_.end(); ++added)
      added->sign *= sign;
  polygon_ = edges_.count();
  drawing_ = going_ = false;
  isNumber_ = true;
  area_ = 0;
  layers_ += layers;
  if (layers_ >= kTogether)
    merge();
}

void Coverage::edge(Corner from, Corner to) {
  if (!drawing_)
    origin_ = from;
  drawing_ = true;
  const auto off = [](int32_t place, int32_t origin) { return static_cast<double>(place) - origin; };
  area_ += off(from.x, origin_.x) * off(to.y, origin_.y) - off(to.x, origin_.x) * off(from.y, origin_.y);

  const bool down = from.y < to.y;
  if (!down)
    std::swap(from, to);
  const int right = width_ << kShift, bottom = height_ << kShift;
  if (failed_ || right == 0 || bottom == 0 || from.y == to.y || to.y <= 0 || from.y >= bottom)
    return;
  rightmost_ = std::max(rightmost_, std::max(from.x, to.x) >> kShift);
  if (from.x >= right && to.x >= right)
    return;
  if (from.x <= 0 && to.x <= 0)
    from.x = to.x = 0;
  leftmost_ = std::min(leftmost_, std::min(from.x, to.x) >> kShift);
  const auto band = static_cast<size_t>(std::max(from.y, 0) / kBandHeight);
  const auto index = static_cast<int32_t>(edges_.count());
  failed_ =
      edges_.count() >= INT32_MAX || !edges_.add({from.x, from.y, to.x, to.y, down ? 1 : -1, heads_[band]});
  if (!failed_)
    heads_[band] = index;
}

void Coverage::merge(int brightness) {
  if (!*this)
    return;
  const auto cover = ZOL_SELECT(coverRow);
  const int blocks = stride_ / kCoverBlock;
  // Outside of these the sums are 0: edges to the left count as on the border, and shapes end at their right.
  const int first = std::max(leftmost_, 0) / kCoverBlock;
  const int count = std::min((rightmost_ + 1) / kCoverBlock + 1, blocks) - first;
  for (int b = 0; b < bandsOf(height_); ++b) {
    int32_t index = std::exchange(heads_[static_cast<size_t>(b)], -1);
    if (index < 0)
      continue;
    Band band(*this, b);
    while (index >= 0) {
      Edge &edge = edges_[static_cast<size_t>(index)];
      const int32_t next = edge.next;
      band.add(edge);
      if (b + 1 < bandsOf(height_) && edge.y1 > (b + 1) * kBandHeight) {
        edge.next = std::exchange(heads_[static_cast<size_t>(b) + 1], index);
      }
      index = next;
    }
    for (int y = 0; y < std::min(kBandRows, height_ - b * kBandRows); ++y)
      cover(cells_.data() + ptrdiff_t{y} * stride_ + first * kCoverBlock,
            marks_.data() + ptrdiff_t{y} * blocks + first, count, brightness,
            row(b * kBandRows + y) + first * kCoverBlock);
  }
  edges_.cut(0);
  polygon_ = 0;
  leftmost_ = INT32_MAX;
  rightmost_ = 0;
  layers_ = 0;
}

} // namespace zol
