// Bluescreen: lays its input on the background where the input is not the blue or green of a studio's
// backdrop. Delta1 and Delta2 say from which excess of the key channel a pixel is backdrop and below which
// it is foreground. Shrink and Noiseclean at 0 leave the matte as it is.

#include "effects/compositing/bluescreen.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/real_time.h"
#include "kernels/exports/bluescreen.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field { kBackground, kInput, kDelta1, kDelta2, kShrink, kNoiseclean, kOpacity, kKeymode };
enum Keymode { kBlue, kGreen };

constexpr const char *kKeymodes[] = {"Bluescreen", "Greenscreen"};

constexpr zol::Range kHidden{0, 1, "ZodfBothLimits|ZodfHideCurve"};

constexpr zol::Field kFields[] = {
    field::plain("Input", kBackground, "Background"),
    field::plain("Input", kInput, "Input"),
    field::curve(kDelta1, "Delta1", zol::kShare, 0.25).colored(0xFFFF00).at(0),
    field::curve(kDelta2, "Delta2", kHidden, 0).colored(0xFF00FF).at(0.25),
    field::curve(kShrink, "Shrink", kHidden, 0).colored(0xFF00FF).at(0.5),
    field::curve(kNoiseclean, "Noiseclean", kHidden, 0.1).colored(0xFF00FF).at(0.75),
    field::curve(kOpacity, "Opacity", kHidden, 1).colored(0xFF00FF).at(1),
    field::selector(kKeymode, "Keymode", kKeymodes).flags("0x0").unset(),
};

/// Halvenor hands the background's buffer to real-time renders first, other hosts the input's. Once set it
/// stays: a library serves one host.
bool hostIsHalvenor = false;

/// Reads the parameters and lays `key` on `out`. Shrink and Noiseclean reach a tenth of the width at 1.0.
int layKey(t_ZoHostInfo *host, pic *out, pic *key, int width) {
  const double time = static_cast<float>(host->Time);
  const float delta1 = zol::paramFloat(host, kDelta1, time);
  const float delta2 = zol::paramFloat(host, kDelta2, time);
  const float shrink = static_cast<float>(width * zol::paramDouble(host, kShrink, time)) / 10;
  const double noiseclean = zol::paramFloat(host, kNoiseclean, time);
  const auto blur = static_cast<float>(noiseclean * width / 10);
  const float opacity = zol::paramFloat(host, kOpacity, time);
  const auto kernel = zol::paramInt(host, kKeymode) == kGreen ? Greenscreen : Bluescreen;
  return kernel(host, out, key, delta1, delta2, opacity, shrink, blur, static_cast<float>(host->PixelAspect));
}

/// The picture to lay the key on: a copy of the background's frame, or a blank frame where there is none.
pic *makeGround(t_ZoHostInfo *host, pic *background) {
  if (background != nullptr)
    return host->Services->PicDuplicate(background);
  pic *blank = host->Services->PicCreate(host->Width, host->Height);
  if (blank != nullptr)
    std::fill_n(blank->Pixels, static_cast<size_t>(blank->Width) * static_cast<size_t>(blank->Height),
                _color_t{});
  return blank;
}

pic *render(t_ZoHostInfo *host) {
  void *backgroundInput = zol::input(host, kBackground);
  void *keyInput = zol::input(host, kInput);
  if (keyInput == nullptr)
    return nullptr;
  pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  pic *key = zol::frameOf(host, keyInput);
  if (key == nullptr || (backgroundInput != nullptr && background == nullptr))
    return nullptr;

  zol::OwnedPic out(host, makeGround(host, background));
  if (!out) {
    zol::showMemoryError(host);
    return nullptr;
  }
  const int width = background != nullptr ? out->Width : host->Width;
  return layKey(host, out.get(), key, width) == 1 ? out.release() : nullptr;
}

int renderRT(t_ZoHostInfo *host) {
  if (!zol::buffersArePictures(host))
    return 0;
  zol::LayingBuffers buffers(host, hostIsHalvenor);
  zol::copyShared(buffers.out, buffers.background);
  return layKey(host, &buffers.out, &buffers.upper, host->Width);
}

constexpr zol::Effect kBluescreen{
    .name = "Compositing/Bluescreen",
    .nameInQuorbel = "Filters/Standard/Bluescreen",
    .sign = "Bluescreen Zo2 native",
    .version = 1,
    .section = "Bluescreen",
    .description = "Replaces blue or green color in the image with background image.",
    .type = "Filter",
    .icon = bluescreen_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .renderVideoRT = renderRT,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessBluescreenDeclare(t_ZoHostInfo *host) {
  if (zol::hostIs(host, "Halvenor"))
    hostIsHalvenor = true;
  return zol::declare(host, kBluescreen);
}
