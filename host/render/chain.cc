#include "host/render/chain.h"

#include "host/media/format.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/media_clip.h"
#include "host/render/output.h"

#include <algorithm>

namespace zol::host {
namespace {

/// The field of this name that takes one file; -1 where there is none.
int inputFieldNamed(const Effect &effect, const std::string &name) {
  const auto found = std::find_if(effect.fields.begin(), effect.fields.end(), [&](const Field &field) {
    return (field.type == FieldType::input || field.type == FieldType::media) &&
           sameWithoutCase(field.name, name);
  });
  return found == effect.fields.end() ? -1 : static_cast<int>(found - effect.fields.begin());
}

bool holdsPictures(const RenderPlan &plan) {
  const bool raw = plan.output.empty() || plan.output == "-";
  return !plan.noPictures && (raw || !formatOf(plan.output, encodingOf(plan)).pictures.empty());
}

} // namespace

bool takesFile(const Effect &effect, const std::string &field) { return inputFieldNamed(effect, field) >= 0; }

ChainSetup::ChainSetup(const RenderPlan &plan, const EffectLibrary &library) {
  if (plan.stages.empty())
    throw HostError("no effect was named");
  for (const StagePlan &stage : plan.stages)
    stages.emplace_back().effect = &library.effect(stage.effect);
  const Effect &first = *stages.front().effect;
  sound = Stage::makesSound(first) && !(Stage::makesPictures(first) && holdsPictures(plan));
  for (const StageSetup &stage : stages) {
    Stage::checkRenders(*stage.effect);
    if (!(sound ? Stage::makesSound(*stage.effect) : Stage::makesPictures(*stage.effect)))
      throw HostError("\"" + stage.effect->name + "\" and \"" + first.name +
                      "\" cannot be chained: one makes pictures, the other sound");
  }
  for (size_t i = 0; i < stages.size(); ++i)
    for (const InputPlan &input : plan.stages[i].inputs) {
      stages[i].inputs.push_back(inputs.size());
      inputs.push_back(input);
    }
  for (size_t i = 0; i < stages.size(); ++i)
    for (const auto &setting : plan.stages[i].settings)
      if (const int field = inputFieldNamed(*stages[i].effect, setting.first); field >= 0) {
        stages[i].assignments.push_back({field, inputs.size()});
        inputs.push_back({setting.second, {}, {}});
      } else {
        stages[i].settings.push_back(setting);
      }
  retimed.resize(inputs.size());
  for (const StageSetup &stage : stages) {
    if (!Stage::movesTime(*stage.effect))
      continue;
    for (const size_t input : stage.inputs)
      retimed[input] = true;
    for (const StageSetup::Assignment &assignment : stage.assignments)
      retimed[assignment.input] = true;
  }
  while (!sound && sounding < stages.size() && Stage::makesSound(*stages[sounding].effect))
    ++sounding;
}

Chain::Chain(const ChainSetup &setup, const RenderPlan &plan, const Timeline &timeline,
             const std::vector<Input> &inputs) {
  for (const StageSetup &stage : setup.stages) {
    std::vector<Clip *> clips;
    const bool chained = !stages_.empty();
    if (chained)
      clips.push_back(clips_.emplace_back(std::make_unique<StageClip>(*stages_.back())).get());
    for (const size_t input : stage.inputs)
      clips.push_back(clipOf(inputs[input]));
    stages_.push_back(std::make_unique<Stage>(*stage.effect, plan.host, timeline, plan.realTime,
                                              clips.empty() ? nullptr : clips.front()));
    Instance &instance = stages_.back()->instance();
    instance.assignInputs(clips, chained ? instance.chainedInputFields() : instance.inputFields());
    for (const auto &[field, value] : stage.settings)
      instance.set(field, value);
    for (const StageSetup::Assignment &assignment : stage.assignments)
      instance.assignInput(assignment.field, 0, clipOf(inputs[assignment.input]));
    Faults &faults = instance.session().faults;
    for (const PlannedFault &fault : plan.faults)
      faults.failAt(fault.service, faults.calls(fault.service) + fault.nth);
  }
}

Clip *Chain::clipOf(const Input &input) {
  if (AudioReader *samples = input.samples())
    clips_.push_back(std::make_unique<AudioClip>(*samples));
  else
    clips_.push_back(std::make_unique<VideoClip>(*input.pictures()));
  return clips_.back().get();
}

std::vector<std::string> Chain::notes() {
  std::vector<std::string> lines;
  for (const auto &stage : stages_)
    lines.insert(lines.end(), stage->instance().notes().begin(), stage->instance().notes().end());
  return lines;
}

const NumberCurve *Chain::numbers(size_t stage, std::string_view field) const {
  Instance &instance = stages_[stage]->instance();
  const int id = instance.effect().fieldId(field);
  return id < 0 ? nullptr : instance.session().parameters.numbers.find(id, 0);
}

void Chain::release() {
  for (const auto &clip : clips_)
    clip->release();
}

} // namespace zol::host
