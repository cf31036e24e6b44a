#include "host/render/threads.h"

#include <algorithm>
#include <cstdint>
#include <thread>
#include <unistd.h>

namespace zol::host {
namespace {

/// Bytes that pictures may take: half of the machine's, and of what a process can name.
uint64_t roomForPictures() {
  const auto pages = static_cast<uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 1L));
  const uint64_t half = pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)) / 2;
  return std::min<uint64_t>(half, SIZE_MAX / 2);
}

} // namespace

size_t threadsFor(std::optional<unsigned> asked, size_t pictures, size_t pictureBytes) {
  const size_t wanted = asked ? *asked : std::thread::hardware_concurrency();
  const uint64_t each = std::max<uint64_t>(uint64_t{pictures} * pictureBytes, 1);
  return static_cast<size_t>(std::clamp<uint64_t>(roomForPictures() / each, 1, std::max<size_t>(wanted, 1)));
}

} // namespace zol::host
