// Recolor: turns hues, makes colours fuller, paler, lighter, darker or tinted, all of them or those near one
// hue. Where Hue, Saturation, Lightness and Tint are 0 it is a copy. Nothing clips and no bands appear: the
// hue turns on a wheel of 1530 steps.

#include "effects/filters/recolor.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/color/color_models.h"
#include "kernels/color/luma.h"
#include "kernels/color/recolor_rows.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kHue,
  kSaturation,
  kLightness,
  kColor,
  kTint,
  kFrom,
  kRange,
  kSoftness,
  kKeepBrightness
};

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image to recolor."),
    field::angle(kHue, "Hue", 0)
        .help("Turns all hues, in degrees: 120 makes red green, 360 is a full turn, 0 leaves them."),
    field::curve(kSaturation, "Saturation", zol::kSigned, 0)
        .help("Makes colors fuller, at 1 four times as full, or paler, at -1 gray. 0 leaves them. No color "
              "clips."),
    field::curve(kLightness, "Lightness", zol::kSigned, 0)
        .help("Lightens, at 1 to white, or darkens, at -1 to black. 0 changes nothing."),
    field::hlsColor(kColor, "Color", 0xFFC08040).help("The color of the tint."),
    field::curve(kTint, "Tint", zol::kShare, 0)
        .help("How much of the tint replaces the colors, the brightness kept: 0 none of it, 1 all."),
    field::color(kFrom, "From", 0xFFFF0000)
        .label("Affected color")
        .help("The hue that changes where Range is below 1."),
    field::curve(kRange, "Range", zol::kShare, 1)
        .help("How far from the affected color hues still change fully, in half turns of the color wheel: 1 "
              "changes all colors, gray too."),
    field::curve(kSoftness, "Softness", zol::kShare, 0.25)
        .help("Over how much beyond Range the change fades out, in half turns of the color wheel: 0 ends it "
              "at once."),
    field::toggle(kKeepBrightness, "KeepBrightness", false)
        .label("Keep &brightness")
        .help("Whether a turned hue keeps the brightness that the eye sees, and the tint its own color at "
              "every brightness."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Recolor  on", "Input",          "Hue",   "Saturation", "Lightness",        "Color",
    "Tint",        "Affected color", "Range", "Softness",   "Keep &brightness", "Changes colors",
};

constexpr char kDescription[] =
    "This effect changes colors: it turns hues, makes colors fuller or paler, lighter or darker, and tints "
    "them. Below a Range of 1 only colors near the affected one change. <br><br>Required inputs: Input "
    "image.";

/// Steps of the wheel, of 0..1529.
int turnOf(double degrees) {
  const auto steps = static_cast<int>(std::lround(4.25 * std::fmod(degrees, 360.0)));
  return (steps + 1530) % 1530;
}

zol::Rgb rgbOf(_color_t color) { return {color.r, color.g, color.b}; }

/// The tint of every luma: the colour of that lightness with the hue and the saturation of `color`, or
/// `color` itself moved to that luma.
void makeTint(_color_t color, bool keepsLuma, uint32_t (&tint)[256]) {
  uint8_t hue, lightness, chroma;
  zol::rgbToHls(&hue, &lightness, &chroma, color.r, color.g, color.b);
  const int fullest = std::max(1, 255 - std::abs(2 * lightness - 255));
  const auto saturation = static_cast<uint8_t>(std::min(255, 255 * chroma / fullest));
  for (int y = 0; y < 256; ++y) {
    zol::Rgb c = zol::withLuma(rgbOf(color), y);
    if (!keepsLuma) {
      uint8_t r, g, b;
      zol::hlsToRgb(&r, &g, &b, hue, static_cast<uint8_t>(y), saturation);
      c = {r, g, b};
    }
    tint[y] = static_cast<uint32_t>(c.red << 16 | c.green << 8 | c.blue);
  }
}

/// Range is below 1.
void readLimits(t_ZoHostInfo *host, double range, zol::Recoloring &how) {
  const _color_t from = zol::paramColor(host, kFrom);
  const double softness = zol::paramShare(host, kSoftness);
  uint8_t hue, lightness, chroma;
  zol::rgbToHls(&hue, &lightness, &chroma, from.r, from.g, from.b);
  how.isLimited = true;
  how.hue = hue;
  how.range = static_cast<int>(2048 * range);
  how.fading = std::max(1, static_cast<int>(2048 * softness)); // hues stand 16 apart: 1 ends it at once
  how.fullChroma = static_cast<int>(64 * (1 - range));
}

zol::Recoloring readRecoloring(t_ZoHostInfo *host) {
  zol::Recoloring how;
  how.turn = turnOf(zol::paramAngle(host, kHue));
  how.saturation = zol::in4096ths(zol::paramSigned(host, kSaturation));
  how.lightness = zol::in4096ths(zol::paramSigned(host, kLightness));
  how.tintAmount = zol::in4096ths(zol::paramShare(host, kTint));
  how.keepsLuma = zol::paramInt(host, kKeepBrightness) != 0;
  if (how.tintAmount != 0)
    makeTint(zol::paramColor(host, kColor), how.keepsLuma, how.tint);
  if (const double range = zol::paramShare(host, kRange); range < 1)
    readLimits(host, range, how);
  return how;
}

bool isNeutral(const zol::Recoloring &how) {
  return how.turn == 0 && how.saturation == 0 && how.lightness == 0 && how.tintAmount == 0;
}

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const zol::Recoloring how = readRecoloring(host);
  if (isNeutral(how))
    return zol::copyOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, zol::Area::of(*frame)));
  if (!out)
    return nullptr;
  const auto row = ZOL_SELECT(recolorRow);
  const int width = frame->Width;
  const bool finished = zol::forEachRow(host, frame->Height, [&](int y) {
    row(frame->Pixels + ptrdiff_t{y} * width, out->Pixels + ptrdiff_t{y} * width, width, how);
  });
  return finished ? out.release() : nullptr;
}

constexpr zol::Effect kRecolor{
    .name = "Filters/Color/Recolor",
    .sign = "Recolor Zo2 native",
    .version = 2,
    .section = "Recolor",
    .description = kDescription,
    .icon = recolor_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessRecolorDeclare(t_ZoHostInfo *host) { return zol::declare(host, kRecolor); }
