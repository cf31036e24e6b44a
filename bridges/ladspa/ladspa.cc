// Sound effects as LADSPA plug-ins. Ports: the channels of the inputs, the two outputs, the controls.

#include "bridges/sound/ports.h"

#include <ladspa.h>

#include <cmath>
#include <deque>

namespace {

using namespace zol::bridge;

constexpr const char *kSides[] = {"left", "right"};

/// A descriptor with all that it points at.
struct Described {
  const SoundPlugin *plugin;
  std::vector<LADSPA_PortDescriptor> ports;
  std::vector<std::string> names;
  std::vector<const char *> nameTexts;
  std::vector<LADSPA_PortRangeHint> hints;
  LADSPA_Descriptor descriptor{};
};

/// The interface knows a few defaults alone: the nearest of them.
LADSPA_PortRangeHintDescriptor defaultHint(const Control &control) {
  if (control.standard == 0)
    return LADSPA_HINT_DEFAULT_0;
  if (control.standard == 1)
    return LADSPA_HINT_DEFAULT_1;
  const double place =
      control.hertz ? std::log(control.standard / control.least) / std::log(control.most / control.least)
                    : (control.standard - control.least) / (control.most - control.least);
  constexpr LADSPA_PortRangeHintDescriptor kQuarters[] = {
      LADSPA_HINT_DEFAULT_MINIMUM, LADSPA_HINT_DEFAULT_LOW, LADSPA_HINT_DEFAULT_MIDDLE,
      LADSPA_HINT_DEFAULT_HIGH, LADSPA_HINT_DEFAULT_MAXIMUM};
  return kQuarters[std::lround(place * 4)];
}

LADSPA_PortRangeHint hintOf(const Control &control) {
  LADSPA_PortRangeHintDescriptor hint =
      LADSPA_HINT_BOUNDED_BELOW | LADSPA_HINT_BOUNDED_ABOVE | defaultHint(control);
  if (control.kind == Control::Kind::choice)
    hint |= LADSPA_HINT_INTEGER;
  if (control.hertz)
    hint |= LADSPA_HINT_LOGARITHMIC;
  return {hint, static_cast<float>(control.least), static_cast<float>(control.most)};
}

LADSPA_Handle instantiate(const LADSPA_Descriptor *descriptor, unsigned long rate) {
  try {
    return new Ports(*static_cast<const Described *>(descriptor->ImplementationData)->plugin,
                     static_cast<double>(rate));
  } catch (...) {
    return nullptr;
  }
}

void connectPort(LADSPA_Handle handle, unsigned long port, LADSPA_Data *data) {
  static_cast<Ports *>(handle)->connect(port, data);
}

void activate(LADSPA_Handle handle) { static_cast<Ports *>(handle)->start(); }

void run(LADSPA_Handle handle, unsigned long frames) { static_cast<Ports *>(handle)->run(frames); }

void cleanup(LADSPA_Handle handle) { delete static_cast<Ports *>(handle); }

void describe(Described &to, const SoundPlugin &plugin) {
  to.plugin = &plugin;
  const auto add = [&](LADSPA_PortDescriptor kind, std::string name, LADSPA_PortRangeHint hint) {
    to.ports.push_back(kind);
    to.names.push_back(std::move(name));
    to.hints.push_back(hint);
  };
  for (size_t input = 0; input < plugin.inputs.size(); ++input)
    for (const char *side : kSides)
      add(LADSPA_PORT_INPUT | LADSPA_PORT_AUDIO, "Input " + std::to_string(input + 1) + ' ' + side, {});
  for (const char *side : kSides)
    add(LADSPA_PORT_OUTPUT | LADSPA_PORT_AUDIO, std::string("Output ") + side, {});
  for (const Control &control : plugin.controls)
    add(LADSPA_PORT_INPUT | LADSPA_PORT_CONTROL, control.name, hintOf(control));
  for (const std::string &name : to.names)
    to.nameTexts.push_back(name.c_str());

  LADSPA_Descriptor &descriptor = to.descriptor;
  descriptor.UniqueID = plugin.number;
  descriptor.Label = plugin.id.c_str();
  descriptor.Properties = LADSPA_PROPERTY_HARD_RT_CAPABLE;
  descriptor.Name = plugin.name.c_str();
  descriptor.Maker = "zol";
  descriptor.Copyright = "None";
  descriptor.PortCount = to.ports.size();
  descriptor.PortDescriptors = to.ports.data();
  descriptor.PortNames = to.nameTexts.data();
  descriptor.PortRangeHints = to.hints.data();
  descriptor.ImplementationData = &to;
  descriptor.instantiate = instantiate;
  descriptor.connect_port = connectPort;
  descriptor.activate = activate;
  descriptor.run = run;
  descriptor.cleanup = cleanup;
}

const std::deque<Described> &allDescribed() {
  static const auto &all = *[] {
    auto *made = new std::deque<Described>;
    for (const SoundPlugin &plugin : soundPlugins())
      describe(made->emplace_back(), plugin);
    return made;
  }();
  return all;
}

} // namespace

extern "C" __attribute__((visibility("default"))) const LADSPA_Descriptor *
ladspa_descriptor(unsigned long index) {
  try {
    return index < allDescribed().size() ? &allDescribed()[index].descriptor : nullptr;
  } catch (...) {
    return nullptr;
  }
}
