// Pictures and blocks of sound: those that effects create, and those that inputs hand out.

#include "host/services/calls.h"
#include "host/services/resample.h"

#include <cmath>

namespace zol::host::service {
namespace {

Session &session() { return Session::current(); }

/// Nothing that an input throws may pass through the library: it is kept for later.
template <class Fetch> auto ask(Fetch fetch) -> decltype(fetch()) {
  Session &asking = session();
  try {
    return fetch();
  } catch (...) {
    asking.inputError = std::current_exception();
    return nullptr;
  }
}

} // namespace

pic *PicCreate(int width, int height) {
  return enter(Service::PicCreate, width, height) ? nullptr : session().pictures.create(width, height);
}

void PicFree(pic *picture) {
  enter(Service::PicFree);
  if (!session().pictures.free(picture))
    session().complaints.emplace_back("PicFree of a picture that is not live");
}

pic *PicDuplicate(pic *source) {
  return enter(Service::PicDuplicate) ? nullptr : session().pictures.duplicate(source);
}

pic *PicGetSized(t_ZoHostInfo *host, void *input, double time) {
  if (enter(Service::PicGetSized, time) || input == nullptr)
    return nullptr;
  return ask([&] { return static_cast<Clip *>(input)->frame(time, host->Width, host->Height); });
}

int PicResample(t_ZoHostInfo *, const _color_t *src, int srcStep, int srcWidth, int srcHeight, _color_t *dst,
                int dstStep, int dstWidth, int dstHeight, int mode) {
  if (enter(Service::PicResample, srcStep, srcWidth, srcHeight, dstStep, dstWidth, dstHeight, mode))
    return 0;
  resample({src, srcStep, srcWidth, srcHeight}, dst, dstStep, dstWidth, dstHeight);
  return 1;
}

t_ZoAudio *AudioCreate(double from, double to, unsigned rate, unsigned channels) {
  if (enter(Service::AudioCreate, from, to, rate, channels))
    return nullptr;
  return session().audio.create(std::floor((to - from) * rate + 0.5), rate, channels);
}

t_ZoAudio *InputGetAudio(t_ZoHostInfo *, void *input, double from, double to) {
  if (enter(Service::InputGetAudio, from, to) || input == nullptr)
    return nullptr;
  return ask([&] { return static_cast<Clip *>(input)->audio(from, to); });
}

} // namespace zol::host::service
