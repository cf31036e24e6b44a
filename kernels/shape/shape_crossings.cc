#include "kernels/shape/shape_crossings.h"

#include "kernels/shape/crossing_search.h"

#include <algorithm>
#include <utility>

namespace zol {
namespace {

/// A stretch of a segment on which the searched coordinate is monotonic, and the lines that it crosses.
struct Piece {
  Polynomial searched; // negated where the coordinate decreases
  double sign;
  double t0, t1;
  HermiteCubic other;
  int first, last;
};

/// The parameters of up to two inner extrema, ascending; 4 numbers at most with the ends.
struct Breaks {
  int count;
  double t[4];
};

Breaks breaksOf(const Polynomial &polynomial) {
  constexpr double kTolerance = 6e-5;
  const Extrema extrema = extremaOf(polynomial, kTolerance);
  Breaks breaks{1, {0.0}};
  for (int i = 0; i < extrema.count; ++i)
    if (extrema.t[i] >= kTolerance && extrema.t[i] < 1.0)
      breaks.t[breaks.count++] = extrema.t[i];
  if (breaks.count == 3) {
    if (breaks.t[1] > breaks.t[2])
      std::swap(breaks.t[1], breaks.t[2]);
    if (breaks.t[1] == breaks.t[2])
      breaks.count = 2;
  }
  breaks.t[breaks.count++] = 1.0;
  return breaks;
}

/// Narrows [first, last] to the integers within [low, high]; false when there is none.
bool narrow(double low, double high, int *first, int *last) {
  if (!(low <= *last && high >= *first))
    return false;
  if (low > *first) {
    const int below = static_cast<int>(low);
    *first = below < low ? below + 1 : below;
  }
  if (high < *last) {
    const int above = static_cast<int>(high);
    *last = above > high ? above - 1 : above;
  }
  return *first <= *last;
}

/// Writes the segment's pieces that cross any of the lines; returns how many, 3 at most.
int piecesOf(const HermiteCubic &searched, const HermiteCubic &other, int first, int last, Piece *pieces) {
  const Polynomial polynomial = polynomialOf(searched);
  const Breaks breaks = breaksOf(polynomial);
  int count = 0;
  for (int i = 0; i + 1 < breaks.count; ++i) {
    const double f0 = valueAt(searched, breaks.t[i]);
    const double f1 = valueAt(searched, breaks.t[i + 1]);
    const bool increasing = f1 >= f0;
    Piece &piece = pieces[count];
    piece = {polynomial, 1.0, breaks.t[i], breaks.t[i + 1], other, first, last};
    if (!increasing) {
      piece.searched = {-polynomial.a, -polynomial.b, -polynomial.c, -polynomial.d};
      piece.sign = -1.0;
    }
    if (narrow(increasing ? f0 : f1, increasing ? f1 : f0, &piece.first, &piece.last))
      ++count;
  }
  return count;
}

/// Gathers searches until all lanes are taken, and hands what they find to their lines.
class Searcher {
public:
  void find(const Piece &piece, int coordinate, CrossingLine *line) {
    const int i = taken_;
    search_.a[i] = piece.searched.a;
    search_.b[i] = piece.searched.b;
    search_.c[i] = piece.searched.c;
    search_.d[i] = piece.searched.d;
    search_.line[i] = piece.sign * coordinate;
    search_.low[i] = piece.t0;
    search_.high[i] = piece.t1;
    search_.q0[i] = piece.other.q0;
    search_.q1[i] = piece.other.q1;
    search_.t0[i] = piece.other.t0;
    search_.t1[i] = piece.other.t1;
    lines_[i] = line;
    if (++taken_ == kSearchLanes)
      finish();
  }

  void finish() {
    alignas(32) double found[kSearchLanes];
    run_(&search_, found);
    for (int i = 0; i < taken_; ++i)
      if (found[i] == found[i])
        lines_[i]->crossings[lines_[i]->count++] = found[i];
    taken_ = 0;
  }

private:
  CrossingSearch search_{}; // lanes not taken search an empty interval or repeat an earlier search
  CrossingLine *lines_[kSearchLanes];
  int taken_ = 0;
  void (*run_)(const CrossingSearch *, double *) = ZOL_SELECT(searchCrossings);
};

/// Counts on every line the pieces that reach it; returns the sum.
uint64_t countCrossings(const Piece *pieces, size_t pieceCount, int first, CrossingLine *lines, int count) {
  for (int i = 0; i <= count; ++i)
    lines[i] = {};
  for (size_t i = 0; i < pieceCount; ++i) { // how the number changes from line to line
    ++lines[pieces[i].first - first].count;
    --lines[pieces[i].last - first + 1].count;
  }
  uint64_t total = 0;
  for (int i = 1; i < count; ++i)
    lines[i].count += lines[i - 1].count;
  for (int i = 0; i < count; ++i)
    total += lines[i].count;
  return total;
}

} // namespace

CrossingLines::CrossingLines(const ShapeSegments &segments, LineKind kind, int first, int count)
    : lines_(static_cast<size_t>(std::max(count, 0)) + 1) {
  if (!lines_)
    return;
  const Scratch<Piece> pieces(segments.count() * 3);
  if (!pieces)
    return;
  size_t pieceCount = 0;
  for (const ShapeSegment &segment : segments) {
    const HermiteCubic &searched = kind == LineKind::rows ? segment.y : segment.x;
    const HermiteCubic &other = kind == LineKind::rows ? segment.x : segment.y;
    pieceCount +=
        static_cast<size_t>(piecesOf(searched, other, first, first + count - 1, pieces.data() + pieceCount));
  }
  const uint64_t total = countCrossings(pieces.data(), pieceCount, first, lines_.data(), count);
  if (total > std::numeric_limits<size_t>::max())
    return;
  crossings_.emplace(static_cast<size_t>(total));
  spans_.emplace(static_cast<size_t>(total / 2));
  if (!*crossings_ || !*spans_)
    return;
  size_t place = 0;
  for (int i = 0; i < count; ++i) {
    CrossingLine &line = lines_[static_cast<size_t>(i)];
    line.crossings = crossings_->data() + place;
    line.spans = spans_->data() + place / 2;
    place += std::exchange(line.count, 0);
  }
  Searcher searcher;
  for (size_t i = 0; i < pieceCount; ++i)
    for (int line = pieces[i].first; line <= pieces[i].last; ++line)
      searcher.find(pieces[i], line, &lines_[static_cast<size_t>(line - first)]);
  searcher.finish();
  complete_ = true;
}

void sortCrossings(CrossingLine &line) {
  constexpr uint32_t kFew = 32;
  double *v = line.crossings;
  if (line.count > kFew) {
    std::sort(v, v + line.count);
    return;
  }
  for (uint32_t i = 1; i < line.count; ++i) {
    const double value = v[i];
    uint32_t at = i;
    for (; at > 0 && v[at - 1] > value; --at)
      v[at] = v[at - 1];
    v[at] = value;
  }
}

void makeSpans(CrossingLine &line, int first, int length) {
  const double from = first;
  const double to = static_cast<double>(first) + length;
  const double *v = line.crossings;
  line.spanCount = 0;
  for (uint32_t i = 0; i + 1 < line.count && v[i] <= to; i += 2) {
    if (v[i + 1] < from)
      continue;
    const double start = std::max(v[i], from) - from;
    const double end = std::min(v[i + 1], to) - from;
    const int firstPixel = static_cast<int>(start);
    const int lastPixel = static_cast<int>(end);
    line.spans[line.spanCount++] = {firstPixel,
                                    static_cast<int>(start + 1.0),
                                    lastPixel,
                                    static_cast<uint8_t>((1.0 - (start - firstPixel)) * 255.0),
                                    static_cast<uint8_t>((end - lastPixel) * 255.0),
                                    end - lastPixel > 0.0};
  }
}

bool isInside(const CrossingLine &line, double place) {
  for (uint32_t i = 0; i < line.count; ++i) {
    const bool inside = i % 2 == 0;
    if (i + 1 == line.count || (line.crossings[i] <= place && place <= line.crossings[i + 1]))
      return inside;
    if (line.crossings[i] >= place)
      return false;
  }
  return false;
}

} // namespace zol
