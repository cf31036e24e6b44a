#include "kernels/noise/octaves.h"

#include "kernels/noise/hash.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zol {
namespace {

constexpr int kOne = 4096;

/// Towards the edges of a cube, four of them twice.
struct Direction {
  int8_t right, down, ahead;
};
constexpr Direction kDirections[16] = {
    {1, 1, 0}, {-1, 1, 0}, {1, -1, 0}, {-1, -1, 0}, {1, 0, 1}, {-1, 0, 1}, {1, 0, -1}, {-1, 0, -1},
    {0, 1, 1}, {0, -1, 1}, {0, 1, -1}, {0, -1, -1}, {1, 1, 0}, {0, -1, 1}, {-1, 1, 0}, {0, -1, -1},
};

int mixed(int a, int b, int share) { return a + ((b - a) * share >> 12); }

int floorOf(double value) {
  return std::isnan(value) ? 0 : static_cast<int>(std::floor(std::clamp(value, -0x1p30, 0x1p30)));
}

/// Where the lattice begins: somewhere else for every octave.
int originOf(uint32_t seed, int octave, uint32_t side) {
  return static_cast<int>(hash(seed, static_cast<uint32_t>(octave), side, 0) & 0xFFFFF);
}

/// The middle of a row or column on its lattice, 4096 = a cell.
int placeOn(int origin, int at, int size, double cell, double moved) {
  return floorOf(((at + 0.5 - size / 2.0) / cell - moved / cell) * kOne) + origin;
}

/// Elements of a row and of a lattice's row: cells are wider than two pixels.
size_t rowWords(int width) { return static_cast<size_t>(width) + kNoisePadding; }
size_t latticeWords(int width) { return static_cast<size_t>(width) / 2 + 4; }

} // namespace

NoiseOctaves::NoiseOctaves(const OctaveSettings &settings, int width, int height)
    : settings_(settings), width_(width), height_(height),
      words_(kMostOctaves * (3 * rowWords(width) + 8 * latticeWords(width))),
      cells_(kMostOctaves * latticeWords(width)) {
  if (!*this)
    return;
  int weights[kMostOctaves], sum = 0;
  for (int k = 0; k < settings.octaves; ++k) {
    weights[k] = k == 0 ? kOne : weights[k - 1] * settings.roughness >> 12;
    sum += weights[k];
  }
  for (int k = 0; k < settings.octaves; ++k) {
    const double cellWidth = std::ldexp(settings.cellWidth, -k),
                 cellHeight = std::ldexp(settings.cellHeight, -k);
    const double visible = std::clamp((cellWidth - 2) / 2, 0.0, 1.0);
    const int share = weights[k] * kOne / sum;
    if (const int weight = static_cast<int>(share * visible); weight > 0)
      makeOctave(k, cellWidth, cellHeight, weight);
  }
}

void NoiseOctaves::makeOctave(int number, double cellWidth, double cellHeight, int weight) {
  const size_t row = rowWords(width_), lattice = latticeWords(width_);
  int16_t *words = words_.data() + static_cast<size_t>(count_) * (3 * row + 8 * lattice);
  int32_t *cells = cells_.data() + static_cast<size_t>(count_) * lattice;
  const auto take = [&words](size_t count) { return std::exchange(words, words + count); };
  int16_t *const shares = take(row), *const fades = take(row);
  Octave &octave = octaves_[count_];
  weights_[count_++] = static_cast<int16_t>(weight);
  octave.noise = take(row);
  for (Lattice *points : {&octave.above, &octave.below})
    *points = {take(lattice), take(lattice), take(lattice), take(lattice)};

  octave.number = number;
  octave.cellHeight = cellHeight;
  octave.rowOrigin = originOf(settings_.seed, number, 2);
  const int times = number + 1;
  const int ahead = floorOf(settings_.evolution * times * kOne);
  octave.ahead = ahead & (kOne - 1);
  for (int i = 0; i < 2; ++i) {
    const int slice = (ahead >> 12) + i;
    octave.slices[i] = static_cast<uint32_t>(settings_.cycle > 0 ? slice % (settings_.cycle * times) : slice);
  }

  const int origin = originOf(settings_.seed, number, 1);
  int count = 0;
  for (int x = 0; x < width_; ++x) {
    const int place = placeOn(origin, x, width_, cellWidth, settings_.right), share = place & (kOne - 1);
    shares[x] = static_cast<int16_t>(4 * share);
    fades[x] = static_cast<int16_t>(8 * noiseFade(share));
    if (x == 0)
      octave.firstCell = place >> 12;
    while (count <= (place >> 12) - octave.firstCell)
      cells[count++] = x;
  }
  std::fill_n(shares + width_, kNoisePadding, int16_t{0});
  std::fill_n(fades + width_, kNoisePadding, int16_t{0});
  cells[count] = width_;
  octave.columns = {shares, fades, cells, count};
}

void NoiseOctaves::makePoints(const Octave &octave, int latticeRow, const Lattice &points) const {
  uint32_t rows[2];
  for (int i = 0; i < 2; ++i)
    rows[i] = hashRow(settings_.seed, 16 * octave.slices[i] + static_cast<uint32_t>(octave.number),
                      static_cast<uint32_t>(latticeRow));
  const int fade = noiseFade(octave.ahead);
  for (int i = 0; i <= octave.columns.cellCount; ++i) {
    const auto column = static_cast<uint32_t>(octave.firstCell + i);
    const Direction &here = kDirections[mixBits(rows[0] + column) >> 28],
                    &next = kDirections[mixBits(rows[1] + column) >> 28];
    points.slopes[i] = static_cast<int16_t>(4 * mixed(here.right * kOne, next.right * kOne, fade));
    points.downSlopes[i] = static_cast<int16_t>(mixed(here.down * kOne, next.down * kOne, fade));
    points.ahead[i] =
        static_cast<int16_t>(mixed(here.ahead * octave.ahead, next.ahead * (octave.ahead - kOne), fade));
  }
}

void NoiseOctaves::row(int y, int bias, int gain, int32_t *out) {
  const int16_t *rows[kMostOctaves + 1] = {};
  for (int k = 0; k < count_; ++k) {
    Octave &octave = octaves_[k];
    const int place = placeOn(octave.rowOrigin, y, height_, octave.cellHeight, settings_.down);
    const int latticeRow = place >> 12, share = place & (kOne - 1);
    if (!octave.hasRows || latticeRow != octave.latticeRow) {
      if (octave.hasRows && latticeRow == octave.latticeRow + 1)
        std::swap(octave.above, octave.below);
      else
        makePoints(octave, latticeRow, octave.above);
      makePoints(octave, latticeRow + 1, octave.below);
      octave.latticeRow = latticeRow;
      octave.hasRows = true;
    }
    for (int i = 0; i <= octave.columns.cellCount; ++i) {
      const auto value = [i](const Lattice &points, int down) {
        points.values[i] = static_cast<int16_t>((points.downSlopes[i] * down >> 12) + points.ahead[i]);
      };
      value(octave.above, share);
      value(octave.below, share - kOne);
    }
    ZOL_SELECT(noiseRow)
    (octave.columns, {octave.above.slopes, octave.above.values}, {octave.below.slopes, octave.below.values},
     noiseFade(share), settings_.kind, octave.noise);
    rows[k] = octave.noise;
  }
  // Every octave has a partner, the last one of an odd number one that weighs nothing.
  if (count_ % 2 != 0)
    rows[count_] = rows[0];
  ZOL_SELECT(blendRows)(rows, weights_, count_ + count_ % 2, bias, gain, out, width_);
}

} // namespace zol
