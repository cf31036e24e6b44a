#include "kernels/blur/tent.h"

#include "frame/convert.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zol {
namespace {

/// Whether the steps `a` and the steps `b`, `size` of each, lie equally far apart.
bool alike(const short *a, const short *b, int size) {
  for (int i = 1; i < size; ++i)
    if (a[i] - a[0] != b[i] - b[0])
      return false;
  return true;
}

bool isPalindrome(const short *steps, int size) {
  for (int i = 1; i < size - i; ++i)
    if (steps[i] - steps[0] != steps[size - 1] - steps[size - 1 - i])
      return false;
  return true;
}

} // namespace

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

StepGroups::StepGroups(const Tent &tent) {
  constexpr int kMaxSize = 16;
  const int steps = tent.stepCount;
  const auto gather = [&](const short *like, int n, auto takeGroup, auto takeSingle) {
    for (int i = 0; i < steps;)
      if (i + n <= steps && alike(tent.step + i, like, n)) {
        takeGroup(tent.step[i]);
        i += n;
      } else {
        takeSingle(tent.step[i++]);
      }
  };

  // Vectors to load for each line: of a single step and of a group's sum one each ahead and behind, though a
  // sum's words are twice as many; and one of each step of the group that is summed anew.
  int least = 2 * steps - 6; // a group must pay for the room it takes
  const short *best = nullptr;
  size = steps + 1; // none
  for (int first = 0; first < steps; ++first)
    for (int n = 2; n <= std::min(kMaxSize, steps - first); ++n) {
      if (!isPalindrome(tent.step + first, n))
        continue;
      int cost = n + 1;
      gather(
          tent.step + first, n, [&](int) { cost += 2; }, [&](int) { cost += 2; });
      if (cost < least) {
        least = cost;
        best = tent.step + first;
        size = n;
      }
    }
  gather(
      best, size, [&](short step) { start[count++] = step; },
      [&](short step) { single[singleCount++] = step; });
  if (count == 0)
    size = 0;
  for (int i = 0; i < size; ++i)
    shape[i] = static_cast<short>(best[i] - best[0]);
}

} // namespace zol
