#include "kernels/shape/shape_rows.h"

#include <cstring>
#include <immintrin.h>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif

constexpr int kPixels = kBytes / 4; // of a vector
constexpr int kBlock = 16;          // pixels whose edges are looked at together
constexpr unsigned kAllOfBlock = 0xffff;

using Words = uint32_t __attribute__((vector_size(kBytes)));
using Halves = uint16_t __attribute__((vector_size(kBytes)));
using Bytes = uint8_t __attribute__((vector_size(kPixels)));
using Edges = __m128i;

template <class T> T load(const void *from) {
  T value;
  __builtin_memcpy(&value, from, sizeof value);
  return value;
}

template <class T> void store(void *to, T value) { __builtin_memcpy(to, &value, sizeof value); }

/// A bit for every byte that is equal.
unsigned equal(Edges a, Edges b) { return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(a, b))); }

/// Floor of value / 255, exact up to 65534.
Halves div255(Halves value) { return (value + 1 + (value >> 8)) >> 8; }

/// `colour` over pixels with an alpha of its own, 0 to 255 in every word; the alpha becomes the pixel's.
/// All products stay below 65026.
Words blend(Words pixels, Words colour, Words alpha) {
  const Words kEven = Words{} + 0x00ff00ffU;
  const Halves a = reinterpret_cast<Halves>(alpha | alpha << 16);
  const Halves rest = 255 - a;
  const auto mix = [&](Words under, Words over) {
    return reinterpret_cast<Words>(
        div255(reinterpret_cast<Halves>(under & kEven) * rest + reinterpret_cast<Halves>(over & kEven) * a));
  };
  const Words redBlue = mix(pixels, colour);
  const Words green = mix(pixels >> 8, colour >> 8) & 0x000000ffU;
  return redBlue | green << 8 | alpha << 24;
}

void clearAlpha(_color_t *pixels, int count) {
  int i = 0;
  for (; i + kPixels <= count; i += kPixels)
    store(pixels + i, load<Words>(pixels + i) & 0x00ffffffU);
  for (; i < count; ++i)
    pixels[i].a = 0;
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
  Words words, opacity;

  /// A block of pixels with coverages of their own.
  void blendBlock(_color_t *pixels, const uint8_t *coverage) const {
    for (int i = 0; i < kBlock; i += kPixels) {
      const Words alpha = __builtin_convertvector(load<Bytes>(coverage + i), Words);
      store(pixels + i, blend(load<Words>(pixels + i), words,
                              reinterpret_cast<Words>(div255(reinterpret_cast<Halves>(alpha) *
                                                             reinterpret_cast<Halves>(opacity)))));
    }
  }

  /// A block inside the shape.
  void fillBlock(_color_t *pixels) const {
    if (opacity[0] == 255)
      for (int i = 0; i < kBlock; i += kPixels)
        store(pixels + i, words);
    else
      for (int i = 0; i < kBlock; i += kPixels)
        store(pixels + i, blend(load<Words>(pixels + i), words, opacity));
  }
};

} // namespace

void blendShapeRow(_color_t *pixels, int width, int row, const RowEdges *edges, CrossingLine *columns,
                   unsigned colour) {
  const Colour fill = {Words{} + colour, Words{} + (colour >> 24)};
  const Edges zero = _mm_setzero_si128();
  const Edges whole = _mm_set1_epi8(-1);
  clearAlpha(pixels, edges->begin);
  for (int x = edges->begin; x < edges->end; x += kBlock) {
    const int count = edges->end - x < kBlock ? edges->end - x : kBlock;
    alignas(kBlock) uint8_t top[kBlock] = {}, bottom[kBlock] = {}, coverage[kBlock];
    const bool partial = count < kBlock;
    if (partial) {
      std::memcpy(top, edges->top + x, static_cast<size_t>(count));
      std::memcpy(bottom, edges->bottom + x, static_cast<size_t>(count));
    }
    const auto tops = load<Edges>(partial ? top : edges->top + x);
    const auto bottoms = load<Edges>(partial ? bottom : edges->bottom + x);
    const Edges both = _mm_and_si128(tops, bottoms);
    const unsigned outside = equal(_mm_or_si128(tops, bottoms), zero);
    const unsigned inside = equal(both, whole);
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
