// AlphaEx: makes alpha of an image's alpha, brightness or a color, and reshapes it: levels, a bend, shrunk or
// grown, softened, faded. Alpha as it is, everything else at 0 and the result shown, it is a copy. Where
// alpha grows beyond an object the object's colors go with it.

#include "effects/filters/alpha_ex.xpm"
#include "effects/matte_plane.h"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/matte/extend_colors.h"
#include "kernels/matte/matte_rows.h"
#include "kernels/simd/alpha_plane.h"

#include <algorithm>
#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kSource,
  kInvert,
  kLow,
  kHigh,
  kBias,
  kShrink,
  kSoften,
  kTransparency,
  kFill,
  kShow,
};
enum Show { kResult, kMatte };

// In the order of MatteSource.
constexpr const char *kSources[] = {"Alpha", "Luminance", "Red", "Green", "Blue", "Opaque"};
static_assert(std::size(kSources) == zol::kMatteSources);
constexpr const char *kShown[] = {"Result", "Matte"};

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image whose alpha is changed."),
    field::selector(kSource, "Source", kSources)
        .flags("0x0")
        .help("What the alpha is made of. Luminance and colors count as much as the image is opaque."),
    field::toggle(kInvert, "Invert", false)
        .label("In&vert")
        .help("Whether what is opaque becomes transparent and the other way round."),
    field::curve(kLow, "Low", zol::kShare, 0)
        .label("Clip black")
        .help("Alpha up to this becomes 0, the rest is stretched. 0 cuts nothing."),
    field::curve(kHigh, "High", zol::kShare, 0)
        .label("Clip white")
        .help("Alpha from 1 less this on becomes 1, the rest is stretched. 0 cuts nothing."),
    field::curve(kBias, "Bias", zol::kSigned, 0)
        .help("Bends half transparent alpha up, towards 1, or below 0 down. 0 leaves it straight."),
    field::curve(kShrink, "Shrink", zol::kSigned, 0)
        .label("Shrink, grow")
        .help("How far the opaque area shrinks, or below 0 grows, in tenths of the frame's width. 0 leaves "
              "it as it is."),
    field::curve(kSoften, "Soften", zol::kShare, 0)
        .help("How far edges are softened, in tenths of the frame's width. 0 leaves them sharp."),
    field::curve(kTransparency, "Transparency", zol::kShare, 0)
        .help("How transparent all becomes: 0 not at all, 1 wholly."),
    field::toggle(kFill, "Fill", true)
        .label("&Extend colors")
        .help("Whether pixels that were transparent and no longer are take the colors of those around, "
              "rather than what was hidden."),
    field::selector(kShow, "Show", kShown).flags("0x0").help("The result, or its alpha as a gray image."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "AlphaEx  on",
    "Input",
    "Source",
    "In&vert",
    "Clip black",
    "Clip white",
    "Bias",
    "Shrink, grow",
    "Soften",
    "Transparency",
    "&Extend colors",
    "Show",
    "Changes the alpha channel",
};

constexpr char kDescription[] =
    "This effect makes an alpha channel of alpha, brightness or a color and reshapes it: levels, shrinking, "
    "growing, soft edges. Colors follow where alpha grows. <br><br>Required inputs: Input image.";

struct Settings {
  zol::MatteSource source;
  uint8_t levels[256];   ///< alpha by the source's value
  double shrink, soften; // pixels across
  int share;             ///< of alpha that stays, 4096 = 1.0
  bool fills, showsMatte;

  [[nodiscard]] bool isNeutral() const {
    return source == zol::MatteSource::alpha && zol::isIdentity(levels) && !looksAround() && share == 4096 &&
           !showsMatte;
  }
  [[nodiscard]] bool looksAround() const { return shrink != 0 || soften != 0; }
  /// Whether pixels without alpha can be given some.
  [[nodiscard]] bool givesAlpha() const {
    return source == zol::MatteSource::opaque || levels[0] != 0 || shrink < 0 || soften > 0;
  }
};

/// Clipped by levels of 65280ths, then bent by weights of 4096ths.
int level(int value, int low, int high, int up, int down) {
  const int scaled = 256 * value;
  const int x = scaled <= low ? 0 : scaled >= high ? 255 : (scaled - low) * 255 / (high - low);
  return 255 * x * up / (x * up + (255 - x) * down); // at most 255 * 255 * 32768
}

void makeLevels(t_ZoHostInfo *host, uint8_t (&levels)[256]) {
  const bool inverts = zol::paramInt(host, kInvert) != 0;
  const int low = static_cast<int>(65280 * zol::paramShare(host, kLow));
  const int high = 65280 - static_cast<int>(65280 * zol::paramShare(host, kHigh));
  const double bias = zol::paramSigned(host, kBias);
  const auto weight = [](double bend) { return 4096 + static_cast<int>(28672 * std::max(bend, 0.0)); };
  for (int x = 0; x < 256; ++x)
    levels[x] = static_cast<uint8_t>(level(inverts ? 255 - x : x, low, high, weight(bias), weight(-bias)));
}

Settings readSettings(t_ZoHostInfo *host) {
  Settings settings;
  const int source = std::clamp(zol::paramInt(host, kSource), 0, zol::kMatteSources - 1);
  settings.source = static_cast<zol::MatteSource>(source);
  makeLevels(host, settings.levels);
  settings.shrink = zol::pixelsOf(host, zol::paramSigned(host, kShrink));
  settings.soften = zol::pixelsOf(host, zol::paramShare(host, kSoften));
  settings.share = 4096 - zol::in4096ths(zol::paramShare(host, kTransparency));
  settings.fills = zol::paramInt(host, kFill) != 0;
  settings.showsMatte = zol::paramInt(host, kShow) == kMatte;
  return settings;
}

/// The matte of a frame. Each step asks the host after each row of each of its passes, and is false when the
/// host wants to stop or, after a message, when memory runs out.
class Matte {
public:
  Matte(t_ZoHostInfo *host, const pic &frame, const Settings &settings)
      : host_(host), frame_(frame), settings_(settings),
        plane_(host, frame.Width, frame.Height, settings.looksAround()) {}

  explicit operator bool() const { return static_cast<bool>(plane_); }

  bool apply(pic &out) {
    if (settings_.fills && settings_.givesAlpha() && !settings_.showsMatte && !gatherColors())
      return false;
    if (!settings_.looksAround())
      return zol::forEachRow(host_, frame_.Height, [&](int y) {
        make(y);
        put(y, out);
      });
    return zol::forEachRow(host_, frame_.Height, [&](int y) { make(y); }) &&
           plane_.shrink(settings_.shrink) && plane_.soften(settings_.soften) &&
           zol::forEachRow(host_, frame_.Height, [&](int y) { put(y, out); });
  }

private:
  bool gatherColors() {
    colors_.emplace(frame_.Width, frame_.Height);
    if (*colors_)
      return colors_->gather(frame_.Pixels, [this] { return !zol::aborted(host_); });
    zol::showMemoryError(host_);
    return false;
  }

  void make(int y) const {
    takeRow_(frame_.Pixels + ptrdiff_t{y} * frame_.Width, settings_.source, plane_.row(y), frame_.Width);
    lookUpRow_(settings_.levels, plane_.row(y), frame_.Width);
  }

  void put(int y, pic &out) const {
    const ptrdiff_t at = ptrdiff_t{y} * frame_.Width;
    uint8_t *const row = plane_.row(y);
    if (settings_.share != 4096)
      fadeRow_(row, settings_.share, frame_.Width);
    if (settings_.showsMatte) {
      greyRow_(row, out.Pixels + at, frame_.Width);
      return;
    }
    zol::putAlpha(frame_.Pixels + at, row, size_t(frame_.Width), out.Pixels + at);
    if (colors_)
      extendRow_(frame_.Pixels + at, colors_->row(y), out.Pixels + at, frame_.Width);
  }

  t_ZoHostInfo *host_;
  const pic &frame_;
  const Settings &settings_;
  zol::MattePlane plane_;
  std::optional<zol::ExtendedColors> colors_;
  const decltype(ZOL_SELECT(matteRow)) takeRow_ = ZOL_SELECT(matteRow);
  const decltype(ZOL_SELECT(lookUpRow)) lookUpRow_ = ZOL_SELECT(lookUpRow);
  const decltype(ZOL_SELECT(fadeRow)) fadeRow_ = ZOL_SELECT(fadeRow);
  const decltype(ZOL_SELECT(greyRow)) greyRow_ = ZOL_SELECT(greyRow);
  const decltype(ZOL_SELECT(extendRow)) extendRow_ = ZOL_SELECT(extendRow);
};

pic *render(t_ZoHostInfo *host) {
  pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  if (settings.isNeutral() || zol::Area::of(*frame).isEmpty())
    return zol::copyOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, zol::Area::of(*frame)));
  if (!out)
    return nullptr;
  Matte matte(host, *frame, settings);
  if (!matte) {
    zol::showMemoryError(host);
    return nullptr;
  }
  return matte.apply(*out) ? out.release() : nullptr;
}

constexpr zol::Effect kAlphaEx{
    .name = "Filters/AlphaEx",
    .sign = "AlphaEx Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "AlphaEx",
    .description = kDescription,
    .icon = alpha_ex_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessAlphaExDeclare(t_ZoHostInfo *host) { return zol::declare(host, kAlphaEx); }
