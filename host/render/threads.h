// How a render's work is shared among threads.
#pragma once

#include "host/render/chain.h"
#include "host/render/ordered_work.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zol::host {

/// As many as are asked for, or there are cores for; fewer where memory would not hold what all of them work
/// with: so many pictures each, of so many bytes. At least 1.
size_t threadsFor(std::optional<unsigned> asked, size_t pictures, size_t pictureBytes);

/// Jobs that may be begun before the oldest is through: one for each thread, and two so that none waits for
/// the writer.
constexpr size_t leadOf(size_t threads) { return threads + 2; }

/// The threads of a render, each with a chain of its own over the same inputs.
struct ChainThreads {
  size_t count = 1;
  std::function<std::unique_ptr<Chain>()> chain; ///< makes one
  std::function<void()> unblock;                 ///< as OrderedWork has it
};

/// What threads make of the jobs that `next` yields; `make(chain, job, handOn)` hands on the results of one.
template <class Job, class Result, class Make>
std::unique_ptr<OrderedWork<Job, Result>> share(const ChainThreads &threads,
                                                std::function<std::optional<Job>()> next, Make make) {
  using Work = OrderedWork<Job, Result>;
  const auto worker = [=](const typename Work::Unwanted &unwanted) -> typename Work::Worker {
    const std::shared_ptr<Chain> chain = threads.chain();
    chain->stopWhen(unwanted);
    return [=](const Job &job, const auto &handOn) { make(*chain, job, handOn); };
  };
  return std::make_unique<Work>(typename Work::Plan{.threads = threads.count,
                                                    .lead = leadOf(threads.count),
                                                    .next = std::move(next),
                                                    .worker = worker,
                                                    .unblock = threads.unblock});
}

} // namespace zol::host
