// zol slowmo: a clip, slower, with the frames between made up.

#include "apps/zol/commands.h"
#include "apps/zol/words.h"

#include "host/render/slowmo.h"

#include <cstdio>
#include <map>

namespace zol::command {

void addSlowmo(CLI::App &zol) {
  using Method = host::SlowMotionMethod;
  using Fields = host::FieldOrder;
  CLI::App *app = zol.add_subcommand("slowmo", "Slow a clip down and make the frames between");
  const auto plan = std::make_shared<host::SlowMotionPlan>();
  const auto telling = std::make_shared<TellingOptions>();
  app->add_option("input", plan->input, "The clip")->type_name("FILE")->required();
  app->add_option("-o", plan->output, "Output file, its format told by its name")
      ->type_name("FILE")
      ->required();
  app->add_option("--factor", plan->factor, "How many times longer it gets")
      ->check(CLI::Range(1.0, 10000.0))
      ->capture_default_str();
  static const std::map<std::string, Method> methods = {
      {"mix", Method::mix}, {"vector", Method::vector}, {"object", Method::object}};
  app->add_option("--method", plan->method,
                  "mix: cross-fade; vector: follow blocks (default); object: follow areas of one colour")
      ->transform(CLI::CheckedTransformer(methods).description(""))
      ->type_name("mix|vector|object");
  static const std::map<std::string, Fields> fields = {{"top", Fields::topFirst},
                                                       {"bottom", Fields::bottomFirst}};
  app->add_option("--interlaced", plan->fields, "The clip consists of fields; the one that comes first")
      ->transform(CLI::CheckedTransformer(fields).description(""))
      ->type_name("top|bottom");
  app->add_flag("-y", plan->overwrite, "Replace the output file if it exists");
  app->add_flag("--an", plan->noSound, "Leave sound out of the output");
  app->add_option("--codec", plan->encoding.codec,
                  "How pictures are coded, such as h264, hevc, av1, prores, ffv1")
      ->type_name("NAME");
  static const std::map<std::string, host::Quality> qualities = {{"draft", host::Quality::draft},
                                                                 {"good", host::Quality::good},
                                                                 {"best", host::Quality::best},
                                                                 {"lossless", host::Quality::lossless}};
  app->add_option("--quality", plan->encoding.quality, "Size against faithfulness")
      ->transform(CLI::CheckedTransformer(qualities).description(""))
      ->type_name("draft|good|best|lossless");
  app->add_option("--pixel-format", plan->encoding.pixelFormat, "As ffmpeg names them, such as yuv420p")
      ->type_name("NAME");
  app->add_flag("--strict", plan->strict, "Fail where the clip is damaged");
  app->add_flag("--playlists", plan->playlists, "Read playlists and others that name files");
  addThreads(*app, plan->threads);
  telling->addTo(*app);
  app->footer("Example:\n  zol slowmo clip.mp4 -o slow.mp4 --factor 4 --method vector");
  app->callback([=] {
    ProgressLine progress("frames", *telling);
    const auto notes =
        host::slowMotion(*plan, [&](uint64_t done, uint64_t all) { progress.show(done, all); });
    progress.finish();
    tellNotes(*telling, notes);
  });
}

} // namespace zol::command
