#include "kernels/compositing/edge_ramps.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

// Rounding takes floats less than half a step away from what doubles say: below the first value they are 0,
// and from the second on 256.
constexpr double kNone = 0.5, kWhole = 256.5;

/// Columns of a row from `begin` to before `end`.
struct Columns {
  int begin, end;

  [[nodiscard]] int count() const { return end - begin; }
  [[nodiscard]] bool isEmpty() const { return end <= begin; }

  void keepFrom(double column) {
    begin = static_cast<int>(std::clamp<double>(std::ceil(column), begin, end));
  }
  void keepTo(double column) {
    end = static_cast<int>(std::clamp<double>(std::floor(column) + 1, begin, end));
  }

  /// Those where the ramp is at least so high.
  void keepWhere(const EdgeRamp &ramp, double height) {
    const double column = (height - ramp.start) / ramp.slope;
    if (ramp.slope > 0)
      keepFrom(column);
    else if (ramp.slope < 0)
      keepTo(column);
    else if (!(ramp.start >= height))
      end = begin;
  }
};

/// Adds by add(first column, width, coverage) what is covered in part, and fills what is covered wholly.
template <class Add>
void addAround(const Columns &covered, const Columns &whole, int left, uint16_t *coverage, Add add) {
  const auto part = [&](int begin, int end) {
    if (end > begin)
      add(begin, end - begin, coverage + (begin - left));
  };
  if (whole.isEmpty())
    return part(covered.begin, covered.end);
  part(covered.begin, whole.begin);
  std::fill_n(coverage + (whole.begin - left), whole.count(), uint16_t{256});
  part(whole.end, covered.end);
}

} // namespace

void addShape(const RampShape &shape, int left, int width, uint16_t *coverage) {
  const auto add = [&](int first, int count, uint16_t *row) {
    ZOL_SELECT(addRamps)(shape, first, count, row);
  };
  Columns covered = {left, left + width}, whole = covered;
  if (shape.join == RampJoin::greatest || shape.join == RampJoin::either)
    return add(left, width, coverage);
  for (int i = 0; i < shape.count; ++i) {
    covered.keepWhere(shape.ramps[i], kNone);
    whole.keepWhere(shape.ramps[i], kWhole);
  }
  if (shape.most < 256)
    whole.end = whole.begin;
  addAround(covered, whole, left, coverage, add);
}

void addRound(const RoundRamp &round, int left, int width, uint16_t *coverage) {
  const auto within = [&](double height) {
    const double radius = (round.start - height) / round.scale;
    const double square = radius * radius - double{round.down} * round.down;
    Columns columns = {left, left + width};
    if (radius < 0 || square < 0)
      columns.end = columns.begin;
    columns.keepFrom((-std::sqrt(square) - round.column) / round.perColumn);
    columns.keepTo((std::sqrt(square) - round.column) / round.perColumn);
    return columns;
  };
  addAround(within(kNone), within(kWhole), left, coverage, [&](int first, int count, uint16_t *row) {
    ZOL_SELECT(addRoundRamp)(round, first, count, row);
  });
}

} // namespace zol
