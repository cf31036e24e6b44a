#include "host/render/batch.h"

#include "host/media/interrupt.h"
#include "host/model/error.h"
#include "host/render/render.h"
#include "host/render/threads.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <filesystem>
#include <glob.h>
#include <mutex>
#include <new>
#include <set>
#include <string_view>
#include <thread>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kName = "{name}";

bool isPattern(const std::string &file) {
  std::error_code error;
  return file.find_first_of("*?[") != file.npos && !fs::exists(fs::symlink_status(file, error));
}

std::vector<std::string> matches(const std::string &pattern) {
  glob_t found{};
  std::vector<std::string> files;
  if (glob(pattern.c_str(), GLOB_NOESCAPE | GLOB_MARK, nullptr, &found) == 0)
    for (size_t i = 0; i < found.gl_pathc; ++i)
      if (std::string file = found.gl_pathv[i]; !file.ends_with('/'))
        files.push_back(std::move(file));
  globfree(&found);
  if (files.empty())
    throw HostError("no file matches " + pattern);
  return files;
}

/// The input that varies: the pattern, or the first one where there is none; null without inputs.
InputPlan *variedInput(RenderPlan &plan) {
  InputPlan *varied = nullptr, *first = nullptr;
  for (StagePlan &stage : plan.stages)
    for (InputPlan &input : stage.inputs) {
      first = first == nullptr ? &input : first;
      if (!isPattern(input.file))
        continue;
      if (varied != nullptr)
        throw HostError("only one input can be a pattern, not both " + varied->file + " and " + input.file);
      varied = &input;
    }
  return varied == nullptr ? first : varied;
}

std::string named(std::string output, const std::string &name) {
  for (size_t at = 0; (at = output.find(kName, at)) != output.npos; at += name.size())
    output.replace(at, kName.size(), name);
  return output;
}

} // namespace

bool isBatch(const RenderPlan &plan) { return plan.output.find(kName) != plan.output.npos; }

std::vector<RenderPlan> batchPlans(const RenderPlan &plan) {
  RenderPlan one = plan;
  InputPlan *input = variedInput(one);
  if (input == nullptr)
    throw HostError("{name} in the output stands for the name of an input, of which there is none");
  const std::string pattern = input->file;
  std::vector<RenderPlan> plans;
  std::set<std::string> outputs;
  for (const std::string &file : isPattern(pattern) ? matches(pattern) : std::vector{pattern}) {
    input->file = file;
    one.output = named(plan.output, fs::path(file).stem().string());
    if (!outputs.insert(one.output).second)
      throw HostError("several files of " + pattern + " would become " + one.output);
    plans.push_back(one);
  }
  return plans;
}

void runBatch(const std::vector<RenderPlan> &plans, const std::shared_ptr<const EffectLibrary> &library,
              const std::function<void(const BatchResult &, size_t done)> &told) {
  std::atomic<size_t> next = 0;
  std::mutex telling;
  size_t done = 0;
  std::exception_ptr stopped;
  // Files before frames: a thread for each of them, and more for each where there are few.
  const size_t threads = threadsFor(plans.empty() ? std::nullopt : plans.front().threads, 0, 0);
  const size_t files = std::min(threads, std::max<size_t>(plans.size(), 1));
  const auto work = [&] {
    try {
      for (size_t i; (i = next++) < plans.size();) {
        BatchResult result{plans[i].output, {}, {}};
        try {
          RenderPlan plan = plans[i];
          plan.threads = static_cast<unsigned>(threads / files);
          RenderJob job(std::move(plan), library);
          job.run([](uint64_t, uint64_t) { stopIfInterrupted(); });
          result.notes = job.notes();
        } catch (const HostError &error) {
          result.error = error.what();
        } catch (const std::bad_alloc &) {
          result.error = "out of memory";
        }
        const std::lock_guard guard(telling);
        told(result, ++done);
      }
    } catch (...) { // the others end with their files
      next = plans.size();
      const std::lock_guard guard(telling);
      stopped = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> workers;
    for (size_t i = 1; i < files; ++i)
      workers.emplace_back(work);
    work();
  }
  if (stopped)
    std::rethrow_exception(stopped);
}

} // namespace zol::host
