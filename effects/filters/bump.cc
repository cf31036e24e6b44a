// Bump: lights an image as if its brightness, its alpha or another image were the height of its ground. At
// Height 0 it is a copy, and so is flat ground.

#include "effects/filters/bump.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/blur/soften.h"
#include "kernels/relief/relief_rows.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kMap,
  kUseAlpha,
  kHeight,
  kSmoothness,
  kLight,
  kAngle,
  kSlant,
  kLightX,
  kLightY,
  kLightZ,
  kAmbient,
  kShine,
  kGloss,
  kLightColor,
};
enum Light { kDistant, kPoint };

constexpr const char *kLights[] = {"Distant", "Point"};

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image that is lit."),
    field::input(kMap, "Map")
        .label("Height map")
        .help(
            "The image whose brightness is the height. It may be left out: then it is the lit image's own."),
    field::toggle(kUseAlpha, "UseAlpha", false)
        .label("Use image &alpha")
        .help("Whether alpha is the height rather than brightness."),
    field::curve(kHeight, "Height", zol::kOpenSigned, 0.3)
        .help("How high white stands above black, in tenths of the frame's width. Below 0 it lies deeper, 0 "
              "leaves the image as it is."),
    field::curve(kSmoothness, "Smoothness", zol::kShare, 0.02)
        .help("How far heights are softened, in tenths of the frame's width. 0 leaves every grain."),
    field::selector(kLight, "Light", kLights)
        .flags("0x0")
        .help("A distant light falls from one direction, a point light from a place near the image."),
    field::angle(kAngle, "Angle", 225)
        .label("Light from")
        .help("Where a distant light comes from, in degrees: 0 from the right, 90 from below, 225 from the "
              "upper left."),
    field::curve(kSlant, "Slant", zol::kShare, 0.6)
        .help("How low a distant light stands: 0 shines straight down and leaves slopes dark alike, 1 grazes "
              "the image."),
    field::curve(kLightX, "LightX", zol::kOpenSigned, -0.25)
        .help("Where a point light is, in widths of the frame to the right of its middle: 0 in the middle."),
    field::curve(kLightY, "LightY", zol::kOpenSigned, -0.25)
        .help("Where a point light is, in heights of the frame below its middle: 0 in the middle."),
    field::curve(kLightZ, "LightZ", zol::kOpenShare, 0.2)
        .help("How far a point light is before the image, in widths of the frame; 0 is close to it."),
    field::curve(kAmbient, "Ambient", zol::kShare, 0)
        .help("How much of the light comes from everywhere: 0 none, 1 all, which leaves no relief."),
    field::curve(kShine, "Shine", zol::kShare, 0).help("How much of the light slopes mirror: 0 none, 1 all."),
    field::curve(kGloss, "Gloss", zol::kShare, 0.5)
        .help(
            "How polished the ground is: 0 gives wide, 1 small bright spots. Without Shine it does nothing."),
    field::color(kLightColor, "LightColor", 0xFFFFFFFF).help("The color of the shine."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Bump  on", "Input",      "Height map", "Use image &alpha", "Height",         "Smoothness",
    "Light",    "Light from", "Slant",      "LightX",           "LightY",         "LightZ",
    "Ambient",  "Shine",      "Gloss",      "LightColor",       "Makes a relief",
};

constexpr char kDescription[] =
    "This effect lights an image as if its brightness, its alpha or a height map stood out of it. Flat areas "
    "keep their colors. <br><br>Required inputs: Input image. Without a height map the image is its own.";

zol::Vector3 vector(double x, double y, double z) {
  return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
}

zol::Vector3 readLight(t_ZoHostInfo *host, bool isPoint) {
  if (isPoint) {
    const double x = zol::paramWithin(host, kLightX, -zol::kOpenEnd, zol::kOpenEnd);
    const double y = zol::paramWithin(host, kLightY, -zol::kOpenEnd, zol::kOpenEnd);
    const double z = zol::paramWithin(host, kLightZ, 0, zol::kOpenEnd);
    return vector((0.5 + x) * host->Width, (0.5 + y) * host->Height, (0.05 + z) * host->Width);
  }
  const zol::Direction from(zol::paramAngle(host, kAngle)), slant(80 * zol::paramShare(host, kSlant));
  return vector(slant.down * from.right, slant.down * from.down, slant.right);
}

zol::Relief readRelief(t_ZoHostInfo *host) {
  zol::Relief relief{};
  const double aspect = zol::pixelAspect(host);
  const double height = zol::paramWithin(host, kHeight, -zol::kOpenEnd, zol::kOpenEnd);
  const double slope = height * host->Width / (80 * 65025); // in tenths, of sums that are eight times as much
  relief.across = static_cast<float>(slope);
  relief.down = static_cast<float>(slope * aspect);
  relief.aspect = static_cast<float>(aspect);
  relief.isPoint = zol::paramInt(host, kLight) == kPoint;
  relief.light = readLight(host, relief.isPoint);
  relief.ambient = static_cast<float>(zol::paramShare(host, kAmbient));
  relief.shine = static_cast<float>(zol::paramShare(host, kShine));
  const double squarings = 2 + 6 * zol::paramShare(host, kGloss);
  relief.squarings = static_cast<int>(squarings);
  relief.part = static_cast<float>(squarings - relief.squarings);
  const _color_t color = zol::paramColor(host, kLightColor);
  relief.color = static_cast<uint32_t>(color.r << 16 | color.g << 8 | color.b);
  return relief;
}

/// Writes a row of heights over the area: those of the ground at the same places of the frame, beyond it
/// those of its edge.
void writeHeights(const zol::Area &area, const pic &ground, bool ofAlpha, int y, uint16_t *row) {
  const zol::Area lies = zol::Area::of(ground);
  const int line = std::clamp(y, lies.top, lies.bottom - 1);
  const int left = std::clamp(area.left, lies.left, lies.right - 1);
  const int right = std::clamp(area.right, left + 1, lies.right);
  const int width = area.width();
  const int begin = std::clamp(left - area.left, 0, width - 1), end = std::min(begin + right - left, width);
  ZOL_SELECT(heightRow)(zol::pixelAt(ground, left, line), ofAlpha, row + begin, end - begin);
  std::fill(row, row + begin, row[begin]);
  std::fill(row + end, row + width, row[end - 1]);
}

/// Lights the frame on the ground into `out`. False when the host wants to stop or, after a message, when
/// memory runs out.
bool light(t_ZoHostInfo *host, const pic &frame, const pic &ground, const zol::Relief &relief, pic &out) {
  const zol::Area area = zol::Area::of(frame);
  const double smoothness = zol::pixelsOf(host, zol::paramShare(host, kSmoothness));
  const bool ofAlpha = zol::paramInt(host, kUseAlpha) != 0;
  const zol::Softening soften(smoothness, smoothness * zol::pixelAspect(host), area.width(), area.height());
  const zol::Scratch<uint16_t> heights(size_t(area.width()) * size_t(area.height()));
  if (!soften || !heights) {
    zol::showMemoryError(host);
    return false;
  }
  const auto row = [&](int y) {
    return heights.data() + ptrdiff_t{std::clamp(y, 0, area.height() - 1)} * area.width();
  };
  const auto lightRow = ZOL_SELECT(reliefRow);
  return zol::forEachRow(host, area.height(),
                         [&](int y) { writeHeights(area, ground, ofAlpha, area.top + y, row(y)); }) &&
         soften(heights.data(), [host] { return !zol::aborted(host); }) &&
         zol::forEachRow(host, area.height(), [&](int y) {
           const ptrdiff_t at = ptrdiff_t{y} * area.width();
           lightRow(relief, frame.Pixels + at, row(y - 1), row(y), row(y + 1), area.left, area.top + y,
                    area.width(), out.Pixels + at);
         });
}

/// Tells the host of the one frame that cannot be had; true where it wants no more.
bool stopsAtFailure(t_ZoHostInfo *host) { return host->Services->ErrorCountReport(host, 0, 0, 1) != 0; }

pic *render(t_ZoHostInfo *host) {
  void *input = zol::input(host, kInput);
  if (input == nullptr) {
    zol::showMessage(host, "Input not assigned");
    return nullptr;
  }
  pic *frame = zol::frameOf(host, input);
  if (frame == nullptr) {
    stopsAtFailure(host);
    return nullptr;
  }
  void *map = zol::input(host, kMap);
  const pic *ground = map != nullptr ? zol::frameOf(host, map) : frame;
  if (ground == nullptr && stopsAtFailure(host))
    return nullptr;
  const zol::Relief relief = readRelief(host);
  const auto isEmpty = [](const pic &picture) { return zol::Area::of(picture).isEmpty(); };
  if (ground == nullptr || relief.across == 0 || isEmpty(*frame) || isEmpty(*ground))
    return zol::copyOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, zol::Area::of(*frame)));
  return out && light(host, *frame, *ground, relief, *out) ? out.release() : nullptr;
}

constexpr zol::Effect kBump{
    .name = "Complex Filters/Bump",
    .sign = "Bump Zo2 native",
    .version = 4,
    .hosts = zol::Hosts::halvenor,
    .section = "Bump",
    .description = kDescription,
    .icon = bump_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessBumpDeclare(t_ZoHostInfo *host) { return zol::declare(host, kBump); }
