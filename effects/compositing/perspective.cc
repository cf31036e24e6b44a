// Perspective: moves the corners of its input, or straightens what was seen from the side, and turns it in
// space. With nothing moved, turned or zoomed it is a copy. One effect for Halvenor, and a real-time filter
// for the other hosts.

#include "effects/compositing/perspective.xpm"
#include "effects/compositing/warped_picture.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/real_time.h"
#include "frame/values.h"
#include "kernels/warp/projection.h"

#include <algorithm>
#include <cmath>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kTopLeftX,
  kTopLeftY,
  kTopRightX,
  kTopRightY,
  kBottomRightX,
  kBottomRightY,
  kBottomLeftX,
  kBottomLeftY,
  kTilt,
  kTurn,
  kRoll,
  kDepth,
  kZoom,
  kX,
  kY,
  kCorners,
  kFilter,
  kBackground,
};
enum Corners { kMove, kStraighten };

constexpr const char *kCornerItems[] = {"Move", "Straighten"};

constexpr double kUsualDepth = 0.5;

constexpr zol::Field cornerX(Field row, const char *name) {
  return field::curve(row, name, zol::kOpenSigned, 0)
      .help("How far the corner lies to the right of the image's own, in widths of the image: 0 is there.");
}
constexpr zol::Field cornerY(Field row, const char *name) {
  return field::curve(row, name, zol::kOpenSigned, 0)
      .help("How far the corner lies below the image's own, in heights of the image: 0 is there.");
}

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image to be seen in perspective."),
    cornerX(kTopLeftX, "TopLeftX").label("Top left X"),
    cornerY(kTopLeftY, "TopLeftY").label("Top left Y"),
    cornerX(kTopRightX, "TopRightX").label("Top right X"),
    cornerY(kTopRightY, "TopRightY").label("Top right Y"),
    cornerX(kBottomRightX, "BottomRightX").label("Bottom right X"),
    cornerY(kBottomRightY, "BottomRightY").label("Bottom right Y"),
    cornerX(kBottomLeftX, "BottomLeftX").label("Bottom left X"),
    cornerY(kBottomLeftY, "BottomLeftY").label("Bottom left Y"),
    field::angle(kTilt, "Tilt", 0)
        .help("Leans the image back, in degrees: its top goes away. 0 leaves it upright."),
    field::angle(kTurn, "Turn", 0)
        .help("Turns the image about its vertical axis, in degrees: its right side goes away. 0 leaves it."),
    field::angle(kRoll, "Roll", 0).help("Turns the image clockwise, in degrees; 0 leaves it."),
    field::curve(kDepth, "Depth", zol::kShare, kUsualDepth)
        .label("Perspective")
        .help("How much smaller what is further away looks, when the image is tilted or turned: 0 not at "
              "all, 1 as from its very edge."),
    field::curve(kZoom, "Zoom", {0, 4, "ZodfMinLimit"}, 1)
        .help("How many times as large the image is: 1 leaves its size, 0 shows nothing."),
    field::curve(kX, "X", zol::kOpenSigned, 0)
        .help("Moves the image to the right, in widths of the frame; 0 leaves it in place."),
    field::curve(kY, "Y", zol::kOpenSigned, 0)
        .help("Moves the image down, in heights of the frame; 0 leaves it in place."),
    field::selector(kCorners, "Corners", kCornerItems)
        .help("Move brings the image's corners to the points given; Straighten brings what lies between the "
              "points to the image's corners."),
    field::selector(kFilter, "Filter", zol::kWarpFilters)
        .help("Sharp keeps fine texture, Smooth is softer, Pixels takes the nearest pixel alone."),
    field::input(kBackground, "Background")
        .help("The image below. It may be left out: the input then stands on a transparent frame."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Perspective  on",
    "Input",
    "Top left X",
    "Top left Y",
    "Top right X",
    "Top right Y",
    "Bottom right X",
    "Bottom right Y",
    "Bottom left X",
    "Bottom left Y",
    "Tilt",
    "Turn",
    "Roll",
    "Perspective",
    "Zoom",
    "X",
    "Y",
    "Corners",
    "Filter",
    "Background",
    "Shows the input image in perspective",
};

constexpr char kDescription[] =
    "This effect moves the corners of the input image, straightens what was seen from the side, and turns "
    "the image in space. <br><br>Required inputs: Input image. Without a background it stands on a "
    "transparent frame.";

struct Settings {
  double corners[4][2]; // shares, in the order of the fields
  bool straightens;
  zol::Direction tilt, turn, roll;
  double depth, zoom;
  double right, down; // pixels
  zol::WarpFilter filter;

  [[nodiscard]] bool movesCorners() const {
    return std::any_of(&corners[0][0], &corners[0][0] + 8, [](double share) { return share != 0; });
  }
  [[nodiscard]] bool isNeutral() const {
    const auto none = [](const zol::Direction &turned) { return turned.right == 1 && turned.down == 0; };
    return !movesCorners() && none(tilt) && none(turn) && none(roll) && zoom == 1 && right == 0 && down == 0;
  }
};

Settings readSettings(t_ZoHostInfo *host) {
  const auto number = [host](int field) {
    return zol::paramWithin(host, field, -zol::kFarthest, zol::kFarthest);
  };
  const auto direction = [host](Field field) { return zol::Direction(zol::paramAngle(host, field)); };
  Settings settings{.corners = {},
                    .straightens = zol::paramInt(host, kCorners) == kStraighten,
                    .tilt = direction(kTilt),
                    .turn = direction(kTurn),
                    .roll = direction(kRoll),
                    .depth = zol::paramShare(host, kDepth, kUsualDepth),
                    .zoom = zol::paramWithin(host, kZoom, 0, zol::kFarthest, 1),
                    .right = number(kX) * host->Width,
                    .down = number(kY) * host->Height,
                    .filter = zol::paramWarpFilter(host, kFilter)};
  for (int i = 0; i < 8; ++i)
    settings.corners[i / 2][i % 2] = number(kTopLeftX + i);
  return settings;
}

/// Where the picture's rectangle, or all that it is straightened to, lies without being turned.
zol::Projection cornersOf(const pic &picture, const Settings &settings) {
  const double width = picture.Width, height = picture.Height;
  if (!settings.movesCorners())
    return zol::Projection::moved(0, 0);
  constexpr int kOwn[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  zol::Point corners[4];
  for (int i = 0; i < 4; ++i)
    corners[i] = {(kOwn[i][0] + settings.corners[i][0]) * width,
                  (kOwn[i][1] + settings.corners[i][1]) * height};
  const zol::Projection moved = zol::Projection::ofRectangle(width, height, corners);
  return settings.straightens ? moved.inverse() : moved;
}

/// How a plane looks that is turned in space about (0, 0). What is one unit behind that point looks smaller
/// by the share `fall`.
zol::Projection turnedInSpace(const Settings &settings, double fall) {
  const zol::Direction &tilt = settings.tilt, &turn = settings.turn, &roll = settings.roll;
  // Sideways, down and away, of a step to the right and of a step down.
  const double right[3] = {turn.right, turn.down * tilt.down, turn.down * tilt.right};
  const double down[3] = {0, tilt.right, -tilt.down};
  const auto rolled = [&](const double(&step)[3]) {
    return zol::Point{step[0] * roll.right - step[1] * roll.down, step[0] * roll.down + step[1] * roll.right};
  };
  const zol::Point x = rolled(right), y = rolled(down);
  const double zoom = settings.zoom;
  return {{{zoom * x.x, zoom * y.x, 0}, {zoom * x.y, zoom * y.y, 0}, {fall * right[2], fall * down[2], 1}}};
}

/// From the frame to the picture.
zol::WarpMap mapOf(const t_ZoHostInfo *host, const pic &picture, const Settings &settings) {
  using zol::Projection;
  const double aspect = zol::shownAspect(host), middleX = picture.Width * 0.5, middleY = picture.Height * 0.5;
  const double halfDiagonal = std::sqrt(middleX * aspect * (middleX * aspect) + middleY * middleY);
  const Projection toFrame =
      Projection::moved(picture.X + middleX + settings.right, picture.Y + middleY + settings.down) *
      Projection::scaled(1 / aspect, 1) * turnedInSpace(settings, settings.depth / halfDiagonal) *
      Projection::scaled(aspect, 1) * Projection::moved(-middleX, -middleY) * cornersOf(picture, settings);
  return {toFrame.inverse(), picture.Width, picture.Height};
}

pic *render(t_ZoHostInfo *host) {
  void *backgroundInput = zol::input(host, kBackground);
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  if (backgroundInput != nullptr && background == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  if (background == nullptr && settings.isNeutral())
    return zol::copyOf(host, frame);
  const zol::WarpMap map = mapOf(host, *frame, settings);
  return zol::renderWarped(host, background, {zol::WarpSource::of(*frame), {&map, 1}, settings.filter}, {});
}

int renderRT(t_ZoHostInfo *host) {
  if (!zol::requirePictureBuffers(host))
    return 0;
  const pic out = zol::pictureOf(host, host->OutputBuffer),
            frame = zol::pictureOf(host, host->InputBuffers[0]);
  const Settings settings = readSettings(host);
  if (settings.isNeutral()) {
    zol::copyShared(out, frame);
    return 1;
  }
  const zol::WarpMap map = mapOf(host, frame, settings);
  const zol::WarpedPicture picture = {zol::WarpSource::of(frame), {&map, 1}, settings.filter};
  return zol::layWarped(host, zol::Area::of(out), nullptr, picture, {}, out.Pixels) ? 1 : 0;
}

constexpr zol::Effect kPerspective{
    .name = "Compositing/Perspective",
    .sign = "Perspective Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
    .section = "Perspective",
    .description = kDescription,
    .icon = perspective_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

constexpr zol::Effect kSpecialPerspective{
    .name = "Filters/Special/Perspective",
    .sign = "Perspective Qb5 adapted",
    .version = 1,
    .hosts = zol::Hosts::allButHalvenor,
    .section = "Perspective",
    .description = kDescription,
    .type = "Filter",
    .icon = perspective_xpm,
    .init = zol::defaults<kFields>,
    .renderVideoRT = renderRT,
    .fields = zol::FieldTable(kFields).withoutLast(), // real-time renders have no background
};

} // namespace

ZOL_EXPORT int ProcessPerspectiveDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kPerspective, kSpecialPerspective);
}
