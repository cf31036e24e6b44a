// What a shutter lets in while it is open: which frames at which weights, and moments between frames.
#pragma once

#include "frame/picture.h"
#include "kernels/color/wide.h"
#include "kernels/motion/pair_motion.h"
#include "kernels/simd/scratch.h"

#include <cstdint>

namespace zol {

/// The most moments of a shutter.
inline constexpr int kMostExposures = 32;

// ---- Pictures as they are ----

/// Different pictures and their weights, 256 in all.
struct Exposures {
  static constexpr int kMost = 64;

  const pic *pictures[kMost];
  uint16_t weights[kMost];
  int count = 0;

  /// Of one picture for each moment: like ones are one, of the weight of all of them.
  static Exposures of(const pic *const *pictures, int count);
};

// ---- Moments between frames ----

/// Between two frames, or at one, the other then being null.
struct Moment {
  const pic *before, *after;
  unsigned weight; ///< of the one after, 32768 = 1.0

  [[nodiscard]] bool isOfPair(const Moment &other) const {
    return before == other.before && after == other.after;
  }
};

/// Frames one after the other; null where one cannot be had.
struct FrameRun {
  static constexpr int kMost = 20;

  const pic *frames[kMost];
  int count = 0;

  /// Whether all that there are lie alike.
  [[nodiscard]] bool isEven() const;
  /// The moment at a position, counted in frames from the first: between the frames around it, or at the only
  /// one where there are none on one side. Both are null where there are none at all.
  [[nodiscard]] Moment at(double position) const;

private:
  [[nodiscard]] int nearest(int from, int step) const;
};

/// The average of moments, of frames of one size. Tests as false when memory ran out.
class MomentAverage {
public:
  MomentAverage(int width, int height);
  explicit operator bool() const { return motion_ && before_ && after_ && made_ && sums_; }

  /// Adds all of them, whose frames are not written to. Asks goesOn() after each row, and gives up with false
  /// as soon as it answers false.
  template <class GoesOn> bool add(const Moment *moments, int count, GoesOn goesOn) {
    for (int i = 0; i < count; ++i) {
      const Moment &moment = moments[i];
      if ((i == 0 || !moment.isOfPair(moments[i - 1])) && !search(moment, goesOn))
        return false;
      make(moment);
      for (int y = 0; y < height_; ++y) {
        addRow(moment, y, i, count);
        if (!goesOn())
          return false;
      }
    }
    return true;
  }

  /// Writes row y. Where its alpha is 0 the colours are those of `hidden`.
  void writeRow(int y, const _color_t *hidden, _color_t *out) const;

private:
  static constexpr unsigned kBlock = 16;

  template <class GoesOn> bool search(const Moment &moment, GoesOn goesOn) {
    for (int y = 0; y < height_; ++y) {
      loadRow(moment, y);
      if (!goesOn())
        return false;
    }
    if (moment.after == nullptr)
      return true;
    motion_.begin(pair());
    for (unsigned row = 0; row < motion_.blockRows(); ++row) {
      motion_.searchRow(row);
      if (!goesOn())
        return false;
    }
    return true;
  }

  [[nodiscard]] ptrdiff_t place(int y) const { return ptrdiff_t{y} * width_; }
  [[nodiscard]] slomo::FieldPair pair() const;
  void loadRow(const Moment &moment, int y);
  void make(const Moment &moment);
  void addRow(const Moment &moment, int y, int i, int count);

  int width_, height_;
  slomo::PairMotion motion_;
  Scratch<_color_t> before_, after_, made_; ///< colours times alpha
  Scratch<WidePixel> sums_;                 ///< of bytes times weights, 256 in all
};

} // namespace zol
