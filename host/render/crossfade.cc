#include "host/render/crossfade.h"

#include <algorithm>
#include <utility>

namespace zol::host {
namespace {

using Voices = std::vector<Voice>;

void append(Voices &voices, Voices more, const NumberCurve *curve, bool rising) {
  for (Voice &voice : more) {
    voice.factors.push_back({curve, rising});
    voices.push_back(std::move(voice));
  }
}

} // namespace

std::vector<Voice> voicesOf(const ChainSetup &setup, const Chain &chain, const std::vector<bool> &heard) {
  const auto voicesAt = [&](size_t input) { return heard[input] ? Voices{{input, {}}} : Voices(); };
  Voices voices;
  for (size_t i = 0; i < setup.stages.size(); ++i) {
    const StageSetup &stage = setup.stages[i];
    if (Stage::movesTime(*stage.effect)) { // what is heard would not be what is seen
      voices.clear();
      continue;
    }
    std::vector<Voices> inputs;
    if (i > 0)
      inputs.push_back(std::exchange(voices, {}));
    for (const size_t input : stage.inputs)
      inputs.push_back(voicesAt(input));
    const int from = stage.effect->fieldId("Input A"), to = stage.effect->fieldId("Input B");
    const NumberCurve *curve = chain.numbers(i, "Transition");
    if (from >= 0 && to >= 0 && curve != nullptr) {
      inputs.resize(2);
      for (const StageSetup::Assignment &assignment : stage.assignments)
        if (assignment.field == from || assignment.field == to)
          inputs[assignment.field == to] = voicesAt(assignment.input);
      append(voices, std::move(inputs[0]), curve, false);
      append(voices, std::move(inputs[1]), curve, true);
      continue;
    }
    for (const StageSetup::Assignment &assignment : stage.assignments)
      inputs.push_back(voicesAt(assignment.input));
    const auto first =
        std::find_if(inputs.begin(), inputs.end(), [](const Voices &input) { return !input.empty(); });
    if (first != inputs.end())
      voices = std::move(*first);
  }
  return voices;
}

Crossfade::Crossfade(std::vector<Voice> voices, const std::vector<Source> &sources, const Timeline &timeline,
                     const MediaPrograms &programs)
    : voices_(std::move(voices)), timeline_(timeline) {
  for (const Source &source : sources)
    readers_.push_back(std::make_unique<AudioReader>(
        source.file, AudioReaderOptions{.sampleRate = static_cast<int>(timeline.sampleRate),
                                        .channels = static_cast<int>(timeline.channels),
                                        .start = source.start,
                                        .programs = programs}));
}

void Crossfade::write(uint64_t from, uint64_t to, MediaWriter &writer) {
  const size_t count = static_cast<size_t>(to - from), channels = timeline_.channels;
  sum_.assign(count * channels, 0);
  for (size_t i = 0; i < voices_.size(); ++i) {
    samples_.assign(count * channels, 0);
    readers_[i]->read(from, count, samples_.data());
    for (size_t frame = 0; frame < count; ++frame) {
      const double time = timeline_.timeOfSample(from + frame) / timeline_.duration;
      double gain = 1;
      for (const Voice::Factor &factor : voices_[i].factors) {
        const double share = std::clamp(factor.curve->at(time)[0], 0.0, 1.0);
        gain *= factor.rising ? share : 1 - share;
      }
      for (size_t c = frame * channels; c < (frame + 1) * channels; ++c)
        sum_[c] += static_cast<float>(gain) * samples_[c];
    }
  }
  if (count > 0)
    writer.writeSamples(sum_.data(), count);
}

std::vector<std::string> Crossfade::commandLines() const {
  std::vector<std::string> lines;
  for (const auto &reader : readers_)
    lines.push_back(reader->commandLine());
  return lines;
}

} // namespace zol::host
