#include "kernels/sampling/path_average.h"

#include "kernels/sampling/sample.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zol {
namespace {

/// The least number of samples a pass, so that those of all passes lie a pixel apart at most.
int samplesFor(double length) {
  int count = 2;
  while (count < kMostPathPlaces && count * count * count < length)
    ++count;
  return count;
}

int rounded(double value) { return static_cast<int>(std::floor(value + 0.5)); }

/// 2^24 = 1.0; far beyond what a picture shows it is cut.
int64_t matrixEntry(double value) {
  return static_cast<int64_t>(std::floor(std::clamp(value, -31.0, 31.0) * 0x1p24 + 0.5));
}

/// Where a pixel is at s, -1/2 to 1/2.
PathPlace placeAt(const Path &path, double s) {
  constexpr int64_t kOne = 1 << 24;
  switch (path.kind) {
  case Path::Kind::zoom: {
    const int64_t scale = matrixEntry(std::pow(path.scale, s));
    return {scale, 0, 0, scale, 0, 0};
  }
  case Path::Kind::spin: {
    const double cosine = std::cos(path.turn * s), sine = std::sin(path.turn * s);
    const int64_t stay = matrixEntry(cosine);
    return {stay, matrixEntry(-sine / path.aspect), matrixEntry(sine * path.aspect), stay, 0, 0};
  }
  default:
    return {kOne,
            0,
            0,
            kOne,
            rounded(16 * path.length * path.right * s),
            rounded(16 * path.length * path.down * s)};
  }
}

void turnTopBits(WidePixel *row, int width) {
  uint16_t *lanes = &row->b;
  for (ptrdiff_t i = 0; i < ptrdiff_t{4} * width; ++i)
    lanes[i] ^= 0x8000;
}

} // namespace

double Path::longest(int width, int height) const {
  const double x = std::max(centreX, width - centreX), y = std::max(centreY, height - centreY);
  const double radius = std::sqrt(x * x + y * y);
  switch (kind) {
  case Kind::zoom: return radius * (std::sqrt(scale) - 1 / std::sqrt(scale));
  case Kind::spin: return radius * std::abs(turn);
  default: return length;
  }
}

PathAverage::PathAverage(const Path &path, int width, int height) {
  const int count = samplesFor(path.longest(width, height));
  double apart = 1.0 / (count * count * count);
  for (Pass &pass : passes_) {
    pass.places.count = count;
    pass.places.centreX = rounded(16 * path.centreX - 8); // of a pixel's middle
    pass.places.centreY = rounded(16 * path.centreY - 8);
    for (int i = 0; i < count; ++i) {
      pass.places.places[i] = placeAt(path, (i - (count - 1) / 2.0) * apart);
      if (path.kind == Path::Kind::direction)
        pass.addTaps(pass.places.places[i]);
    }
    apart *= count;
  }
}

void PathAverage::Pass::addTaps(const PathPlace &place) {
  const Sixteenths x(place.shiftX), y(place.shiftY);
  const SampleWeights weights(x.part, y.part);
  addTap(x.whole, y.whole, weights.topLeft);
  addTap(x.whole + 1, y.whole, weights.topRight);
  addTap(x.whole, y.whole + 1, weights.bottomLeft);
  addTap(x.whole + 1, y.whole + 1, weights.bottomRight);
}

void PathAverage::Pass::addTap(int dx, int dy, int weight) {
  if (weight == 0)
    return;
  Tap *end = taps + tapCount;
  Tap *same = std::find_if(taps, end, [=](const Tap &tap) { return tap.dx == dx && tap.dy == dy; });
  if (same == end)
    taps[tapCount++] = {dx, dy, weight};
  else
    same->weight += weight;
}

void PathAverage::makeRow(int pass, const PathPicture &picture, int y, WidePixel *out) const {
  const Pass &made = passes_[pass];
  const auto places = ZOL_SELECT(averagePlaces);
  // Taps reach from `left` to `right` without leaving the picture.
  int left = 0, right = made.tapCount != 0 ? picture.width : 0;
  for (int i = 0; i < made.tapCount; ++i) {
    left = std::max(left, -made.taps[i].dx);
    right = std::min(right, picture.width - made.taps[i].dx);
  }
  if (left >= right)
    return places(picture, made.places, y, 0, picture.width, out);
  PathTaps taps[2 * kMostPathPlaces] = {};
  for (int i = 0; i < made.tapCount; ++i) {
    const auto [dx, dy, weight] = made.taps[i];
    const ptrdiff_t row = std::clamp(y + dy, 0, picture.height - 1);
    const WidePixel *from = picture.pixels + row * picture.step() + dx + left;
    PathTaps &pair = taps[i / 2];
    (i % 2 == 0 ? pair.first : pair.second) = from;
    pair.weights |= static_cast<uint32_t>(weight) << i % 2 * 16;
  }
  const int pairs = (made.tapCount + 1) / 2;
  if (made.tapCount % 2 != 0)
    taps[pairs - 1].second = taps[pairs - 1].first;
  places(picture, made.places, y, 0, left, out);
  ZOL_SELECT(averageTaps)(taps, pairs, made.places.count, out + left, right - left);
  places(picture, made.places, y, right, picture.width, out + right);
}

void startPathRow(const _color_t *pixels, WidePixel *row, int width) {
  ZOL_SELECT(toWide)(pixels, row, width);
  turnTopBits(row, width);
}

void finishPathRow(WidePixel *row, const _color_t *hidden, _color_t *out, int width) {
  turnTopBits(row, width);
  ZOL_SELECT(toBytes)(row, Rounding::nearest(), hidden, out, width);
}

} // namespace zol
