// ScatterEx: particles that are born, fly and die over the background or, where none is assigned, on a
// transparent frame. At Alpha 0 it is a copy of the background.

#include "effects/particles/scatter_ex.xpm"
#include "frame/canvas.h"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/host.h"
#include "frame/values.h"
#include "kernels/exports/fetch_shape.h"
#include "kernels/particles/births.h"
#include "kernels/particles/particle_layer.h"
#include "kernels/shape/shape_points.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <optional>

namespace {

namespace field = zol::field;

enum Field {
  kBackground,
  kSprite,
  kEmitter,
  kRenderer,
  kMode,
  kRate,
  kLife,
  kX,
  kY,
  kSpeed,
  kDirection,
  kCone,
  kGravity,
  kSize,
  kEndSize,
  kColor,
  kEndColor,
  kAlpha,
  kFadeIn,
  kFadeOut,
  kSpin,
  kVariation,
  kSeed,
  kImageAlpha,
  kRunning
};

constexpr const char *kRenderers[] = {"Soft dots", "Discs", "Squares", "Streaks",
                                      "Picture"}; // in the order of zol::ParticleShape
constexpr const char *kModes[] = {"Over", "Add"};

constexpr double kMostRate = 10000, kLeastLife = 0.04, kMostLife = 30, kMostSpeed = 4, kMostGravity = 4,
                 kMostEndSize = 10, kMostSpin = 10;
constexpr int kMostSeed = 65535;

constexpr zol::Field kFields[] = {
    field::input(kBackground, zol::kBackgroundLabel)
        .clip()
        .help("The image under the particles. It may be left out: they then fly over a transparent frame."),
    field::input(kSprite, "Sprite").help("The image that Picture shows for every particle."),
    field::geometry(kEmitter, "Emitter")
        .help("A shape within which particles are born, moving or not. Without one they are born at X, Y."),
    field::selector(kRenderer, "Renderer", kRenderers)
        .help("What a particle looks like. Streaks are as long as the way that it goes in one frame."),
    field::selector(kMode, "Mode", kModes)
        .help("Over: younger particles cover older ones. Add: they shine through and add up."),
    field::curve(kRate, "Rate", {0, kMostRate, "ZodfBothLimits"}, 100)
        .help("How many particles are born a second: 0 bears none."),
    field::time(kLife, "Life", kLeastLife, kMostLife, 2).help("How long a particle lives, in seconds."),
    field::curve(kX, "X", zol::kOpenSigned, 0)
        .help("Where particles are born without an emitter, in widths of the frame to the right of its "
              "middle: 0 is the middle."),
    field::curve(kY, "Y", zol::kOpenSigned, 0)
        .help("Where particles are born without an emitter, in heights of the frame below its middle: 0 is "
              "the middle."),
    field::curve(kSpeed, "Speed", {0, kMostSpeed, "ZodfBothLimits"}, 0.2)
        .help("How fast they set off, in widths of the frame a second: 0 lets them stand."),
    field::angle(kDirection, "Direction", -90)
        .help("Where they set off to, in degrees: 0 to the right, 90 down, -90 up."),
    field::angle(kCone, "Cone", 60)
        .help("How far directions differ, in degrees: 0 sends all of them the same way, 360 to all sides."),
    field::curve(kGravity, "Gravity", {-kMostGravity, kMostGravity, "ZodfNone"}, 0.1)
        .help("What pulls them down, in widths of the frame a second every second: 0 leaves their ways "
              "straight, less pulls them up."),
    field::curve(kSize, "Size", zol::kShare, 0.01)
        .help("The diameter of a new particle, in widths of the frame."),
    field::curve(kEndSize, "EndSize", {0, kMostEndSize, "ZodfBothLimits"}, 0.5)
        .label("End size")
        .help("How many times as large a particle is at the end of its life: 1 keeps the size."),
    field::color(kColor, "Color", 0xFFFFFFFF)
        .help("The color of a new particle; with it pictures are tinted, which white leaves as they are."),
    field::color(kEndColor, "EndColor", 0xFFFF8000)
        .label("End color")
        .help("The color at the end of a particle's life."),
    field::alpha(kAlpha, "Alpha", 1)
        .help("How opaque particles are: 0 shows the background alone, 1 nothing below a particle."),
    field::curve(kFadeIn, "FadeIn", zol::kShare, 0.1)
        .label("Fade in")
        .help("For how much of its life a particle becomes visible: 0 shows it at once."),
    field::curve(kFadeOut, "FadeOut", zol::kShare, 0.5)
        .label("Fade out")
        .help("For how much of its life a particle disappears: 0 shows it to the end."),
    field::curve(kSpin, "Spin", {-kMostSpin, kMostSpin, "ZodfNone"}, 0)
        .help("How often squares and pictures turn round a second, clockwise: 0 keeps them upright."),
    field::curve(kVariation, "Variation", zol::kShare, 0.5)
        .help("How much life, speed and size differ from particle to particle: 0 makes all alike, 1 takes "
              "them from nothing to twice as much."),
    field::integer(kSeed, "Seed", 0, kMostSeed, 0).help("Another number gives other particles."),
    field::toggle(kImageAlpha, "ImageAlpha", true)
        .label("Use image &alpha")
        .help("Picture: whether the image is as transparent as it is; otherwise all of it is opaque."),
    field::toggle(kRunning, "Running", false)
        .help("Whether particles are under way at the beginning already, as if they had always been born."),
};

ZOL_TEXT_TABLE kTexts[] = {
    "ScatterEx  on",
    "Background",
    "Sprite",
    "Emitter",
    "Renderer",
    "Mode",
    "Rate",
    "Life",
    "X",
    "Y",
    "Speed",
    "Direction",
    "Cone",
    "Gravity",
    "Size",
    "End size",
    "Color",
    "End color",
    "Alpha",
    "Fade in",
    "Fade out",
    "Spin",
    "Variation",
    "Seed",
    "Use image &alpha",
    "Running",
    "Lets particles fly over the input image",
};

constexpr char kDescription[] =
    "This effect lets particles fly: sparks, snow, bubbles, leaves. They are born at a place or within a "
    "shape, fly, change their size and color, and fade. Every frame is made by itself and is always the "
    "same. <br><br>Without a background they fly over a transparent frame.";

// ---- Births ----

/// What the particles of a tick have in common, as parameters were at the tick's own time.
struct Tick {
  double rate, life;
  double x, y;  // in pixels of the frame
  double speed; // pixels across a second
  double direction, cone;
};

/// The shape within which particles are born, as it is at one time after the other.
class Emitter {
public:
  Emitter(t_ZoHostInfo *host, void *geometry) : host_(host), geometry_(geometry) {}

  /// False when the host fails.
  bool moveTo(double time) {
    if (time == time_)
      return true;
    time_ = time;
    zol::ShapeSegments &now = segments_[now_ ^= 1];
    now.cut(0);
    Box box;
    host_->Services->GeoGetBox(host_, geometry_, box.sides, time);
    if (!zol::fetchShape(host_, geometry_, time, zol::ShapeUse::filling, {}, now))
      return false;
    const zol::ShapeSegments &before = segments_[now_ ^ 1];
    const bool isSame = points_ && now.count() == before.count() && box == box_ &&
                        (now.count() == 0 || std::memcmp(now.data(), before.data(),
                                                         now.count() * sizeof(zol::ShapeSegment)) == 0);
    box_ = box;
    if (!isSame)
      scan(now);
    return true;
  }

  /// False once memory ran out.
  explicit operator bool() const { return !points_ || *points_; }

  /// Finds a place within the shape.
  bool place(const zol::ParticleChance &chance, double &x, double &y) const {
    constexpr uint32_t kTries = 32;
    for (uint32_t i = 0; i < kTries; ++i) {
      const auto along = [&](int side, uint32_t matter) {
        return box_.sides[side] + chance.share(zol::ParticleChance::kPlaces + matter) *
                                      (box_.sides[side + 2] - box_.sides[side]);
      };
      x = along(0, 2 * i);
      y = along(1, 2 * i + 1);
      if (points_->has(x, y))
        return true;
    }
    return false;
  }

private:
  struct Box {
    double sides[4] = {};
    bool operator==(const Box &other) const { return std::equal(sides, sides + 4, other.sides); }
  };

  /// Of scanlines far outside nobody sees anything.
  void scan(const zol::ShapeSegments &segments) {
    const double far = zol::kOpenEnd * std::max(host_->Height, 1);
    const auto row = [far](double y) { return static_cast<int>(zol::within(y, -far, far)); };
    const int top = row(box_.sides[1]), bottom = row(box_.sides[3]);
    points_.emplace(segments, top, std::max(bottom - top + 1, 0));
  }

  t_ZoHostInfo *host_;
  void *geometry_;
  double time_ = NAN;
  Box box_;
  zol::ShapeSegments segments_[2]; // of this time and of the one before
  int now_ = 0;
  std::optional<zol::ShapePoints> points_;
};

// ---- Particles as they are now ----

struct Settings {
  zol::ParticleShape shape;
  bool adds;
  double gravity; // pixels across a second a second
  double size;    // pixels across
  double endSize; // of the size
  _color_t color, endColor;
  double alpha, fadeIn, fadeOut, spin, variation;
  uint32_t seed;
  bool running;
  double aspect, frameTime; // seconds that a frame lasts

  explicit Settings(t_ZoHostInfo *host) {
    const auto choice = [host](Field field, int count) {
      return std::clamp(zol::paramInt(host, field), 0, count - 1);
    };
    shape = static_cast<zol::ParticleShape>(choice(kRenderer, std::size(kRenderers)));
    adds = choice(kMode, std::size(kModes)) != 0;
    gravity = zol::paramWithin(host, kGravity, -kMostGravity, kMostGravity) * host->Width;
    size = zol::paramShare(host, kSize) * host->Width;
    endSize = zol::paramWithin(host, kEndSize, 0, kMostEndSize);
    color = zol::paramColor(host, kColor);
    endColor = zol::paramColor(host, kEndColor);
    alpha = zol::paramShare(host, kAlpha);
    fadeIn = zol::paramShare(host, kFadeIn);
    fadeOut = zol::paramShare(host, kFadeOut);
    spin = zol::paramWithin(host, kSpin, -kMostSpin, kMostSpin);
    variation = zol::paramShare(host, kVariation);
    seed = static_cast<uint32_t>(choice(kSeed, kMostSeed + 1));
    running = zol::paramInt(host, kRunning) != 0;
    aspect = std::clamp(zol::pixelAspect(host), 1 / zol::kOpenEnd, zol::kOpenEnd);
    const double rate = zol::within(host->FrameRate, 1, 1000);
    frameTime = rate > 0 ? 1 / rate : 0;
  }

  /// Of a particle that was born at (x, y) and set off by (right, down), in pixels across a second.
  [[nodiscard]] zol::Particle particle(double x, double y, double right, double down, double factor,
                                       const zol::Lifetime &lifetime) const {
    const double age = lifetime.age, share = age / lifetime.life;
    const auto mixed = [share](uint8_t from, uint8_t to) { return from + (to - from) * share; };
    const auto faded = [](double part, double fade) { return fade > part ? part / fade : 1; };
    zol::Particle p{};
    p.x = x + right * age;
    p.y = y + (down * age + gravity * age * age / 2) * aspect;
    p.size = size * factor * (1 + (endSize - 1) * share);
    p.opacity = alpha * faded(share, fadeIn) * faded(1 - share, fadeOut);
    p.color[0] = mixed(color.b, endColor.b);
    p.color[1] = mixed(color.g, endColor.g);
    p.color[2] = mixed(color.r, endColor.r);
    if (shape == zol::ParticleShape::streaks) {
      const double way = std::min(age, frameTime);
      p.right = right * way;
      p.down = (down + gravity * (age - way / 2)) * way;
    } else if (shape == zol::ParticleShape::squares || shape == zol::ParticleShape::pictures) {
      const zol::Direction turned(std::fmod(360 * spin * age, 360));
      p.right = turned.right;
      p.down = turned.down;
    }
    return p;
  }
};

/// Adds the particles that live at the frame's time to a layer whose corner is the frame's pixel (left, top).
class Swarm {
public:
  Swarm(t_ZoHostInfo *host, const Settings &settings, zol::ParticleLayer &layer, int left, int top)
      : host_(host), settings_(settings), layer_(layer), left_(left), top_(top),
        now_(zol::within(host->FrameTime - host->VideoClipStart, -kFar, kFar)) {
    if (void *geometry = host->Services->ParamGetGeometry(host, kEmitter, 0); geometry != nullptr)
      emitter_.emplace(host, geometry);
  }

  /// False when the host fails or wants to stop, or when memory runs out; a message says which.
  bool add() {
    const auto last = static_cast<int64_t>(std::floor(now_ * zol::kTicksASecond));
    int64_t tick = last - zol::kTicksThatCount;
    if (!settings_.running)
      tick = std::max<int64_t>(tick, 0);
    for (; tick <= last; ++tick)
      if (!addTick(tick))
        return false;
    return true;
  }

private:
  static constexpr double kFar = 1e9; // seconds

  bool addTick(int64_t tick) {
    const double seconds = static_cast<double>(tick) / zol::kTicksASecond;
    const double time = seconds > 0 ? host_->Time * seconds / now_ : 0;
    const double longest = tickAt(time, false).life * (1 + settings_.variation);
    const int births = zol::birthsOf(settings_.seed, tick, tick_.rate);
    if (births == 0 || now_ - seconds - 1.0 / zol::kTicksASecond >= longest)
      return true;
    tickAt(time, true);
    if (emitter_ && !emitter_->moveTo(host_->VideoClipStart + std::max(seconds, 0.0))) {
      zol::showMessage(host_, "GeoGetCurves returns error");
      return false;
    }
    const bool isComplete = !emitter_ || *emitter_;
    for (int i = 0; isComplete && i < births; ++i)
      addBirth(tick, i, births);
    if (!isComplete || !layer_) {
      zol::showMemoryError(host_);
      return false;
    }
    constexpr int kTogether = 64;
    for (; born_ >= kTogether; born_ -= kTogether)
      if (zol::aborted(host_))
        return false;
    return true;
  }

  void addBirth(int64_t tick, int number, int births) {
    using Chance = zol::ParticleChance;
    const Chance chance(settings_.seed, tick, number);
    const zol::Lifetime lifetime =
        zol::lifetimeOf(chance, tick, number, births, now_, tick_.life, settings_.variation);
    double x = tick_.x, y = tick_.y;
    if (!lifetime.isNow() || !zol::isKept(chance, tick_.rate, tick_.life) ||
        (emitter_ && !emitter_->place(chance, x, y)))
      return;
    ++born_;
    const double speed = tick_.speed * chance.factor(Chance::kSpeed, settings_.variation);
    const zol::Direction to(tick_.direction + tick_.cone * (chance.share(Chance::kDirection) - 0.5));
    layer_.add(settings_.particle(x - left_, y - top_, speed * to.right, speed * to.down,
                                  chance.factor(Chance::kSize, settings_.variation), lifetime));
  }

  /// Parameters at a time, the first two alone or all. The time before the beginning is asked for once.
  const Tick &tickAt(double time, bool all) {
    const auto at = [&](Field field, double least, double most) {
      return zol::within(zol::paramDouble(host_, field, time), least, most);
    };
    const auto degrees = [&](Field field) {
      const double angle = zol::paramDouble(host_, field, time);
      return std::isfinite(angle) ? angle : 0;
    };
    if (time != time_) {
      tick_.rate = at(kRate, 0, kMostRate);
      tick_.life = std::max(at(kLife, kLeastLife, kMostLife), kLeastLife);
      time_ = time;
      hasAll_ = false;
    }
    if (all && !hasAll_) {
      tick_.x = (0.5 + at(kX, -zol::kOpenEnd, zol::kOpenEnd)) * host_->Width;
      tick_.y = (0.5 + at(kY, -zol::kOpenEnd, zol::kOpenEnd)) * host_->Height;
      tick_.speed = at(kSpeed, 0, kMostSpeed) * host_->Width;
      tick_.direction = degrees(kDirection);
      tick_.cone = degrees(kCone);
      hasAll_ = true;
    }
    return tick_;
  }

  t_ZoHostInfo *host_;
  const Settings &settings_;
  zol::ParticleLayer &layer_;
  int left_, top_;
  double now_; // seconds of the clip
  std::optional<Emitter> emitter_;
  Tick tick_{};
  double time_ = NAN; // of `tick_`
  bool hasAll_ = false;
  int born_ = 0; // since the host was asked
};

// ---- Rendering ----

/// The sprite's picture, where one is shown: what has none goes on as dots. False when the host gives up or,
/// after a message, when memory runs out.
bool readSprite(t_ZoHostInfo *host, Settings &settings, std::optional<zol::SpritePicture> &picture) {
  if (settings.shape != zol::ParticleShape::pictures)
    return true;
  if (void *input = zol::input(host, kSprite); input != nullptr) {
    if (const pic *frame = zol::frameOf(host, input); frame != nullptr)
      picture.emplace(*frame, zol::paramInt(host, kImageAlpha) != 0);
    else if (host->Services->ErrorCountReport(host, 0, 0, 1) != 0)
      return false;
  }
  if (picture && !*picture) {
    zol::showMemoryError(host);
    return false;
  }
  if (!picture || picture->isEmpty())
    settings.shape = zol::ParticleShape::dots;
  return true;
}

pic *render(t_ZoHostInfo *host) {
  void *input = zol::input(host, kBackground);
  const pic *background = input != nullptr ? zol::frameOf(host, input) : nullptr;
  if (input != nullptr && background == nullptr)
    return nullptr;
  Settings settings(host);
  std::optional<zol::SpritePicture> sprite;
  if (settings.alpha != 0 && !readSprite(host, settings, sprite))
    return nullptr;
  zol::OwnedPic out(host,
                    background != nullptr ? zol::copyOf(host, background) : zol::createCanvas(host, nullptr));
  if (!out || settings.alpha == 0)
    return out.release();
  zol::ParticleLayer layer({settings.shape, settings.adds, settings.aspect, sprite ? &*sprite : nullptr},
                           out->Width, out->Height);
  if (!Swarm(host, settings, layer, out->X, out->Y).add())
    return nullptr;
  if (layer.isEmpty() || layer.layOver(out->Pixels, [host] { return !zol::aborted(host); }))
    return out.release();
  if (!layer)
    zol::showMemoryError(host);
  return nullptr;
}

constexpr zol::Effect kScatterEx{
    .name = "Particle System/ScatterEx",
    .sign = "ScatterEx Zo2 native",
    .version = 2,
    .hosts = zol::Hosts::halvenor,
    .section = "ScatterEx",
    .description = kDescription,
    .icon = scatter_ex_xpm,
    .init = zol::defaults<kFields>,
    .renderVideo = render,
    .fields = kFields,
};

} // namespace

ZOL_EXPORT int ProcessScatterExDeclare(t_ZoHostInfo *host) { return zol::declare(host, kScatterEx); }
