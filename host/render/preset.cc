#include "host/render/preset.h"

#include "host/model/error.h"
#include "host/model/text_file.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace zol::host {

std::vector<StagePlan> loadPreset(const std::string &file) { return loadPlan(file).stages; }

void checkPreset(const std::string &file, bool overwrite) {
  if (!overwrite && std::filesystem::exists(file))
    throw HostError("\"" + file + "\" exists; replace it with -y");
}

void savePreset(const std::string &file, const std::vector<StagePlan> &stages, bool overwrite) {
  checkPreset(file, overwrite);
  RenderPlan plan;
  plan.stages = stages;
  try {
    writeTextFile(file, nlohmann::json{{"stages", toJson(plan)["stages"]}}.dump(2) + '\n');
  } catch (const nlohmann::json::exception &) {
    throw HostError("cannot write " + file + ": a name in it is no UTF-8");
  }
}

} // namespace zol::host
