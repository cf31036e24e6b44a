// Gradient: up to four colours along a line, around a centre or as a fan, over the frame or within a
// geometry. Where all stops are alike it is one colour.

#include "effects/sources/gradient.xpm"
#include "frame/box.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/color/gradient_rows.h"
#include "kernels/exports/shape.h"
#include "kernels/matte/cover_row.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace {

namespace field = zol::field;

enum Field {
  kGeometry,
  kKind,
  kAngle,
  kCenterX,
  kCenterY,
  kLength,
  kOffset,
  kOutside,
  kColors,
  kColor1,
  kColor2,
  kColor3,
  kColor4,
  kAlpha1,
  kAlpha2,
  kAlpha3,
  kAlpha4,
  kPosition2,
  kPosition3,
  kDither
};
enum Kind { kLinear, kRadial, kConical };

constexpr const char *kKinds[] = {"Linear", "Radial", "Conical"};
constexpr const char *kEnds[] = {"Hold", "Repeat", "Mirror"}; // in the order of GradientEnds
constexpr const char *kCounts[] = {"Two", "Three", "Four"};
constexpr int kMostStops = 4;

constexpr double kLeastLength = 0.01, kMostLength = 10, kMostOffset = 10;

constexpr zol::Field kFields[] = {
    field::plain("Geometry", kGeometry, "Geo")
        .help("The shape that the gradient fills and by whose box it is measured. Without one it fills the "
              "frame."),
    field::selector(kKind, "Kind", kKinds)
        .help("Along a line, around the center outwards, or as a fan that turns around it."),
    field::angle(kAngle, "Angle", 0)
        .help("Which way the line goes or where the fan begins, in degrees: 0 is to the right, 90 down."),
    field::curve(kCenterX, "CenterX", zol::kOpenSigned, 0)
        .label("Center X")
        .help("Moves the gradient to the right, in widths of the frame or the geometry's box: 0 is its "
              "middle."),
    field::curve(kCenterY, "CenterY", zol::kOpenSigned, 0)
        .label("Center Y")
        .help("Moves the gradient down, in heights of the frame or the geometry's box: 0 is its middle."),
    field::curve(kLength, "Length", {kLeastLength, kMostLength, "ZodfBothLimits"}, 1)
        .help("How long the gradient is: at 1 a line reaches from border to border, and a circle has the "
              "longer side as its diameter. A fan has no length."),
    field::curve(kOffset, "Offset", {-kMostOffset, kMostOffset, "ZodfNone"}, 0)
        .help("Moves the colors along, in lengths of the gradient: 0 leaves them in place."),
    field::selector(kOutside, "Outside", kEnds)
        .help("What is seen beyond the ends: the colors of the ends, the gradient again, or again and back."),
    field::selector(kColors, "Colors", kCounts).help("How many of the colors are used."),
    field::color(kColor1, "Color1", 0xFF000000).label("Color 1").help("The color at the beginning."),
    field::color(kColor2, "Color2", 0xFFFFFFFF)
        .label("Color 2")
        .help("The color at the end or, of more than two, at Position 2."),
    field::color(kColor3, "Color3", 0xFF808080)
        .label("Color 3")
        .help("The color at the end or, of four, at Position 3."),
    field::color(kColor4, "Color4", 0xFF404040).label("Color 4").help("Of four, the color at the end."),
    field::alpha(kAlpha1, "Alpha1", 1)
        .label("Alpha 1")
        .help("How opaque the first color is: 0 is transparent, 1 opaque."),
    field::alpha(kAlpha2, "Alpha2", 1)
        .label("Alpha 2")
        .help("How opaque the second color is: 0 is transparent, 1 opaque."),
    field::alpha(kAlpha3, "Alpha3", 1)
        .label("Alpha 3")
        .help("How opaque the third color is: 0 is transparent, 1 opaque."),
    field::alpha(kAlpha4, "Alpha4", 1)
        .label("Alpha 4")
        .help("How opaque the fourth color is: 0 is transparent, 1 opaque."),
    field::curve(kPosition2, "Position2", zol::kShare, 0.5)
        .label("Position 2")
        .help("Where the second of three or four colors lies: 0 at the beginning, 1 at the end."),
    field::curve(kPosition3, "Position3", zol::kShare, 0.75)
        .label("Position 3")
        .help("Where the third of four colors lies, not before the second: 0 at the beginning, 1 at the "
              "end."),
    field::toggle(kDither, "Dither", true)
        .label("&Dither output")
        .help("Whether the steps between neighboring colors are broken up by a fine pattern, which stands "
              "still."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Gradient  on", "Kind",           "Angle",
    "Center X",     "Center Y",       "Length",
    "Offset",       "Outside",        "Colors",
    "Color 1",      "Color 2",        "Color 3",
    "Color 4",      "Alpha 1",        "Alpha 2",
    "Alpha 3",      "Alpha 4",        "Position 2",
    "Position 3",   "&Dither output", "Fills frame or geometry with a gradient",
};

constexpr char kDescription[] =
    "This effect generates a gradient of up to four colors: along a line, around a center or as a fan. It "
    "fills the frame or, if a geometry is specified, that geometry. <br><br>This effect has no inputs.";

// ---- Colors ----

_color_t colorOf(t_ZoHostInfo *host, int stop) {
  _color_t color = zol::paramColor(host, kColor1 + stop);
  color.a = static_cast<uint8_t>(zol::paramShare(host, kAlpha1 + stop) * 255);
  return color;
}

zol::ColorRamp readRamp(t_ZoHostInfo *host) {
  const auto position = [host](Field field) {
    return static_cast<int>(std::rint(zol::paramShare(host, field) * 65536));
  };
  const int count = 2 + std::clamp(zol::paramInt(host, kColors), 0, kMostStops - 2);
  zol::ColorStop stops[kMostStops] = {};
  for (int i = 0; i < count; ++i)
    stops[i].color = colorOf(host, i);
  if (count > 2)
    stops[1].position = position(kPosition2);
  if (count > 3)
    stops[2].position = std::max(stops[1].position, position(kPosition3));
  stops[count - 1].position = 65536;
  return zol::ColorRamp(std::span(stops, static_cast<size_t>(count)));
}

// ---- Where it lies ----

/// What the gradient is measured by; its sides may be empty or the wrong way round.
struct Extent {
  double left, top, width, height;
};

/// What of the box's pixels lies within the frame.
zol::Area visibleOf(const zol::PixelBox &box, const zol::Area &frame) {
  const auto end = [](int begin, int size, int most) {
    return static_cast<int>(std::min<int64_t>(int64_t{begin} + size, most));
  };
  return zol::intersectionOf(
      {box.left, box.top, end(box.left, box.width, frame.right), end(box.top, box.height, frame.bottom)},
      frame);
}

/// In 2^-32; what is too far out is cut.
int64_t inFine(double value) {
  return static_cast<int64_t>(std::rint(zol::within(value, -0x1p30, 0x1p30) * 0x1p32));
}

/// Finds the ramp's places for the pixels of an area, row by row.
class Gradient {
public:
  Gradient(t_ZoHostInfo *host, const Extent &extent, const zol::Area &area)
      : kind_(std::clamp(zol::paramInt(host, kKind), int{kLinear}, int{kConical})), firstRow_(area.top),
        across_(static_cast<size_t>(area.width())) {
    constexpr double kLeast = 1.0 / 64; // of a pixel: shorter ones are edges all the same
    const double aspect = zol::pixelAspect(host), degrees = zol::paramAngle(host, kAngle);
    const double centerX = zol::paramSigned(host, kCenterX), centerY = zol::paramSigned(host, kCenterY);
    const double length = std::max(zol::paramWithin(host, kLength, 0, kMostLength), kLeastLength);
    const double offset = zol::paramWithin(host, kOffset, -kMostOffset, kMostOffset);
    const int ends = std::clamp(zol::paramInt(host, kOutside), 0, 2);
    turn_ = {static_cast<int32_t>(std::rint(offset * 65536)), static_cast<zol::GradientEnds>(ends)};

    const auto right = [&](int x) {
      return (x + 0.5 - extent.left - (0.5 + centerX) * extent.width) * aspect;
    };
    top_ = extent.top;
    centerBelowTop_ = (0.5 + centerY) * extent.height;
    const zol::Direction way(degrees);
    const double across = std::fabs(way.right) * extent.width * aspect,
                 down = std::fabs(way.down) * extent.height;
    const double line = std::max(length * (across + down), kLeast);
    first_ = (int64_t{1} << 31) + inFine((way.right * right(area.left) + way.down * downOf(area.top)) / line);
    stepRight_ = inFine(way.right * aspect / line);
    stepDown_ = inFine(way.down / line);
    scale_ = static_cast<float>(131072 / (length * std::max({extent.width * aspect, extent.height, kLeast})));
    angle_ = static_cast<int32_t>(std::rint(std::fmod(degrees, 360) / 360 * 65536));
    if (across_)
      for (int i = 0; i < area.width(); ++i)
        across_[static_cast<size_t>(i)] =
            static_cast<float>(zol::within(right(area.left + i), -kFarthest, kFarthest));
  }

  /// False when memory ran out.
  explicit operator bool() const { return static_cast<bool>(across_); }

  /// Of the area's pixels in the frame's row y.
  void row(int y, int32_t *places, int count) const {
    const auto down = static_cast<float>(downOf(y));
    if (kind_ == kLinear)
      ZOL_SELECT(linearPlaces)(first_ + (y - firstRow_) * stepDown_, stepRight_, turn_, places, count);
    else if (kind_ == kRadial)
      ZOL_SELECT(radialPlaces)(across_.data(), down, scale_, turn_, places, count);
    else
      ZOL_SELECT(conicalPlaces)(across_.data(), down, angle_, turn_, places, count);
  }

private:
  static constexpr double kFarthest = 1e15; // its square is a float

  /// From the centre to the middle of the frame's row y.
  [[nodiscard]] double downOf(int y) const { return y + 0.5 - top_ - centerBelowTop_; }

  int kind_, firstRow_;
  zol::Scratch<float> across_; // columns from the centre
  zol::GradientTurn turn_;
  double top_, centerBelowTop_;
  int64_t first_, stepRight_, stepDown_; // of 2^32
  float scale_;
  int32_t angle_;
};

// ---- Rendering ----

/// False when the host wants to stop or, after a message, when memory runs out.
bool paint(t_ZoHostInfo *host, const Extent &extent, const pic &out) {
  const zol::Area area = zol::Area::of(out);
  const zol::ColorRamp ramp = readRamp(host);
  const bool dithers = zol::paramInt(host, kDither) != 0 && host->BitsPerPixel == 32;
  const Gradient gradient(host, extent, area);
  const zol::Scratch<int32_t> places(static_cast<size_t>(area.width()));
  if (!gradient || !places) {
    zol::showMemoryError(host);
    return false;
  }
  return zol::forEachRow(host, area.height(), [&](int y) {
    gradient.row(area.top + y, places.data(), area.width());
    const auto rounding =
        dithers ? zol::RampRounding::dithered(area.left, area.top + y) : zol::RampRounding::nearest();
    ZOL_SELECT(rampRow)
    (ramp.colors, places.data(), rounding, out.Pixels + ptrdiff_t{y} * area.width(), area.width());
  });
}

/// Leaves what lies within the geometry. False after the kernel's message, or when the host wants to stop.
bool cutOut(t_ZoHostInfo *host, void *geometry, const pic &out) {
  const zol::OwnedPic mask(host, zol::createAt(host, zol::Area::of(out)));
  if (!mask)
    return false;
  char error[256];
  if (FillShape(host, error, mask.get(), geometry, host->FrameTime, 0xFFFFFFFF) != 1) {
    if (error[0] != '\0')
      zol::showMessage(host, error);
    return false;
  }
  return zol::forEachRow(host, out.Height, [&](int y) {
    const ptrdiff_t row = ptrdiff_t{y} * out.Width;
    ZOL_SELECT(coverRow)(out.Pixels + row, mask->Pixels + row, out.Width);
  });
}

pic *render(t_ZoHostInfo *host) {
  zol::Area area = zol::Area::ofSize(host->Width, host->Height);
  Extent extent{0, 0, static_cast<double>(host->Width), static_cast<double>(host->Height)};
  void *geometry = host->Services->ParamGetGeometry(host, kGeometry, 0);
  if (geometry != nullptr) {
    double box[4] = {};
    host->Services->GeoGetBox(host, geometry, box, host->FrameTime);
    area = visibleOf(zol::pixelsOfBox(box), area);
    for (double &side : box)
      side = zol::within(side, -1e6, 1e6);
    extent = {box[0], box[1], box[2] - box[0], box[3] - box[1]};
  }
  const bool nothing = area.isEmpty();
  zol::OwnedPic out(host, zol::createAt(host, nothing ? zol::Area::ofSize(1, 1) : area));
  if (!out)
    return nullptr;
  if (nothing)
    out->Pixels[0] = {};
  else if (!paint(host, extent, *out) || (geometry != nullptr && !cutOut(host, geometry, *out)))
    return nullptr;
  return out.release();
}

constexpr zol::Effect kGradient{
    .name = "Sources/Gradient",
    .sign = "Gradient Zo2 native",
    .version = 2,
    .section = "Gradient",
    .description = kDescription,
    .icon = gradient_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessGradientDeclare(t_ZoHostInfo *host) { return zol::declare(host, kGradient); }
