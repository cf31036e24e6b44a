// Which host calls, as far as hosts differ in what they hand over.
#pragma once

#include <cstddef>

namespace zol::bridge {

enum class Caller {
  usual,  ///< blue first, rows without padding, times in seconds
  ffmpeg, ///< pads rows to 64 bytes and tells milliseconds
  mlt,    ///< red first: it would turn every picture round by itself; times are right and may jump
};

/// By the file that holds the calling code.
Caller callerAt(const void *returnAddress);

/// From a row to the next, in pixels.
size_t rowStep(Caller caller, size_t width);

} // namespace zol::bridge
