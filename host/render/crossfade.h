// The sound of pictures that dissolve into each other: it fades by the same curve.
#pragma once

#include "host/media/audio_reader.h"
#include "host/media/writer.h"
#include "host/model/curve.h"
#include "host/render/chain.h"
#include "host/render/timeline.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace zol::host {

/// The sound of one input on its way through the chain.
struct Voice {
  struct Factor {
    const NumberCurve *curve; ///< over the span from 0 to 1
    bool rising;              ///< by the curve's value, else by what is left to 1
  };
  size_t input; ///< its place among the render's
  std::vector<Factor> factors;
};

/// What is heard of a chain's inputs: behind a transition (inputs "Input A" and "Input B", a curve
/// "Transition") both, each by its share; behind other effects the first input that has sound. `heard` tells
/// of each input whether it has any.
std::vector<Voice> voicesOf(const ChainSetup &setup, const Chain &chain, const std::vector<bool> &heard);

/// Reads the voices and writes their sum.
class Crossfade {
public:
  struct Source {
    std::string file;
    double start; ///< seconds
  };
  /// `sources`: one a voice.
  Crossfade(std::vector<Voice> voices, const std::vector<Source> &sources, const Timeline &timeline,
            const MediaPrograms &programs);

  /// Writes the sample frames from one to before another, as numbered by the timeline.
  void write(uint64_t from, uint64_t to, MediaWriter &writer);

  [[nodiscard]] std::vector<std::string> commandLines() const;

private:
  std::vector<Voice> voices_;
  std::vector<std::unique_ptr<AudioReader>> readers_;
  Timeline timeline_;
  std::vector<float> samples_, sum_;
};

} // namespace zol::host
