#include "host/media/source.h"

#include "host/media/interrupt.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace zol::host {
namespace {

constexpr size_t kHeadBytes = size_t{4} << 20; // enough to tell a format, its streams and their rates
constexpr double kPatience = 120;              // seconds without a byte from a file

} // namespace

Source::Source(std::string file) : file_(std::move(file)) {
  if (file_ == "-") {
    fd_ = STDIN_FILENO;
    return;
  }
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file_, error);
  if (std::filesystem::is_fifo(status) || std::filesystem::is_socket(status)) {
    opened_ = Descriptor(open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    if (!opened_)
      throw HostError("cannot read " + file_ + ": " + errorMessage(errno));
    fd_ = opened_.get();
  } else if (std::filesystem::is_directory(status)) {
    throw HostError("cannot read " + file_ + ": " + errorMessage(EISDIR));
  }
}

const MediaInfo &Source::look(const MediaPrograms &programs) {
  if (info_)
    return *info_;
  if (!isStream())
    return info_.emplace(probe(file_, programs));
  head_.resize(kHeadBytes);
  size_t filled = 0;
  while (filled < head_.size()) {
    awaitDescriptor(fd_, POLLIN);
    const ssize_t n = ::read(fd_, head_.data() + filled, head_.size() - filled);
    if (n > 0)
      filled += static_cast<size_t>(n);
    else if (n == 0 || (errno != EINTR && errno != EAGAIN))
      break;
  }
  head_.resize(filled);
  if (head_.empty())
    throw HostError("cannot read " + name() + ": nothing came");
  return info_.emplace(probeBytes(head_, programs));
}

std::unique_ptr<Process> Source::start(const std::vector<std::string> &arguments) {
  Process::Options options;
  options.output = Process::Stream::Pipe;
  if (isStream()) {
    if (std::exchange(started_, true))
      throw HostError("cannot go back in " + name());
    options.input = Process::Stream::Pipe;
    options.feed = fd_;
    options.feedHead = std::move(head_);
  } else {
    options.patience = kPatience;
  }
  return std::make_unique<Process>(arguments, std::move(options));
}

HostError Source::failure(const Process &process) const {
  return HostError("cannot read " + name() + ": " + reasonOf(process, url()));
}

} // namespace zol::host
