// Shutter: opens its input over the background, or in front of it a border that runs ahead: in blinds, doors,
// an iris or wedges. At Opening 0 it is a copy of the background, at 1 of the input.

#include "effects/compositing/shutter.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/compositing/shutter.h"
#include "kernels/simd/scratch.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kBackground,
  kOpening,
  kKind,
  kCount,
  kAngle,
  kCenterX,
  kCenterY,
  kSoftness,
  kBorder,
  kBorderColor,
  kInvert,
};

constexpr const char *kKinds[] = {"Blinds", "Doors", "Iris", "Radial"}; // in the order of ShutterKind
static_assert(std::size(kKinds) == zol::kShutterKinds);

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image that the shutter opens on."),
    field::input(kBackground, "Background")
        .help(
            "The image that the shutter shows where it is shut. It may be left out: the frame is transparent "
            "there."),
    field::curve(kOpening, "Opening", zol::kShare, 0)
        .rising()
        .help("How far the shutter is open: 0 shows the background alone, 1 the input alone."),
    field::selector(kKind, "Kind", kKinds)
        .help(
            "Blinds open strip by strip from one side, doors from the middle of each strip; an iris from its "
            "center, with blades or round; radial turns wedges about the center."),
    field::integer(kCount, "Count", 1, zol::kShutterBlades, 8)
        .label("Blades")
        .help("How many strips, doors or wedges there are, 1 to 64. An iris has 3 to 12 sides and is round "
              "otherwise."),
    field::angle(kAngle, "Angle", 0)
        .help("Where strips open to, or where the first side or wedge is, in degrees: 0 to the right, 90 "
              "down."),
    field::curve(kCenterX, "CenterX", zol::kOpenSigned, 0)
        .label("Center X")
        .help(
            "Where an iris, wedges or a single door open, in widths of the frame to the right of its middle: "
            "0 in the middle."),
    field::curve(kCenterY, "CenterY", zol::kOpenSigned, 0)
        .label("Center Y")
        .help(
            "Where an iris, wedges or a single door open, in heights of the frame below its middle: 0 in the "
            "middle."),
    field::curve(kSoftness, "Softness", zol::kShare, 0)
        .help("How soft the opening's edge is, in tenths of the frame's width. 0 leaves it sharp."),
    field::curve(kBorder, "Border", zol::kShare, 0)
        .help(
            "How wide the border is that runs ahead of the opening, in tenths of the frame's width. 0 draws "
            "none."),
    field::color(kBorderColor, "BorderColor", 0xFFFFFFFF)
        .label("Border color")
        .help("The color of the border."),
    field::toggle(kInvert, "Invert", false)
        .label("In&vert")
        .help("Whether the shutter closes over the background rather than opens on the input."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Shutter  on", "Input",
    "Background",  "Opening",
    "Kind",        "Blades",
    "Angle",       "Center X",
    "Center Y",    "Softness",
    "Border",      "Border color",
    "In&vert",     "Opens an image like a shutter",
};

constexpr char kDescription[] = "This effect opens the input over the background like a shutter: in blinds, "
                                "doors, an iris or wedges, with "
                                "sharp or soft edges and a border. <br><br>Required inputs: Input image. "
                                "Without a background the frame is "
                                "transparent where the shutter is shut.";

struct Settings {
  zol::ShutterLook look;
  double opening;
  _color_t borderColor; // opaque
  bool inverts;
};

Settings readSettings(t_ZoHostInfo *host) {
  constexpr double kFar = 1000;
  const double aspect = zol::shownAspect(host);
  const auto length = [&](Field field) { return zol::pixelsOf(host, zol::paramShare(host, field)) * aspect; };
  const auto center = [&](Field field) { return 0.5 + zol::paramWithin(host, field, -kFar, kFar); };
  Settings settings;
  settings.opening = zol::paramShare(host, kOpening);
  zol::ShutterLook &look = settings.look;
  look.kind =
      static_cast<zol::ShutterKind>(std::clamp(zol::paramInt(host, kKind), 0, zol::kShutterKinds - 1));
  look.blades = std::clamp(zol::paramInt(host, kCount), 1, zol::kShutterBlades);
  look.angle = zol::paramAngle(host, kAngle);
  look.centerX = center(kCenterX) * host->Width;
  look.centerY = center(kCenterY) * host->Height;
  look.width = host->Width;
  look.height = host->Height;
  look.aspect = aspect;
  look.softness = length(kSoftness);
  look.border = length(kBorder);
  settings.borderColor = zol::paramColor(host, kBorderColor);
  settings.borderColor.a = 255;
  settings.inverts = zol::paramInt(host, kInvert) != 0;
  return settings;
}

/// Writes the canvas's pixels. False when the host wants to stop or, after a message, when memory runs out.
bool compose(t_ZoHostInfo *host, const zol::Area &canvas, const pic *background, const pic &frame,
             const Settings &settings, _color_t *out) {
  const int width = canvas.width();
  const zol::Scratch<uint16_t> coverages(3 * size_t(width));
  const zol::Scratch<_color_t> border(static_cast<size_t>(width));
  if (!coverages || !border) {
    zol::showMemoryError(host);
    return false;
  }
  uint16_t *const inner = coverages.data(), *const outer = inner + width, *const between = outer + width;
  std::fill_n(border.data(), width, settings.borderColor);
  const zol::ShutterMask mask(settings.look, settings.opening, settings.inverts);
  const zol::Area lies = zol::coveredPart(canvas, zol::Area::of(frame));
  const int before = lies.left - canvas.left;
  const auto lay = ZOL_SELECT(layCovered);
  const auto borderRow = ZOL_SELECT(borderRow);
  const bool hasBorder = settings.look.border > 0;
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    _color_t *pixels = out + canvas.index(canvas.left, y);
    zol::writeCanvasRow(canvas, background, y, pixels);
    if (row == 0 || !mask.isUpright()) {
      mask.innerRow(y, canvas.left, width, inner);
      if (hasBorder) {
        mask.outerRow(y, canvas.left, width, outer);
        borderRow(inner, outer, between, width);
      }
    }
    if (hasBorder)
      lay(pixels, border.data(), between, width);
    if (lies.hasRow(y))
      lay(pixels + before, zol::pixelAt(frame, lies.left, y), inner + before, lies.width());
  });
}

pic *render(t_ZoHostInfo *host) {
  void *backgroundInput = zol::input(host, kBackground);
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  if (backgroundInput != nullptr && background == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  if (background != nullptr && settings.opening <= 0)
    return zol::copyOf(host, background);
  if (background == nullptr && settings.opening >= 1)
    return zol::copyOf(host, frame);
  const zol::Area canvas =
      background != nullptr ? zol::Area::of(*background) : zol::Area::ofSize(host->Width, host->Height);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  const bool done = out && compose(host, canvas, background, *frame, settings, out->Pixels);
  return done ? out.release() : nullptr;
}

constexpr zol::Effect kShutter{
    .name = "Compositing/Shutter",
    .sign = "Shutter Zo2 native",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
    .section = "Shutter",
    .description = kDescription,
    .icon = shutter_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessShutterDeclare(t_ZoHostInfo *host) { return zol::declare(host, kShutter); }
