// Aureole: light around what is bright in its input, or around its outline. At Intensity 0 it is a copy.

#include "effects/filters/aureole.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/blur/glow_pyramid.h"

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kSource,
  kThreshold,
  kRadius,
  kFalloff,
  kIntensity,
  kColor,
  kTint,
  kMode,
  kOnly,
  kDither
};
enum Source { kBright, kOutline };

constexpr const char *kSources[] = {"Bright areas", "Outline"};
constexpr const char *kModes[] = {"Screen", "Add", "Behind"}; // in the order of GlowMode

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image that glows."),
    field::selector(kSource, "Source", kSources)
        .flags("0x0")
        .help("What glows: the bright areas of the image, or all of it, which shows around its outline."),
    field::curve(kThreshold, "Threshold", zol::kShare, 0.7)
        .help("Bright areas: the brightness from which on they glow, 0 to 1. At 1 nothing glows."),
    field::curve(kRadius, "Radius", zol::kShare, 0.3)
        .help("How far the light spreads, in tenths of the frame's width: 0 leaves it where it is."),
    field::curve(kFalloff, "Falloff", zol::kShare, 0.3)
        .help("How the light thins out: at 0 a bright core with a faint tail, at 1 an even glow."),
    field::curve(kIntensity, "Intensity", zol::kOpenShare, 0.6)
        .help("How strong the light is: 1 is as it comes, 0 none."),
    field::color(kColor, "Color", 0xFFFFFFFF).help("The color that Tint gives the light."),
    field::curve(kTint, "Tint", zol::kShare, 0)
        .help("How much of the color the light takes on: 0 leaves it as it is, 1 colors all of it."),
    field::selector(kMode, "Mode", kModes)
        .flags("0x0")
        .help("How the light lies: over the image without burning out, added to it, or behind it."),
    field::toggle(kOnly, "Only", false)
        .label("Aureole &only")
        .help("Whether the light is rendered alone, without the image."),
    field::toggle(kDither, "Dither", true)
        .label("&Dither output")
        .help("Whether the steps of a wide light are broken up by a fine pattern, which stands still."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Aureole  on",
    "Input",
    "Source",
    "Threshold",
    "Radius",
    "Falloff",
    "Intensity",
    "Color",
    "Tint",
    "Mode",
    "Aureole &only",
    "&Dither output",
    "Surrounds bright areas with light",
};

constexpr char kDescription[] = "This effect surrounds bright areas of the input image, or its outline, with "
                                "light. <br><br>Required inputs: Input image.";

struct Settings {
  zol::GlowSource source;
  zol::GlowLook look;
  double radius, falloff; // the radius in pixels
  bool dithers;

  /// Whether the input stays as it is.
  [[nodiscard]] bool isNeutral() const { return look.intensity == 0 && !look.only; }
};

Settings readSettings(t_ZoHostInfo *host) {
  Settings settings;
  settings.source = {zol::paramInt(host, kSource) == kOutline,
                     static_cast<int>(255 * zol::paramShare(host, kThreshold)), zol::paramColor(host, kColor),
                     zol::in4096ths(zol::paramShare(host, kTint))};
  settings.look = {zol::in4096ths(zol::paramWithin(host, kIntensity, 0, zol::kOpenEnd)),
                   static_cast<zol::GlowMode>(std::clamp(zol::paramInt(host, kMode), 0, 2)),
                   zol::paramInt(host, kOnly) != 0};
  settings.radius = zol::pixelsOf(host, zol::paramShare(host, kRadius));
  settings.falloff = zol::paramShare(host, kFalloff);
  settings.dithers = zol::paramInt(host, kDither) != 0;
  return settings;
}

/// Writes the canvas's pixels. False when the host wants to stop or, after a message, when memory runs out.
bool glow(t_ZoHostInfo *host, const zol::Area &canvas, const pic &picture, const Settings &settings,
          _color_t *out) {
  const int width = canvas.width();
  zol::GlowPyramid pyramid(zol::GlowProfile(settings.radius, settings.falloff), width, canvas.height());
  const zol::Scratch<_color_t> buffer(static_cast<size_t>(width));
  const zol::Scratch<zol::WidePixel> line(static_cast<size_t>(width) + zol::kGlowMargin);
  if (!pyramid || !buffer || !line) {
    zol::showMemoryError(host);
    return false;
  }
  const auto input = [&](int y) { return zol::canvasRow(canvas, &picture, canvas.top + y, buffer.data()); };
  const auto light = [&, makeLight = ZOL_SELECT(lightRow)](int y, zol::WidePixel *row) {
    makeLight(input(y), settings.source, row, width);
  };
  if (!pyramid.spread(light, [host] { return !zol::aborted(host); }))
    return false;
  const auto lay = ZOL_SELECT(layGlow);
  const auto toBytes = ZOL_SELECT(toBytes);
  return zol::forEachRow(host, canvas.height(), [&](int y) {
    const _color_t *pixels = input(y);
    if (pyramid.needsLight())
      light(y, line.data());
    lay(pyramid.row(y, line.data()), settings.look, pixels, line.data(), width);
    const zol::Rounding rounding =
        settings.dithers ? zol::Rounding::dithered(canvas.left, canvas.top + y) : zol::Rounding::nearest();
    toBytes(line.data(), rounding, pixels, out + ptrdiff_t{y} * width, width);
  });
}

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  if (settings.isNeutral())
    return zol::copyOf(host, frame);
  const zol::Area canvas = zol::canvasOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  const bool done = out && (canvas.isEmpty() || glow(host, canvas, *frame, settings, out->Pixels));
  return done ? out.release() : nullptr;
}

constexpr zol::Effect kAureole{
    .name = "Complex Filters/Aureole",
    .sign = "Aureole Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Aureole",
    .description = kDescription,
    .icon = aureole_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessAureolDeclare(t_ZoHostInfo *host) { return zol::declare(host, kAureole); }
