#include "host/media/format.h"

#include "host/media/zscale.h"
#include "host/model/error.h"
#include "host/model/names.h"
#include "host/model/text.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace zol::host {
namespace {

using enum Quality;
using enum FileKind;
using enum Colours;

// ---- Codecs ----

/// One quality of a codec. Where a codec has no row of a quality, a lossless one serves them all, and one of
/// Quality::good the lesser and the better.
struct PictureRow {
  std::string_view codec;
  Quality quality;
  std::string_view words;
  std::string_view opaque; ///< pixel format without alpha
  std::string_view alpha;  ///< the one with alpha; empty: none
  Colours colours = asis;
  bool fields = false;
};

constexpr PictureRow kPictures[] = {
    {"h264", draft, "-c:v libx264 -preset veryfast -crf 23", "yuv420p", "", bt709, true},
    {"h264", good, "-c:v libx264 -preset medium -crf 17", "yuv420p", "", bt709, true},
    {"h264", best, "-c:v libx264 -preset slow -crf 12", "yuv420p", "", bt709, true},
    {"h264", lossless, "-c:v libx264rgb -preset medium -qp 0", "bgr0", ""},
    {"hevc", draft, "-c:v libx265 -preset veryfast -crf 27 -x265-params log-level=error", "yuv420p", "",
     bt709},
    {"hevc", good, "-c:v libx265 -preset medium -crf 20 -x265-params log-level=error", "yuv420p", "", bt709},
    {"hevc", best, "-c:v libx265 -preset slow -crf 14 -x265-params log-level=error", "yuv420p", "", bt709},
    {"hevc", lossless, "-c:v libx265 -preset medium -x265-params log-level=error:lossless=1", "gbrp", ""},
    {"av1", draft, "-c:v libsvtav1 -preset 10 -crf 40", "yuv420p", "", bt709},
    {"av1", good, "-c:v libsvtav1 -preset 8 -crf 26", "yuv420p", "", bt709},
    {"av1", best, "-c:v libsvtav1 -preset 5 -crf 18", "yuv420p", "", bt709},
    {"vp9", draft, "-c:v libvpx-vp9 -crf 34 -b:v 0 -deadline good -cpu-used 5 -row-mt 1 -auto-alt-ref 0",
     "yuv420p", "yuva420p", bt709},
    {"vp9", good, "-c:v libvpx-vp9 -crf 24 -b:v 0 -deadline good -cpu-used 4 -row-mt 1 -auto-alt-ref 0",
     "yuv420p", "yuva420p", bt709},
    {"vp9", best, "-c:v libvpx-vp9 -crf 15 -b:v 0 -deadline good -cpu-used 2 -row-mt 1 -auto-alt-ref 0",
     "yuv420p", "yuva420p", bt709},
    {"vp9", lossless, "-c:v libvpx-vp9 -lossless 1 -cpu-used 4 -row-mt 1", "gbrp", ""},
    {"vp8", good, "-c:v libvpx -crf 8 -b:v 20M -deadline good -cpu-used 2 -auto-alt-ref 0", "yuv420p",
     "yuva420p", bt709},
    {"prores", draft, "-c:v prores_ks -profile:v 4444 -bits_per_mb 1200 -vendor apl0", "yuv444p10le",
     "yuva444p10le", bt709, true},
    {"prores", good, "-c:v prores_ks -profile:v 4444 -vendor apl0", "yuv444p10le", "yuva444p10le", bt709,
     true},
    {"prores", best, "-c:v prores_ks -profile:v 4444xq -vendor apl0", "yuv444p10le", "yuva444p10le", bt709,
     true},
    {"dnxhd", draft, "-c:v dnxhd -profile:v dnxhr_lb", "yuv422p", "", bt709},
    {"dnxhd", good, "-c:v dnxhd -profile:v dnxhr_hq", "yuv422p", "", bt709},
    {"dnxhd", best, "-c:v dnxhd -profile:v dnxhr_444", "yuv444p10le", "", bt709},
    {"mpeg2", draft, "-c:v mpeg2video -q:v 6", "yuv420p", "", bt709, true},
    {"mpeg2", good, "-c:v mpeg2video -q:v 2", "yuv420p", "", bt709, true},
    {"mpeg2", best, "-c:v mpeg2video -q:v 1 -qmin 1", "yuv420p", "", bt709, true},
    {"mpeg4", draft, "-c:v mpeg4 -q:v 6", "yuv420p", "", untagged, true},
    {"mpeg4", good, "-c:v mpeg4 -q:v 2", "yuv420p", "", untagged, true},
    {"mpeg4", best, "-c:v mpeg4 -q:v 1 -qmin 1", "yuv420p", "", untagged, true},
    {"mjpeg", draft, "-c:v mjpeg -q:v 7", "yuvj422p", "", Colours::jpeg},
    {"mjpeg", good, "-c:v mjpeg -q:v 2", "yuvj422p", "", Colours::jpeg},
    {"mjpeg", best, "-c:v mjpeg -q:v 1 -qmin 1", "yuvj444p", "", Colours::jpeg},
    {"theora", draft, "-c:v libtheora -q:v 6", "yuv420p", "", untagged},
    {"theora", good, "-c:v libtheora -q:v 9", "yuv420p", "", untagged},
    {"theora", best, "-c:v libtheora -q:v 10", "yuv420p", "", untagged},
    {"wmv", draft, "-c:v wmv2 -q:v 6", "yuv420p", "", untagged},
    {"wmv", good, "-c:v wmv2 -q:v 2", "yuv420p", "", untagged},
    {"wmv", best, "-c:v wmv2 -q:v 1 -qmin 1", "yuv420p", "", untagged},
    {"dv", good, "-c:v dvvideo", "", "", untagged},
    {"yuv", good, "-c:v wrapped_avframe", "yuv420p", "", untagged},
    {"gif", good, "-c:v gif", "", "pal8", palette},

    {"ffv1", lossless, "-c:v ffv1 -level 3 -g 1 -slicecrc 1", "bgr0", "bgra", asis, true},
    {"utvideo", lossless, "-c:v utvideo", "gbrp", "gbrap"},
    {"huffyuv", lossless, "-c:v huffyuv", "rgb24", "bgra"},
    {"qtrle", lossless, "-c:v qtrle", "rgb24", "argb"},
    {"raw", lossless, "-c:v rawvideo", "bgr0", "bgra"},
    {"apng", lossless, "-c:v apng", "rgb24", "rgba"},
    {"png", lossless, "-c:v png -pred mixed", "rgb24", "rgba"},

    {"tiff", lossless, "-c:v tiff -compression_algo deflate", "rgb24", "rgba"},
    {"targa", lossless, "-c:v targa", "bgr24", "bgra"},
    {"bmp", lossless, "-c:v bmp", "bgr24", "bgra"},
    {"jpeg", draft, "-c:v mjpeg -q:v 7", "yuvj420p", "", Colours::jpeg},
    {"jpeg", good, "-c:v mjpeg -q:v 2", "yuvj444p", "", Colours::jpeg},
    {"jpeg", best, "-c:v mjpeg -q:v 1 -qmin 1", "yuvj444p", "", Colours::jpeg},
    {"webp", draft, "-c:v libwebp -quality 75", "bgra", "bgra"},
    {"webp", good, "-c:v libwebp -quality 92", "bgra", "bgra"},
    {"webp", best, "-c:v libwebp -quality 98", "bgra", "bgra"},
    {"webp", lossless, "-c:v libwebp -lossless 1", "bgra", "bgra"},
    {"jpegxl", draft, "-c:v libjxl -distance 2", "rgb24", "rgba"},
    {"jpegxl", good, "-c:v libjxl", "rgb24", "rgba"},
    {"jpegxl", best, "-c:v libjxl -distance 0.3", "rgb24", "rgba"},
    {"jpegxl", lossless, "-c:v libjxl -distance 0", "rgb24", "rgba"},
    {"jpeg2000", lossless, "-c:v libopenjpeg", "rgb24", "rgba"},
    {"ppm", lossless, "-c:v ppm", "rgb24", ""},
    {"pgm", good, "-c:v pgm", "gray", ""},
    {"pam", lossless, "-c:v pam", "rgb24", "rgba"},
    {"exr", lossless, "-c:v exr", "gbrpf32le", "gbrapf32le"},
    {"dpx", lossless, "-c:v dpx", "rgb24", "rgba"},
    {"sgi", lossless, "-c:v sgi", "rgb24", "rgba"},
    {"qoi", lossless, "-c:v qoi", "rgb24", "rgba"},
    {"pcx", lossless, "-c:v pcx", "rgb24", ""},
    {"sun", lossless, "-c:v sunrast", "bgr24", ""},
};

struct SoundRow {
  std::string_view codec;
  Quality quality;
  std::string_view words;
  std::string_view layouts = {};
};

constexpr std::string_view kTwo = "mono|stereo";
constexpr std::string_view kOpusLayouts = "mono|stereo|3.0|quad|5.0|5.1|7.1";

constexpr SoundRow kSounds[] = {
    {"aac", draft, "-c:a aac -b:a 128k"},
    {"aac", good, "-c:a aac -b:a 256k"},
    {"aac", best, "-c:a aac -b:a 320k"},
    {"opus", draft, "-c:a libopus -b:a 96k", kOpusLayouts},
    {"opus", good, "-c:a libopus -b:a 192k", kOpusLayouts},
    {"opus", best, "-c:a libopus -b:a 320k", kOpusLayouts},
    {"vorbis", draft, "-c:a libvorbis -q:a 4"},
    {"vorbis", good, "-c:a libvorbis -q:a 8"},
    {"vorbis", best, "-c:a libvorbis -q:a 10"},
    {"mp3", draft, "-c:a libmp3lame -q:a 4", kTwo},
    {"mp3", good, "-c:a libmp3lame -q:a 0", kTwo},
    {"mp3", best, "-c:a libmp3lame -b:a 320k", kTwo},
    {"mp2", draft, "-c:a mp2 -b:a 192k", kTwo},
    {"mp2", good, "-c:a mp2 -b:a 320k", kTwo},
    {"mp2", best, "-c:a mp2 -b:a 384k", kTwo},
    {"ac3", draft, "-c:a ac3 -b:a 256k"},
    {"ac3", good, "-c:a ac3 -b:a 448k"},
    {"ac3", best, "-c:a ac3 -b:a 640k"},
    {"eac3", good, "-c:a eac3 -b:a 640k"},
    {"wma", draft, "-c:a wmav2 -b:a 128k", kTwo},
    {"wma", good, "-c:a wmav2 -b:a 256k", kTwo},
    {"wma", best, "-c:a wmav2 -b:a 320k", kTwo},
    {"flac", lossless, "-c:a flac -sample_fmt s32 -bits_per_raw_sample 24"},
    {"alac", lossless, "-c:a alac -sample_fmt s32p"},
    {"wavpack", lossless, "-c:a wavpack -sample_fmt fltp"},
    {"tta", lossless, "-c:a tta -sample_fmt s32"},
    {"f32", lossless, "-c:a pcm_f32le"},
    {"f32be", lossless, "-c:a pcm_f32be"},
    {"s24", lossless, "-c:a pcm_s24le"},
    {"s16", lossless, "-c:a pcm_s16le"},
};

// ---- Formats ----

constexpr std::string_view kMp4Pictures = "h264 hevc av1 vp9 mpeg4 mpeg2 mjpeg png";
constexpr std::string_view kMp4Sounds = "aac ac3 eac3 mp3 mp2 opus alac";
constexpr std::string_view kFastStart = "-movflags +faststart";

constexpr Format kFormats[] = {
    {"png", still, "image2", "png", "", "png", "", ""},
    {"tif tiff", still, "image2", "tiff", "", "tiff", "", ""},
    {"tga", still, "image2", "targa", "", "targa", "", ""},
    {"bmp", still, "image2", "bmp", "", "bmp", "", ""},
    {"jpg jpeg", still, "image2", "jpeg", "", "", "", ""},
    {"webp", still, "image2", "webp", "", "webp", "", ""},
    {"ppm", still, "image2", "ppm", "", "ppm", "", ""},
    {"pgm", still, "image2", "pgm", "", "", "", ""},
    {"pam", still, "image2", "pam", "", "pam", "", ""},
    {"exr", still, "image2", "exr", "", "exr", "", ""},
    {"dpx", still, "image2", "dpx", "", "dpx", "", ""},
    {"jp2 j2k", still, "image2", "jpeg2000", "", "jpeg2000", "", ""},
    {"jxl", still, "image2", "jpegxl", "", "jpegxl", "", ""},
    {"qoi", still, "image2", "qoi", "", "qoi", "", ""},
    {"sgi", still, "image2", "sgi", "", "sgi", "", ""},
    {"pcx", still, "image2", "pcx", "", "pcx", "", ""},
    {"ras sun", still, "image2", "sun", "", "sun", "", ""},

    {"mp4", moving, "mp4", kMp4Pictures, kMp4Sounds, "h264 alac", "mov_text", kFastStart, true},
    {"m4v", moving, "ipod", "h264 mpeg4", "aac alac ac3", "h264 alac", "mov_text", kFastStart, true},
    {"mov", moving, "mov", "prores h264 hevc dnxhd mpeg2 mpeg4 mjpeg png qtrle",
     "f32 s24 s16 aac alac ac3 mp3", "qtrle f32", "mov_text", "", true},
    {"mkv mk3d", moving, "matroska",
     "h264 hevc av1 vp9 vp8 ffv1 prores dnxhd mpeg2 mpeg4 mjpeg theora png utvideo huffyuv raw",
     "flac aac opus vorbis ac3 eac3 mp3 mp2 f32 s24 s16 alac wavpack tta", "ffv1 f32",
     "subrip ass ssa webvtt hdmv_pgs_subtitle dvd_subtitle dvb_subtitle", "", true},
    {"webm", moving, "webm", "vp9 vp8 av1", "opus vorbis", "vp9", "webvtt", "", true},
    {"avi", moving, "avi", "mpeg4 h264 mjpeg mpeg2 ffv1 utvideo huffyuv png dv raw",
     "s16 mp3 ac3 mp2 aac f32", "ffv1 f32", "", "", true},
    {"ogv", moving, "ogv", "theora vp8", "vorbis opus flac", "", "", "", true},
    {"mxf", moving, "mxf", "mpeg2 dnxhd prores h264 dv", "s16 s24", "", "", "-ar 48000", true},
    {"ts", moving, "mpegts", "h264 hevc mpeg2", "aac mp2 ac3 eac3 mp3 opus", "h264", "dvb_subtitle", "",
     true},
    {"m2ts mts", moving, "mpegts", "h264 hevc mpeg2", "ac3 eac3 aac mp2", "h264", "dvb_subtitle",
     "-mpegts_m2ts_mode 1", true},
    {"mpg mpeg", moving, "mpeg", "mpeg2", "mp2 mp3 ac3", "", "", "", true},
    {"vob", moving, "vob", "mpeg2", "ac3 mp2", "", "", "", true},
    {"wmv asf", moving, "asf", "wmv mpeg4 h264", "wma mp3 aac", "", "", "", true},
    {"flv", moving, "flv", "h264", "aac mp3", "h264", "", ""},
    {"f4v", moving, "f4v", "h264", "aac mp3", "h264", "", kFastStart},
    {"3gp", moving, "3gp", "h264 mpeg4", "aac", "h264", "mov_text", kFastStart},
    {"3g2", moving, "3g2", "h264 mpeg4", "aac", "h264", "mov_text", kFastStart},
    {"nut", moving, "nut", "raw ffv1 h264 hevc mpeg4 mjpeg png", "f32 s24 s16 aac mp3 flac", "raw f32", "",
     "", true},
    {"gif", moving, "gif", "gif", "", "", "", ""},
    {"apng", moving, "apng", "apng", "", "apng", "", "-plays 0"},
    {"y4m", moving, "yuv4mpegpipe", "yuv", "", "", "", "-strict -1"},
    {"ivf", moving, "ivf", "vp9 vp8 av1", "", "vp9", "", ""},
    {"obu", moving, "obu", "av1", "", "", "", ""},
    {"h264 264", moving, "h264", "h264", "", "h264", "", ""},
    {"hevc h265 265", moving, "hevc", "hevc", "", "hevc", "", ""},
    {"m2v", moving, "mpeg2video", "mpeg2", "", "", "", ""},
    {"mjpg mjpeg", moving, "mjpeg", "mjpeg", "", "", "", ""},
    {"dv", moving, "dv", "dv", "s16", "", "", "-ar 48000 -ac 2"},

    {"wav", sound, "wav", "", "f32 s24 s16", "f32", "", "-rf64 auto"},
    {"w64", sound, "w64", "", "f32 s24 s16", "f32", "", ""},
    {"caf", sound, "caf", "", "f32 s24 s16 alac aac", "f32", "", ""},
    {"aif aiff", sound, "aiff", "", "f32be", "f32be", "", ""},
    {"au", sound, "au", "", "f32be", "f32be", "", ""},
    {"flac", sound, "flac", "", "flac", "flac", "", ""},
    {"mp3", sound, "mp3", "", "mp3", "", "", ""},
    {"ogg", sound, "ogg", "", "vorbis opus flac", "flac", "", ""},
    {"oga", sound, "oga", "", "vorbis opus flac", "flac", "", ""},
    {"opus", sound, "opus", "", "opus", "", "", ""},
    {"m4a m4b", sound, "ipod", "", "aac alac ac3", "alac", "", kFastStart},
    {"mka", sound, "matroska", "", "flac aac opus vorbis ac3 mp3 f32 s24 s16", "flac", "", ""},
    {"weba", sound, "webm", "", "opus vorbis", "", "", ""},
    {"wma", sound, "asf", "", "wma", "", "", ""},
    {"aac", sound, "adts", "", "aac", "", "", ""},
    {"wv", sound, "wv", "", "wavpack", "wavpack", "", ""},
    {"tta", sound, "tta", "", "tta", "tta", "", ""},
    {"ac3", sound, "ac3", "", "ac3", "", "", ""},
    {"eac3", sound, "eac3", "", "eac3", "", "", ""},
    {"mp2", sound, "mp2", "", "mp2", "", "", ""},
};

/// What the user's own words name the muxer of: anything may go in.
constexpr Format kNamedByUser{"",
                              moving,
                              "",
                              "h264 hevc av1 vp9 ffv1 prores mpeg2 mpeg4 mjpeg",
                              "aac opus flac mp3 ac3 f32 s16",
                              "ffv1 f32",
                              "",
                              "",
                              true};

bool hasWord(std::string_view list, std::string_view word) {
  const auto words = split(list, ' ');
  return !word.empty() && std::find(words.begin(), words.end(), word) != words.end();
}

std::string withCommas(std::string_view list) {
  std::string text(list);
  for (size_t at = 0; (at = text.find(' ', at)) != text.npos; at += 2)
    text.replace(at, 1, ", ");
  return text;
}

std::string extensionsOf(FileKind kind) {
  std::string list;
  for (const Format &format : kFormats)
    if (format.kind == kind)
      (list += list.empty() ? "" : " ") += format.extensions;
  return withCommas(list);
}

// ---- Choosing ----

/// The names that a choice of codecs has, as the tables have them.
std::vector<std::string_view> codecsIn(std::string_view choice) {
  constexpr std::pair<std::string_view, std::string_view> kOtherNames[] = {
      {"avc", "h264"}, {"x264", "h264"}, {"h265", "hevc"}, {"x265", "hevc"},       {"dnxhr", "dnxhd"},
      {"jpg", "jpeg"}, {"tif", "tiff"},  {"tga", "targa"}, {"mpeg2video", "mpeg2"}};
  std::vector<std::string_view> names;
  if (!choice.empty())
    names = split(choice, ',');
  for (std::string_view &name : names)
    for (const auto &[other, own] : kOtherNames)
      if (name == other)
        name = own;
  return names;
}

template <class Rows> std::string_view firstHeld(const Rows &rows, std::string_view list) {
  for (const std::string_view name : split(list, ' '))
    if (std::any_of(std::begin(rows), std::end(rows), [&](const auto &row) { return row.codec == name; }))
      return name;
  return {};
}

template <class Rows> auto rowOf(const Rows &rows, std::string_view codec, Quality quality) {
  const auto row = [&](Quality wanted) {
    const auto found = std::find_if(std::begin(rows), std::end(rows), [&](const auto &candidate) {
      return candidate.codec == codec && candidate.quality == wanted;
    });
    return found == std::end(rows) ? nullptr : &*found;
  };
  const auto *found = row(quality);
  for (const Quality next : {quality == lossless ? best : good, good, lossless})
    found = found == nullptr ? row(next) : found;
  return found;
}

template <class Rows> bool knows(const Rows &rows, std::string_view codec) {
  return rowOf(rows, codec, good) != nullptr;
}

void checkCodecs(const EncodingChoice &choice) {
  for (const std::string_view codec : codecsIn(choice.codec)) {
    if (knows(kPictures, codec) || knows(kSounds, codec))
      continue;
    std::vector<std::string> names;
    for (const PictureRow &row : kPictures)
      names.emplace_back(row.codec);
    for (const SoundRow &row : kSounds)
      names.emplace_back(row.codec);
    const auto near = nearestNames(codec, names, 1);
    throw HostError("no codec \"" + std::string(codec) + '"' +
                    (near.empty() ? "" : "; did you mean \"" + near.front() + "\"?"));
  }
}

/// The row for one of the two kinds, which `held` and the format's lossless list name.
template <class Rows>
const auto &chosenRow(const Rows &rows, const Format &format, std::string_view held, const std::string &name,
                      const EncodingChoice &choice) {
  checkCodecs(choice);
  std::string_view codec;
  for (const std::string_view wanted : codecsIn(choice.codec))
    if (knows(rows, wanted))
      codec = wanted;
  if (!codec.empty() && !hasWord(held, codec))
    throw HostError("\"" + name + "\" cannot hold " + std::string(codec) + "; it holds " + withCommas(held));
  const auto inLossless = firstHeld(rows, format.lossless);
  if (codec.empty())
    codec = choice.quality == lossless && !inLossless.empty() ? inLossless : firstHeld(rows, held);
  return *rowOf(rows, codec, choice.quality);
}

constexpr std::string_view kPictureEncoders = "-c:v -codec:v -vcodec -c -codec"; // options

bool hasAlphaByName(std::string_view pixelFormat) {
  for (const std::string_view start :
       {"rgba", "bgra", "argb", "abgr", "yuva", "gbrap", "ya8", "ya16", "pal8"})
    if (pixelFormat.starts_with(start))
      return true;
  return false;
}

Colours coloursByName(std::string_view pixelFormat, Colours usual) {
  if (pixelFormat.starts_with("yuvj"))
    return Colours::jpeg;
  for (const std::string_view start : {"yuv", "nv", "p01", "p21", "p41", "uyvy", "yvyu"})
    if (pixelFormat.starts_with(start))
      return usual == asis || usual == palette ? bt709 : usual;
  return asis;
}

/// In lower case, with its point.
std::string extensionOf(const std::string &file) {
  return folded(std::filesystem::path(file).extension().string());
}

const Format *formatBy(std::string_view extension) {
  const auto found = std::find_if(std::begin(kFormats), std::end(kFormats), [&](const Format &format) {
    return !extension.empty() && hasWord(format.extensions, extension.substr(1));
  });
  return found == std::end(kFormats) ? nullptr : found;
}

const PictureRow *rowOfEncoder(std::string_view encoder) {
  for (const PictureRow &row : kPictures)
    if (hasWord(row.words.substr(0, row.words.find(' ', 5)), encoder))
      return &row;
  return nullptr;
}

} // namespace

std::optional<Quality> qualityNamed(std::string_view name) {
  constexpr std::string_view kNames[] = {"draft", "good", "best", "lossless"};
  const auto *found = std::find(std::begin(kNames), std::end(kNames), name);
  return found == std::end(kNames) ? std::nullopt : std::optional(static_cast<Quality>(found - kNames));
}

std::string optionOf(const std::vector<std::string> &options, std::string_view names) {
  for (size_t i = options.size(); i > 1; --i)
    if (hasWord(names, options[i - 2]))
      return options[i - 1];
  return {};
}

const Format &formatOf(const std::string &file, const EncodingChoice &choice) {
  const std::string extension = extensionOf(file);
  if (const Format *format = formatBy(extension))
    return *format;
  if (!optionOf(choice.options, "-f").empty())
    return kNamedByUser;
  const std::string cannot = "cannot write " + file + ": ";
  if (extension.empty())
    throw HostError(cannot + "its name has no extension that tells the format, such as .mp4, .png or .wav");
  throw HostError(cannot + "no format is known by \"" + extension + "\"; known are " + extensionsOf(moving) +
                  "; of stills " + extensionsOf(still) + "; of sound " + extensionsOf(sound));
}

FileKind kindOf(const std::string &file) {
  const Format *format = formatBy(extensionOf(file));
  return format == nullptr ? moving : format->kind;
}

PictureEncoding pictureEncoding(const Format &format, const std::string &name, const EncodingChoice &choice,
                                bool alpha) {
  const PictureRow &row = chosenRow(kPictures, format, format.pictures, name, choice);
  if (choice.quality == lossless && row.quality != lossless)
    throw HostError("\"" + name + "\" cannot hold pictures without loss by " + std::string(row.codec));
  PictureEncoding encoding{std::string(row.words),
                           std::string(alpha && !row.alpha.empty() ? row.alpha : row.opaque), row.colours,
                           alpha && !row.alpha.empty(), row.fields};
  if (const std::string encoder = optionOf(choice.options, kPictureEncoders); !encoder.empty()) {
    constexpr PictureRow kUsual{"", good, "", "yuv420p", "", bt709};
    const PictureRow *own = rowOfEncoder(encoder);
    const PictureRow &used = own == nullptr ? kUsual : *own;
    encoding = {"", std::string(alpha && !used.alpha.empty() ? used.alpha : used.opaque), used.colours,
                alpha && !used.alpha.empty(), true};
  }
  if (encoding.colours == palette)
    encoding.pixelFormat.clear();
  std::string pixelFormat = choice.pixelFormat;
  if (pixelFormat.empty())
    pixelFormat = optionOf(choice.options, "-pix_fmt");
  if (!pixelFormat.empty()) {
    encoding.alpha = alpha && hasAlphaByName(pixelFormat);
    encoding.colours = coloursByName(pixelFormat, encoding.colours);
    encoding.pixelFormat = std::move(pixelFormat);
  }
  return encoding;
}

std::string pictureCodec(const Format &format, const std::string &name, const EncodingChoice &choice) {
  if (!optionOf(choice.options, kPictureEncoders).empty())
    return {};
  return std::string(chosenRow(kPictures, format, format.pictures, name, choice).codec);
}

SoundEncoding soundEncoding(const Format &format, const std::string &name, const EncodingChoice &choice) {
  if (!optionOf(choice.options, "-c:a -codec:a -acodec -c -codec").empty())
    return {};
  const SoundRow &row = chosenRow(kSounds, format, format.sounds, name, choice);
  return {std::string(row.words), std::string(row.layouts)};
}

bool holdsAttachments(const Format &format) { return format.muxer == "matroska"; }

std::string subtitleEncoding(const Format &format, const std::string &codec) {
  if (hasWord(format.subtitles, codec))
    return "copy";
  constexpr std::string_view kTexts = "subrip ass ssa webvtt mov_text text";
  const auto first = split(format.subtitles, ' ').front();
  return hasWord(kTexts, codec) && hasWord(kTexts, first) ? std::string(first) : std::string();
}

// ---- Pixels ----

std::optional<ColorCoding> codingOf(Colours colours, int width, int height) {
  const bool highDefinition = width >= 1280 || height >= 720;
  switch (colours) {
  case asis:
  case palette: break;
  case Colours::jpeg: return ColorCoding{ColorMatrix::Bt601, true, ChromaSite::Center};
  case bt709: return ColorCoding{ColorMatrix::Bt709};
  case untagged: return ColorCoding{highDefinition ? ColorMatrix::Bt709 : ColorMatrix::Bt601};
  }
  return std::nullopt;
}

namespace {

/// Repeats the last column and row where the chroma needs even sizes.
std::string evenSize(std::string_view pixelFormat, int width, int height) {
  const bool has420 = pixelFormat.find("420") != pixelFormat.npos || pixelFormat.starts_with("nv12") ||
                      pixelFormat.starts_with("p01");
  const bool has422 = pixelFormat.find("422") != pixelFormat.npos;
  const int right = has420 || has422 ? width % 2 : 0, bottom = has420 ? height % 2 : 0;
  if (right == 0 && bottom == 0)
    return {};
  return "format=gbrap,pad=" + std::to_string(width + right) + ":" + std::to_string(height + bottom) +
         ",fillborders=right=" + std::to_string(right) + ":bottom=" + std::to_string(bottom) + ":mode=smear,";
}

std::string conversion(const PictureEncoding &encoding, const PictureShape &shape, bool zscale) {
  const std::string_view format = encoding.pixelFormat;
  const std::string asFormat = format.empty() ? "" : ",format=" + encoding.pixelFormat;
  const auto convert = [&](const char *range, const char *matrix) {
    const PixelFormat planes = pipeFormat(format);
    const auto coding = codingOf(encoding.colours, shape.width, shape.height);
    if (zscale && coding && planes.family == ColorFamily::Yuv) {
      PictureLayout from{kBgra, planes.roundedWidth(shape.width), planes.roundedHeight(shape.height)},
          to = from;
      to.format = planes;
      to.coding = *coding;
      return zscaleFilters(from, to) + (planes.name() == format ? "" : asFormat);
    }
    return std::string("scale=out_range=") + range + ":out_color_matrix=" + matrix +
           (shape.fields == FieldOrder::none ? "" : ":interl=1") +
           ":flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp" + asFormat;
  };
  const bool highDefinition = shape.width >= 1280 || shape.height >= 720;
  switch (encoding.colours) {
  case asis: return format.empty() ? "" : asFormat.substr(1);
  case palette:
    return "split[a][b];[a]palettegen=stats_mode=single[p];[b][p]paletteuse=new=1:dither=sierra2_4a";
  case Colours::jpeg: return convert("pc", "bt601");
  case bt709: // some encoders look at the frames alone, some files at the options alone: both name the
              // colours
    return evenSize(format, shape.width, shape.height) + convert("tv", "bt709") +
           ",setparams=colorspace=bt709:color_primaries=bt709:color_trc=bt709:range=tv";
  case untagged:
    return evenSize(format, shape.width, shape.height) + convert("tv", highDefinition ? "bt709" : "bt601");
  }
  return {};
}

} // namespace

std::string filtersFor(const PictureEncoding &encoding, const PictureShape &shape, const PixelFormat &from,
                       bool zscale) {
  std::string filters;
  if (from == kBgra)
    filters = conversion(encoding, shape, zscale && shape.fields == FieldOrder::none);
  else if (from.name() != encoding.pixelFormat)
    filters = "format=" + encoding.pixelFormat; // the same samples in another order
  const auto append = [&](const std::string &filter) { (filters += filters.empty() ? "" : ",") += filter; };
  if (shape.fields != FieldOrder::none)
    append(shape.fields == FieldOrder::topFirst ? "setfield=tff" : "setfield=bff");
  if (shape.pixelAspect != Rational(1))
    append("setsar=" + shape.pixelAspect.text());
  return filters;
}

} // namespace zol::host
