// The stages of a render, each the first input of the next, over the render's inputs.
#pragma once

#include "host/render/inputs.h"
#include "host/render/plan.h"
#include "host/render/stage.h"
#include "host/script/library.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zol::host {

/// Whether a field's value is a file.
bool takesFile(const Effect &effect, const std::string &field);

/// A stage of a plan with its effect found and its files told from its other settings.
struct StageSetup {
  struct Assignment {
    int field;
    size_t input;
  };
  const Effect *effect = nullptr;
  std::vector<size_t> inputs; ///< places among the render's inputs, in field order
  std::vector<Assignment> assignments;
  std::vector<std::pair<std::string, std::string>> settings;
};

/// What to render with which files; a chain is made of it, or several.
struct ChainSetup {
  /// Finds the plan's effects, and settles what they render: those that make pictures and sound what the
  /// output holds, pictures first. Throws HostError where one is not there, does not render, or cannot be
  /// chained.
  ChainSetup(const RenderPlan &plan, const EffectLibrary &library);

  bool sound = false; ///< whether sound is rendered rather than pictures
  std::vector<StageSetup> stages;
  std::vector<InputPlan> inputs; ///< in the order in which they are opened
  /// One an input: whether its effect takes frames at times of its own, which it best does at the file's own
  /// rate.
  std::vector<bool> retimed;
  /// Of pictures: how many effects, from the first on, make sound too.
  size_t sounding = 0;
};

/// Renders any time in any order. Has instances of its own and borrows the inputs, which outlive it.
class Chain {
public:
  Chain(const ChainSetup &setup, const RenderPlan &plan, const Timeline &timeline,
        const std::vector<Input> &inputs);

  /// What comes out of the last stage at a time, and of a stretch of time.
  std::unique_ptr<PictureBuffer> picture(double time) { return stages_.back()->video(time); }
  std::unique_ptr<AudioBuffer> sound(double from, double to) { return stages_.back()->audio(from, to); }
  [[nodiscard]] const Timeline &timeline() const { return stages_.back()->timeline(); }

  /// How long the first effect would go on with its media; nothing where it does not tell.
  [[nodiscard]] std::optional<double> mediaDuration() { return stages_.front()->instance().mediaDuration(); }

  /// What settings left out of the files that they name, a line each.
  [[nodiscard]] std::vector<std::string> notes();

  /// The values over time of a stage's field; null where it has no such field, or not of numbers.
  [[nodiscard]] const NumberCurve *numbers(size_t stage, std::string_view field) const;

  /// Gives back all that inputs and stages have handed out.
  void release();

private:
  Clip *clipOf(const Input &input);

  std::vector<std::unique_ptr<Stage>> stages_;
  std::vector<std::unique_ptr<Clip>> clips_;
};

} // namespace zol::host
