// What a media file holds.
#pragma once

#include "host/media/picture_header.h"
#include "host/media/pixel_format.h"
#include "host/model/error.h"
#include "host/model/rational.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zol::host {

/// The programs that do the work, by name (searched for in PATH) or by path.
struct MediaPrograms {
  std::string ffmpeg = "ffmpeg";
  std::string ffprobe = "ffprobe";

  bool operator==(const MediaPrograms &) const = default;
};

/// What else stands in a file beside its first pictures and its first sound.
struct MediaExtras {
  int sounds = 0;                     ///< tracks of sound, the first one counted too
  std::vector<std::string> subtitles; ///< the codec of each track
  int attachments = 0;
  int data = 0;         ///< tracks of data, timecodes aside
  bool tags = false;    ///< whether it says anything of itself, or has chapters
  std::string timecode; ///< of its first picture; empty: none
};

/// Facts about a file. Everything about pictures is 0 or false without hasVideo, likewise sound.
struct MediaInfo {
  std::string format;   ///< The container as ffprobe names it, possibly several names joined by commas.
  double duration = 0;  ///< Seconds to the end of its pictures, else of its sound; 0 when not known or still.
  bool guessed = false; ///< Whether that is missing or an estimate.
  double startTime = 0; ///< What the file's own clock shows at its beginning.
  bool seekable = true; ///< Whether that clock tells everywhere in it how far one is.

  bool hasVideo = false;
  bool still = false; ///< One picture without a time of its own.
  int width = 0;      ///< As displayed: after the file's rotation, before its pixel aspect.
  int height = 0;
  int orientation = 1;     ///< Of a still as Exif counts, to be applied by the reader.
  double firstPicture = 0; ///< Seconds from the beginning to the first picture.
  Rational frameRate = 0;  ///< Frames per second: the nominal rate where the real one varies; 0 for stills.
  double pixelAspect = 1;  ///< Width of a pixel by its height, after rotation.
  bool alpha = false;
  bool interlaced = false;
  bool topFieldFirst = false;
  std::string videoCodec;
  PixelFormat pixels;              ///< As its pictures cross a pipe without loss.
  ColorCoding coding;              ///< In that format.
  bool turned = false;             ///< Whether it is displayed turned, in whatever direction.
  bool deep = false;               ///< More than 8 bits a component.
  std::string transfer, primaries; ///< As ffprobe names them; empty where the file does not say.
  bool otherColors = false;        ///< A still with a colour profile that is none of sRGB.

  bool hasAudio = false;
  int sampleRate = 0;
  int channels = 0;
  std::string audioCodec;

  MediaExtras extras;
  double soundDuration = 0;  ///< Seconds to the end of its sound, 0 when not known.
  bool soundGuessed = false; ///< Likewise.
};

/// How ffmpeg and ffprobe are told of an input: the words that go before its address, and that.
struct InputAddress {
  std::vector<std::string> options;
  std::string url;
};

/// Looks into an input, which texts call `name`; into its first bytes where they are given. Cover pictures of
/// sound files do not count as video. Throws HostError for what cannot be read, holds neither pictures nor
/// sound, or has pictures of a size that none can have.
MediaInfo probe(const InputAddress &input, const std::string &name, const std::vector<uint8_t> *head,
                const MediaPrograms &programs);

/// The same of a still of which its own header tells how it is decoded.
MediaInfo infoOf(const DecodedPicture &picture);

/// Whether a file of this format only names others, which are read in its place.
bool namesOtherFiles(const std::string &format);

/// Whether its clock may begin anew on the way, as that of broadcasts does.
bool isTransport(const std::string &format);

/// What a length that a file tells may be wrong by, in seconds: pictures and sound that lie farther behind it
/// have broken times.
constexpr double kMostBehindEnd = 1;

/// Whether pictures of this size can be: sides have 16 bits, and ffmpeg makes none whose bytes, at 8 a pixel
/// with 128 pixels more on each side, an int cannot count.
constexpr bool isPictureSize(int width, int height) {
  return width >= 1 && height >= 1 && width <= INT16_MAX && height <= INT16_MAX &&
         int64_t{8} * (width + 128) * (height + 128) < INT32_MAX;
}

/// The name as an ffmpeg input or output that is a local file whatever characters it has.
std::string fileUrl(const std::string &file);

class Process;
/// The last line of a child that failed with this input or output, without what only repeats its name.
std::string reasonOf(const Process &process, const std::string &url);
/// The same of any of its lines.
std::string reasonIn(std::string line, const std::string &url);

} // namespace zol::host
