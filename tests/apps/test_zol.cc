// The command as a user meets it: words in, files and lines out.

#include "tests/apps/zol.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

namespace zol::test {
namespace {

using Zol = InFolder;

TEST_F(Zol, ListsWhatTheHostIsGiven) {
  const Outcome all = zol("list");
  EXPECT_EQ(all.status, 0);
  EXPECT_EQ(std::count(all.out.begin(), all.out.end(), '\n'), 42); // Time Warp, declared twice, is one effect
  const auto json = nlohmann::json::parse(zol("list --host Quorbel --json").out);
  EXPECT_EQ(json.size(), 22U);
  EXPECT_EQ(json[0]["name"], "Sources/Solid Color");
  EXPECT_EQ(json[0]["video"], true);
}

TEST_F(Zol, ShowsFieldsWithRangesAndDefaults) {
  const Outcome text = zol("show 'solid color'");
  EXPECT_NE(text.out.find("Color: colour #rrggbb[aa] or its name (default #0000ff)"), std::string::npos)
      << text.out;
  EXPECT_EQ(text.out.find("<br>"), std::string::npos);
  const auto json = nlohmann::json::parse(zol("show 'SolidColor Zo2 native' --json").out);
  EXPECT_EQ(json["fields"][2]["default"], "1");
  const auto blur = nlohmann::json::parse(zol("show blur --json").out);
  EXPECT_EQ(blur["remarks"].size(), 1U);
  EXPECT_NE(std::string(blur["fields"][1]["remarks"][0]).find("27 pixels at 1920"), std::string::npos);
  EXPECT_NE(zol("show 'chain mix'").out.find("in seconds"), std::string::npos);
}

TEST_F(Zol, DeclarationsHaveNoErrors) {
  for (const char *host : {"Halvenor", "Quorbel", "other"}) {
    const Outcome outcome = zol(std::string("declare --host ") + host);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_NE(outcome.out.find("eff.Sign = \"SolidColor Zo2 native\";"), std::string::npos);
  }
}

TEST_F(Zol, CopiesAStillAndAClipExactly) {
  make("still.png", "-f lavfi -i testsrc2=s=65x43 -frames:v 1");
  render("copy -i still.png -o copy.png");
  EXPECT_EQ(pixels("copy.png"), pixels("still.png"));
  make("clip.mkv", "-f lavfi -i testsrc2=s=64x48:r=10:d=1.5 -c:v ffv1 -pix_fmt bgra");
  render("copy -i clip.mkv -o copy.mkv");
  EXPECT_EQ(pixels("copy.mkv").size(), 15U * 64 * 48 * 4);
  render("copy -i clip.mkv -o some.nut --frames 3-5");
  EXPECT_EQ(pixels("some.nut").size(), 3U * 64 * 48 * 4);
  const Outcome raw = zol("render copy -i clip.mkv -o - --frames 7-7");
  EXPECT_EQ(raw.out, pixels("clip.mkv").substr(7U * 64 * 48 * 4, 64U * 48 * 4));
}

TEST_F(Zol, ReadsRawFramesFromAPipe) {
  const Outcome piped = shell("head -c 4800 /dev/zero | " ZOL_BUILD_DIR "/zol render copy -i - --size 20x20 "
                              "--rate 5 --duration 0.6 -o - | wc -c");
  EXPECT_EQ(piped.out, "4800\n") << piped.err;
}

TEST_F(Zol, RendersAPipeToItsEnd) {
  make("clip.mkv", "-f lavfi -i testsrc2=s=32x24:r=10:d=0.7 -c:v ffv1 -pix_fmt bgra");
  const std::string told =
      "ffmpeg -v error -i clip.mkv -f nut -c:v rawvideo - | " ZOL_BUILD_DIR "/zol render copy -i -";
  EXPECT_EQ(shell(told + " -o told.nut").err, "");
  EXPECT_EQ(pixels("told.nut"), pixels("clip.mkv"));
  EXPECT_EQ(
      shell("head -c 2000 /dev/zero | " ZOL_BUILD_DIR "/zol render copy -i - --size 10x10 -o - | wc -c").out,
      "2000\n");
  EXPECT_EQ(shell("head -c 80000 /dev/zero | " ZOL_BUILD_DIR
                  "/zol render 'simple audio switcher' -i - --audio-rate 8000 --channels 2 -o - | wc -c")
                .out,
            "80000\n");
}

TEST_F(Zol, BringsAPipeToTheRendersFormat) {
  make("big.png", "-f lavfi -i testsrc2=s=64x48 -frames:v 1");
  make("small.mkv", "-f lavfi -i testsrc2=s=32x24:r=10:d=0.4 -c:v ffv1 -pix_fmt bgra");
  render("mix -i big.png -i small.mkv --set Transition=0.5 -o file.nut");
  for (const char *pipe :
       {"cat small.mkv | " ZOL_BUILD_DIR "/zol render mix -i big.png -i -",
        "mkfifo pipe; cat small.mkv > pipe & " ZOL_BUILD_DIR "/zol render mix -i big.png -i pipe"}) {
    const Outcome outcome = shell(std::string(pipe) + " --set Transition=0.5 --frames 0-3 -y -o pipe.nut");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(pixels("pipe.nut"), pixels("file.nut")) << pipe;
  }
  make("tone.wav", "-f lavfi -i sine=r=8000:d=0.2");
  render("'audio switcher' -i tone.wav -i tone.wav --audio-rate 16000 --channels 2 -o file.wav");
  EXPECT_EQ(shell("cat tone.wav | " ZOL_BUILD_DIR "/zol render 'audio switcher' -i tone.wav -i - "
                  "--audio-rate 16000 -o mono.wav")
                .err,
            "");
  EXPECT_EQ(samples("mono.wav").size() * 2, samples("file.wav").size());
}

TEST_F(Zol, KeepsRatesExact) {
  make("clip.mkv", "-f lavfi -i testsrc2=s=32x24:r=24000/1001:d=0.5 -c:v ffv1 -pix_fmt bgra");
  const auto rateOf = [&](const std::string &file) {
    return shell("ffprobe -v error -show_entries stream=r_frame_rate -of csv=p=0 " + file).out;
  };
  render("copy -i clip.mkv -o same.nut");
  EXPECT_EQ(rateOf("same.nut"), "24000/1001\n");
  render("copy -i clip.mkv --rate 60000/1001 -o more.nut");
  EXPECT_EQ(rateOf("more.nut"), "60000/1001\n");
  fails("render copy -i clip.mkv --rate 0/1 -o out.nut", "--rate", 2);
}

TEST_F(Zol, PlacesASmallerPictureWithinTheFrame) {
  render("'solid color' --size 8x4 --set Geo='M2 1 H5 V3 H2 Z' --set Color=#102030 --set Alpha=1 -o box.png");
  const std::string image = pixels("box.png");
  ASSERT_EQ(image.size(), 128U);
  for (int y = 0; y < 4; ++y)
    for (int x = 0; x < 8; ++x) {
      const bool inside = x >= 2 && x < 5 && y >= 1 && y < 3;
      EXPECT_EQ(image.substr(static_cast<size_t>(y * 8 + x) * 4, 4),
                inside ? std::string("\x30\x20\x10\xFF") : std::string(4, '\0'))
          << x << ' ' << y;
    }
}

TEST_F(Zol, AnimatesKeysOverTheSpan) {
  render("'solid color' --size 2x2 --rate 10 --duration 1 --set 'Alpha=0=0;0.5=1' -o fade.nut");
  const std::string frames = pixels("fade.nut");
  ASSERT_EQ(frames.size(), 160U);
  const auto alpha = [&](size_t frame) { return static_cast<uint8_t>(frames[frame * 16 + 3]); };
  EXPECT_EQ(alpha(0), 0);
  EXPECT_EQ(alpha(1), 51);
  EXPECT_EQ(alpha(5), 255);
  EXPECT_EQ(alpha(9), 255);
}

TEST_F(Zol, AnimatesPathsOverTheSpan) {
  const std::string frames =
      rendered("'solid color' --size 8x1 --rate 4 --duration 2 --frames 4-7 --set Alpha=1 "
               "--set 'Geo=1s=M0 0H2V1H0Z;1.5s|=M4 0H6V1H4Z;2s=M0 0H2V1H0Z'");
  ASSERT_EQ(frames.size(), 4U * 32);
  const int lefts[] = {0, 2, 4, 4};
  for (int i = 0; i < 32; ++i)
    EXPECT_EQ(frames[static_cast<size_t>(4 * i + 3)] != 0, i % 8 / 2 * 2 == lefts[i / 8]) << i;
}

TEST_F(Zol, ChainsEffects) {
  make("still.png", "-f lavfi -i testsrc2=s=32x16 -frames:v 1");
  render("copy -i still.png ! copy ! copy -o chain.png");
  EXPECT_EQ(pixels("chain.png"), pixels("still.png"));
}

TEST_F(Zol, RefusesWhatCannotBeDoneInOneLine) {
  make("still.png", "-f lavfi -i testsrc2=s=32x16 -frames:v 1");
  shell("echo no picture > broken.png; mkdir folder");
  fails("frobnicate", "frobnicate", 2);
  fails("shwo blur", "did you mean \"show\"?", 2);
  fails("list --jso", "did you mean --json?", 2);
  fails("slowmo a.mp4 -o b.mp4 -ss 1", "no option -ss", 2);
  fails("render copy -i still.png -ss 1 -o out.png", "-ss stands before the -i", 2);
  fails("render copy copy -i still.png -o out.png", "\"copy\" is not expected", 2);
  fails("render copy -ss soon -i still.png -o out.png", "-ss takes a time", 2);
  fails("render copy -t 5f -i still.png -o out.png", "--rate", 2);
  fails("render copy -ss 3 -to 2 -i still.png -o out.png", "nothing is left", 2);
  fails("render copy -to 3 -t 2 -i still.png -o out.png", "exclude each other", 2);
  fails("render copy -ss 3 -ss 2 -i still.png -o out.png", "twice", 2);
  fails("render copy --rate 0.0001 -i still.png -o out.png", "--rate takes", 2);
  fails("render copy --alpha none -i still.png -o out.png", "auto, keep or drop", 2);
  fails("render copy --preset look.json -i still.png -o out.png", "exclude each other", 2);
  fails("render --preset absent.json -i still.png -o out.png", "cannot read absent.json: No such file");
  fails("render mix -i still.png --set Transition=0.5 -o out.png", "its input \"Input B\" has no file");
  fails("render copy -i still.png ! copy -i still.png -o out.png", "has 1 input, but 2 were given");
  fails("render 'fill geometry' -o out.png --set 'Geometry=0=M0 0H5V5Z;1=M0 0H5V5H0Z'", "not of equal build");
  fails("render copy -i \"$(printf 'a\\033[31m')\" -o out.png", "a\\x1b[31m");
  fails("render", "effect", 2);
  fails("render copy -i still.png -o out.png --size 10", "--size takes", 2);
  fails("render copy -i still.png -o out.png --frames 5-x", "--frames takes", 2);
  fails("render copy -i still.png -o out.png --set Input", "--set takes", 2);
  fails("render copy -i still.png -o out.png --fault Nothing@1", "--fault takes", 2);
  fails("render coppy -i still.png -o out.png", "did you mean \"Filters/Copy\"?");
  fails("render 'media source' -o out.png", "Input not assigned");
  fails("render 'media source' --set Media=absent.mp4 -o out.png", "absent.mp4");
  fails("render copy -i absent.png -o out.png", "absent.png");
  fails("render copy -i broken.png -o out.png", "broken.png");
  fails("render copy -o out.png", "Input not assigned");
  fails("render copy -i still.png -i still.png -o out.png", "has 1 input, but 2 were given");
  fails("render copy -i still.png -o still.png", "still.png");
  fails("render copy -i still.png -o absent/out.png", "absent");
  fails("render copy -i still.png -o folder", "folder");
  fails("render copy -i still.png -o out.wav", "makes pictures");
  fails("render copy -i still.png -o out.png --size 0x5", "cannot be made");
  fails("render copy -i still.png -o out.png --size 40000x5", "cannot be made");
  fails("render copy -i still.png -o out.png --frames 0-2", "single picture");
  fails("render 'solid color' -o out.png --set Alpha=1.5", "from 0 to 1");
  fails("render 'solid color' -o out.png --set Alpha=much", "from 0 to 1");
  fails("render 'solid color' -o out.png --set Color=reddish", "#rrggbb");
  fails("render 'solid color' -o out.png --set Geo=circle", "Geo");
  fails("render 'solid color' -o out.png --set Colour=#ffffff", "did you mean \"Color\"?");
  fails("render copy -i still.png -o - > /dev/full", "No space left");
  fails("list --library absent.so", "absent.so");
}

TEST_F(Zol, FitsInputsOfAnotherShape) {
  make("red.png", "-f lavfi -i color=red:s=16x8,format=rgb24 -frames:v 1");
  make("clear.png", "-f lavfi -i color=red:s=16x8,format=rgba -frames:v 1");
  const std::string red("\0\0\xFF\xFF", 4), black("\0\0\0\xFF", 4), clear(4, '\0');
  const auto bars = [&](const std::string &bar) {
    std::string all;
    for (int i = 0; i < 64; ++i)
      all += i / 8 < 2 || i / 8 >= 6 ? bar : red;
    return all;
  };
  EXPECT_EQ(rendered("copy -i red.png --size 8x8 --frames 0"), bars(black));
  EXPECT_EQ(rendered("copy -i clear.png --size 8x8 --frames 0"), bars(clear));
  for (const char *fit : {"crop", "stretch"})
    EXPECT_EQ(rendered("copy -i red.png --size 8x8 --frames 0 --fit " + std::string(fit)), bars(red)) << fit;
}

TEST_F(Zol, KeepsWhatWasAskedAsAPreset) {
  make("a.png", "-f lavfi -i testsrc2=s=32x16 -frames:v 1");
  make("b.png", "-f lavfi -i testsrc=s=32x16 -frames:v 1");
  render("blur -ss 10f -t 500ms -i a.png --set Blurriness=0.05 ! mix -to 0:02 -i b.png --set Transition=0.5 "
         "--rate 50 -o one.png --save-preset look.json");
  const auto stages = nlohmann::json::parse(contents(path("look.json")))["stages"];
  EXPECT_EQ(stages[0]["inputs"], R"([{"file":"a.png","start":0.2,"end":0.7}])"_json);
  EXPECT_EQ(stages[1]["inputs"], R"([{"file":"b.png","end":2.0}])"_json);
  EXPECT_EQ(rendered("--preset look.json --frames 0"), pixels("one.png"));
  EXPECT_EQ(rendered("--preset look.json -i b.png --set Blurriness=0 --frames 0"), pixels("b.png"));
  EXPECT_EQ(rendered("copy -i b.png ! --preset look.json --set Blurriness=0 --frames 0"), pixels("b.png"));
  fails("render copy -i a.png -o out.png --save-preset look.json", "exists");
}

TEST_F(Zol, TellsProgressAndNotesToPrograms) {
  const std::string card =
      "'solid color' --size 4x4 --rate 10 --duration 1 -y -o card.nut --set 'Alpha=0=0;8.3=1'";
  EXPECT_EQ(zol("render " + card).err.rfind("zol: note: field \"Alpha\": the key at 8.3 lies outside", 0),
            0U);
  EXPECT_EQ(zol("render --quiet " + card).err, "");
  std::istringstream lines(zol("render --progress json " + card).err);
  std::vector<nlohmann::json> objects;
  for (std::string line; std::getline(lines, line);)
    objects.push_back(nlohmann::json::parse(line));
  ASSERT_GE(objects.size(), 3U);
  EXPECT_TRUE(objects.front().contains("note"));
  EXPECT_EQ(objects.back()["finished"], true);
  EXPECT_EQ(objects.back()["done"], 10);
  EXPECT_EQ(objects.back()["all"], 10);
  EXPECT_GT(objects[1]["fps"], 0.0);
  const auto error = nlohmann::json::parse(zol("render copy -i absent.png -o out.png --progress json").err);
  EXPECT_NE(std::string(error["error"]).find("absent.png"), std::string::npos);
}

TEST_F(Zol, HelpManualAndCompletionKnowEveryOption) {
  EXPECT_EQ(zol("--version").out.rfind("zol ", 0), 0U);
  EXPECT_EQ(zol("help render").out, zol("render --help").out);
  std::string manual = zol("help --man").out;
  manual.erase(std::remove(manual.begin(), manual.end(), '\\'), manual.end());
  std::istringstream help(zol("help render").out);
  size_t options = 0;
  for (std::string line; std::getline(help, line);)
    if (line.starts_with("  -") && !line.starts_with("  -h")) {
      const std::string name = line.substr(2, line.find_first_of(" ,", 3) - 2);
      ++options;
      EXPECT_NE(manual.find("fB" + name), std::string::npos) << name;
      EXPECT_NE(zol("complete render " + name).out.find(name + '\n'), std::string::npos) << name;
    }
  EXPECT_GT(options, 30U);
  const std::pair<const char *, const char *> completed[] = {
      {"re", "render\n"},
      {"render sol", "solid color\n"},
      {"render COLOR", ""},
      {"render compositing/c", "compositing/color keyer\n"},
      {"render blur -i x ! solid", "solid color\n"},
      {"render blur -i ''", ""},
      {"render blur -i x --set B", "Blurriness=\n"},
      {"render blur --alpha ''", "auto\nkeep\ndrop\n"},
      {"slowmo x --method v", "vector\n"},
      {"completion z", "zsh\n"},
      {"farm s", "status\n"},
      {"farm render chain", "chain mix\n"},
      {"farm status ''", ""},
  };
  for (const auto &[words, found] : completed)
    EXPECT_EQ(zol("complete " + std::string(words)).out, found) << words;
  const Outcome bash =
      shell("bash -c 'eval \"$(" ZOL_BUILD_DIR "/zol completion bash)\"; COMP_WORDS=(" ZOL_BUILD_DIR
            "/zol render soli); COMP_CWORD=2; _zol; echo ${COMPREPLY[@]}'");
  EXPECT_EQ(bash.out, "solid\\ color\n") << bash.err;
}

TEST_F(Zol, ReplacesAFileOnlyWhenTold) {
  make("still.png", "-f lavfi -i testsrc2=s=32x16 -frames:v 1");
  shell("cp still.png out.png");
  const std::string before = contents(path("out.png"));
  fails("render 'solid color' --size 4x4 -o out.png", "out.png");
  EXPECT_EQ(contents(path("out.png")), before);
  fails("render copy -i still.png -y -o out.png --fault PicDuplicate@1", "rendered nothing");
  EXPECT_EQ(contents(path("out.png")), before);
  render("'solid color' --size 4x4 -y -o out.png");
  EXPECT_EQ(pixels("out.png").size(), 64U);
}

TEST_F(Zol, FaultsReachTheUserAsTheEffectsOwnMessage) {
  fails("render 'solid color' --size 4x4 -o out.png --fault PicCreate@1", "Memory allocation error");
  fails("render 'solid color' --size 4x4 --rate 10 --duration 1 -o out.mp4 --fault PicCreate@4",
        "at 0.3 s: Memory allocation error");
}

TEST_F(Zol, DryRunPrintsCommandsThatCanBePasted) {
  make("still.png", "-f lavfi -i testsrc2=s=32x16 -frames:v 1");
  const Outcome outcome = zol("render copy -i still.png -o out.mp4 --dry-run");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 2) << outcome.out;
  EXPECT_FALSE(std::filesystem::exists(path("out.mp4")));
  const std::string reader = outcome.out.substr(0, outcome.out.find('\n'));
  EXPECT_EQ(shell(reader + " | head -c 2048 | wc -c").out, "2048\n") << reader;
}

TEST_F(Zol, DrawsTheIconSheet) {
  EXPECT_EQ(zol("icons -o icons.png").status, 0);
  EXPECT_GT(pixels("icons.png").size(), 1000U * 100 * 4);
}

TEST_F(Zol, SlowsAClipDown) {
  make("clip.mkv", "-f lavfi -i smptebars=s=96x64:r=10:d=0.5,scroll=h=0.0834 -c:v ffv1 -pix_fmt bgra");
  constexpr size_t kFrame = size_t{96} * 64 * 4;
  const std::string source = pixels("clip.mkv");
  std::set<std::string> between;
  for (const char *words :
       {"mix", "vector", "object", "mix --interlaced top", "vector --interlaced bottom"}) {
    const Outcome outcome = zol(std::string("slowmo clip.mkv -y -o slow.nut --factor 2 --method ") + words);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const std::string slow = pixels("slow.nut");
    ASSERT_EQ(slow.size(), 10 * kFrame) << words;
    for (size_t frame = 0; frame < 5; ++frame) // every other frame is the clip's own
      EXPECT_EQ(slow.compare(2 * frame * kFrame, kFrame, source, frame * kFrame, kFrame), 0)
          << words << frame;
    if (std::string_view(words) != "object") // which follows nothing here, and then mixes
      between.insert(slow.substr(kFrame, kFrame));
  }
  EXPECT_EQ(between.size(), 4U);
  EXPECT_EQ(between.count(source.substr(0, kFrame)), 0U);
  make("still.png", "-f lavfi -i testsrc2=s=32x16 -frames:v 1");
  fails("slowmo still.png -o out.mkv", "no moving pictures");
  fails("slowmo clip.mkv -o slow.nut", "slow.nut");
  fails("slowmo clip.mkv -o out.mkv --factor 0.5", "--factor", 2);
  fails("slowmo clip.mkv -o out.mkv --method magic", "--method", 2);
}

TEST_F(Zol, PlaysMediaAtAnySpeed) {
  make("clip.mp4",
       "-f lavfi -i testsrc2=s=64x48:r=25:d=1 -f lavfi -i sine=f=440:r=44100:d=1 -pix_fmt yuv420p");
  render("'media source' --set Media=clip.mp4 --set Speed=0.5 --set Method=Blocks -o slow.mp4");
  EXPECT_EQ(pixels("slow.mp4").size(), 50U * 64 * 48 * 4);
  EXPECT_NEAR(double(samples("slow.mp4").size()), 2 * 44100, 2100); // an encoder's frame or two
  const Outcome ramp = zol("render 'time warp' -i clip.mp4 --set 'Speed=0=1;0.5=0.1;1=1' -o ramp.mp4");
  EXPECT_EQ(ramp.status, 0) << ramp.err;
  EXPECT_NE(ramp.err.find("the sound of \"clip.mp4\" is left out"), std::string::npos) << ramp.err;
  EXPECT_EQ(pixels("ramp.mp4").size(), 25U * 64 * 48 * 4);
  EXPECT_NE(zol("render 'media source' --set Media=clip.mp4 -o silent.png --frames 3").status, 1);
  render("'media source' --set Media=clip.mp4 --set Speed=2 -o fast.wav");
  EXPECT_EQ(samples("fast.wav").size(), 22050U);
  render("'media source' --set Media=clip.mp4 ! blur --set Blurriness=0.1 -o soft.mp4");
  EXPECT_EQ(samples("soft.mp4").empty(), false);
  render("'audio source' --host Quorbel --set Media=clip.mp4 -o heard.wav");
  const std::vector<float> heard = samples("heard.wav"), own = samples("clip.mp4");
  ASSERT_TRUE(heard.size() > 44000 && own.size() > 44000);
  for (size_t i = 0; i < 44000; ++i)
    ASSERT_NEAR(heard[i], own[i], 1e-4) << i;
}

TEST_F(Zol, KeepsTheSoundOfTheFirstInput) {
  make("clip.mkv", "-f lavfi -i testsrc2=s=64x48:r=10:d=1 -f lavfi -i sine=d=1 -c:v ffv1 -c:a flac");
  render("copy -i clip.mkv -o out.mkv");
  EXPECT_NE(shell("ffprobe -v error -show_entries stream=codec_type -of csv=p=0 out.mkv").out.find("audio"),
            std::string::npos);
}

TEST_F(Zol, FarmsOnlyWhereThereIsAClusterAndAFilm) {
  make("clip.mkv", "-f lavfi -i testsrc2=s=32x24:d=0.4 -c:v ffv1");
  const size_t before = entries();
  const Outcome alone = shell("PATH=/nowhere " ZOL_BUILD_DIR "/zol farm render blur -i clip.mkv -o film.mkv");
  EXPECT_EQ(alone.status, 3);
  EXPECT_EQ(alone.err, "zol: there is no Slurm here: cannot run sinfo: No such file or directory\n");
  EXPECT_EQ(entries(), before);
  fails("farm status clip.mkv", "plan.json");
  fails("farm render blur -i clip.mkv", "one film", 2);
  fails("farm render blur -i clip.mkv -o film.mkv --parts 0", "--parts takes 1 or more", 2);
  fails("farm stop clip.mkv", "status or cancel", 2);
}

} // namespace
} // namespace zol::test
