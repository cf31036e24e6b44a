// Drop Shadow: lays a soft shadow under its input, which may reach beyond the input's own rectangle. At
// Opacity 0 it is a copy. One effect for Halvenor, and a real-time filter for the other hosts.

#include "effects/filters/drop_shadow.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/real_time.h"
#include "frame/values.h"
#include "kernels/blur/soften.h"
#include "kernels/color/wide.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/compositing/shadow_rows.h"

namespace {

namespace field = zol::field;

enum Field { kInput, kColor, kOpacity, kAngle, kDistance, kSoftness, kDensity, kShadowOnly, kDither };

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image that casts the shadow, where it is opaque."),
    field::color(kColor, "Color", 0xFF000000).help("The color of the shadow."),
    field::alpha(kOpacity, "Opacity", 0.6)
        .help("How opaque the shadow is: 0 shows none, 1 hides what lies below."),
    field::angle(kAngle, "Angle", 45)
        .help("Where the shadow falls, in degrees: 0 to the right, 90 down, 45 between the two."),
    field::curve(kDistance, "Distance", zol::kOpenShare, 0.1)
        .help("How far the shadow falls, in tenths of the frame's width: 0 leaves it right below the image."),
    field::curve(kSoftness, "Softness", zol::kShare, 0.1)
        .help("How far the shadow's edge spreads, in tenths of the frame's width: 0 leaves it sharp."),
    field::curve(kDensity, "Density", zol::kShare, 0)
        .help("Thickens a soft shadow, at 1 eight times, so that it covers more before it fades out. 0 "
              "changes nothing."),
    field::toggle(kShadowOnly, "ShadowOnly", false)
        .label("Shadow &only")
        .help("Whether the shadow is rendered alone, without the image."),
    field::toggle(kDither, "Dither", true)
        .label("&Dither output")
        .help("Whether the steps of a wide soft shadow are broken up by a fine pattern, which stands still."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Drop Shadow  on",
    "Input",
    "Color",
    "Opacity",
    "Angle",
    "Distance",
    "Softness",
    "Density",
    "Shadow &only",
    "&Dither output",
    "Lays a soft shadow under the input image",
};

constexpr char kDescription[] = "This effect lays a soft shadow under the input image. Where the image is "
                                "smaller than the frame the shadow "
                                "reaches beyond it. <br><br>Required inputs: Input image.";

struct Settings {
  zol::ShadowLook look;
  double softness; // pixels across
  bool shadowOnly;

  /// Whether the input stays as it is.
  [[nodiscard]] bool isNeutral() const { return look.opacity == 0 && !shadowOnly; }
};

Settings readSettings(t_ZoHostInfo *host) {
  const auto lengthUpTo = [host](Field field, double most) {
    return zol::pixelsOf(host, zol::paramWithin(host, field, 0, most));
  };
  Settings settings;
  zol::ShadowLook &look = settings.look;
  look.color = zol::paramColor(host, kColor);
  look.opacity = zol::in4096ths(zol::paramShare(host, kOpacity));
  const zol::Direction away(zol::paramAngle(host, kAngle));
  const double distance = lengthUpTo(kDistance, zol::kOpenEnd);
  look.right = zol::inSixteenths(distance * away.right);
  look.down = zol::inSixteenths(distance * away.down * zol::pixelAspect(host));
  settings.softness = lengthUpTo(kSoftness, 1);
  look.gain = 4096 + 7 * zol::in4096ths(zol::paramShare(host, kDensity));
  settings.shadowOnly = zol::paramInt(host, kShadowOnly) != 0;
  look.dithers = zol::paramInt(host, kDither) != 0;
  return settings;
}

/// The canvas's alphas, softened. False when the host wants to stop or, after a message, when memory runs
/// out.
bool writeAlphas(t_ZoHostInfo *host, const zol::Area &canvas, const pic &picture, double softness,
                 _color_t *buffer, uint16_t *alphas) {
  const int width = canvas.width(), height = canvas.height();
  const auto toWide = ZOL_SELECT(alphaToWide);
  const bool taken = zol::forEachRow(host, height, [&](int row) {
    toWide(zol::canvasRow(canvas, &picture, canvas.top + row, buffer), alphas + ptrdiff_t{row} * width,
           width);
  });
  if (!taken)
    return false;
  const zol::Softening soften(softness, softness * zol::pixelAspect(host), width, height);
  if (!soften) {
    zol::showMemoryError(host);
    return false;
  }
  return soften(alphas, [host] { return !zol::aborted(host); });
}

/// Writes the canvas's pixels: the shadow and the picture over it. False as above.
bool compose(t_ZoHostInfo *host, const zol::Area &canvas, _color_t *out, const pic &picture,
             const Settings &settings) {
  if (canvas.isEmpty())
    return true;
  const int width = canvas.width(), height = canvas.height();
  const zol::Scratch<uint16_t> alphas(static_cast<size_t>(width) * static_cast<size_t>(height));
  const zol::Scratch<_color_t> buffer(static_cast<size_t>(width));
  if (!alphas || !buffer) {
    zol::showMemoryError(host);
    return false;
  }
  if (!writeAlphas(host, canvas, picture, settings.softness, buffer.data(), alphas.data()))
    return false;
  zol::ShadowRows shadow(alphas.data(), width, height, canvas.left, canvas.top, settings.look);
  if (!shadow) {
    zol::showMemoryError(host);
    return false;
  }
  const auto layRow = ZOL_SELECT(layPixels);
  return zol::forEachRow(host, height, [&](int row) {
    const _color_t *upper = zol::canvasRow(canvas, &picture, canvas.top + row, buffer.data());
    _color_t *pixels = out + ptrdiff_t{row} * width;
    shadow.cast(row, upper, pixels);
    if (!settings.shadowOnly)
      layRow(pixels, upper, width, {});
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
  return out && compose(host, canvas, out->Pixels, *frame, settings) ? out.release() : nullptr;
}

int renderRT(t_ZoHostInfo *host) {
  if (!zol::requirePictureBuffers(host))
    return 0;
  const pic out = zol::pictureOf(host, host->OutputBuffer),
            frame = zol::pictureOf(host, host->InputBuffers[0]);
  const Settings settings = readSettings(host);
  if (settings.isNeutral()) {
    zol::copyShared(out, frame);
    return 1;
  }
  return compose(host, zol::Area::of(out), out.Pixels, frame, settings) ? 1 : 0;
}

constexpr zol::Effect kShadow{
    .name = "Complex Filters/Drop Shadow",
    .sign = "DropShadow Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
    .section = "DropShadow",
    .description = kDescription,
    .icon = drop_shadow_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

constexpr zol::Effect kStandardShadow{
    .name = "Filters/Standard/Drop Shadow",
    .sign = "DropShadow Qb filter",
    .version = 1,
    .hosts = zol::Hosts::allButHalvenor,
    .section = "DropShadow",
    .description = kDescription,
    .type = "Filter",
    .icon = drop_shadow_xpm,
    .init = zol::defaults<kFields>,
    .renderVideoRT = renderRT,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessDropShadowDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kShadow, kStandardShadow);
}
