#include "kernels/particles/particle_layer.h"

#include "kernels/shape/stroke.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <numbers>

namespace zol {
namespace {

constexpr double kSteps = 256; // of a pixel

/// Beyond four million pixels places do not move on.
int inSteps(double pixels) {
  return static_cast<int>(std::floor(kSteps * std::clamp(pixels, -4e6, 4e6) + 0.5));
}

uint16_t factorOf(double share) { return static_cast<uint16_t>(kInkOne * share + 0.5); }

/// 2^24 = 1.0, within what samples can be taken by.
int64_t matrixEntry(double value) {
  return static_cast<int64_t>(std::floor(std::clamp(value, -31.0, 31.0) * 0x1p24 + 0.5));
}

} // namespace

ParticleLayer::ParticleLayer(const ParticleLook &look, int width, int height)
    : look_(look), width_(std::max(width, 0)), height_(std::max(height, 0)),
      stride_(ptrdiff_t{width_} + kLayerPadding) {}

double ParticleLayer::reachOf(const Particle &particle, double size) const {
  switch (look_.shape) {
  case ParticleShape::squares: return size / std::numbers::sqrt2;
  case ParticleShape::streaks:
    return size / 2 + std::sqrt(particle.right * particle.right + particle.down * particle.down);
  case ParticleShape::pictures: { // fading out beyond its border, over a pixel of its own or of the frame
    const SpriteSize &whole = look_.picture->whole();
    return std::numbers::sqrt2 * (size / 2 + std::max(1.0, size / std::max(whole.width, whole.height)));
  }
  default: return size / 2;
  }
}

void ParticleLayer::add(const Particle &particle) {
  // A dot of less than two pixels would be brighter on a pixel's middle than between pixels.
  const double least = look_.shape == ParticleShape::dots ? 2 : 1;
  double size = particle.size, opacity = particle.opacity;
  if (size < least) {
    const double length = look_.shape == ParticleShape::streaks ? reachOf(particle, 0) : 0;
    opacity *= size * (size + length) / (least * (least + length));
    size = least;
  }
  const double reach = reachOf(particle, size) + 1 / kSteps, down = reach * look_.aspect;
  const bool isSeen = particle.x + reach > 0 && particle.x - reach < width_ && particle.y + down > 0 &&
                      particle.y - down < height_ && factorOf(opacity) > 0;
  if (!isSeen)
    return;
  const auto factor = [=](double color) { return factorOf(opacity * color / 255); };
  const Sprite sprite{
      inSteps(particle.x),
      inSteps(particle.y),
      static_cast<float>(size),
      static_cast<float>(reach),
      static_cast<float>(particle.right),
      static_cast<float>(particle.down),
      {factor(particle.color[0]), factor(particle.color[1]), factor(particle.color[2]), factorOf(opacity)}};
  widest_ = std::max(widest_, reach);
  failed_ = failed_ || !sprites_.add(sprite);
}

bool ParticleLayer::prepare() {
  const auto pixels = static_cast<size_t>(stride_) * kBandRows;
  layer_.emplace(pixels);
  values_.emplace(static_cast<size_t>(stride_)); // of a row; or squares of distances
  failed_ = failed_ || !*layer_ || !*values_;
  if (look_.shape != ParticleShape::dots && look_.shape != ParticleShape::pictures) {
    tile_ = static_cast<int>(std::min<double>(width_, 2 * widest_ + 3));
    coverage_.emplace(tile_, kBandRows, look_.aspect);
    failed_ = failed_ || !*coverage_;
  }
  if (!failed_)
    std::memset(static_cast<void *>(layer_->data()), 0, pixels * sizeof(WidePixel));
  return !failed_;
}

/// Counted from the band's corner; empty where it does not lie in the band.
Area ParticleLayer::areaIn(const Sprite &sprite, int top) const {
  const double x = sprite.x / kSteps, y = sprite.y / kSteps - top;
  const double reach = sprite.reach, down = reach * look_.aspect;
  const auto from = [](double place) { return static_cast<int>(std::max(place, 0.0)); };
  const auto to = [](double place, int most) {
    return static_cast<int>(std::clamp<double>(place + 1, 0, most));
  };
  if (y + down <= 0 || y - down >= kBandRows)
    return {};
  return {from(x - reach), from(y - down), to(x + reach, width_), to(y + down, kBandRows)};
}

void ParticleLayer::draw(const Sprite &sprite, int top, const Area &area) {
  left_ = right_ == 0 ? area.left : std::min(left_, area.left);
  right_ = std::max(right_, area.right);
  switch (look_.shape) {
  case ParticleShape::dots: return drawDot(sprite, top, area);
  case ParticleShape::pictures: return drawPicture(sprite, top, area);
  default: return drawPolygons(sprite, top, area);
  }
}

void ParticleLayer::drawDot(const Sprite &sprite, int top, const Area &area) {
  const double x = sprite.x / kSteps, y = sprite.y / kSteps - top;
  const double stepX = 2 * kDotRadius / static_cast<double>(sprite.size), stepY = stepX / look_.aspect;
  const Dot dot{layerRow(area.top) + area.left,
                stride_,
                area.width(),
                area.height(),
                static_cast<float>((area.left + 0.5 - x) * stepX),
                static_cast<float>((area.top + 0.5 - y) * stepY),
                static_cast<float>(stepX),
                static_cast<float>(stepY)};
  ZOL_SELECT(layDot)(dot, {sprite.ink, look_.adds}, &values_->data()->b);
}

void ParticleLayer::drawPicture(const Sprite &sprite, int top, const Area &area) {
  // The way from pixel to pixel, first in the picture's own size.
  const SpriteSize &whole = look_.picture->whole();
  const double size = sprite.size, longest = std::max(whole.width, whole.height / look_.aspect);
  const SpriteSize &taken = look_.picture->atLeast(size * whole.width / longest);
  const double scale = longest / size * (taken.width / whole.width);
  const double right = scale * sprite.right, down = scale * sprite.down;
  // Sixteenths from the first pixel of a row to the middle, and the middle's own place within the border.
  const int centreX = (sprite.x - area.left * 256 - 128 + 8) >> 4;
  const int centreY = (sprite.y - top * 256 - 128 + 8) >> 4;
  const auto shift = [](double middle, int centre) {
    return static_cast<int>(std::floor(16 * (middle + 0.5) + 0.5)) - centre;
  };
  const PathPlaces places{
      1,
      {{matrixEntry(right), matrixEntry(down / look_.aspect), matrixEntry(-down * look_.aspect),
        matrixEntry(right), shift(taken.width / 2, centreX), shift(taken.height / 2, centreY)}},
      centreX,
      centreY};
  const int count = (area.width() + kLayerPadding - 1) / kLayerPadding * kLayerPadding; // of whole vectors
  for (int row = area.top; row < area.bottom; ++row) {
    ZOL_SELECT(averagePlaces)(taken.picture, places, row, 0, count, values_->data());
    ZOL_SELECT(layValues)(layerRow(row) + area.left, values_->data(), count, {sprite.ink, look_.adds});
  }
}

void ParticleLayer::drawPolygons(const Sprite &sprite, int top, const Area &area) {
  const double aspect = look_.aspect, half = sprite.size * aspect / 2; // as if pixels were square
  const double x = (sprite.x / kSteps - area.left) * aspect, y = sprite.y / kSteps - top;
  if (look_.shape == ParticleShape::discs) {
    drawDisc({x, y, half}, *coverage_);
  } else if (look_.shape == ParticleShape::streaks) {
    StrokePoint way[] = {{x - sprite.right * aspect, y - sprite.down * aspect, half}, {x, y, half}};
    stroke(way, std::size(way), false, Join::round, Cap::round, *coverage_);
  } else {
    const double right = half * sprite.right, down = half * sprite.down;
    coverage_->lineTo(x - right + down, y - down - right);
    coverage_->lineTo(x + right + down, y + down - right);
    coverage_->lineTo(x + right - down, y + down + right);
    coverage_->lineTo(x - right - down, y - down + right);
    coverage_->close();
  }
  coverage_->merge();
  failed_ = failed_ || !*coverage_;
  if (failed_)
    return;
  const int drawn = std::min(tile_, static_cast<int>(2 * sprite.reach) + 3); // beyond the frame, too
  for (int row = area.top; row < area.bottom; ++row) {
    uint8_t *mask = coverage_->row(row);
    ZOL_SELECT(layMask)(layerRow(row) + area.left, mask, area.width(), {sprite.ink, look_.adds});
    std::memset(mask, 0, static_cast<size_t>(drawn));
  }
}

void ParticleLayer::finish(int row, _color_t *pixels) {
  if (left_ < right_)
    ZOL_SELECT(layOver)(pixels + left_, layerRow(row) + left_, right_ - left_);
}

} // namespace zol
