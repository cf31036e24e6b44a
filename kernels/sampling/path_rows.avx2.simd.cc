#include "kernels/sampling/path_rows.h"

#include "kernels/sampling/sample.h"
#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kStrip = 64; // pixels that are looked at together

/// The weights of every position between four pixels, as factors of upper and lower neighbours in turn.
struct WeightTable {
  struct Entry {
    int16_t left[8], right[8];
  };
  alignas(64) Entry entries[256];

  constexpr WeightTable() : entries() {
    for (int at = 0; at < 256; ++at) {
      const SampleWeights weights(at & 15, at >> 4);
      for (int i = 0; i < 8; ++i) {
        entries[at].left[i] = i % 2 == 0 ? weights.topLeft : weights.bottomLeft;
        entries[at].right[i] = i % 2 == 0 ? weights.topRight : weights.bottomRight;
      }
    }
  }
};
constexpr WeightTable kWeights;

/// Where the pixels of a strip are taken from: the upper left of four neighbours, and their weights.
struct Positions {
  int32_t pixels[kStrip], weights[kStrip];
};

/// One coordinate of where consecutive pixels are taken from, in sixteenths within the picture.
class Walk {
public:
  /// The first pixel's coordinate, in sixteenths times 2^24, and the way from one pixel to the next.
  Walk(int64_t first, int64_t step, int size) : most_(splat<I32xN>(16 * (size - 1))) {
    for (int i = 0; i < kLanes<I64xN>; ++i) { // evens() of both gives the pixels in their order
      const int pixel = i / 2 * 4 + i % 2;
      low_[i] = first + pixel * step;
      high_[i] = first + (pixel + 2) * step;
    }
    step_ = splat<I64xN>(kLanes<I32xN> * step);
  }

  I32xN next() {
    const auto whole = [](I64xN v) { return as<I32xN>(as<U64xN>(v) >> 24); };
    const I32xN at = evens(whole(low_), whole(high_));
    low_ += step_;
    high_ += step_;
    return max(min(at, most_), I32xN{});
  }

private:
  I32xN most_;
  I64xN low_, high_, step_;
};

Positions positionsOf(const PathPicture &picture, const PathPlaces &places, const PathPlace &place, int x,
                      int y) {
  const int64_t dx = 16 * int64_t{x} - places.centreX, dy = 16 * int64_t{y} - places.centreY;
  const auto walk = [=](int64_t ofX, int64_t ofY, int centre, int shift, int size) {
    const int64_t fixed = (int64_t{centre} + shift) * (1 << 24) + (1 << 23);
    return Walk(ofX * dx + ofY * dy + fixed, 16 * ofX, size);
  };
  Walk walkX = walk(place.xx, place.xy, places.centreX, place.shiftX, picture.width);
  Walk walkY = walk(place.yx, place.yy, places.centreY, place.shiftY, picture.height);
  Positions positions;
  for (int i = 0; i < kStrip; i += kLanes<I32xN>) {
    const I32xN atX = walkX.next(), atY = walkY.next();
    store(positions.pixels + i, (atY >> 4) * picture.step() + (atX >> 4));
    store(positions.weights + i, (atY & 15) << 4 | (atX & 15));
  }
  return positions;
}

/// The weighted sums of kBlocks pixels, every second one.
I32xN samples(const PathPicture &picture, const Positions &positions, int first) {
  const void *above[kBlocks], *below[kBlocks], *left[kBlocks], *right[kBlocks];
  for (int b = 0; b < kBlocks; ++b) {
    const int32_t pixel = positions.pixels[first + 2 * b];
    const WeightTable::Entry &weights = kWeights.entries[positions.weights[first + 2 * b]];
    above[b] = picture.pixels + pixel;
    below[b] = picture.pixels + picture.step() + pixel;
    left[b] = weights.left;
    right[b] = weights.right;
  }
  const auto top = loadBlocks<I16xN>(above), bottom = loadBlocks<I16xN>(below);
  return mulAddPairs(interleaveLow(top, bottom), loadBlocks<I16xN>(left)) +
         mulAddPairs(interleaveHigh(top, bottom), loadBlocks<I16xN>(right));
}

/// Of two vectors of sums, packed. Quotients are whole numbers below 2^16 and twelfths: half of one more
/// keeps them off the next.
I16xN averages(I32xN low, I32xN high, int count) {
  const auto average = [count](I32xN sums) {
    const F32xN wide = convert<F32xN>((sums + (32768 * 256 + 128) * count) >> 8);
    return convert<I32xN>((wide + 0.5F) * (1.0F / static_cast<float>(count))) - 32768;
  };
  return packI16(average(low), average(high));
}

} // namespace

void averagePlaces(const PathPicture &picture, const PathPlaces &places, int y, int from, int to,
                   WidePixel *out) {
  Positions positions[kMostPathPlaces];
  for (int x = from; x < to; x += kStrip) {
    for (int i = 0; i < places.count; ++i)
      positions[i] = positionsOf(picture, places, places.places[i], x, y);
    const int width = to - x < kStrip ? to - x : kStrip;
    forEachVector<I16xN>(4 * width, [&](int lane, int lanes) {
      I32xN sums[2] = {}; // of the even pixels and of the odd ones
      for (int i = 0; i < places.count; ++i)
        for (int odd = 0; odd < 2; ++odd)
          sums[odd] += samples(picture, positions[i], lane / 4 + odd);
      store(&out[x - from].b + lane, averages(sums[0], sums[1], places.count), lanes);
    });
  }
}

void averageTaps(const PathTaps *taps, int pairs, int count, WidePixel *out, int width) {
  constexpr int kAtOnce = 2; // vectors
  const auto averaged = [=](int lane, int lanes, auto vectors) {
    I32xN low[vectors] = {}, high[vectors] = {};
    for (int i = 0; i < pairs; ++i) {
      const auto weights = as<I16xN>(splat<U32xN>(taps[i].weights));
      for (int v = 0; v < vectors; ++v) {
        const int at = lane + v * kLanes<I16xN>;
        const auto first = load<I16xN>(&taps[i].first->b + at, lanes);
        const auto second = load<I16xN>(&taps[i].second->b + at, lanes);
        low[v] += mulAddPairs(interleaveLow(first, second), weights);
        high[v] += mulAddPairs(interleaveHigh(first, second), weights);
      }
    }
    for (int v = 0; v < vectors; ++v)
      store(&out->b + lane + v * kLanes<I16xN>, averages(low[v], high[v], count), lanes);
  };
  int lane = 0;
  for (; lane + kAtOnce * kLanes<I16xN> <= 4 * width; lane += kAtOnce * kLanes<I16xN>)
    averaged(lane, kLanes<I16xN>, std::integral_constant<int, kAtOnce>());
  forEachVector<I16xN>(4 * width - lane, [&](int i, int lanes) {
    averaged(lane + i, lanes, std::integral_constant<int, 1>());
  });
}

} // namespace zol::ZOL_LEVEL
