// Wiper: leads from one input to another behind an edge: a geometry that grows until it fills the frame, a
// geometry as it is drawn and animated, or without one a straight line. At Transition 0 it is a copy of A, at
// 1 of B.

#include "effects/geometry/wiper.xpm"
#include "effects/geometry/painting.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/blur/soften.h"
#include "kernels/color/wide.h"
#include "kernels/compositing/mix_by_mask.h"
#include "kernels/exports/transformed_shape.h"
#include "kernels/matte/matte_rows.h"
#include "kernels/shape/outline.h"
#include "kernels/shape/stroke.h"
#include "kernels/simd/alpha_plane.h"

#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kInputA,
  kInputB,
  kGeometry,
  kTransition,
  kMotion,
  kAngle,
  kSoftness,
  kBorder,
  kBorderColor,
  kInvert
};
enum Motion { kGrow, kAsDrawn };

constexpr const char *kMotions[] = {"Grow", "As drawn"};

constexpr zol::Field kFields[] = {
    field::input(kInputA, "InputA").label("Input A").clip().help("The image at the beginning."),
    field::input(kInputB, "InputB").label("Input B").help("The image at the end."),
    field::geometry(kGeometry, "Geometry")
        .help("The shape within which the second image shows. Without one a straight edge moves across the "
              "frame."),
    field::curve(kTransition, "Transition", zol::kShare, 0)
        .rising()
        .help(
            "How far the transition has come: 0 shows input A alone, 1 input B. A shape that moves as drawn "
            "does not depend on it."),
    field::selector(kMotion, "Motion", kMotions)
        .help("Whether the shape grows from its middle until it fills the frame, or stays as it is drawn and "
              "animated."),
    field::angle(kAngle, "Angle", 0)
        .help("How far the shape turns while it grows, in degrees clockwise: 0 leaves it upright. Without a "
              "geometry the direction in which the edge moves: 0 is to the right, 90 down."),
    field::curve(kSoftness, "Softness", zol::kShare, 0)
        .help("How far the edge spreads, in tenths of the frame's width: 0 leaves it sharp."),
    field::curve(kBorder, "Border", zol::kShare, 0)
        .help("How wide the line along the edge is, in widths of the frame: 0 draws none."),
    field::color(kBorderColor, "BorderColor", 0xFFFFFFFF)
        .label("Border color")
        .help("The color of the line along the edge."),
    field::toggle(kInvert, "Invert", false)
        .help("Whether the second image comes from outside, and the first one shrinks within the shape."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Wiper  on",  "Input A",      "Input B", "Geometry",
    "Transition", "Motion",       "Angle",   "Softness",
    "Border",     "Border color", "Invert",  "Wipes from one input to another by a geometry",
};

constexpr char kDescription[] = "This effect leads from input A to input B by a geometry that grows until it "
                                "fills the frame or is animated "
                                "by hand, or by a straight edge. <br><br>Required inputs: Input A, Input B.";

struct Settings {
  void *geometry;
  double position; ///< of the edge, 0 to 1
  bool asDrawn, invert;
  double angle, softness, border; ///< softness in pixels across, the border's half width in square ones
  unsigned borderColor;
};

Settings readSettings(t_ZoHostInfo *host) {
  Settings settings;
  settings.geometry = host->Services->ParamGetGeometry(host, kGeometry, 0);
  settings.asDrawn = settings.geometry != nullptr && zol::paramInt(host, kMotion) == kAsDrawn;
  settings.invert = zol::paramInt(host, kInvert) != 0;
  const double transition = zol::paramShare(host, kTransition);
  settings.position = settings.invert ? 1 - transition : transition;
  settings.angle = zol::paramAngle(host, kAngle);
  settings.softness = zol::pixelsOf(host, zol::paramShare(host, kSoftness));
  settings.border = zol::paramShare(host, kBorder) * host->Width / 2;
  const _color_t color = zol::paramColor(host, kBorderColor);
  settings.borderColor =
      0xFF000000U | static_cast<unsigned>(color.r) << 16 | static_cast<unsigned>(color.g) << 8 | color.b;
  return settings;
}

struct Point {
  double x, y;
};

/// The nearest that the outline comes to 0, 0; at most `far`.
double leastDistance(const zol::Outline &outline, double far) {
  double least = far * far;
  for (const zol::Contour &contour : outline.contours())
    for (size_t i = 1; i < contour.count; ++i) {
      const zol::OutlinePoint &p = outline.points(contour)[i - 1], &q = outline.points(contour)[i];
      const double dx = q.x - p.x, dy = q.y - p.y, length = dx * dx + dy * dy;
      const double share = length > 0 ? std::clamp(-(p.x * dx + p.y * dy) / length, 0.0, 1.0) : 0;
      const double x = p.x + share * dx, y = p.y + share * dy;
      least = std::min(least, x * x + y * y);
    }
  return std::sqrt(least);
}

/// The edge over an area of the frame: a mask of where B shows, and the line along it.
class Wipe {
public:
  Wipe(t_ZoHostInfo *host, const zol::Area &canvas, const Settings &settings)
      : host_(host), canvas_(canvas), settings_(settings), aspect_(zol::pixelAspect(host)),
        filled_(host, nullptr) {}

  /// Makes both. False when the host wants to stop, or after a message.
  bool make() {
    const bool made = settings_.geometry == nullptr ? makeLine() : makeShape();
    return made && soften();
  }

  /// Writes row y of the mask.
  void maskRow(int y, uint8_t *mask) const {
    const int width = canvas_.width();
    if (soft_)
      ZOL_SELECT(wideToAlpha)(softRow(y), zol::Rounding::nearest(), mask, width);
    else if (filled_)
      zol::takeAlpha(filledRow(y), static_cast<size_t>(width), mask);
    else
      std::copy_n(straight_->row(y), width, mask);
    if (settings_.invert)
      ZOL_SELECT(invertRow)(mask, width);
  }

  void layBorder(int y, _color_t *pixels) const {
    if (border_)
      ZOL_SELECT(layColorOnBytes)(pixels, border_->row(y), canvas_.width(), settings_.borderColor);
  }

private:
  static constexpr double kReach = 1.25; ///< of soft edges, in their radius
  static constexpr double kLeast = 3;    ///< and this much in pixels

  /// How far the edge reaches to a side with all that belongs to it, in square pixels.
  [[nodiscard]] double margin() const {
    return (settings_.softness > 0 ? kReach * settings_.softness * aspect_ + kLeast : 1) + settings_.border;
  }

  /// Calls take(x, y) with the corners of the frame and the canvas, in square pixels.
  template <class Take> void forEachCorner(Take take) const {
    const zol::Area all = zol::unionOf(canvas_, zol::Area::ofSize(host_->Width, host_->Height));
    for (const int x : {all.left, all.right})
      for (const int y : {all.top, all.bottom})
        take(x * aspect_, static_cast<double>(y));
  }

  bool fail() {
    zol::showMemoryError(host_);
    return false;
  }

  // ---- A straight edge ----

  bool makeLine() {
    const zol::Direction ahead(settings_.angle);
    double low = 1e300, high = -1e300;
    forEachCorner([&](double x, double y) {
      const double way = x * ahead.right + y * ahead.down;
      low = std::min(low, way);
      high = std::max(high, way);
    });
    const double edge = low - margin() + settings_.position * (high - low + 2 * margin());
    const double across = 2 * (high - low) + 2 * (std::fabs(low) + std::fabs(high)) + 4 * margin();
    const auto at = [&](double way, double side) {
      return Point{way * ahead.right - side * ahead.down - canvas_.left * aspect_,
                   way * ahead.down + side * ahead.right - canvas_.top};
    };
    const auto drawBand = [&](std::optional<zol::Coverage> &coverage, double from, double to) {
      coverage.emplace(canvas_.width(), canvas_.height(), aspect_);
      for (const Point p : {at(from, -across), at(to, -across), at(to, across), at(from, across)})
        coverage->lineTo(p.x, p.y);
      coverage->close();
      coverage->merge();
      return static_cast<bool>(*coverage);
    };
    if (!drawBand(straight_, edge - across, edge))
      return fail();
    if (settings_.border > 0 && !drawBand(border_, edge - settings_.border, edge + settings_.border))
      return fail();
    return true;
  }

  // ---- A geometry ----

  bool makeShape() {
    zol::Affine matrix;
    double half = settings_.border;
    if (!settings_.asDrawn && !grow(&matrix, &half))
      return false;
    pic *picture = zol::createAt(host_, canvas_);
    filled_.reset(picture);
    if (picture == nullptr)
      return false;
    char error[256];
    if (zol::fillShapeTransformed(host_, error, picture, settings_.geometry, host_->FrameTime, 0xFFFFFFFF,
                                  matrix) != 1) {
      if (error[0] != '\0')
        zol::showMessage(host_, error);
      return false;
    }
    return half <= 0 || drawBorder(matrix, half);
  }

  /// How the shape is moved, and what its border is limited to where it is small.
  bool grow(zol::Affine *matrix, double *half) {
    double box[4] = {};
    host_->Services->GeoGetBox(host_, settings_.geometry, box, host_->FrameTime);
    const auto middle = [&](int i) { return zol::within((box[i] + box[i + 2]) / 2, -1e6, 1e6); };
    const double x = middle(0) * aspect_, y = middle(1);
    double far = 1;
    forEachCorner([&](double cornerX, double cornerY) {
      const double dx = cornerX - x, dy = cornerY - y;
      far = std::max(far, std::sqrt(dx * dx + dy * dy));
    });
    zol::ShapeSegments segments;
    if (!fetch({aspect_, 0, 0, 1, -x, -y}, segments))
      return false;
    const zol::Outline outline(segments);
    if (!outline)
      return fail();
    const double least = std::max(leastDistance(outline, far), 1.0);
    const double scale = settings_.position * (far + margin()) / least;
    const zol::Direction turn(settings_.angle * settings_.position);
    const double c = scale * turn.right, s = scale * turn.down;
    *matrix = {c, -s / aspect_, s * aspect_, c, (x - c * x + s * y) / aspect_, y - s * x - c * y};
    *half = std::min(*half, scale * least);
    return true;
  }

  bool drawBorder(const zol::Affine &m, double half) {
    zol::ShapeSegments segments;
    if (!fetch(
            {m.xx * aspect_, m.xy * aspect_, m.yx, m.yy, (m.dx - canvas_.left) * aspect_, m.dy - canvas_.top},
            segments))
      return false;
    const zol::Outline outline(segments);
    border_.emplace(canvas_.width(), canvas_.height(), aspect_);
    zol::Growing<zol::StrokePoint> points;
    bool added = static_cast<bool>(outline);
    for (const zol::Contour &contour : outline.contours()) {
      points.cut(0);
      for (size_t i = 0; added && i < contour.count; ++i)
        added = points.add({outline.points(contour)[i].x, outline.points(contour)[i].y, half});
      if (added)
        zol::stroke(points.data(), points.count(), contour.closed, zol::Join::round, zol::Cap::round,
                    *border_);
    }
    border_->merge();
    return added && *border_ ? true : fail();
  }

  bool fetch(const zol::Affine &matrix, zol::ShapeSegments &segments) {
    if (zol::fetchShape(host_, settings_.geometry, host_->FrameTime, zol::ShapeUse::filling, matrix,
                        segments))
      return true;
    zol::showMessage(host_, "GeoGetCurves returns error");
    return false;
  }

  // ---- The mask ----

  bool soften() {
    const int width = canvas_.width(), height = canvas_.height();
    const zol::Softening softening(settings_.softness, settings_.softness * aspect_, width, height);
    if (softening.isCopy())
      return true;
    soft_.emplace(static_cast<size_t>(width) * static_cast<size_t>(height));
    if (!softening || !*soft_)
      return fail();
    const bool widened = zol::forEachRow(host_, height, [&](int y) {
      if (filled_)
        ZOL_SELECT(alphaToWide)(filledRow(y), softRow(y), width);
      else
        ZOL_SELECT(widenRow)(straight_->row(y), softRow(y), width);
    });
    return widened && softening(soft_->data(), [this] { return !zol::aborted(host_); });
  }

  [[nodiscard]] uint16_t *softRow(int y) const { return soft_->data() + ptrdiff_t{y} * canvas_.width(); }
  [[nodiscard]] const _color_t *filledRow(int y) const {
    return filled_->Pixels + ptrdiff_t{y} * canvas_.width();
  }

  t_ZoHostInfo *host_;
  zol::Area canvas_;
  const Settings &settings_;
  double aspect_;
  zol::OwnedPic filled_; ///< the mask is its alpha; or that of a straight edge
  std::optional<zol::Coverage> straight_, border_;
  std::optional<zol::Scratch<uint16_t>> soft_;
};

/// Writes the canvas's pixels. False when the host wants to stop, or after a message.
bool compose(t_ZoHostInfo *host, const zol::Area &canvas, const pic &a, const pic &b,
             const Settings &settings, _color_t *out) {
  const auto width = static_cast<size_t>(std::max(canvas.width(), 0));
  Wipe wipe(host, canvas, settings);
  const zol::Scratch<_color_t> bufferA(width), bufferB(width);
  const zol::Scratch<uint8_t> mask(width);
  if (!bufferA || !bufferB || !mask) {
    zol::showMemoryError(host);
    return false;
  }
  if (!wipe.make())
    return false;
  const auto mix = ZOL_SELECT(mixByMask);
  return zol::forEachRow(host, canvas.height(), [&](int y) {
    _color_t *const row = out + ptrdiff_t{y} * canvas.width();
    wipe.maskRow(y, mask.data());
    mix(zol::canvasRow(canvas, &a, canvas.top + y, bufferA.data()),
        zol::canvasRow(canvas, &b, canvas.top + y, bufferB.data()), mask.data(), row, canvas.width());
    wipe.layBorder(y, row);
  });
}

pic *render(t_ZoHostInfo *host) {
  void *first = zol::input(host, kInputA), *second = zol::input(host, kInputB);
  if (first == nullptr || second == nullptr) {
    zol::showMessage(host, "Input not assigned");
    return nullptr;
  }
  const Settings settings = readSettings(host);
  const double transition = settings.invert ? 1 - settings.position : settings.position;
  const bool isEnd = !settings.asDrawn && (transition <= 0 || transition >= 1);
  const pic *a = isEnd && transition > 0 ? nullptr : zol::frameOf(host, first);
  if (isEnd) {
    const pic *only = transition > 0 ? zol::frameOf(host, second) : a;
    return only != nullptr ? zol::copyOf(host, only) : nullptr;
  }
  const pic *b = a != nullptr ? zol::frameOf(host, second) : nullptr;
  if (b == nullptr)
    return nullptr;
  const zol::Area canvas = zol::unionOf(zol::Area::of(*a), zol::Area::of(*b));
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  const bool done = out && (canvas.isEmpty() || compose(host, canvas, *a, *b, settings, out->Pixels));
  return done ? out.release() : nullptr;
}

constexpr zol::Effect kWiper{
    .name = "Geometry Shading/Wiper",
    .sign = "Wiper Zo1 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Wiper",
    .description = kDescription,
    .icon = wiper_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessWiperDeclare(t_ZoHostInfo *host) { return zol::declare(host, kWiper); }
