// The weights of the blur, and how they fall from place to place: what a running sum needs to know.
#pragma once

namespace zol {

/// Integer weights (256 = 1.0) that sink from 256 in the centre to 0 at distance `radius`, over at most
/// kMaxReach neighbours on each side.
///
/// Between one place and the next a weighted sum grows by fall(d) times (the value d + 1 ahead - the value
/// d behind), over all distances d. The falls of a straight line rounded to integers take two neighbouring
/// values, so that they are a ramp of one constant fall, a few steps that fall by one more (or one less),
/// and the edge where the rest is cut off.
struct Tent {
  static constexpr int kMaxReach = 100;
  /// Steps are at most half as many as the ramp is long, give or take what rounding does to radii next to
  /// an exact one. So many differences of bytes still fit 16 bits.
  static constexpr int kMaxSteps = 128;

  /// Any radius has a meaning: NaN and whatever gives no neighbour a weight stand for a copy.
  explicit Tent(double radius);

  [[nodiscard]] bool isCopy() const { return reach == 0; }

  [[nodiscard]] int fall(int distance) const { return weight[distance] - weight[distance + 1]; }

  /// The weights that are inside at place `at` of `count` places; at most 201 x 256.
  [[nodiscard]] int sumAt(int at, int count) const {
    const int ahead = count - 1 - at;
    return 256 + sumTo[at < reach ? at : reach] + sumTo[ahead < reach ? ahead : reach];
  }

  int reach = 0;                  ///< distance of the last weight that is not 0
  int weight[kMaxReach + 2] = {}; ///< by distance; 0 beyond the reach
  int sumTo[kMaxReach + 1] = {};  ///< weight[1] + ... + weight[distance]

  int slope = 0;    ///< the fall at distances 0 to ramp - 1, steps aside
  int ramp = 0;     ///< reach, or reach + 1 where the last fall is as steep as the others
  int stepFall = 1; ///< 1 or -1: what a step adds to the fall at its distance
  int stepCount = 0;
  short step[kMaxSteps] = {}; ///< distances of the steps, ascending
  int edgeFall = 0;           ///< the fall at distance `reach` where the ramp does not include it, or 0
};

/// The steps of a tent, gathered into groups of one shape and what is left over. The gaps between the steps
/// of a rounded straight line are balanced, so that they recur; and they read the same backwards, so that a
/// group's sum serves ahead of a line and, later, behind it.
struct StepGroups {
  /// Gathers none where single steps are cheaper.
  explicit StepGroups(const Tent &tent);

  /// Of the sums that are to be kept, line by line: from the furthest group behind to the furthest ahead.
  [[nodiscard]] int keptLines() const { return count == 0 ? 0 : 2 * start[count - 1] + shape[size - 1] + 2; }

  int count = 0;                     ///< of groups
  short start[Tent::kMaxSteps] = {}; ///< the distance of each group's first step, ascending
  int size = 0;                      ///< steps in a group
  short shape[Tent::kMaxSteps] = {}; ///< a group's steps as distances from its first
  int singleCount = 0;
  short single[Tent::kMaxSteps] = {}; ///< the distances of all other steps, ascending
};

} // namespace zol
