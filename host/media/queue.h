// Work that goes on in a thread of its own: reading ahead, writing behind.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace zol::host {

/// Hands values from one thread to another, at most `capacity` of them waiting.
template <class T> class Queue {
public:
  explicit Queue(size_t capacity) : capacity_(std::max<size_t>(capacity, 1)) {}

  /// Waits for room. False when the queue was closed: the value is dropped.
  bool put(T value) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return closed_ || values_.size() < capacity_; });
    if (closed_)
      return false;
    values_.push_back(std::move(value));
    changed_.notify_all();
    return true;
  }

  /// Waits for a value; none at the end. A failure is thrown after the last value before it, as often as
  /// asked.
  std::optional<T> take() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return closed_ || ended_ || !values_.empty(); });
    if (values_.empty()) {
      if (failure_)
        std::rethrow_exception(failure_);
      return std::nullopt;
    }
    std::optional<T> value(std::move(values_.front()));
    values_.pop_front();
    changed_.notify_all();
    return value;
  }

  /// No more values come, with or without a failure.
  void end(std::exception_ptr failure = nullptr) {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    failure_ = std::move(failure);
    changed_.notify_all();
  }

  /// Nobody takes any more: what waits is dropped.
  void close() {
    std::deque<T> dropped;
    const std::lock_guard lock(mutex_);
    closed_ = true;
    dropped.swap(values_);
    changed_.notify_all();
  }

private:
  const size_t capacity_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<T> values_;
  bool ended_ = false, closed_ = false;
  std::exception_ptr failure_;
};

/// Calls `produce` in a thread until it yields nothing or throws, at most `depth` values ahead.
template <class T> class ReadAhead {
public:
  /// `unblock` is called, in the thread of the destructor, to end a call of `produce` that waits for long.
  ReadAhead(size_t depth, std::function<std::optional<T>()> produce, std::function<void()> unblock = {})
      : queue_(depth), unblock_(std::move(unblock)),
        thread_([this, work = std::move(produce)] { run(work); }) {}
  ~ReadAhead() {
    queue_.close();
    if (unblock_)
      unblock_();
    thread_.join();
  }
  ReadAhead(const ReadAhead &) = delete;
  ReadAhead &operator=(const ReadAhead &) = delete;

  /// The next value; none at the end. Throws what `produce` threw in its place.
  std::optional<T> next() { return queue_.take(); }

private:
  void run(const std::function<std::optional<T>()> &produce) {
    try {
      for (std::optional<T> value = produce(); value && queue_.put(std::move(*value)); value = produce()) {
      }
      queue_.end();
    } catch (...) {
      queue_.end(std::current_exception());
    }
  }

  Queue<T> queue_;
  std::function<void()> unblock_;
  std::thread thread_;
};

/// Calls `consume` in a thread for every value put, in order, at most `depth` values behind.
template <class T> class WriteBehind {
public:
  /// `unblock` as above, called only where finish() was not.
  WriteBehind(size_t depth, std::function<void(T)> consume, std::function<void()> unblock = {})
      : queue_(depth), unblock_(std::move(unblock)),
        thread_([this, work = std::move(consume)] { run(work); }) {}
  /// Without finish(), what still waits is dropped.
  ~WriteBehind() {
    if (!thread_.joinable())
      return;
    queue_.close();
    if (unblock_)
      unblock_();
    thread_.join();
  }
  WriteBehind(const WriteBehind &) = delete;
  WriteBehind &operator=(const WriteBehind &) = delete;

  /// Waits for room. Throws what `consume` threw.
  void put(T value) {
    if (!queue_.put(std::move(value)) && failure_)
      std::rethrow_exception(failure_);
  }

  /// Waits until everything is consumed. Throws what `consume` threw. Nothing can be put any more.
  void finish() {
    queue_.end();
    if (thread_.joinable())
      thread_.join();
    if (failure_)
      std::rethrow_exception(failure_);
  }

private:
  void run(const std::function<void(T)> &consume) {
    try {
      while (std::optional<T> value = queue_.take())
        consume(std::move(*value));
    } catch (...) {
      failure_ = std::current_exception(); // seen by put() through the lock of the queue
    }
    queue_.close();
  }

  Queue<T> queue_;
  std::function<void()> unblock_;
  std::exception_ptr failure_;
  std::thread thread_;
};

} // namespace zol::host
