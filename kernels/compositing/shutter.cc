#include "kernels/compositing/shutter.h"

#include <algorithm>
#include <cmath>

namespace zol {
namespace {

constexpr int kLeastSides = 3, kMostSides = 12; // of an iris, else it is round

double ramp(double value) { return std::clamp(std::floor(256 * value + 0.5), 0.0, 256.0); }

} // namespace

ShutterMask::ShutterMask(const ShutterLook &look, double opening, bool inverts)
    : opening_(inverts ? 1 - opening : opening), inverts_(inverts), soft_(std::max(1.0, look.softness)),
      border_(look.border), centerX_(look.centerX), centerY_(look.centerY), aspect_(look.aspect) {
  if (look.kind == ShutterKind::iris)
    addIris(look);
  else if (look.kind == ShutterKind::radial)
    addWedges(look);
  else
    addStrips(look);
}

/// A side of the piece that was begun last: covered where steepness * (distance + reach) + before is 1 and
/// more.
void ShutterMask::addLine(const Line &distance, double steepness, double before, double perReach) {
  lines_[lineCount_++] = {256 * steepness * distance.across, 256 * steepness * distance.down,
                          256 * (steepness * distance.start + before) + 0.5, 256 * perReach};
  ++pieces_[pieceCount_ - 1].count;
}

// Blinds open from one border of each strip to the other, doors from its middle to both.
void ShutterMask::addStrips(const ShutterLook &look) {
  const Direction along(look.angle);
  const bool areDoors = look.kind == ShutterKind::doors;
  const double middleX = look.width * look.aspect / 2, middleY = look.height / 2.0;
  const double extent = (std::abs(along.right) * middleX + std::abs(along.down) * middleY) * 2;
  Line place = {along.right * look.aspect, along.down, 0, 0};
  place.start = extent / 2 - (along.right * middleX + along.down * middleY);
  const double strip = extent / look.blades, steepness = 1 / soft_;
  double length = areDoors ? strip / 2 : strip, shift = 0;
  if (areDoors && look.blades == 1) { // from the centre, as far as the farther side is
    shift = along.right * (centerX_ * aspect_ - middleX) + along.down * (centerY_ - middleY);
    length += std::abs(shift);
  }
  reachTo(length);
  isCapped_ = !areDoors;
  isUpright_ = along.down == 0;
  for (int k = 0; k < look.blades; ++k) {
    const auto from = [&](double start) {
      Line distance = place;
      distance.start -= start;
      return distance;
    };
    beginPiece(RampJoin::least);
    if (areDoors)
      addLine(from(strip * (k + 0.5) + shift), steepness, 0, steepness);
    addLine(from(areDoors ? strip * (k + 0.5) + shift : strip * k), -steepness, 0, steepness);
    if (k > 0)
      addLine(from(strip * k), 1, 0.5, 0);
    if (k < look.blades - 1)
      addLine(from(strip * (k + 1)), -1, 0.5, 0);
  }
}

void ShutterMask::addIris(const ShutterLook &look) {
  isRound_ = look.blades < kLeastSides || look.blades > kMostSides;
  isCapped_ = true;
  double length = 0;
  const auto reachCorners = [&](auto distance) {
    for (const double x : {0.0, double(look.width)})
      for (const double y : {0.0, double(look.height)})
        length = std::max(length, distance((x - centerX_) * aspect_, y - centerY_));
  };
  if (isRound_) {
    reachCorners([](double x, double y) { return std::sqrt(x * x + y * y); });
    return reachTo(length);
  }
  beginPiece(RampJoin::least);
  for (int k = 0; k < look.blades; ++k) {
    const Direction normal(look.angle + k * 360.0 / look.blades);
    reachCorners([&](double x, double y) { return x * normal.right + y * normal.down; });
    addLine({normal.right * aspect_, normal.down,
             -(centerX_ * aspect_ * normal.right + centerY_ * normal.down), 0},
            -1 / soft_, 0, 1 / soft_);
  }
  reachTo(length);
}

void ShutterMask::addWedges(const ShutterLook &look) {
  const double narrow = std::min({1.0, 4 * opening_, 4 * (1 - opening_)}); // that nothing jumps at the ends
  soft_ = std::max(1.0, look.softness * narrow);
  border_ = look.border * narrow;
  const double step = 360.0 / look.blades, wedge = opening_ * step;
  // Lines that went on beyond the centre would meet at half a turn, and the edges would change sides.
  isWedge_ = look.endsEdges && wedge > 90 && wedge < 270 && look.blades == 1 && (soft_ > 1 || border_ > 0);
  if (isWedge_)
    rays_[0] = Direction(look.angle), rays_[1] = Direction(look.angle + wedge);
  for (int k = 0; k < look.blades; ++k) {
    const double angle = look.angle + k * step;
    const auto inside = [this](const Direction &ray, int side) {
      return Line{-side * ray.down * aspect_, side * ray.right,
                  side * (ray.down * centerX_ * aspect_ - ray.right * centerY_), 0};
    };
    beginPiece(wedge <= 90   ? RampJoin::both
               : wedge < 180 ? RampJoin::least
               : wedge < 270 ? RampJoin::greatest
                             : RampJoin::either);
    addLine(inside(Direction(angle), 1), 1, 0.5, 0);
    addLine(inside(Direction(angle + wedge), -1), 1 / soft_, 0.5, 1 / soft_);
  }
}

void ShutterMask::writeRow(double reach, int y, int left, int width, uint16_t *coverage) const {
  const bool isShut = opening_ <= 0 || (isCapped_ && reach <= 0);
  std::fill_n(coverage, width, opening_ >= 1 ? uint16_t{256} : uint16_t{0});
  if (!isShut && opening_ < 1)
    addPieces(reach, y, left, width, coverage);
  if (inverts_)
    std::transform(coverage, coverage + width, coverage,
                   [](uint16_t open) { return static_cast<uint16_t>(256 - open); });
}

void ShutterMask::addPieces(double reach, int y, int left, int width, uint16_t *coverage) const {
  if (isRound_) {
    const RoundRamp round = {static_cast<float>(256 * reach / soft_ + 0.5), static_cast<float>(256 / soft_),
                             static_cast<float>(aspect_), static_cast<float>((0.5 - centerX_) * aspect_),
                             static_cast<float>(y + 0.5 - centerY_)};
    return addRound(round, left, width, coverage);
  }
  if (isWedge_)
    return addWedge(reach, y, left, width, coverage);
  EdgeRamp ramps[kMostSides];
  for (const Piece *piece = pieces_; piece != pieces_ + pieceCount_; ++piece) {
    for (int i = 0; i < piece->count; ++i) {
      const Line &line = lines_[piece->first + i];
      const double start = line.start + line.perReach * reach + line.down * (y + 0.5);
      ramps[i] = {static_cast<float>(start + line.across * 0.5), static_cast<float>(line.across)};
    }
    const double most = isCapped_ ? ramp(reach / soft_) : 256;
    addShape({piece->join, ramps, piece->count, static_cast<float>(most)}, left, width, coverage);
  }
}

void ShutterMask::addWedge(double reach, int y, int left, int width, uint16_t *coverage) const {
  const double x = (0.5 - centerX_) * aspect_, down = y + 0.5 - centerY_;
  const auto along = [&](double byX, double byY) {
    return EdgeRamp{static_cast<float>(byX * x + byY * down), static_cast<float>(byX * aspect_)};
  };
  const Direction &first = rays_[0], &last = rays_[1];
  ZOL_SELECT(addWedgeRamp)
  ({along(-first.down, first.right), along(first.right, first.down), along(last.down, -last.right),
    along(last.right, last.down), opening_ <= 0.5, static_cast<float>(1 / soft_), static_cast<float>(reach)},
   left, width, coverage);
}

} // namespace zol
