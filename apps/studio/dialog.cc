#include "apps/studio/dialog.h"

#include "apps/studio/reply.h"
#include "host/model/error.h"
#include "host/model/values.h"
#include "host/render/instance.h"

#include <algorithm>
#include <deque>
#include <nlohmann/json.hpp>

namespace zol::studio {
namespace {

using host::FieldType;
using Json = nlohmann::json;

/// A slot's file while callbacks move the slots about.
struct SlotClip : host::Clip {
  explicit SlotClip(std::string id) : file(std::move(id)) {}
  pic *frame(double, int, int) override { return nullptr; }
  t_ZoAudio *audio(double, double) override { return nullptr; }
  std::string file;
};

Json itemsOf(const host::Parameters &parameters, int field) {
  Json items = Json::array();
  const auto *set = parameters.datasets.find(field, 0);
  for (size_t item = 0; set != nullptr && item < set->size(); ++item) {
    const _color_t color = (*set)[item].display.Colour;
    const host::NumberCurve *curve = parameters.numbers.find(field, static_cast<int>(item));
    items.push_back({{"name", (*set)[item].name},
                     {"color", color.r << 16 | color.g << 8 | color.b},
                     {"value", curve == nullptr ? "" : host::textOf(*curve)}});
  }
  return items;
}

Json slotsOf(const host::Parameters &parameters, int field) {
  Json slots = Json::array();
  if (const auto *clips = parameters.inputs.find(field, 0))
    for (const host::Clip *clip : *clips)
      slots.push_back(clip == nullptr ? "" : static_cast<const SlotClip *>(clip)->file);
  return slots;
}

Json fieldOf(const host::Instance &instance, const host::Parameters &parameters, int id) {
  const FieldType type = instance.effect().fields[static_cast<size_t>(id)].type;
  Json json = Json::object();
  if (const std::string value = instance.valueText(id); !value.empty())
    json["value"] = value;
  if (type == FieldType::dataset)
    json["items"] = itemsOf(parameters, id);
  else if (type == FieldType::inputs)
    json["slots"] = slotsOf(parameters, id);
  return json;
}

} // namespace

Json dialogOf(const DocumentStage &stage, const DialogEvent &event, const host::Timeline &timeline,
              const std::string &identity) {
  const host::Effect &effect = *stage.effect;
  std::deque<SlotClip> clips; // outlives the instance
  host::Instance instance(effect, identity, timeline);
  host::Session &session = instance.session();
  instance.openDialog();
  for (const auto &[id, files] : stage.inputs) {
    if (effect.fields[static_cast<size_t>(id)].type != FieldType::inputs)
      continue;
    std::vector<host::Clip *> slots;
    for (const std::string &file : files)
      slots.push_back(&clips.emplace_back(file));
    instance.assignInputs(slots, {id});
  }
  try {
    for (const auto &[name, value] : stage.settings)
      instance.set(name, value);
  } catch (const host::HostError &error) {
    throw Refusal(kNotRenderable, error.what());
  }
  if (event.edited && effect.onDialogItemEdit != nullptr) {
    session.selectedInputs = event.selected;
    session.info()->Time = event.share;
    session.info()->FrameTime = event.share * timeline.duration;
    const host::Session::Use use(session);
    effect.onDialogItemEdit(session.info(), *event.edited);
  }
  Json reply = {{"fields", Json::array()}, {"messages", Json::array()}, {"notes", instance.notes()}};
  for (size_t i = 0; i < effect.fields.size(); ++i)
    reply["fields"].push_back(fieldOf(instance, session.parameters, static_cast<int>(i)));
  for (const auto &message : session.messages)
    if (message)
      reply["messages"].push_back(*message);
  return reply;
}

} // namespace zol::studio
