#include "bridges/frei0r/core.h"

#include "bridges/frei0r/instance.h"
#include "host/services/picture_memory.h"

using namespace zol::bridge;

#define ZOL_CORE extern "C" __attribute__((visibility("default")))

namespace {

constexpr int kFrei0rVersion = 1;
constexpr size_t kKeptMemory = size_t{32} << 20; // bytes: four pictures of HD, of all instances together

/// Null where the plug-in's number is unknown, or its effect.
const Plugin *pluginAt(unsigned number) noexcept {
  try {
    return number < plugins().size() && plugins()[number].effect != nullptr ? &plugins()[number] : nullptr;
  } catch (...) {
    return nullptr;
  }
}

const Parameter *parameterAt(const Plugin *plugin, int index) {
  return plugin == nullptr || index < 0 || static_cast<size_t>(index) >= plugin->parameters.size()
             ? nullptr
             : &plugin->parameters[static_cast<size_t>(index)];
}

} // namespace

ZOL_CORE void zol_frei0r_plugin_info(unsigned number, f0r_plugin_info_t *info, const void *caller) {
  *info = {"zol", "zol", F0R_PLUGIN_TYPE_FILTER, F0R_COLOR_MODEL_BGRA8888, kFrei0rVersion, 0, 0, 0, ""};
  const Plugin *plugin = pluginAt(number);
  if (plugin == nullptr)
    return;
  info->name = plugin->name.c_str();
  info->plugin_type = plugin->type();
  info->color_model = callerAt(caller) == Caller::mlt ? F0R_COLOR_MODEL_RGBA8888 : F0R_COLOR_MODEL_BGRA8888;
  info->major_version = plugin->effect->version;
  info->num_params = static_cast<int>(plugin->parameters.size());
  info->explanation = plugin->explanation.c_str();
}

ZOL_CORE void zol_frei0r_param_info(unsigned number, f0r_param_info_t *info, int index) {
  *info = {"", F0R_PARAM_DOUBLE, ""};
  if (const Parameter *parameter = parameterAt(pluginAt(number), index))
    *info = {parameter->name.c_str(), parameter->type(), parameter->explanation.c_str()};
}

ZOL_CORE f0r_instance_t zol_frei0r_construct(unsigned number, unsigned width, unsigned height,
                                             const void *caller) {
  const Plugin *plugin = pluginAt(number);
  zol::host::keepPictureMemory(kKeptMemory);
  try {
    return plugin == nullptr ? nullptr : new PluginInstance(*plugin, width, height, callerAt(caller));
  } catch (...) {
    return nullptr;
  }
}

ZOL_CORE void zol_frei0r_destruct(f0r_instance_t instance) { delete static_cast<PluginInstance *>(instance); }

ZOL_CORE void zol_frei0r_set(f0r_instance_t instance, f0r_param_t value, int index) {
  auto *plugin = static_cast<PluginInstance *>(instance);
  const Parameter *parameter = plugin == nullptr ? nullptr : parameterAt(&plugin->plugin(), index);
  if (parameter == nullptr || value == nullptr)
    return;
  try {
    Value &kept = plugin->value(static_cast<size_t>(index));
    switch (parameter->type()) {
    case F0R_PARAM_COLOR: kept.color = *static_cast<const f0r_param_color_t *>(value); break;
    case F0R_PARAM_STRING:
      if (const char *text = *static_cast<char *const *>(value))
        kept.text = text;
      break;
    default: kept.number = *static_cast<const double *>(value);
    }
    plugin->apply(static_cast<size_t>(index));
  } catch (...) { // the value before stays
  }
}

ZOL_CORE void zol_frei0r_get(f0r_instance_t instance, f0r_param_t value, int index) {
  auto *plugin = static_cast<PluginInstance *>(instance);
  const Parameter *parameter = plugin == nullptr ? nullptr : parameterAt(&plugin->plugin(), index);
  if (parameter == nullptr || value == nullptr)
    return;
  Value &kept = plugin->value(static_cast<size_t>(index));
  switch (parameter->type()) {
  case F0R_PARAM_COLOR: *static_cast<f0r_param_color_t *>(value) = kept.color; break;
  case F0R_PARAM_STRING: *static_cast<char **>(value) = kept.text.data(); break;
  default: *static_cast<double *>(value) = kept.number;
  }
}

ZOL_CORE void zol_frei0r_update(f0r_instance_t instance, double time, const uint32_t *first,
                                const uint32_t *second, uint32_t *out) {
  if (instance != nullptr)
    static_cast<PluginInstance *>(instance)->update(time, first, second, out);
}
