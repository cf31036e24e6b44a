#include "apps/studio/document.h"

#include "apps/studio/catalogue.h"
#include "apps/studio/reply.h"
#include "host/media/process.h"
#include "host/model/error.h"
#include "host/model/text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace zol::studio {
namespace {

using host::FieldType;
using Json = nlohmann::json;

constexpr double kLongest = 24 * 3600.0;
constexpr int kLongestSideRendered = 16384;

[[noreturn]] void refuse(const std::string &why) { throw Refusal(kBadRequest, why); }

const Json &member(const Json &json, const char *name) {
  static const Json kNone;
  const auto found = json.find(name);
  return found == json.end() ? kNone : *found;
}

std::string fileIn(const Json &json) {
  if (json.is_null())
    return "";
  if (!json.is_string())
    refuse("a file is named by a text");
  return json.get<std::string>();
}

const host::Field &fieldOf(const DocumentStage &stage, int id) {
  return stage.effect->fields[static_cast<size_t>(id)];
}

bool takesFiles(const host::Field &field) {
  return field.type == FieldType::input || field.type == FieldType::inputs || field.type == FieldType::media;
}

std::vector<int> inputFields(const host::Effect &effect) {
  std::vector<int> ids;
  for (size_t i = 0; i < effect.fields.size(); ++i)
    if (takesFiles(effect.fields[i]))
      ids.push_back(static_cast<int>(i));
  return ids;
}

void readInputs(const Json &json, DocumentStage &stage) {
  if (json.is_null())
    return;
  if (!json.is_object())
    refuse("inputs are an object");
  for (const auto &[name, value] : json.items()) {
    const int id = stage.effect->fieldId(name);
    if (id < 0 || !takesFiles(fieldOf(stage, id)))
      refuse("\"" + stage.effect->name + "\" has no input \"" + name + '"');
    std::vector<std::string> &files = stage.inputs[id];
    if (!value.is_array())
      files.push_back(fileIn(value));
    else if (value.size() > kMostListed)
      refuse("too many inputs");
    else
      for (const Json &file : value)
        files.push_back(fileIn(file));
  }
}

/// Values that name files would have the program read what the page may not.
void readSettings(const Json &json, DocumentStage &stage) {
  if (json.is_null())
    return;
  if (!json.is_array())
    refuse("settings are an array");
  for (const Json &setting : json) {
    if (!setting.is_array() || setting.size() != 2 || !setting[0].is_string() || !setting[1].is_string())
      refuse("a setting is a name and a text");
    auto [name, value] = setting.get<std::pair<std::string, std::string>>();
    if (const int id = stage.effect->fieldId(name); id >= 0 && takesFiles(fieldOf(stage, id)))
      refuse("\"" + name + "\" is an input");
    if (value.find('@') != value.npos)
      throw Refusal(kForbidden, "a setting names no file");
    stage.settings.emplace_back(std::move(name), std::move(value));
  }
}

DocumentStage stageIn(const Json &json, const host::EffectLibrary &library) {
  if (!json.is_object())
    refuse("a stage is an object");
  DocumentStage stage;
  try {
    stage.effect = &library.effect(textIn(json, "effect"));
  } catch (const host::HostError &error) {
    throw Refusal(kNotFound, error.what());
  }
  stage.clip = clipField(*stage.effect, library.identity());
  readInputs(member(json, "inputs"), stage);
  readSettings(member(json, "settings"), stage);
  return stage;
}

} // namespace

std::string textIn(const Json &json, const char *name) {
  const Json &value = member(json, name);
  if (!value.is_string())
    refuse(std::string("\"") + name + "\" is a text");
  return value.get<std::string>();
}

std::optional<double> numberIn(const Json &json, const char *name) {
  const Json &value = member(json, name);
  if (value.is_null())
    return std::nullopt;
  if (!value.is_number())
    refuse(std::string("\"") + name + "\" is a number");
  return value.get<double>();
}

std::optional<std::pair<int, int>> sizeIn(const Json &json, const char *name, int longest) {
  const Json &value = member(json, name);
  if (value.is_null())
    return std::nullopt;
  if (!value.is_array() || value.size() != 2 || !value[0].is_number() || !value[1].is_number())
    refuse(std::string("\"") + name + "\" is a width and a height");
  const double width = value[0].get<double>(), height = value[1].get<double>();
  if (!(width >= 1 && height >= 1 && width <= longest && height <= longest))
    refuse(std::string("\"") + name + "\" is from 1 to " + std::to_string(longest));
  return std::pair(static_cast<int>(width), static_cast<int>(height));
}

Document documentIn(const Json &json, const host::EffectLibrary &library) {
  if (!json.is_object())
    refuse("a document is an object");
  Document document;
  document.source = fileIn(member(json, "source"));
  const Json &stages = member(json, "stages");
  if (!stages.is_array() || stages.size() > kMostStages)
    refuse("stages are an array, of at most " + std::to_string(kMostStages));
  for (const Json &stage : stages)
    document.stages.push_back(stageIn(stage, library));
  document.size = sizeIn(json, "size", kLongestSideRendered);
  document.duration = numberIn(json, "duration");
  if (document.duration && !(*document.duration >= 1e-3 && *document.duration <= kLongest))
    refuse("\"duration\" is in seconds");
  return document;
}

host::RenderPlan planOf(const Document &document, const FileStore &files, NameFile name,
                        const std::string &identity) {
  const auto named = [&](const std::string &id) { return (files.*name)(id); };
  host::RenderPlan plan;
  plan.host = identity;
  plan.size = document.size;
  if (document.duration)
    plan.duration = host::Time(*document.duration);
  for (const DocumentStage &stage : document.stages) {
    const bool first = plan.stages.empty();
    host::StagePlan &planned = plan.stages.emplace_back();
    planned.effect = stage.effect->name;
    bool inOrder = true; // so far no field was left out
    for (const int id : inputFields(*stage.effect)) {
      const host::Field &field = fieldOf(stage, id);
      const auto chosen = stage.inputs.find(id);
      std::vector<std::string> slots =
          chosen == stage.inputs.end() ? std::vector<std::string>(1) : chosen->second;
      if (id == stage.clip) {
        slots.resize(std::max<size_t>(slots.size(), 1));
        slots.front() = document.source;
        if (!first)
          slots.erase(slots.begin());
      }
      if (field.type == FieldType::inputs && std::find(slots.begin(), slots.end(), "") != slots.end())
        throw NothingShown("Choose a file for each of \"" + field.name + "\", or delete what is empty");
      for (const std::string &file : slots) {
        inOrder = inOrder && !file.empty();
        if (inOrder)
          planned.inputs.push_back({named(file), {}, {}});
        else if (!file.empty())
          planned.settings.emplace_back(field.name, named(file));
      }
    }
    planned.settings.insert(planned.settings.end(), stage.settings.begin(), stage.settings.end());
  }
  return plan;
}

Json documentOf(const std::vector<host::StagePlan> &stages, const FileStore &files,
                const host::EffectLibrary &library) {
  Json document = {{"stages", Json::array()}};
  for (const host::StagePlan &planned : stages) {
    const host::Effect &effect = library.effect(planned.effect);
    const int clip = clipField(effect, library.identity());
    const bool first = document["stages"].empty();
    Json stage = {{"effect", effect.name}, {"inputs", Json::object()}, {"settings", Json::array()}};
    auto input = planned.inputs.begin();
    for (const int id : inputFields(effect)) {
      const host::Field &field = effect.fields[static_cast<size_t>(id)];
      const bool list = field.type == FieldType::inputs;
      Json slots = Json::array();
      if (id == clip && !first)
        slots.push_back(nullptr);
      while (input != planned.inputs.end() && (list || slots.empty()))
        slots.push_back(files.idOf((input++)->file));
      if (id == clip && first && !slots.empty())
        document["source"] = std::exchange(slots[0], nullptr);
      if (list && !slots.empty())
        stage["inputs"][field.name] = slots;
      else if (id != clip && !slots.empty())
        stage["inputs"][field.name] = slots[0];
    }
    for (const auto &[name, value] : planned.settings)
      if (const int id = effect.fieldId(name); id >= 0 && takesFiles(effect.fields[static_cast<size_t>(id)]))
        stage["inputs"][name] = files.idOf(value);
      else if (value.find('@') == value.npos)
        stage["settings"].push_back({name, value});
    document["stages"].push_back(stage);
  }
  return document;
}

std::string commandOf(const host::RenderPlan &plan) {
  std::vector<std::string> words = {"zol", "render"};
  const auto add = [&](std::initializer_list<std::string> more) { words.insert(words.end(), more); };
  for (const host::StagePlan &stage : plan.stages) {
    if (&stage != &plan.stages.front())
      add({"!"});
    add({stage.effect});
    for (const host::InputPlan &input : stage.inputs)
      add({"-i", input.file});
    for (const auto &[name, value] : stage.settings)
      add({"--set", name + '=' + value});
  }
  if (plan.host != host::RenderPlan().host)
    add({"--host", plan.host});
  if (plan.size)
    add({"--size", std::to_string(plan.size->first) + 'x' + std::to_string(plan.size->second)});
  if (plan.duration)
    add({"--duration", host::numberText(plan.duration->amount)});
  if (plan.frames)
    add({"--frames",
         host::numberText(plan.frames->first.amount) + '-' + host::numberText(plan.frames->second.amount)});
  if (!plan.quality.empty())
    add({"--quality", plan.quality});
  if (plan.alpha != host::RenderPlan().alpha)
    add({"--alpha", plan.alpha});
  if (plan.overwrite)
    add({"-y"});
  add({"-o", plan.output});
  return host::shellQuoted(words);
}

} // namespace zol::studio
