// Integer conversions between red, green, blue and hue, lightness, chroma, and a colour wheel, to be inlined
// where pixels are converted one by one.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <emmintrin.h>

namespace zol {
namespace color_models {

// ---- RGB to HLS ----

/// For distances x up to d: (x * kReciprocals[d]) >> 24 = x * 255 / d. The product is below 2^32.
inline constexpr std::array<uint32_t, 256> kReciprocals = [] {
  std::array<uint32_t, 256> table{};
  for (uint32_t d = 1; d < 256; ++d)
    table[d] = 255 * (((1U << 24) + d - 1) / d);
  return table;
}();

/// x * 42 / 255.
inline constexpr std::array<uint8_t, 256> kWays = [] {
  std::array<uint8_t, 256> table{};
  for (unsigned x = 0; x < 256; ++x)
    table[x] = static_cast<uint8_t>(x * 42 / 255);
  return table;
}();

/// A hue is an origin plus or minus the way that the middle channel has gone from the least to the
/// greatest, 42 steps in all.
struct HueSector {
  uint8_t origin;
  int8_t direction;
};

// Channels are compared with their names in the two bits below, which decide between equal ones: red comes
// before green and green before blue, as the least and as the greatest.
enum : unsigned { kRedLeast, kGreenLeast, kBlueLeast };
enum : unsigned { kBlueGreatest, kGreenGreatest, kRedGreatest };

constexpr unsigned orderOf(unsigned least, unsigned greatest) { return (least & 3) << 2 | (greatest & 3); }

inline constexpr std::array<HueSector, 16> kSectors = [] {
  std::array<HueSector, 16> table{};
  table[orderOf(kRedLeast, kRedGreatest)] = {0, 0}; // grey
  table[orderOf(kRedLeast, kGreenGreatest)] = {85, 1};
  table[orderOf(kRedLeast, kBlueGreatest)] = {170, -1};
  table[orderOf(kGreenLeast, kRedGreatest)] = {255, -1};
  table[orderOf(kGreenLeast, kBlueGreatest)] = {170, 1};
  table[orderOf(kBlueLeast, kRedGreatest)] = {0, 1};
  table[orderOf(kBlueLeast, kGreenGreatest)] = {85, -1};
  return table;
}();

// ---- HLS to RGB ----

/// Four 16-bit lanes of a vector.
struct alignas(8) Quad {
  int16_t lane[4];
};

/// Red, green and blue of every hue at full chroma, negative.
inline constexpr std::array<Quad, 256> kNegativePrimaries = [] {
  std::array<Quad, 256> table{};
  const auto part = [](int steps, int sector) { return static_cast<int16_t>(-(steps * 255 / sector)); };
  for (int h = 0; h < 256; ++h) {
    Quad &p = table[static_cast<size_t>(h)];
    if (h <= 42)
      p = {{-255, part(h, 42), 0, 0}};
    else if (h <= 85)
      p = {{part(85 - h, 43), -255, 0, 0}};
    else if (h <= 127)
      p = {{0, -255, part(h - 85, 42), 0}};
    else if (h <= 170)
      p = {{0, part(170 - h, 43), -255, 0}};
    else if (h <= 212)
      p = {{part(h - 170, 42), 0, -255, 0}};
    else
      p = {{-255, 0, part(255 - h, 43), 0}};
  }
  return table;
}();

/// Of every lightness: how far full colours reach down and up from it, 65536 = 255 and rounded up; the
/// least of them; the greatest, negative. Times n and shifted right by 16 a reach is reach * n / 255 for
/// every n up to 255.
inline constexpr std::array<Quad, 256> kLightness = [] {
  std::array<Quad, 256> table{};
  const auto scaled = [](int reach) { return static_cast<int16_t>((reach * 65536 + 254) / 255); };
  for (int l = 0; l < 256; ++l) {
    const int least = l > 128 ? (l - 128) * 255 / 127 : 0;
    const int greatest = l > 128 ? 255 : 255 * l / 128;
    table[static_cast<size_t>(l)] = {{scaled(l - least), scaled(greatest - l), static_cast<int16_t>(least),
                                      static_cast<int16_t>(-greatest)}};
  }
  return table;
}();

inline __m128i load(const Quad &quad) { return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(&quad)); }

/// n / 255 of lanes up to 255 * 255.
inline __m128i by255(__m128i n) {
  return _mm_srli_epi16(_mm_mulhi_epu16(n, _mm_set1_epi16(static_cast<int16_t>(0x8081))), 7);
}

} // namespace color_models

/// Hue 0..255: 0 red, about 42 yellow, 85 green, about 127 cyan, 170 blue, about 212 magenta; 0 for greys
/// and 255 for pure reds. Lightness is the middle of the least and the greatest channel, rounded up; S
/// their distance, the chroma.
inline void rgbToHls(uint8_t *H, uint8_t *L, uint8_t *S, uint8_t r, uint8_t g, uint8_t b) {
  using namespace color_models;
  const unsigned red = 4U * r, green = 4U * g, blue = 4U * b;
  // The channels' order in each is chosen so that no comparison serves both and all become selections.
  const unsigned first = std::min(std::min(red + kRedLeast, green + kGreenLeast), blue + kBlueLeast);
  const unsigned last = std::max(std::max(green + kGreenGreatest, blue + kBlueGreatest), red + kRedGreatest);
  const unsigned least = first >> 2;
  const unsigned greatest = last >> 2;
  const unsigned chroma = greatest - least;
  const unsigned beyondLeast = (0U + r + g + b) - greatest - 2 * least; // of the middle channel
  const int way = kWays[beyondLeast * kReciprocals[chroma] >> 24];
  const HueSector sector = kSectors[orderOf(first, last)];
  *H = static_cast<uint8_t>(sector.origin + sector.direction * way);
  *L = static_cast<uint8_t>((least + greatest + 1) >> 1);
  *S = static_cast<uint8_t>(chroma);
}

/// Here S is a saturation: 0 gives the grey (L, L, L), 255 the fullest colour of that lightness.
inline void hlsToRgb(uint8_t *r, uint8_t *g, uint8_t *b, uint8_t H, uint8_t L, uint8_t S) {
  using namespace color_models; // in lanes of 16 bits, all three channels at once
  const __m128i pull = _mm_shufflelo_epi16(_mm_cvtsi32_si128(255 - S), 0); // to the grey, 255 = 1.0
  const __m128i lightness = load(kLightness[L]);
  const __m128i ends = _mm_add_epi16(_mm_mulhi_epu16(lightness, pull), _mm_srli_epi64(lightness, 32));
  const __m128i base = _mm_shufflelo_epi16(ends, 0x00);
  const __m128i negativeRange = _mm_add_epi16(base, _mm_shufflelo_epi16(ends, 0x55));
  const __m128i product = _mm_mullo_epi16(load(kNegativePrimaries[H]), negativeRange);
  const __m128i channels = _mm_add_epi16(by255(product), base);
  const auto bytes = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(channels, channels)));
  *r = static_cast<uint8_t>(bytes);
  *g = static_cast<uint8_t>(bytes >> 8);
  *b = static_cast<uint8_t>(bytes >> 16);
}

/// The fully saturated colour at a step of the wheel: 0..1529, 255 steps a sector, from red by green and
/// blue. Beyond it green (below) or blue (above) go on, modulo 256.
inline void hueToRgb(int h, uint8_t *r, uint8_t *g, uint8_t *b) {
  const auto set = [&](int red, int green, int blue) {
    *r = static_cast<uint8_t>(red);
    *g = static_cast<uint8_t>(green);
    *b = static_cast<uint8_t>(blue);
  };
  if (h <= 255)
    set(255, h, 0);
  else if (h < 510)
    set(510 - h, 255, 0);
  else if (h < 765)
    set(0, 255, h - 510);
  else if (h < 1020)
    set(0, 1020 - h, 255);
  else if (h < 1275)
    set(h - 1020, 0, 255);
  else
    set(255, 0, 1530 - h);
}

/// The step of the wheel whose colour has the pixel's hue, 0..1529; 0 for greys. hueToRgb(h) gives h back.
/// In its sector the middle channel's way from the least to the greatest is rounded up, so that the wheel's
/// colour scaled by their distance and rounded down is the pixel's again.
inline int rgbToHue(uint8_t r, uint8_t g, uint8_t b) {
  const int least = std::min({r, g, b}), greatest = std::max({r, g, b});
  const int chroma = greatest - least;
  if (chroma == 0)
    return 0;
  const int middle = r + g + b - least - greatest;
  const int way = ((middle - least) * 255 + chroma - 1) / chroma;
  if (r == greatest)
    return g >= b ? way : 1530 - way;
  if (g == greatest)
    return b >= r ? 510 + way : 510 - way;
  return r >= g ? 1020 + way : 1020 - way;
}

} // namespace zol
