// Where readers get their bytes: a file that ffmpeg opens by itself, or a stream passed on to it.
#pragma once

#include "host/media/probe.h"
#include "host/media/process.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::host {

/// `-`, a named pipe and the like are streams: read once, their first bytes looked at in advance.
class Source {
public:
  explicit Source(std::string file);

  [[nodiscard]] bool isStream() const { return fd_ >= 0; }
  /// As ffmpeg's input.
  [[nodiscard]] std::string url() const { return isStream() ? "pipe:0" : fileUrl(file_); }
  /// As texts to the user call it.
  [[nodiscard]] std::string name() const { return file_ == "-" ? "standard input" : file_; }

  MediaInfo look(const MediaPrograms &programs);

  /// Starts a child whose output is read. A stream can be started once; MediaError afterwards.
  std::unique_ptr<Process> start(const std::vector<std::string> &arguments);

  /// A MediaError that says what the child, which has ended, says.
  [[nodiscard]] MediaError failure(const Process &process) const;

private:
  std::string file_;
  Descriptor opened_;
  int fd_ = -1;
  bool started_ = false;
  std::vector<uint8_t> head_;
};

} // namespace zol::host
