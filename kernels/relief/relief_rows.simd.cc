#include "kernels/relief/relief_rows.h"

#include "kernels/color/luma_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kPixels = kLanes<F32xN>;

struct Vectors3 {
  F32xN x, y, z;
};

F32xN lengthOf(const Vectors3 &v) { return squareRoot((v.x * v.x + v.y * v.y) + v.z * v.z); }
Vectors3 unit(const Vectors3 &v) {
  const F32xN length = lengthOf(v);
  return {v.x / length, v.y / length, v.z / length};
}

F32xN within(F32xN v, float most) { return max(min(v, splat<F32xN>(most)), F32xN{}); }
U32xN in4096ths(F32xN v) { return as<U32xN>(convert<I32xN>(v)); }

// ---- Slopes ----

/// Sums of a stretch of columns, with the neighbours on either side: over the three rows, the middle one
/// twice, and below less above.
constexpr int kStretch = 256;
struct Columns {
  int32_t sum[kStretch + 2 + kPixels], fall[kStretch + 2 + kPixels];
};

void addUp(const uint16_t *above, const uint16_t *heights, const uint16_t *below, int first, int width,
           int count, Columns &columns) {
  using Heights = Vector<uint16_t, kPixels>;
  const auto put = [&](int i, int x, int n) {
    const auto a = convert<I32xN>(load<Heights>(above + x, n)),
               b = convert<I32xN>(load<Heights>(below + x, n));
    store(columns.sum + i, a + b + 2 * convert<I32xN>(load<Heights>(heights + x, n)), n);
    store(columns.fall + i, b - a, n);
  };
  put(0, first > 0 ? first - 1 : 0, 1);
  forEachVector<I32xN>(count, [&](int i, int n) { put(1 + i, first + i, n); });
  put(1 + count, first + count < width ? first + count : width - 1, 1);
}

// ---- Light ----

/// Where the light comes from, and the direction halfway to the eye.
struct Rays {
  Vectors3 light, half;
  F32xN flatShine;
};

F32xN shineOf(const Relief &relief, F32xN cosine) {
  for (int i = 0; i < relief.squarings; ++i)
    cosine *= cosine;
  return cosine + (cosine * cosine - cosine) * relief.part;
}

Rays raysAlong(const Vectors3 &light, const Relief &relief) {
  Rays rays{light, {}, {}};
  if (relief.shine > 0) {
    rays.half = unit({light.x, light.y, light.z + 1.0F});
    rays.flatShine = shineOf(relief, rays.half.z);
  }
  return rays;
}

/// The pixels of 8 bits a channel times i, 4096 = 1.0, cut off at 255.
U32xN brightened(U32xN pixels, U32xN i) {
  U32xN result = pixels & 0xFF000000;
  for (int shift = 0; shift < 24; shift += 8) {
    // Both are below 2^15: a product of words.
    const auto c = as<I32xN>(pixels >> shift & 0xFF);
    const I32xN product = mulAddPairs(as<I16xN>(c), as<I16xN>(i)) >> 12;
    result |= as<U32xN>(min(product, splat<I32xN>(255))) << shift;
  }
  return result;
}

U32xN shining(U32xN pixels, uint32_t color, U32xN amount) {
  U32xN result = pixels;
  for (int shift = 0; shift < 24; shift += 8) {
    const auto left = as<U16xN>(255 - (pixels >> shift & 0xFF));
    const U16xN to = div255(left * splat<U16xN>(static_cast<uint16_t>(color >> shift & 0xFF)));
    result += as<U32xN>(mulAddPairs(as<I16xN>(to), as<I16xN>(amount)) >> 12) << shift;
  }
  return result;
}

} // namespace

void heightRow(const _color_t *pixels, bool ofAlpha, uint16_t *heights, int count) {
  forEachVector<U16xN>(count, [=](int i, int n) {
    const PixelPair pair = loadInOrder(pixels + i, n);
    const auto alpha = as<U16xN>(channelOf(pair.first, pair.second, 24));
    store(heights + i, ofAlpha ? alpha * 255 : as<U16xN>(luma(channelsOf(pair))) * alpha, n);
  });
}

void reliefRow(const Relief &given, const _color_t *pixels, const uint16_t *above, const uint16_t *heights,
               const uint16_t *below, int x, int y, int count, _color_t *lit) {
  const Relief relief = given; // no store into pixels changes it
  Columns columns;
  const Vector3 at = relief.light;
  const float toLight = (at.y - (static_cast<float>(y) + 0.5F)) / relief.aspect;
  const Rays distant = raysAlong({splat<F32xN>(at.x), splat<F32xN>(at.y), splat<F32xN>(at.z)}, relief);
  F32xN middles; // of the pixels, across
  for (int i = 0; i < kPixels; ++i)
    middles[i] = static_cast<float>(i) + 0.5F;
  for (int first = 0; first < count; first += kStretch) {
    const int stretch = count - first < kStretch ? count - first : kStretch;
    addUp(above, heights, below, first, count, stretch, columns);
    forEachVector<U32xN>(stretch, [&](int i, int n) {
      const auto own = load<U32xN>(pixels + first + i, n);
      const auto sum = [&](int k) { return load<I32xN>(columns.sum + i + k); };
      const auto fall = [&](int k) { return load<I32xN>(columns.fall + i + k); };
      const F32xN u = convert<F32xN>(sum(2) - sum(0)) * relief.across;
      const F32xN v = convert<F32xN>(fall(0) + 2 * fall(1) + fall(2)) * relief.down;
      const F32xN length = squareRoot((u * u + v * v) + 1.0F);
      Rays rays = distant;
      if (relief.isPoint) {
        const F32xN across = at.x - (static_cast<float>(x + first + i) + middles);
        rays = raysAlong(unit({across, splat<F32xN>(toLight), splat<F32xN>(at.z)}), relief);
      }
      const Vectors3 &light = rays.light, &half = rays.half;
      const F32xN q = within((light.z - (u * light.x + v * light.y)) / (light.z * length), 4);
      U32xN result =
          brightened(own, in4096ths((relief.ambient + (1.0F - relief.ambient) * q) * 4096.0F + 0.5F));
      if (relief.shine > 0) {
        const F32xN cosine = max((half.z - (u * half.x + v * half.y)) / length, F32xN{});
        const F32xN more = max(shineOf(relief, cosine) - rays.flatShine, F32xN{});
        result = shining(result, relief.color, in4096ths(more * relief.shine * 4096.0F));
      }
      store(lit + first + i, own >> 24 == 0 ? own : result, n);
    });
  }
}

} // namespace zol::ZOL_LEVEL
