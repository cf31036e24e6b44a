// Shutters: openings in the frame that grow until they are all of it.
#pragma once

#include "frame/direction.h"
#include "frame/zol.h"
#include "kernels/compositing/edge_ramps.h"

namespace zol {

enum class ShutterKind { blinds, doors, iris, radial };
inline constexpr int kShutterKinds = 4;
inline constexpr int kShutterBlades = 64;

/// How a shutter looks and where it is. Distances and angles are as they are seen: widths of pixels count as
/// many times their heights as `aspect` says.
struct ShutterLook {
  ShutterKind kind;
  int blades;              ///< 1 to kShutterBlades
  double angle;            ///< degrees from the right, clockwise
  double centerX, centerY; ///< in pixels of the frame
  int width, height;       ///< of the frame
  double aspect;
  double softness, border; ///< of the opening's edge, in heights of a pixel
  bool endsEdges = true;   ///< whether a single wedge's edges end at the centre, however soft they are
};

/// How far a shutter is open, pixel by pixel. The frame's pixels are counted by their corners.
class ShutterMask {
public:
  /// Open by a share: from 0 down wholly shut, from 1 up wholly open. Inverted it is open where it would be
  /// shut if it were as far from open as it is.
  ShutterMask(const ShutterLook &look, double opening, bool inverts = false);

  // Coverages of a row, 256 = open, from the frame's pixel (left, y) on.

  /// Where the shutter is open behind its border.
  void innerRow(int y, int left, int width, uint16_t *coverage) const {
    writeRow(inverts_ ? reach_ : reach_ - border_, y, left, width, coverage);
  }
  /// The same with the border.
  void outerRow(int y, int left, int width, uint16_t *coverage) const {
    writeRow(inverts_ ? reach_ - border_ : reach_, y, left, width, coverage);
  }

  /// Whether all rows are alike.
  [[nodiscard]] bool isUpright() const { return isUpright_; }

private:
  /// A linear function of the place, in columns, rows and what the opening reaches.
  struct Line {
    double across, down, start, perReach;
  };
  struct Piece {
    RampJoin join;
    int first, count; ///< of its lines
  };

  void addStrips(const ShutterLook &look);
  void addIris(const ShutterLook &look);
  void addWedges(const ShutterLook &look);
  void addWedge(double reach, int y, int left, int width, uint16_t *coverage) const;
  void reachTo(double length) { reach_ = opening_ * (length + soft_ + border_); }
  void beginPiece(RampJoin join) { pieces_[pieceCount_++] = {join, lineCount_, 0}; }
  void addLine(const Line &distance, double steepness, double before, double perReach);
  void writeRow(double reach, int y, int left, int width, uint16_t *coverage) const;
  void addPieces(double reach, int y, int left, int width, uint16_t *coverage) const;

  double opening_;
  bool inverts_;
  double soft_, border_, reach_ = 0;
  Line lines_[4 * kShutterBlades];
  Piece pieces_[kShutterBlades];
  int lineCount_ = 0, pieceCount_ = 0;
  bool isRound_ = false, isCapped_ = false; ///< capped: nothing is open before the opening begins
  bool isUpright_ = false, isWedge_ = false;
  double centerX_, centerY_, aspect_;
  Direction rays_[2] = {Direction(0), Direction(0)};
};

// layCovered  lays pixels over others, their alpha times the coverage.
// coverAlpha  multiplies alpha by the coverage.
// borderRow   the coverage of what lies below the inner one, so that both together are the outer one.
ZOL_LEVELS_TO(avx2,
              void layCovered(_color_t *lower, const _color_t *upper, const uint16_t *coverage, int count);
              void coverAlpha(_color_t *pixels, const uint16_t *coverage, int count);
              void borderRow(const uint16_t *inner, const uint16_t *outer, uint16_t *border, int count);)

} // namespace zol
