#include "host/media/probe.h"

#include "host/media/process.h"
#include "host/model/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <utility>

namespace zol::host {
namespace {

using Json = nlohmann::json;

constexpr size_t kLongestAnswer = 1 << 20; // bytes of JSON; more is a hostile file
constexpr double kPatience = 60;           // seconds without an answer
constexpr double kFastest = 1000;          // frames per second; more is a time base, not a rate
constexpr Rational kUsualRate = 25;

const Json &member(const Json &object, const char *name) {
  static const Json kNothing;
  if (!object.is_object())
    return kNothing;
  const auto found = object.find(name);
  return found == object.end() ? kNothing : *found;
}

std::string text(const Json &object, const char *name) {
  const Json &value = member(object, name);
  return value.is_string() ? value.get<std::string>() : std::string();
}

/// A number given as such or as text; 0 when absent or not finite.
double number(const Json &object, const char *name) {
  const Json &value = member(object, name);
  double result = 0;
  if (value.is_number())
    result = value.get<double>();
  else if (value.is_string()) {
    const auto &digits = value.get_ref<const std::string &>();
    std::from_chars(digits.data(), digits.data() + digits.size(), result);
  }
  return std::isfinite(result) ? result : 0;
}

int integer(const Json &object, const char *name) {
  return static_cast<int>(std::clamp(number(object, name), 0.0, 1e9));
}

std::optional<Rational> sensibleRate(const std::string &value) {
  const auto rate = rationalIn(value);
  return rate && rate->value() <= kFastest ? rate : std::nullopt;
}

constexpr std::array kUsualRates{Rational(5),           Rational(10),          Rational(12), Rational(15),
                                 Rational(20),          Rational(24000, 1001), Rational(24), Rational(25),
                                 Rational(30000, 1001), Rational(30),          Rational(48), Rational(50),
                                 Rational(60000, 1001), Rational(60)};

/// The usual rate within a hundredth of this one, or this one.
Rational usualNear(Rational rate) {
  const auto distance = [&](Rational usual) { return std::abs(usual.value() - rate.value()); };
  const Rational nearest =
      *std::min_element(kUsualRates.begin(), kUsualRates.end(),
                        [&](Rational a, Rational b) { return distance(a) < distance(b); });
  return distance(nearest) <= 0.01 * nearest.value() ? nearest : rate;
}

/// The rate at which a stream means to run, so that all its pictures have a place where it varies.
/// `exactTimes`: whether the container counts time finely enough to tell a rate from its neighbours.
Rational nominalRate(const Json &stream, bool exactTimes, bool interlaced) {
  const auto average = sensibleRate(text(stream, "avg_frame_rate"));
  auto base = sensibleRate(text(stream, "r_frame_rate"));
  constexpr double kTimeBase = 210, kMostOfCameras = 70; // frames a second
  if (average && base && base->value() > kTimeBase && average->value() < kMostOfCameras)
    base.reset(); // ticks of a clock
  if (average && base && interlaced && std::abs(base->value() / average->value() - 2) < 0.02)
    base = nearestRational(base->value() / 2); // fields
  if (base)
    return exactTimes ? *base : usualNear(*base);
  if (!average)
    return kUsualRate;
  const Rational usual = usualNear(*average);
  const auto *above = std::find_if(kUsualRates.begin(), kUsualRates.end(),
                                   [&](Rational rate) { return rate.value() >= usual.value(); });
  return above == kUsualRates.end() ? usual : *above;
}

bool hasAlpha(const std::string &pixelFormat) {
  constexpr std::array kStarts{"rgba",  "bgra", "argb", "abgr", "yuva",
                               "gbrap", "ya8",  "ya16", "ayuv", "pal8"};
  return std::any_of(kStarts.begin(), kStarts.end(),
                     [&](const char *start) { return pixelFormat.starts_with(start); });
}

double rotation(const Json &stream) {
  const Json &sideData = member(stream, "side_data_list");
  if (sideData.is_array())
    for (const Json &entry : sideData)
      if (member(entry, "rotation").is_number())
        return number(entry, "rotation");
  return number(member(stream, "tags"), "rotate");
}

/// Names such as yuv420p10le, gbrap16be, p010le; but rgb565le.
bool isDeep(const std::string &pixelFormat) {
  constexpr std::array kPacked{"rgb565", "bgr565", "rgb555", "bgr555", "rgb444", "bgr444"};
  return (pixelFormat.ends_with("le") || pixelFormat.ends_with("be")) &&
         std::none_of(kPacked.begin(), kPacked.end(),
                      [&](const char *start) { return pixelFormat.starts_with(start); });
}

/// "00:01:02.5" in seconds; 0 for others.
double clockTime(const std::string &value) {
  double time = 0;
  for (const std::string_view part : split(value, ':'))
    time = time * 60 + numberIn(part).value_or(0);
  return time;
}

/// When a stream ends, as the file says.
double endOf(const Json &stream, double startTime) {
  const double own = number(stream, "duration"), begins = number(stream, "start_time");
  return own > 0 ? own + std::max(0.0, begins - startTime)
                 : clockTime(text(member(stream, "tags"), "DURATION"));
}

bool isOneOf(const std::string &format, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), format) != names.end();
}

/// Containers without a length, whose lengths ffmpeg estimates from bit rates or the last times.
bool guessesLength(const std::string &format) {
  return isTransport(format) ||
         isOneOf(format, {"mp3", "aac", "ac3", "eac3", "dts", "loas", "truehd", "mlp", "amr", "flv"});
}

bool stillFormat(const std::string &format) { return format.ends_with("_pipe") || format == "image2"; }

void readVideo(const Json &stream, MediaInfo &info) {
  info.hasVideo = true;
  info.width = integer(stream, "width");
  info.height = integer(stream, "height");
  info.videoCodec = text(stream, "codec_name");
  const std::string pixelFormat = text(stream, "pix_fmt");
  info.alpha = hasAlpha(pixelFormat) || text(member(stream, "tags"), "alpha_mode") == "1" ||
               text(member(stream, "tags"), "ALPHA_MODE") == "1";
  info.pixels = pipeFormat(pixelFormat, info.alpha);
  info.coding = colorCoding(info.pixels, info.width, info.height, text(stream, "color_space"),
                            text(stream, "color_range"), text(stream, "chroma_location"));
  info.deep = isDeep(pixelFormat);
  info.transfer = text(stream, "color_transfer");
  info.primaries = text(stream, "color_primaries");
  info.firstPicture = std::max(0.0, number(stream, "start_time") - info.startTime);
  info.pixelAspect = rationalIn(text(stream, "sample_aspect_ratio")).value_or(1).value();
  info.turned = rotation(stream) != 0;
  if (std::lround(std::fmod(std::abs(rotation(stream)), 180)) == 90) {
    std::swap(info.width, info.height);
    info.pixelAspect = 1 / info.pixelAspect;
  }
  const std::string order = text(stream, "field_order");
  info.interlaced = order == "tt" || order == "bb" || order == "tb" || order == "bt";
  info.topFieldFirst = order == "tt" || order == "tb"; // the latter in one picture, whose top line is earlier
  constexpr double kOneImage = 1.5 / 25;               // image files count as shown for 1/25 s
  info.still = (stillFormat(info.format) && number(stream, "duration") < kOneImage) ||
               (!info.hasAudio && integer(stream, "nb_frames") == 1);
  constexpr std::array kMilliseconds{"matroska", "flv", "live_flv"};
  const bool exactTimes = std::none_of(kMilliseconds.begin(), kMilliseconds.end(),
                                       [&](const char *start) { return info.format.starts_with(start); });
  info.frameRate = info.still ? Rational() : nominalRate(stream, exactTimes, info.interlaced);
}

/// The first stream of pictures that are no cover.
const Json *videoOf(const Json &answer) {
  for (const Json &stream : member(answer, "streams"))
    if (text(stream, "codec_type") == "video" && integer(member(stream, "disposition"), "attached_pic") == 0)
      return &stream;
  return nullptr;
}

MediaExtras extrasOf(const Json &answer) {
  MediaExtras extras;
  const auto addTimecode = [&](const Json &object) {
    if (extras.timecode.empty())
      extras.timecode = text(member(object, "tags"), "timecode");
  };
  for (const Json &stream : member(answer, "streams")) {
    const std::string type = text(stream, "codec_type");
    extras.sounds += type == "audio";
    if (type == "subtitle")
      extras.subtitles.push_back(text(stream, "codec_name"));
    extras.attachments += type == "attachment";
    extras.data += type == "data" && text(stream, "codec_tag_string") != "tmcd";
    addTimecode(stream);
  }
  addTimecode(member(answer, "format"));
  extras.tags = !member(member(answer, "format"), "tags").empty() || !member(answer, "chapters").empty();
  return extras;
}

MediaInfo infoFrom(const Json &answer) {
  MediaInfo info;
  info.extras = extrasOf(answer);
  const Json &format = member(answer, "format");
  info.format = text(format, "format_name");
  const Json *video = videoOf(answer), *audio = nullptr;
  for (const Json &stream : member(answer, "streams"))
    if (text(stream, "codec_type") == "audio" && audio == nullptr)
      audio = &stream;
  constexpr double kMost = 1e9;
  const double all = std::clamp(number(format, "duration"), 0.0, kMost);
  const auto lengthOf = [&](const Json &stream) {
    const double end = endOf(stream, info.startTime);
    return end > 0 && end < (all > 0 ? all + kMostBehindEnd : kMost) ? end : all;
  };
  info.startTime = number(format, "start_time");
  info.seekable = !text(format, "start_time").empty();
  if (audio != nullptr) {
    info.hasAudio = true;
    info.sampleRate = integer(*audio, "sample_rate");
    info.channels = integer(*audio, "channels");
    info.audioCodec = text(*audio, "codec_name");
    info.soundDuration = lengthOf(*audio);
  }
  info.duration = info.soundDuration;
  if (video != nullptr) {
    readVideo(*video, info);
    info.duration = info.still ? 0 : lengthOf(*video); // sound may go on for longer
    if (info.format == "nut" && info.duration > 0)     // it says when the last picture begins
      info.duration += timeOf(1, info.frameRate);
  }
  info.soundGuessed = info.soundDuration <= 0 || guessesLength(info.format);
  info.guessed = !info.still && (info.duration <= 0 || guessesLength(info.format));
  return info;
}

/// Codecs whose pictures tell of fields themselves, where their containers need not.
bool mayHaveFields(const std::string &codec) {
  return isOneOf(codec,
                 {"dnxhd", "dvvideo", "h264", "hevc", "mjpeg", "mpeg2video", "mpeg4", "prores", "vc1"});
}

/// Runs ffprobe over an input, or the first bytes of it, for these entries.
Json ask(const InputAddress &input, const std::string &name, const std::vector<uint8_t> *head,
         const MediaPrograms &programs, std::initializer_list<std::string> words) {
  std::vector<std::string> arguments{programs.ffprobe, "-v", "error", "-print_format", "json"};
  arguments.insert(arguments.end(), words.begin(), words.end());
  arguments.insert(arguments.end(), input.options.begin(), input.options.end());
  arguments.push_back(input.url);
  Process::Options options;
  options.output = Process::Stream::Pipe;
  options.patience = kPatience;
  if (head != nullptr) {
    options.input = Process::Stream::Pipe;
    options.feedHead = *head;
  }
  Process process(arguments, options);
  std::string answer(kLongestAnswer, '\0');
  answer.resize(process.read(answer.data(), answer.size()));
  if (answer.size() == kLongestAnswer)
    throw HostError("cannot read " + name + ": too much in it");
  if (process.wait() != 0)
    throw HostError("cannot read " + name + ": " + reasonOf(process, input.url));
  return Json::parse(answer, nullptr, false);
}

} // namespace

MediaInfo probe(const InputAddress &input, const std::string &name, const std::vector<uint8_t> *head,
                const MediaPrograms &programs) {
  const Json answer =
      ask(input, name, head, programs,
          {"-show_entries",
           "format=format_name,duration,start_time:format_tags:chapter=id:"
           "stream=codec_type,codec_name,codec_tag_string,width,height,pix_fmt,sample_aspect_ratio,"
           "avg_frame_rate,r_frame_rate,nb_frames,duration,start_time,field_order,color_space,color_range,"
           "color_transfer,color_primaries,chroma_location,sample_rate,channels:"
           "stream_disposition=attached_pic:stream_tags=rotate,alpha_mode,ALPHA_MODE,DURATION,timecode:"
           "stream_side_data=rotation"});
  MediaInfo info = infoFrom(answer);
  const auto refuse = [&](const std::string &why) { throw HostError("cannot read " + name + ": " + why); };
  if (!info.hasVideo && !info.hasAudio)
    refuse("neither pictures nor sound in it");
  if (info.hasVideo && (info.width == 0 || info.height == 0))
    refuse("its pictures have no size");
  if (info.hasVideo && !isPictureSize(info.width, info.height))
    refuse("pictures of " + std::to_string(info.width) + "x" + std::to_string(info.height) +
           " are not possible");
  if (info.hasAudio && (info.sampleRate == 0 || info.channels == 0))
    refuse("its sound has no rate");
  if (info.hasVideo && !info.still && !member(*videoOf(answer), "field_order").is_string() &&
      mayHaveFields(info.videoCodec)) {
    const Json frames = ask(input, name, head, programs,
                            {"-select_streams", "V:0", "-read_intervals", "%+#1", "-show_entries",
                             "frame=interlaced_frame,top_field_first"});
    for (const Json &frame : member(frames, "frames")) {
      info.interlaced = info.interlaced || integer(frame, "interlaced_frame") != 0;
      info.topFieldFirst = info.topFieldFirst || integer(frame, "top_field_first") != 0;
    }
  }
  return info;
}

MediaInfo infoOf(const DecodedPicture &picture) {
  return infoFrom({{"format", {{"format_name", picture.format}}},
                   {"streams",
                    {{{"codec_type", "video"},
                      {"codec_name", picture.codec},
                      {"pix_fmt", picture.pixels},
                      {"width", picture.width},
                      {"height", picture.height}}}}});
}

bool namesOtherFiles(const std::string &format) {
  return isOneOf(format,
                 {"concat", "dash", "hls", "imf", "mlv", "rtsp", "sdp", "vobsub", "webm_dash_manifest"});
}

bool isTransport(const std::string &format) { return isOneOf(format, {"mpeg", "mpegts"}); }

std::string fileUrl(const std::string &file) { return "file:" + file; }

namespace {

/// Whether a line of ffmpeg is more than the news that it failed.
bool tellsWhy(std::string_view line) {
  constexpr std::array kNews{"Error initializing output stream", "Error while opening encoder",
                             "Conversion failed!"};
  return std::none_of(kNews.begin(), kNews.end(), [&](const char *start) { return line.starts_with(start); });
}

} // namespace

std::string reasonOf(const Process &process, const std::string &url) {
  std::string line = process.lastLine([](std::string_view candidate) {
    return !candidate.starts_with("Could not write header") && tellsWhy(candidate);
  });
  if (line.empty())
    line = process.lastLine(tellsWhy);
  if (line.empty())
    line = process.lastLine();
  return reasonIn(std::move(line), url);
}

std::string reasonIn(std::string line, const std::string &url) {
  if (line.empty())
    return "no reason given";
  if (line.starts_with(url + ": "))
    line.erase(0, url.size() + 2);
  // "[png @ 0x5581f0]": the address tells the user nothing.
  const size_t at = line.find(" @ 0x");
  const size_t bracket = line.find(']', at == std::string::npos ? 0 : at);
  if (line.starts_with('[') && at != std::string::npos && bracket != std::string::npos)
    line.erase(at, bracket - at);
  return line;
}

} // namespace zol::host
