// A child process with pipes to its standard streams.
#pragma once

#include "host/model/error.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace zol::host {

/// A file descriptor that is closed with its owner.
class Descriptor {
public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor &&other) noexcept : fd_(other.release()) {}
  Descriptor &operator=(Descriptor &&other) noexcept;

  explicit operator bool() const { return fd_ >= 0; }
  [[nodiscard]] int get() const { return fd_; }
  int release();
  void reset();

private:
  int fd_ = -1;
};

/// One running program. Its standard error is read on the side by every call that waits, so it never stalls
/// the child; the last line that is not blank is kept. Not for use by several threads at once, terminate()
/// aside. A write to a child that is gone is an error, never a SIGPIPE.
class Process {
public:
  enum class Stream { None, Pipe, Inherit };

  struct Options {
    Stream input = Stream::None;  ///< None: reads as empty.
    Stream output = Stream::None; ///< None: what the child prints is dropped.
    bool secondInput = false;     ///< A second pipe to the child, which it finds as descriptor 3.
    double patience = 0;          ///< Longest silence in seconds before the child is given up; 0: no limit.
    /// With input Pipe: bytes passed on to the child while waiting for it, and then what a descriptor (-1:
    /// none) yields, which stays open.
    std::vector<uint8_t> feedHead;
    int feed = -1;
  };

  /// Starts `arguments[0]`, searched for in PATH, without a shell. Throws HostError when it cannot be run.
  Process(const std::vector<std::string> &arguments, Options options);
  explicit Process(const std::vector<std::string> &arguments) : Process(arguments, Options()) {}
  /// Kills the child if it is still there and reaps it.
  ~Process();
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  /// Reads up to `size` bytes of the child's output, fewer only at its end; the number read.
  size_t read(void *data, size_t size);
  /// Reads all of the child's output.
  std::string readAll();

  /// Writes all of it to the child's input; false when the child no longer reads (ask wait() why). Bytes
  /// queued for the second input go out on the way.
  bool write(const void *data, size_t size);

  /// Queues bytes for the second input and sends what the child takes without waiting; false as above.
  bool queueSecond(const void *data, size_t size);
  /// Closes the second input once the queue is sent.
  void endSecond();
  /// Bytes that wait for the second input.
  [[nodiscard]] size_t queued() const { return queue_.size() - queueStart_; }

  /// Lets the child see the end of its input.
  void closeInput() { input_.reset(); }

  /// Sends what is queued, closes the inputs, and waits for the child; its exit status, 128 + n after signal
  /// n.
  int wait();

  /// Kills and reaps at once.
  void kill();
  /// Kills alone, so that calls that wait come to an end; other threads may be in them.
  void terminate();

  /// The last line on the child's standard error that is not blank, and that `tells` accepts, if given.
  [[nodiscard]] std::string lastLine(bool (*tells)(std::string_view line) = nullptr) const;
  /// The line that begins at this byte of its standard error, or where what is kept of it begins.
  [[nodiscard]] std::string lineFrom(size_t byte) const;
  /// Bytes of its standard error so far.
  [[nodiscard]] size_t errorBytes();
  /// Bytes of its output that have come and wait for read().
  [[nodiscard]] size_t waiting() const;
  /// The end of its standard error as it came.
  [[nodiscard]] const std::string &errorTail() const { return errorText_; }

private:
  enum Wanted { kRead = 1, kWrite = 2 };
  bool pollOnce(int wanted, int timeout);
  void await(int wanted);
  void drainErrors();
  [[nodiscard]] bool feeding() const { return feeds_ && input_; }
  void feedChild(bool readable);
  bool sendSecond();
  void reap();

  std::string name_;
  Options options_;
  std::mutex reaping_; ///< Held where the child's number may become invalid.
  pid_t pid_ = -1;
  int status_ = 0;
  Descriptor input_, output_, errors_, second_;
  std::vector<uint8_t> queue_;
  size_t queueStart_ = 0;
  size_t feedStart_ = 0;
  bool feeds_ = false;
  bool closeSecond_ = false;
  std::string errorText_;
  size_t errorBytes_ = 0;
};

/// Standard output, where it is a pipe opened anew so that writing to it never blocks; whoever shares it sees
/// no difference.
Descriptor nonBlockingOutput();

/// Writes all of it, without a SIGPIPE; 0 or the error number. Throws Interrupted, while the descriptor
/// blocks only where the signal comes to this thread.
int writeFully(int fd, const void *data, size_t size);

/// The system's words for an error number.
std::string errorMessage(int error);

/// The arguments as one line that a POSIX shell reads back as the same arguments.
std::string shellQuoted(const std::vector<std::string> &arguments);

} // namespace zol::host
