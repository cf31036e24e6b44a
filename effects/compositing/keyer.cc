// Keyer: lays its input on the background where the input is not the key, which is known by its color, its
// hue, its brightness, a picture of the empty scene or its alpha; edges get back the color of what stands
// before a screen. By alpha with Tolerance 0 and Softness 1 it is a copy.

#include "effects/compositing/keyer.xpm"
#include "effects/matte_plane.h"
#include "effects/shape_mask.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/color/wide_planes.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/keying/universal_key.h"

#include <algorithm>
#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kBackground,
  kInput,
  kPlate,
  kMethod,
  kColor,
  kTolerance,
  kSoftness,
  kRange,
  kShadows,
  kNoiseclean,
  kSpill,
  kShrink,
  kFeather,
  kGarbage,
  kInvert,
  kOpacity,
  kShow,
};
enum Show { kResult, kMatte };

// In the order of KeyMethod.
constexpr const char *kMethods[] = {"Chroma", "Color", "Hue", "Luma", "Saturation", "Difference", "Alpha"};
static_assert(std::size(kMethods) == zol::kKeyMethods);
constexpr const char *kShown[] = {"Result", "Matte"};

constexpr double kUsualTolerance = 0.3, kUsualSoftness = 0.6, kUsualRange = 0.8;

constexpr zol::Field kFields[] = {
    field::input(kBackground, "Background")
        .label(zol::kBackgroundLabel)
        .help("The image that shows where the key is. It may be left out: the input then stands on a "
              "transparent frame."),
    field::input(kInput, "Input").help("The image that stands before a screen or has another key."),
    field::input(kPlate, "Plate")
        .label("Clean plate")
        .help("Difference: the scene of the input without what stands in it."),
    field::selector(kMethod, "Method", kMethods)
        .help(
            "What a pixel is measured by. Chroma finds how much of a screen's light is in it and suits green "
            "and blue screens; Color, Hue, Luma and Saturation its distance from the key color, Difference "
            "that from the clean plate; Alpha takes the alpha that there is."),
    field::color(kColor, "Color", 0xFF00B140)
        .label("Key color")
        .help("The color that becomes transparent, that of the screen where it is lit well."),
    field::curve(kTolerance, "Tolerance", zol::kShare, kUsualTolerance)
        .help("The distance from the key up to which all is transparent, 0 to 1; 0 clears the very key "
              "alone."),
    field::curve(kSoftness, "Softness", zol::kShare, kUsualSoftness)
        .help("The distance beyond Tolerance over which the image becomes opaque, 0 to 1; 0 gives a hard "
              "edge."),
    field::curve(kRange, "Range", zol::kShare, kUsualRange)
        .label("Hue range")
        .help("Chroma and spill: how wide the hues are that count as the screen's light; at 1 all within a "
              "right angle of the key's, at 0 that hue alone."),
    field::curve(kShadows, "Shadows", zol::kShare, 0)
        .label("Ignore shadows")
        .help("Chroma: how far what is darker than the key color counts as if it were lit as well. 0 lets "
              "shadows stand, 1 clears them."),
    field::curve(kNoiseclean, "Noiseclean", zol::kShare, 0)
        .help("How far the image is softened before it is measured, in tenths of the frame's width. 0 "
              "measures it as it is; what shows stays sharp."),
    field::curve(kSpill, "Spill", zol::kShare, 1)
        .label("Spill suppression")
        .help("Chroma and Color: how much of the screen's light is taken out of the image's own colors. 0 "
              "leaves them as they are."),
    field::curve(kShrink, "Shrink", zol::kSigned, 0)
        .label("Shrink, grow")
        .help("How far the opaque area shrinks, or below 0 grows, in tenths of the frame's width. 0 leaves "
              "it as it is."),
    field::curve(kFeather, "Feather", zol::kShare, 0)
        .help("How far the matte's edges are softened, in tenths of the frame's width. 0 leaves them as they "
              "are."),
    field::geometry(kGarbage, "Garbage")
        .label("Garbage mask")
        .help("A shape outside of which all is transparent. It may be left out."),
    field::toggle(kInvert, "Invert", false)
        .label("In&vert")
        .help("Whether the key stays and all else becomes transparent."),
    field::alpha(kOpacity, "Opacity", 1)
        .help(
            "How opaque the image is laid on the background: 0 shows the background alone, 1 the image as it "
            "is."),
    field::selector(kShow, "Show", kShown).help("The result, or its matte as a gray image."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Keyer  on",
    "Background",
    "Input",
    "Clean plate",
    "Method",
    "Key color",
    "Tolerance",
    "Softness",
    "Hue range",
    "Ignore shadows",
    "Noiseclean",
    "Spill suppression",
    "Shrink, grow",
    "Feather",
    "Garbage mask",
    "In&vert",
    "Opacity",
    "Show",
    "Clean plate not assigned",
    "Lays what stands before a screen on another image",
};

constexpr char kDescription[] =
    "This effect lays what stands before a green, blue or other screen on the background. The screen may be "
    "lit unevenly; hair and soft edges get back their own colors. <br><br>Required inputs: Input. Without a "
    "background it stands on a transparent frame.";

struct Settings {
  zol::UniversalKey key;
  double noiseclean, shrink, feather; // pixels across
  void *garbage;
  int opacity; ///< 4096 = 1.0
  bool showsMatte;

  /// Whether the input stays as it is.
  [[nodiscard]] bool isNeutral() const {
    return key.method == zol::KeyMethod::alpha && key.first == 0 && key.range == 4096 && !key.inverts &&
           noiseclean == 0 && !looksAround() && garbage == nullptr && opacity == 4096 && !showsMatte;
  }
  /// Whether the matte of a pixel depends on those of others.
  [[nodiscard]] bool looksAround() const { return shrink != 0 || feather != 0; }
};

Settings readSettings(t_ZoHostInfo *host) {
  const auto share = [host](Field field, double usual) {
    return zol::in4096ths(zol::paramShare(host, field, usual));
  };
  const int method = std::clamp(zol::paramInt(host, kMethod), 0, zol::kKeyMethods - 1);
  zol::UniversalKey key{static_cast<zol::KeyMethod>(method), zol::paramColor(host, kColor),
                        zol::paramShare(host, kRange, kUsualRange)};
  key.first = share(kTolerance, kUsualTolerance);
  key.range = std::max(1, share(kSoftness, kUsualSoftness));
  key.shadows = share(kShadows, 0);
  key.inverts = zol::paramInt(host, kInvert) != 0;
  if (key.tellsLight())
    key.spill = share(kSpill, 1);
  return {key,
          zol::pixelsOf(host, zol::paramShare(host, kNoiseclean)),
          zol::pixelsOf(host, zol::paramSigned(host, kShrink)),
          zol::pixelsOf(host, zol::paramShare(host, kFeather)),
          host->Services->ParamGetGeometry(host, kGarbage, 0),
          share(kOpacity, 1),
          zol::paramInt(host, kShow) == kMatte};
}

/// The input's pixels, each channel softened.
class CleanPixels {
public:
  CleanPixels(const pic &frame, double radius, double aspect)
      : frame_(frame), soften_(radius, radius * aspect, frame.Width, frame.Height),
        planes_(soften_.isCopy() ? 0 : 4 * size()), row_(soften_.isCopy() ? 0 : size_t(frame.Width)) {}

  explicit operator bool() const { return soften_ && planes_ && row_; }

  bool soften(t_ZoHostInfo *host) const {
    if (soften_.isCopy())
      return true;
    const bool taken = zol::forEachRow(host, frame_.Height, [&, take = ZOL_SELECT(toPlanes)](int y) {
      take(pixels(y), at(y), frame_.Width);
    });
    bool done = taken;
    for (size_t plane = 0; plane < 4 && done; ++plane)
      done = soften_(planes_.data() + plane * size(), [host] { return !zol::aborted(host); });
    return done;
  }

  const _color_t *row(int y) const {
    if (soften_.isCopy())
      return pixels(y);
    ZOL_SELECT(planesToBytes)(at(y), row_.data(), frame_.Width);
    return row_.data();
  }

private:
  [[nodiscard]] size_t size() const { return size_t(frame_.Width) * size_t(frame_.Height); }
  [[nodiscard]] const _color_t *pixels(int y) const { return frame_.Pixels + ptrdiff_t{y} * frame_.Width; }
  [[nodiscard]] zol::WidePlanes at(int y) const {
    uint16_t *const first = planes_.data() + ptrdiff_t{y} * frame_.Width;
    return {first, first + size(), first + 2 * size(), first + 3 * size()};
  }

  const pic &frame_;
  zol::Softening soften_;
  zol::Scratch<uint16_t> planes_;
  zol::Scratch<_color_t> row_;
};

/// The input without the key, row by row. Each step is false when the host wants to stop or, after a message,
/// when memory runs out.
class KeyedInput {
public:
  KeyedInput(t_ZoHostInfo *host, const pic &frame, const pic *plate, const Settings &settings)
      : host_(host), frame_(frame), area_(zol::Area::of(frame)), plate_(plate), settings_(settings),
        clean_(frame, settings.noiseclean, zol::pixelAspect(host)),
        matte_(host, frame.Width, frame.Height, settings.looksAround()), buffer_(size_t(frame.Width)),
        keyed_(size_t(frame.Width)) {}

  bool prepare() {
    if (!clean_ || !matte_ || !buffer_ || !keyed_) {
      zol::showMemoryError(host_);
      return false;
    }
    if (settings_.garbage != nullptr) {
      garbage_.emplace(host_, zol::createShapeMask(host_, area_, settings_.garbage));
      if (!*garbage_)
        return false;
    }
    if (!clean_.soften(host_))
      return false;
    return !settings_.looksAround() || (zol::forEachRow(host_, frame_.Height, [&](int y) { makeMatte(y); }) &&
                                        matte_.shrink(settings_.shrink) && matte_.soften(settings_.feather));
  }

  /// Row y of the picture, its alpha being the matte.
  const _color_t *row(int y) {
    if (!settings_.looksAround())
      makeMatte(y);
    colorRow_(settings_.key, frame_.Pixels + ptrdiff_t{y} * frame_.Width, matte_.row(y), keyed_.data(),
              frame_.Width);
    return keyed_.data();
  }

  /// The same row's alphas times the opacity.
  const uint8_t *alphas(int y) {
    ZOL_SELECT(matteRow)(row(y), zol::MatteSource::alpha, matte_.row(y), frame_.Width);
    ZOL_SELECT(fadeRow)(matte_.row(y), settings_.opacity, frame_.Width);
    return matte_.row(y);
  }

private:
  void makeMatte(int y) const {
    const _color_t *plate =
        plate_ != nullptr ? zol::canvasRow(area_, plate_, area_.top + y, buffer_.data()) : nullptr;
    uint8_t *const matte = matte_.row(y);
    matteRow_(settings_.key, clean_.row(y), plate, matte, frame_.Width);
    if (garbage_)
      maskRow_((*garbage_)->Pixels + ptrdiff_t{y} * frame_.Width, matte, frame_.Width);
  }

  t_ZoHostInfo *host_;
  const pic &frame_;
  zol::Area area_;
  const pic *plate_;
  const Settings &settings_;
  CleanPixels clean_;
  std::optional<zol::OwnedPic> garbage_;
  zol::MattePlane matte_;
  zol::Scratch<_color_t> buffer_, keyed_;
  const decltype(ZOL_SELECT(universalMatteRow)) matteRow_ = ZOL_SELECT(universalMatteRow);
  const decltype(ZOL_SELECT(universalColorRow)) colorRow_ = ZOL_SELECT(universalColorRow);
  const decltype(ZOL_SELECT(maskRow)) maskRow_ = ZOL_SELECT(maskRow);
};

/// Writes the canvas's pixels. False as above.
bool compose(t_ZoHostInfo *host, const zol::Area &canvas, const pic *background, const pic &frame,
             const pic *plate, const Settings &settings, _color_t *out) {
  const zol::Area area = zol::Area::of(frame), lies = zol::coveredPart(canvas, area);
  std::optional<KeyedInput> keyed;
  if (!lies.isEmpty() && !keyed.emplace(host, frame, plate, settings).prepare())
    return false;
  const auto lay = ZOL_SELECT(layPixels);
  const auto grey = ZOL_SELECT(greyRow);
  const int left = lies.left - area.left;
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    _color_t *const begin = out + canvas.index(canvas.left, y), *const covered =
                                                                    out + canvas.index(lies.left, y);
    if (settings.showsMatte)
      std::fill_n(begin, canvas.width(), _color_t{0, 0, 0, 255});
    else
      zol::writeCanvasRow(canvas, background, y, begin);
    if (!lies.hasRow(y))
      return;
    if (settings.showsMatte)
      grey(keyed->alphas(y - area.top) + left, covered, lies.width());
    else
      lay(covered, keyed->row(y - area.top) + left, lies.width(), {.opacity = settings.opacity});
  });
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
  const bool comparesPlate = settings.key.method == zol::KeyMethod::difference;
  const pic *plate = comparesPlate ? zol::requiredFrame(host, kPlate, "Clean plate not assigned") : nullptr;
  if (comparesPlate && plate == nullptr)
    return nullptr;
  if (background == nullptr && settings.isNeutral())
    return zol::copyOf(host, frame);
  const zol::Area canvas =
      background != nullptr ? zol::Area::of(*background) : zol::Area::ofSize(host->Width, host->Height);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  const bool done = out && compose(host, canvas, background, *frame, plate, settings, out->Pixels);
  return done ? out.release() : nullptr;
}

constexpr zol::Effect kKeyer{
    .name = "Compositing/Keyer",
    .sign = "UniKeyer Zo1 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Keyer",
    .description = kDescription,
    .icon = keyer_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessKeyer2Declare(t_ZoHostInfo *host) { return zol::declare(host, kKeyer); }
