// Paster tool: lays its input over the background, moved, scaled, slanted and turned, in any blending mode
// and blurred by its own motion. With nothing of that it is a copy over the background.

#include "effects/compositing/paster.xpm"
#include "effects/compositing/warped_picture.h"
#include "effects/lay_modes.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/values.h"
#include "kernels/warp/projection.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

namespace field = zol::field;

enum Field {
  kBackground,
  kInput,
  kX,
  kY,
  kScale,
  kScaleX,
  kScaleY,
  kAngle,
  kSkew,
  kAnchorX,
  kAnchorY,
  kOpacity,
  kMode,
  kFilter,
  kUseAlpha,
  kShutter,
};

constexpr zol::Field kFields[] = {
    field::input(kBackground, "Background")
        .label(zol::kBackgroundLabel)
        .help("The image below. It may be left out: the input then stands on a transparent frame."),
    field::input(kInput, "Input").help("The image that is laid over the background."),
    field::curve(kX, "X", zol::kOpenSigned, 0)
        .help("Moves the image to the right, in widths of the frame: 0.5 is half a frame, 0 leaves it."),
    field::curve(kY, "Y", zol::kOpenSigned, 0)
        .help("Moves the image down, in heights of the frame: 0.5 is half a frame, 0 leaves it."),
    field::curve(kScale, "Scale", {0, 4, "ZodfMinLimit"}, 1)
        .help("How many times as large the image is: 1 leaves its size, 0 shows nothing."),
    field::curve(kScaleX, "ScaleX", {-4, 4, "ZodfNone"}, 1)
        .label("Scale X")
        .help("How many times as wide the image is, besides: 1 leaves it, -1 mirrors it."),
    field::curve(kScaleY, "ScaleY", {-4, 4, "ZodfNone"}, 1)
        .label("Scale Y")
        .help("How many times as high the image is, besides: 1 leaves it, -1 turns it over."),
    field::angle(kAngle, "Angle", 0).help("Turns the image clockwise, in degrees; 0 leaves it."),
    field::curve(kSkew, "Skew", zol::kOpenSigned, 0)
        .help("Slants the image: how far lower rows move to the right, in their distance below the anchor. 0 "
              "leaves them."),
    field::curve(kAnchorX, "AnchorX", zol::kOpenSigned, 0)
        .label("Anchor X")
        .help("The point about which the image is scaled and turned, in widths of the image to the right of "
              "its middle; 0 is the middle."),
    field::curve(kAnchorY, "AnchorY", zol::kOpenSigned, 0)
        .label("Anchor Y")
        .help("The same point, in heights of the image below its middle; 0 is the middle."),
    field::alpha(kOpacity, "Opacity", 1)
        .help("How opaque the image is: 0 shows the background alone, 1 the image as it is."),
    field::selector(kMode, "Mode", zol::kLayModeItems)
        .help("What the colors of both images make together. Normal shows the image's own."),
    field::selector(kFilter, "Filter", zol::kWarpFilters)
        .help("Sharp keeps fine texture, Smooth is softer, Pixels takes the nearest pixel alone."),
    field::toggle(kUseAlpha, "UseAlpha", true)
        .label("Use image &alpha")
        .help("Whether the image is transparent where its alpha says so; off, all of it is opaque."),
    field::curve(kShutter, "Shutter", zol::kOpenShare, 0)
        .label("Motion blur")
        .help("For how many frames a shutter is open that blurs the image as it moves, scales and turns: 0 "
              "leaves it sharp, 0.5 is a film camera's."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Paster tool  on",
    "Input",
    "X",
    "Y",
    "Scale",
    "Scale X",
    "Scale Y",
    "Angle",
    "Skew",
    "Anchor X",
    "Anchor Y",
    "Opacity",
    "Mode",
    "Filter",
    "Use image &alpha",
    "Motion blur",
    "Pastes an image over the background",
};

constexpr char kDescription[] =
    "This effect lays an image over the background, moved, scaled, slanted and turned, more or less opaque "
    "and in one of sixteen blending modes, and blurs it as it moves. <br><br>Required inputs: Input image. "
    "Without a background it stands on a transparent frame.";

// ---- Placements ----

/// How the picture lies at a time of the parameters.
struct Placement {
  double x, y, scaleX, scaleY, angle, skew, anchorX, anchorY;

  static Placement at(t_ZoHostInfo *host, double time) {
    const auto number = [=](Field field, double usual) {
      return zol::within(zol::paramDouble(host, field, time), -zol::kFarthest, zol::kFarthest, usual);
    };
    Placement placement{};
    placement.x = number(kX, 0);
    placement.y = number(kY, 0);
    const double scale = std::max(0.0, number(kScale, 1));
    placement.scaleX = scale * number(kScaleX, 1);
    placement.scaleY = scale * number(kScaleY, 1);
    const double angle = zol::paramDouble(host, kAngle, time);
    placement.angle = std::isfinite(angle) ? angle : 0;
    placement.skew = number(kSkew, 0);
    placement.anchorX = number(kAnchorX, 0);
    placement.anchorY = number(kAnchorY, 0);
    return placement;
  }

  [[nodiscard]] bool isNeutral() const {
    const zol::Direction turn(angle);
    return x == 0 && y == 0 && scaleX == 1 && scaleY == 1 && turn.right == 1 && turn.down == 0 && skew == 0;
  }

  /// From the picture to the frame.
  [[nodiscard]] zol::Projection toFrame(const t_ZoHostInfo *host, const pic &picture) const {
    using zol::Projection;
    const double aspect = zol::shownAspect(host);
    const double fixedX = (0.5 + anchorX) * picture.Width, fixedY = (0.5 + anchorY) * picture.Height;
    const zol::Direction turn(angle);
    const Projection turned{{{turn.right, -turn.down, 0}, {turn.down, turn.right, 0}, {0, 0, 1}}};
    const Projection slanted{{{1, skew, 0}, {0, 1, 0}, {0, 0, 1}}};
    return Projection::moved(picture.X + fixedX + x * host->Width, picture.Y + fixedY + y * host->Height) *
           Projection::scaled(1 / aspect, 1) * turned * slanted *
           Projection::scaled(scaleX * aspect, scaleY) * Projection::moved(-fixedX, -fixedY);
  }
};

// ---- Through a shutter ----

/// A frame's length in the parameters' time; 0 where there is no telling.
double frameLength(const t_ZoHostInfo *host) {
  const double length = host->Time / ((host->FrameTime - host->VideoClipStart) * host->FrameRate);
  return std::isfinite(length) && length > 0 ? length : 0;
}

/// The longest way of a corner, in pixels, by the middle.
double longestWay(const zol::Projection (&toFrame)[3], const pic &picture) {
  double longest = 0;
  for (const zol::Point corner : {zol::Point{0, 0}, zol::Point{1, 0}, zol::Point{0, 1}, zol::Point{1, 1}}) {
    double way = 0;
    const zol::Point start = {corner.x * picture.Width, corner.y * picture.Height};
    for (int i = 0; i < 2; ++i) {
      const zol::Point from = toFrame[i].of(start), to = toFrame[i + 1].of(start);
      way += std::sqrt((to.x - from.x) * (to.x - from.x) + (to.y - from.y) * (to.y - from.y));
    }
    longest = std::max(longest, way);
  }
  return longest;
}

/// Where the picture lies at even steps while the shutter is open.
class Exposure {
public:
  Exposure(t_ZoHostInfo *host, const pic &picture) {
    const auto mapOf = [&](const zol::Projection &toFrame) {
      return zol::WarpMap(toFrame.inverse(), picture.Width, picture.Height);
    };
    const Placement now = Placement::at(host, host->Time);
    const zol::Projection middle = now.toFrame(host, picture);
    const double open = zol::paramWithin(host, kShutter, 0, zol::kFarthest) * frameLength(host);
    isNeutral_ = open == 0 && now.isNeutral();
    if (open > 0) {
      const auto at = [&](double share) {
        return Placement::at(host, host->Time + share * open).toFrame(host, picture);
      };
      const double way = longestWay({at(-0.5), middle, at(0.5)}, picture);
      count_ = way < zol::kMostMaps ? std::max(1, static_cast<int>(std::ceil(way))) : zol::kMostMaps;
      for (int i = 0; i < count_ && count_ > 1; ++i)
        maps_[size_t(i)] = mapOf(at((i + 0.5) / count_ - 0.5));
    }
    if (count_ == 1)
      maps_[0] = mapOf(middle);
  }

  [[nodiscard]] std::span<const zol::WarpMap> maps() const { return {maps_.data(), size_t(count_)}; }
  /// Whether the picture stays where it is.
  [[nodiscard]] bool isNeutral() const { return isNeutral_; }

private:
  std::array<zol::WarpMap, zol::kMostMaps> maps_;
  int count_ = 1;
  bool isNeutral_;
};

pic *render(t_ZoHostInfo *host) {
  void *backgroundInput = zol::input(host, kBackground);
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  if (backgroundInput != nullptr && background == nullptr)
    return nullptr;
  const Exposure exposure(host, *frame);
  const int opacity = zol::in4096ths(zol::paramShare(host, kOpacity, 1));
  const zol::Laying laying{.mode = zol::paramLayMode(host, kMode)};
  const zol::WarpFilter filter = zol::paramWarpFilter(host, kFilter);
  const bool usesAlpha = zol::paramInt(host, kUseAlpha) != 0;
  if (background == nullptr && exposure.isNeutral() && opacity == 4096 && usesAlpha)
    return zol::copyOf(host, frame);
  zol::WarpSource source = zol::WarpSource::of(*frame);
  source.opaque |= !usesAlpha;
  return zol::renderWarped(host, background, {source, exposure.maps(), filter, opacity}, laying);
}

constexpr zol::Effect kPaster{
    .name = "Compositing/Paster tool",
    .sign = "Paster Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Paster",
    .description = kDescription,
    .icon = paster_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessPasteDeclare(t_ZoHostInfo *host) { return zol::declare(host, kPaster); }
