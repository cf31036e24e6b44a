#include "apps/studio/catalogue.h"

#include "apps/studio/png.h"
#include "host/model/remarks.h"
#include "host/render/instance.h"
#include "host/render/record.h"

#include <nlohmann/json.hpp>

namespace zol::studio {
namespace {

using Json = nlohmann::json;

/// What stands for the clip while an effect says which field is meant for it.
class AnyClip : public host::Clip {
  pic *frame(double, int, int) override { return nullptr; }
  t_ZoAudio *audio(double, double) override { return nullptr; }
};

const char *typeName(host::FieldType type) {
  using host::FieldType;
  switch (type) {
  case FieldType::input: return "input";
  case FieldType::inputs: return "inputs";
  case FieldType::number: return "number";
  case FieldType::integer: return "integer";
  case FieldType::color: return "color";
  case FieldType::selector: return "selector";
  case FieldType::toggle: return "toggle";
  case FieldType::button: return "button";
  case FieldType::label: return "label";
  case FieldType::group: return "group";
  case FieldType::geometry: return "geometry";
  case FieldType::media: return "media";
  case FieldType::dataset: return "dataset";
  }
  return "";
}

Json fieldOf(const host::Instance &instance, int id) {
  const host::Effect &effect = instance.effect();
  const host::Field &field = effect.fields[static_cast<size_t>(id)];
  Json json = host::fieldRecord(effect, field, instance.valueText(id));
  json["type"] = typeName(field.type);
  json["hide"] = (field.flags & host::kHide) != 0;
  json["hideName"] = (field.flags & host::kHideName) != 0;
  json["hideCurve"] = (field.flags & host::kHideCurve) != 0;
  json["closed"] = (field.flags & host::kHideContent) != 0;
  json["flat"] = (field.flags & host::kFlatten) != 0;
  if (field.curveColor)
    json["curveColor"] = *field.curveColor;
  if (field.type == host::FieldType::group)
    json["members"] = field.members;
  return json;
}

Json effectOf(const host::Effect &effect, const std::string &identity) {
  Json json = host::effectRecord(effect);
  json["description"] = effect.description;
  json["remarks"] = host::remarksOn(effect);
  json["icon"] = effect.icon.has_value();
  json["clip"] = clipField(effect, identity);
  json["dialog"] = effect.onDialogItemEdit != nullptr || effect.onDialogOpen != nullptr;
  json["fields"] = Json::array();
  const host::Instance instance(effect, identity, host::Timeline());
  for (size_t i = 0; i < effect.fields.size(); ++i)
    json["fields"].push_back(fieldOf(instance, static_cast<int>(i)));
  return json;
}

} // namespace

int clipField(const host::Effect &effect, const std::string &identity) {
  AnyClip clip;
  const host::Instance instance(effect, identity, host::Timeline(), &clip);
  const std::vector<int> fields = instance.chainedInputFields();
  return fields.empty() ? -1 : fields.front();
}

Catalogue::Catalogue(const host::EffectLibrary &library) {
  Json all = Json::array();
  for (const host::Effect &effect : library.registry().effects()) {
    if (effect.icon)
      icons_[all.size()] = pngOf(*effect.icon);
    all.push_back(effectOf(effect, library.identity()));
  }
  effects_ = all.dump(-1, ' ', false, Json::error_handler_t::replace);
}

const std::string *Catalogue::icon(size_t effect) const {
  const auto found = icons_.find(effect);
  return found == icons_.end() ? nullptr : &found->second;
}

} // namespace zol::studio
