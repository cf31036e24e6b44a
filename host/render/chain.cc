#include "host/render/chain.h"

#include "host/media/format.h"
#include "host/media/interrupt.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/output.h"

#include <algorithm>
#include <cmath>

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
  std::unique_ptr<MediaClip> clip;
  if (AudioReader *samples = input.samples())
    clip = std::make_unique<AudioClip>(*samples);
  else
    clip = std::make_unique<VideoClip>(*input.pictures());
  media_.emplace_back(&input, clip.get());
  return clips_.emplace_back(std::move(clip)).get();
}

bool Chain::metEnd(const Input *input) const {
  return std::any_of(media_.begin(), media_.end(),
                     [&](const auto &one) { return one.first == input && one.second->metEnd(); });
}

void Chain::stopWhen(const std::function<bool()> &unwanted) {
  for (const auto &stage : stages_)
    stage->instance().session().stop = [=] { return interrupted() || unwanted(); };
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

Settled settle(const ChainSetup &setup, const RenderPlan &plan, const std::vector<Input> &inputs) {
  const auto settleFor = setup.sound ? settleSound : settlePictures;
  Settled settled = settleFor(plan, inputs);
  const bool looked =
      std::all_of(inputs.begin(), inputs.end(), [](const Input &input) { return input.info() != nullptr; });
  if (plan.duration || settled.leading == nullptr || !looked || setup.stages.front().effect->trim == nullptr)
    return settled;
  const auto duration = Chain(setup, plan, settled.timeline, inputs).mediaDuration();
  if (!duration || std::abs(*duration - settled.leading->duration()) * settled.timeline.rate.value() < 1)
    return settled;
  RenderPlan lasting = plan;
  lasting.duration = Time(*duration);
  return settleFor(lasting, inputs);
}

} // namespace zol::host
