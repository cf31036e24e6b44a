#include "kernels/patterns/cells.h"

#include <cmath>

namespace zol {

bool Cells::isOdd(int at) const { return std::fmod(std::floor((at + 0.5 - size / 2.0) / cell), 2) != 0; }

bool Cells::isOnLine(int at) const {
  if (lineWidth >= cell)
    return true;
  const double nearest = std::rint((at + 0.5 - size / 2.0) / cell);
  const double first = std::floor(size / 2.0 + nearest * cell - lineWidth / 2.0 + 0.5);
  return at >= first && at < first + lineWidth;
}

} // namespace zol
