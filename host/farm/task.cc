#include "host/farm/task.h"

#include "host/farm/plan.h"
#include "host/farm/slurm.h"
#include "host/media/process.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/model/text_file.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>
#include <utility>
#include <vector>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

std::string environment(const char *name) {
  const char *value = std::getenv(name);
  return value == nullptr ? "" : value;
}

unsigned numberFrom(const char *name) {
  const auto number = integerIn(environment(name));
  if (!number || *number < 1)
    throw HostError(std::string("a part is rendered as a task of Slurm: there is no ") + name);
  return static_cast<unsigned>(*number);
}

/// Runs zol.
TaskEnd run(const std::vector<std::string> &words, const std::string &input) {
  Process::Options options;
  if (!input.empty())
    options.input = Process::Stream::Pipe;
  options.feedHead.assign(input.begin(), input.end());
  Process process(words, std::move(options));
  const int status = process.wait();
  TaskEnd end{{}, process.errorTail()};
  if (status == 0)
    return end;
  end.why = process.lastLine();
  if (end.why.starts_with("zol: "))
    end.why.erase(0, 5);
  if (end.why.empty())
    end.why = words.front() + (status > 128 ? " was ended by signal " + std::to_string(status - 128)
                                            : " ended with status " + std::to_string(status));
  return end;
}

/// Keeps the reason; how many there are now, or nothing where it could not be kept.
std::optional<int> keepFailure(const std::string &file, const std::string &why) {
  std::ofstream stream(file, std::ios::app);
  stream << why << '\n' << std::flush;
  if (!stream)
    return std::nullopt;
  const std::string all = readTextFile(file);
  return static_cast<int>(std::ranges::count(all, '\n'));
}

/// While the controller is away for a moment, it is asked again.
bool requeuePatiently(const std::string &task) {
  using namespace std::chrono_literals;
  for (int i = 0; i < 10; ++i, std::this_thread::sleep_for(6s))
    if (requeue(task))
      return true;
  return false;
}

FarmPlan enter(const FarmPlace &place) {
  FarmPlan plan = place.load();
  std::error_code ignored; // words for ffmpeg may name files from there on
  fs::current_path(plan.folder, ignored);
  return plan;
}

} // namespace

bool tellsOfFullDisk(const std::string &line) {
  return std::ranges::any_of(std::vector{ENOSPC, EDQUOT},
                             [&](int error) { return line.find(errorMessage(error)) != line.npos; });
}

TaskEnd runPart(const FarmPlan &plan, unsigned number, const std::string &file) {
  return run({plan.program, "render", "--plan", "/dev/stdin"}, toJson(partOf(plan, number, file)).dump());
}

int renderFarmPart(const std::string &file) {
  const FarmPlace place = FarmPlace::named(file);
  const unsigned number = numberFrom("SLURM_ARRAY_TASK_ID");
  const FarmPlan plan = enter(place);
  const std::string part = place.part(number);
  fs::create_directories(fs::path(part).parent_path());
  const auto [why, said] = runPart(plan, number, part);
  std::fputs(said.c_str(), stderr);
  if (why.empty())
    return 0;
  const auto failures = keepFailure(place.failures(number), why);
  if (failures && *failures < kMostFailures && !tellsOfFullDisk(why))
    requeuePatiently(environment("SLURM_ARRAY_JOB_ID") + '_' + std::to_string(number));
  return 1;
}

int joinFarmParts(const std::string &file) {
  const FarmPlace place = FarmPlace::named(file);
  const FarmPlan plan = enter(place);
  std::vector<std::string> words = {plan.program, "join"};
  for (unsigned number = 1; number <= plan.parts; ++number)
    words.push_back(place.part(number));
  words.insert(words.end(), {"-o", plan.film()});
  if (plan.render.overwrite)
    words.emplace_back("-y");
  const auto [why, said] = run(words, "");
  std::fputs(said.c_str(), stderr);
  if (!why.empty()) {
    keepFailure(place.failures(0), why);
    return 1;
  }
  writeTextFile(place.finished(), plan.film() + '\n');
  fs::remove_all(place.parts());
  return 0;
}

} // namespace zol::host
