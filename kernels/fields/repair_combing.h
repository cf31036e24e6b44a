// Deinterlacing of a whole picture: what is combed is repaired.
#pragma once

#include <cstdint>

namespace zol {

/// Writes src with its combed pixels rebuilt to dst, both width x height words 0xAARRGGBB apart from one
/// another and not empty. Lines beyond the picture mirror those inside. Where the combing of a pixel and of
/// those above and below, 1 2 1, exceeds 4 * threshold * threshold it becomes the 1 2 1 blend with its
/// neighbours or, without blending and on odd lines alone, their mean. `edge`, up to 180, excuses real edges.
void repairCombing(const uint32_t *src, uint32_t *dst, int width, int height, int threshold, int edge,
                   bool blend);

} // namespace zol
