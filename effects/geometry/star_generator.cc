// Star Generator: a star, or many by chance, over the input or, where none is assigned, on a transparent
// frame. One stands where X and Y say or in the middle of a geometry, many within the geometry or the frame.
// At Alpha 0 it is a copy.

#include "effects/geometry/star_generator.xpm"
#include "effects/geometry/glow.h"
#include "effects/geometry/painting.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "kernels/noise/hash.h"
#include "kernels/shape/shape_points.h"

#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kGeometry,
  kColor,
  kAlpha,
  kX,
  kY,
  kRadius,
  kInner,
  kPoints,
  kAngle,
  kGlow,
  kGlowColor,
  kStars,
  kSeed,
  kSpread,
  kTwinkle,
  kDepth
};

constexpr int kLeastPoints = 2, kMostPoints = 64, kMostStars = 5000, kMostSeed = 65535;
constexpr double kMostTwinkle = 1000;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input")
        .clip()
        .help("The image under the stars. It may be left out: they then stand on a transparent frame."),
    field::geometry(kGeometry, "Geometry")
        .help("One star fills this shape's box, many stand within the shape. Without it a star stands where "
              "X and "
              "Y say, and many stand anywhere in the frame."),
    field::color(kColor, "Color", 0xFFFFFFC0).help("The color of the stars."),
    field::alpha(kAlpha, "Alpha", 1)
        .help("How opaque the stars are: 0 shows nothing of them, 1 nothing of what lies below."),
    field::curve(kX, "X", zol::kOpenSigned, 0)
        .help("Moves the star to the right, in widths of the frame: 0 is the middle."),
    field::curve(kY, "Y", zol::kOpenSigned, 0)
        .help("Moves the star down, in heights of the frame: 0 is the middle."),
    field::curve(kRadius, "Radius", zol::kShare, 0.1)
        .help("How far the points reach from the middle, in widths of the frame."),
    field::curve(kInner, "Inner", zol::kShare, 0.4)
        .help("How far the corners between the points reach, as a share of the radius."),
    field::integer(kPoints, "Points", kLeastPoints, kMostPoints, 5).help("How many points a star has."),
    field::angle(kAngle, "Angle", 0)
        .help("Turns the stars, in degrees clockwise: 0 leaves one point upright."),
    field::curve(kGlow, "Glow", zol::kShare, 0)
        .help("How far the stars' light spreads, in widths of the frame: 0 shows none."),
    field::color(kGlowColor, "GlowColor", 0xFFFFC040)
        .label("Glow color")
        .help("The color of the light around the stars."),
    field::integer(kStars, "Stars", 1, kMostStars, 1).help("How many stars there are."),
    field::integer(kSeed, "Seed", 0, kMostSeed, 0).help("Another number places the stars anew."),
    field::curve(kSpread, "Spread", zol::kShare, 0.5)
        .help("How much smaller than the radius some of many stars are: 0 leaves all of one size."),
    field::curve(kTwinkle, "Twinkle", {0, kMostTwinkle, "ZodfNone"}, 0)
        .help("Lets the stars twinkle while it rises: by 1 each goes on to another brightness."),
    field::curve(kDepth, "Depth", zol::kShare, 0)
        .help("How much darker twinkling stars become: 0 leaves them alike, at 1 some vanish."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Star Generator  on",
    "Input",
    "Geometry",
    "Color",
    "Alpha",
    "X",
    "Y",
    "Radius",
    "Inner",
    "Points",
    "Angle",
    "Glow",
    "Glow color",
    "Stars",
    "Seed",
    "Spread",
    "Twinkle",
    "Depth",
    "Generates stars",
};

constexpr char kDescription[] = "This effect generates a star, or many by chance, over the input image. They "
                                "can glow and twinkle. <br><br>"
                                "Without an input they stand on a transparent frame.";

/// A star's corners around its middle, the radius being 1.
class Star {
public:
  Star(int points, double inner, double degrees) : count_(2 * points) {
    for (int k = 0; k < count_; ++k) {
      const zol::Direction to(degrees - 90 + 180.0 * k / points);
      const double radius = k % 2 == 0 ? 1 : inner;
      corners_[k] = {radius * to.right, radius * to.down};
    }
  }

  void draw(double x, double y, double radius, zol::Coverage &coverage) const {
    for (int k = 0; k < count_; ++k)
      coverage.lineTo(x + radius * corners_[k].right, y + radius * corners_[k].down);
    coverage.close();
  }

private:
  struct Corner {
    double right, down;
  };
  int count_;
  Corner corners_[2 * kMostPoints];
};

/// Where stars stand, in pixels of the frame.
struct Box {
  double left, top, width, height;
};

class Stars {
public:
  Stars(t_ZoHostInfo *host, const pic &ground, zol::Coverage &coverage)
      : host_(host), aspect_(zol::pixelAspect(host)), left_(ground.X), top_(ground.Y),
        geometry_(host->Services->ParamGetGeometry(host, kGeometry, 0)),
        star_{std::clamp(zol::paramInt(host, kPoints), kLeastPoints, kMostPoints),
              zol::paramShare(host, kInner), zol::paramAngle(host, kAngle)},
        radius_(zol::paramShare(host, kRadius) * host->Width), depth_(zol::paramShare(host, kDepth)),
        twinkle_(zol::paramWithin(host, kTwinkle, 0, kMostTwinkle)),
        seed_(static_cast<uint32_t>(std::clamp(zol::paramInt(host, kSeed), 0, kMostSeed))),
        coverage_(coverage) {}

  /// False after a message.
  bool draw() {
    const Box box = boxOf();
    const int count = std::clamp(zol::paramInt(host_, kStars), 1, kMostStars);
    if (count > 1)
      return drawMany(count, box);
    double x = host_->Width * (0.5 + zol::paramWithin(host_, kX, -zol::kOpenEnd, zol::kOpenEnd));
    double y = host_->Height * (0.5 + zol::paramWithin(host_, kY, -zol::kOpenEnd, zol::kOpenEnd));
    double radius = radius_;
    if (geometry_ != nullptr) {
      x = box.left + box.width / 2;
      y = box.top + box.height / 2;
      radius = std::min(box.width * aspect_, box.height) / 2;
    }
    drawOne(0, x, y, radius);
    return true;
  }

private:
  [[nodiscard]] Box boxOf() const {
    if (geometry_ == nullptr)
      return {0, 0, static_cast<double>(host_->Width), static_cast<double>(host_->Height)};
    constexpr double kFar = 1e6;
    double box[4] = {};
    host_->Services->GeoGetBox(host_, geometry_, box, host_->FrameTime);
    for (double &side : box)
      side = zol::within(side, -kFar, kFar);
    return {box[0], box[1], std::max(box[2] - box[0], 0.0), std::max(box[3] - box[1], 0.0)};
  }

  /// 0 to 1, the end not included.
  [[nodiscard]] double chance(int star, int step, int kind) const {
    return zol::hash(seed_, static_cast<uint32_t>(star), static_cast<uint32_t>(step),
                     static_cast<uint32_t>(kind)) *
           0x1p-32;
  }

  void drawOne(int index, double x, double y, double radius) {
    star_.draw((x - left_) * aspect_, y - top_, radius, coverage_);
    const double step = std::floor(twinkle_), t = twinkle_ - step, smooth = t * t * (3 - 2 * t);
    const double from = chance(index, static_cast<int>(step), 9),
                 to = chance(index, static_cast<int>(step) + 1, 9);
    coverage_.merge(static_cast<int>(zol::Coverage::kWhole * (1 - depth_ * (from + (to - from) * smooth))));
  }

  bool drawMany(int count, const Box &box) {
    constexpr int kTries = 16;
    constexpr double kTallest = 65536; // of a shape that is still known row by row
    const double spread = zol::paramShare(host_, kSpread);
    zol::ShapeSegments segments;
    std::optional<zol::ShapePoints> points;
    if (geometry_ != nullptr) {
      if (!zol::fetchShape(host_, geometry_, host_->FrameTime, zol::ShapeUse::filling, {}, segments)) {
        zol::showMessage(host_, "GeoGetCurves returns error");
        return false;
      }
      const int first = zol::truncate(std::max(box.top, -kTallest / 2)) - 1;
      points.emplace(segments, first, static_cast<int>(std::min(box.height, kTallest)) + 3);
      if (!*points) {
        zol::showMemoryError(host_);
        return false;
      }
    }
    for (int i = 0; i < count; ++i)
      for (int k = 0; k < kTries; ++k) {
        const double x = box.left + chance(i, 2 * k, 1) * box.width;
        const double y = box.top + chance(i, 2 * k + 1, 1) * box.height;
        if (points && !points->has(x, y))
          continue;
        const double small = chance(i, 0, 2);
        drawOne(i, x, y, radius_ * (1 - spread * small * small));
        break;
      }
    return true;
  }

  t_ZoHostInfo *host_;
  double aspect_;
  int left_, top_;
  void *geometry_;
  Star star_;
  double radius_, depth_, twinkle_;
  uint32_t seed_;
  zol::Coverage &coverage_;
};

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
  if (!Stars(host, *out, coverage).draw())
    return nullptr;
  zol::Glow glow;
  glow.radius = zol::paramShare(host, kGlow) * host->Width;
  glow.paint = zol::readPaint(host, kGlowColor, kAlpha);
  const bool done = zol::layGlow(host, *out, coverage, glow) && zol::layPaint(host, *out, coverage, paint);
  return done ? out.release() : nullptr;
}

/// Projects of before the fields were there open with all of them 0.
int openDialog(t_ZoHostInfo *host) {
  if (zol::paramInt(host, kPoints) == 0)
    zol::putDefaults(host, kFields);
  host->Services->DialogRefresh(host, 0, 0);
  return 1;
}

constexpr zol::Effect kStarGenerator{
    .name = "Geometry Shading/Star Generator",
    .nameElsewhere = "Filters/Special/Star Generator",
    .sign = "StarGen Zo2 native",
    .version = 3,
    .section = "StarGenerator",
    .description = kDescription,
    .icon = star_generator_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .onDialogOpen = openDialog,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessStarGenDeclare(t_ZoHostInfo *host) { return zol::declare(host, kStarGenerator); }

ZOL_EXPORT int ProcessStarGen2Declare() { return 0; }
