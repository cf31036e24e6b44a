// Lightning: jagged lines that fork by chance and move without a jump.
#pragma once

#include "kernels/shape/outline.h"
#include "kernels/shape/stroke.h"

#include <cstdint>

namespace zol {

inline constexpr int kMostBoltDetail = 9;

struct BoltLook {
  uint32_t chance = 0;  ///< of this strike: another number gives another bolt
  double amplitude = 0; ///< of the largest kinks, in lengths of the bolt
  int detail = 0;       ///< 1 to kMostBoltDetail: halvings, each of which adds kinks half as large
  double branches = 0;  ///< 0 to 1: a quarter of this share of places forks
  double half = 0;      ///< of the width where it begins, in pixels
  double reach = 1;     ///< what of its length is drawn
  double evolution =
      0; ///< from one whole number to the next the largest kinks become others, finer ones sooner
};

/// Draws a bolt along a straight line.
void drawBolt(const PlanePoint &from, const PlanePoint &to, const BoltLook &look, Coverage &coverage);
/// Draws a bolt along a contour.
void drawBolt(const Outline &outline, const Contour &contour, const BoltLook &look, Coverage &coverage);

} // namespace zol
