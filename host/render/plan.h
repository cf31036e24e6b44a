// What a render is asked to do, as plain data.
#pragma once

#include "host/media/fit.h"
#include "host/media/probe.h"
#include "host/model/rational.h"
#include "host/model/times.h"
#include "host/services/service.h"

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zol::host {

/// Makes a service fail at its nth call in every stage, or IsAborted answer at its nth poll.
struct PlannedFault {
  Service service = Service::Message;
  int nth = 1;

  bool operator==(const PlannedFault &) const = default;
};

/// A file, or the part of it from `start` on and before `end`, in seconds.
struct InputPlan {
  std::string file;
  std::optional<double> start, end;

  bool operator==(const InputPlan &) const = default;
};

struct StagePlan {
  std::string effect;
  std::vector<InputPlan>
      inputs; ///< in field order; behind the first stage for the fields that the chain leaves
  std::vector<std::pair<std::string, std::string>> settings; ///< field and value; an input field takes a file

  bool operator==(const StagePlan &) const = default;
};

/// The `number`th, from 1 on, of `count` stretches of a film's pictures, each in a file of its own.
struct PartPlan {
  int number = 1, count = 1;
  std::string file; ///< empty: the plan's output, which is no film then
  /// Frames of the whole, where they have been counted: looking for the last of them takes its time.
  std::optional<uint64_t> all{};

  bool operator==(const PartPlan &) const = default;
};

struct RenderPlan {
  std::vector<StagePlan> stages; ///< at least one; each is the first input of the next
  std::string output;
  std::string library; ///< empty: the one beside the program
  std::string host = "Halvenor";
  std::optional<std::pair<int, int>> size;
  Fit fit = Fit::letterbox; ///< of inputs of another shape than the size
  std::optional<Rational> rate;
  std::optional<Time> duration;                ///< that the effects span
  std::optional<std::pair<Time, Time>> frames; ///< rendered: first and last; a last time is not reached
  std::optional<unsigned> sampleRate, channels;
  std::optional<size_t> block; ///< sample frames a block of sound
  bool realTime = false;
  bool overwrite = false;
  std::string alpha = "auto";               ///< auto, keep or drop
  std::string codec, quality, pixelFormat;  ///< of the output's pictures; empty: what suits its format
  std::vector<std::string> encoderWords;    ///< handed to the writing ffmpeg as they are
  bool noSound = false, noPictures = false; ///< leave them out of the output
  bool strict = false;                      ///< damaged input is an error
  bool playlists = false;                   ///< inputs may name other files
  std::optional<unsigned> threads;
  std::optional<PartPlan> part; ///< to render of it; nothing: all
  std::vector<PlannedFault> faults;
  MediaPrograms programs;

  bool operator==(const RenderPlan &) const = default;
};

/// An object with a member for each of the plan's, those without a value left out; rates and times
/// are texts such as "30000/1001" and "50f", services their names.
nlohmann::json toJson(const RenderPlan &plan);

/// The plan of such an object; members that are left out are as in a plan that was just made. Throws
/// HostError for what is none, and for members that a plan does not have.
RenderPlan planFromJson(const nlohmann::json &json);

/// The plan that stands in a file. Throws HostError for what cannot be read.
RenderPlan loadPlan(const std::string &file);

} // namespace zol::host
