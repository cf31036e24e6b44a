// zol join: the parts of a render become the film.

#include "apps/zol/commands.h"

#include "host/media/interrupt.h"
#include "host/render/join.h"

namespace zol::command {

void addJoin(CLI::App &zol) {
  CLI::App *app =
      zol.add_subcommand("join", "Join the parts of a render, as --segment gives them, into a film");
  const auto plan = std::make_shared<host::JoinPlan>();
  const auto telling = std::make_shared<TellingOptions>();
  app->add_option("parts", plan->parts, "The parts, all of one render, in any order")
      ->type_name("FILE")
      ->required();
  app->add_option("-o", plan->output, "Output file, its format told by its name")->type_name("FILE");
  app->add_flag("-y,--overwrite", plan->overwrite, "Replace the output file if it exists");
  telling->addTo(*app);
  app->footer("Pictures are copied as they are; sound and what else a render of the whole would write is "
              "added.\n"
              "Numbered pictures need no joining: of them it tells whether all are there.\n"
              "  zol join part-*.mkv -o film.mp4\n"
              "  zol join frame-%06d.png");
  app->callback([=] {
    ProgressLine progress("frames", *telling);
    const auto notes = host::join(*plan, [&](uint64_t done, uint64_t all) {
      host::stopIfInterrupted();
      progress.show(done, all);
    });
    progress.finish();
    tellNotes(*telling, notes);
  });
}

} // namespace zol::command
