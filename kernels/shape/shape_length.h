// Lengths along chains of segments, measured by chords.
#pragma once

namespace zol {

// A segment is 8 floats: P0.y, P1.y, P0.x, P1.x, 3 H0.x, 3 H1.x, 3 H0.y, 3 H1.y, in pixels. The record's
// tangents count three times: the measured curve bulges further than the drawn one.

/// Length in pixels between two parameters.
double segmentLength(const float *segment, double t0, double t1);

/// A segment of a chain and the share of its length.
struct ChainPlace {
  int segment;
  double share;
};

/// Where along the chain the distance is reached; beyond its end the whole of the last segment.
ChainPlace placeAlong(const float *segments, int count, double distance);

} // namespace zol
