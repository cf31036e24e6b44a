#include "host/media/process.h"

#include "host/media/interrupt.h"
#include "host/media/pipe_size.h"
#include "host/model/text.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace zol::host {
namespace {

constexpr size_t kErrorTail = 4096; // bytes of the child's standard error that are kept
constexpr size_t kFeedBytes = 64 * 1024;
constexpr int kFirstFreeFd = 10; // above the descriptors that the child's streams are moved to

/// Keeps SIGPIPE from this thread while it lives, and takes back the one that a write has raised.
class NoSigpipe {
public:
  NoSigpipe() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~NoSigpipe() {
    const int saved = errno;
    const timespec now{};
    if (!wasPending_)
      while (sigtimedwait(&pipe_, nullptr, &now) < 0 && errno == EINTR) {
      }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = saved;
  }
  NoSigpipe(const NoSigpipe &) = delete;
  NoSigpipe &operator=(const NoSigpipe &) = delete;

private:
  sigset_t pipe_{}, before_{};
  bool wasPending_ = false;
};

ssize_t writeSome(int fd, const void *data, size_t size) {
  const NoSigpipe guard;
  ssize_t n;
  do
    n = ::write(fd, data, size);
  while (n < 0 && errno == EINTR && !interrupted());
  return n;
}

ssize_t readSome(int fd, void *data, size_t size) {
  ssize_t n;
  do
    n = ::read(fd, data, size);
  while (n < 0 && errno == EINTR && !interrupted());
  return n;
}

[[noreturn]] void failWith(const std::string &what, int error) {
  throw HostError(what + ": " + errorMessage(error));
}

struct Pipe {
  Descriptor readEnd, writeEnd;

  Pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
      failWith("cannot make a pipe", errno);
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
    for (Descriptor *end : {&readEnd, &writeEnd})
      if (end->get() < kFirstFreeFd) {
        const int moved = fcntl(end->get(), F_DUPFD_CLOEXEC, kFirstFreeFd);
        if (moved < 0)
          failWith("cannot make a pipe", errno);
        *end = Descriptor(moved);
      }
    enlargePipe(writeEnd.get());
  }
};

void setNonBlocking(const Descriptor &end) { fcntl(end.get(), F_SETFL, O_NONBLOCK); }

/// The attributes and file actions of one spawn.
struct SpawnSetup {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;

  SpawnSetup() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    sigset_t set;
    sigemptyset(&set);
    posix_spawnattr_setsigmask(&attributes, &set);
    sigaddset(&set, SIGPIPE);
    posix_spawnattr_setsigdefault(&attributes, &set);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~SpawnSetup() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSetup(const SpawnSetup &) = delete;
  SpawnSetup &operator=(const SpawnSetup &) = delete;
};

/// Whether the child has ended; it stays to be reaped. Waits for that without WNOHANG, up to the next signal.
bool hasEnded(pid_t pid, int flags) {
  siginfo_t info{};
  return waitid(P_PID, static_cast<id_t>(pid), &info, WEXITED | WNOWAIT | flags) == 0 && info.si_pid == pid;
}

constexpr const char *kLineBreaks = "\r\n";

/// Without control characters and the blanks around it.
std::string plainLine(std::string line) {
  for (char &c : line)
    if (static_cast<unsigned char>(c) < ' ' || c == 0x7f)
      c = ' ';
  return std::string(trimmed(line));
}

int exitStatus(int status) { return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status); }

} // namespace

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept {
  if (this != &other) {
    reset();
    fd_ = other.release();
  }
  return *this;
}

int Descriptor::release() { return std::exchange(fd_, -1); }

void Descriptor::reset() {
  if (fd_ >= 0)
    close(fd_);
  fd_ = -1;
}

Process::Process(const std::vector<std::string> &arguments, Options options)
    : name_(arguments.at(0)), options_(std::move(options)),
      feeds_(options_.feed >= 0 || !options_.feedHead.empty()) {
  SpawnSetup setup;
  Pipe errors;
  posix_spawn_file_actions_adddup2(&setup.actions, errors.writeEnd.get(), 2);
  Descriptor childInput, childOutput, childSecond;
  if (options_.input == Stream::Pipe) {
    Pipe pipe;
    childInput = std::move(pipe.readEnd);
    input_ = std::move(pipe.writeEnd);
    setNonBlocking(input_);
    posix_spawn_file_actions_adddup2(&setup.actions, childInput.get(), 0);
  } else if (options_.input == Stream::None) {
    posix_spawn_file_actions_addopen(&setup.actions, 0, "/dev/null", O_RDONLY, 0);
  }
  if (options_.output == Stream::Pipe) {
    Pipe pipe;
    output_ = std::move(pipe.readEnd);
    childOutput = std::move(pipe.writeEnd);
    setNonBlocking(output_);
    posix_spawn_file_actions_adddup2(&setup.actions, childOutput.get(), 1);
  } else if (options_.output == Stream::None) {
    posix_spawn_file_actions_addopen(&setup.actions, 1, "/dev/null", O_WRONLY, 0);
  }
  if (options_.secondInput) {
    Pipe pipe;
    childSecond = std::move(pipe.readEnd);
    second_ = std::move(pipe.writeEnd);
    setNonBlocking(second_);
    posix_spawn_file_actions_adddup2(&setup.actions, childSecond.get(), 3);
  }
  errors_ = std::move(errors.readEnd);
  setNonBlocking(errors_);

  std::vector<char *> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string &argument : arguments)
    argv.push_back(const_cast<char *>(argument.c_str()));
  argv.push_back(nullptr);
  const int error = posix_spawnp(&pid_, argv[0], &setup.actions, &setup.attributes, argv.data(), environ);
  if (error != 0) {
    pid_ = -1;
    failWith("cannot run " + name_, error);
  }
}

Process::~Process() { kill(); }

void Process::kill() {
  input_.reset();
  second_.reset();
  output_.reset();
  if (pid_ <= 0)
    return;
  terminate();
  while (!hasEnded(pid_, 0)) {
  }
  reap();
  drainErrors();
}

void Process::terminate() {
  const std::lock_guard lock(reaping_);
  if (pid_ > 0)
    ::kill(pid_, SIGKILL);
}

/// Of a child that has ended.
void Process::reap() {
  const std::lock_guard lock(reaping_);
  while (waitpid(pid_, &status_, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
}

void Process::drainErrors() {
  char buffer[4096];
  while (errors_) {
    const ssize_t n = readSome(errors_.get(), buffer, sizeof buffer);
    if (n < 0 && errno == EAGAIN)
      return;
    if (n <= 0) {
      errors_.reset();
      return;
    }
    errorBytes_ += static_cast<size_t>(n);
    errorText_.append(buffer, static_cast<size_t>(n));
    if (errorText_.size() > 2 * kErrorTail)
      errorText_.erase(0, errorText_.size() - kErrorTail);
  }
}

/// Moves what can be moved without waiting from the fed descriptor to the child.
void Process::feedChild(bool readable) {
  std::vector<uint8_t> &buffer = options_.feedHead;
  if (feedStart_ == buffer.size()) {
    if (!readable)
      return;
    buffer.resize(kFeedBytes);
    const ssize_t n = readSome(options_.feed, buffer.data(), buffer.size());
    if (n < 0 && errno == EAGAIN) {
      buffer.clear();
      feedStart_ = 0;
      return;
    }
    buffer.resize(n > 0 ? static_cast<size_t>(n) : 0);
    feedStart_ = 0;
    if (buffer.empty()) {
      input_.reset();
      return;
    }
  }
  const ssize_t n = writeSome(input_.get(), buffer.data() + feedStart_, buffer.size() - feedStart_);
  if (n > 0)
    feedStart_ += static_cast<size_t>(n);
  if ((n < 0 && errno != EAGAIN) || (options_.feed < 0 && feedStart_ == buffer.size()))
    input_.reset();
}

/// Waits until one of the wanted streams can go on; what goes on the side is done on the way. False when
/// `timeout` milliseconds (-1: none) passed without any event. Throws Interrupted.
bool Process::pollOnce(int wanted, int timeout) {
  pollfd polled[6];
  nfds_t count = 0;
  const auto add = [&](int fd, short events) {
    polled[count] = {fd, events, 0};
    return count++;
  };
  constexpr nfds_t kNotPolled = std::size(polled);
  nfds_t errorsAt = kNotPolled, secondAt = kNotPolled, feedAt = kNotPolled, feedInputAt = kNotPolled;
  if (errors_)
    errorsAt = add(errors_.get(), POLLIN);
  if ((wanted & kRead) != 0)
    add(output_.get(), POLLIN);
  if ((wanted & kWrite) != 0)
    add(input_.get(), POLLOUT);
  if (second_ && queued() > 0)
    secondAt = add(second_.get(), POLLOUT);
  if (feeding()) {
    if (feedStart_ < options_.feedHead.size())
      feedInputAt = add(input_.get(), POLLOUT);
    else
      feedAt = add(options_.feed, POLLIN);
  }
  add(interruptionDescriptor(), POLLIN);
  const int ready = poll(polled, count, timeout);
  stopIfInterrupted();
  if (ready < 0)
    return errno == EINTR || errno == EAGAIN ? true : (failWith("cannot wait for " + name_, errno), false);
  if (ready == 0)
    return false;
  if (errorsAt != kNotPolled && polled[errorsAt].revents != 0)
    drainErrors();
  if (secondAt != kNotPolled && polled[secondAt].revents != 0)
    sendSecond();
  if (feedInputAt != kNotPolled && polled[feedInputAt].revents != 0)
    feedChild(false);
  if (feedAt != kNotPolled && polled[feedAt].revents != 0)
    feedChild(true);
  return true;
}

/// Waits as above, but no longer than the patience.
void Process::await(int wanted) {
  const int timeout = options_.patience > 0 ? static_cast<int>(options_.patience * 1000) : -1;
  if (!pollOnce(wanted, timeout)) {
    kill();
    throw HostError(name_ + " did nothing for " + numberText(options_.patience) + " seconds");
  }
}

size_t Process::read(void *data, size_t size) {
  auto *bytes = static_cast<uint8_t *>(data);
  size_t done = 0;
  while (done < size && output_) {
    const ssize_t n = readSome(output_.get(), bytes + done, size - done);
    if (n > 0)
      done += static_cast<size_t>(n);
    else if (n < 0 && errno == EAGAIN)
      await(kRead);
    else
      output_.reset();
  }
  return done;
}

std::string Process::readAll() {
  constexpr size_t kBlock = 65536;
  std::string all;
  for (size_t got = kBlock; got == kBlock;) {
    const size_t before = all.size();
    all.resize(before + kBlock);
    got = read(all.data() + before, kBlock);
    all.resize(before + got);
  }
  return all;
}

bool Process::write(const void *data, size_t size) {
  const auto *bytes = static_cast<const uint8_t *>(data);
  while (size > 0 && input_) {
    const ssize_t n = writeSome(input_.get(), bytes, size);
    if (n > 0) {
      bytes += n;
      size -= static_cast<size_t>(n);
    } else if (n < 0 && errno == EAGAIN) {
      await(kWrite);
    } else {
      input_.reset();
    }
  }
  return size == 0;
}

bool Process::queueSecond(const void *data, size_t size) {
  if (!second_)
    return false;
  const auto *bytes = static_cast<const uint8_t *>(data);
  if (queueStart_ > 0 && queueStart_ >= queue_.size() / 2) {
    queue_.erase(queue_.begin(), queue_.begin() + static_cast<ptrdiff_t>(queueStart_));
    queueStart_ = 0;
  }
  queue_.insert(queue_.end(), bytes, bytes + size);
  return sendSecond();
}

bool Process::sendSecond() {
  while (second_ && queued() > 0) {
    const ssize_t n = writeSome(second_.get(), queue_.data() + queueStart_, queued());
    if (n > 0)
      queueStart_ += static_cast<size_t>(n);
    else if (n < 0 && errno == EAGAIN)
      return true;
    else
      second_.reset();
  }
  if (queued() == 0 && closeSecond_)
    second_.reset();
  return queued() == 0;
}

void Process::endSecond() {
  closeSecond_ = true;
  sendSecond();
}

int Process::wait() {
  constexpr int kGlance = 50; // milliseconds; in case somebody else holds the child's standard error open
  if (!feeding())
    input_.reset();
  endSecond();
  while (pid_ > 0) {
    const bool busy = errors_ || second_ || feeding();
    if (busy)
      pollOnce(0, kGlance);
    else
      stopIfInterrupted();
    if (hasEnded(pid_, busy ? WNOHANG : 0)) // not under the lock, so that terminate() can bring it about
      reap();
  }
  drainErrors();
  return exitStatus(status_);
}

size_t Process::errorBytes() {
  drainErrors();
  return errorBytes_;
}

size_t Process::waiting() const {
  int bytes = 0;
  return output_ && ioctl(output_.get(), FIONREAD, &bytes) == 0 ? static_cast<size_t>(bytes) : 0;
}

std::string Process::lastLine(bool (*tells)(std::string_view line)) const {
  for (size_t end = errorText_.size(); end > 0;) {
    const size_t before = errorText_.find_last_of(kLineBreaks, end - 1);
    const size_t begin = before == std::string::npos ? 0 : before + 1;
    std::string line = plainLine(errorText_.substr(begin, end - begin));
    if (!line.empty() && (tells == nullptr || tells(line)))
      return line;
    end = begin == 0 ? 0 : begin - 1;
  }
  return {};
}

std::string Process::lineFrom(size_t byte) const {
  const size_t dropped = errorBytes_ - errorText_.size(), begin = std::max(byte, dropped) - dropped;
  return plainLine(errorText_.substr(begin, errorText_.find_first_of(kLineBreaks, begin) - begin));
}

Descriptor nonBlockingOutput() {
  struct stat status {};
  if (fstat(STDOUT_FILENO, &status) == 0 && S_ISFIFO(status.st_mode))
    if (const int anew = open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_CLOEXEC); anew >= 0)
      return Descriptor(anew);
  return Descriptor(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
}

int writeFully(int fd, const void *data, size_t size) {
  const auto *bytes = static_cast<const uint8_t *>(data);
  while (size > 0) {
    awaitDescriptor(fd, POLLOUT);
    const ssize_t n = writeSome(fd, bytes, size);
    if (n > 0) {
      bytes += n;
      size -= static_cast<size_t>(n);
    } else if (n == 0 || errno != EAGAIN) {
      return n < 0 ? errno : EIO;
    }
  }
  return 0;
}

std::string errorMessage(int error) { return std::generic_category().message(error); }

namespace {

std::string octal(unsigned char code) {
  return {static_cast<char>('0' + code / 64), static_cast<char>('0' + code / 8 % 8),
          static_cast<char>('0' + code % 8)};
}

} // namespace

std::string shellQuoted(const std::vector<std::string> &arguments) {
  constexpr const char *kPlain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=./:,@%";
  std::string line;
  for (const std::string &argument : arguments) {
    if (!line.empty())
      line += ' ';
    if (!argument.empty() && argument.find_first_not_of(kPlain) == std::string::npos) {
      line += argument;
      continue;
    }
    line += '\'';
    for (const char c : argument)
      if (c == '\'')
        line += "'\\''";
      else if (const auto code = static_cast<unsigned char>(c); c != '\n' && (code < ' ' || code == 0x7F))
        line += "'\"$(printf '\\" + octal(code) + "')\"'"; // which a terminal would obey
      else
        line += c;
    line += '\'';
  }
  return line;
}

} // namespace zol::host
