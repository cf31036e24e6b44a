// Sound effects as plug-ins: stereo in, stereo out, and controls.
#pragma once

#include "host/model/effect.h"

#include <span>
#include <string>
#include <vector>

namespace zol::bridge {

/// A number that the host sets.
struct Control {
  enum class Kind { number, choice, progress };

  Kind kind;
  int field = 0, item = 0; ///< where the effect reads it; a progress is where the block lies in its clip
  std::string name, symbol;
  double least = 0, most = 1, standard = 0;
  std::vector<host::Item> items{}; ///< of a choice
  bool hertz = false;
};

struct SoundPlugin {
  std::string id;  ///< for ever: projects of users refer to it
  unsigned number; ///< likewise, where interfaces want one
  const host::Effect *effect = nullptr;
  std::string name;
  std::vector<int> inputs; ///< its input fields, each of a stereo pair; a list is there once for each
  std::vector<Control> controls;
};

/// All, made when first asked for and kept.
std::span<const SoundPlugin> soundPlugins();

} // namespace zol::bridge
