// What both deinterlacers do around their kernels: the same fetching, the same messages.
#pragma once

#include "frame/host.h"

namespace zol {

/// Runs kernel(dst, src, width, height) from the input's frame into a new picture; null after a message where
/// there is no input or no memory.
template <class Kernel> pic *deinterlacedFrame(t_ZoHostInfo *host, int inputField, Kernel kernel) {
  const pic *frame = requiredFrame(host, inputField, "No input");
  if (frame == nullptr)
    return nullptr;
  pic *out = host->Services->PicCreate(frame->Width, frame->Height);
  if (out == nullptr) {
    showMessage(host, "No memory");
    return nullptr;
  }
  kernel(out->Pixels, frame->Pixels, frame->Width, frame->Height);
  return out;
}

/// The same from buffer to buffer; 1, or 0 after a message where the pixels are not of 32 bits.
template <class Kernel> int deinterlacedBuffer(t_ZoHostInfo *host, Kernel kernel) {
  if (host->BitsPerPixel != 32) {
    showMessage(host, "Unsupported pixel size");
    return 0;
  }
  kernel(static_cast<_color_t *>(host->OutputBuffer), static_cast<_color_t *>(host->InputBuffers[0]),
         host->Width, host->Height);
  return 1;
}

} // namespace zol
