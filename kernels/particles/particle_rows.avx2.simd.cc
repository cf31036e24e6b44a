#include "kernels/particles/particle_rows.h"

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

class Layer {
public:
  explicit Layer(const Ink &ink) : adds_(ink.adds) {
    for (int i = 0; i < kLanes<U16xN>; i += 4)
      __builtin_memcpy(reinterpret_cast<char *>(&factors_) + 2 * i, &ink.factors, sizeof ink.factors);
  }

  [[nodiscard]] U16xN laid(U16xN p, U16xN values) const {
    const U16xN s = mulHigh(values, factors_);
    if (adds_) {
      const U16xN sum = addSaturated(p, s);
      return sum - subSaturated(sum, splat<U16xN>(kLayerOne));
    }
    const U16xN alpha = alphaOfEach(s);
    const U16xN rest = mulHigh(p, 0 - (alpha + alpha)); // 2^16 does not fit: nothing comes of all
    return s + rest + (alpha == 0 ? p : U16xN{});
  }

private:
  U16xN factors_;
  bool adds_;
};

/// At least `count` pixels, a vector of pixels at a time: where their values are, half a vector each.
template <class Values> void layRow(const Layer &ink, WidePixel *layer, int count, Values values) {
  for (int i = 0; i < count; i += kPixels) {
    U16xN low, high, lowValues, highValues;
    loadWide(layer + i, low, high);
    values(i, lowValues, highValues);
    storeWide(layer + i, ink.laid(low, lowValues), ink.laid(high, highValues));
  }
}

// ---- Over pixels ----

/// 255 P + c (32768 - alpha of P), in lanes for the lower and the upper half of every block.
struct Sums {
  Sums(U16xN layer, U16xN pixels) {
    const I16xN p = as<I16xN>(layer ^ 0x8000); // P - 32768
    const auto alpha = alphaOfEach(p);
    const auto minus = as<I16xN>(0 - pixels);
    const auto all = splat<I16xN>(255);
    low = mulAddPairs(interleaveLow(p, alpha), interleaveLow(all, minus)) + 255 * kLayerOne;
    high = mulAddPairs(interleaveHigh(p, alpha), interleaveHigh(all, minus)) + 255 * kLayerOne;
  }
  [[nodiscard]] I16xN bytes() const {
    constexpr int kHalf = kLayerOne / 2;
    return packI16((low + kHalf) >> 15, (high + kHalf) >> 15);
  }
  I32xN low, high;
};

/// dividend / divisor, rounded down. The quotient in floats is at most one off.
U32xN quotient(U32xN dividend, U32xN divisor) {
  const auto n = as<I32xN>(dividend), d = as<I32xN>(divisor);
  const I32xN q = convert<I32xN>(convert<F32xN>(n) / convert<F32xN>(d));
  const I32xN rest = n - q * d;
  return as<U32xN>(q + (rest < 0) - (rest >= d));
}

U32xN overAny(U32xN pixels, U16xN low, U16xN high) {
  const auto blueGreen = evens(as<U32xN>(low), as<U32xN>(high));
  const auto redAlpha = odds(as<U32xN>(low), as<U32xN>(high));
  const U32xN alpha = redAlpha >> 16;
  const U32xN below = (pixels >> 24) * (kLayerOne - alpha);
  const U32xN total = (alpha << 8) - alpha + below;
  const U32xN divisor = total == 0 ? splat<U32xN>(1) : total;
  const auto color = [&](U32xN layer, int shift) {
    return quotient(layer * kWideOne + (pixels >> shift & 0xFF) * below + (total >> 1), divisor) << shift;
  };
  const U32xN colors =
      color(blueGreen & 0xFFFF, 0) | color(blueGreen >> 16, 8) | color(redAlpha & 0xFFFF, 16);
  return alpha == 0 ? pixels : colors | (total + kLayerOne / 2) >> 15 << 24;
}

} // namespace

void layDot(const Dot &dot, const Ink &ink, uint16_t *squares) {
  const auto edge = splat<U16xN>(kDotEdge);
  const auto square = [](float distance) {
    const float squared = distance * distance;
    return static_cast<uint16_t>(squared < kDotEdge ? squared : static_cast<float>(kDotEdge));
  };
  for (int i = 0; i < dot.width; ++i) {
    const uint16_t v = square(dot.x + static_cast<float>(i) * dot.stepX);
    for (int channel = 0; channel < 4; ++channel)
      squares[4 * i + channel] = v;
  }
  for (int i = 4 * dot.width; i < 4 * (dot.width + kLayerPadding); ++i)
    squares[i] = kDotEdge;
  const Layer layer(ink);
  for (int y = 0; y < dot.height; ++y) {
    const auto down = splat<U16xN>(square(dot.y + static_cast<float>(y) * dot.stepY));
    uint16_t *row = &dot.layer[y * dot.stride].b;
    for (int i = 0; i < 4 * dot.width; i += kLanes<U16xN>) {
      const U16xN u = subSaturated(edge, addSaturated(load<U16xN>(squares + i), down));
      store(row + i, layer.laid(load<U16xN>(row + i), mulHigh(u, u)));
    }
  }
}

void layMask(WidePixel *layer, const uint8_t *mask, int count, const Ink &ink) {
  layRow(Layer(ink), layer, count, [mask](int i, U16xN &low, U16xN &high) {
    const auto bytes = convert<U32xN>(load<Vector<uint8_t, kPixels>>(mask + i));
    const auto each = as<U8xN>(bytes * 0x01010101);
    low = widenLow(each) * 255;
    high = widenHigh(each) * 255;
  });
}

void layValues(WidePixel *layer, const WidePixel *values, int count, const Ink &ink) {
  layRow(Layer(ink), layer, count, [values](int i, U16xN &low, U16xN &high) {
    loadWide(values + i, low, high);
    low ^= 0x8000;
    high ^= 0x8000;
  });
}

void layOver(_color_t *pixels, WidePixel *layer, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    U16xN low, high;
    loadWide(layer + i, low, high);
    if (allSet((low | high) == 0))
      return;
    storeWide(layer + i, U16xN{}, U16xN{});
    const auto below = load<U32xN>(pixels + i, n);
    if (allSet(below >= 0xFF000000)) {
      const auto bytes = as<U8xN>(below);
      store(pixels + i,
            as<U32xN>(packU8(Sums(low, widenLow(bytes)).bytes(), Sums(high, widenHigh(bytes)).bytes())), n);
    } else {
      store(pixels + i, overAny(below, low, high), n);
    }
  });
}

void halveValues(const WidePixel *upper, const WidePixel *lower, WidePixel *half, int count) {
  int i = 0;
  for (; i + kPixels / 2 <= count; i += kPixels / 2) {
    U16xN low, high, lowBelow, highBelow;
    loadWide(upper + ptrdiff_t{2} * i, low, high);
    loadWide(lower + ptrdiff_t{2} * i, lowBelow, highBelow);
    const auto left = as<U64xN>(averageUp(low, lowBelow)), right = as<U64xN>(averageUp(high, highBelow));
    store(half + i,
          averageDown(as<U16xN>(interleaveLow(left, right)), as<U16xN>(interleaveHigh(left, right))));
  }
  for (; i < count; ++i) {
    const uint16_t *a = &upper[2 * i].b, *b = &lower[2 * i].b;
    for (int c = 0; c < 4; ++c)
      (&half[i].b)[c] = static_cast<uint16_t>(((a[c] + b[c] + 1) / 2 + (a[c + 4] + b[c + 4] + 1) / 2) / 2);
  }
}

} // namespace zol::ZOL_LEVEL
