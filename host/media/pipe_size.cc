#include "host/media/pipe_size.h"

#include <fcntl.h>

namespace zol::host {

void enlargePipe(int descriptor) {
  constexpr int kWanted = 1 << 20, kUsual = 1 << 16;
  for (int size = kWanted; size > kUsual && fcntl(descriptor, F_SETPIPE_SZ, size) < 0; size /= 2) {
  }
}

} // namespace zol::host
