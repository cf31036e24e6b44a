// Integer conversions between red, green, blue and hue, lightness, chroma, and a colour wheel.
#pragma once

#include "frame/export.h"

#include <cstdint>

/// Hue 0..255: 0 red, about 42 yellow, 85 green, about 127 cyan, 170 blue, about 212 magenta; 0 for greys
/// and 255 for pure reds. Lightness is the middle of the least and the greatest channel, rounded up; S
/// their distance, the chroma.
ZOL_EXPORT void RGB_to_HLS(uint8_t *H, uint8_t *L, uint8_t *S, uint8_t r, uint8_t g, uint8_t b);

/// Here S is a saturation: 0 gives the grey (L, L, L), 255 the fullest colour of that lightness.
ZOL_EXPORT void HLS_to_RGB(uint8_t *r, uint8_t *g, uint8_t *b, uint8_t H, uint8_t L, uint8_t S);

/// The fully saturated colour at a step of the wheel: 0..1529, 255 steps a sector, from red by green and
/// blue. Beyond it green (below) or blue (above) go on, modulo 256.
ZOL_EXPORT void hue_to_rgb(int h, uint8_t *r, uint8_t *g, uint8_t *b);
