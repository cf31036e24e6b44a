#include "host/media/interrupt.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace zol::host {
namespace {

std::atomic<int> asked = 0; // the signal
static_assert(std::atomic<int>::is_always_lock_free);
int event = -1;

void onSignal(int signal) {
  const int saved = errno;
  int none = 0;
  asked.compare_exchange_strong(none, signal);
  (void)!eventfd_write(event, 1);
  errno = saved;
}

} // namespace

void heedInterruptions() {
  event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
      continue;
    action = {};
    action.sa_handler = onSignal; // without SA_RESTART: calls that block return
    sigaction(signal, &action, nullptr);
  }
}

bool interrupted() { return asked != 0; }

int interruption() { return asked; }

void stopIfInterrupted() {
  if (interrupted())
    throw Interrupted();
}

void awaitDescriptor(int fd, short events) {
  pollfd polled[] = {{fd, events, 0}, {event, POLLIN, 0}}; // poll() passes over -1
  while (polled[0].revents == 0) {
    stopIfInterrupted();
    if (poll(polled, 2, -1) < 0 && errno != EINTR && errno != EAGAIN)
      return;
  }
}

int interruptionDescriptor() { return event; }

} // namespace zol::host
