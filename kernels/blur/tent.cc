#include "kernels/blur/tent.h"

#include "frame/convert.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zol {

Tent::Tent(double radius) {
  const int last = radius > 0 ? static_cast<int>(std::min(std::ceil(radius), double{kMaxReach})) : 0;
  weight[0] = 256;
  for (int d = 1; d <= last && d <= radius; ++d)
    weight[d] = truncate(256.0 - 256.0 * d / radius);
  while (reach < last && weight[reach + 1] != 0)
    ++reach;
  if (isCopy())
    return;
  for (int d = 1; d <= reach; ++d)
    sumTo[d] = sumTo[d - 1] + weight[d];

  int least = fall(0);
  int most = fall(0);
  for (int d = 1; d < reach; ++d) {
    least = std::min(least, fall(d));
    most = std::max(most, fall(d));
  }
  const int end = fall(reach);
  const bool endsAsSteep = std::max(most, end) - std::min(least, end) <= 1;
  ramp = endsAsSteep ? reach + 1 : reach;
  edgeFall = endsAsSteep ? 0 : end;
  if (endsAsSteep) {
    least = std::min(least, end);
    most = std::max(most, end);
  }

  // The commoner value is the slope, the other one the steps.
  int above = 0;
  int below = 0;
  for (int d = 0; d < ramp; ++d) {
    above += fall(d) - least;
    below += most - fall(d);
  }
  slope = above <= below ? least : most;
  stepFall = above <= below ? 1 : -1;
  for (int d = 0; d < ramp; ++d)
    for (int left = std::abs(fall(d) - slope); left > 0 && stepCount < kMaxSteps; --left)
      step[stepCount++] = static_cast<short>(d);
}

} // namespace zol
