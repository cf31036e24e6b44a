#include "kernels/keying/bluescreen_rows.h"

#include "kernels/keying/composite_pixels.h"

namespace zol::ZOL_LEVEL {
namespace {

template <KeyChannel channel> struct Screen {
  static constexpr int kKeyShift = channel == KeyChannel::blue ? 0 : 8;
  static constexpr uint32_t kOtherColors = 0x00FFFFFF & ~(0xFFu << kKeyShift);

  /// The larger of the two channels beside the key channel.
  static U32xN larger(U32xN pixels) {
    const U32xN other = channel == KeyChannel::blue ? pixels >> 8 : pixels;
    return as<U32xN>(max(as<U8xN>(other), as<U8xN>(pixels >> 16))) & 0xFF;
  }

  /// The place of a pixel in a table by differences.
  static U32xN difference(U32xN pixels) {
    return (pixels >> kKeyShift & 0xFF) - larger(pixels) + kDifferences / 2;
  }

  /// The colours without the key colour's spill, alpha 0.
  static U32xN suppressed(U32xN pixels) {
    return as<U32xN>(min(as<U8xN>(pixels), as<U8xN>(larger(pixels) << kKeyShift | kOtherColors)));
  }
};

/// Calls work with the channel's Screen.
template <class Work> void withScreen(KeyChannel channel, Work work) {
  if (channel == KeyChannel::blue)
    work(Screen<KeyChannel::blue>());
  else
    work(Screen<KeyChannel::green>());
}

} // namespace

void matteRow(KeyChannel channel, const _color_t *source, _color_t *out, int width,
              const WeightAndAlpha *byDifference) {
  withScreen(channel, [=](auto screen) {
    forEachVector<U32xN>(width, [=](int i, int n) {
      const U32xN entries = gather(byDifference, screen.difference(load<U32xN>(source + i, n)));
      store(out + i, (load<U32xN>(out + i, n) & 0x00FFFFFF) | (entries & 0xFF000000), n);
    });
  });
}

void composeRow(KeyChannel channel, const _color_t *key, _color_t *out, int width,
                const WeightAndAlpha *byMatte) {
  withScreen(channel, [=](auto screen) {
    forEachVector<U32xN>(width, [=](int i, int n) {
      const U32xN lower = load<U32xN>(out + i, n);
      const U32xN entries = gather(byMatte, lower >> 24);
      store(out + i, composite(lower, screen.suppressed(load<U32xN>(key + i, n)), entries), n);
    });
  });
}

void keyRow(KeyChannel channel, const _color_t *source, const _color_t *key, _color_t *out, int width,
            const WeightAndAlpha *byDifference) {
  withScreen(channel, [=](auto screen) {
    forEachVector<U32xN>(width, [=](int i, int n) {
      const U32xN entries = gather(byDifference, screen.difference(load<U32xN>(source + i, n)));
      store(out + i, composite(load<U32xN>(out + i, n), screen.suppressed(load<U32xN>(key + i, n)), entries),
            n);
    });
  });
}

} // namespace zol::ZOL_LEVEL
