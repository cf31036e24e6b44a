// Draw Geometry: strokes a geometry's outline, the whole or a part of it, solid or dashed, over the input or,
// where none is assigned, on a transparent frame. At Alpha 0 it is a copy.

#include "effects/geometry/draw_geometry.xpm"
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
  kWidth,
  kJoin,
  kCap,
  kStart,
  kEnd,
  kShift,
  kDash,
  kGap,
  kContours
};

constexpr const char *kJoins[] = {"Round", "Miter", "Bevel"}; // in the order of zol::Join
constexpr const char *kCaps[] = {"Round", "Butt", "Square"};  // in the order of zol::Cap
constexpr const char *kOrders[] = {"Together", "One after another"};

constexpr double kMostShift = 10;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input")
        .clip()
        .help("The image under the line. It may be left out: the line then stands on a transparent frame."),
    field::geometry(kGeometry, "Geometry").help("The shape whose outline is drawn."),
    field::color(kColor, "Color", 0xFFFFFFFF).help("The color of the line."),
    field::alpha(kAlpha, "Alpha", 1)
        .help("How opaque the line is: 0 shows nothing of it, 1 nothing of what lies below."),
    field::curve(kWidth, "Width", zol::kShare, 0.01)
        .help("How wide the line is, in widths of the frame; one pixel at least."),
    field::selector(kJoin, "Join", kJoins)
        .help("What corners look like: round, drawn out to a tip, or cut off."),
    field::selector(kCap, "Cap", kCaps)
        .help("What ends look like: round, cut off where the line ends, or half its width behind it."),
    field::curve(kStart, "Start", zol::kShare, 0)
        .help("Where the line begins, as a share of the outline's length: 0 is its beginning."),
    field::curve(kEnd, "End", zol::kShare, 1)
        .help("Where the line ends, as a share of the outline's length: 1 is its end. From 0 to 1 over time "
              "the line draws itself."),
    field::curve(kShift, "Shift", {-kMostShift, kMostShift, "ZodfNone"}, 0)
        .help(
            "Moves both ends along, in lengths of the outline, round and round where it is closed: 0 leaves "
            "them in place."),
    field::curve(kDash, "Dash", zol::kShare, 0)
        .help(
            "How long dashes are, in widths of the frame: 0 draws a solid line. On a closed outline they are "
            "stretched until they fit."),
    field::curve(kGap, "Gap", zol::kShare, 0.02)
        .help("How far it is from one dash to the next, in widths of the frame."),
    field::selector(kContours, "Contours", kOrders)
        .help("Whether several contours are drawn at once, or each when the one before is complete."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Draw Geometry  on",
    "Input",
    "Geometry",
    "Color",
    "Alpha",
    "Width",
    "Join",
    "Cap",
    "Start",
    "End",
    "Shift",
    "Dash",
    "Gap",
    "Contours",
    "Draws the outline of a geometry",
};

constexpr char kDescription[] =
    "This effect draws the outline of a geometry over the input image: as a whole or a part of it, so that "
    "it "
    "can draw itself, solid or dashed. <br><br>Without an input the line stands on a transparent frame.";

struct Line {
  double half; ///< of its width, in pixels
  zol::Join join;
  zol::Cap cap;
};

/// In shares of the outline's length, and in pixels.
struct Part {
  double start, end, shift;
  double dash, gap;
  bool inTurn;

  [[nodiscard]] bool isWhole() const { return start <= 0 && end >= 1; }
};

Line readLine(t_ZoHostInfo *host) {
  const double width = std::max(zol::paramShare(host, kWidth) * host->Width, 1.0);
  return {width / 2, static_cast<zol::Join>(std::clamp(zol::paramInt(host, kJoin), 0, 2)),
          static_cast<zol::Cap>(std::clamp(zol::paramInt(host, kCap), 0, 2))};
}

Part readPart(t_ZoHostInfo *host) {
  return {zol::paramShare(host, kStart),
          zol::paramShare(host, kEnd),
          zol::paramWithin(host, kShift, -kMostShift, kMostShift),
          zol::paramShare(host, kDash) * host->Width,
          zol::paramShare(host, kGap) * host->Width,
          zol::paramInt(host, kContours) != 0};
}

/// Draws parts of contours.
class Pen {
public:
  Pen(const zol::Outline &outline, const Line &line, const Part &part, zol::Coverage &coverage)
      : outline_(outline), line_(line), part_(part), coverage_(coverage) {}

  /// False when memory runs out.
  bool draw() {
    if (!part_.inTurn) {
      for (const zol::Contour &contour : outline_.contours())
        if (!drawRange(contour, part_.start, part_.end, part_.shift))
          return false;
      return true;
    }
    double all = 0, before = 0;
    bool round = true;
    for (const zol::Contour &contour : outline_.contours()) {
      all += outline_.length(contour);
      round = round && contour.closed;
    }
    for (const zol::Contour &contour : outline_.contours()) {
      const double length = outline_.length(contour);
      // What of the range lies on this contour; where all are closed the range also comes round again.
      const double shift = part_.isWhole() ? 0 : round ? part_.shift - std::floor(part_.shift) : part_.shift;
      for (int turn = 0; turn <= (round ? 1 : 0); ++turn) {
        const auto local = [&](double share) {
          return length > 0 ? std::clamp(((share + shift - turn) * all - before) / length, 0.0, 1.0) : 0;
        };
        if (!drawRange(contour, local(part_.start), local(part_.end), 0))
          return false;
      }
      before += length;
    }
    return true;
  }

private:
  bool drawRange(const zol::Contour &contour, double start, double end, double shift) {
    const double length = outline_.length(contour);
    if (!(start < end))
      return true;
    const bool isWhole = start <= 0 && end >= 1;
    double from = (start + shift) * length, to = (end + shift) * length;
    if (contour.closed) {
      const double turns = length * std::floor(start + shift);
      from -= turns;
      to -= turns;
    } else {
      from = std::max(from, 0.0);
      to = std::min(to, length);
    }
    if (part_.dash > 0)
      return drawDashes(contour, from, to);
    if (contour.closed && isWhole)
      return drawPiece(contour, 0, length, true);
    return drawPiece(contour, from, to, false);
  }

  bool drawDashes(const zol::Contour &contour, double from, double to) {
    constexpr double kMostDashes = 100000;
    const double length = outline_.length(contour);
    double period = std::max(part_.dash + part_.gap, length / kMostDashes);
    if (contour.closed)
      period = length / std::max(1.0, std::rint(length / period));
    const double dash = part_.dash / (part_.dash + part_.gap) * period;
    const double almost = to - 1e-6 * period; // a last one that begins where the line ends
    for (int i = 0; from + i * period < almost; ++i)
      if (!drawPiece(contour, from + i * period, std::min(from + i * period + dash, to), false))
        return false;
    return true;
  }

  /// From one way along the contour to another, which lies behind it; from the end of a closed one it goes on
  /// at its beginning.
  bool drawPiece(const zol::Contour &contour, double from, double to, bool closed) {
    const double length = outline_.length(contour);
    if (contour.closed && from >= length) {
      from -= length;
      to -= length;
    }
    const zol::OutlinePoint *points = outline_.points(contour);
    points_.cut(0);
    const auto add = [this](const auto &point) { return points_.add({point.x, point.y, line_.half}); };
    const auto addBetween = [&](double begin, double end) {
      for (size_t i = outline_.pointBehind(contour, begin); i < contour.count && points[i].way < end; ++i)
        if (!add(points[i]))
          return false;
      return true;
    };
    if (!add(outline_.at(contour, from)) || !addBetween(from, std::min(to, length)))
      return false;
    if (to > length && contour.closed && !(add(points[0]) && addBetween(0, to - length)))
      return false;
    if (!closed && !add(outline_.at(contour, to > length && contour.closed ? to - length : to)))
      return false;
    zol::stroke(points_.data(), points_.count(), closed, line_.join, line_.cap, coverage_);
    return true;
  }

  const zol::Outline &outline_;
  Line line_;
  Part part_;
  zol::Coverage &coverage_;
  zol::Growing<zol::StrokePoint> points_;
};

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
  if (!outline || !coverage || !Pen{outline, readLine(host), readPart(host), coverage}.draw()) {
    zol::showMemoryError(host);
    return nullptr;
  }
  return zol::layPaint(host, *out, coverage, paint) ? out.release() : nullptr;
}

/// The default geometry: a circle in the middle of the frame, half as high. A host that does not draw leaves
/// the field empty.
void drawCircle(t_ZoHostInfo *host) {
  constexpr double kHandle = 0.5522847498; // of the radius
  struct Vertex {
    double x, y, beforeX, beforeY, afterX, afterY;
  };
  constexpr Vertex kCircle[] = {{1, 0, 0, -kHandle, 0, kHandle},
                                {0, 1, kHandle, 0, -kHandle, 0},
                                {-1, 0, 0, kHandle, 0, -kHandle},
                                {0, -1, -kHandle, 0, kHandle, 0}};
  const double down = host->Height / 4.0, across = down / zol::pixelAspect(host);
  bool done =
      ZoScriptExecuteHi(host, "ZoGeo *gg = ZoGeoContourCreate( ZoClipFrom( ZoCurrentClip ) );") != 0 &&
      ZoScriptExecuteHi(host, "ZoGeoMove( gg, %f, %f );", host->Width / 2.0, host->Height / 2.0) != 0;
  for (const Vertex &v : kCircle)
    done = done && ZoScriptExecuteHi(host, "ZoGeoContourVertexAdd( gg, %f, %f, %f, %f, %f, %f );",
                                     v.x * across, v.y * down, v.beforeX * across, v.beforeY * down,
                                     v.afterX * across, v.afterY * down) != 0;
  (void)(done && ZoScriptExecuteHi(host, "ZoGeoContourClose( gg );") != 0 &&
         ZoScriptExecuteHi(host, "ZoParamSet( ZoCurrentClip, %d, 0, gg );", int{kGeometry}) != 0 &&
         ZoScriptExecuteHi(host, "ZoGeoSetPrivate( gg );") != 0);
}

int init(t_ZoHostInfo *host) {
  zol::putDefaults(host, kFields);
  drawCircle(host);
  return 1;
}

constexpr zol::Effect kDrawGeometry{
    .name = "Geometry Shading/Draw Geometry",
    .sign = "DrawGeometry Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "DrawGeometry",
    .description = kDescription,
    .icon = draw_geometry_xpm,
    .init = init,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessDrawShapeDeclare(t_ZoHostInfo *host) { return zol::declare(host, kDrawGeometry); }
