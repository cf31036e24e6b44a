// Frames and samples into a media file, through an ffmpeg child.
#pragma once

#include "host/media/probe.h"
#include "host/media/process.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::host {

struct WriterOptions {
  int width = 0; ///< 0 with height 0: no pictures.
  int height = 0;
  Rational rate = 25;
  Rational pixelAspect = 1; ///< Width of a pixel by its height.
  int sampleRate = 0;       ///< 0 with channels 0: no samples.
  int channels = 0;
  std::string
      soundFile; ///< Instead of samples: the sound of this file, cut to the length of the pictures ...
  double soundStart = 0;    ///< ... from this time on, in seconds.
  double soundDuration = 0; ///< ... and at most so long; 0: to its end.
  bool overwrite = false;   ///< Whether an existing file may be replaced.
  bool alpha = true;        ///< Whether to keep alpha where the format has it.
  std::string filter;       ///< ffmpeg filters to run over the pictures; empty: none.
  MediaPrograms programs;
};

/// Writes one file whose format the name tells. The file appears whole in finish() or not at all: until then
/// a file of a name of its own stands beside it, which goes when anything fails and with the writer. Devices
/// and pipes are written in place. `-` is standard output: raw BGRA frames, or raw floats without pictures.
class MediaWriter {
public:
  /// Throws HostError at once for what can be told at once: a file that exists, a missing or unwritable
  /// folder, a size that cannot be. Nothing is created before the first write.
  MediaWriter(std::string file, WriterOptions options);
  ~MediaWriter();
  MediaWriter(const MediaWriter &) = delete;
  MediaWriter &operator=(const MediaWriter &) = delete;

  /// The next picture: width * height pixels of four bytes (blue, green, red, alpha), rows without padding.
  void writeFrame(const void *pixels);

  /// The next `frames` sample frames, interleaved. Beside pictures, give the sound of a picture before the
  /// picture; it may run ahead by 64 MiB.
  void writeSamples(const float *samples, size_t frames);

  /// No more samples come although pictures do.
  void endSamples();

  /// Completes the file under its name.
  void finish();

  /// The command that would write the file, as a line for a shell; empty for raw standard output.
  [[nodiscard]] std::string commandLine() const;

  /// Whether a file of this name holds a single still picture.
  static bool isStill(const std::string &file);
  /// Whether a file of this name holds sound alone.
  static bool isSound(const std::string &file);

private:
  [[nodiscard]] std::vector<std::string> arguments(const std::string &target) const;
  [[nodiscard]] bool hasPictures() const { return options_.width != 0 || options_.height != 0; }
  [[nodiscard]] bool hasSamples() const { return options_.channels > 0; }
  [[nodiscard]] bool toStandardOutput() const { return file_ == "-"; }
  void check() const;
  void start();
  void put(const void *data, size_t size);
  void publish();
  void abandon();
  [[noreturn]] void fail(const std::string &reason);
  [[noreturn]] void failAsChild();

  std::string file_;
  WriterOptions options_;
  std::string partial_; ///< The name beside the target while it is being written.
  bool inPlace_ = false;
  bool samplesEnded_ = false;
  bool done_ = false; ///< Finished or failed.
  uint64_t frames_ = 0;
  uint64_t samples_ = 0;
  std::unique_ptr<Process> process_;
};

} // namespace zol::host
