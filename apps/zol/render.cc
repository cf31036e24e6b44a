// zol render: effects over files, chained by "!".

#include "apps/zol/commands.h"

#include "host/media/interrupt.h"
#include "host/model/error.h"
#include "host/model/text.h"
#include "host/render/render.h"

#include <algorithm>
#include <cstdio>

namespace zol::command {
namespace {

using host::integerIn;
using host::RenderPlan;

/// What was typed, before it is read as numbers.
struct RenderWords {
  std::string size, frames;
  std::string rate;
  double duration = 0;
  unsigned sampleRate = 0, channels = 0, threads = 0;
  size_t block = 0;
  std::vector<std::string> faults;
  bool noAlpha = false, dryRun = false, quiet = false;
  HostOptions host;
  RenderPlan plan;
};

/// The words of one stage; options that concern the whole render may stand in any of them.
struct StageWords {
  std::string effect;
  std::vector<std::string> inputs, settings;
};

/// Ranges alone would let "nan" pass.
std::string checkNumber(const std::string &text) {
  return host::numberIn(text) ? std::string() : '"' + text + "\" is no number";
}

std::string checkRate(const std::string &text) {
  const auto rate = host::rationalIn(text);
  if (rate && rate->value() >= 0.001 && rate->value() <= 100000)
    return {};
  return rate || host::numberIn(text) ? "Value " + text + " not in range 0.001000 to 100000.000000"
                                      : '"' + text + "\" is no number";
}

void addOptions(CLI::App &app, RenderWords &words, StageWords &stage) {
  app.add_option("effect", stage.effect, "The effect, by its name or a unique ending of it")->required();
  app.add_option("-i", stage.inputs,
                 "Input file, once an input in the order of the effect's fields; - is stdin")
      ->type_name("FILE")
      ->allow_extra_args(false);
  app.add_option(
         "--set", stage.settings,
         "A field's value: a number, or keys over the effect's span as 0=1;0.5=2; a colour #rrggbb[aa];\n"
         "an item's text or value; on or off; SVG path data or @file.svg; a file for an input")
      ->type_name("FIELD=VALUE")
      ->allow_extra_args(false);
  app.add_option("-o", words.plan.output, "Output file, its format told by its name; - is stdout, raw")
      ->type_name("FILE");
  app.add_flag("-y", words.plan.overwrite, "Replace the output file if it exists");
  app.add_option("--size", words.size, "Picture size, by default the first input's, else 720x576")
      ->type_name("WxH");
  app.add_option("--rate", words.rate,
                 "Frames a second, as a number or as 30000/1001, by default the first input's, else 25")
      ->check(checkRate);
  app.add_option("--duration", words.duration,
                 "Seconds that the effect spans, by default the first input's length")
      ->check(checkNumber)
      ->check(CLI::Range(1e-6, 1e7));
  app.add_option("--frames", words.frames, "Render these frames of the span only, counted from 0")
      ->type_name("A-B");
  app.add_option("--audio-rate", words.sampleRate, "Sample frames a second of sound")
      ->check(CLI::Range(1U, 768000U));
  app.add_option("--channels", words.channels, "Channels of sound")->check(CLI::Range(1U, 64U));
  app.add_option("--block", words.block, "Sample frames a block of sound, by default a video frame's worth")
      ->check(CLI::Range(size_t{1}, size_t{1} << 24));
  app.add_flag("--real-time", words.plan.realTime, "Use the real-time callback where the effect has one");
  app.add_option("--alpha", words.plan.alpha,
                 "Alpha of the output: as the inputs have it, kept wherever the format can, or left out")
      ->check(CLI::IsMember({"auto", "keep", "drop"}).description(""))
      ->type_name("auto|keep|drop");
  app.add_flag("--no-alpha", words.noAlpha, "Leave the alpha channel out of the output: --alpha drop");
  app.add_option("--codec", words.plan.codec, "How pictures are coded, such as h264, hevc, av1, prores, ffv1")
      ->type_name("NAME");
  app.add_option("--quality", words.plan.quality, "Size against faithfulness")
      ->check(CLI::IsMember({"draft", "good", "best", "lossless"}).description(""))
      ->type_name("draft|good|best|lossless");
  app.add_option("--pixel-format", words.plan.pixelFormat, "As ffmpeg names them, such as yuv420p")
      ->type_name("NAME");
  app.add_flag("--an", words.plan.noSound, "Leave sound out of the output");
  app.add_flag("--vn", words.plan.noPictures, "Leave pictures out of the output");
  app.add_flag("--strict", words.plan.strict, "Damaged input is an error");
  app.add_flag("--playlists", words.plan.playlists, "Inputs may be playlists, which name other files");
  app.add_option("--threads", words.threads, "Threads to work with")->check(CLI::Range(1U, 256U));
  app.add_option("--fault", words.faults,
                 "Let a host service fail at its n-th call, such as PicCreate@1; IsAborted@n\n"
                 "stops the render at its n-th poll")
      ->type_name("SERVICE@N")
      ->allow_extra_args(false);
  words.host.addTo(app);
  app.add_flag("--dry-run", words.dryRun, "Print the ffmpeg commands that would run, and do nothing");
  app.add_flag("--quiet", words.quiet, "No progress on stderr");
  app.footer("Effects are chained by \"!\", each with its own -i and --set; the output of one is the first "
             "input of\n"
             "the next:\n"
             "  zol render deinterlace -i tape.avi ! blur --set Blurriness=0.02 -o soft.mp4\n"
             "  zol render mix -i a.jpg -i b.jpg -o half.png --set Transition=0.5\n"
             "Words behind \"--\" go to the ffmpeg that writes the output:\n"
             "  zol render blur -i a.mp4 -o b.mp4 -- -c:v libx264 -preset veryfast");
}

std::pair<int, int> sizeIn(const std::string &text) {
  const size_t by = text.find('x');
  const auto width = integerIn(text.substr(0, by));
  const auto height = by == text.npos ? std::nullopt : integerIn(text.substr(by + 1));
  if (!width || !height)
    throw CLI::ValidationError("--size takes WIDTHxHEIGHT, not \"" + text + '"');
  return {*width, *height};
}

std::pair<size_t, size_t> framesIn(const std::string &text) {
  const size_t dash = text.find('-', 1);
  const auto first = integerIn(text.substr(0, dash));
  const auto last = dash == text.npos ? first : integerIn(text.substr(dash + 1));
  if (!first || !last || *first < 0 || *last < 0)
    throw CLI::ValidationError("--frames takes FIRST-LAST, not \"" + text + '"');
  return {static_cast<size_t>(*first), static_cast<size_t>(*last)};
}

host::PlannedFault faultIn(const std::string &text) {
  const size_t at = text.find('@');
  const auto service = host::serviceNamed(text.substr(0, at));
  const auto nth = at == text.npos ? std::optional(1) : integerIn(text.substr(at + 1));
  if (!service || !nth || *nth < 1)
    throw CLI::ValidationError("--fault takes SERVICE@N, not \"" + text + '"');
  return {*service, *nth};
}

host::StagePlan planOf(const StageWords &words) {
  host::StagePlan plan{words.effect, {}, {}};
  for (const std::string &file : words.inputs)
    plan.inputs.push_back({file, {}, {}});
  for (const std::string &setting : words.settings) {
    const size_t sign = setting.find('=');
    if (sign == setting.npos || sign == 0)
      throw CLI::ValidationError("--set takes FIELD=VALUE, not \"" + setting + '"');
    plan.settings.emplace_back(setting.substr(0, sign), setting.substr(sign + 1));
  }
  return plan;
}

template <class Value> std::optional<Value> given(Value value) {
  return value == Value{} ? std::nullopt : std::optional(value);
}

void execute(RenderWords &words) {
  RenderPlan &plan = words.plan;
  plan.host = words.host.host;
  plan.library = words.host.library;
  if (!words.size.empty())
    plan.size = sizeIn(words.size);
  if (!words.frames.empty())
    plan.frames = framesIn(words.frames);
  if (words.duration > 0 && plan.frames)
    throw CLI::ValidationError("--duration and --frames exclude each other");
  if (!words.rate.empty())
    plan.rate = host::rationalIn(words.rate);
  plan.duration = given(words.duration);
  plan.sampleRate = given(words.sampleRate);
  plan.channels = given(words.channels);
  plan.block = given(words.block);
  plan.threads = given(words.threads);
  if (words.noAlpha)
    plan.alpha = "drop";
  std::transform(words.faults.begin(), words.faults.end(), std::back_inserter(plan.faults), faultIn);
  host::RenderJob job(plan);
  for (const std::string &note : job.notes())
    std::fprintf(stderr, "zol: %s\n", note.c_str());
  if (words.dryRun) {
    for (const std::string &line : job.commands())
      std::printf("%s\n", line.c_str());
    return;
  }
  ProgressLine progress("done", words.quiet);
  job.run([&](uint64_t done, uint64_t all) {
    host::stopIfInterrupted();
    progress.show(done, all);
  });
}

} // namespace

void addRender(CLI::App &zol) {
  zol.add_subcommand("render", "Render an effect, or a chain of them, over files into a file");
}

void runRender(const std::vector<std::string> &given) {
  RenderWords all;
  const auto encoderWords = std::find(given.begin(), given.end(), "--");
  if (encoderWords != given.end())
    all.plan.encoderWords.assign(encoderWords + 1, given.end());
  std::vector<std::string> words(given.begin(), encoderWords);
  for (std::string &word : words)
    if (word == "-an" || word == "-vn") // as ffmpeg has them
      word.insert(0, 1, '-');
  auto first = words.begin();
  for (;;) {
    const auto end = std::find(first, words.end(), "!");
    CLI::App app("Render an effect, or a chain of them, over files into a file.", "zol render");
    StageWords stage;
    addOptions(app, all, stage);
    std::vector<std::string> reversed(std::make_reverse_iterator(end), std::make_reverse_iterator(first));
    try {
      app.parse(reversed);
    } catch (const CLI::CallForHelp &) {
      std::fputs(app.help().c_str(), stdout);
      return;
    }
    all.plan.stages.push_back(planOf(stage));
    if (end == words.end())
      break;
    first = end + 1;
  }
  execute(all);
}

} // namespace zol::command
