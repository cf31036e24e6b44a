#include "kernels/exports/color_models.h"

#include "kernels/color/color_models.h"

ZOL_EXPORT void RGB_to_HLS(uint8_t *H, uint8_t *L, uint8_t *S, uint8_t r, uint8_t g, uint8_t b) {
  zol::rgbToHls(H, L, S, r, g, b);
}

ZOL_EXPORT void HLS_to_RGB(uint8_t *r, uint8_t *g, uint8_t *b, uint8_t H, uint8_t L, uint8_t S) {
  zol::hlsToRgb(r, g, b, H, L, S);
}

ZOL_EXPORT void hue_to_rgb(int h, uint8_t *r, uint8_t *g, uint8_t *b) { zol::hueToRgb(h, r, g, b); }

ZOL_EXPORT int rgb_to_hue(uint8_t r, uint8_t g, uint8_t b) { return zol::rgbToHue(r, g, b); }
