// Where readers get their bytes: a file that ffmpeg opens by itself, or a stream passed on to it.
#pragma once

#include "host/media/probe.h"
#include "host/media/process.h"

#include <cstdint>
#include <memory>
#include <optional>
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

  /// What is in it. Looked at when first asked for; throws HostError as probe() does.
  const MediaInfo &look(const MediaPrograms &programs);

  /// Starts a child whose output is read. A stream can be started once; HostError afterwards.
  std::unique_ptr<Process> start(const std::vector<std::string> &arguments);

  /// A HostError that says what the child, which has ended, says.
  [[nodiscard]] HostError failure(const Process &process) const;

private:
  std::string file_;
  Descriptor opened_;
  int fd_ = -1;
  bool started_ = false;
  std::vector<uint8_t> head_;
  std::optional<MediaInfo> info_;
};

} // namespace zol::host
