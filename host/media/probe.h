// What a media file holds.
#pragma once

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
  std::string format;  ///< The container as ffprobe names it, possibly several names joined by commas.
  double duration = 0; ///< Seconds, 0 when not known or still.

  bool hasVideo = false;
  bool still = false; ///< One picture without a time of its own.
  int width = 0;      ///< As displayed: after the file's rotation, before its pixel aspect.
  int height = 0;
  Rational frameRate = 0; ///< Frames per second, the average where it varies; 0 for stills.
  double pixelAspect = 1; ///< Width of a pixel by its height, after rotation.
  bool alpha = false;
  bool interlaced = false;
  bool topFieldFirst = false;
  std::string videoCodec;
  PixelFormat pixels;  ///< As its pictures cross a pipe without loss.
  ColorCoding coding;  ///< In that format.
  bool turned = false; ///< Whether it is displayed turned, in whatever direction.

  bool hasAudio = false;
  int sampleRate = 0;
  int channels = 0;
  std::string audioCodec;

  MediaExtras extras;
};

/// Looks into a file. Cover pictures of sound files do not count as video. Throws HostError for what cannot
/// be read or holds neither pictures nor sound.
MediaInfo probe(const std::string &file, const MediaPrograms &programs = {});

/// The same for the first bytes of a stream.
MediaInfo probeBytes(const std::vector<uint8_t> &head, const MediaPrograms &programs = {});

/// The name as an ffmpeg input or output that is a local file whatever characters it has.
std::string fileUrl(const std::string &file);

class Process;
/// The last line of a child that failed with this input or output, without what only repeats its name.
std::string reasonOf(const Process &process, const std::string &url);

} // namespace zol::host
