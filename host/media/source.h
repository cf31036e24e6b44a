// Where readers get their bytes: a file that ffmpeg opens by itself, or a stream passed on to it.
#pragma once

#include "host/media/probe.h"
#include "host/media/process.h"
#include "host/media/sequence.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zol::host {

struct SourceOptions {
  bool playlists = false;     ///< Whether the file may name others to be read in its place.
  Rational sequenceRate = 25; ///< Of pictures in files of their own, in frames per second.
};

/// A name is that of a file, whatever characters it has; where there is no such file, one with %d or %0Nd is
/// that of pictures in files of their own. `-`, a named pipe and the like are streams: read once, their first
/// bytes looked at in advance.
class Source {
public:
  explicit Source(std::string file, SourceOptions options = {});

  [[nodiscard]] bool isStream() const { return fd_ >= 0; }
  /// As ffmpeg's input. No network, and no protocol that names other files.
  [[nodiscard]] const InputAddress &address() const { return address_; }
  /// The same as words of its command line.
  [[nodiscard]] std::vector<std::string> arguments() const;
  /// As texts to the user call it.
  [[nodiscard]] std::string name() const { return file_ == "-" ? "standard input" : file_; }
  [[nodiscard]] const std::optional<PictureSequence> &sequence() const { return sequence_; }

  /// What is in it. Looked at when first asked for; throws HostError for what cannot be read.
  const MediaInfo &look(const MediaPrograms &programs);

  /// Starts a child whose output is read. A stream can be started once; HostError afterwards.
  std::unique_ptr<Process> start(const std::vector<std::string> &arguments);

  /// A HostError that says what the child, which has ended, says.
  [[nodiscard]] HostError failure(const Process &process) const;

private:
  void findFile();
  void readHead();
  [[nodiscard]] MediaInfo lookInto(const MediaPrograms &programs) const;

  std::string file_;
  SourceOptions options_;
  InputAddress address_;
  std::optional<PictureSequence> sequence_;
  Descriptor opened_;
  int fd_ = -1;
  bool started_ = false;
  std::vector<uint8_t> head_;
  std::optional<MediaInfo> info_;
};

/// What a file holds.
MediaInfo probe(const std::string &file, const MediaPrograms &programs = {});

} // namespace zol::host
