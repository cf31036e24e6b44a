#include "kernels/shape/shape_rows.h"

#include "kernels/simd/vectors.h"

#include <cstring>

namespace zol::ZOL_LEVEL {
namespace {

constexpr int kBlock = 16; // pixels whose edges are looked at together
constexpr unsigned kAllOfBlock = 0xffff;
constexpr int kPixels = kLanes<U32xN>;

using Coverages = Vector<uint8_t, kPixels>;

/// A bit for every byte of a mask.
unsigned bits(Vector<int8_t, kBlock> mask) {
  return static_cast<unsigned>(_mm_movemask_epi8(as<__m128i>(mask)));
}

/// `colour` over pixels with an alpha of its own, 0 to 255 in every word; the alpha becomes the pixel's.
/// All products stay below 65026.
U32xN blend(U32xN pixels, U32xN colour, U32xN alpha) {
  const auto a = as<U16xN>(alpha | alpha << 16);
  const U16xN rest = 255 - a;
  const auto mix = [&](U32xN under, U32xN over) {
    return as<U32xN>(div255(as<U16xN>(under & 0x00ff00ff) * rest + as<U16xN>(over & 0x00ff00ff) * a));
  };
  const U32xN redBlue = mix(pixels, colour);
  const U32xN green = mix(pixels >> 8, colour >> 8) & 0x000000ff;
  return redBlue | green << 8 | alpha << 24;
}

void clearAlpha(_color_t *pixels, int count) {
  forEachVector<U32xN>(count,
                       [=](int i, int n) { store(pixels + i, load<U32xN>(pixels + i, n) & 0x00ffffff, n); });
}

/// The coverage that a column line's spans leave at a pixel: where several meet, the last one's.
int edgeAt(CrossingLine &line, int pixel) {
  while (line.spanCount != 0 && line.spans->last < pixel) {
    ++line.spans;
    --line.spanCount;
  }
  int coverage = 0;
  for (const Span *span = line.spans; span != line.spans + line.spanCount && span->first <= pixel; ++span) {
    if (span->first == pixel)
      coverage = span->firstCoverage;
    if (span->inner <= pixel && pixel < span->last)
      coverage = 255;
    if (span->last == pixel && span->endsInside)
      coverage = span->lastCoverage;
  }
  return coverage;
}

/// Share of a pixel inside the shape, from the coverages of its four edges, 255 = whole; for pixels whose
/// top and bottom are neither both 0 nor both 255.
int coverageOf(int top, int bottom, CrossingLine *columns, int column, int row) {
  const bool topPartial = top > 0 && top < 255;
  const bool bottomPartial = bottom > 0 && bottom < 255;
  if (topPartial && bottomPartial)
    return (top + bottom) / 2;
  const int left = edgeAt(columns[column], row);
  const int right = edgeAt(columns[column + 1], row);
  if (!topPartial && !bottomPartial)
    return (left + right) / 2;
  if (top == 0 || bottom == 0)
    return (top + bottom) * (left != 0 ? left : right) / 255;
  const int partial = topPartial ? top : bottom; // the other is 255
  return 255 - (255 - partial) * (255 - (left == 255 ? right : left)) / 510;
}

struct Colour {
  U32xN words, opacity;

  /// A block of pixels with coverages of their own.
  void blendBlock(_color_t *pixels, const uint8_t *coverage) const {
    for (int i = 0; i < kBlock; i += kPixels) {
      const auto alpha = as<U16xN>(convert<U32xN>(load<Coverages>(coverage + i)));
      store(pixels + i, blend(load<U32xN>(pixels + i), words, as<U32xN>(div255(alpha * as<U16xN>(opacity)))));
    }
  }

  /// A block inside the shape.
  void fillBlock(_color_t *pixels) const {
    if (opacity[0] == 255)
      for (int i = 0; i < kBlock; i += kPixels)
        store(pixels + i, words);
    else
      for (int i = 0; i < kBlock; i += kPixels)
        store(pixels + i, blend(load<U32xN>(pixels + i), words, opacity));
  }
};

} // namespace

void blendShapeRow(_color_t *pixels, int width, int row, const RowEdges *edges, CrossingLine *columns,
                   unsigned colour) {
  const Colour fill = {splat<U32xN>(colour), splat<U32xN>(colour >> 24)};
  clearAlpha(pixels, edges->begin);
  for (int x = edges->begin; x < edges->end; x += kBlock) {
    const int count = edges->end - x < kBlock ? edges->end - x : kBlock;
    alignas(kBlock) uint8_t top[kBlock] = {}, bottom[kBlock] = {}, coverage[kBlock];
    const bool partial = count < kBlock;
    if (partial) {
      std::memcpy(top, edges->top + x, static_cast<size_t>(count));
      std::memcpy(bottom, edges->bottom + x, static_cast<size_t>(count));
    }
    const auto tops = load<U8x16>(partial ? top : edges->top + x);
    const auto bottoms = load<U8x16>(partial ? bottom : edges->bottom + x);
    const U8x16 both = tops & bottoms;
    const unsigned outside = bits((tops | bottoms) == 0);
    const unsigned inside = bits(both == 255);
    if (outside == kAllOfBlock) {
      clearAlpha(pixels + x, count);
      continue;
    }
    if (inside == kAllOfBlock) {
      fill.fillBlock(pixels + x);
      continue;
    }
    store(coverage, both);
    for (unsigned border = ~(outside | inside) & kAllOfBlock; border != 0; border &= border - 1) {
      const int i = __builtin_ctz(border);
      coverage[i] =
          static_cast<uint8_t>(coverageOf(edges->top[x + i], edges->bottom[x + i], columns, x + i, row));
    }
    if (partial) {
      _color_t block[kBlock] = {};
      std::memcpy(block, pixels + x, static_cast<size_t>(count) * sizeof(_color_t));
      fill.blendBlock(block, coverage);
      std::memcpy(pixels + x, block, static_cast<size_t>(count) * sizeof(_color_t));
    } else {
      fill.blendBlock(pixels + x, coverage);
    }
  }
  clearAlpha(pixels + edges->end, width - edges->end);
}

} // namespace zol::ZOL_LEVEL
