// Lightning: a bolt that forks, from one place to another or along a geometry, over the input or, where none
// is assigned, on a transparent frame. It moves smoothly, and strikes anew as often as is wanted. At Alpha 0
// it is a copy.

#include "effects/geometry/lightning.xpm"
#include "effects/geometry/glow.h"
#include "effects/geometry/painting.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/noise/hash.h"
#include "kernels/shape/bolt.h"

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kGeometry,
  kColor,
  kAlpha,
  kX1,
  kY1,
  kX2,
  kY2,
  kAmplitude,
  kDetail,
  kBranches,
  kWidth,
  kGlow,
  kGlowColor,
  kReach,
  kEvolution,
  kSpeed,
  kStrikes,
  kSeed
};

constexpr double kMostEvolution = 1000, kMostSpeed = 100, kMostStrikes = 100;
constexpr int kMostSeed = 65535;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input")
        .clip()
        .help("The image under the bolt. It may be left out: the bolt then stands on a transparent frame."),
    field::geometry(kGeometry, "Geometry")
        .help("The shape whose first contour the bolt follows. Without one it goes straight from its first "
              "to its "
              "second place."),
    field::color(kColor, "Color", 0xFFFFFFFF).help("The color of the bolt."),
    field::alpha(kAlpha, "Alpha", 1)
        .help("How opaque the bolt is: 0 shows nothing of it, 1 nothing of what lies below."),
    field::curve(kX1, "X1", zol::kOpenSigned, 0)
        .label("X 1")
        .help("Where the bolt begins, to the right of the middle in widths of the frame: 0 is the middle."),
    field::curve(kY1, "Y1", zol::kOpenSigned, -0.5)
        .label("Y 1")
        .help("Where the bolt begins, below the middle in heights of the frame: -0.5 is the upper edge."),
    field::curve(kX2, "X2", zol::kOpenSigned, 0)
        .label("X 2")
        .help("Where the bolt ends, to the right of the middle in widths of the frame: 0 is the middle."),
    field::curve(kY2, "Y2", zol::kOpenSigned, 0.5)
        .label("Y 2")
        .help("Where the bolt ends, below the middle in heights of the frame: 0.5 is the lower edge."),
    field::curve(kAmplitude, "Amplitude", zol::kShare, 0.2)
        .help("How far the bolt strays from its line, in its lengths: 0 leaves it straight."),
    field::integer(kDetail, "Detail", 1, zol::kMostBoltDetail, 7)
        .help("How fine the kinks are: each more halves the pieces."),
    field::curve(kBranches, "Branches", zol::kShare, 0.3).help("How often the bolt forks: at 0 it does not."),
    field::curve(kWidth, "Width", zol::kShare, 0.004)
        .help("How wide the bolt is where it begins, in widths of the frame."),
    field::curve(kGlow, "Glow", zol::kShare, 0.03)
        .help("How far the bolt's light spreads, in widths of the frame: 0 shows none."),
    field::color(kGlowColor, "GlowColor", 0xFF6080FF)
        .label("Glow color")
        .help("The color of the light around the bolt."),
    field::curve(kReach, "Reach", zol::kShare, 1)
        .help(
            "What of the bolt's length is there: 0 nothing, 1 all of it. From 0 to 1 over time it strikes."),
    field::curve(kEvolution, "Evolution", {0, kMostEvolution, "ZodfNone"}, 0)
        .help("Lets the bolt move while it rises: by 1 its largest kinks become others."),
    field::number(kSpeed, "Speed", {0, kMostSpeed, "ZodfNone"}, 2)
        .help("How much is added to Evolution each second: 0 leaves the bolt to Evolution alone."),
    field::number(kStrikes, "Strikes", {0, kMostStrikes, "ZodfNone"}, 0)
        .help("How often a new bolt strikes each second: at 0 one stays."),
    field::integer(kSeed, "Seed", 0, kMostSeed, 0).help("Another number gives another bolt."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Lightning  on", "Input", "Geometry",  "Color",  "Alpha",    "X 1",   "Y 1",
    "X 2",           "Y 2",   "Amplitude", "Detail", "Branches", "Width", "Glow",
    "Glow color",    "Reach", "Evolution", "Speed",  "Strikes",  "Seed",  "Generates lightning",
};

constexpr char kDescription[] =
    "This effect generates a bolt of lightning over the input image, between two places or along a geometry. "
    "<br><br>Without an input the bolt stands on a transparent frame.";

zol::BoltLook readLook(t_ZoHostInfo *host) {
  constexpr double kLongest = 1e6; // seconds
  constexpr double kEarly = 0.000001;
  const double time = zol::within(host->FrameTime - host->VideoClipStart, -kLongest, kLongest);
  const double strikes = zol::paramWithin(host, kStrikes, 0, kMostStrikes);
  zol::BoltLook look;
  const auto seed = static_cast<uint32_t>(std::clamp(zol::paramInt(host, kSeed), 0, kMostSeed));
  look.chance =
      zol::hash(seed, static_cast<uint32_t>(static_cast<int32_t>(std::floor(time * strikes + kEarly))), 0, 0);
  look.amplitude = zol::paramShare(host, kAmplitude);
  look.detail = std::clamp(zol::paramInt(host, kDetail), 1, zol::kMostBoltDetail);
  look.branches = zol::paramShare(host, kBranches);
  look.half = zol::paramShare(host, kWidth) * host->Width / 2;
  look.reach = zol::paramShare(host, kReach);
  look.evolution = zol::paramWithin(host, kEvolution, 0, kMostEvolution) +
                   zol::paramWithin(host, kSpeed, 0, kMostSpeed) * time;
  return look;
}

/// In the ground's square pixels.
zol::PlanePoint readPlace(t_ZoHostInfo *host, const pic &ground, Field fieldX, Field fieldY) {
  const auto within = [&](Field field, int size, int origin) {
    return size * (0.5 + zol::paramWithin(host, field, -zol::kOpenEnd, zol::kOpenEnd)) - origin;
  };
  return {within(fieldX, host->Width, ground.X) * zol::pixelAspect(host),
          within(fieldY, host->Height, ground.Y)};
}

/// False after a message.
bool drawBolt(t_ZoHostInfo *host, const pic &ground, zol::Coverage &coverage) {
  const zol::BoltLook look = readLook(host);
  void *geometry = host->Services->ParamGetGeometry(host, kGeometry, 0);
  if (geometry == nullptr) {
    zol::drawBolt(readPlace(host, ground, kX1, kY1), readPlace(host, ground, kX2, kY2), look, coverage);
    return true;
  }
  zol::ShapeSegments segments;
  if (!zol::fetchDrawn(host, geometry, ground, segments))
    return false;
  const zol::Outline outline(segments);
  if (!outline) {
    zol::showMemoryError(host);
    return false;
  }
  if (outline.contours().count() > 0)
    zol::drawBolt(outline, outline.contours()[0], look, coverage);
  return true;
}

zol::Glow readGlow(t_ZoHostInfo *host) {
  constexpr double kMostGain = 16;
  const double glow = zol::paramShare(host, kGlow), width = zol::paramShare(host, kWidth);
  const double gain = width > 0 ? std::min(kMostGain, 1 + glow / width) : kMostGain;
  return {glow * host->Width, static_cast<int>(256 * gain), zol::readPaint(host, kGlowColor, kAlpha)};
}

pic *render(t_ZoHostInfo *host) {
  zol::OwnedPic out(host, zol::createGround(host, kInput));
  const unsigned paint = zol::readPaint(host, kColor, kAlpha);
  if (!out || !zol::isOpaqueAtAll(paint))
    return out.release();
  zol::Coverage coverage = zol::coverageOf(host, *out);
  if (!coverage) {
    zol::showMemoryError(host);
    return nullptr;
  }
  if (!drawBolt(host, *out, coverage))
    return nullptr;
  coverage.merge();
  const bool done =
      zol::layGlow(host, *out, coverage, readGlow(host)) && zol::layPaint(host, *out, coverage, paint);
  return done ? out.release() : nullptr;
}

constexpr zol::Effect kLightning{
    .name = "Geometry Shading/Lightning",
    .sign = "Lightning Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Lightning",
    .description = kDescription,
    .icon = lightning_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessLightningDeclare(t_ZoHostInfo *host) { return zol::declare(host, kLightning); }
