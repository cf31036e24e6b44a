// Spread: scatters pixels, or cells of them, over their neighbourhood. Where Horizontal and Vertical are 0 it
// is a copy. The noise stands still unless Changes says otherwise, and any frame alone has the same noise.

#include "effects/filters/spread.xpm"
#include "frame/canvas.h"
#include "frame/convert.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/noise/spread_rows.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field { kInput, kHorizontal, kVertical, kGrain, kSeed, kChanges };

constexpr zol::Range kPerSecond{0, 60, "ZodfBothLimits|ZodfHideCurve"};

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image whose pixels are scattered."),
    field::curve(kHorizontal, "Horizontal", zol::kShare, 0.05)
        .help(
            "How far pixels come from to the left and right, in tenths of the frame's width: 0 moves none."),
    field::curve(kVertical, "Vertical", zol::kShare, 0.05)
        .help("How far pixels come from above and below, in tenths of the frame's width: 0 moves none."),
    field::curve(kGrain, "Grain", zol::kShare, 0)
        .help(
            "The size of the cells that move as one, in tenths of the frame's width: 0 moves every pixel on "
            "its own."),
    field::integer(kSeed, "Seed", 0, 65535, 0).help("Which noise it is: every number gives another one."),
    field::curve(kChanges, "Changes", kPerSecond, 0)
        .label("Changes per second")
        .help("How many times a second the noise becomes another one: 0 lets it stand still."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Spread  on", "Input", "Horizontal", "Vertical", "Grain", "Seed", "Changes per second", "Scatters pixels",
};

constexpr char kDescription[] = "This effect scatters the pixels of the image, or grains of it, over their "
                                "neighborhood, as frosted glass "
                                "does. <br><br>Required inputs: Input image.";

int inSixteenths(double pixels) {
  return static_cast<int>(std::min<double>(16 * std::max(pixels, 0.0) + 0.5, zol::kMostSpread));
}

/// Of pixels; at least one, and no more than the largest picture has.
int cellOf(double size) { return static_cast<int>(std::clamp<double>(size, 1, INT16_MAX)); }

zol::Spreading readSpreading(t_ZoHostInfo *host) {
  const double aspect = zol::pixelAspect(host);
  const auto pixels = [host](int field) { return zol::pixelsOf(host, zol::paramShare(host, field)); };
  zol::Spreading how;
  how.radiusX = inSixteenths(pixels(kHorizontal));
  how.radiusY = inSixteenths(pixels(kVertical) * aspect);
  how.cellWidth = cellOf(1 + pixels(kGrain));
  how.cellHeight = cellOf(how.cellWidth * aspect + 0.5);
  how.seed = static_cast<uint32_t>(std::clamp(zol::paramInt(host, kSeed), 0, 65535));
  const double changes = zol::paramWithin(host, kChanges, 0, 60);
  // A hair more, so that a change that falls on a frame comes with that frame.
  const int step = zol::truncate((host->FrameTime - host->VideoClipStart) * changes + 0.000001);
  how.step = static_cast<uint32_t>(step);
  return how;
}

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const zol::Spreading how = readSpreading(host);
  if (how.radiusX == 0 && how.radiusY == 0)
    return zol::copyOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, zol::Area::of(*frame)));
  if (!out)
    return nullptr;
  const auto row = ZOL_SELECT(spreadRow);
  const bool finished = zol::forEachRow(
      host, frame->Height, [&](int y) { row(*frame, y, out->Pixels + ptrdiff_t{y} * frame->Width, how); });
  return finished ? out.release() : nullptr;
}

constexpr zol::Effect kSpread{
    .name = "Filters/Spread",
    .nameInQuorbel = "Filters/Special/Spread",
    .sign = "Spread Zo2 native",
    .version = 1,
    .section = "Spread",
    .description = kDescription,
    .icon = spread_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessSpreadDeclare(t_ZoHostInfo *host) { return zol::declare(host, kSpread); }
