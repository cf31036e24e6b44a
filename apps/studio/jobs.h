// Renders into files, beside the page.
#pragma once

#include "host/render/plan.h"
#include "host/script/library.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <thread>
#include <vector>

namespace zol::studio {

class Jobs {
public:
  /// Writes under the folder alone. Throws HostError where there is none.
  Jobs(std::shared_ptr<const host::EffectLibrary> library, const std::string &folder);
  /// Cancels all.
  ~Jobs();
  Jobs(const Jobs &) = delete;
  Jobs &operator=(const Jobs &) = delete;

  /// Begins to render into a file of that bare name; the job's number. Throws Refusal for other names, for
  /// one that exists, and where too much is rendered already.
  unsigned start(host::RenderPlan plan, const std::string &name);
  /// {state: running, done, failed or cancelled; done, all, seconds, file, notes, error}. Throws Refusal.
  [[nodiscard]] nlohmann::json state(unsigned number) const;
  void cancel(unsigned number);

  [[nodiscard]] std::string folder() const { return folder_.string(); }

  /// Whether a render of that name would be refused for what is there already.
  [[nodiscard]] bool exists(const std::string &name) const;

  /// The file of that name where renders may write it. Throws Refusal for others.
  [[nodiscard]] std::string fileNamed(const std::string &name, bool overwrite) const;

private:
  struct Job;
  [[nodiscard]] std::shared_ptr<Job> job(unsigned number) const;
  void run(Job &job, const host::RenderPlan &plan) const;

  std::shared_ptr<const host::EffectLibrary> library_;
  std::filesystem::path folder_;
  mutable std::mutex mutex_;
  std::map<unsigned, std::shared_ptr<Job>> jobs_;
  unsigned last_ = 0;
};

} // namespace zol::studio
