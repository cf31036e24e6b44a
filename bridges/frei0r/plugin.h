// The plug-ins: effects as frei0r hosts see them.
#pragma once

#include "bridges/frei0r/parameter.h"

#include <string>
#include <vector>

namespace zol::bridge {

struct Plugin {
  std::string id; ///< the name of its file
  const host::Effect *effect = nullptr;
  bool stacked = false; ///< takes the upper and the lower half of one picture as its two inputs
  std::string name, explanation;
  std::vector<int> inputs; ///< input fields, that of the lower track first
  std::vector<Parameter> parameters;

  /// Source, filter or mixer of two.
  [[nodiscard]] int type() const;
};

/// All in their order for ever (plugins.inc), made when first asked for. A name that no effect answers to any
/// more leaves one without an effect.
const std::vector<Plugin> &plugins();

} // namespace zol::bridge
