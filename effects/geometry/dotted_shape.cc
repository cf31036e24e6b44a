// Dotted Shape: dots along a geometry's outline, over the input or, where none is assigned, on a transparent
// frame. They march without a seam around closed outlines. At Alpha 0 it is a copy.

#include "effects/geometry/dotted_shape.xpm"
#include "effects/geometry/painting.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/shape/outline.h"
#include "kernels/shape/stroke.h"

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kGeometry,
  kColor,
  kAlpha,
  kSize,
  kSpacing,
  kOffset,
  kStart,
  kEnd,
  kEndSize,
  kDot,
  kFollow,
  kFit
};
enum Dot { kRound, kSquare, kDiamond, kDash };

constexpr const char *kDots[] = {"Round", "Square", "Diamond", "Dash"};

constexpr double kLeastSpacing = 0.0005, kMostOffset = 100, kMostEndSize = 10;
constexpr double kMostDots = 100000;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input")
        .clip()
        .help("The image under the dots. It may be left out: they then stand on a transparent frame."),
    field::geometry(kGeometry, "Geometry").help("The shape along whose outline the dots stand."),
    field::color(kColor, "Color", 0xFFFFFFFF).help("The color of the dots."),
    field::alpha(kAlpha, "Alpha", 1)
        .help("How opaque the dots are: 0 shows nothing of them, 1 nothing of what lies below."),
    field::curve(kSize, "Size", zol::kShare, 0.01).help("How large the dots are, in widths of the frame."),
    field::curve(kSpacing, "Spacing", {kLeastSpacing, 1, "ZodfBothLimits"}, 0.02)
        .help("How far it is from dot to dot, in widths of the frame."),
    field::curve(kOffset, "Offset", {-kMostOffset, kMostOffset, "ZodfNone"}, 0)
        .help("Moves the dots along, in spacings: whole numbers change nothing."),
    field::curve(kStart, "Start", zol::kShare, 0)
        .help("Where dots begin to be seen, as a share of the outline's length: 0 is its beginning."),
    field::curve(kEnd, "End", zol::kShare, 1)
        .help("Where dots cease to be seen, as a share of the outline's length: 1 is its end."),
    field::curve(kEndSize, "EndSize", {0, kMostEndSize, "ZodfBothLimits"}, 1)
        .label("End size")
        .help("How large dots are at the outline's end, times Size: 1 leaves all of them alike."),
    field::selector(kDot, "Dot", kDots).help("What a dot looks like."),
    field::toggle(kFollow, "Follow", true).help("Whether dots turn with the outline."),
    field::toggle(kFit, "Fit", true)
        .help("Whether the spacing is stretched, on closed outlines, until it goes into their length."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Dotted Shape  on",
    "Input",
    "Geometry",
    "Color",
    "Alpha",
    "Size",
    "Spacing",
    "Offset",
    "Start",
    "End",
    "End size",
    "Dot",
    "Follow",
    "Fit",
    "Sets dots along the outline of a geometry",
};

constexpr char kDescription[] =
    "This effect sets dots along the outline of a geometry, over the input image. They can march along it. "
    "<br><br>Without an input they stand on a transparent frame.";

struct Dots {
  double size, spacing; // in pixels
  double offset, start, end, endSize;
  int kind;
  bool follow, fit;
};

Dots readDots(t_ZoHostInfo *host) {
  const auto spacing = std::max(zol::paramWithin(host, kSpacing, 0, 1), kLeastSpacing);
  const double offset = zol::paramWithin(host, kOffset, -kMostOffset, kMostOffset);
  return {zol::paramShare(host, kSize) * host->Width,
          spacing * host->Width,
          offset - std::floor(offset),
          zol::paramShare(host, kStart),
          zol::paramShare(host, kEnd),
          zol::paramWithin(host, kEndSize, 0, kMostEndSize),
          std::clamp(zol::paramInt(host, kDot), 0, 3),
          zol::paramInt(host, kFollow) != 0,
          zol::paramInt(host, kFit) != 0};
}

/// Draws dots of one kind, whose points it keeps from dot to dot.
class Stamp {
public:
  Stamp(int kind, bool follow, zol::Coverage &coverage) : kind_(kind), follow_(follow), coverage_(coverage) {}

  /// False when memory runs out.
  bool draw(const zol::OutlinePlace &at, double radius) {
    if (radius != radius_ && !cut(radius))
      return false;
    const double x = follow_ ? at.alongX : 1, y = follow_ ? at.alongY : 0;
    for (const zol::PlanePoint &p : points_)
      coverage_.lineTo(at.x + p.x * x - p.y * y, at.y + p.x * y + p.y * x);
    coverage_.close();
    return true;
  }

private:
  bool cut(double radius) {
    radius_ = radius;
    points_.cut(0);
    if (kind_ == kRound)
      return zol::addDisc(radius, points_);
    if (kind_ == kDiamond)
      return points_.add({radius, 0}) && points_.add({0, radius}) && points_.add({-radius, 0}) &&
             points_.add({0, -radius});
    const double side = kind_ == kDash ? radius / 3 : radius;
    return points_.add({radius, side}) && points_.add({-radius, side}) && points_.add({-radius, -side}) &&
           points_.add({radius, -side});
  }

  int kind_;
  bool follow_;
  zol::Coverage &coverage_;
  double radius_ = -1;
  zol::Growing<zol::PlanePoint> points_;
};

/// False when memory runs out.
bool drawDots(const zol::Outline &outline, const Dots &dots, zol::Coverage &coverage) {
  Stamp stamp(dots.kind, dots.follow && dots.kind != kRound, coverage);
  double left = kMostDots;
  for (const zol::Contour &contour : outline.contours()) {
    const double length = outline.length(contour);
    double spacing = dots.spacing;
    if (contour.closed && dots.fit)
      spacing = length / std::max(1.0, std::rint(length / spacing));
    // A dot at the very end is one of an open outline; a closed one has it at its beginning.
    const double almost = spacing * 1e-6 * (contour.closed ? -1 : 1);
    const double first = std::ceil(dots.start * length / spacing - dots.offset - 1e-6);
    const double last = dots.end * length + almost;
    for (double k = std::max(first, 0.0); (k + dots.offset) * spacing <= last && left > 0; ++k, --left) {
      const double way = (k + dots.offset) * spacing, share = length > 0 ? way / length : 0;
      const double size = dots.size * (1 + (dots.endSize - 1) * share);
      if (!stamp.draw(outline.at(contour, way), size / 2))
        return false;
    }
  }
  return true;
}

pic *render(t_ZoHostInfo *host) {
  void *geometry = host->Services->ParamGetGeometry(host, kGeometry, 0);
  if (geometry == nullptr) {
    zol::showMessage(host, "Geometry not assigned");
    return nullptr;
  }
  zol::OwnedPic out(host, zol::createGround(host, kInput));
  const unsigned paint = zol::readPaint(host, kColor, kAlpha);
  if (!out || !zol::isOpaqueAtAll(paint))
    return out.release();
  zol::ShapeSegments segments;
  if (!zol::fetchDrawn(host, geometry, *out, segments))
    return nullptr;
  const zol::Outline outline(segments);
  zol::Coverage coverage = zol::coverageOf(host, *out);
  if (!outline || !coverage || !drawDots(outline, readDots(host), coverage)) {
    zol::showMemoryError(host);
    return nullptr;
  }
  return zol::layPaint(host, *out, coverage, paint) ? out.release() : nullptr;
}

constexpr zol::Effect kDottedShape{
    .name = "Geometry Shading/Dotted Shape",
    .sign = "Dotted Shape Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "DottedShape",
    .description = kDescription,
    .icon = dotted_shape_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessDottDeclare(t_ZoHostInfo *host) { return zol::declare(host, kDottedShape); }
