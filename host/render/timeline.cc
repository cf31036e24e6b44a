#include "host/render/timeline.h"

namespace zol::host {

void Timeline::describe(t_ZoHostInfo &info) const {
  info.FrameRate = rate.value();
  info.Width = width;
  info.Height = height;
  info.PixelAspect = pixelAspect;
  info.VideoClipStart = 0;
  info.AudioFormat[0] = sampleRate;
  info.AudioFormat[1] = channels;
  info.ClipStart = 0;
  info.ClipEnd = duration;
}

} // namespace zol::host
