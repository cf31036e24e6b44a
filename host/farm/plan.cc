#include "host/farm/plan.h"

#include "host/model/error.h"
#include "host/model/text.h"
#include "host/model/text_file.h"

#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

/// Of as many digits for each part, so that names sort as parts do.
std::string numbered(unsigned part) { return paddedText(part, 4); }

std::string labelled(unsigned part) { return part == 0 ? "join" : "part-" + std::to_string(part); }

/// All but the render.
template <class Plan, class Visit> void forEachMember(Plan &plan, Visit visit) {
  visit("frames", plan.frames);
  visit("parts", plan.parts);
  visit("threads", plan.threads);
  visit("program", plan.program);
  visit("folder", plan.folder);
  visit("partition", plan.partition);
  visit("time", plan.time);
  visit("partsJob", plan.partsJob);
  visit("joinJob", plan.joinJob);
}

nlohmann::json toJson(const FarmPlan &plan) {
  nlohmann::json json{{"render", toJson(plan.render)}};
  forEachMember(plan, [&](const char *name, const auto &member) { json[name] = member; });
  return json;
}

FarmPlan farmPlanFromJson(const nlohmann::json &json) {
  FarmPlan plan;
  plan.render = planFromJson(json.at("render"));
  forEachMember(plan, [&](const char *name, auto &member) { json.at(name).get_to(member); });
  return plan;
}

} // namespace

std::vector<std::string> FarmPlan::jobs() const {
  std::vector<std::string> ids = {partsJob, joinJob};
  std::erase(ids, "");
  return ids;
}

FarmPlace FarmPlace::of(const std::string &film, const std::string &within) {
  const fs::path file = fs::absolute(film).lexically_normal();
  const fs::path folder = within.empty() ? file.parent_path() : fs::absolute(within).lexically_normal();
  return FarmPlace(folder / (file.filename().string() + ".farm"));
}

FarmPlace FarmPlace::named(const std::string &name) {
  const fs::path path = fs::absolute(name).lexically_normal();
  return FarmPlace(fs::is_directory(path) ? path : path.parent_path());
}

std::string FarmPlace::part(unsigned number) const {
  return folder_ / "parts" / numbered(number) / ("part-" + numbered(number) + ".mkv");
}

std::string FarmPlace::log(unsigned number) const { return folder_ / "logs" / (labelled(number) + ".txt"); }

std::string FarmPlace::failures(unsigned number) const {
  return folder_ / "failures" / (labelled(number) + ".txt");
}

FarmPlan FarmPlace::load() const {
  try {
    return farmPlanFromJson(nlohmann::json::parse(readTextFile(plan())));
  } catch (const nlohmann::json::exception &) {
    throw HostError("cannot read " + plan() + ": it is no plan of a farm");
  }
}

void FarmPlace::save(const FarmPlan &plan) const {
  try {
    writeTextFile(this->plan(), toJson(plan).dump(2) + '\n');
  } catch (const nlohmann::json::exception &) {
    throw HostError("cannot write " + this->plan() + ": a name in it is no UTF-8");
  }
}

std::vector<unsigned> FarmPlace::missing(unsigned parts) const {
  std::vector<unsigned> numbers;
  for (unsigned number = 1; number <= parts; ++number)
    if (!fs::exists(part(number)))
      numbers.push_back(number);
  return numbers;
}

void FarmPlace::prepare(bool kept) const {
  try {
    for (const char *ended : {"failures", "logs", "finished", "cancelled"})
      fs::remove_all(folder_ / ended);
    if (!kept)
      fs::remove_all(parts());
    for (const char *name : {"parts", "failures", "logs"})
      fs::create_directories(folder_ / name);
    writeTextFile(script(), "#!/bin/sh\n# A task: the words of a command.\nexec \"$@\"\n");
  } catch (const fs::filesystem_error &error) {
    throw HostError("cannot make " + folder() + ": " + error.code().message());
  }
}

RenderPlan partOf(const FarmPlan &plan, unsigned number, const std::string &file) {
  RenderPlan part = plan.render;
  part.overwrite = true;
  part.threads = plan.threads;
  part.part = PartPlan{static_cast<int>(number), static_cast<int>(plan.parts), file, {}};
  if (plan.frames > 0)
    part.part->all = plan.frames;
  return part;
}

bool makeSameFilm(RenderPlan a, RenderPlan b) {
  for (RenderPlan *plan : {&a, &b}) {
    plan->overwrite = false;
    plan->threads.reset();
  }
  return a == b;
}

} // namespace zol::host
