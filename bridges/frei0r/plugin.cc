#include "bridges/frei0r/plugin.h"

#include "bridges/catalogue/catalogue.h"

#include <algorithm>

namespace zol::bridge {
namespace {

enum Kind { whole, stacked };

constexpr struct {
  const char *name;
  Kind kind;
  const char *sign;
} kPlugins[] = {
#define ZOL_PLUGIN(name, kind, sign) {name, kind, sign},
#include "bridges/frei0r/plugins.inc"
#undef ZOL_PLUGIN
};

std::vector<int> inputsOf(const host::Instance &instance) {
  std::vector<int> fields = instance.inputFields();
  const auto isBackground = [&](int field) {
    return instance.effect().fields[static_cast<size_t>(field)].name == "Background";
  };
  std::stable_partition(fields.begin(), fields.end(), isBackground);
  return fields;
}

std::vector<Plugin> makePlugins() {
  const auto &effects = catalogue().registry().effects();
  std::vector<Plugin> result;
  for (const auto &row : kPlugins) {
    Plugin &plugin = result.emplace_back();
    plugin.id = row.name;
    plugin.stacked = row.kind == stacked;
    const auto effect = std::find_if(effects.begin(), effects.end(),
                                     [&](const host::Effect &known) { return known.sign == row.sign; });
    if (effect == effects.end())
      continue;
    plugin.effect = &*effect;
    plugin.name = lastWord(effect->name) + (plugin.stacked ? " stacked" : "");
    plugin.explanation = effect->description;
    if (plugin.stacked)
      plugin.explanation += " The second picture is the lower half.";
    host::Instance fresh(*effect, catalogue().identity(), {});
    plugin.inputs = inputsOf(fresh);
    plugin.parameters = parametersOf(fresh);
  }
  return result;
}

} // namespace

int Plugin::type() const {
  return inputs.empty()                  ? F0R_PLUGIN_TYPE_SOURCE
         : inputs.size() == 1 || stacked ? F0R_PLUGIN_TYPE_FILTER
                                         : F0R_PLUGIN_TYPE_MIXER2;
}

const std::vector<Plugin> &plugins() {
  static const auto &all = *new std::vector<Plugin>(makePlugins());
  return all;
}

} // namespace zol::bridge
