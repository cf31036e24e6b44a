#include "host/farm/submit.h"

#include "host/farm/slurm.h"
#include "host/farm/task.h"
#include "host/media/format.h"
#include "host/media/interrupt.h"
#include "host/media/process.h"
#include "host/media/writer.h"
#include "host/model/error.h"
#include "host/model/text_file.h"
#include "host/render/part.h"
#include "host/render/render.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <utility>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

/// Seconds that zol takes for about so many frames from the middle of the film, as a part.
double secondsFor(const FarmPlace &place, FarmPlan plan, uint64_t count) {
  plan.parts = static_cast<unsigned>(std::max<uint64_t>(1, plan.frames / count));
  const auto begin = std::chrono::steady_clock::now();
  const std::string why = runPart(plan, (plan.parts + 1) / 2, place.probe()).why;
  std::error_code ignored;
  fs::remove(place.probe(), ignored);
  if (!why.empty())
    throw HostError("no part can be rendered: " + why);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// What a frame costs beyond zol's start: more and more of them, until that shows.
double secondsAFrame(const FarmPlace &place, const FarmPlan &plan) {
  constexpr double kShows = 0.5;
  constexpr uint64_t kMore = 4;
  const double one = secondsFor(place, plan, 1);
  double cost = 0;
  for (uint64_t count = 3; count <= plan.frames; count *= kMore) {
    const double more = secondsFor(place, plan, count) - one;
    cost = more / static_cast<double>(count - 1);
    if (more >= kShows)
      break;
  }
  return std::max(0.0, cost);
}

/// Throws HostError where the film cannot be put together of parts.
void checkFilm(const RenderPlan &plan) {
  if (MediaWriter::writesInPlace(plan.output) || kindOf(plan.output) != FileKind::moving)
    throw HostError("a farm makes a film in one file, not \"" + plan.output + '"');
}

/// Whether the parts that stand there are of the plan and of its files as they are now.
bool areOf(const FarmPlace &place, const FarmPlan &plan, const EffectLibrary &library) {
  for (unsigned number = 1; number <= plan.parts; ++number)
    if (fs::exists(place.part(number)))
      return isDone(partOf(plan, number, place.part(number)), library);
  return true;
}

void submitParts(const FarmPlace &place, FarmPlan &plan, const std::vector<unsigned> &numbers) {
  plan.partsJob = submit({.name = "zol-part",
                          .folder = place.folder(),
                          .log = "logs/part-%a.txt",
                          .script = place.script(),
                          .words = {plan.program, "farm", "part", place.plan()},
                          .cpus = plan.threads,
                          .indices = numbers,
                          .after = {},
                          .partition = plan.partition,
                          .time = plan.time});
  place.save(plan);
}

void submitJoin(const FarmPlace &place, FarmPlan &plan) {
  plan.joinJob = submit({.name = "zol-join",
                         .folder = place.folder(),
                         .log = "logs/join.txt",
                         .script = place.script(),
                         .words = {plan.program, "farm", "join", place.plan()},
                         .cpus = 1,
                         .indices = {},
                         .after = plan.partsJob,
                         .partition = plan.partition,
                         .time = plan.time});
  place.save(plan);
}

/// The work before this, in the same place.
struct Before {
  FarmPlan plan;
  FarmState state;
};

std::optional<Before> workBefore(const FarmPlace &place) {
  if (!fs::exists(place.plan())) {
    if (fs::exists(place.folder()) && !fs::is_empty(place.folder()))
      throw HostError("\"" + place.folder() + "\" exists and holds no plan of a farm");
    return std::nullopt;
  }
  Before before{place.load(), {}};
  before.state = stateNow(place, before.plan);
  return before;
}

} // namespace

unsigned partsFor(uint64_t frames, double secondsAFrame) {
  constexpr double kAim = 120;   // seconds
  constexpr double kMost = 1000; // indices of an array where a cluster does not allow more
  const double parts = std::round(static_cast<double>(frames) * secondsAFrame / kAim);
  return static_cast<unsigned>(
      std::clamp(parts, 1.0, std::min(kMost, std::max(1.0, static_cast<double>(frames)))));
}

void pauseFor(double seconds) {
  pollfd asked{interruptionDescriptor(), POLLIN, 0};
  poll(&asked, 1, static_cast<int>(seconds * 1000));
  stopIfInterrupted();
}

FarmState stateNow(const FarmPlace &place, const FarmPlan &plan) {
  const auto tasks = tasksOf(plan.jobs());
  if (!tasks)
    throw FarmError(FarmEnd::noSlurm, "Slurm does not answer");
  return stateOf(place, plan, *tasks);
}

Submitted submitFarm(const FarmRequest &request) {
  checkSlurm();
  const auto library = libraryOf(request.render);
  FarmPlan plan;
  plan.render = withAbsolutePaths(request.render, *library);
  checkFilm(plan.render);
  plan.render.threads.reset();
  plan.threads = request.render.threads.value_or(1);
  plan.program = fs::read_symlink("/proc/self/exe");
  plan.folder = fs::current_path();
  plan.partition = request.partition;
  plan.time = request.time;
  Submitted result{FarmPlace::of(plan.film(), request.within), plan, false, false, 0, {}};
  const FarmPlace &place = result.place;

  const auto before = workBefore(place);
  const bool same = before && makeSameFilm(before->plan.render, plan.render) &&
                    request.parts.value_or(before->plan.parts) == before->plan.parts;
  if (before && before->state.active() && !same)
    throw HostError("\"" + plan.film() +
                    "\" is being rendered from another plan; end that with zol farm cancel " +
                    shellQuoted({place.plan()}));
  if (same && (before->state.active() || (before->state.finished && !plan.render.overwrite))) {
    result.plan = before->plan;
    result.there = before->state.finished;
    result.underWay = !result.there;
    result.kept = before->state.done;
    if (result.underWay && result.plan.joinJob.empty())
      submitJoin(place, result.plan);
    return result;
  }

  (void)recordOf(partOf(plan, 1, place.probe()), *library); // all that can be told before
  result.notes = RenderJob(plan.render, library).notes();
  const bool made = !fs::exists(place.folder());
  try {
    place.prepare(same && areOf(place, before->plan, *library));
    plan.frames = RenderJob(partOf(plan, 1, place.probe()), library).frames(); // once for all parts
    plan.parts = same            ? before->plan.parts
                 : request.parts ? *request.parts
                                 : partsFor(plan.frames, secondsAFrame(place, plan));
    if (plan.parts > plan.frames)
      throw HostError("--parts: there are only " + std::to_string(plan.frames) + " frames");
    place.save(plan);
    const std::vector<unsigned> missing = place.missing(plan.parts);
    result.kept = plan.parts - static_cast<unsigned>(missing.size());
    if (!missing.empty())
      submitParts(place, plan, missing);
    submitJoin(place, plan);
  } catch (...) {
    std::error_code ignored;
    if (made && plan.jobs().empty())
      fs::remove_all(place.folder(), ignored);
    throw;
  }
  result.plan = plan;
  return result;
}

FarmState cancelFarm(const FarmPlace &place) {
  constexpr double kGlance = 0.5; // seconds
  const FarmPlan plan = place.load();
  FarmState state = stateNow(place, plan);
  if (!state.active())
    throw HostError("nothing of \"" + plan.film() + "\" is under way");
  cancelJobs(plan.jobs());
  writeTextFile(place.cancelled(), "");
  for (; state.active(); state = stateNow(place, plan))
    pauseFor(kGlance);
  return state;
}

} // namespace zol::host
