// Samples of a media file, streamed through an ffmpeg child.
#pragma once

#include "host/media/damage.h"
#include "host/media/probe.h"
#include "host/media/process.h"
#include "host/media/source.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zol::host {

struct AudioReaderOptions {
  int sampleRate = 0;                       ///< 0: the file's own.
  int channels = 0;                         ///< 0: the file's own.
  double start = 0;                         ///< Time within the file of sample frame 0, in seconds.
  std::optional<double> end = std::nullopt; ///< Time within the file at which it is taken to end.
  bool strict = false;                      ///< Whether damage is an error.
  bool raw = false; ///< The bytes are raw interleaved floats of rawRate and rawChannels.
  int rawRate = 48000;
  int rawChannels = 2;
  MediaPrograms programs;
};

/// Interleaved 32-bit floats. Time 0 is the beginning of the file, also where its sound begins later.
class AudioReader {
public:
  /// `-` is standard input: raw, or what ffmpeg can tell from a stream. Named pipes likewise. Only one
  /// reader can have it.
  AudioReader(const std::string &file, AudioReaderOptions options)
      : AudioReader(Source(file), std::move(options)) {}
  /// The same for a source that may have been looked at.
  AudioReader(Source source, AudioReaderOptions options);
  ~AudioReader();
  AudioReader(const AudioReader &) = delete;
  AudioReader &operator=(const AudioReader &) = delete;

  [[nodiscard]] const MediaInfo &info() const { return info_; }
  /// Whether samples come from a pipe, in their order alone and to an end that is not known in advance.
  [[nodiscard]] bool isStream() const { return source_.isStream(); }
  [[nodiscard]] int sampleRate() const { return options_.sampleRate; }
  [[nodiscard]] int channels() const { return options_.channels; }

  /// Has all samples converted to this rate and these channels; to be called before the first read().
  void convertTo(int sampleRate, int channels);

  /// Copies up to `count` sample frames from sample frame `first` on into `samples` (count * channels floats)
  /// and returns how many there were: fewer only behind the end. The same range gives the same samples in any
  /// order of calls. Recent samples are kept; a step behind them reads anew from the beginning (standard
  /// input: HostError).
  size_t read(uint64_t first, size_t count, float *samples);

  /// Seconds from the start to the end, as far as the file tells; 0 where it does not.
  [[nodiscard]] double duration() const;

  /// Number of sample frames, known once the end was met.
  [[nodiscard]] std::optional<uint64_t> frameCount() const;

  /// Whether there is a sample frame of this number: reads on to it where that is not known yet.
  bool reaches(uint64_t frame);

  /// What is wrong with the file as far as it was read, in one line; empty where nothing is.
  [[nodiscard]] const std::string &damage() const { return damage_.text(); }

  /// The command that reads the file, as a line for a shell.
  [[nodiscard]] std::string commandLine() const;

private:
  [[nodiscard]] std::vector<std::string> arguments() const;
  void checkFormat(int sampleRate, int channels) const;
  void open();
  bool readBlock();
  void listen();
  [[nodiscard]] uint64_t origin() const;
  [[nodiscard]] uint64_t limit() const;
  [[nodiscard]] uint64_t frameAt(double time) const;

  Source source_;
  AudioReaderOptions options_;
  MediaInfo info_;
  Damage damage_;
  std::unique_ptr<Process> process_;
  Listener listener_{false};
  size_t kept_ = size_t{16} * 16384; ///< Sample frames kept at least for going back.
  std::vector<float> window_;        ///< The newest samples; the last sample frame is number next_ - 1.
  uint64_t next_ = 0; ///< Sample frames taken from the child so far, from the file's beginning.
  std::optional<uint64_t> end_;
};

} // namespace zol::host
