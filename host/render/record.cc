#include "host/render/record.h"

#include "host/model/remarks.h"
#include "host/model/text.h"

#include <nlohmann/json.hpp>

namespace zol::host {
namespace {

std::string limitsText(const Field &field) {
  const bool least = (field.flags & kMinLimit) != 0;
  const bool most = (field.flags & kMaxLimit) != 0;
  if (!field.min || !field.max)
    return field.kind == "Alpha" ? "0 to 1" : "";
  std::string text = numberText(*field.min) + " to " + numberText(*field.max);
  if (!least || !most)
    text += least ? ", or more" : most ? ", or less" : ", or beyond";
  return text;
}

} // namespace

std::string takenBy(const Field &field) {
  switch (field.type) {
  case FieldType::input: return "input";
  case FieldType::inputs: return "list of inputs";
  case FieldType::number: {
    const std::string limits = limitsText(field), unit = unitOf(field);
    return "number" + (limits.empty() ? "" : ' ' + limits) + (unit.empty() ? "" : ", in " + unit);
  }
  case FieldType::integer: return "whole number " + limitsText(field);
  case FieldType::color: return "colour #rrggbb[aa] or its name";
  case FieldType::selector: return "one of";
  case FieldType::toggle: return "on or off";
  case FieldType::geometry: return "SVG path data or @file.svg";
  case FieldType::media: return "file";
  case FieldType::dataset: return "a curve for each input";
  case FieldType::button: return "button";
  case FieldType::label: return "text";
  case FieldType::group: return "group";
  }
  return "";
}

bool isHidden(const Field &field) {
  return (field.flags & kHide) != 0 || field.type == FieldType::button || field.type == FieldType::label ||
         field.type == FieldType::group;
}

nlohmann::json fieldRecord(const Effect &effect, const Field &field, const std::string &value) {
  nlohmann::json json = {{"name", field.name}, {"kind", field.kind}};
  const auto text = [&](const char *key, const std::string &content) {
    if (!content.empty())
      json[key] = content;
  };
  text("label", field.label);
  text("help", field.help);
  text("default", value);
  if (field.min)
    json["min"] = *field.min;
  if (field.max)
    json["max"] = *field.max;
  json["limited"] = {{"below", (field.flags & kMinLimit) != 0}, {"above", (field.flags & kMaxLimit) != 0}};
  json["hidden"] = isHidden(field);
  text("takes", takenBy(field));
  text("unit", unitOf(field));
  for (const std::string_view remark : remarksOn(effect, field.name))
    json["remarks"].push_back(remark);
  for (const Item &item : field.items)
    json["items"].push_back({{"text", item.text}, {"value", item.value}});
  return json;
}

nlohmann::json effectRecord(const Effect &effect) {
  return {{"name", effect.name},
          {"sign", effect.sign},
          {"version", effect.version},
          {"video", effect.renderVideo != nullptr},
          {"realTime", effect.renderVideoRT != nullptr},
          {"audio", effect.renderAudio != nullptr}};
}

} // namespace zol::host
