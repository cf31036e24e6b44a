// Media Source: plays a file from any time on at any speed, its pictures between frames too and its sound
// with them. At speed 1 from its beginning it is the file as it is. Quorbel knows it as two sources, one of
// pictures and one of sound.

#include "effects/sources/media_source.xpm"
#include "frame/declaration.h"
#include "frame/effects.h"
#include "frame/picture.h"
#include "frame/real_time.h"
#include "frame/retime.h"
#include "frame/values.h"
#include "kernels/sound/resample.h"

#include <algorithm>
#include <cmath>

namespace {

namespace field = zol::field;

enum Field { kMedia, kStartOffset, kSpeed, kBeyond, kMethod, kFields, kVolume };
enum AudioField { kAudioVolume = kBeyond + 1 }; // where it follows those that all have

constexpr double kFastest = 16;

constexpr zol::Field media(const char *flags) {
  return field::media(kMedia, "Media", flags).help("The file to play.");
}
constexpr zol::Field speed() {
  return field::number(kSpeed, "Speed", {-kFastest, kFastest, "ZodfNone"}, 1)
      .help(
          "How fast it plays: 1 as it was taken, 0.5 half as fast, -1 backwards. Backwards it begins at the "
          "start offset too.");
}
constexpr zol::Field volume(int place) {
  return field::curve(place, "Volume", {0, 4, "ZodfNone"}, 1)
      .help("How loud it is: 0 is silent, 1 leaves the sound as it is.");
}

constexpr zol::Field kMediaFields[] = {media("ZodfMediaVideo|ZodfMediaAudio"),
                                       field::startOffset(kStartOffset),
                                       speed(),
                                       field::beyond(kBeyond),
                                       field::method(kMethod),
                                       field::frameFields(kFields),
                                       volume(kVolume)};

constexpr zol::Field kVideoFields[] = {
    media("ZodfMediaVideo"), field::startOffset(kStartOffset), speed(),
    field::beyond(kBeyond),  field::method(kMethod),           field::frameFields(kFields)};

constexpr zol::Field kAudioFields[] = {media("ZodfMediaAudio"), field::startOffset(kStartOffset), speed(),
                                       field::beyond(kBeyond), volume(kAudioVolume)};

ZOL_TEXT_TABLE kTexts[] = {
    "Media Source  on", "Media",  "Input start offset", "Speed", "Beyond", "Method",
    "Fields",           "Volume", "Plays a media file",
};

constexpr char kDescription[] =
    "This effect plays a media file from any time on, at any speed, forwards and backwards.";

/// How the media's time goes with that of the effect.
struct Playing {
  double offset, speed;

  static Playing at(t_ZoHostInfo *host, double time) {
    return {zol::within(zol::paramDouble(host, kStartOffset, time), 0, zol::kLongestOffset),
            zol::within(zol::paramDouble(host, kSpeed, time), -kFastest, kFastest)};
  }
  /// `elapsed`: since the effect's beginning.
  [[nodiscard]] double mediaTime(double elapsed) const { return offset + elapsed * speed; }
};

void *requiredMedia(t_ZoHostInfo *host) {
  void *media = zol::input(host, kMedia);
  if (media == nullptr)
    zol::showMessage(host, "Input not assigned");
  return media;
}

// ---- Pictures ----

pic *render(t_ZoHostInfo *host) {
  void *media = requiredMedia(host);
  if (media == nullptr)
    return nullptr;
  const zol::Footage footage = zol::readFootage(host, media, kBeyond, kMethod, kFields);
  return zol::retime(host, footage,
                     Playing::at(host, host->Time).mediaTime(host->FrameTime - host->VideoClipStart));
}

int renderRT(t_ZoHostInfo *host) {
  if (!zol::requirePictureBuffers(host))
    return 0;
  const zol::OwnedPic made(host, render(host));
  if (!made)
    return 0;
  const pic out = zol::pictureOf(host, host->OutputBuffer);
  std::fill_n(out.Pixels, ptrdiff_t{out.Width} * out.Height, _color_t{});
  zol::copyShared(out, *made);
  return 1;
}

// ---- Sound ----

/// A stretch of the media's sound. Seconds; `from` is after `to` where it plays backwards.
struct Stretch {
  double from, to;

  /// The sound of it and of so much more at both ends, as far as there is any.
  t_ZoAudio *fetch(t_ZoHostInfo *host, void *media, double more, double duration, double &begin) const {
    begin = std::max(0.0, std::min(from, to) - more);
    const double end = std::min(std::max(from, to) + more, duration);
    return host->Services->InputGetAudio(host, media, begin, std::max(begin, end));
  }
};

/// Where the parameters' curves are at a time of the block.
double parameterTime(const t_ZoHostInfo *host, double time) {
  const double relative = (time - host->ClipStart) / (host->ClipEnd - host->ClipStart);
  return std::isfinite(relative) ? relative : 0;
}

/// The curve is read every so many frames.
void applyVolume(t_ZoHostInfo *host, int volumeField, const t_ZoAudio &out) {
  constexpr uint32_t kRefresh = 100;
  const auto volumeAt = [&](uint32_t frame) {
    const double time = host->BlockStart + static_cast<double>(frame) / out.Rate;
    return zol::within(zol::paramDouble(host, volumeField, parameterTime(host, time)), 0, 4);
  };
  double volume = volumeAt(0);
  for (uint32_t first = 0; first < out.Frames;) {
    const uint32_t count = std::min(kRefresh, out.Frames - first);
    const double next = volumeAt(first + count);
    zol::scaleFrames(out.Samples + size_t{first} * out.Channels, count, out.Channels, volume, next);
    volume = next;
    first += count;
  }
}

template <int volumeField> t_ZoAudio *renderSound(t_ZoHostInfo *host) {
  void *media = requiredMedia(host);
  if (media == nullptr)
    return nullptr;
  constexpr double kForever = 1e9;
  const Playing playing = Playing::at(host, parameterTime(host, host->BlockStart));
  const auto mediaTime = [&](double time) {
    return zol::within(playing.mediaTime(time - host->ClipStart), -kForever, kForever);
  };
  const double known = zol::mediaDuration(host, media), duration = known > 0 ? known : kForever;
  const Stretch stretch{mediaTime(host->BlockStart), mediaTime(host->BlockEnd)};
  const bool outside =
      std::max(stretch.from, stretch.to) < 0 || std::min(stretch.from, stretch.to) >= duration;

  double begin = 0;
  const t_ZoAudio *sound = outside ? nullptr : stretch.fetch(host, media, 0, duration, begin);
  if (sound == nullptr && !outside)
    return nullptr;
  const zol::SoundReader reader(sound != nullptr ? sound->Channels : 0);
  t_ZoAudio *out = reader ? zol::createSound(host) : nullptr;
  if (out == nullptr) {
    zol::showMemoryError(host);
    return nullptr;
  }
  const size_t samples = size_t{out->Frames} * out->Channels;
  if (outside || sound->Rate == 0 || out->Rate == 0 || samples == 0) {
    std::fill_n(out->Samples, samples, 0.0F);
    return out;
  }
  const auto frameOf = [&](double time) { return std::floor(time * sound->Rate + 0.5); };
  if (playing.speed == 1 && sound->Rate == out->Rate) {
    zol::copyFrames(zol::sourceOf(*sound), static_cast<ptrdiff_t>(frameOf(stretch.from) - frameOf(begin)),
                    out->Frames, out->Channels, out->Samples);
  } else {
    const double rate = sound->Rate, step = playing.speed * rate / out->Rate;
    constexpr double kRounding = 2; // frames
    double earlier = 0;
    if (const t_ZoAudio *more =
            stretch.fetch(host, media, (zol::SoundReader::reach(step) + kRounding) / rate, duration, earlier);
        more != nullptr && more->Rate == sound->Rate && more->Channels == sound->Channels) {
      sound = more;
      begin = earlier;
    }
    // The block's own first sample, so that blocks join wherever they are cut.
    const double first = std::floor(host->BlockStart * out->Rate + 0.5) / out->Rate;
    reader.read(zol::sourceOf(*sound), mediaTime(first) * rate - frameOf(begin), step, out->Frames,
                out->Channels, out->Samples);
  }
  applyVolume(host, volumeField, *out);
  return out;
}

// ---- Media and their length ----

int probe(t_ZoHostInfo *host, void *media) {
  constexpr int kPictures = 1, kSound = 2;
  t_ZoMediaInfo info;
  if (!zol::mediaGetInfo(host, media, info))
    return kPictures | kSound;
  return (info.HasVideo != 0 ? kPictures : 0) | (info.HasAudio != 0 ? kSound : 0);
}

int initByMedia(t_ZoHostInfo *host, void *media) {
  host->Services->InputSet(host, kMedia, 0, media);
  return 1;
}

void setOffset(t_ZoHostInfo *host, double offset) {
  constexpr double kKey = 0.5;
  host->Services->ParamSetFloat(host, kStartOffset, 0, kKey, offset);
}

/// Keeps the edges where there are media, unless these go on for ever, and what is seen at every time.
int trim(t_ZoHostInfo *host, double edges[2]) {
  const Playing playing = Playing::at(host, host->Time);
  const double start = host->VideoClipStart, duration = zol::mediaDuration(host, zol::input(host, kMedia));
  if (zol::paramInt(host, kBeyond) != static_cast<int>(zol::Beyond::loop) && playing.speed != 0) {
    const double begins = start - playing.offset / playing.speed;
    const double ends = start + (duration - playing.offset) / playing.speed;
    const bool forwards = playing.speed > 0;
    for (double *edge : {edges, edges + 1}) {
      if (forwards || duration > 0)
        *edge = std::max(*edge, forwards ? begins : ends);
      if (!forwards || duration > 0)
        *edge = std::min(*edge, forwards ? ends : begins);
    }
  }
  const double offset = playing.mediaTime(edges[0] - start);
  if (offset != playing.offset && std::isfinite(offset))
    setOffset(host, std::clamp(offset, 0.0, zol::kLongestOffset));
  return 1;
}

/// Other media may be shorter than those before.
void forgetOffsetBeyondMedia(t_ZoHostInfo *host) {
  const double duration = zol::mediaDuration(host, zol::input(host, kMedia));
  if (duration > 0 && Playing::at(host, host->Time).offset > duration)
    setOffset(host, 0);
}

int onDialogOpen(t_ZoHostInfo *host) {
  forgetOffsetBeyondMedia(host);
  return 1;
}

int onDialogItemEdit(t_ZoHostInfo *host, int item) {
  if (item != kMedia)
    return 0;
  forgetOffsetBeyondMedia(host);
  host->Services->DialogRefresh(host, 0, 0);
  return 0;
}

int deleteUserData(t_ZoHostInfo *) { return 1; }

constexpr zol::Effect kMediaSource{
    .name = "Sources/Media Source",
    .sign = "Media Source Zo2 native",
    .version = 10,
    .hosts = zol::Hosts::allButQuorbel,
    .section = "MediaSource",
    .description = kDescription,
    .icon = media_source_xpm,
    .iconMode = "One+Saw",
    .init = zol::defaults<kMediaFields>,
    .renderVideo = render,
    .renderVideoRT = renderRT,
    .renderAudio = renderSound<kVolume>,
    .onDialogOpen = onDialogOpen,
    .onDialogItemEdit = onDialogItemEdit,
    .probe = probe,
    .initByMedia = initByMedia,
    .deleteUserData = deleteUserData,
    .trim = trim,
    .fields = kMediaFields,
};

constexpr zol::Effect kVideoSource = [] {
  zol::Effect source = kMediaSource;
  source.name = "Sources/Video Source";
  source.sign = "Qb5 VideoSource [rul]";
  source.version = 1;
  source.hosts = zol::Hosts::quorbel;
  source.init = zol::defaults<kVideoFields>;
  source.renderAudio = nullptr;
  source.fields = kVideoFields;
  return source;
}();

constexpr zol::Effect kAudioSource = [] {
  zol::Effect source = kMediaSource;
  source.name = "Sources/Audio Source";
  source.sign = "Qb5 AudioSource [rul]";
  source.version = 1;
  source.hosts = zol::Hosts::quorbel;
  source.init = zol::defaults<kAudioFields>;
  source.renderVideo = nullptr;
  source.renderVideoRT = nullptr;
  source.renderAudio = renderSound<kAudioVolume>;
  source.fields = kAudioFields;
  return source;
}();

} // namespace

ZOL_EXPORT int ProcessMediaSourceDeclare(t_ZoHostInfo *host) {
  return zol::declare(host, kMediaSource, kVideoSource, kAudioSource);
}
