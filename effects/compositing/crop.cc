// Crop: keeps a rectangle or a shape of its input, with hard or soft sides, and shows a color, a blurred
// enlargement or the background outside. Where nothing is cut it is a copy. One effect for Halvenor, and a
// real-time filter for the other hosts.

#include "effects/compositing/crop.xpm"
#include "effects/matte_plane.h"
#include "effects/shape_mask.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/real_time.h"
#include "frame/values.h"
#include "kernels/compositing/crop_mask.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/compositing/shutter.h"
#include "kernels/exports/blur.h"
#include "kernels/warp/warp_row.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kLeft,
  kRight,
  kTop,
  kBottom,
  kInset,
  kSoftness,
  kRoundness,
  kGeometry,
  kInvert,
  kOutside,
  kColor,
  kBlurriness,
  kBackground,
};
enum class Outside { transparent, color, blurred };

constexpr const char *kOutsides[] = {"Transparent", "Color", "Blurred image"};

constexpr double kUsualBlurriness = 0.2;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image to crop."),
    field::curve(kLeft, "Left", zol::kShare, 0)
        .help("How much is cut off at the left, in widths of the image: 0 cuts nothing."),
    field::curve(kRight, "Right", zol::kShare, 0)
        .help("How much is cut off at the right, in widths of the image: 0 cuts nothing."),
    field::curve(kTop, "Top", zol::kShare, 0)
        .help("How much is cut off at the top, in heights of the image: 0 cuts nothing."),
    field::curve(kBottom, "Bottom", zol::kShare, 0)
        .help("How much is cut off at the bottom, in heights of the image: 0 cuts nothing."),
    field::curve(kInset, "Inset", zol::kShare, 0)
        .help("How much is cut off all sides besides, of half the image's smaller side: 0 cuts nothing."),
    field::curve(kSoftness, "Softness", zol::kShare, 0)
        .help("How softly the image fades in from where it is cut, in tenths of the frame's width. 0 cuts it "
              "sharply; sides that are not cut stay sharp."),
    field::curve(kRoundness, "Roundness", zol::kShare, 0)
        .help("How round the corners are: 0 leaves them square, at 1 the smaller sides are half circles."),
    field::geometry(kGeometry, "Geometry")
        .help("A shape to which the image is cut besides. It may be left out."),
    field::toggle(kInvert, "Invert", false)
        .label("In&vert")
        .help("Whether what would be kept is cut out, and all else is kept."),
    field::selector(kOutside, "Outside", kOutsides)
        .help("What shows where the image is cut: nothing, or the background where there is one; a color; or "
              "the kept part, enlarged and blurred."),
    field::color(kColor, "Color", 0xFF000000).help("The color that Outside shows."),
    field::curve(kBlurriness, "Blurriness", zol::kShare, kUsualBlurriness)
        .help("How far the blurred image is blurred, in shares of the frame's width divided by 7.2. 0 leaves "
              "it sharp."),
    field::input(kBackground, "Background")
        .help("The image on which the cropped one is laid, where it has its place. It may be left out."),
};
constexpr zol::FieldTable kStandardFields = zol::FieldTable(kFields).withoutLast();

ZOL_TEXT_TABLE kTexts[] = {
    "Crop  on",  "Input",      "Left",       "Right",
    "Top",       "Bottom",     "Inset",      "Softness",
    "Roundness", "Geometry",   "In&vert",    "Outside",
    "Color",     "Blurriness", "Background", "Cuts an image to a rectangle or a shape",
};

constexpr char kDescription[] =
    "This effect cuts an image to a rectangle or a shape, with sharp or soft sides and round corners. "
    "Outside "
    "it shows nothing, a color, or the image itself, enlarged and blurred. <br><br>Required inputs: Input "
    "image.";

struct Settings {
  zol::CropLook look;
  void *geometry;
  bool inverts;
  Outside outside;
  _color_t color; // opaque
  double blurRadius;

  /// Whether only what is kept shows.
  [[nodiscard]] bool isBare(const pic *background) const {
    return background == nullptr && outside == Outside::transparent;
  }
};

Settings readSettings(t_ZoHostInfo *host) {
  const auto share = [host](Field field) { return zol::paramShare(host, field); };
  Settings settings;
  settings.look = {.left = share(kLeft),
                   .right = share(kRight),
                   .top = share(kTop),
                   .bottom = share(kBottom),
                   .inset = share(kInset),
                   .roundness = share(kRoundness),
                   .softness = zol::pixelsOf(host, share(kSoftness)),
                   .aspect = zol::shownAspect(host)};
  settings.geometry = host->Services->ParamGetGeometry(host, kGeometry, 0);
  settings.inverts = zol::paramInt(host, kInvert) != 0;
  settings.outside = static_cast<Outside>(std::clamp(zol::paramInt(host, kOutside), 0, 2));
  settings.color = zol::paramColor(host, kColor);
  settings.color.a = 255;
  settings.blurRadius = zol::paramShare(host, kBlurriness, kUsualBlurriness) * host->Width / 7.2;
  return settings;
}

/// How much of each pixel of the input is kept.
class Kept {
public:
  Kept(t_ZoHostInfo *host, const pic &frame, const Settings &settings)
      : host_(host), frame_(frame), settings_(settings), mask_(frame.Width, frame.Height, settings.look),
        row_(size_t(frame.Width)) {}

  /// False when the host wants to stop or, after a message, when memory runs out.
  bool prepare() {
    if (zol::Area::of(frame_).isEmpty())
      return true;
    if (!mask_ || !row_) {
      zol::showMemoryError(host_);
      return false;
    }
    return settings_.geometry == nullptr || makeMatte();
  }

  [[nodiscard]] const zol::CropMask &mask() const { return mask_; }
  [[nodiscard]] bool keepsAll() const {
    return zol::Area::of(frame_).isEmpty() ||
           (mask_.keepsAll() && settings_.geometry == nullptr && !settings_.inverts);
  }

  /// Coverages of row y of the picture, until the next call.
  const uint16_t *row(int y) {
    const uint16_t *const coverage = mask_.row(y);
    if (!matte_ && !settings_.inverts)
      return coverage;
    std::copy_n(coverage, frame_.Width, row_.data());
    if (matte_)
      ZOL_SELECT(matteCoverage)(matte_->row(y), row_.data(), frame_.Width);
    if (settings_.inverts)
      ZOL_SELECT(invertCoverage)(row_.data(), frame_.Width);
    return row_.data();
  }

private:
  bool makeMatte() {
    const zol::OwnedPic shape(host_, zol::createShapeMask(host_, zol::Area::of(frame_), settings_.geometry));
    if (!shape)
      return false;
    if (!matte_.emplace(host_, frame_.Width, frame_.Height, true)) {
      zol::showMemoryError(host_);
      return false;
    }
    for (int y = 0; y < frame_.Height; ++y)
      ZOL_SELECT(matteRow)
    (shape->Pixels + ptrdiff_t{y} * frame_.Width, zol::MatteSource::alpha, matte_->row(y), frame_.Width);
    return matte_->soften(settings_.look.softness / 2);
  }

  t_ZoHostInfo *host_;
  const pic &frame_;
  const Settings &settings_;
  zol::CropMask mask_;
  std::optional<zol::MattePlane> matte_;
  zol::Scratch<uint16_t> row_;
};

/// The part that is kept, as large as covers the picture, on black. False as above.
bool enlarge(t_ZoHostInfo *host, const pic &frame, const zol::CropMask &mask, const pic &out) {
  const zol::CropSpan &columns = mask.columns(), &rows = mask.rows();
  const zol::Area touched = mask.touchedFrom(0, 0);
  const auto source = zol::WarpSource::of(frame.Pixels + ptrdiff_t{touched.top} * frame.Width + touched.left,
                                          frame.Width, touched.width(), touched.height());
  const double scale = std::max(columns.size / columns.length(), rows.size / rows.length());
  const auto toKept = [scale](const zol::CropSpan &span, int first) {
    return span.middle() - first - span.size / 2.0 / scale;
  };
  const zol::WarpMap map(zol::Projection::moved(toKept(columns, touched.left), toKept(rows, touched.top)) *
                             zol::Projection::scaled(1 / scale, 1 / scale),
                         source.width, source.height);
  const zol::Scratch<_color_t> buffer(static_cast<size_t>(frame.Width));
  if (!buffer) {
    zol::showMemoryError(host);
    return false;
  }
  const auto lay = ZOL_SELECT(layPixels);
  return zol::forEachRow(host, out.Height, [&](int y) {
    _color_t *const pixels = out.Pixels + ptrdiff_t{y} * out.Width;
    if (source.opaque)
      return zol::warpPixels(source, map, y, 0, out.Width, zol::WarpFilter::smooth, pixels);
    zol::warpPixels(source, map, y, 0, out.Width, zol::WarpFilter::smooth, buffer.data());
    std::fill_n(pixels, out.Width, _color_t{0, 0, 0, 255});
    lay(pixels, buffer.data(), out.Width, {});
  });
}

/// What the blurred image is: as large as the picture. Null when the host wants to stop or, after a message,
/// when it cannot be had.
pic *createBlurred(t_ZoHostInfo *host, const pic &frame, const zol::CropMask &mask, double radius) {
  constexpr double kFarthest = 100; // of one blur
  zol::OwnedPic image(host, zol::createAt(host, zol::Area::of(frame)));
  if (!image)
    return nullptr;
  if (mask.keepsNothing())
    std::fill_n(image->Pixels, ptrdiff_t{frame.Width} * frame.Height, _color_t{0, 0, 0, 255});
  else if (!enlarge(host, frame, mask, *image))
    return nullptr;
  // Wider blurs are several; beyond the picture's size it is even.
  const double needed = std::min(radius, 2.0 * std::max(frame.Width, frame.Height));
  const double blurs = std::max(1.0, std::ceil(needed / kFarthest * (needed / kFarthest)));
  for (int i = 0; i < blurs; ++i) {
    pic *const blurred = FillBlurImage(host, image.get(), needed / std::sqrt(blurs));
    if (blurred == nullptr)
      return nullptr;
    image.reset(blurred);
  }
  return image.release();
}

/// Writes the canvas's pixels. False as above.
bool compose(t_ZoHostInfo *host, const zol::Area &canvas, const pic *background, const pic &frame, Kept &kept,
             const Settings &settings, _color_t *out) {
  const zol::Area area = zol::Area::of(frame), lies = zol::coveredPart(canvas, area);
  std::optional<zol::OwnedPic> blurred;
  if (settings.outside == Outside::blurred && !lies.isEmpty()) {
    blurred.emplace(host, createBlurred(host, frame, kept.mask(), settings.blurRadius));
    if (!*blurred)
      return false;
  }
  const auto keep = ZOL_SELECT(keepPixels);
  const auto lay = ZOL_SELECT(layCovered);
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    _color_t *const begin = out + canvas.index(canvas.left, y), *const at = begin + (lies.left - canvas.left);
    if (!lies.hasRow(y))
      return zol::writeCanvasRow(canvas, background, y, begin);
    const _color_t *const pixels = zol::pixelAt(frame, lies.left, y);
    const uint16_t *const coverage = kept.row(y - area.top) + (lies.left - area.left);
    if (settings.isBare(background)) {
      std::fill(begin, at, _color_t{});
      keep(pixels, coverage, at, lies.width());
      std::fill(at + lies.width(), begin + canvas.width(), _color_t{});
      return;
    }
    zol::writeCanvasRow(canvas, background, y, begin);
    if (blurred)
      std::copy_n(zol::pixelAt(**blurred, lies.left, y), lies.width(), at);
    else if (settings.outside == Outside::color)
      std::fill_n(at, lies.width(), settings.color);
    lay(at, pixels, coverage, lies.width());
  });
}

/// What a crop without a background leaves: the kept rectangle where nothing else shows.
zol::Area canvasOf(const t_ZoHostInfo *host, const pic &frame, const Kept &kept, const Settings &settings) {
  if (settings.outside != Outside::transparent)
    return zol::Area::ofSize(host->Width, host->Height);
  return settings.inverts ? zol::Area::of(frame) : kept.mask().touchedFrom(frame.X, frame.Y);
}

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  void *backgroundInput = zol::input(host, kBackground);
  pic *background = backgroundInput != nullptr ? zol::frameOf(host, backgroundInput) : nullptr;
  if (backgroundInput != nullptr && background == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  Kept kept(host, *frame, settings);
  if (background == nullptr && kept.keepsAll())
    return zol::copyOf(host, frame);
  if (!kept.prepare())
    return nullptr;
  zol::OwnedPic out(host,
                    zol::createAt(host, background != nullptr ? zol::Area::of(*background)
                                                              : canvasOf(host, *frame, kept, settings)));
  const bool done =
      out && compose(host, zol::Area::of(*out), background, *frame, kept, settings, out->Pixels);
  return done ? out.release() : nullptr;
}

int renderRT(t_ZoHostInfo *host) {
  if (!zol::requirePictureBuffers(host))
    return 0;
  const pic out = zol::pictureOf(host, host->OutputBuffer),
            frame = zol::pictureOf(host, host->InputBuffers[0]);
  const Settings settings = readSettings(host);
  Kept kept(host, frame, settings);
  if (kept.keepsAll()) {
    zol::copyShared(out, frame);
    return 1;
  }
  return kept.prepare() && compose(host, zol::Area::of(out), nullptr, frame, kept, settings, out.Pixels) ? 1
                                                                                                         : 0;
}

constexpr zol::Effect kCrop{
    .name = "Compositing/Crop",
    .sign = "Crop Zo2 native",
    .version = 3,
    .hosts = zol::Hosts::halvenor,
    .section = "Crop",
    .description = kDescription,
    .icon = crop_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

constexpr zol::Effect kStandardCrop{
    .name = "Filters/Standard/Crop",
    .sign = "Crop Qb5 native",
    .version = 1,
    .hosts = zol::Hosts::allButHalvenor,
    .section = "Crop",
    .description = kDescription,
    .type = "Filter",
    .icon = crop_xpm,
    .init = zol::defaults<kStandardFields>,
    .renderVideoRT = renderRT,
    .fields = kStandardFields,
};

} // namespace

ZOL_EXPORT int ProcessCropDeclare(t_ZoHostInfo *host) { return zol::declare(host, kCrop, kStandardCrop); }
