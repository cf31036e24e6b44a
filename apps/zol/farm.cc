// zol farm: a render in parts, on a cluster.

#include "apps/zol/commands.h"
#include "apps/zol/render_words.h"
#include "apps/zol/words.h"

#include "host/farm/submit.h"
#include "host/farm/task.h"
#include "host/media/interrupt.h"
#include "host/media/process.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/batch.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>

namespace zol::command {
namespace {

struct FarmWords {
  host::FarmRequest request;
  bool wait = false;
};

void addFarmOptions(CLI::App &app, FarmWords &words) {
  addValue(
      app, "--parts", words.request.parts,
      [](const std::string &text) {
        const auto number = host::integerIn(text);
        return number && *number >= 1 ? std::optional(static_cast<unsigned>(*number)) : std::nullopt;
      },
      "1 or more",
      "Of farm render: parts to cut the film into, by default such that one takes a minute or a few")
      ->type_name("N");
  app.add_option("--partition", words.request.partition, "Of farm render: the cluster's partition")
      ->type_name("NAME");
  app.add_option("--time", words.request.time,
                 "Of farm render: the most time that a part may take, as sbatch has it")
      ->type_name("TIME");
  app.add_option(
         "--workdir", words.request.within,
         "Of farm render: the folder, shared by all nodes, for the parts; by default that of the film")
      ->type_name("FOLDER");
  app.add_flag("--wait", words.wait, "Of farm render: show how far it is until the film is there");
}

std::string quoted(const std::string &word) { return host::shellQuoted({word}); }

std::string howToGoOn(const host::FarmPlace &place) {
  return "the jobs go on; see zol farm status " + quoted(place.plan()) + ", end them with zol farm cancel " +
         quoted(place.plan()) + ", or wait again with the same command";
}

/// Until the film is there.
void await(const host::FarmPlace &place, const host::FarmPlan &plan, const TellingOptions &telling) {
  constexpr double kShortest = 0.25, kLongest = 10; // seconds between two looks
  ProgressLine progress("parts", telling);
  double pause = kShortest;
  for (bool begun = false;; pause = std::min(pause * 1.2, kLongest)) {
    if (const auto tasks = host::tasksOf(plan.jobs()); !tasks) {
      progress.clear();
      tellNotes(telling, {"Slurm does not answer; its jobs may well go on"});
    } else {
      const host::FarmState state = host::stateOf(place, plan, *tasks);
      if (!std::exchange(begun, true))
        progress.begin(state.done);
      for (const auto &failure : state.failures)
        if (failure.end != host::FarmEnd::cancelled && state.active()) {
          progress.clear();
          tellNotes(telling, {failure.line});
        }
      progress.show(state.done, state.parts, host::textOf(state));
      if (state.finished)
        break;
      if (!state.active())
        throw host::endOf(state, place);
    }
    host::pauseFor(pause);
  }
  progress.finish();
}

void farmRender(const std::vector<std::string> &words) {
  FarmWords farm;
  const RenderWords asked = renderWords(words, [&](CLI::App &app) { addFarmOptions(app, farm); });
  if (asked.help) {
    std::fputs(makeCommands()->get_subcommand("farm")->help("zol").c_str(), stdout);
    return;
  }
  if (host::isBatch(asked.plan) || asked.dryRun || !asked.savePreset.empty() || asked.plan.output.empty() ||
      asked.plan.output == "-")
    throw CLI::ValidationError("a farm renders one film into the file of -o");
  farm.request.render = asked.plan;
  const host::Submitted submitted = host::submitFarm(farm.request);
  tellNotes(asked.telling, submitted.notes);
  const host::FarmPlan &plan = submitted.plan;
  if (submitted.there) {
    std::printf("\"%s\" is there\n", plan.film().c_str());
    return;
  }
  std::printf("%s\n%u of %u parts %s", submitted.place.plan().c_str(), plan.parts - submitted.kept,
              plan.parts, submitted.underWay ? "under way" : "submitted");
  if (!plan.partsJob.empty())
    std::printf(": job %s", plan.partsJob.c_str());
  std::printf("; to be joined by job %s\n", plan.joinJob.c_str());
  std::fflush(stdout);
  if (!farm.wait)
    return;
  try {
    await(submitted.place, plan, asked.telling);
  } catch (const host::Interrupted &) {
    tellNotes(asked.telling, {howToGoOn(submitted.place)});
    throw;
  }
}

void farmStatus(const host::FarmPlace &place) {
  const host::FarmPlan plan = place.load();
  const host::FarmState state = host::stateNow(place, plan);
  const std::string more = host::textOf(state);
  std::printf("%u of %u parts done%s%s\n", state.done, state.parts, more.empty() ? "" : ", ", more.c_str());
  for (const auto &failure : state.failures)
    std::printf("%s\n", failure.line.c_str());
  if (state.finished)
    std::printf("\"%s\" is there\n", plan.film().c_str());
  else if (!state.active())
    throw host::endOf(state, place);
}

void farmCancel(const host::FarmPlace &place) {
  const host::FarmState state = host::cancelFarm(place);
  std::printf("cancelled; %u of %u parts are kept: the same command goes on with them\n", state.done,
              state.parts);
}

} // namespace

void addFarm(CLI::App &zol) {
  CLI::App *app = zol.add_subcommand("farm", "Render in parts on a Slurm cluster");
  const auto words = std::make_shared<std::pair<std::string, FarmWords>>();
  app->add_option("action", words->first,
                  "What to do: render, with an effect and words as zol render has them; or "
                  "status or cancel, with the plan that render has named")
      ->type_name("render|status|cancel");
  addRenderOptions(*app);
  addFarmOptions(*app, words->second);
  app->callback([words] {});
  app->footer(
      "Examples:\n"
      "  zol farm render blur -i clip.mp4 -o soft.mp4 --parts 100 --partition film --wait\n"
      "  zol farm status soft.mp4.farm\n"
      "The status is 3 where there is no Slurm, 4 where a node does not see the folder of the parts,\n"
      "5 where a part failed three times, 6 where it was cancelled, 7 where the disk is full. The same\n"
      "command once more goes on with what is missing.");
}

void runFarm(const std::vector<std::string> &words) {
  const std::string action = words.empty() ? "" : words.front();
  const std::vector<std::string> rest(words.empty() ? words.end() : words.begin() + 1, words.end());
  if (action == "render")
    return farmRender(rest);
  if (action == "--help" || action == "-h") {
    std::fputs(makeCommands()->get_subcommand("farm")->help("zol").c_str(), stdout);
    return;
  }
  const bool known = action == "status" || action == "cancel" || action == "part" || action == "join";
  if (!known || rest.size() != 1)
    throw CLI::ValidationError("zol farm takes render and an effect, or status or cancel and a plan");
  if (action == "status")
    return farmStatus(host::FarmPlace::named(rest.front()));
  if (action == "cancel")
    return farmCancel(host::FarmPlace::named(rest.front()));
  // What the tasks run.
  if ((action == "part" ? host::renderFarmPart : host::joinFarmParts)(rest.front()) != 0)
    throw host::HostError("the task failed");
}

} // namespace zol::command
