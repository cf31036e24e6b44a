#include "apps/studio/connection.h"

#include "apps/studio/limits.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace zol::studio {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kIdle = 5s;          // between two requests
constexpr auto kSilence = 5s;       // within one
constexpr auto kPatience = 10s;     // for a request or an answer, and longer for large ones:
constexpr uint64_t kSlowest = 1000; // bytes a millisecond
constexpr size_t kRequestsAConnection = 10000;

/// A thread a connection, so that no slow one holds up others; beyond a number the next are not accepted yet.
class Connections : public httplib::TaskQueue {
public:
  void enqueue(std::function<void()> serve) override {
    std::unique_lock lock(shared_->mutex);
    shared_->changed.wait(lock, [&] { return shared_->open < kMostConnections; });
    ++shared_->open;
    std::thread([shared = shared_, serve = std::move(serve)] {
      serve();
      const std::lock_guard done(shared->mutex);
      --shared->open;
      shared->changed.notify_all();
    }).detach();
  }

  void shutdown() override {
    std::unique_lock lock(shared_->mutex);
    shared_->changed.wait(lock, [&] { return shared_->open == 0; });
  }

private:
  struct Shared { // outlives the last thread's unlocking
    std::mutex mutex;
    std::condition_variable changed;
    int open = 0;
  };
  std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
};

bool await(int socket, short events, std::chrono::milliseconds time) {
  pollfd waiting{socket, events, 0};
  return poll(&waiting, 1, static_cast<int>(time.count())) > 0;
}

/// How long the next bytes of a request or an answer are waited for.
class Pace {
public:
  void passed(size_t bytes) { bytes_ += bytes; }
  [[nodiscard]] std::chrono::milliseconds left() const {
    const auto end = began_ + kPatience + std::chrono::milliseconds(bytes_ / kSlowest);
    return std::clamp<std::chrono::milliseconds>(
        std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()), 0ms, kSilence);
  }

private:
  Clock::time_point began_ = Clock::now();
  uint64_t bytes_ = 0;
};

class PacedStream : public httplib::Stream {
public:
  explicit PacedStream(int socket) : socket_(socket) {}

  /// Whether another request begins; not any more where `goesOn` says so.
  template <class GoesOn> bool begins(GoesOn goesOn) {
    for (const auto end = Clock::now() + kIdle; begin_ == end_ && !await(socket_, POLLIN, 50ms);)
      if (!goesOn() || Clock::now() > end)
        return false;
    request_ = {};
    answering_ = false;
    return !ended_;
  }

  [[nodiscard]] bool is_readable() const override {
    return begin_ < end_ || await(socket_, POLLIN, request_.left());
  }
  [[nodiscard]] bool is_writable() const override { return await(socket_, POLLOUT, answer_.left()); }

  ssize_t read(char *bytes, size_t size) override {
    if (begin_ == end_) {
      const ssize_t got = is_readable() ? recv(socket_, buffer_.data(), buffer_.size(), 0) : -1;
      if (got <= 0) {
        ended_ = true;
        return got;
      }
      request_.passed(static_cast<size_t>(got));
      begin_ = 0;
      end_ = static_cast<size_t>(got);
    }
    const size_t count = std::min(size, end_ - begin_);
    std::copy_n(buffer_.data() + begin_, count, bytes);
    begin_ += count;
    return static_cast<ssize_t>(count);
  }

  ssize_t write(const char *bytes, size_t size) override {
    if (!std::exchange(answering_, true))
      answer_ = {}; // rendering is not the client's time
    if (!is_writable())
      return -1;
    const ssize_t sent = send(socket_, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent > 0)
      answer_.passed(static_cast<size_t>(sent));
    return sent < 0 && (errno == EAGAIN || errno == EINTR) ? 0 : sent;
  }

  void get_remote_ip_and_port(std::string &, int &) const override {} // always this machine
  void get_local_ip_and_port(std::string &, int &) const override {}
  [[nodiscard]] socket_t socket() const override { return socket_; }

private:
  int socket_;
  Pace request_, answer_;
  bool answering_ = false, ended_ = false;
  std::array<char, 1 << 16> buffer_;
  size_t begin_ = 0, end_ = 0; ///< what of it is not read yet
};

} // namespace

PatientServer::PatientServer() {
  new_task_queue = [] { return new Connections; };
  set_keep_alive_max_count(kRequestsAConnection);
  set_keep_alive_timeout(std::chrono::seconds(kIdle).count()); // what clients are told
  set_tcp_nodelay(true);
}

std::optional<int> PatientServer::bind(std::optional<int> port) {
  constexpr char kHere[] = "127.0.0.1";
  if (port ? !bind_to_port(kHere, *port) : !(port = bind_to_any_port(kHere)) || *port <= 0)
    return std::nullopt;
  ::listen(svr_sock_, SOMAXCONN); // by itself it has five wait, and others try again a second later
  return port;
}

bool PatientServer::process_and_close_socket(socket_t socket) {
  PacedStream stream(socket);
  bool served = true;
  for (size_t left = kRequestsAConnection; served && left > 0; --left) {
    if (!stream.begins([this] { return svr_sock_ != INVALID_SOCKET; }))
      break;
    bool closed = false;
    served = process_request(stream, left == 1, closed, nullptr) && !closed;
  }
  shutdown(socket, SHUT_RDWR);
  close(socket);
  return served;
}

} // namespace zol::studio
