// zol render: effects over files, chained by "!".

#include "apps/zol/commands.h"
#include "apps/zol/render_words.h"

#include "host/media/interrupt.h"
#include "host/model/error.h"
#include "host/render/batch.h"
#include "host/render/preset.h"
#include "host/render/render.h"

#include <cstdio>
#include <memory>

namespace zol::command {
namespace {

void printCommands(const host::RenderJob &job) {
  for (const std::string &line : job.commands())
    std::printf("%s\n", line.c_str());
}

void renderBatch(const RenderWords &asked) {
  const std::vector<host::RenderPlan> plans = host::batchPlans(asked.plan);
  const HostOptions options{asked.plan.host, asked.plan.library};
  const auto library = std::make_shared<const host::EffectLibrary>(options.libraryFile(), options.host);
  if (asked.dryRun) {
    for (const host::RenderPlan &plan : plans)
      printCommands(host::RenderJob(plan, library));
    return;
  }
  ProgressLine progress("files", asked.telling);
  size_t failed = 0;
  host::runBatch(plans, library, [&](const host::BatchResult &result, size_t done) {
    progress.clear();
    if (!result.error.empty() && ++failed > 0)
      tellError(result.error);
    tellNotes(asked.telling, result.notes);
    progress.show(done, plans.size());
  });
  if (failed > 0)
    throw host::HostError(std::to_string(failed) + " of " + std::to_string(plans.size()) +
                          " files could not be rendered");
  progress.finish();
  if (!asked.telling.quiet && !asked.telling.json)
    std::fprintf(stderr, "zol: %zu files rendered\n", plans.size());
}

void renderOne(const RenderWords &asked) {
  const HostOptions options{asked.plan.host, asked.plan.library};
  const auto library = std::make_shared<const host::EffectLibrary>(options.libraryFile(), options.host);
  if (asked.plan.part && !asked.dryRun && host::isDone(asked.plan, *library)) {
    tellNotes(asked.telling, {'"' + host::fileOfPart(asked.plan) + "\" is complete already"});
    return;
  }
  host::RenderJob job(asked.plan, library);
  tellNotes(asked.telling, job.notes());
  if (asked.dryRun) {
    printCommands(job);
    return;
  }
  ProgressLine progress("done", asked.telling);
  job.run([&](uint64_t done, uint64_t all) {
    host::stopIfInterrupted();
    progress.show(done, all);
  });
  progress.finish();
  tellNotes(asked.telling, job.notes());
}

} // namespace

void addRender(CLI::App &zol) {
  addRenderOptions(
      *zol.add_subcommand("render", "Render an effect, or a chain of them, over files into a file"));
}

void runRender(const std::vector<std::string> &words) {
  const RenderWords asked = renderWords(words);
  if (asked.help) {
    std::fputs(makeCommands()->get_subcommand("render")->help("zol").c_str(), stdout);
    return;
  }
  if (!asked.savePreset.empty())
    host::checkPreset(asked.savePreset, asked.plan.overwrite);
  if (host::isBatch(asked.plan) && asked.plan.part)
    throw host::HostError("--segment: parts are rendered of one film at a time");
  if (host::isBatch(asked.plan))
    renderBatch(asked);
  else
    renderOne(asked);
  if (!asked.savePreset.empty() && !asked.dryRun)
    host::savePreset(asked.savePreset, asked.plan.stages, asked.plan.overwrite);
}

} // namespace zol::command
