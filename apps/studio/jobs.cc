#include "apps/studio/jobs.h"

#include "apps/studio/limits.h"
#include "apps/studio/reply.h"
#include "host/model/error.h"
#include "host/render/render.h"

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <system_error>

namespace zol::studio {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Cancelled : std::exception {};

} // namespace

struct Jobs::Job {
  std::string file;
  std::atomic<bool> cancelled = false, over = false;
  std::atomic<uint64_t> done = 0, all = 0;
  Clock::time_point started = Clock::now();
  std::mutex mutex; // of what follows
  std::string state = "running", error;
  std::vector<std::string> notes;
  double seconds = 0;
  std::thread thread;

  void end(const std::string &how, const std::string &why = "") {
    const std::lock_guard lock(mutex);
    state = how;
    error = why;
    seconds = std::chrono::duration<double>(Clock::now() - started).count();
    over = true;
  }
};

Jobs::Jobs(std::shared_ptr<const host::EffectLibrary> library, const std::string &folder)
    : library_(std::move(library)) {
  std::error_code error;
  folder_ = fs::canonical(folder, error);
  if (error || !fs::is_directory(folder_, error))
    throw host::HostError("cannot write into " + folder + ": " + (error ? error.message() : "no folder"));
}

Jobs::~Jobs() {
  for (const auto &[number, job] : jobs_)
    job->cancelled = true;
  for (const auto &[number, job] : jobs_)
    job->thread.join();
}

std::string Jobs::fileNamed(const std::string &name, bool overwrite) const {
  const bool bare = !name.empty() && name.find_first_of(std::string("/\\%\0", 4)) == name.npos &&
                    name[0] != '.' && name[0] != '-' && name.size() <= 200;
  if (!bare)
    throw Refusal(kForbidden, "a file is written by a bare name, into " + folder_.string());
  const fs::path file = folder_ / name;
  std::error_code error;
  if (!overwrite && fs::exists(fs::symlink_status(file, error)))
    throw Refusal(kConflict, "\"" + name + "\" exists");
  if (fs::exists(fs::symlink_status(file, error)) && !fs::is_regular_file(fs::symlink_status(file, error)))
    throw Refusal(kForbidden, "\"" + name + "\" is no plain file");
  return file.string();
}

bool Jobs::exists(const std::string &name) const {
  std::error_code error;
  return fs::exists(fs::symlink_status(fileNamed(name, true), error));
}

unsigned Jobs::start(host::RenderPlan plan, const std::string &name) {
  plan.output = fileNamed(name, plan.overwrite);
  const std::lock_guard lock(mutex_);
  const auto running =
      std::count_if(jobs_.begin(), jobs_.end(), [](const auto &job) { return !job.second->over; });
  if (running >= static_cast<std::ptrdiff_t>(kMostJobs))
    throw Refusal(kTooMany, "two files are being rendered already");
  for (auto oldest = jobs_.begin(); jobs_.size() >= kKeptJobs; oldest = jobs_.begin()) {
    while (!oldest->second->over)
      ++oldest;
    oldest->second->thread.join();
    jobs_.erase(oldest);
  }
  const auto job = std::make_shared<Job>();
  job->file = plan.output;
  jobs_[++last_] = job;
  job->thread = std::thread([this, job, plan = std::move(plan)] { run(*job, plan); });
  return last_;
}

void Jobs::run(Job &job, const host::RenderPlan &plan) const try {
  host::RenderJob render(plan, library_);
  render.run([&](uint64_t done, uint64_t all) {
    job.done = done;
    job.all = all;
    if (job.cancelled)
      throw Cancelled();
  });
  {
    const std::lock_guard lock(job.mutex);
    job.notes = render.notes();
  }
  job.end("done");
} catch (const Cancelled &) {
  job.end("cancelled");
} catch (const std::exception &error) {
  job.end(job.cancelled ? "cancelled" : "failed", error.what());
}

std::shared_ptr<Jobs::Job> Jobs::job(unsigned number) const {
  const std::lock_guard lock(mutex_);
  const auto found = jobs_.find(number);
  if (found == jobs_.end())
    throw Refusal(kNotFound, "no such render");
  return found->second;
}

nlohmann::json Jobs::state(unsigned number) const {
  const auto asked = job(number);
  const std::lock_guard lock(asked->mutex);
  const double seconds =
      asked->over ? asked->seconds : std::chrono::duration<double>(Clock::now() - asked->started).count();
  return {{"state", asked->state}, {"done", asked->done.load()}, {"all", asked->all.load()},
          {"seconds", seconds},    {"file", asked->file},        {"notes", asked->notes},
          {"error", asked->error}};
}

void Jobs::cancel(unsigned number) { job(number)->cancelled = true; }

} // namespace zol::studio
