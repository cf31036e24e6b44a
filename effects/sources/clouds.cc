// Clouds Generator: a sky of fractal noise that drifts, changes and, where Cycle says so, repeats. At
// Coverage 0 there is sky alone, at 1 cloud alone. Any frame alone has the same clouds.

#include "effects/sources/clouds.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/color/color_ramp.h"
#include "kernels/noise/octaves.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>

namespace {

namespace field = zol::field;

enum Field {
  kSkyColor,
  kSkyAlpha,
  kCloudColor,
  kCloudAlpha,
  kSeed,
  kMeshSize,
  kOctaves,
  kRoughness,
  kEvolution,
  kCycle,
  kOffsetX,
  kOffsetY,
  kZoom,
  kCoverage,
  kContrast,
  kKind,
  kDither
};

constexpr const char *kKinds[] = {"Clouds", "Billows", "Ridges"}; // in the order of NoiseKind

constexpr int kMostMesh = 9, kMostCycle = 1000;
constexpr double kMostEvolution = 100, kFarthest = 10, kLeastZoom = 0.1, kMostZoom = 10;

constexpr zol::Field kFields[] = {
    field::color(kSkyColor, "SkyColor", 0xFF3A6EA5).label("Sky color").help("The color between the clouds."),
    field::alpha(kSkyAlpha, "SkyAlpha", 1)
        .label("Sky alpha")
        .help("How opaque the sky is: 0 leaves the clouds alone, 1 is opaque."),
    field::color(kCloudColor, "CloudColor", 0xFFFFFFFF).label("Cloud color").help("The color of the clouds."),
    field::alpha(kCloudAlpha, "CloudAlpha", 1)
        .label("Cloud alpha")
        .help("How opaque the clouds are: 0 is transparent, 1 opaque."),
    field::integer(kSeed, "Seed", 0, 65535, 0).help("Which clouds they are: every number gives others."),
    field::integer(kMeshSize, "MeshSize", 1, kMostMesh, 8)
        .label("Mesh size")
        .help("How large the largest shapes are: at 9 half the frame's width, at every number less half as "
              "much."),
    field::integer(kOctaves, "Octaves", 1, zol::kMostOctaves, 6)
        .help("How many sizes of shapes there are, each half as large as the one before. What would be "
              "smaller than a pixel is left out."),
    field::curve(kRoughness, "Roughness", zol::kShare, 0.5)
        .help("How much each size counts beside the one before: 0 leaves the largest alone, 1 shows all "
              "alike."),
    field::curve(kEvolution, "Evolution", {0, kMostEvolution, "ZodfNone"}, 0)
        .help("Changes the clouds where they are: at every whole number the largest shapes are new ones. "
              "Smaller ones change faster."),
    field::integer(kCycle, "Cycle", 0, kMostCycle, 0)
        .help("The Evolution after which the clouds repeat, for loops without a seam: 0 is never."),
    field::curve(kOffsetX, "OffsetX", {-kFarthest, kFarthest, "ZodfNone"}, 0)
        .label("Offset X")
        .help("Moves the clouds to the right, in widths of the frame: 0 leaves them in place."),
    field::curve(kOffsetY, "OffsetY", {-kFarthest, kFarthest, "ZodfNone"}, 0)
        .label("Offset Y")
        .help("Moves the clouds down, in heights of the frame: 0 leaves them in place."),
    field::curve(kZoom, "Zoom", {kLeastZoom, kMostZoom, "ZodfBothLimits"}, 1)
        .help("How much all shapes are enlarged about the middle of the frame: 1 leaves them as they are."),
    field::curve(kCoverage, "Coverage", zol::kShare, 0.5)
        .help("How much of the sky is covered: 0 is sky alone, 1 cloud alone."),
    field::curve(kContrast, "Contrast", zol::kShare, 0.3)
        .help("How hard the edges of the clouds are: 0 is soft, 1 hard."),
    field::selector(kKind, "Kind", kKinds)
        .help("Even clouds, round ones with creases between them, or bright veins."),
    field::toggle(kDither, "Dither", true)
        .label("&Dither output")
        .help("Whether the steps between neighboring colors are broken up by a fine pattern, which stands "
              "still."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Clouds  on", "Sky color", "Sky alpha", "Cloud color",    "Cloud alpha",      "Seed",     "Mesh size",
    "Octaves",    "Roughness", "Evolution", "Cycle",          "Offset X",         "Offset Y", "Zoom",
    "Coverage",   "Contrast",  "Kind",      "&Dither output", "Generates clouds",
};

constexpr char kDescription[] =
    "This effect generates clouds that drift, change and, if wanted, repeat: white ones on a blue sky, or "
    "smoke, fog, marble and glowing veins by other colors and kinds. <br><br>This effect has no inputs.";

zol::ColorRamp readRamp(t_ZoHostInfo *host) {
  const auto color = [host](Field colorField, Field alphaField) {
    _color_t value = zol::paramColor(host, colorField);
    value.a = static_cast<uint8_t>(zol::paramShare(host, alphaField) * 255);
    return value;
  };
  const zol::ColorStop stops[] = {{0, color(kSkyColor, kSkyAlpha)}, {65536, color(kCloudColor, kCloudAlpha)}};
  return zol::ColorRamp(stops);
}

zol::OctaveSettings readOctaves(t_ZoHostInfo *host) {
  const auto whole = [host](Field field, int least, int most) {
    return std::clamp(zol::paramInt(host, field), least, most);
  };
  zol::OctaveSettings settings;
  settings.seed = static_cast<uint32_t>(whole(kSeed, 0, 65535));
  const int mesh = whole(kMeshSize, 1, kMostMesh);
  settings.octaves = whole(kOctaves, 1, zol::kMostOctaves);
  settings.roughness = zol::in4096ths(zol::paramShare(host, kRoughness));
  settings.evolution = zol::paramWithin(host, kEvolution, 0, kMostEvolution);
  settings.cycle = whole(kCycle, 0, kMostCycle);
  settings.right = zol::paramWithin(host, kOffsetX, -kFarthest, kFarthest) * host->Width;
  settings.down = zol::paramWithin(host, kOffsetY, -kFarthest, kFarthest) * host->Height;
  const double zoom = std::max(zol::paramWithin(host, kZoom, 0, kMostZoom), kLeastZoom);
  settings.cellWidth = std::ldexp(host->Width, mesh - 10) * zoom;
  settings.cellHeight = settings.cellWidth * zol::pixelAspect(host);
  settings.kind = static_cast<zol::NoiseKind>(whole(kKind, 0, 2));
  return settings;
}

pic *render(t_ZoHostInfo *host) {
  const zol::ColorRamp ramp = readRamp(host);
  const zol::OctaveSettings settings = readOctaves(host);
  const double coverage = zol::paramShare(host, kCoverage), contrast = zol::paramShare(host, kContrast);
  const int bias = static_cast<int>((2 * coverage - 1) * 6144);
  const int gain = zol::in4096ths(1 + 7 * (contrast * contrast));
  const bool dithers = zol::paramInt(host, kDither) != 0;

  zol::OwnedPic out(host, zol::createAt(host, zol::Area::ofSize(host->Width, host->Height)));
  if (!out)
    return nullptr;
  const int width = out->Width;
  zol::NoiseOctaves octaves(settings, width, out->Height);
  const zol::Scratch<int32_t> places(static_cast<size_t>(width));
  if (!octaves || !places) {
    zol::showMemoryError(host);
    return nullptr;
  }
  const bool finished = zol::forEachRow(host, out->Height, [&](int y) {
    octaves.row(y, bias, gain, places.data());
    const auto rounding = dithers ? zol::RampRounding::dithered(0, y) : zol::RampRounding::nearest();
    ZOL_SELECT(rampRow)
    (ramp.colors, places.data(), rounding, out->Pixels + ptrdiff_t{y} * width, width);
  });
  return finished ? out.release() : nullptr;
}

constexpr zol::Effect kClouds{
    .name = "Sources/Clouds Generator",
    .sign = "Clouds generator (Zo2)",
    .version = 10,
    .section = "Clouds",
    .description = kDescription,
    .icon = clouds_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessCloudsDeclare(t_ZoHostInfo *host) { return zol::declare(host, kClouds); }
