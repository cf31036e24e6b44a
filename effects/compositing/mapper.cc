// Mapper: moves every pixel of its input by what another image says there. With both amounts at 0 it is a
// copy.

#include "effects/compositing/mapper.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/blur/soften.h"
#include "kernels/color/wide.h"
#include "kernels/simd/scratch.h"
#include "kernels/warp/warp_places.h"

#include <algorithm>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kMap,
  kMethod,
  kAmountX,
  kAmountY,
  kChannelX,
  kChannelY,
  kLevel,
  kSmoothness,
  kOutside,
  kFilter,
};
enum Method { kShift, kSlope, kPosition };
enum Outside { kExtend, kMirror, kTile, kTransparent }; // the first three in the order of WarpBeyond

constexpr const char *kMethods[] = {"Shift", "Slope", "Position"};
constexpr const char *kChannels[] = {"Red", "Green", "Blue", "Alpha", "Luminance"}; // as MapChannel
static_assert(std::size(kChannels) == zol::kMapChannels);
constexpr const char *kOutsides[] = {"Extend", "Mirror", "Tile", "Transparent"};
constexpr const char *kFilters[] = {"Sharp", "Smooth", "Pixels"}; // as WarpFilter

constexpr double kUsualAmount = 0.05, kUsualLevel = 0.5, kUsualSmoothness = 0.02;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image whose pixels are moved."),
    field::input(kMap, "Map")
        .help("The image whose channels say how far. What lies outside of it and where it is transparent "
              "moves nothing."),
    field::selector(kMethod, "Method", kMethods)
        .help("Shift moves pixels by how bright the map is there, Slope by how steeply its brightness rises, "
              "as glass of that shape does; Position takes the map for the very place, in shares of the "
              "image, that is shown."),
    field::curve(kAmountX, "AmountX", zol::kOpenSigned, kUsualAmount)
        .label("Amount X")
        .help("How far pixels move to the right. Shift: in widths of the frame where the map is white, the "
              "other way where it is black. Slope: the thickness of the glass. Position: how much of the "
              "way, 1 being all. 0 leaves them."),
    field::curve(kAmountY, "AmountY", zol::kOpenSigned, kUsualAmount)
        .label("Amount Y")
        .help("How far pixels move down. Shift: in heights of the frame. 0 leaves them."),
    field::selector(kChannelX, "ChannelX", kChannels)
        .label("Channel X")
        .help("The map's channel that moves pixels to the right; for Slope the one that is the height."),
    field::selector(kChannelY, "ChannelY", kChannels, 1)
        .label("Channel Y")
        .help("The map's channel that moves pixels down. Slope does not use it."),
    field::curve(kLevel, "Level", zol::kShare, kUsualLevel)
        .label("Neutral level")
        .help("Shift: the brightness of the map that moves nothing, 0 to 1; 0.5 is the middle gray 128."),
    field::curve(kSmoothness, "Smoothness", zol::kShare, kUsualSmoothness)
        .help("How far the map is softened, in tenths of the frame's width. 0 takes it as it is."),
    field::selector(kOutside, "Outside", kOutsides)
        .help("What shows where pixels come from beyond the image."),
    field::selector(kFilter, "Filter", kFilters)
        .help("Sharp keeps fine texture, Smooth is softer, Pixels takes the nearest pixel alone."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Mapper  on",
    "Input",
    "Map",
    "Method",
    "Amount X",
    "Amount Y",
    "Channel X",
    "Channel Y",
    "Neutral level",
    "Smoothness",
    "Outside",
    "Filter",
    "Moves pixels by another image",
};

constexpr char kDescription[] =
    "This effect moves every pixel of the input by what the map shows there: by its brightness, by its "
    "slopes, as glass would, or to places that it names. <br><br>Required inputs: Input image, Map.";

struct Settings {
  Method method;
  double amountX, amountY;
  zol::MapChannel channels[2];
  uint16_t neutral;  // value of the map
  double smoothness; // pixels across
  Outside outside;
  zol::WarpFilter filter;
};

Settings readSettings(t_ZoHostInfo *host) {
  constexpr double kFar = 1000;
  const auto item = [host](Field field, int items) {
    return std::clamp(zol::paramInt(host, field), 0, items - 1);
  };
  const auto channel = [&](Field field) {
    return static_cast<zol::MapChannel>(item(field, zol::kMapChannels));
  };
  const int level = static_cast<int>(256 * zol::paramShare(host, kLevel, kUsualLevel));
  return {static_cast<Method>(item(kMethod, std::size(kMethods))),
          zol::paramWithin(host, kAmountX, -kFar, kFar, kUsualAmount),
          zol::paramWithin(host, kAmountY, -kFar, kFar, kUsualAmount),
          {channel(kChannelX), channel(kChannelY)},
          static_cast<uint16_t>(std::min(65025, 255 * level)),
          zol::pixelsOf(host, zol::paramShare(host, kSmoothness, kUsualSmoothness)),
          static_cast<Outside>(item(kOutside, std::size(kOutsides))),
          static_cast<zol::WarpFilter>(item(kFilter, std::size(kFilters)))};
}

/// The map's values over an area, softened.
class MapPlanes {
public:
  MapPlanes(const zol::Area &area, const pic &map, const Settings &settings)
      : area_(area), map_(map), settings_(settings),
        count_(settings.method == kSlope || settings.channels[0] == settings.channels[1] ? 1 : 2),
        values_(size_t(count_) * size()) {}

  explicit operator bool() const { return static_cast<bool>(values_); }

  /// False when the host wants to stop or, after a message, when memory runs out.
  bool fill(t_ZoHostInfo *host) const {
    const int width = area_.width(), height = area_.height();
    const double radius = settings_.smoothness;
    const zol::Softening soften(radius, radius * zol::pixelAspect(host), width, height);
    if (!soften) {
      zol::showMemoryError(host);
      return false;
    }
    for (int plane = 0; plane < count_; ++plane)
      if (!zol::forEachRow(host, height, [&](int y) { takeRow(plane, y); }) ||
          !soften(values_.data() + size_t(plane) * size(), [host] { return !zol::aborted(host); }))
        return false;
    return true;
  }

  /// Rows that lie outside are the outermost.
  [[nodiscard]] const uint16_t *row(int plane, int y) const {
    return values_.data() + size_t(std::min(plane, count_ - 1)) * size() +
           ptrdiff_t{std::clamp(y, 0, area_.height() - 1)} * area_.width();
  }

private:
  [[nodiscard]] size_t size() const { return size_t(area_.width()) * size_t(area_.height()); }

  void takeRow(int plane, int y) const {
    const zol::Area lies = zol::coveredPart(area_, zol::Area::of(map_));
    uint16_t *const values = values_.data() + size_t(plane) * size() + ptrdiff_t{y} * area_.width();
    std::fill_n(values, area_.width(), settings_.neutral);
    if (lies.hasRow(area_.top + y))
      ZOL_SELECT(mapRow)
    (zol::pixelAt(map_, lies.left, area_.top + y), settings_.channels[plane], settings_.neutral,
     values + (lies.left - area_.left), lies.width());
  }

  zol::Area area_;
  const pic &map_;
  const Settings &settings_;
  int count_;
  zol::Scratch<uint16_t> values_;
};

/// Where the pixels of an image lie that the map moves.
class MovedPlaces {
public:
  MovedPlaces(const t_ZoHostInfo *host, const zol::Area &area, const Settings &settings,
              const MapPlanes &planes)
      : width_(area.width()), height_(area.height()), isSlope_(settings.method == kSlope),
        planes_(planes), lines_{line(settings.amountX, settings.method, host->Width, width_),
                                line(settings.amountY, settings.method,
                                     isSlope_ ? host->Width * zol::shownAspect(host) : host->Height,
                                     height_)},
        level_(size_t(width_) + 2), places_(2 * kRows * room()) {
    if (*this)
      std::fill_n(level_.data(), width_, settings.method == kShift ? settings.neutral : uint16_t{0});
  }

  explicit operator bool() const { return level_ && places_; }

  /// The last three are kept.
  [[nodiscard]] zol::Places row(int y) const {
    int *const u = places_.data() + size_t(y % kRows) * 2 * room();
    return {u, u + room()};
  }

  void place(int y) const {
    const zol::Places places = row(y);
    const auto set = ZOL_SELECT(placeRow);
    const double down = lines_[1].step * y;
    if (isSlope_) {
      const uint16_t *values = planes_.row(0, y);
      uint16_t *const around = level_.data(); // with its ends once more
      around[0] = values[0];
      std::copy_n(values, width_, around + 1);
      around[width_ + 1] = values[width_ - 1];
      set(lines_[0], 0, lines_[0].step, around + 2, around, places.u, width_);
      set(lines_[1], down, 0, planes_.row(0, y + 1), planes_.row(0, y - 1), places.v, width_);
    } else {
      set(lines_[0], 0, lines_[0].step, planes_.row(0, y), level_.data(), places.u, width_);
      set(lines_[1], down, 0, planes_.row(1, y), level_.data(), places.v, width_);
    }
    const auto goOn = [this](int *first, int alone) {
      int *const end = first + width_;
      std::fill_n(end, zol::Places::kRoom, end[-1] + (width_ > 1 ? end[-1] - end[-2] : alone));
    };
    goOn(places.u, zol::kPhases);
    goOn(places.v, 0);
  }

  /// What stands below a lone row.
  void placeBelow() const {
    const zol::Places from = row(0), to = row(1);
    std::copy_n(from.u, room(), to.u);
    std::transform(from.v, from.v + room(), to.v, [](int v) { return v + zol::kPhases; });
  }

private:
  static constexpr int kRows = 3;
  static constexpr double kOne = zol::kWideOne;

  [[nodiscard]] size_t room() const { return size_t(width_) + zol::Places::kRoom; }

  /// Across or down: of the frame's size and the image's.
  static zol::PlaceLine line(double amount, Method method, double frame, double image) {
    switch (method) {
    case kSlope: return {zol::kPhases, -zol::kPhases * amount * frame * frame / 200 / kOne, 0};
    case kPosition:
      return {zol::kPhases * (1 - amount), zol::kPhases * amount * image / kOne,
              -0.5 * zol::kPhases * amount};
    default: return {zol::kPhases, -zol::kPhases * amount * frame * 2 / kOne, 0};
    }
  }

  int width_, height_;
  bool isSlope_;
  const MapPlanes &planes_;
  zol::PlaceLine lines_[2];
  zol::Scratch<uint16_t> level_; ///< values that move nothing; for slopes, a row of the plane
  zol::Scratch<int> places_;
};

/// Writes the moved pixels. False when the host wants to stop or, after a message, when memory runs out.
bool move(t_ZoHostInfo *host, const pic &frame, const pic &map, const Settings &settings, _color_t *out) {
  const int width = frame.Width, height = frame.Height;
  const MapPlanes planes(zol::Area::of(frame), map, settings);
  const MovedPlaces places(host, zol::Area::of(frame), settings, planes);
  if (!planes || !places) {
    zol::showMemoryError(host);
    return false;
  }
  if (!planes.fill(host))
    return false;
  zol::WarpSource source = zol::WarpSource::of(frame);
  if (settings.outside != kTransparent)
    source.beyond = static_cast<zol::WarpBeyond>(settings.outside);
  places.place(0);
  if (height == 1)
    places.placeBelow();
  return zol::forEachRow(host, height, [&](int y) {
    const int above = y > 0 && y + 1 == height ? y - 1 : y;
    if (y + 1 < height)
      places.place(y + 1);
    _color_t *const row = out + ptrdiff_t{y} * width;
    zol::warpPlaces(source, places.row(y), places.row(above), places.row(above + 1), settings.filter, row,
                    width);
    if (settings.outside == kTransparent)
      ZOL_SELECT(fadeBeyond)(places.row(y), width, height, row, width);
  });
}

pic *render(t_ZoHostInfo *host) {
  const pic *frame = zol::requiredFrame(host, kInput, "Input not assigned");
  if (frame == nullptr)
    return nullptr;
  const pic *map = zol::requiredFrame(host, kMap, "Input not assigned");
  if (map == nullptr)
    return nullptr;
  const Settings settings = readSettings(host);
  const zol::Area area = zol::Area::of(*frame);
  if ((settings.amountX == 0 && settings.amountY == 0) || area.isEmpty())
    return zol::copyOf(host, frame);
  zol::OwnedPic out(host, zol::createAt(host, area));
  return out && move(host, *frame, *map, settings, out->Pixels) ? out.release() : nullptr;
}

constexpr zol::Effect kMapper{
    .name = "Compositing/Mapper",
    .sign = "Mapper Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Mapper",
    .description = kDescription,
    .icon = mapper_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessMapperDeclare(t_ZoHostInfo *host) { return zol::declare(host, kMapper); }
