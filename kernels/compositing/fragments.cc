#include "kernels/compositing/fragments.h"

#include "kernels/compositing/fragment_rows.h"
#include "kernels/warp/warp_row.h"
#include "kernels/warp/warp_rows.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace zol {
namespace {

constexpr WarpFilter kFilter = WarpFilter::sharp;
constexpr double kFar = 1e6; // pixels beyond every frame

/// Twice the area, negative where the corners go the other way round.
double doubleArea(const Point *corners, int count) {
  double sum = 0;
  for (int i = 0; i < count; ++i) {
    const Point &p = corners[i], &q = corners[(i + 1) % count];
    sum += p.x * q.y - q.x * p.y;
  }
  return sum;
}

/// The edge from p to q: exactly the same, turned over, as the one from q to p. Inside is on the right.
WarpEdge edgeBetween(Point p, Point q, double side) {
  if (q.y < p.y || (q.y == p.y && q.x < p.x)) {
    std::swap(p, q);
    side = -side;
  }
  const double x = p.y - q.y, y = q.x - p.x, length = std::sqrt(x * x + y * y);
  if (!(length > 0))
    return {0, 0, kFar};
  const double across = x / length, down = y / length;
  return {side * across, side * down, -side * (across * p.x + down * p.y)};
}

int rowOf(double y) { return static_cast<int>(std::floor(std::clamp(y, -kFar, kFar))); }

/// The part of a polygon, of `corners` corners, that lies outside the edge; answers its number of corners.
int cutOff(const WarpEdge &edge, const Point *corners, int count, Point *rest) {
  const auto inside = [&](const Point &p) { return edge.x * p.x + (edge.y * p.y + edge.rest); };
  int left = 0;
  for (int i = 0; i < count; ++i) {
    const Point &p = corners[i], &q = corners[(i + 1) % count];
    const double from = inside(p), to = inside(q);
    if (from < 0)
      rest[left++] = p;
    if ((from < 0) != (to < 0)) {
      const double share = from / (from - to);
      rest[left++] = {p.x + (q.x - p.x) * share, p.y + (q.y - p.y) * share};
    }
  }
  return left;
}

/// In 1/256, rounded up: how much of a pixel lies outside both edges, of which so much of it lies inside.
int outsideBoth(const WarpEdge &a, double insideA, const WarpEdge &b, double insideB) {
  const Point pixel[] = {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}};
  Point once[6], twice[8];
  const int few = cutOff({a.x, a.y, insideA}, pixel, 4, once);
  const int fewer = cutOff({b.x, b.y, insideB}, once, few, twice);
  const double area = fewer > 2 ? doubleArea(twice, fewer) / 2 : 0;
  return area > 0 ? static_cast<int>(256 * area) + 1 : 0;
}

} // namespace

// ---- Outlines ----

FragmentOutline::FragmentOutline(const Point *corners, int count) : count_(count) {
  Point least = corners[0], most = corners[0];
  const double side = doubleArea(corners, count) < 0 ? -1 : 1;
  for (int i = 0; i < count; ++i) {
    const Point &p = corners[i], &q = corners[(i + 1) % count];
    edges_[i] = edgeBetween(p, q, side);
    least = {std::min(least.x, p.x), std::min(least.y, p.y)};
    most = {std::max(most.x, p.x), std::max(most.y, p.y)};
  }
  // Centers of pixels that are half a pixel away are the first that are not touched.
  top_ = rowOf(least.y);
  bottom_ = rowOf(most.y) + 1;
  left_ = rowOf(least.x);
  right_ = rowOf(most.x) + 1;
}

Span FragmentOutline::visible(int row, const Span &columns) const {
  const int begin = std::max(columns.begin, left_), end = std::min(columns.end, right_);
  return begin < end && row >= top_ && row < bottom_ ? spanWithin(edges_, count_, row, {begin, end}, 1)
                                                     : Span{begin, begin};
}

Span FragmentOutline::whole(int row, const Span &visible) const {
  return spanWithin(edges_, count_, row, visible, 256);
}

/// What lies outside of one edge and another is not taken away twice, so that pieces that meet in a corner
/// make up a pixel.
int FragmentOutline::coverage(int column, int row) const {
  constexpr double kTouching = 0.7072; // half a pixel's diagonal
  const WarpEdge *near[Fragment::kMostCorners];
  double inside[Fragment::kMostCorners];
  int covered = 256, touching = 0;
  for (int i = 0; i < count_; ++i) {
    const WarpEdge &edge = edges_[i];
    const double atRow = edge.atRow(row), distance = edge.x * (column + 0.5) + atRow;
    covered -= 256 - edge.coverage(column, atRow);
    if (std::abs(distance) >= kTouching)
      continue;
    for (int k = 0; k < touching; ++k)
      covered += outsideBoth(*near[k], inside[k], edge, distance);
    near[touching] = &edge;
    inside[touching++] = distance;
  }
  return std::clamp(covered, 0, 256);
}

// ---- Rows ----

template <class Reach>
RowIndex::RowIndex(int rows, int things, Reach reach)
    : begins_(size_t(rows) + 2), things_([&] {
        size_t count = 0;
        for (int i = 0; i < things; ++i) {
          const Span span = reach(i);
          count += size_t(std::max(0, span.end - span.begin));
        }
        return count;
      }()) {
  if (!*this)
    return;
  // Numbers of things first, then where those of the row before end: filling moves them on by a row.
  std::fill_n(begins_.data(), rows + 2, 0);
  const auto forEachRow = [&](auto call) {
    for (int i = 0; i < things; ++i)
      for (Span span = reach(i); span.begin < span.end; ++span.begin)
        call(span.begin, i);
  };
  forEachRow([&](int row, int) { ++begins_[size_t(row) + 2]; });
  for (int row = 0; row < rows; ++row)
    begins_[size_t(row) + 2] += begins_[size_t(row) + 1];
  forEachRow([&](int row, int thing) { things_[size_t(begins_[size_t(row) + 1]++)] = thing; });
}

// ---- The layer ----

FragmentLayer::FragmentLayer(const pic &picture, const Area &area, const FragmentGrid &grid,
                             const FragmentMove *moves, int count)
    : source_(WarpSource::of(picture)), area_(area.moved(-picture.X, -picture.Y)),
      allMoved_(count == grid.count()), pieces_(size_t(count)), gone_(size_t(picture.Width)),
      row_(size_t(area.width())) {
  if (!pieces_)
    return;
  for (int i = 0; i < count; ++i) {
    const FragmentMove &move = moves[i];
    const Fragment fragment = grid[move.fragment];
    Point corners[Fragment::kMostCorners], moved[Fragment::kMostCorners];
    for (int k = 0; k < fragment.count; ++k) {
      corners[k] = fragment.corner(k);
      moved[k] = move.forward.of(corners[k]);
    }
    new (&pieces_[size_t(i)])
        Piece{FragmentOutline(corners, fragment.count), FragmentOutline(moved, fragment.count),
              WarpMap(move.forward.inverse(), picture.Width, picture.Height), move.opacity};
  }
  const auto reach = [](const FragmentOutline &outline, int top, int bottom) {
    return Span{std::max(outline.top(), top) - top, std::min(outline.bottom(), bottom) - top};
  };
  left_.emplace(picture.Height, allMoved_ ? 0 : count,
                [&](int i) { return reach(pieces_[size_t(i)].home, 0, picture.Height); });
  moved_.emplace(area.height(), count, [&](int i) {
    const Piece &piece = pieces_[size_t(i)];
    return piece.map.drawsNothing() || piece.opacity == 0 ? Span{0, 0}
                                                          : reach(piece.moved, area_.top, area_.bottom);
  });
}

void FragmentLayer::writeRest(int y, const Span &columns, _color_t *row) const {
  uint16_t *const gone = gone_.data();
  std::fill(gone + columns.begin, gone + columns.end, uint16_t{0});
  for (const int i : left_->at(y)) {
    const FragmentOutline &home = pieces_[size_t(i)].home;
    const Span visible = home.visible(y, columns), whole = home.whole(y, visible);
    const auto add = [&](int begin, int end) {
      for (int x = begin; x < end; ++x)
        gone[x] = static_cast<uint16_t>(gone[x] + home.coverage(x, y));
    };
    add(visible.begin, whole.begin);
    std::fill(gone + whole.begin, gone + whole.end, uint16_t{256});
    add(whole.end, visible.end);
  }
  ZOL_SELECT(takeAway)
  (source_.pixels + ptrdiff_t{y} * source_.step + columns.begin, gone + columns.begin, row + columns.begin,
   columns.end - columns.begin);
}

void FragmentLayer::warp(const Piece &piece, int y, const Span &columns, _color_t *row) const {
  const Span visible = piece.moved.visible(y, columns);
  if (visible.begin >= visible.end)
    return;
  const Span whole = piece.moved.whole(y, visible);
  _color_t *const pixels = row_.data() - columns.begin;
  warpPixels(source_, piece.map, y, visible.begin, visible.end, kFilter, pixels + visible.begin);
  const auto cut = [&](int begin, int end) {
    for (int x = begin; x < end; ++x) {
      const int share = piece.moved.coverage(x, y) * piece.opacity;
      pixels[x].a = static_cast<uint8_t>((pixels[x].a * share + (1 << 19)) >> 20);
    }
  };
  cut(visible.begin, whole.begin);
  if (piece.opacity < 4096)
    ZOL_SELECT(fade)(pixels + whole.begin, whole.end - whole.begin, piece.opacity);
  cut(whole.end, visible.end);
  ZOL_SELECT(gatherPixels)(row + visible.begin, pixels + visible.begin, visible.end - visible.begin);
}

void FragmentLayer::write(int y, _color_t *out) const {
  std::fill_n(out, area_.width(), _color_t{});
  const int from = y + area_.top;
  _color_t *const row = out - area_.left; // counted from the picture's column 0
  if (!allMoved_ && from >= 0 && from < source_.height)
    if (const Span columns{std::max(0, area_.left), std::min(source_.width, area_.right)};
        columns.begin < columns.end)
      writeRest(from, columns, row);
  for (const int i : moved_->at(y))
    warp(pieces_[size_t(i)], from, {area_.left, area_.right}, row);
}

} // namespace zol
