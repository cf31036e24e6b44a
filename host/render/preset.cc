#include "host/render/preset.h"

#include "host/model/error.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <system_error>
#include <unistd.h>

namespace zol::host {
namespace {

std::string reason() { return std::generic_category().message(errno); }

} // namespace

std::vector<StagePlan> loadPreset(const std::string &file) { return loadPlan(file).stages; }

void checkPreset(const std::string &file, bool overwrite) {
  if (!overwrite && std::filesystem::exists(file))
    throw HostError("\"" + file + "\" exists; replace it with -y");
}

void savePreset(const std::string &file, const std::vector<StagePlan> &stages, bool overwrite) {
  checkPreset(file, overwrite);
  RenderPlan plan;
  plan.stages = stages;
  std::string text;
  try {
    text = nlohmann::json{{"stages", toJson(plan)["stages"]}}.dump(2) + '\n';
  } catch (const nlohmann::json::exception &) {
    throw HostError("cannot write " + file + ": a name in it is no UTF-8");
  }
  const std::string unfinished = file + '.' + std::to_string(getpid());
  std::ofstream stream(unfinished, std::ios::binary);
  stream << text << std::flush;
  std::error_code error;
  if (stream)
    std::filesystem::rename(unfinished, file, error);
  if (stream && !error)
    return;
  const HostError failed("cannot write " + file + ": " + (error ? error.message() : reason()));
  std::filesystem::remove(unfinished, error);
  throw failed;
}

} // namespace zol::host
