// What an interface of ports connects: the channels of the inputs, the two outputs, the controls, in this
// order.
#pragma once

#include "bridges/sound/instance.h"

#include <cstddef>
#include <vector>

namespace zol::bridge {

/// An instance, and where the host keeps the data of its ports.
class Ports {
public:
  /// Throws std::bad_alloc.
  Ports(const SoundPlugin &plugin, double rate)
      : instance_(plugin, rate), inputs_(plugin.inputs.size() * SoundInstance::kChannels),
        outputs_(SoundInstance::kChannels), controls_(plugin.controls.size()) {}

  void connect(size_t port, float *data) {
    if (port < inputs_.size())
      inputs_[port] = data;
    else if (port -= inputs_.size(); port < outputs_.size())
      outputs_[port] = data;
    else if (port -= outputs_.size(); port < controls_.size())
      controls_[port] = data;
  }
  void start() { instance_.start(); }
  void run(size_t frames) { instance_.run(frames, inputs_.data(), outputs_.data(), controls_.data()); }

private:
  SoundInstance instance_;
  std::vector<const float *> inputs_;
  std::vector<float *> outputs_;
  std::vector<const float *> controls_;
};

} // namespace zol::bridge
