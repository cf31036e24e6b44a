// Formats of written files: what each can hold, and the words that have ffmpeg encode it.
#pragma once

#include "host/media/pixel_format.h"
#include "host/model/rational.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zol::host {

enum class Quality { draft, good, best, lossless };

/// By the names above.
std::optional<Quality> qualityNamed(std::string_view name);

/// What is wanted of the encoders; all that is left out follows from the format.
struct EncodingChoice {
  std::string codec; ///< of pictures, of sound, or both with a comma between, as the tables here name them
  Quality quality = Quality::good;
  std::string pixelFormat;          ///< as ffmpeg names it
  std::vector<std::string> options; ///< output options for ffmpeg, as they are, behind all others

  bool operator==(const EncodingChoice &) const = default;
};

enum class FileKind { still, sound, moving };

struct Format {
  std::string_view extensions; ///< words, as all lists here
  FileKind kind;
  std::string_view muxer;    ///< as ffmpeg names it; empty: told by EncodingChoice::options
  std::string_view pictures; ///< codecs that it holds, the usual one first
  std::string_view sounds;   ///< likewise
  std::string_view lossless; ///< of both, those for Quality::lossless
  std::string_view
      subtitles;           ///< codecs that go into it as they are; text goes as the first, where it is text
  std::string_view words;  ///< options of the muxer
  bool manyTracks = false; ///< Whether it holds several tracks of sound.
};

/// How the colours of pictures become those of a pixel format.
enum class Colours {
  asis,     ///< RGB, or what ffmpeg makes of it
  palette,  ///< one for each picture
  jpeg,     ///< BT.601, full range
  bt709,    ///< limited range, and named so
  untagged, ///< limited range by the matrix that players suppose for the size
};

struct PictureEncoding {
  std::string words;
  std::string pixelFormat; ///< empty: ffmpeg chooses
  Colours colours = Colours::asis;
  bool alpha = false;  ///< whether alpha is kept
  bool fields = false; ///< whether fields can be coded as such
};

struct SoundEncoding {
  std::string words;
  std::string layouts; ///< the layouts of channels that the encoder takes, parted by '|'; empty: all
};

/// The format of a file of this name. Throws HostError, with what there is, for an extension that none has,
/// unless the choice's options name a muxer.
const Format &formatOf(const std::string &file, const EncodingChoice &choice);
/// The kind of a file of this name; moving where it is not known.
FileKind kindOf(const std::string &file);

/// `name` is the file's, for errors. Throw HostError for codecs that are unknown or that the format does not
/// hold, and for qualities that they do not have. The format must hold pictures or sound, respectively.
PictureEncoding pictureEncoding(const Format &format, const std::string &name, const EncodingChoice &choice,
                                bool alpha);
/// The codec of the former, as the tables here name it; empty where the options name an encoder.
std::string pictureCodec(const Format &format, const std::string &name, const EncodingChoice &choice);
SoundEncoding soundEncoding(const Format &format, const std::string &name, const EncodingChoice &choice);

/// What follows the last of these words among options for ffmpeg, such as "-c:v -vcodec"; empty: none is
/// there.
std::string optionOf(const std::vector<std::string> &options, std::string_view names);

bool holdsAttachments(const Format &format);

/// How subtitles of a codec go into the format: "copy", the codec that they become, or empty: not at all.
std::string subtitleEncoding(const Format &format, const std::string &codec);

enum class FieldOrder { none, topFirst, bottomFirst };

struct PictureShape {
  int width, height;
  Rational pixelAspect = 1;
  FieldOrder fields = FieldOrder::none;
};

/// How the samples of YUV pictures are coded; nothing where that is ffmpeg's matter.
std::optional<ColorCoding> codingOf(Colours colours, int width, int height);

/// ffmpeg's filters that bring pictures of a format, BGRA or what codingOf() tells, to an encoding; by zscale
/// where it may be and can.
std::string filtersFor(const PictureEncoding &encoding, const PictureShape &shape, const PixelFormat &from,
                       bool zscale);

} // namespace zol::host
