#include "host/media/probe.h"

#include "host/media/process.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
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

/// The constant rate that serves a stream: its own, or near the average of a varying one.
Rational frameRate(const Json &stream) {
  const auto average = sensibleRate(text(stream, "avg_frame_rate"));
  const auto base = sensibleRate(text(stream, "r_frame_rate"));
  if (!average)
    return base.value_or(kUsualRate);
  if (average == base)
    return *average;
  constexpr double kNear = 0.01;
  constexpr std::array kRates{Rational(24000, 1001), Rational(24),          Rational(25),
                              Rational(30000, 1001), Rational(30),          Rational(48),
                              Rational(50),          Rational(60000, 1001), Rational(60)};
  const auto distance = [&](Rational rate) { return std::abs(rate.value() - average->value()); };
  const Rational nearest = *std::min_element(
      kRates.begin(), kRates.end(), [&](Rational a, Rational b) { return distance(a) < distance(b); });
  return distance(nearest) <= kNear * nearest.value() ? nearest : *average;
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

bool stillFormat(const std::string &format) { return format.ends_with("_pipe") || format == "image2"; }

void readVideo(const Json &stream, MediaInfo &info) {
  info.hasVideo = true;
  info.width = integer(stream, "width");
  info.height = integer(stream, "height");
  info.videoCodec = text(stream, "codec_name");
  const std::string pixelFormat = text(stream, "pix_fmt");
  info.alpha = hasAlpha(pixelFormat) || text(member(stream, "tags"), "alpha_mode") == "1";
  info.pixels = pipeFormat(pixelFormat, info.alpha);
  info.coding = colorCoding(info.pixels, info.width, info.height, text(stream, "color_space"),
                            text(stream, "color_range"), text(stream, "chroma_location"));
  info.pixelAspect = rationalIn(text(stream, "sample_aspect_ratio")).value_or(1).value();
  info.turned = rotation(stream) != 0;
  if (std::lround(std::fmod(std::abs(rotation(stream)), 180)) == 90) {
    std::swap(info.width, info.height);
    info.pixelAspect = 1 / info.pixelAspect;
  }
  const std::string order = text(stream, "field_order");
  info.interlaced = order == "tt" || order == "bb" || order == "tb" || order == "bt";
  info.topFieldFirst = order == "tt" || order == "bt"; // as displayed
  constexpr double kOneImage = 1.5 / 25;               // image files count as shown for 1/25 s
  info.still = (stillFormat(info.format) && number(stream, "duration") < kOneImage) ||
               (!info.hasAudio && integer(stream, "nb_frames") == 1);
  info.frameRate = info.still ? Rational() : frameRate(stream);
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
  const Json &streams = member(answer, "streams");
  const Json *video = nullptr, *audio = nullptr;
  for (const Json &stream : streams) {
    const std::string type = text(stream, "codec_type");
    if (type == "audio" && audio == nullptr)
      audio = &stream;
    if (type == "video" && video == nullptr && integer(member(stream, "disposition"), "attached_pic") == 0)
      video = &stream;
  }
  if (audio != nullptr) {
    info.hasAudio = true;
    info.sampleRate = integer(*audio, "sample_rate");
    info.channels = integer(*audio, "channels");
    info.audioCodec = text(*audio, "codec_name");
  }
  if (video != nullptr)
    readVideo(*video, info);
  const double ofPictures = video != nullptr ? number(*video, "duration") : 0; // sound may go on for longer
  const double duration = ofPictures > 0 ? ofPictures : number(format, "duration");
  info.duration = info.still || duration < 0 || duration > 1e9 ? 0 : duration;
  return info;
}

MediaInfo runProbe(const std::string &url, const std::string &shown, const std::vector<uint8_t> *head,
                   const MediaPrograms &programs) {
  const std::vector<std::string> arguments{
      programs.ffprobe,
      "-v",
      "error",
      "-print_format",
      "json",
      "-show_entries",
      "format=format_name,duration:"
      "stream=codec_type,codec_name,width,height,pix_fmt,sample_aspect_ratio,avg_frame_rate,r_frame_rate,"
      "nb_frames,duration,field_order,color_space,color_range,chroma_location,sample_rate,channels:"
      "stream_disposition=attached_pic:stream_tags=rotate,alpha_mode:stream_side_data=rotation",
      "-show_entries",
      "stream=codec_tag_string:stream_tags=timecode:format_tags:chapter=id",
      url};
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
    throw HostError("cannot read " + shown + ": too much in it");
  if (process.wait() != 0)
    throw HostError("cannot read " + shown + ": " + reasonOf(process, url));
  MediaInfo info = infoFrom(Json::parse(answer, nullptr, false));
  if (!info.hasVideo && !info.hasAudio)
    throw HostError("cannot read " + shown + ": neither pictures nor sound in it");
  if (info.hasVideo && (info.width == 0 || info.height == 0))
    throw HostError("cannot read " + shown + ": its pictures have no size");
  if (info.hasAudio && (info.sampleRate == 0 || info.channels == 0))
    throw HostError("cannot read " + shown + ": its sound has no rate");
  return info;
}

} // namespace

MediaInfo probe(const std::string &file, const MediaPrograms &programs) {
  return runProbe(fileUrl(file), file, nullptr, programs);
}

MediaInfo probeBytes(const std::vector<uint8_t> &head, const MediaPrograms &programs) {
  MediaInfo info = runProbe("pipe:0", "standard input", &head, programs);
  info.duration = 0;
  return info;
}

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
