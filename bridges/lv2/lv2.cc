// Sound effects as LV2 plug-ins. Ports: the channels of the inputs, the two outputs, the controls.

#include "bridges/lv2/uri.h"
#include "bridges/sound/ports.h"

#include <lv2/core/lv2.h>

#include <deque>

namespace {

using namespace zol::bridge;

struct Described {
  const SoundPlugin *plugin;
  std::string uri;
  LV2_Descriptor descriptor;
};

const std::deque<Described> &allDescribed();

LV2_Handle instantiate(const LV2_Descriptor *descriptor, double rate, const char *,
                       const LV2_Feature *const *) {
  try {
    for (const Described &known : allDescribed())
      if (&known.descriptor == descriptor)
        return new Ports(*known.plugin, rate);
  } catch (...) { // as below
  }
  return nullptr;
}

void connectPort(LV2_Handle handle, uint32_t port, void *data) {
  static_cast<Ports *>(handle)->connect(port, static_cast<float *>(data));
}

void activate(LV2_Handle handle) { static_cast<Ports *>(handle)->start(); }

void run(LV2_Handle handle, uint32_t frames) { static_cast<Ports *>(handle)->run(frames); }

void cleanup(LV2_Handle handle) { delete static_cast<Ports *>(handle); }

const std::deque<Described> &allDescribed() {
  static const auto &all = *[] {
    auto *made = new std::deque<Described>;
    for (const SoundPlugin &plugin : soundPlugins()) {
      Described &one = made->emplace_back(Described{&plugin, uriOf(plugin), {}});
      one.descriptor = {one.uri.c_str(), instantiate, connectPort, activate, run, nullptr, cleanup, nullptr};
    }
    return made;
  }();
  return all;
}

} // namespace

LV2_SYMBOL_EXPORT const LV2_Descriptor *lv2_descriptor(uint32_t index) {
  try {
    return index < allDescribed().size() ? &allDescribed()[index].descriptor : nullptr;
  } catch (...) {
    return nullptr;
  }
}
