// Color Keyer: lays its input on the background with an opacity that grows with the distance from a key
// colour, between a lower and an upper threshold. One real-time filter for every host, and for Halvenor a
// compositing effect whose opacity at either threshold can be set.

#include "kernels/keying/color_keyer.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"

#include <algorithm>
#include <cstddef>

namespace {

namespace field = zol::field;

constexpr char kThresholdFlags[] = "ZodfMinLimit|ZodfMaxLimit|ZodfHideCurve";

/// A threshold between 0 and 1, which is not sent.
constexpr zol::Field threshold(int *id, const char *name, double value) {
  return field::curve(id, name, {0, 0, kThresholdFlags}, value).uncolored();
}

// ---- The filter for every host ----

namespace filter {

/// Field ids, written by the host when the fields are declared.
struct {
  int input, background, color, lower, upper, opacity;
} ids;

enum Row { kInput, kBackground, kColor, kLower, kUpper, kOpacity };

constexpr zol::Field kFields[] = {
    field::input(&ids.input, "Input").flags("0x0"),
    field::input(&ids.background, "Background").flags("0x0"),
    field::color(&ids.color, "Color", 0xFF00C8FF),
    threshold(&ids.lower, "D1", 0.2).label("Threshold1").at(0),
    threshold(&ids.upper, "D2", 0.4).label("Threshold2").at(0.75),
    field::alpha(&ids.opacity, "Opacity", 1).at(0.25),
};

/// In the order of the keys' times.
int init(t_ZoHostInfo *host) {
  for (const Row row : {kColor, kLower, kOpacity, kUpper})
    zol::putDefault(host, kFields[row]);
  return 1;
}

zol::ColorKey readKey(t_ZoHostInfo *host) {
  _color_t color;
  host->Services->ParamGetColor(host, ids.color, 0, &color, host->Time);
  const double lower = zol::paramDouble(host, ids.lower);
  const double opacity = zol::paramDouble(host, ids.opacity);
  const double upper = zol::paramDouble(host, ids.upper);
  return {color, lower, upper, 0, opacity};
}

int renderRT(t_ZoHostInfo *host) {
  if (host->BitsPerPixel != 32) {
    zol::showMessage(host, "Color Keyer: Unsupported color depth");
    return 0;
  }
  const zol::ColorKey key = readKey(host);
  const auto *over = static_cast<const _color_t *>(host->InputBuffers[0]);
  const auto *ground = static_cast<const _color_t *>(host->InputBuffers[1]);
  auto *out = static_cast<_color_t *>(host->OutputBuffer);
  const int width = std::max<int>(host->Width, 0);
  const auto row = [width](int y) { return static_cast<size_t>(y) * static_cast<size_t>(width); };
  for (int y = 0; y < host->Height; ++y) {
    key.layRow(over + row(y), ground + row(y), out + row(y), width);
    if (zol::aborted(host)) {
      while (++y < host->Height) // below, the bare background
        zol::underlay(ground + row(y), out + row(y), width);
      zol::showMessage(host, nullptr);
      return 0;
    }
  }
  return 1;
}

constexpr zol::Effect kEffect{
    .name = "Filters/Standard/Color Keyer",
    .sign = "Color Keyer Qb5 native",
    .version = 1,
    .section = "ColorKeyer",
    .description = "Replaces areas of specified color in the foreground image with background",
    .type = "Filter",
    .init = init,
    .renderVideoRT = renderRT,
    .fields = kFields,
    .style = zol::Script::kTypeLate,
};

} // namespace filter

// ---- The compositing effect for Halvenor ----

namespace compositing {

enum Text {
  kTitle,
  kLongDescription,
  kNearOpacity,
  kFarOpacity,
  kUpperThreshold,
  kLowerThreshold,
  kKeyColor,
  kChooseBackground,
  kChooseInput,
  kThreshold,
  kTolerance,
  kKeyedInput,
  kDescription,
  kForegroundMissing
};

// The opacities keep the names that projects and their users know, although the first is that of the
// pixels nearest to the key colour.
ZOL_TEXT_TABLE kTexts[] = {
    "COLOR KEYER  on",
    ("&c0000FF&bLinear color keyer.\n&c000000&n\tLays keyground image on the background with transparency, "
     "defined by key-color."),
    "Non-Keyed area opacity",
    "Keyed area opacity",
    "Upper threshold",
    "Lower threshold",
    "Key color",
    "Choose Keyer Background",
    "Choose Keyer Input",
    "Threshold",
    "Tolerance",
    "Keyed input",
    "Replaces areas of keyed color in the foreground image with background",
    "Foreground input is not assigned",
};

/// Field ids, written by the host when the fields are declared.
struct {
  int background, keyedInput, color, lower, nearOpacity, upper, farOpacity;
} ids;

constexpr zol::Field kFields[] = {
    field::input(&ids.background, zol::kBackgroundLabel).bare(),
    field::input(&ids.keyedInput, kTexts[kKeyedInput]).bare(),
    field::color(&ids.color, "Color", 0xFF0000FF).label(kTexts[kKeyColor]).verbatim(),
    threshold(&ids.lower, "D1", 0.2).label(kTexts[kLowerThreshold]).verbatim().at(0),
    field::alpha(&ids.nearOpacity, "A1", 0).label(kTexts[kNearOpacity]).verbatim().at(0.25),
    threshold(&ids.upper, "D2", 0.4).label(kTexts[kUpperThreshold]).verbatim().at(0.75),
    field::alpha(&ids.farOpacity, "A2", 1).label(kTexts[kFarOpacity]).verbatim().at(1),
};

zol::ColorKey readKey(t_ZoHostInfo *host) {
  _color_t color;
  host->Services->ParamGetColor(host, ids.color, 0, &color, host->Time);
  const double lower = zol::paramDouble(host, ids.lower);
  const double nearOpacity = zol::paramDouble(host, ids.nearOpacity);
  const double upper = zol::paramDouble(host, ids.upper);
  const double farOpacity = zol::paramDouble(host, ids.farOpacity);
  return {color, lower, upper, nearOpacity, farOpacity};
}

pic *render(t_ZoHostInfo *host) {
  void *foregroundInput = zol::input(host, ids.keyedInput);
  if (foregroundInput == nullptr) {
    zol::showMessage(host, kTexts[kForegroundMissing]);
    return nullptr;
  }
  void *backgroundInput = zol::input(host, ids.background);
  const pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  const pic *foreground = zol::frameOf(host, foregroundInput);
  if (foreground == nullptr || (backgroundInput != nullptr && background == nullptr))
    return nullptr;
  const zol::ColorKey key = readKey(host);

  const pic &extent = background != nullptr ? *background : *foreground;
  zol::OwnedPic out(host, host->Services->PicCreate(extent.Width, extent.Height));
  if (!out) {
    zol::showMemoryError(host);
    return nullptr;
  }
  out->X = extent.X;
  out->Y = extent.Y;
  const zol::KeyedRows rows(key, *foreground, background, *out);
  if (!zol::forEachRow(host, rows.count(), [&](int row) { rows.lay(row); })) {
    out.reset();
    zol::showMessage(host, nullptr);
    return nullptr;
  }
  return out.release();
}

constexpr zol::Effect kEffect{
    .name = "Compositing/Color Keyer",
    .sign = "Color Keyer Zo1 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .description8 = kTexts[kDescription],
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace compositing

} // namespace

ZOL_EXPORT int ProcessKeyerDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, filter::kEffect, compositing::kEffect);
}
