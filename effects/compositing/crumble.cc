// Crumble: breaks its input into fragments that fly apart and fall, over the background. At Progress 0 it is
// a copy.

#include "effects/compositing/crumble.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/picture.h"
#include "frame/values.h"
#include "kernels/compositing/fragments.h"
#include "kernels/compositing/lay_pixels.h"
#include "kernels/simd/scratch.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kInput,
  kBackground,
  kProgress,
  kSize,
  kShape,
  kOrder,
  kAngle,
  kSpread,
  kExplosion,
  kGravity,
  kWind,
  kSpin,
  kTumble,
  kRandomness,
  kCenterX,
  kCenterY,
  kShrink,
  kFade,
  kSeed,
};
enum Order { kTogether, kFromCenter, kAlongAngle, kAtRandom };

constexpr const char *kShapes[] = {"Shards", "Squares", "Bricks"}; // in the order of FragmentShape
static_assert(std::size(kShapes) == zol::kFragmentShapes);
constexpr const char *kOrders[] = {"Together", "From the center", "Along the angle", "At random"};

constexpr double kUsualSize = 0.08, kUsualSpread = 0.5, kUsualExplosion = 0.3, kUsualGravity = 1,
                 kUsualTurns = 0.5, kUsualRandomness = 0.5;

constexpr zol::Field kFields[] = {
    field::input(kInput, "Input").clip().help("The image that crumbles."),
    field::input(kBackground, "Background")
        .help("The image behind it. It may be left out: the frame is transparent there."),
    field::curve(kProgress, "Progress", zol::kShare, 0)
        .rising()
        .help("How far it has got: 0 leaves the image as it is, 1 is the end of every fragment's way."),
    field::curve(kSize, "Size", zol::kShare, kUsualSize)
        .help("The size of the fragments, in widths of the frame; 4 pixels at least."),
    field::selector(kShape, "Shape", kShapes)
        .help("Shards are triangles, Squares lie in rows and columns, Bricks in rows that are half a brick "
              "apart."),
    field::selector(kOrder, "Order", kOrders)
        .help("Which fragments start first: all together, those near the center, those that lie to the "
              "angle's back, or any."),
    field::angle(kAngle, "Angle", 0)
        .help("Where the order goes and the wind blows, in degrees: 0 to the right, 90 down."),
    field::curve(kSpread, "Spread", zol::kShare, kUsualSpread)
        .help("How much later the last fragment starts than the first, in times of a fragment's way. 0 "
              "starts all at once."),
    field::curve(kExplosion, "Explosion", zol::kOpenShare, kUsualExplosion)
        .help("How far fragments fly from the center, in widths of the frame. 0 leaves them."),
    field::curve(kGravity, "Gravity", zol::kOpenSigned, kUsualGravity)
        .help("How far fragments fall, faster and faster, in two heights of the frame; below 0 they rise. 0 "
              "leaves them."),
    field::curve(kWind, "Wind", zol::kOpenSigned, 0)
        .help("How far fragments are blown along the angle, in widths of the frame. 0 leaves them."),
    field::curve(kSpin, "Spin", zol::kOpenShare, kUsualTurns)
        .help("How far fragments turn in the image at the most, in turns, to either side. 0 turns none."),
    field::curve(kTumble, "Tumble", zol::kOpenShare, kUsualTurns)
        .help("How far fragments turn over at the most, in turns. 0 turns none."),
    field::curve(kRandomness, "Randomness", zol::kShare, kUsualRandomness)
        .help("How much fragments differ in when they start and how far they fly. 0 treats all alike."),
    field::curve(kCenterX, "CenterX", zol::kOpenSigned, 0)
        .label("Center X")
        .help("Where fragments fly from, in widths of the frame to the right of its middle: 0 in the "
              "middle."),
    field::curve(kCenterY, "CenterY", zol::kOpenSigned, 0)
        .label("Center Y")
        .help("Where fragments fly from, in heights of the frame below its middle: 0 in the middle."),
    field::curve(kShrink, "Shrink", zol::kShare, 0)
        .help("How much smaller fragments become on their way: 0 leaves their size, 1 lets them vanish."),
    field::curve(kFade, "Fade", zol::kShare, 0)
        .help("How much fragments fade on their way: 0 leaves them as they are, 1 lets them vanish."),
    field::integer(kSeed, "Seed", 0, 65535, 0).help("Another number breaks the image in another way."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "Crumble  on", "Input",    "Background", "Progress", "Size", "Shape", "Order",
    "Angle",       "Spread",   "Explosion",  "Gravity",  "Wind", "Spin",  "Tumble",
    "Randomness",  "Center X", "Center Y",   "Shrink",   "Fade", "Seed",  "Breaks an image into fragments",
};

constexpr char kDescription[] =
    "This effect breaks the input into fragments that fly apart, turn and fall. What has not parted yet "
    "shows "
    "no seams. <br><br>Required inputs: Input image. Without a background the frame is transparent behind "
    "the fragments.";

struct Settings {
  double progress, size;
  zol::FragmentShape shape;
  Order order;
  zol::Direction along;
  double spread, explosion, gravity, wind, spin, tumble, randomness, centerX, centerY, shrink, fade;
  uint32_t seed;
};

Settings readSettings(t_ZoHostInfo *host) {
  constexpr double kFar = 1000;
  const auto share = [host](Field field, double usual) { return zol::paramShare(host, field, usual); };
  const auto from0 = [host](Field field, double usual) {
    return zol::paramWithin(host, field, 0, kFar, usual);
  };
  const auto either = [host](Field field, double usual) {
    return zol::paramWithin(host, field, -kFar, kFar, usual);
  };
  const auto item = [host](Field field, int items) {
    return std::clamp(zol::paramInt(host, field), 0, items - 1);
  };
  return {.progress = share(kProgress, 0),
          .size = share(kSize, kUsualSize),
          .shape = static_cast<zol::FragmentShape>(item(kShape, zol::kFragmentShapes)),
          .order = static_cast<Order>(item(kOrder, std::size(kOrders))),
          .along = zol::Direction(zol::paramAngle(host, kAngle)),
          .spread = share(kSpread, kUsualSpread),
          .explosion = from0(kExplosion, kUsualExplosion),
          .gravity = either(kGravity, kUsualGravity),
          .wind = either(kWind, 0),
          .spin = from0(kSpin, kUsualTurns),
          .tumble = from0(kTumble, kUsualTurns),
          .randomness = share(kRandomness, kUsualRandomness),
          .centerX = either(kCenterX, 0),
          .centerY = either(kCenterY, 0),
          .shrink = share(kShrink, 0),
          .fade = share(kFade, 0),
          .seed = static_cast<uint32_t>(std::clamp(zol::paramInt(host, kSeed), 0, 65535))};
}

enum Chance { kPlaceChance = zol::kFirstFreeChance, kStart, kWay, kSpinChance, kTumbleChance, kAxis };

/// When fragments start and where they go. Points are in rows of the picture, where circles are round.
class Crumbling {
public:
  Crumbling(const t_ZoHostInfo *host, const pic &picture, const Settings &settings)
      : settings_(settings), aspect_(zol::shownAspect(host)), width_(host->Width * aspect_),
        height_(host->Height), center_{((0.5 + settings.centerX) * host->Width - picture.X) * aspect_,
                                       (0.5 + settings.centerY) * host->Height - picture.Y},
        spread_(settings.order == kTogether ? 0 : settings.spread) {
    const double right = picture.Width * aspect_, bottom = picture.Height;
    first_ = last_ = progressOf({0, 0});
    for (const zol::Point &corner : {zol::Point{right, 0}, {0, bottom}, {right, bottom}}) {
      first_ = std::min(first_, progressOf(corner));
      last_ = std::max(last_, progressOf(corner));
    }
    if (settings.order == kFromCenter)
      first_ = 0;
  }

  /// The place of a fragment in the order, 0 to 1.
  [[nodiscard]] double place(int index, const zol::Fragment &fragment) const {
    const double own = settings_.order == kAtRandom ? chance(index, kPlaceChance)
                       : last_ > first_
                           ? (progressOf(squared(fragment.centroid())) - first_) / (last_ - first_)
                           : 0;
    return std::clamp(own + settings_.randomness * (chance(index, kStart) - 0.5), 0.0, 1.0);
  }
  /// How much of its way a fragment has gone that has such a place.
  [[nodiscard]] double gone(double place) const {
    return std::clamp(settings_.progress * (1 + spread_) - spread_ * place, 0.0, 1.0);
  }

  [[nodiscard]] zol::FragmentMove move(int index, const zol::Fragment &fragment, double gone) const {
    using zol::Projection;
    const zol::Point from = squared(fragment.centroid()), to = moved(index, from, gone);
    const zol::Direction turn(360 * settings_.spin * gone * (2 * chance(index, kSpinChance) - 1)),
        over(360 * settings_.tumble * gone * chance(index, kTumbleChance)), axis(360 * chance(index, kAxis));
    const double size = 1 - settings_.shrink * gone;
    const double less = over.right - 1, x = axis.right, y = axis.down;
    const Projection narrowed = {{{1 + less * x * x, less * x * y, 0},
                                  {less * x * y, 1 + less * y * y, 0},
                                  {0, 0, 1}}},
                     turned = {{{turn.right, -turn.down, 0}, {turn.down, turn.right, 0}, {0, 0, 1}}};
    return {index,
            Projection::scaled(1 / aspect_, 1) * Projection::moved(to.x, to.y) * turned *
                Projection::scaled(size, size) * narrowed * Projection::moved(-from.x, -from.y) *
                Projection::scaled(aspect_, 1),
            zol::in4096ths(1 - settings_.fade * gone)};
  }

private:
  [[nodiscard]] double chance(int index, Chance number) const {
    return zol::fragmentChance(settings_.seed, index, number);
  }
  [[nodiscard]] zol::Point squared(const zol::Point &p) const { return {p.x * aspect_, p.y}; }
  [[nodiscard]] double distance(const zol::Point &p) const {
    return std::sqrt((p.x - center_.x) * (p.x - center_.x) + (p.y - center_.y) * (p.y - center_.y));
  }
  [[nodiscard]] double progressOf(const zol::Point &p) const {
    return settings_.order == kFromCenter ? distance(p)
                                          : p.x * settings_.along.right + p.y * settings_.along.down;
  }

  [[nodiscard]] zol::Point moved(int index, const zol::Point &from, double gone) const {
    const double way =
        width_ * settings_.explosion * gone * (1 + settings_.randomness * (2 * chance(index, kWay) - 1));
    const double away = distance(from), out = away > 0 ? way / away : 0;
    const double wind = width_ * settings_.wind * gone;
    return {from.x + (from.x - center_.x) * out + wind * settings_.along.right,
            from.y + (from.y - center_.y) * out + wind * settings_.along.down +
                2 * height_ * settings_.gravity * gone * gone};
  }

  const Settings &settings_;
  double aspect_, width_, height_; ///< of the frame
  zol::Point center_;
  double spread_, first_, last_;
};

/// The fragments that have started, those that started last first. Tests as false when memory ran out.
class StartedFragments {
public:
  StartedFragments(const Crumbling &crumbling, const zol::FragmentGrid &grid)
      : starts_(size_t(grid.count())), moves_(size_t(grid.count())) {
    if (!*this)
      return;
    for (int i = 0; i < grid.count(); ++i)
      if (const double place = crumbling.place(i, grid[i]); crumbling.gone(place) > 0)
        starts_[size_t(count_++)] = {place, i};
    std::sort(starts_.data(), starts_.data() + count_, [](const Start &a, const Start &b) {
      return a.place != b.place ? a.place > b.place : a.index < b.index;
    });
    for (int i = 0; i < count_; ++i) {
      const auto &[place, index] = starts_[size_t(i)];
      moves_[size_t(i)] = crumbling.move(index, grid[index], crumbling.gone(place));
    }
  }

  explicit operator bool() const { return starts_ && moves_; }
  [[nodiscard]] const zol::FragmentMove *moves() const { return moves_.data(); }
  [[nodiscard]] int count() const { return count_; }

private:
  struct Start {
    double place;
    int index;
  };
  zol::Scratch<Start> starts_;
  zol::Scratch<zol::FragmentMove> moves_;
  int count_ = 0;
};

/// Writes the canvas's pixels: the background, or nothing where it is null, and over it the input as it is.
bool layWhole(t_ZoHostInfo *host, const zol::Area &canvas, const pic *background, const pic &frame,
              _color_t *out) {
  const zol::Area lies = zol::coveredPart(canvas, zol::Area::of(frame));
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    zol::writeCanvasRow(canvas, background, y, out + canvas.index(canvas.left, y));
    if (lies.hasRow(y))
      ZOL_SELECT(layPixels)
    (out + canvas.index(lies.left, y), zol::pixelAt(frame, lies.left, y), lies.width(), {});
  });
}

/// The same with its fragments. False when the host wants to stop or, after a message, when memory runs out.
bool layFragments(t_ZoHostInfo *host, const zol::Area &canvas, const pic *background, const pic &frame,
                  const Settings &settings, _color_t *out) {
  const double size = settings.size * host->Width;
  const zol::FragmentGrid grid(settings.shape, frame.Width, frame.Height, size, size * zol::shownAspect(host),
                               settings.seed);
  const StartedFragments started(Crumbling(host, frame, settings), grid);
  if (started && started.count() == 0)
    return layWhole(host, canvas, background, frame, out);
  std::optional<zol::FragmentLayer> layer;
  if (started)
    layer.emplace(frame, canvas, grid, started.moves(), started.count());
  const zol::Scratch<_color_t> buffer(size_t(canvas.width()));
  if (!layer || !*layer || !buffer) {
    zol::showMemoryError(host);
    return false;
  }
  return zol::forEachRow(host, canvas.height(), [&](int row) {
    const int y = canvas.top + row;
    _color_t *pixels = out + canvas.index(canvas.left, y);
    zol::writeCanvasRow(canvas, background, y, pixels);
    layer->write(row, buffer.data());
    ZOL_SELECT(layPixels)(pixels, buffer.data(), canvas.width(), {});
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
  if (background == nullptr && settings.progress == 0)
    return zol::copyOf(host, frame);
  const zol::Area canvas =
      background != nullptr ? zol::Area::of(*background) : zol::Area::ofSize(host->Width, host->Height);
  zol::OwnedPic out(host, zol::createAt(host, canvas));
  if (!out)
    return nullptr;
  const bool rests = settings.progress == 0 || zol::Area::of(*frame).isEmpty() || canvas.isEmpty();
  const bool done = rests ? layWhole(host, canvas, background, *frame, out->Pixels)
                          : layFragments(host, canvas, background, *frame, settings, out->Pixels);
  return done ? out.release() : nullptr;
}

constexpr zol::Effect kCrumble{
    .name = "Compositing/Crumble",
    .sign = "Crumble Zo2 native",
    .version = 1,
    .hosts = zol::Hosts::halvenor,
    .section = "Crumble",
    .description = kDescription,
    .icon = crumble_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessCrumbleDeclare(t_ZoHostInfo *host) { return zol::declare(host, kCrumble); }
