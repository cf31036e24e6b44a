// Frames and samples into a media file, through an ffmpeg child.
#pragma once

#include "host/media/aligned_bytes.h"
#include "host/media/conversion.h"
#include "host/media/format.h"
#include "host/media/output_file.h"
#include "host/media/probe.h"
#include "host/media/process.h"
#include "host/media/queue.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

/// A file of which tracks go into the output, cut to a stretch of its time.
struct Companion {
  std::string file;    ///< empty: none
  double start = 0;    ///< seconds
  double duration = 0; ///< seconds; 0: to its end, the sound then to the length of the pictures
  double tempo = 1;    ///< of its sound, from 0.5 on
  bool sound = false;  ///< its sound, instead of samples
  int rawRate = 0;     ///< with rawChannels: raw floats, which are complete only when the pictures are
  int rawChannels = 0;
  bool pictures = false; ///< its pictures, beside samples: as they are where `copied`, else encoded
  bool copied = false;
  bool tags = false;                  ///< what it says of itself, and its chapters
  std::vector<std::string> subtitles; ///< codecs of its subtitle tracks; those that can be kept go along
  bool attachments = false;           ///< whether it has any; likewise
};

/// Encoded pictures in Matroska files that follow each other.
struct EncodedPictures {
  std::vector<std::string> files; ///< empty: none
  std::vector<uint64_t> frames;   ///< in each
  std::string codec;              ///< as ffprobe names it
  std::string encoder;            ///< what it tells of itself
  int delay = 0;                  ///< frames by which decoding leads
};

struct WriterOptions {
  int width = 0; ///< 0 with height 0: no pictures.
  int height = 0;
  Rational rate = 25;
  Rational pixelAspect = 1; ///< Width of a pixel by its height.
  FieldOrder fields = FieldOrder::none;
  uint64_t firstNumber = 0;         ///< Of numbered pictures.
  std::optional<uint64_t> pictures; ///< How many come, where that is known.
  EncodedPictures encoded;          ///< Pictures that are copied, instead of frames.
  std::pair<std::string, std::string>
      tag;            ///< Of a part of a film, which holds pictures alone: what it tells of itself.
  int sampleRate = 0; ///< 0 with channels 0: no samples.
  int channels = 0;
  Companion companion;
  std::string timecode;   ///< Of the first picture, as "01:00:00:00"; empty: none.
  bool overwrite = false; ///< Whether an existing file may be replaced.
  bool alpha = true;      ///< Whether to keep alpha where the format has it.
  std::string filter;     ///< ffmpeg filters to run over the pictures; empty: none.
  EncodingChoice encoding;
  MediaPrograms programs;
};

/// Whether a file can take the pictures of another as they are; tried with the first of them.
bool canCopyPictures(const std::string &from, const std::string &to, const EncodingChoice &encoding,
                     const MediaPrograms &programs);

/// Writes one file whose format the name tells, or a set of numbered pictures. It appears whole in finish()
/// or not at all: see Output. `-` is standard output: raw BGRA frames, or raw floats without pictures, unless
/// the options for ffmpeg name a format. Pictures and samples are converted and handed on in a thread of
/// their own: what goes wrong there is thrown by a later call, by finish() at the latest.
class MediaWriter {
public:
  /// Throws HostError at once for what can be told at once: a file that exists, a missing or unwritable
  /// folder, a size that cannot be, a format that is not known. Nothing is created before the first write.
  MediaWriter(std::string file, WriterOptions options);
  ~MediaWriter();
  MediaWriter(const MediaWriter &) = delete;
  MediaWriter &operator=(const MediaWriter &) = delete;

  /// Starts the child, so that it is ready when the first picture is; writing does so otherwise.
  void prepare();

  /// The next picture: width * height pixels of four bytes (blue, green, red, alpha), rows without padding,
  /// which stay as they are.
  void writeFrame(std::shared_ptr<const void> pixels);
  /// The same for pixels that are copied.
  void writeFrame(const void *pixels);

  /// The next `frames` sample frames, interleaved. Beside pictures, give the sound of a picture before the
  /// picture; it may run ahead by 64 MiB.
  void writeSamples(const float *samples, size_t frames);

  /// No more samples come although pictures do.
  void endSamples();

  /// Completes the file under its name.
  void finish();

  /// With a companion of raw floats: makes the file that is to be filled with them before finish(), in the
  /// place of the companion's own, which commandLines() alone has. Not where the output writesInPlace().
  std::string soundBeside();

  /// The commands that would write the file, as lines for a shell; none for raw standard output.
  [[nodiscard]] std::vector<std::string> commandLines() const;

  /// Whether a file of this name holds a single still picture.
  static bool isStill(const std::string &file);
  /// Whether a file of this name is one of numbered pictures.
  static bool isSequence(const std::string &file);
  /// Whether a file of this name holds sound alone.
  static bool isSound(const std::string &file);
  /// Whether it is raw bytes, a device or a pipe, that is: nothing can be added in the end.
  static bool writesInPlace(const std::string &file);

private:
  enum class Pass { whole, picturesAlone, joining };
  [[nodiscard]] std::vector<std::string> arguments(const std::string &target, Pass pass,
                                                   const std::string &picturesAlone) const;
  void addPictureWords(std::vector<std::string> &args, const std::string &input) const;
  void addSoundWords(std::vector<std::string> &args, const std::string &input) const;
  void addCompanionTracks(std::vector<std::string> &args, const std::string &input) const;
  void addEncodedPictures(std::vector<std::string> &args, const std::string &input) const;
  [[nodiscard]] bool hasPictures() const { return options_.width != 0 || options_.height != 0; }
  [[nodiscard]] bool hasSamples() const { return options_.channels > 0; }
  [[nodiscard]] bool copiesPictures() const { return !options_.encoded.files.empty(); }
  [[nodiscard]] bool isPart() const { return !options_.tag.first.empty(); }
  [[nodiscard]] bool soundComesLate() const { return options_.companion.rawChannels > 0; }
  [[nodiscard]] std::string name() const { return file_ == "-" ? "to standard output" : file_; }
  void check() const;
  [[nodiscard]] size_t pictureBytes() const;
  [[nodiscard]] PictureEncoding encodingOfPictures() const;
  [[nodiscard]] PictureLayout pipeLayout() const;
  void begin();
  void writeTag();
  void hand(std::function<void()> work);
  void sendPicture(const void *pixels);
  void sendSamples(const std::vector<float> &samples);
  void put(const void *data, size_t size);
  void waitForChild();
  template <class Work> auto orFail(Work work);
  [[noreturn]] void fail(const std::string &reason);
  [[noreturn]] void throwAsChild();

  std::string file_;
  WriterOptions options_;
  bool raw_; ///< To standard output, without a child.
  std::unique_ptr<Output> output_;
  std::string picturesAlone_; ///< Where pictures wait for their sound.
  std::string tagFile_;       ///< What has the tag.
  bool begun_ = false;        ///< Whether something was written.
  bool samplesEnded_ = false;
  bool done_ = false; ///< Finished or failed.
  uint64_t frames_ = 0;
  uint64_t samples_ = 0;
  // What the thread works with, which goes first.
  std::unique_ptr<Process> process_;
  Descriptor standardOutput_;
  PictureLayout pipe_;
  std::optional<Converter> converter_; ///< None where the child takes BGRA.
  AlignedBytes converted_;
  std::optional<WriteBehind<std::function<void()>>> behind_;
};

} // namespace zol::host
