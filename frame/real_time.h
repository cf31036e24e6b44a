// The border: the buffers of real-time renders as pictures of the frame.
#pragma once

#include "frame/host.h"

#include <climits>

namespace zol {

/// Whether the buffers can be taken as pictures.
inline bool buffersArePictures(const t_ZoHostInfo *host) {
  const auto fits = [](int size) { return size >= 0 && size <= SHRT_MAX; };
  return host->BitsPerPixel == 32 && fits(host->Width) && fits(host->Height);
}

/// The same, after a message where pixels are not of 32 bits.
inline bool requirePictureBuffers(t_ZoHostInfo *host) {
  if (host->BitsPerPixel != 32)
    showMessage(host, "Unsupported pixel size");
  return buffersArePictures(host);
}

inline pic pictureOf(const t_ZoHostInfo *host, void *buffer) {
  return {0, 0, static_cast<int16_t>(host->Width), static_cast<int16_t>(host->Height),
          static_cast<_color_t *>(buffer)};
}

/// The buffers of an effect that lays one input over another, the background being handed over first or last.
struct LayingBuffers {
  LayingBuffers(const t_ZoHostInfo *host, bool backgroundFirst)
      : out(pictureOf(host, host->OutputBuffer)),
        background(pictureOf(host, host->InputBuffers[backgroundFirst ? 0 : 1])),
        upper(pictureOf(host, host->InputBuffers[backgroundFirst ? 1 : 0])) {}

  pic out, background, upper;
};

} // namespace zol
