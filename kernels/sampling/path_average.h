// Pictures blurred along paths: straight, towards a centre, or around it.
#pragma once

#include "kernels/sampling/path_rows.h"

namespace zol {

/// The way from a pixel's one end to the other; the pixel itself lies midway.
struct Path {
  enum class Kind { direction, zoom, spin };

  Kind kind;
  double length;           ///< direction: in pixels across
  double right, down;      ///< direction: pixels to either side on a pixel of the length
  double scale;            ///< zoom: of the one end over the other; at least 1
  double turn;             ///< spin: in radians, clockwise on the screen
  double aspect;           ///< width of a pixel over its height
  double centreX, centreY; ///< in pixels from the picture's upper left corner

  /// In pixels, of the corner that goes farthest of a picture of that size.
  [[nodiscard]] double longest(int width, int height) const;
};

/// The average along a path, made in three passes of `count` samples each: every pass takes samples of what
/// the one before gave, farther and farther apart, so that the last one's are count^3 of the first picture.
class PathAverage {
public:
  static constexpr int kPasses = 3;

  PathAverage(const Path &path, int width, int height);

  /// Row y of what the pass gives, of the picture's width.
  void makeRow(int pass, const PathPicture &picture, int y, WidePixel *out) const;

private:
  struct Tap {
    int dx, dy, weight;
  };
  /// What all pixels have in common where they are only shifted; equal places together, and none in vain.
  struct Pass {
    PathPlaces places;
    Tap taps[4 * kMostPathPlaces];
    int tapCount = 0;

    void addTap(int dx, int dy, int weight);
    void addTaps(const PathPlace &place);
  };

  Pass passes_[kPasses];
};

/// Writes a row of the picture that the first pass reads.
void startPathRow(const _color_t *pixels, WidePixel *row, int width);

/// Writes a finished row as bytes, and spoils it. Where alpha is 0 the colours are those of `hidden`.
void finishPathRow(WidePixel *row, const _color_t *hidden, _color_t *out, int width);

} // namespace zol
