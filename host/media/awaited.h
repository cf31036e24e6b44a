// What a thread waits for, so that another can end the wait.
#pragma once

#include <mutex>

namespace zol::host {

/// One thread at a time waits for something that has a terminate(); any may give up.
template <class T> class Awaited {
public:
  /// Marks what is waited for, as long as the object lives.
  class During {
  public:
    During(Awaited &awaited, T &what) : awaited_(awaited) {
      const std::lock_guard lock(awaited_.mutex_);
      awaited_.what_ = &what;
      if (awaited_.givenUp_)
        what.terminate();
    }
    ~During() {
      const std::lock_guard lock(awaited_.mutex_);
      awaited_.what_ = nullptr;
    }
    During(const During &) = delete;
    During &operator=(const During &) = delete;

  private:
    Awaited &awaited_;
  };

  /// Terminates what is waited for, and from now on all that would be.
  void giveUp() {
    const std::lock_guard lock(mutex_);
    givenUp_ = true;
    if (what_ != nullptr)
      what_->terminate();
  }

private:
  std::mutex mutex_;
  T *what_ = nullptr;
  bool givenUp_ = false;
};

} // namespace zol::host
