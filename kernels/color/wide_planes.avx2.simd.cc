#include "kernels/color/wide_planes.h"

#include "kernels/color/wide_lanes.h"

namespace zol::ZOL_LEVEL {
namespace {

using Values = Vector<uint16_t, kPixels>;

} // namespace

void toPlanes(const _color_t *pixels, const WidePlanes &planes, int count) {
  forEachVector<U32xN>(count, [=, &planes](int i, int n) {
    const auto p = load<U32xN>(pixels + i, n);
    const auto put = [=](uint16_t *plane, U32xN channel) {
      store(plane + i, convert<Values>(mulAddPairs(as<I16xN>(channel), as<I16xN>(p >> 24))), n);
    };
    put(planes.b, p & 0xFF);
    put(planes.g, p >> 8 & 0xFF);
    put(planes.r, p >> 16 & 0xFF);
    put(planes.a, splat<U32xN>(255));
  });
}

void planesToBytes(const WidePlanes &planes, _color_t *out, int count) {
  forEachVector<U32xN>(count, [=, &planes](int i, int n) {
    const auto lanes = [=](const uint16_t *plane) {
      return convert<F32xN>(convert<I32xN>(load<Values>(plane + i, n)));
    };
    const WideChannels wide = {lanes(planes.b), lanes(planes.g), lanes(planes.r), lanes(planes.a)};
    store(out + i, bytesOf(wide, splat<F32xN>(127), U32xN{}), n);
  });
}

} // namespace zol::ZOL_LEVEL
