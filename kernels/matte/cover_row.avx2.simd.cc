#include "kernels/matte/cover_row.h"

#include "kernels/simd/vectors.h"

namespace zol::ZOL_LEVEL {

void coverRow(_color_t *pixels, const _color_t *mask, int count) {
  forEachVector<U32xN>(count, [=](int i, int n) {
    const auto own = load<U32xN>(pixels + i, n), cover = load<U32xN>(mask + i, n);
    const auto alpha = as<U32xN>(div255(as<U16xN>(own >> 24) * as<U16xN>(cover >> 24) + 127));
    store(pixels + i, alpha == 0 ? U32xN{} : (own & 0x00FFFFFF) | alpha << 24, n);
  });
}

} // namespace zol::ZOL_LEVEL
