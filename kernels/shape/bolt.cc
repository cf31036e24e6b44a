#include "kernels/shape/bolt.h"

#include "kernels/noise/hash.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

constexpr int kMostPieces = 1 << kMostBoltDetail;
constexpr int kDeepest = 3; // branches of branches of branches
constexpr int kMostBolts = 4096;

struct Line {
  double x, y, dx, dy; ///< from its beginning to its end

  [[nodiscard]] double length() const { return std::sqrt(dx * dx + dy * dy); }
  [[nodiscard]] OutlinePlace at(double share) const {
    const double size = length();
    return {x + share * dx, y + share * dy, size > 0 ? dx / size : 1, size > 0 ? dy / size : 0};
  }
};

struct AlongContour {
  const Outline &outline;
  const Contour &contour;

  [[nodiscard]] double length() const { return outline.length(contour); }
  [[nodiscard]] OutlinePlace at(double share) const { return outline.at(contour, share * length()); }
};

double distance(const StrokePoint &from, const StrokePoint &to) {
  const double dx = to.x - from.x, dy = to.y - from.y;
  return std::sqrt(dx * dx + dy * dy);
}

/// What one bolt has of its own.
struct Bolt {
  uint32_t number;
  int detail, depth;
  double half, endHalf, reach;
};

class Lightning {
public:
  Lightning(const BoltLook &look, Coverage &coverage) : look_(look), coverage_(coverage) {}

  template <class Base> void draw(const Base &base, const Bolt &bolt) {
    if (!(bolt.reach > 0) || ++drawn_ > kMostBolts)
      return;
    const int pieces = 1 << bolt.detail;
    double offsets[kMostPieces + 1];
    StrokePoint points[kMostPieces + 1];
    double ways[kMostPieces + 1]; // along the bolt
    findOffsets(bolt, base.length(), offsets);
    for (int i = 0; i <= pieces; ++i) {
      const OutlinePlace place = base.at(static_cast<double>(i) / pieces);
      points[i] = {place.x - offsets[i] * place.alongY, place.y + offsets[i] * place.alongX, 0};
      ways[i] = i == 0 ? 0 : ways[i - 1] + distance(points[i - 1], points[i]);
    }
    const double whole = ways[pieces], end = bolt.reach * whole;
    for (int i = 0; i <= pieces; ++i)
      points[i].half = bolt.half + (bolt.endHalf - bolt.half) * (whole > 0 ? ways[i] / whole : 0);
    fork(base, bolt, points, ways, end);

    int last = 1;
    while (last < pieces && ways[last] < end)
      ++last;
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): there are two ways at least
    if (ways[last] > end) {
      const double share = (end - ways[last - 1]) / (ways[last] - ways[last - 1]);
      const StrokePoint &from = points[last - 1];
      StrokePoint &to = points[last];
      to = {from.x + share * (to.x - from.x), from.y + share * (to.y - from.y),
            from.half + share * (to.half - from.half)};
    }
    stroke(points, static_cast<size_t>(last) + 1, false, Join::round, Cap::round, coverage_);
  }

private:
  [[nodiscard]] uint32_t chance(const Bolt &bolt, int vertex, int turn) const {
    return hash(look_.chance, bolt.number, static_cast<uint32_t>(vertex), static_cast<uint32_t>(turn));
  }

  /// How far the vertices lie off the base: in the middle of their neighbours, and off that by chance.
  void findOffsets(const Bolt &bolt, double length, double *offsets) const {
    const int pieces = 1 << bolt.detail;
    offsets[0] = offsets[pieces] = 0;
    for (int level = 1; level <= bolt.detail; ++level) {
      const double time = look_.evolution * level, turn = std::floor(time), t = time - turn;
      const double smooth = t * t * (3 - 2 * t);
      const double size = look_.amplitude * length / (1 << level);
      const int step = pieces >> level;
      for (int j = 0; j < 1 << (level - 1); ++j) {
        const auto kink = [&](double at) {
          return chance(bolt, 1024 * level + j, static_cast<int>(at)) * 0x1p-31 - 1;
        };
        const double from = kink(turn), to = kink(turn + 1);
        double *const vertex = offsets + (2 * j + 1) * step;
        *vertex = (vertex[-step] + vertex[step]) / 2 + (from + (to - from) * smooth) * size;
      }
    }
  }

  /// Draws the branches that the bolt has before `end`.
  template <class Base>
  void fork(const Base &base, const Bolt &bolt, const StrokePoint *points, const double *ways, double end) {
    constexpr int kFirstLevel = 2, kLastLevel = 5;
    const int pieces = 1 << bolt.detail;
    for (int level = kFirstLevel; bolt.depth < kDeepest && level <= std::min(kLastLevel, bolt.detail);
         ++level)
      for (int j = 0; j < 1 << (level - 1); ++j) {
        const uint32_t number = chance(bolt, 1024 * level + j, -1);
        if (!(number < look_.branches * 0x1p30))
          continue;
        const int at = (2 * j + 1) * (pieces >> level);
        const double share = static_cast<double>(at) / pieces;
        Bolt branch{number, std::max(bolt.detail - 2, 0), bolt.depth + 1, points[at].half / 2, 0, 0};
        const double size = 0.2 + 0.4 * (chance(branch, 0, -2) * 0x1p-32); // of what is left of the bolt
        const double left = (ways[pieces] - ways[at]) * size;
        branch.reach = left > 0 ? std::min((end - ways[at]) / left, 1.0) : 0;
        draw(branchOf(base, branch, points[at], share, size), branch);
      }
  }

  /// Turned by 15 to 45 degrees to one side.
  template <class Base>
  [[nodiscard]] Line branchOf(const Base &base, const Bolt &branch, const StrokePoint &root, double share,
                              double size) const {
    // Between the sines of both angles: even enough, and without a sine that libraries round differently.
    constexpr double kLeast = 0.2588190451025208, kMost = 0.7071067811865476;
    const uint32_t word = chance(branch, 1, -2);
    const double sine = kLeast + (kMost - kLeast) * ((word >> 1) * 0x1p-31),
                 cosine = std::sqrt(1 - sine * sine);
    const double side = (word & 1) != 0 ? sine : -sine;
    const OutlinePlace place = base.at(share);
    const double length = base.length() * (1 - share) * size;
    return {root.x, root.y, length * (place.alongX * cosine - place.alongY * side),
            length * (place.alongX * side + place.alongY * cosine)};
  }

  const BoltLook &look_;
  Coverage &coverage_;
  int drawn_ = 0;
};

template <class Base> void drawAlong(const Base &base, const BoltLook &look, Coverage &coverage) {
  constexpr double kEndWidth = 0.3; // of that at the beginning
  Lightning(look, coverage).draw(base, {0, look.detail, 0, look.half, kEndWidth * look.half, look.reach});
}

} // namespace

void drawBolt(const PlanePoint &from, const PlanePoint &to, const BoltLook &look, Coverage &coverage) {
  drawAlong(Line{from.x, from.y, to.x - from.x, to.y - from.y}, look, coverage);
}

void drawBolt(const Outline &outline, const Contour &contour, const BoltLook &look, Coverage &coverage) {
  drawAlong(AlongContour{outline, contour}, look, coverage);
}

} // namespace zol
