#include "host/media/source.h"

#include "host/media/extent.h"
#include "host/media/format.h"
#include "host/media/interrupt.h"
#include "host/media/picture_header.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <poll.h>
#include <sstream>
#include <unistd.h>
#include <utility>

namespace zol::host {
namespace {

constexpr size_t kHeadBytes = size_t{4} << 20; // enough to tell a format, its streams and their rates
constexpr double kPatience = 120;              // seconds without a byte from a file

} // namespace

Source::Source(std::string file, SourceOptions options) : file_(std::move(file)), options_(options) {
  if (!options_.playlists)
    address_.options = {"-protocol_whitelist", "file,pipe"};
  if (file_ == "-") {
    fd_ = STDIN_FILENO;
    address_.url = "pipe:0";
  } else {
    findFile();
  }
}

void Source::findFile() {
  address_.url = fileUrl(file_);
  const auto add = [&](std::initializer_list<std::string> words) {
    address_.options.insert(address_.options.end(), words);
  };
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(file_, error);
  if (std::filesystem::is_fifo(status) || std::filesystem::is_socket(status)) {
    // Opening would wait for a writer, in any thread, and heed no signal: waiting for its first bytes does.
    opened_ = Descriptor(open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened_)
      throw HostError("cannot read " + file_ + ": " + errorMessage(errno));
    awaitDescriptor(opened_.get(), POLLIN);
    fcntl(opened_.get(), F_SETFL, fcntl(opened_.get(), F_GETFL) & ~O_NONBLOCK);
    fd_ = opened_.get();
    address_.url = "pipe:0";
  } else if (std::filesystem::is_directory(status)) {
    throw HostError("cannot read " + file_ + ": " + errorMessage(EISDIR));
  } else if (std::filesystem::exists(status)) {
    // By their names ffmpeg takes pictures for sequences of them.
    if (kindOf(file_) == FileKind::still && file_.find_first_of("%*?[]{}") != std::string::npos)
      add({"-f", "image2", "-pattern_type", "none"});
  } else if ((sequence_ = sequenceNamed(file_))) {
    address_.url = fileUrl(sequence_->pattern);
    add({"-f", "image2", "-pattern_type", "sequence", "-framerate", options_.sequenceRate.text(),
         "-start_number", std::to_string(sequence_->first)});
  }
}

std::vector<std::string> Source::arguments() const {
  std::vector<std::string> words = address_.options;
  words.insert(words.end(), {"-i", address_.url});
  return words;
}

void Source::readHead() {
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
}

const MediaInfo &Source::look(const MediaPrograms &programs) {
  if (!info_) {
    if (isStream())
      readHead();
    info_ = lookInto(programs);
  }
  return *info_;
}

MediaInfo Source::lookInto(const MediaPrograms &programs) const {
  PictureHeader header;
  if (isStream()) {
    std::istringstream bytes(std::string(head_.begin(), head_.end()));
    header = readPictureHeader(bytes);
  } else {
    std::ifstream file(sequence_ ? sequence_->file(sequence_->first) : file_, std::ios::binary);
    header = readPictureHeader(file);
  }
  // By another name it may be the first of many pictures in one file.
  const bool told = header.decoded && !isStream() && !sequence_ && kindOf(file_) == FileKind::still &&
                    isPictureSize(header.decoded->width, header.decoded->height);
  MediaInfo info =
      told ? infoOf(*header.decoded) : probe(address_, name(), isStream() ? &head_ : nullptr, programs);
  if (!options_.playlists && namesOtherFiles(info.format))
    throw HostError("cannot read " + name() + ": a playlist or the like (" + info.format +
                    "), which names other files; --playlists allows it");
  if (sequence_) {
    info.still = sequence_->count == 1;
    info.frameRate = info.still ? Rational() : options_.sequenceRate;
    info.duration = info.still ? 0 : timeOf(static_cast<uint64_t>(sequence_->count), info.frameRate);
    info.guessed = false;
  }
  if (info.still || sequence_) {
    info.otherColors = header.otherColors;
    info.orientation = header.orientation;
    if (header.orientation >= 5) {
      std::swap(info.width, info.height);
      info.pixelAspect = 1 / info.pixelAspect;
    }
  }
  if (isStream()) {
    info.duration = info.soundDuration = 0;
    info.seekable = !isTransport(info.format);
  } else if (info.guessed) {
    if (const auto extent = measure(address_, info, programs)) {
      info.guessed = false;
      info.duration = extent->end;
      info.seekable = info.seekable && !extent->jumps;
      info.soundDuration = extent->end;
      info.soundGuessed = info.hasVideo;
    }
  }
  return info;
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
  return HostError("cannot read " + name() + ": " + reasonOf(process, address_.url));
}

MediaInfo probe(const std::string &file, const MediaPrograms &programs) {
  return Source(file).look(programs);
}

} // namespace zol::host
