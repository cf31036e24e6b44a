// Between rows of packed pixels (blue, green, red, alpha) and rows of single channels. Nothing may overlap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zol::host {

/// `alpha` may be null: opaque.
void joinBgra(const uint8_t *blue, const uint8_t *green, const uint8_t *red, const uint8_t *alpha, size_t n,
              uint8_t *bgra);

/// The colours alone.
void splitBgra(const uint8_t *bgra, size_t n, uint8_t *blue, uint8_t *green, uint8_t *red);

void splitAlpha(const uint8_t *bgra, size_t n, uint8_t *alpha);

} // namespace zol::host
