// zol render: effects over files, chained by "!".

#include "apps/zol/commands.h"
#include "apps/zol/render_words.h"

#include "host/media/interrupt.h"
#include "host/render/preset.h"
#include "host/render/render.h"

#include <cstdio>

namespace zol::command {

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
  host::RenderJob job(asked.plan);
  const auto tellNotes = [&] {
    for (const std::string &note : job.notes())
      tellNote(asked.telling, note);
  };
  tellNotes();
  if (asked.dryRun) {
    for (const std::string &line : job.commands())
      std::printf("%s\n", line.c_str());
    return;
  }
  ProgressLine progress("done", asked.telling);
  job.run([&](uint64_t done, uint64_t all) {
    host::stopIfInterrupted();
    progress.show(done, all);
  });
  if (!asked.savePreset.empty())
    host::savePreset(asked.savePreset, asked.plan.stages, asked.plan.overwrite);
  progress.finish();
  tellNotes();
}

} // namespace zol::command
