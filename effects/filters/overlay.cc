// Overlay: lays its input over the background, moved by fractions of a pixel and in any blending mode. At
// Opacity 0 it is a copy of the background.

#include "effects/filters/overlay.xpm"
#include "effects/lay_modes.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/real_time.h"
#include "frame/values.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/sampling/moved_picture.h"

namespace {

namespace field = zol::field;

enum Field { kBackground, kInput, kX, kY, kOpacity, kMode, kInside };

constexpr zol::Field kFields[] = {
    field::input(kBackground, "Background")
        .clip()
        .help("The image below. It may be left out: the overlay then stands on a transparent frame."),
    field::input(kInput, "Input").label("Overlay").help("The image that is laid over the background."),
    field::curve(kX, "X", zol::kOpenSigned, 0)
        .help("Moves the overlay to the right, in widths of the frame: 0.5 is half a frame, 0 leaves it in "
              "place."),
    field::curve(kY, "Y", zol::kOpenSigned, 0)
        .help("Moves the overlay down, in heights of the frame: 0.5 is half a frame, 0 leaves it in place."),
    field::alpha(kOpacity, "Opacity", 1)
        .help("How opaque the overlay is: 0 shows the background alone, 1 the overlay as it is."),
    field::selector(kMode, "Mode", zol::kLayModeItems)
        .flags("0x0")
        .help("What the colors of both images make together. Normal shows the overlay's own."),
    field::toggle(kInside, "Inside", false)
        .label("&Inside background only")
        .help("Whether the overlay shows only where the background is, whose alpha stays as it is."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Overlay  on",
    "Background",
    "Overlay",
    "X",
    "Y",
    "Opacity",
    "Mode",
    "&Inside background only",
    "Lays an image over the input image",
};

constexpr char kDescription[] =
    "This effect lays an image over the background, moved, more or less opaque and in one of sixteen "
    "blending "
    "modes. <br><br>Required inputs: Overlay. Without a background it stands on a transparent frame.";

struct Settings {
  zol::Laying laying;
  int right, down; // sixteenths of a pixel
};

Settings readSettings(t_ZoHostInfo *host) {
  const auto share = [host](Field field) {
    return zol::paramWithin(host, field, -zol::kOpenEnd, zol::kOpenEnd);
  };
  Settings settings;
  settings.right = zol::inSixteenths(share(kX) * host->Width);
  settings.down = zol::inSixteenths(share(kY) * host->Height);
  settings.laying.opacity = zol::in4096ths(zol::paramShare(host, kOpacity));
  settings.laying.mode = zol::paramLayMode(host, kMode);
  settings.laying.inside = zol::paramInt(host, kInside) != 0;
  return settings;
}

/// Writes the canvas's pixels: the background, or nothing where it is null, and the overlay over it. False
/// when the host wants to stop or, after a message, when memory runs out.
bool compose(t_ZoHostInfo *host, const zol::Area &canvas, _color_t *out, const pic *background,
             const pic &overlay, const Settings &settings) {
  zol::MovedPicture moved(overlay, settings.right, settings.down);
  if (!moved) {
    zol::showMemoryError(host);
    return false;
  }
  const zol::Area lies = zol::coveredPart(canvas, moved.area());
  const auto layRow = ZOL_SELECT(layPixels);
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    _color_t *pixels = out + canvas.index(canvas.left, y);
    zol::writeCanvasRow(canvas, background, y, pixels);
    if (lies.hasRow(y))
      layRow(pixels + (lies.left - canvas.left), moved.row(y) + (lies.left - moved.area().left), lies.width(),
             settings.laying);
  });
}

pic *render(t_ZoHostInfo *host) {
  void *backgroundInput = zol::input(host, kBackground);
  pic *overlay = zol::requiredFrame(host, kInput, "Input not assigned");
  if (overlay == nullptr)
    return nullptr;
  pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  if (backgroundInput != nullptr && background == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  if (settings.laying.opacity == 0)
    return background != nullptr ? zol::copyOf(host, background) : zol::createCanvas(host, nullptr);
  const zol::Area canvas = zol::canvasOf(host, background);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  const bool done = out && compose(host, canvas, out->Pixels, background, *overlay, settings);
  return done ? out.release() : nullptr;
}

int renderRT(t_ZoHostInfo *host) {
  if (!zol::requirePictureBuffers(host))
    return 0;
  const zol::LayingBuffers buffers(host, zol::hostIs(host, "Halvenor"));
  const zol::Area frame = zol::Area::of(buffers.out);
  return compose(host, frame, buffers.out.Pixels, &buffers.background, buffers.upper, readSettings(host)) ? 1
                                                                                                          : 0;
}

constexpr zol::Effect kOverlay{
    .name = "Filters/Overlay",
    .nameInQuorbel = "Filters/Standard/Overlay",
    .sign = "Overlay for Qb4",
    .version = 1,
    .section = "Overlay",
    .description = kDescription,
    .type = "Filter",
    .icon = overlay_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .renderVideoRT = renderRT,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessOverlayDeclare(t_ZoHostInfo *host) { return zol::declare(host, kOverlay); }
