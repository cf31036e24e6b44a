// Work that threads share, while what comes of it keeps its order.
#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace zol::host {

/// Jobs, done in several threads at once; their results are handed over in the order of the jobs. Threads
/// start one after another, as there are jobs for them.
template <class Job, class Result> class OrderedWork {
public:
  /// Does a job and hands on what comes of it, from nothing to many.
  using Worker = std::function<void(const Job &, const std::function<void(Result)> &handOn)>;
  /// Whether the job at hand is of no use any more.
  using Unwanted = std::function<bool()>;

  struct Plan {
    size_t threads;
    size_t lead; ///< of jobs begun before those that were taken whole, at most; at least 1
    /// The next job; none at the end. Threads call it in turn.
    std::function<std::optional<Job>()> next;
    /// Makes what does a thread's jobs, in that thread, where it also goes.
    std::function<Worker(const Unwanted &)> worker;
    /// Ends calls of the others that wait for long; called when nothing more is wanted.
    std::function<void()> unblock;
  };

  explicit OrderedWork(Plan plan) : plan_(std::move(plan)) { threads_.reserve(plan_.threads); }
  /// Jobs that are under way are given up.
  ~OrderedWork() {
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
      wanted_ = 0;
      changed_.notify_all();
    }
    if (plan_.unblock)
      plan_.unblock();
    for (std::thread &thread : threads_)
      thread.join();
  }
  OrderedWork(const OrderedWork &) = delete;
  OrderedWork &operator=(const OrderedWork &) = delete;

  /// The next result; none at the end. Throws in the place of a job what it threw: the first in order,
  /// whichever came first.
  std::optional<Result> take() {
    std::unique_lock lock(mutex_);
    if (threads_.empty())
      threads_.emplace_back([this] { run(); });
    for (;;) {
      changed_.wait(lock, [&] {
        return places_.empty() ? ended_ : places_.front().done || !places_.front().results.empty();
      });
      if (places_.empty()) {
        if (broken_)
          std::rethrow_exception(broken_);
        return std::nullopt;
      }
      Place &first = places_.front();
      if (!first.results.empty()) {
        std::optional<Result> result(std::move(first.results.front()));
        first.results.pop_front();
        return result;
      }
      if (first.failure)
        std::rethrow_exception(first.failure);
      places_.pop_front();
      changed_.notify_all();
    }
  }

private:
  struct Place {
    std::deque<Result> results;
    bool done = false;
    std::exception_ptr failure;
  };
  struct Begun {
    Job job;
    size_t number;
    Place *place; // stands still: places come and go at the ends of the deque
  };

  /// Waits for room and takes the next job; none where there is no more for anybody.
  std::optional<Begun> begin() {
    const std::lock_guard turn(turns_);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return ended_ || places_.size() < plan_.lead; });
    if (ended_)
      return std::nullopt;
    lock.unlock();
    std::optional<Job> job;
    std::exception_ptr failure;
    try {
      job = plan_.next();
    } catch (...) {
      failure = std::current_exception();
    }
    lock.lock();
    if (ended_)
      return std::nullopt;
    if (job || failure)
      places_.push_back({{}, !job, failure});
    if (!job) {
      ended_ = true;
      changed_.notify_all();
      return std::nullopt;
    }
    startAnother();
    return Begun{std::move(*job), begun_++, &places_.back()};
  }

  /// Those that the system refuses are done without.
  void startAnother() {
    if (threads_.size() < plan_.threads)
      try {
        threads_.emplace_back([this] { run(); });
      } catch (const std::exception &) {
        plan_.threads = threads_.size();
      }
  }

  void run() {
    try {
      work();
    } catch (...) { // between jobs
      const std::lock_guard lock(mutex_);
      ended_ = true;
      broken_ = std::current_exception();
      changed_.notify_all();
    }
  }

  void work() {
    size_t number = 0;
    const Unwanted unwanted = [&] { return number >= wanted_; };
    Worker worker;
    while (std::optional<Begun> begun = begin()) {
      number = begun->number;
      std::exception_ptr failure;
      try {
        if (!worker)
          worker = plan_.worker(unwanted);
        worker(begun->job, [&](Result result) {
          const std::lock_guard lock(mutex_);
          begun->place->results.push_back(std::move(result));
          changed_.notify_all();
        });
      } catch (...) {
        failure = std::current_exception();
      }
      const std::lock_guard lock(mutex_);
      begun->place->done = true;
      if (failure) { // what comes before is still of use, for it may fail too
        begun->place->failure = failure;
        wanted_ = std::min<size_t>(wanted_, number + 1);
        ended_ = true;
      }
      changed_.notify_all();
    }
  }

  Plan plan_;
  std::mutex turns_; ///< Held by the thread that takes the next job.
  std::mutex mutex_; ///< Of all below.
  std::condition_variable changed_;
  std::deque<Place> places_; ///< Of jobs begun and not taken whole.
  size_t begun_ = 0;
  bool ended_ = false; ///< No more jobs are begun.
  std::exception_ptr broken_;
  std::atomic<size_t> wanted_ = SIZE_MAX; ///< Jobs from this number on are of no use.
  std::vector<std::thread> threads_;
};

} // namespace zol::host
