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

// ---- The filter for every host ----

namespace filter {

constexpr char kSection[] = "ColorKeyer";

/// Field ids, written by the host when the fields are declared.
struct {
  int input, background, color, lower, upper, opacity;
} field;

int init(t_ZoHostInfo *host) {
  const _color_t blue = {255, 200, 0, 255};
  host->Services->ParamSetColor(host, field.color, 0, &blue, 0.5);
  host->Services->ParamSetFloat(host, field.lower, 0, 0.0, 0.2);
  host->Services->ParamSetFloat(host, field.opacity, 0, 0.25, 1.0);
  host->Services->ParamSetFloat(host, field.upper, 0, 0.75, 0.4);
  return 1;
}

zol::ColorKey readKey(t_ZoHostInfo *host) {
  _color_t color;
  host->Services->ParamGetColor(host, field.color, 0, &color, host->Time);
  const double lower = zol::paramDouble(host, field.lower);
  const double opacity = zol::paramDouble(host, field.opacity);
  const double upper = zol::paramDouble(host, field.upper);
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

void declare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", kSection);
  eff.begin("Color Keyer Qb5 native", "Filters/Standard/Color Keyer", 1);
  eff.descriptionW("Replaces areas of specified color in the foreground image with background");
  eff.init(init);
  eff.renderVideoRT(renderRT);
  eff.type("Filter");
  const auto add = [&](int &id, const char *kind, const char *name, const char *label, const char *flags) {
    eff.send(R"(*(int *))" ZOL_ADDRESS R"( = ZoDataFieldAdd( &eff.df, "%s", "%s", (word *))" ZOL_ADDRESS
             ", %s );",
             zol::address(&id), kind, name, eff.word(label), flags);
  };
  add(field.input, "Input", "Input", "Input", "0x0");
  add(field.background, "Input", "Background", "Background", "0x0");
  add(field.color, "RGBColor", "Color", "Color", "ZodfHideCurve");
  add(field.lower, "FloatA", "D1", "Threshold1", "ZodfMinLimit|ZodfMaxLimit|ZodfHideCurve");
  add(field.upper, "FloatA", "D2", "Threshold2", "ZodfMinLimit|ZodfMaxLimit|ZodfHideCurve");
  add(field.opacity, "Alpha", "Opacity", "Opacity", "ZodfHideCurve");
  eff.end();
}

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
} field;

int init(t_ZoHostInfo *host) {
  const _color_t blue = {255, 0, 0, 255};
  host->Services->ParamSetColor(host, field.color, 0, &blue, 0.5);
  host->Services->ParamSetFloat(host, field.lower, 0, 0.0, 0.2);
  host->Services->ParamSetFloat(host, field.nearOpacity, 0, 0.25, 0.0);
  host->Services->ParamSetFloat(host, field.upper, 0, 0.75, 0.4);
  host->Services->ParamSetFloat(host, field.farOpacity, 0, 1.0, 1.0);
  return 1;
}

zol::ColorKey readKey(t_ZoHostInfo *host) {
  _color_t color;
  host->Services->ParamGetColor(host, field.color, 0, &color, host->Time);
  const double lower = zol::paramDouble(host, field.lower);
  const double nearOpacity = zol::paramDouble(host, field.nearOpacity);
  const double upper = zol::paramDouble(host, field.upper);
  const double farOpacity = zol::paramDouble(host, field.farOpacity);
  return {color, lower, upper, nearOpacity, farOpacity};
}

pic *render(t_ZoHostInfo *host) {
  void *foregroundInput = zol::input(host, field.keyedInput);
  if (foregroundInput == nullptr) {
    zol::showMessage(host, kTexts[kForegroundMissing]);
    return nullptr;
  }
  void *backgroundInput = zol::input(host, field.background);
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

void declare(t_ZoHostInfo *host) {
  const zol::Declaration eff(host, "eff", nullptr);
  eff.begin("Color Keyer Zo1 native", "Compositing/Color Keyer", 1);
  eff.description(kTexts[kDescription]);
  eff.init(init);
  eff.renderVideo(render);
  const auto addInput = [&](int &id, const char *label) {
    eff.send(R"(*(int *))" ZOL_ADDRESS R"( = ZoDataFieldAdd( &eff.df, "Input", "%s" );)", zol::address(&id),
             label);
  };
  const auto add = [&](int &id, const char *kind, const char *name, Text label, const char *flags) {
    eff.send(R"(*(int *))" ZOL_ADDRESS R"( = ZoDataFieldAdd( &eff.df, "%s", "%s", "%s", %s );)",
             zol::address(&id), kind, name, kTexts[label], flags);
  };
  addInput(field.background, COMMON_STR[zol::kTextBackground]);
  addInput(field.keyedInput, kTexts[kKeyedInput]);
  add(field.color, "RGBColor", "Color", kKeyColor, "ZodfHideCurve");
  add(field.lower, "FloatA", "D1", kLowerThreshold, "ZodfMinLimit|ZodfMaxLimit|ZodfHideCurve");
  add(field.nearOpacity, "Alpha", "A1", kNearOpacity, "ZodfHideCurve");
  add(field.upper, "FloatA", "D2", kUpperThreshold, "ZodfMinLimit|ZodfMaxLimit|ZodfHideCurve");
  add(field.farOpacity, "Alpha", "A2", kFarOpacity, "ZodfHideCurve");
  eff.end();
}

} // namespace compositing

} // namespace

ZOL_EXPORT int ProcessKeyerDeclare(t_ZoHostInfo *host) {
  filter::declare(host);
  if (zol::hostIs(host, "Halvenor"))
    compositing::declare(host);
  return 1;
}
