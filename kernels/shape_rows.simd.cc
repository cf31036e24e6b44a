#include "kernels/shape_rows.h"

#include <cstring>

namespace zol::ZOL_LEVEL {
namespace {

#ifdef __AVX2__
constexpr int kBytes = 32;
#else
constexpr int kBytes = 16;
#endif

constexpr int kPixels = kBytes / 4; // of a vector
constexpr int kBlock = 16;          // pixels whose edges are looked at together

using Words = uint32_t __attribute__((vector_size(kBytes)));
using Halves = uint16_t __attribute__((vector_size(kBytes)));
using Edges = uint8_t __attribute__((vector_size(kBlock)));
using Pair = long long __attribute__((vector_size(kBlock)));

template <class T> T load(const void *from) {
  T value;
  __builtin_memcpy(&value, from, sizeof value);
  return value;
}

template <class T> void store(void *to, T value) { __builtin_memcpy(to, &value, sizeof value); }

bool allZero(Edges edges) {
  const Pair pair = reinterpret_cast<Pair>(edges);
  return (pair[0] | pair[1]) == 0;
}

bool allFull(Edges edges) {
  const Pair pair = reinterpret_cast<Pair>(edges);
  return (pair[0] & pair[1]) == -1;
}

/// Floor of value / 255, exact up to 65534.
Halves div255(Halves value) { return (value + 1 + (value >> 8)) >> 8; }

/// Coverages (0 to 255) of a vector's pixels, a word each.
Words widen(const uint8_t *coverage) {
  Words words;
  for (int i = 0; i < kPixels; ++i)
    words[i] = coverage[i];
  return words;
}

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

/// The coverage that a column line's spans leave at a pixel. Within a pixel the later end wins.
uint8_t edgeAt(CrossingLine &line, int pixel) {
  while (line.count != 0 && static_cast<int>(line.crossings[1]) < pixel) {
    line.crossings += 2;
    line.count -= 2;
  }
  uint8_t coverage = 0;
  for (uint32_t i = 0; i < line.count; i += 2) {
    const double start = line.crossings[i];
    const double end = line.crossings[i + 1];
    const int first = static_cast<int>(start);
    const int last = static_cast<int>(end);
    if (first > pixel)
      break;
    if (first == pixel)
      coverage = static_cast<uint8_t>((1.0 - (start - first)) * 255.0);
    if (last == pixel) {
      if (end - last > 0.0)
        coverage = static_cast<uint8_t>((end - last) * 255.0);
    } else if (static_cast<int>(start + 1.0) <= pixel && pixel < last) {
      coverage = 255;
    }
  }
  return coverage;
}

/// Share of a pixel inside the shape, from the coverages of its four edges, 255 = whole.
int coverageOf(int top, int bottom, CrossingLine *columns, int column, int row) {
  if (top == 0 && bottom == 0)
    return 0;
  if (top == 255 && bottom == 255)
    return 255;
  const bool topPartial = top > 0 && top < 255;
  const bool bottomPartial = bottom > 0 && bottom < 255;
  if (topPartial && bottomPartial)
    return (top + bottom) / 2;
  const int left = edgeAt(columns[column], row);
  const int right = edgeAt(columns[column + 1], row);
  if (top + bottom == 255 && !topPartial && !bottomPartial)
    return (left + right) / 2;
  if (top == 0 || bottom == 0)
    return (top + bottom) * (left != 0 ? left : right) / 255;
  const int partial = topPartial ? top : bottom; // the other is 255
  return 255 - (255 - partial) * (255 - (left == 255 ? right : left)) / 510;
}

} // namespace

void blendShapeRow(_color_t *pixels, int width, int row, const RowEdges *edges, CrossingLine *columns,
                   unsigned colour) {
  const uint32_t opacity = colour >> 24;
  const Words color = Words{} + colour;
  const Words full = Words{} + opacity;
  clearAlpha(pixels, edges->begin);
  int block = edges->begin;
  for (; block < edges->end; block += kBlock) {
    const int count = edges->end - block < kBlock ? edges->end - block : kBlock;
    Edges top{}, bottom{};
    if (count == kBlock) {
      top = load<Edges>(edges->top + block);
      bottom = load<Edges>(edges->bottom + block);
      if (allZero(top | bottom)) {
        clearAlpha(pixels + block, kBlock);
        continue;
      }
      if (allFull(top & bottom)) {
        for (int i = 0; i < kBlock; i += kPixels) {
          _color_t *p = pixels + block + i;
          store(p, opacity == 255 ? color : blend(load<Words>(p), color, full));
        }
        continue;
      }
    }
    uint8_t coverage[kBlock] = {};
    _color_t blended[kBlock] = {};
    for (int i = 0; i < count; ++i)
      coverage[i] = static_cast<uint8_t>(
          coverageOf(edges->top[block + i], edges->bottom[block + i], columns, block + i, row));
    std::memcpy(blended, pixels + block, static_cast<size_t>(count) * sizeof(_color_t));
    for (int i = 0; i < kBlock; i += kPixels) {
      const Words alpha =
          reinterpret_cast<Words>(div255(reinterpret_cast<Halves>(widen(coverage + i) * opacity)));
      store(blended + i, blend(load<Words>(blended + i), color, alpha));
    }
    std::memcpy(pixels + block, blended, static_cast<size_t>(count) * sizeof(_color_t));
  }
  if (edges->end < width)
    clearAlpha(pixels + edges->end, width - edges->end);
}

} // namespace zol::ZOL_LEVEL
