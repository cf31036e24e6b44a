// Sound at other speeds and rates: samples between samples by a windowed sinc.
#pragma once

#include "kernels/simd/scratch.h"
#include "kernels/sound/samples.h"

#include <cstddef>

namespace zol {

/// Reads a sound in steps of any size, backwards too. Of steps wider than the source's own, frequencies that
/// they cannot carry are cut off.
///
/// The window is Kaiser's of beta 9 over 32 zero crossings to each side, its values 1024 a crossing on a grid
/// of 2^-32 with straight lines between them; sums are made in double, sample after sample. Tests as false
/// when memory ran out.
class SoundReader {
public:
  static constexpr int kCrossings = 32, kPhases = 1024;

  explicit SoundReader(unsigned sourceChannels);
  explicit operator bool() const { return table_ && sums_; }

  /// Source frames to each side of a place that have to do with it.
  static double reach(double step);

  /// Writes `frames` frames of `channels` interleaved samples, the first at place `first` of the source, each
  /// of the next `step` of its frames farther on. Its channels are as many as the constructor was told. One
  /// channel feeds all; others that are missing, and everything outside of the source, are silent.
  void read(const AudioSource &source, double first, double step, size_t frames, unsigned channels,
            float *out) const;

private:
  Scratch<double> table_, sums_;
};

/// Copies from frame `first` of the source on, which may lie before its beginning; channels as above.
void copyFrames(const AudioSource &source, ptrdiff_t first, size_t frames, unsigned channels, float *out);

/// Scales frames by a gain that goes straight from one value, at the first of them, to another behind the
/// last. A gain of 1 changes nothing.
void scaleFrames(float *samples, size_t frames, unsigned channels, double from, double to);

} // namespace zol
