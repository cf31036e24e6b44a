// What a render writes: alpha, sound, tracks and fields, in which files; and what is said to be left out.

#include "tests/apps/zol.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace zol::test {
namespace {

class Output : public InFolder {
protected:
  /// A clip with a tone: "c.mp4" of 440 Hz, "d.mp4" of 2000 Hz, half a second each.
  void makeClips() {
    for (const auto &[name, tone] : {std::pair("c.mp4", "440"), std::pair("d.mp4", "2000")})
      make(name, std::string("-f lavfi -i testsrc2=s=64x48:r=24:d=0.5 -f lavfi -i sine=d=0.5:f=") + tone +
                     ":r=48000 -c:v libx264 -preset ultrafast -pix_fmt yuv420p");
  }

  /// "codec codec ..." of a file's streams, in a fixed order.
  std::string streams(const std::string &file, const std::string &entry = "codec_name") {
    std::istringstream lines(
        shell("ffprobe -v error -show_entries stream=" + entry + " -of csv=p=0 " + file).out);
    std::multiset<std::string> all;
    for (std::string line; std::getline(lines, line);)
      if (!line.empty())
        all.insert(line.substr(0, line.find(',')));
    std::string text;
    for (const std::string &one : all)
      text += (text.empty() ? "" : " ") + one;
    return text;
  }

  /// Renders what must succeed; the notes.
  std::string notes(const std::string &arguments) {
    const Outcome outcome = zol("render " + arguments);
    EXPECT_EQ(outcome.status, 0) << arguments << outcome.err;
    return outcome.err;
  }

  void expectNote(const std::string &arguments, const std::string &part) {
    const std::string said = notes(arguments);
    EXPECT_TRUE(said.starts_with("zol: note: ") && said.find('\n') == said.size() - 1) << arguments << said;
    EXPECT_NE(said.find(part), std::string::npos) << said;
  }
};

TEST_F(Output, EveryContainerGetsWhatItPlays) {
  makeClips();
  make("six.mov", "-i c.mp4 -c:v copy -af 'aformat=channel_layouts=5.1(side)' -c:a ac3");
  const struct {
    const char *file, *codecs;
    bool silent = false; // the format
  } cases[] = {
      {"o.mp4", "aac h264"},    {"o.mkv", "flac h264"},      {"o.webm", "opus vp9"},
      {"o.wmv", "wmav2 wmv2"},  {"o.ogv", "theora vorbis"},  {"o.mxf", "mpeg2video pcm_s16le"},
      {"o.m2ts", "ac3 h264"},   {"o.3gp", "aac h264"},       {"o.gif", "gif", true},
      {"o.apng", "apng", true}, {"o.y4m", "rawvideo", true}, {"f-%02d.jpg", "", true},
  };
  for (const auto &[file, codecs, silent] : cases) {
    const std::string said = notes(std::string("copy -i six.mov --frames 0-4 -o ") + file);
    EXPECT_EQ(said.find("holds no sound") != said.npos, silent) << file << said;
    if (*codecs != '\0') {
      std::string found = streams(file);
      if (file == std::string("o.m2ts")) // told once with its programme
        found = found.substr(0, 3) + found.substr(found.rfind(' '));
      EXPECT_EQ(found, codecs) << file;
    }
  }
  EXPECT_EQ(contents(path("f-04.jpg")).substr(0, 2), "\xFF\xD8");
  EXPECT_FALSE(std::filesystem::exists(path("f-05.jpg")));
  expectNote("copy -i c.mp4 -o one.png --frames 7-7", "holds no sound");
  EXPECT_EQ(notes("copy -i c.mp4 -an -o two.png --frames 7-7"), "");
  EXPECT_TRUE(pixels("one.png") == pixels("two.png"));
  EXPECT_EQ(notes("copy -i c.mp4 -o three.gif --quiet --frames 0-1"), "");
}

TEST_F(Output, CodecsAndTheWritersOwnWords) {
  makeClips();
  const std::pair<const char *, const char *> cases[] = {
      {"-o a.mkv --codec hevc,opus", "hevc opus"},
      {"-o b.mkv --quality lossless", "ffv1 pcm_f32le"},
      {"-o c.mov -- -c:v libx264 -preset veryfast -crf 20", "h264 pcm_f32le"},
      {"-o e.mp4 -- -an", "h264"},
  };
  for (const auto &[words, codecs] : cases) {
    render(std::string("copy -i c.mp4 --frames 0-2 ") + words);
    EXPECT_EQ(streams(std::string(words).substr(3, 5)), codecs) << words;
  }
  EXPECT_TRUE(pixels("b.mkv") == rendered("copy -i c.mp4 --frames 0-2")) << "without loss";
  EXPECT_EQ(shell(ZOL_BUILD_DIR "/zol render copy -i c.mp4 -o - -- -f nut -c:v ffv1 | ffprobe -v error "
                                "-show_entries stream=codec_name -of csv=p=0 -")
                .out.substr(0, 4),
            "ffv1");
  fails("render copy -i c.mp4 -o x.mp4 --codec prores", "cannot hold prores");
  fails("render copy -i c.mp4 -o x.xyz", "known are mp4");
  fails("render copy -i c.mp4 -o x.mp4 -- -c:v nonsense", "nonsense");
  fails("render copy -i c.mp4 --rate 20 -o x.mxf", "frame rate");
}

TEST_F(Output, OpaqueInputsGiveOpaqueOutputs) {
  make("tape.nut", "-f lavfi -i testsrc2=s=64x48:r=50:d=0.12 -vf tinterlace=interleave_top,format=yuv444p "
                   "-c:v rawvideo");
  make("clear.png", "-f lavfi -i color=red@0.5:s=8x8,format=rgba -frames:v 1");
  make("solid.png", "-f lavfi -i color=red:s=8x8,format=rgb24 -frames:v 1");
  const auto leastAlpha = [&](const std::string &file) {
    const std::string bytes = pixels(file);
    int least = 255;
    for (size_t i = 3; i < bytes.size(); i += 4)
      least = std::min<int>(least, static_cast<uint8_t>(bytes[i]));
    return least;
  };
  expectNote("deinterlace -i tape.nut -o auto.nut", "--alpha keep");
  EXPECT_EQ(notes("deinterlace -i tape.nut --alpha keep -o keep.nut"), "");
  EXPECT_EQ(notes("deinterlace -i tape.nut --no-alpha -o drop.nut"), "");
  EXPECT_EQ(leastAlpha("auto.nut"), 255);
  EXPECT_EQ(leastAlpha("keep.nut"), 0);
  EXPECT_TRUE(pixels("auto.nut") == pixels("drop.nut"));
  expectNote("deinterlace -i tape.nut -o - > raw", "--alpha keep");
  EXPECT_TRUE(contents(path("raw")) == pixels("auto.nut"));
  // Sources, and inputs with alpha among others, keep it; a format may not.
  render("copy -i clear.png -o kept.png");
  render("mix -i solid.png -i clear.png --set Transition=1 -o mixed.png");
  render("'solid color' --size 8x8 --set Alpha=0.5 -o source.png");
  for (const char *file : {"kept.png", "mixed.png", "source.png"})
    EXPECT_NEAR(leastAlpha(file), 128, 1) << file;
  expectNote("copy -i clear.png -o lost.jpg", "\"lost.jpg\" has no alpha");
  EXPECT_EQ(notes("copy -i solid.png -o none.jpg"), "");
}

TEST_F(Output, SoundEffectsKeepThePicturesOfTheirClip) {
  makeClips();
  const std::string words = "'simple audio switcher' -i c.mp4 ";
  render(words + "--set 'Output 1=Off' -o o.mp4");
  EXPECT_EQ(streams("o.mp4"), "aac h264");
  EXPECT_TRUE(pixels("o.mp4") == pixels("c.mp4"));
  for (const float sample : samples("o.mp4"))
    ASSERT_EQ(sample, 0);
  expectNote(words + "-o o.webm", "encoded anew");
  EXPECT_EQ(streams("o.webm"), "opus vp9");
  render(words + "-vn -o only.mp4");
  EXPECT_EQ(streams("only.mp4"), "aac");
  fails("render " + words + "-an -o x.mp4", "left out");
  fails("render copy -i c.mp4 -vn -o x.mp4", "left out");
}

TEST_F(Output, SoundFadesWithThePictures) {
  makeClips();
  render("mix -i c.mp4 -i d.mp4 -o fade.nut");
  // A third clip over the dissolve of two, where the chain counts for nothing: its sound alone.
  render("mix -i c.mp4 -i c.mp4 ! mix -i d.mp4 --set Transition=1 -o end.nut");
  const auto loudness = [](const std::vector<float> &sound, size_t first, size_t count, double frequency) {
    double sine = 0, cosine = 0;
    for (size_t i = first; i < first + count; ++i) {
      sine += sound[i] * std::sin(static_cast<double>(i) * frequency * 2 * M_PI / 48000);
      cosine += sound[i] * std::cos(static_cast<double>(i) * frequency * 2 * M_PI / 48000);
    }
    return 2 * std::hypot(sine, cosine) / static_cast<double>(count);
  };
  const std::vector<float> fade = samples("fade.nut"), end = samples("end.nut");
  ASSERT_EQ(fade.size(), 24000U);
  for (const double share : {0.1, 0.5, 0.9}) {
    const auto first = static_cast<size_t>(share * 24000 - 1200);
    EXPECT_NEAR(loudness(fade, first, 2400, 440), (1 - share) / 8, 0.01) << share;
    EXPECT_NEAR(loudness(fade, first, 2400, 2000), share / 8, 0.01) << share;
    EXPECT_NEAR(loudness(end, first, 2400, 2000), 0.125, 0.01) << share;
    EXPECT_LT(loudness(end, first, 2400, 440), 0.001) << share;
  }
}

TEST_F(Output, SoundComesThroughPipesAndSlowsDown) {
  makeClips();
  make("p.nut", "-i c.mp4 -c:v ffv1 -c:a pcm_f32le");
  const Outcome piped =
      shell("cat p.nut | " ZOL_BUILD_DIR "/zol render copy -i - -o piped.mkv --quality lossless");
  EXPECT_EQ(piped.status, 0);
  EXPECT_EQ(piped.err, "");
  EXPECT_EQ(streams("piped.mkv"), "ffv1 pcm_f32le");
  EXPECT_TRUE(pixels("piped.mkv") == rendered("copy -i p.nut"));
  EXPECT_TRUE(samples("piped.mkv") == samples("p.nut"));
  EXPECT_EQ(entries(), 4U);
  for (const auto &[factor, codecs] : {std::pair("3", "aac h264"), std::pair("5", "h264")}) {
    const Outcome slow = zol(std::string("slowmo c.mp4 -y -o slow.mp4 --method mix --factor ") + factor);
    EXPECT_EQ(slow.status, 0) << slow.err;
    EXPECT_EQ(streams("slow.mp4"), codecs);
    EXPECT_EQ(slow.err.find("is left out") != std::string::npos, factor == std::string("5")) << slow.err;
  }
  EXPECT_EQ(zol("slowmo c.mp4 -y -o slow.nut --method mix --factor 3").status, 0);
  EXPECT_NEAR(static_cast<double>(samples("slow.nut").size()), 3 * 24000, 4000);
}

TEST_F(Output, TracksAndTagsGoAlongWhereTheyCan) {
  makeClips();
  std::ofstream(path("s.srt")) << "1\n00:00:00,000 --> 00:00:00,400\nhello\n";
  std::ofstream(path("t.txt")) << ";FFMETADATA1\ntitle=Name\n[CHAPTER]\nTIMEBASE=1/10\nSTART=0\nEND=3\n"
                                  "[CHAPTER]\nTIMEBASE=1/10\nSTART=3\nEND=5\n";
  make("all.mkv", "-i c.mp4 -i d.mp4 -i s.srt -i t.txt -map 0 -map 1:a -map 2 -map_metadata 3 -c copy "
                  "-metadata:s:a:1 language=deu");
  const auto tell = [&](const std::string &file) {
    return shell("ffprobe -v error -show_entries stream_tags=language:format_tags=title:chapter=start_time "
                 "-of csv=p=0:nk=1 " +
                 file)
        .out;
  };
  for (const char *file : {"o.mkv", "o.mp4"}) {
    render(std::string("copy -i all.mkv -o ") + file);
    const std::string told = tell(file);
    for (const char *part : {"deu", "0.3", "Name"})
      EXPECT_NE(told.find(part), std::string::npos) << file << told;
  }
  EXPECT_EQ(streams("o.mkv"), "flac flac h264 subrip");
  EXPECT_NE(streams("o.mp4").find("aac aac"), std::string::npos);
  EXPECT_NE(streams("o.mp4").find("mov_text"), std::string::npos);
  expectNote("copy -i all.mkv -o o.avi", "left out of \"all.mkv\": subtitles (subrip)");
  expectNote("copy -i all.mkv -o o.flv", "further tracks of sound, subtitles");
  make("tc.mov", "-i c.mp4 -c copy -timecode 01:02:03:04");
  render("copy -i tc.mov -o tc.mp4");
  EXPECT_NE(
      shell("ffprobe -v error -show_entries stream_tags=timecode -of csv=p=0 tc.mp4").out.find("01:02:03:04"),
      std::string::npos);
  expectNote("copy -i tc.mov --frames 3-5 -o later.mov", "timecode");
  // Fields stay fields where the codec has them.
  make("fields.mkv", "-f lavfi -i testsrc2=s=64x48:r=50:d=0.2 -vf tinterlace=interleave_top -c:v mpeg2video "
                     "-flags +ildct+ilme");
  render("copy -i fields.mkv -o fields.mp4");
  EXPECT_EQ(streams("fields.mp4", "field_order"), "tt");
  expectNote("copy -i fields.mkv -o fields.webm", "whole frames");
}

TEST_F(Output, StillsGoOutOnceAndFilesInBatches) {
  make("a.png", "-f lavfi -i testsrc2=s=16x8 -frames:v 1");
  shell("mkdir in out; cp a.png in/x.png; cp a.png in/y.png; echo broken > in/z.png");
  EXPECT_TRUE(rendered("copy -i a.png") == pixels("a.png"));
  EXPECT_NE(shell("script -qec '" ZOL_BUILD_DIR "/zol render copy -i a.png -o -' typescript")
                .out.find("not for a terminal"),
            std::string::npos);
  const Outcome batch = zol("render copy -i 'in/*.png' -o 'out/{name}-c.tif'");
  EXPECT_EQ(batch.status, 1);
  EXPECT_NE(batch.err.find("in/z.png"), std::string::npos) << batch.err;
  EXPECT_TRUE(batch.err.ends_with("zol: 1 of 3 files could not be rendered\n")) << batch.err;
  for (const char *name : {"out/x-c.tif", "out/y-c.tif"})
    EXPECT_TRUE(pixels(name) == pixels("a.png")) << name;
  EXPECT_EQ(zol("render copy -i 'in/[xy].png' -y -o 'out/{name}-c.tif'").err, "zol: 2 files rendered\n");
}

TEST_F(Output, NamesWithControlCharactersAreShownHarmless) {
  const Outcome missing = zol("render copy -i \"$(printf 'a\\033[31mb.png')\" -o x.png");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err.find('\x1b'), std::string::npos);
  EXPECT_NE(missing.err.find("a\\x1b[31mb.png"), std::string::npos) << missing.err;
  make("a.png", "-f lavfi -i testsrc2=s=16x8 -frames:v 1");
  const Outcome dry = zol("render copy -i a.png -o \"$(printf 'x\\033y.png')\" --dry-run");
  EXPECT_EQ(dry.out.find('\x1b'), std::string::npos) << dry.out;
  // Pasted, the last word is the same name.
  std::string word = dry.out.substr(dry.out.rfind("'file:"));
  word.pop_back();
  EXPECT_EQ(shell("printf %s " + word).out, "file:x\x1by.png") << word;
}

} // namespace
} // namespace zol::test
