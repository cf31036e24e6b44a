// The colour models for other programs, a call a pixel; kernels/color/color_models.h says what the numbers
// mean.
#pragma once

#include "frame/export.h"

#include <cstdint>

ZOL_EXPORT void RGB_to_HLS(uint8_t *H, uint8_t *L, uint8_t *S, uint8_t r, uint8_t g, uint8_t b);

/// S is a saturation here, no chroma.
ZOL_EXPORT void HLS_to_RGB(uint8_t *r, uint8_t *g, uint8_t *b, uint8_t H, uint8_t L, uint8_t S);

ZOL_EXPORT void hue_to_rgb(int h, uint8_t *r, uint8_t *g, uint8_t *b);

/// The step of the wheel that has the colour's hue; 0 for greys.
ZOL_EXPORT int rgb_to_hue(uint8_t r, uint8_t g, uint8_t b);
