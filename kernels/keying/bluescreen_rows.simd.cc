#include "kernels/keying/bluescreen_rows.h"

#include "kernels/keying/laying_vectors.h"

namespace zol::ZOL_LEVEL {
namespace {

template <KeyChannel channel> struct Screen {
  static constexpr int kKeyShift = channel == KeyChannel::blue ? 0 : 8;
  static constexpr uint32_t kOtherColors = 0x00FFFFFF & ~(0xFFu << kKeyShift);

  /// The larger of the two channels beside the key channel.
  static Words larger(Words pixels) {
    return maxBytes(channel == KeyChannel::blue ? pixels >> 8 : pixels, pixels >> 16) & 0xFF;
  }

  /// The place of a pixel in a table by differences.
  static Words difference(Words pixels) {
    return (pixels >> kKeyShift & 0xFF) - larger(pixels) + kDifferences / 2;
  }

  /// The colours without the key colour's spill, alpha 0.
  static Words suppressed(Words pixels) {
    return minBytes(pixels, larger(pixels) << kKeyShift | kOtherColors);
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
              const Laying *byDifference) {
  withScreen(channel, [=](auto screen) {
    forEachVector(width, [=](int i, int n) {
      const Words layings = lookUp(byDifference, screen.difference(load(source + i, n)));
      store(out + i, (load(out + i, n) & 0x00FFFFFF) | (layings & 0xFF000000), n);
    });
  });
}

void composeRow(KeyChannel channel, const _color_t *key, _color_t *out, int width, const Laying *byMatte) {
  withScreen(channel, [=](auto screen) {
    forEachVector(width, [=](int i, int n) {
      const Words lower = load(out + i, n);
      const Words layings = lookUp(byMatte, lower >> 24);
      store(out + i, layOn(lower, screen.suppressed(load(key + i, n)), layings), n);
    });
  });
}

void keyRow(KeyChannel channel, const _color_t *source, const _color_t *key, _color_t *out, int width,
            const Laying *byDifference) {
  withScreen(channel, [=](auto screen) {
    forEachVector(width, [=](int i, int n) {
      const Words layings = lookUp(byDifference, screen.difference(load(source + i, n)));
      store(out + i, layOn(load(out + i, n), screen.suppressed(load(key + i, n)), layings), n);
    });
  });
}

} // namespace zol::ZOL_LEVEL
