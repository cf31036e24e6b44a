// Noise of several octaves, each with cells half as large as those of the one before: rows of it from the top
// on. It moves, changes and repeats without a state of its own.
#pragma once

#include "kernels/noise/noise_rows.h"
#include "kernels/simd/scratch.h"

#include <cstdint>

namespace zol {

inline constexpr int kMostOctaves = 10;

struct OctaveSettings {
  uint32_t seed = 0;
  int octaves = 1;                      ///< 1..kMostOctaves
  int roughness = 2048;                 ///< the weight of each beside the one before, 4096 = 1.0
  double cellWidth = 1, cellHeight = 1; ///< of the first octave, in pixels
  double right = 0, down = 0;           ///< how far all of it is moved, in pixels
  double evolution = 0;                 ///< 0..100; the first octave is renewed at every whole number
  int cycle = 0;                        ///< after how many renewals it repeats; 0: never
  NoiseKind kind = NoiseKind::plain;
};

/// Octaves with cells of four pixels and less fade out, down to two pixels.
class NoiseOctaves {
public:
  NoiseOctaves(const OctaveSettings &settings, int width, int height);

  /// False when memory ran out.
  explicit operator bool() const { return static_cast<bool>(words_) && static_cast<bool>(cells_); }

  /// blendRows of all octaves for row y.
  void row(int y, int bias, int gain, int32_t *out);

private:
  /// The points of a lattice's row: their slopes by columns, times 4, and by rows, and what they give where
  /// they stand and, by slopes, in the row of pixels at hand.
  struct Lattice {
    int16_t *slopes, *downSlopes, *ahead, *values;
  };
  struct Octave {
    int number; ///< 0 for the largest
    double cellHeight;
    int rowOrigin;      ///< of the lattice, 4096 = a cell
    uint32_t slices[2]; ///< of the noise's third dimension
    int ahead;          ///< the way from one slice to the next, 4096 = 1.0
    int firstCell = 0;
    int latticeRow = 0;
    bool hasRows = false;
    NoiseColumns columns;
    Lattice above, below;
    int16_t *noise;
  };

  void makeOctave(int number, double cellWidth, double cellHeight, int weight);
  void makePoints(const Octave &octave, int latticeRow, const Lattice &points) const;

  OctaveSettings settings_;
  int width_, height_;
  int count_ = 0;
  Octave octaves_[kMostOctaves];
  int16_t weights_[kMostOctaves] = {};
  Scratch<int16_t> words_;
  Scratch<int32_t> cells_;
};

} // namespace zol
