#include "host/farm/state.h"

#include "host/farm/task.h"
#include "host/model/text.h"
#include "host/model/text_file.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <sys/statvfs.h>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

bool isFull(const std::string &folder) {
  struct statvfs status {};
  return statvfs(folder.c_str(), &status) == 0 && status.f_bavail == 0;
}

/// The lines of a file that are not blank; none where there is no such file.
std::vector<std::string> linesOf(const std::string &file) {
  std::vector<std::string> lines;
  if (!fs::exists(file))
    return lines;
  const std::string text = readTextFile(file);
  for (const std::string_view line : split(text, '\n'))
    if (!trimmed(line).empty())
      lines.emplace_back(trimmed(line));
  return lines;
}

std::string timesText(size_t times) {
  return times == 1   ? "failed"
         : times == 2 ? "failed twice"
         : times == 3 ? "failed three times"
                      : "failed " + std::to_string(times) + " times";
}

/// Of a part that is missing, or of the joining: why there is no more to come of it; `task` is null where the
/// scheduler knows nothing of it.
FarmState::Failure failureOf(const FarmPlace &place, unsigned number, const SlurmTask *task) {
  const std::string what = number == 0 ? "joining the parts" : "part " + std::to_string(number);
  const auto because = [&](FarmEnd end, const std::string &line) {
    return FarmState::Failure{number, end, line};
  };
  const std::vector<std::string> failures = linesOf(place.failures(number));
  if (!failures.empty() && (tellsOfFullDisk(failures.back()) || isFull(place.folder())))
    return because(FarmEnd::diskFull, "the disk is full: " + failures.back());
  if (!failures.empty())
    return because(FarmEnd::partFailed, what + ' ' + timesText(failures.size()) + ": " + failures.back());
  if (isFull(place.folder()))
    return because(FarmEnd::diskFull, "the disk is full: nothing can be written to " + place.folder());
  if (task == nullptr)
    return because(FarmEnd::partFailed, what + " is not there, and Slurm does not know of it any more");
  if (task->state == "CANCELLED")
    return because(FarmEnd::cancelled, what + " was cancelled");
  if (task->state == "TIMEOUT")
    return because(FarmEnd::partFailed, what + " ran out of its time on " + task->node +
                                            "; give it more with --time, or make more --parts");
  if (task->state == "FAILED" && !fs::exists(place.log(number)))
    return because(FarmEnd::noSharedFolder, task->node + " cannot write to " + place.folder() +
                                                "; name a folder that all nodes share with --workdir");
  const std::vector<std::string> said = linesOf(place.log(number));
  return because(FarmEnd::partFailed, what + " ended as " + task->state + " on " + task->node +
                                          (said.empty() ? "" : ": " + said.back()));
}

} // namespace

FarmState stateOf(const FarmPlace &place, const FarmPlan &plan, const std::vector<SlurmTask> &tasks) {
  FarmState state;
  state.parts = plan.parts;
  state.finished = fs::exists(place.finished()) && fs::exists(plan.film());
  std::map<unsigned, const SlurmTask *> known; // 0: the joining
  for (const SlurmTask &task : tasks) {
    const bool part = task.job == plan.partsJob && !plan.partsJob.empty();
    if (part != task.index.has_value())
      continue;
    known[task.index.value_or(0)] = &task;
    (part ? state.partsActive : state.joinActive) |= task.active();
  }
  const auto taskOf = [&](unsigned number) {
    const auto found = known.find(number);
    return found == known.end() ? nullptr : found->second;
  };
  const auto isComplete = [&](unsigned number) { // which a shared disk may show later
    return taskOf(number) != nullptr && taskOf(number)->state == "COMPLETED";
  };
  state.finished |= isComplete(0);
  if (state.finished) {
    state.done = state.parts;
    return state;
  }
  std::vector<unsigned> missing = place.missing(plan.parts);
  std::erase_if(missing, isComplete);
  state.done = state.parts - static_cast<unsigned>(missing.size());
  for (const unsigned number : missing) {
    const SlurmTask *task = taskOf(number);
    if (task == nullptr || !task->active()) {
      state.failures.push_back(failureOf(place, number, task));
    } else if (task->state == "PENDING") {
      ++state.waiting;
      state.reason = task->reason;
    } else {
      ++state.running;
    }
  }
  if (missing.empty() && !state.active())
    state.failures.push_back(failureOf(place, 0, taskOf(0)));
  return state;
}

FarmError endOf(const FarmState &state, const FarmPlace &place) {
  const auto worst = std::ranges::max_element(state.failures, {}, [](const FarmState::Failure &failure) {
    return failure.end == FarmEnd::cancelled ? 0 : failure.end == FarmEnd::partFailed ? 1 : 2;
  });
  if (fs::exists(place.cancelled()) || worst == state.failures.end() || worst->end == FarmEnd::cancelled)
    return {FarmEnd::cancelled, "cancelled; " + std::to_string(state.done) + " of " +
                                    std::to_string(state.parts) + " parts are kept in " + place.folder()};
  const size_t more = state.failures.size() - 1;
  return {worst->end, worst->line + (more == 0 ? "" : " (and " + std::to_string(more) + " more)")};
}

std::string textOf(const FarmState &state) {
  std::string text;
  const auto add = [&](size_t count, const std::string &what) {
    if (count > 0)
      text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + what;
  };
  add(state.running, "running");
  add(state.waiting,
      "waiting" + (state.reason.empty() || state.reason == "None" ? "" : " (" + state.reason + ')'));
  add(state.failures.size(), "failed");
  if (state.done == state.parts && !state.finished && state.joinActive)
    text = "joining";
  return text;
}

} // namespace zol::host
