#include "apps/zol/render_words.h"

#include "apps/zol/words.h"

#include "host/model/text.h"
#include "host/model/times.h"
#include "host/render/preset.h"

#include <algorithm>
#include <map>
#include <utility>

namespace zol::command {
namespace {

using host::integerIn;
using host::RenderPlan;
using host::Time;
using host::TimeUnit;

// ---- Values ----

std::optional<std::pair<int, int>> sizeIn(const std::string &text) {
  const size_t by = text.find('x');
  const auto width = integerIn(text.substr(0, by));
  const auto height = by == text.npos ? std::nullopt : integerIn(text.substr(by + 1));
  return width && height ? std::optional(std::pair(*width, *height)) : std::nullopt;
}

/// A time from 0 on.
std::optional<Time> laterTime(const std::string &text, TimeUnit bare) {
  const auto time = host::timeIn(text, bare);
  return time && time->amount >= 0 ? time : std::nullopt;
}

std::optional<Time> spanIn(const std::string &text) {
  const auto time = laterTime(text, TimeUnit::seconds);
  return time && time->amount >= 1e-6 && time->amount <= 1e7 ? time : std::nullopt;
}

std::optional<std::pair<Time, Time>> framesIn(const std::string &text) {
  const size_t dash = text.find('-', 1);
  const auto first = laterTime(text.substr(0, dash), TimeUnit::frames);
  const auto last = dash == text.npos ? first : laterTime(text.substr(dash + 1), TimeUnit::frames);
  return first && last ? std::optional(std::pair(*first, *last)) : std::nullopt;
}

std::optional<host::PlannedFault> faultIn(const std::string &text) {
  const size_t at = text.find('@');
  const auto service = host::serviceNamed(text.substr(0, at));
  const auto nth = at == text.npos ? std::optional(1) : integerIn(text.substr(at + 1));
  return service && nth && *nth >= 1 ? std::optional(host::PlannedFault{*service, *nth}) : std::nullopt;
}

std::optional<host::PartPlan> partIn(const std::string &text) {
  const size_t by = text.find('/');
  const auto number = integerIn(text.substr(0, by));
  const auto count = by == text.npos ? std::nullopt : integerIn(text.substr(by + 1));
  return number && count && *number >= 1 && *number <= *count
             ? std::optional(host::PartPlan{*number, *count, {}})
             : std::nullopt;
}

auto oneOf(std::vector<std::string> words) {
  return [words = std::move(words)](const std::string &text) {
    return std::find(words.begin(), words.end(), text) != words.end() ? std::optional(text) : std::nullopt;
  };
}

// ---- One stage ----

struct StageOptions {
  std::string effect, preset;
  std::vector<std::string> files, settings;
  std::vector<std::string> starts, ends, lengths; ///< read in the order of all words, later
};

void addStageOptions(CLI::App &app, StageOptions &stage) {
  app.add_option("effect", stage.effect, "The effect, by its name or a unique ending of it");
  const auto each = [&](const char *name, std::vector<std::string> &values, const char *type,
                        const char *help) {
    app.add_option(name, values, help)->type_name(type)->allow_extra_args(false);
  };
  each("-i", stage.files, "FILE",
       "Input file, once an input in the order of the effect's fields; - is stdin. Behind \"!\" they "
       "are for the inputs that the chain leaves");
  each("--ss", stage.starts, "TIME", "Where in the next -i to begin, such as 2.5, 500ms or 00:01:02.5");
  each("--to", stage.ends, "TIME", "Where in the next -i to end");
  each("-t", stage.lengths, "TIME", "How much of the next -i to take");
  each("--set", stage.settings, "FIELD=VALUE",
       "A field's value: a number, on or off, an item's text or value, a colour as #rrggbb[aa] or by "
       "name, SVG path data or @file.svg, a file for an input; or keys as 0=1;0.5=2 in shares of the "
       "effect's span, 0s=1;2s=2 in seconds, 50f=1 in frames. From a key on the curve is straight; "
       "after |= it is held, after ~= smooth");
  app.add_option(
         "--preset", stage.preset,
         "In an effect's place, effects, inputs and settings as --save-preset wrote them; -i and --set "
         "are for the first of them, whose own inputs they replace, as a chain does")
      ->type_name("FILE");
}

[[noreturn]] void refuse(const std::string &line) { throw CLI::ValidationError(line); }

/// The next value of an option that was given several times.
class Values {
public:
  std::string next(const CLI::Option *option) { return option->results()[used_[option]++]; }

private:
  std::map<const CLI::Option *, size_t> used_;
};

/// Files with the trims that stand before each.
std::vector<host::InputPlan> inputsOf(const CLI::App &app, const RenderPlan &plan) {
  std::vector<host::InputPlan> inputs;
  std::map<std::string, double> trims;
  Values values;
  for (const CLI::Option *option : app.parse_order()) {
    const std::string name = spelled(*option);
    const std::string value = takesValue(*option) ? values.next(option) : "";
    if (name == "-ss" || name == "-to" || name == "-t") {
      const auto time = laterTime(value, TimeUnit::seconds);
      if (!time)
        refuse(name + " takes a time such as 2.5, 500ms or 00:01:02.5, not \"" + value + '"');
      if (time->unit == TimeUnit::frames && !plan.rate)
        refuse(name + ' ' + value + ": frames are counted at a --rate, which was not given");
      if (!trims.emplace(name, time->seconds(plan.rate.value_or(1))).second)
        refuse(name + " was given twice for one -i");
    } else if (name == "-i") {
      host::InputPlan &input = inputs.emplace_back();
      input.file = value;
      if (trims.contains("-to") && trims.contains("-t"))
        refuse("-to and -t exclude each other");
      if (trims.contains("-ss"))
        input.start = trims["-ss"];
      if (trims.contains("-to"))
        input.end = trims["-to"];
      if (trims.contains("-t"))
        input.end = input.start.value_or(0) + trims["-t"];
      if (input.end && *input.end <= input.start.value_or(0))
        refuse("nothing is left of \"" + value + "\" between " + host::numberText(input.start.value_or(0)) +
               " and " + host::numberText(*input.end) + " s");
      trims.clear();
    }
  }
  if (!trims.empty())
    refuse(trims.begin()->first + " stands before the -i that it trims");
  return inputs;
}

std::vector<host::StagePlan> stagesOf(const CLI::App &app, const StageOptions &options,
                                      const RenderPlan &plan, bool chained) {
  if (options.effect.empty() == options.preset.empty())
    refuse(options.effect.empty() ? "an effect is missing; name one, or a --preset"
                                  : "an effect and a --preset exclude each other");
  std::vector<host::StagePlan> stages;
  if (options.preset.empty())
    stages.push_back({options.effect, {}, {}});
  else
    stages = host::loadPreset(options.preset);
  if (auto inputs = inputsOf(app, plan); chained || !inputs.empty())
    stages.front().inputs = std::move(inputs);
  for (const std::string &setting : options.settings) {
    const size_t sign = setting.find('=');
    if (sign == setting.npos || sign == 0)
      refuse("--set takes FIELD=VALUE, not \"" + setting + '"');
    stages.front().settings.emplace_back(setting.substr(0, sign), setting.substr(sign + 1));
  }
  return stages;
}

// ---- The whole render ----

/// How and where to a plan is rendered, whatever it renders.
void addRunOptions(CLI::App &app, RenderPlan &plan) {
  app.add_option("-o", plan.output, "Output file, its format told by its name; - is stdout, raw")
      ->type_name("FILE");
  app.add_flag("-y,--overwrite", plan.overwrite, "Replace the output file if it exists");
  addValue(app, "--segment", plan.part, partIn, "K/N, the K-th of N parts",
           "Render the K-th of N parts of the pictures into a Matroska file, or numbered pictures; zol join "
           "makes the film of them. A part that is there already, of the same render, is kept")
      ->type_name("K/N");
  addThreads(app, plan.threads);
}

void addPlanOptions(CLI::App &app, RenderPlan &plan) {
  const auto flag = [&](const char *name, bool &set, const char *help) { app.add_flag(name, set, help); };
  addRunOptions(app, plan);

  addValue(app, "--size", plan.size, sizeIn, "WIDTHxHEIGHT",
           "Picture size, by default the first input's, else 720x576")
      ->type_name("WxH");
  addValue(app, "--fit", plan.fit, host::fitNamed, "letterbox, crop or stretch",
           "How inputs of another shape become the size: with bars (default), black or, where the input "
           "has alpha, transparent; with their edges cut off; or drawn out of shape")
      ->type_name("letterbox|crop|stretch");
  addValue(app, "--rate", plan.rate, host::rateIn,
           "frames a second from 0.001 to 100000, as 25, 30000/1001, 29.97, ntsc, pal or film",
           "Frames a second as 25, 30000/1001, 29.97 (which is the same), ntsc, ntsc-film, pal or film; by "
           "default the first input's, else 25")
      ->type_name("RATE");
  addValue(app, "--duration", plan.duration, spanIn, "a time such as 2.5, 500ms, 50f or 00:01:02.5",
           "The time that the effects span, in which keys lie, by default the first input's length; as "
           "2.5, 500ms, 00:01:02.5, or 50f in frames")
      ->type_name("TIME");
  addValue(app, "--frames", plan.frames, framesIn, "FIRST-LAST as frames or times",
           "Render this part of the span only: frames counted from 0, as 10-19 or 7, or times, as 1s-2.5s "
           "or 00:00:07")
      ->type_name("A-B");

  addValue(app, "--audio-rate", plan.sampleRate, wholeNumber<unsigned>(1, 768000), "1 to 768000",
           "Sample frames a second of sound")
      ->type_name("N");
  addValue(app, "--channels", plan.channels, wholeNumber<unsigned>(1, 64), "1 to 64", "Channels of sound")
      ->type_name("N");
  addValue(app, "--block", plan.block, wholeNumber<size_t>(1, 1 << 24), "1 to 16777216",
           "Sample frames a block of sound, by default a video frame's worth")
      ->type_name("N");
  flag("--real-time", plan.realTime, "Use the real-time callback where the effect has one");

  addValue(
      app, "--codec", plan.codec, [](const std::string &text) { return std::optional(text); }, "a name",
      "How pictures are coded, such as h264, hevc, av1, vp9, prores, dnxhd or ffv1; by default what "
      "suits the format")
      ->type_name("NAME");
  addValue(app, "--quality", plan.quality, oneOf({"draft", "good", "best", "lossless"}),
           "draft, good, best or lossless", "Faithful pictures against small files")
      ->type_name("draft|good|best|lossless");
  app.add_option("--pixel-format", plan.pixelFormat, "As ffmpeg names it, such as yuv422p10le")
      ->type_name("NAME");
  addValue(app, "--alpha", plan.alpha, oneOf({"auto", "keep", "drop"}), "auto, keep or drop",
           "Alpha of the output: as the inputs have it (default), kept, or left out")
      ->type_name("auto|keep|drop");
  app.add_flag_callback(
      "--no-alpha", [&plan] { plan.alpha = "drop"; }, "The same as --alpha drop");
  flag("--an", plan.noSound, "Leave sound out of the output");
  flag("--vn", plan.noPictures, "Leave pictures out of the output");

  flag("--strict", plan.strict, "Damaged input is an error");
  flag("--playlists", plan.playlists, "Inputs may be playlists, which name other files");
  app.add_option_function<std::vector<std::string>>(
         "--fault",
         [&plan](const std::vector<std::string> &texts) {
           for (const std::string &text : texts) {
             const auto fault = faultIn(text);
             if (!fault)
               refuse("--fault takes SERVICE@N, not \"" + text + '"');
             plan.faults.push_back(*fault);
           }
         },
         "Let a host service fail at its n-th call, such as PicCreate@1; IsAborted@n stops the render "
         "at its n-th poll")
      ->type_name("SERVICE@N")
      ->allow_extra_args(false);
}

void addTellingOptions(CLI::App &app, RenderWords &words) {
  app.add_flag("--dry-run", words.dryRun, "Print the ffmpeg commands that would run, and do nothing");
  words.telling.addTo(app);
}

void addOptions(CLI::App &app, RenderWords &words, StageOptions &stage) {
  addStageOptions(app, stage);
  addPlanOptions(app, words.plan);
  app.add_option("--save-preset", words.savePreset, "Write the effects, their inputs and settings here")
      ->type_name("FILE");
  addHostOptions(app, words.plan.host, words.plan.library);
  app.add_option(
         "--plan", words.planFile,
         "In the place of effects and all that they are given, a plan in JSON, whose output the film is; "
         "beside it stand -o, -y, --segment, --threads, --dry-run, --quiet and --progress alone")
      ->type_name("FILE");
  addTellingOptions(app, words);
  app.footer(
      "Effects are chained by \"!\", each with its own -i and --set. The result of one goes to the input of\n"
      "the next that is meant for the clip, which is the keyed one of keyers and else the first:\n"
      "  zol render deinterlace -i tape.avi ! blur --set Blurriness=0.02 -o soft.mp4\n"
      "  zol render blur -i actor.mp4 ! bluescreen -i background.jpg -o composed.mp4\n"
      "Words behind \"--\" go to the ffmpeg that writes the output, as they are:\n"
      "  zol render blur -ss 10 -t 2.5 -i a.mp4 -o b.mp4 -- -c:v libx264 -preset veryfast");
}

} // namespace

void addRenderOptions(CLI::App &app) {
  const auto words = std::make_shared<std::pair<RenderWords, StageOptions>>();
  addOptions(app, words->first, words->second);
  app.callback([words] {}); // keeps what the options refer to
}

namespace {

/// The words of a render whose plan stands in a file.
RenderWords planWords(const std::vector<std::string> &words, const std::function<void(CLI::App &)> &addMore) {
  RenderWords all;
  CLI::App app("Render a plan.", "zol render");
  RenderPlan asked;
  app.set_help_flag();
  app.add_option("--plan", all.planFile);
  addRunOptions(app, asked);
  addTellingOptions(app, all);
  addMore(app);
  try {
    parseWords(app, words);
  } catch (const CLI::ParseError &error) {
    if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::ExtrasError))
      throw;
    refuse("beside --plan stand -o, -y, --segment, --threads, --dry-run, --quiet and --progress alone; the "
           "plan tells the rest");
  }
  all.plan = host::loadPlan(all.planFile);
  all.plan.overwrite = all.plan.overwrite || asked.overwrite;
  all.plan.part = asked.part ? asked.part : all.plan.part;
  all.plan.threads = asked.threads ? asked.threads : all.plan.threads;
  if (all.plan.part && !asked.output.empty())
    all.plan.part->file = asked.output;
  else if (!asked.output.empty())
    all.plan.output = asked.output;
  return all;
}

} // namespace

RenderWords renderWords(const std::vector<std::string> &words,
                        const std::function<void(CLI::App &)> &addMore) {
  if (std::any_of(words.begin(), words.end(),
                  [](const std::string &word) { return word == "--plan" || word.starts_with("--plan="); }) &&
      std::find(words.begin(), words.end(), "--help") == words.end())
    return planWords(words, addMore);
  RenderWords all;
  const auto own = std::find(words.begin(), words.end(), "--");
  if (own != words.end())
    all.plan.encoderWords.assign(own + 1, words.end());
  // Times of a stage may be in frames of a rate that another one names: stages are made when all are read.
  struct Stage {
    CLI::App app{"Render an effect, or a chain of them, over files into a file.", "zol render"};
    StageOptions options;
  };
  std::vector<std::unique_ptr<Stage>> stages;
  for (auto first = words.begin();;) {
    const auto end = std::find(first, own, "!");
    Stage &stage = *stages.emplace_back(std::make_unique<Stage>());
    stage.app.formatter(std::make_shared<HelpFormatter>());
    addOptions(stage.app, all, stage.options);
    addMore(stage.app);
    try {
      parseWords(stage.app, {first, end});
    } catch (const CLI::CallForHelp &) {
      all.help = true;
      return all;
    }
    if (end == own)
      break;
    first = end + 1;
  }
  for (const auto &stage : stages)
    for (host::StagePlan &plan : stagesOf(stage->app, stage->options, all.plan, stage != stages.front()))
      all.plan.stages.push_back(std::move(plan));
  return all;
}

} // namespace zol::command
