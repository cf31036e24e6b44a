#include "bridges/sound/plugin.h"

#include "bridges/catalogue/catalogue.h"
#include "host/model/text.h"
#include "host/render/instance.h"

#include <algorithm>

namespace zol::bridge {
namespace {

using host::Field;
using host::FieldType;

constexpr struct {
  const char *id;
  unsigned number;
  const char *sign;
  bool transition; ///< plays once from its clip's beginning to its end
} kPlugins[] = {
    {"zol_sine_audio_generator", 5918465, "AudioSineGen (Zo2)", false},
    {"zol_simple_audio_switcher", 5918466, "Simple Audio Switcher [rul]", false},
    {"zol_audio_transition", 5918467, "Audio Transition [PW]", true},
    {"zol_audio_switcher", 5918468, "AudioSwitcher (Zo2)", false},
};

constexpr int kListed = 2; // inputs that a list has here

/// Letters, digits and '_', no digit first.
std::string symbolOf(const std::string &name) {
  std::string symbol = host::folded(name);
  std::replace_if(
      symbol.begin(), symbol.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return symbol;
}

Control controlOf(int id, const Field &field) {
  Control control{Control::Kind::number, id, 0, field.name, symbolOf(field.name)};
  if (!field.label.empty())
    control.name = host::withoutMnemonic(field.label);
  control.least = field.min.value_or(0);
  control.most = field.max.value_or(1);
  control.hertz = control.name.ends_with("(Hz)");
  return control;
}

void describe(SoundPlugin &plugin, host::Instance &fresh) {
  const auto &fields = plugin.effect->fields;
  host::Parameters &values = fresh.session().parameters;
  for (size_t i = 0; i < fields.size(); ++i) {
    const int id = static_cast<int>(i);
    Control control = controlOf(id, fields[i]);
    switch (fields[i].type) {
    case FieldType::input: plugin.inputs.push_back(id); break;
    case FieldType::inputs: plugin.inputs.insert(plugin.inputs.end(), kListed, id); break;
    case FieldType::number:
      control.standard = values.numbers.get(id, 0)->at(0.5)[0];
      plugin.controls.push_back(control);
      break;
    case FieldType::integer:
    case FieldType::selector:
    case FieldType::toggle:
      control.kind = Control::Kind::choice;
      control.items = fields[i].items;
      if (!control.items.empty())
        control.most = control.items.back().value;
      control.standard = *values.integers.get(id, 0);
      plugin.controls.push_back(control);
      break;
    case FieldType::dataset: // a level an input
      for (control.item = 0; control.item < kListed; ++control.item) {
        control.name = "Level " + std::to_string(control.item);
        control.symbol = symbolOf(control.name);
        control.standard = 0.5;
        plugin.controls.push_back(control);
      }
      break;
    default: break;
    }
  }
}

std::vector<SoundPlugin> makePlugins() {
  const auto &effects = catalogue().registry().effects();
  std::vector<SoundPlugin> result;
  for (const auto &row : kPlugins) {
    const auto effect = std::find_if(effects.begin(), effects.end(),
                                     [&](const host::Effect &known) { return known.sign == row.sign; });
    if (effect == effects.end())
      continue;
    SoundPlugin &plugin =
        result.emplace_back(SoundPlugin{row.id, row.number, &*effect, lastWord(effect->name), {}, {}});
    host::Instance fresh(*effect, catalogue().identity(), {});
    describe(plugin, fresh);
    if (row.transition)
      plugin.controls.push_back(
          {Control::Kind::progress, 0, 0, "Progress", "progress", 0, 1, 0.5, {}, false});
  }
  return result;
}

} // namespace

std::span<const SoundPlugin> soundPlugins() {
  static const auto &all = *new std::vector<SoundPlugin>(makePlugins());
  return all;
}

} // namespace zol::bridge
