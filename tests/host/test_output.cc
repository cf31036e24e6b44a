// Where outputs stand while they are made, what their formats are, what becomes of alpha and of sound.

#include "host/media/format.h"
#include "host/media/output_file.h"
#include "host/model/text.h"
#include "host/render/batch.h"
#include "host/render/opacity.h"
#include "host/script/library.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zol::host {
namespace {

namespace fs = std::filesystem;

template <class Work> std::string errorOf(Work work) {
  try {
    work();
  } catch (const HostError &error) {
    return error.what();
  }
  return "no error";
}

bool contains(const std::string &text, const std::string &part) { return text.find(part) != text.npos; }

class Outputs : public testing::Test {
protected:
  Outputs() {
    std::string name = (fs::temp_directory_path() / "zol-output-XXXXXX").string();
    folder_ = mkdtemp(name.data());
  }
  ~Outputs() override { fs::remove_all(folder_); }

  [[nodiscard]] std::string path(const std::string &name) const { return (folder_ / name).string(); }
  [[nodiscard]] std::set<std::string> entries() const {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder_))
      names.insert(entry.path().filename().string());
    return names;
  }
  static void put(const std::string &file, const std::string &text) { std::ofstream(file) << text; }
  static std::string contents(const std::string &file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// Writes what a child would write.
  static void write(const std::string &file, const std::string &text, bool overwrite) {
    const auto output = makeOutputFile(file, overwrite);
    (void)output->begin();
    put(output->place(), text);
    output->publish();
  }

  fs::path folder_;
};

TEST_F(Outputs, KeepsModeAndFollowsLinks) {
  put(path("real.txt"), "old");
  fs::permissions(path("real.txt"), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("real.txt", path("link.txt"));
  fs::create_symlink("later.txt", path("dangling.txt"));
  write(path("link.txt"), "new", true);
  write(path("dangling.txt"), "first", false);
  EXPECT_EQ(contents(path("real.txt")), "new");
  EXPECT_EQ(contents(path("later.txt")), "first");
  EXPECT_TRUE(fs::is_symlink(path("link.txt")) && fs::is_symlink(path("dangling.txt")));
  struct stat status {};
  ASSERT_EQ(stat(path("real.txt").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  EXPECT_EQ(entries().size(), 4U);
}

TEST_F(Outputs, ClearsWhatKilledProcessesLeft) {
  const pid_t killed = fork();
  if (killed == 0) { // makes places, and has no time to clean up
    const auto file = makeOutputFile(path("a.mp4"), false),
               sequence = makeOutputSequence(path("p%d.png"), false);
    (void)file->begin();
    (void)file->spare();
    put(sequence->begin().substr(5), "x");
    _exit(0);
  }
  waitpid(killed, nullptr, 0);
  put(path(".a.zol-users.mp4"), "short of letters: not ours");
  EXPECT_EQ(entries().size(), 4U);
  const auto working = makeOutputFile(path("working.mp4"), false);
  (void)working->begin();
  // Another process spares what is worked on.
  if (const pid_t other = fork(); other == 0) {
    write(path("b.mp4"), "b", false);
    _exit(0);
  } else {
    waitpid(other, nullptr, 0);
  }
  EXPECT_EQ(entries(), (std::set<std::string>{".a.zol-users.mp4", "b.mp4",
                                              fs::path(working->place()).filename().string()}));
}

TEST_F(Outputs, SetsOfPicturesAppearTogether) {
  const std::string pattern = path("f-%03d.png");
  const auto fill = [&](bool overwrite, const std::string &text) {
    auto output = makeOutputSequence(pattern, overwrite);
    (void)output->begin();
    for (const char *number : {"9", "10", "1000"})
      put(output->place() + '/' + number + ".png", text);
    return output;
  };
  fill(false, "dropped");
  EXPECT_TRUE(entries().empty());
  fill(false, "a")->publish();
  EXPECT_EQ(entries(), (std::set<std::string>{"f-009.png", "f-010.png", "f-1000.png"}));
  EXPECT_TRUE(contains(errorOf([&] { makeOutputSequence(pattern, false); }), "exists"));
  fill(true, "b")->publish();
  EXPECT_EQ(contents(path("f-010.png")), "b");
  for (const char *name : {"f-009.png", "f-1000.png"})
    fs::remove(path(name));
  fs::remove(path("f-010.png"));
  const auto late = fill(false, "c"); // one of the names is taken meanwhile: none appears
  put(path("f-010.png"), "mine");
  EXPECT_EQ(errorOf([&] { late->publish(); }), "the file exists");
  EXPECT_EQ(contents(path("f-010.png")), "mine");
  EXPECT_FALSE(fs::exists(path("f-009.png")));
  for (const char *name : {"%d.png", "a%03d.png", "x/%09d.b"})
    EXPECT_TRUE(hasNumber(name)) << name;
  for (const char *name : {"a.png", "100%.png", "%d%d.png", "%3d.png", "%s.png", "%d/a.png", "%0123d.png"})
    EXPECT_FALSE(hasNumber(name)) << name;
}

// ---- Formats ----

TEST(Format, ChoosesCodecsByNameFormatAndQuality) {
  const auto words = [](const std::string &file, const EncodingChoice &choice, bool alpha = false) {
    const PictureEncoding encoding = pictureEncoding(formatOf(file, choice), file, choice, alpha);
    return encoding.words.substr(0, encoding.words.find(' ', 5)) + ' ' + encoding.pixelFormat;
  };
  const struct {
    const char *file;
    EncodingChoice choice;
    bool alpha;
    const char *words;
  } cases[] = {
      {"a.MP4", {}, true, "-c:v libx264 yuv420p"},
      {"a.mkv", {}, false, "-c:v libx264 yuv420p"},
      {"a.mkv", {"", Quality::lossless, "", {}}, true, "-c:v ffv1 bgra"},
      {"a.mkv", {"ffv1,opus", Quality::draft, "", {}}, false, "-c:v ffv1 bgr0"},
      {"a.mp4", {"x265", Quality::best, "", {}}, false, "-c:v libx265 yuv420p"},
      {"a.mp4", {"", Quality::lossless, "", {}}, false, "-c:v libx264rgb bgr0"},
      {"a.mov", {}, true, "-c:v prores_ks yuva444p10le"},
      {"a.webm", {"", Quality::good, "yuv444p", {}}, true, "-c:v libvpx-vp9 yuv444p"},
      // What the user's own words name is not named twice, and gets the pictures that it takes.
      {"a.mov", {"", Quality::good, "", {"-c:v", "libx264"}}, true, " yuv420p"},
      {"a.mkv", {"", Quality::good, "", {"-vcodec", "ffv1", "-b", "1"}}, true, " bgra"},
      {"a.mkv", {"", Quality::good, "", {"-pix_fmt", "yuv422p"}}, true, "-c:v libx264 yuv422p"},
      {"-", {"", Quality::good, "", {"-f", "nut"}}, true, "-c:v libx264 yuv420p"},
  };
  for (const auto &[file, choice, alpha, expected] : cases)
    EXPECT_EQ(words(file, choice, alpha), expected) << file;
  const std::pair<std::string, std::string> refusals[] = {
      {errorOf([&] {
         words("a.mp4", {"prores", Quality::good, "", {}});
       }),
       "cannot hold prores; it holds h264"},
      {errorOf([&] {
         words("a.mkv", {"hevd", Quality::good, "", {}});
       }),
       "did you mean \"hevc\"?"},
      {errorOf([&] {
         words("a.jpg", {"", Quality::lossless, "", {}});
       }),
       "without loss"},
      {errorOf([&] {
         words("a.ogv", {"", Quality::lossless, "", {}});
       }),
       "without loss"},
      {errorOf([&] { words("a.xyz", {}); }), "\".xyz\"; known are mp4, "},
      {errorOf([&] { words("a", {}); }), "no extension"},
  };
  for (const auto &[error, part] : refusals)
    EXPECT_TRUE(contains(error, part)) << error;
}

TEST(Format, SubtitlesStayTextOrStayAway) {
  const auto into = [](const char *file, const char *codec) {
    return subtitleEncoding(formatOf(file, {}), codec);
  };
  EXPECT_EQ(into("a.mkv", "ass"), "copy");
  EXPECT_EQ(into("a.mkv", "mov_text"), "subrip");
  EXPECT_EQ(into("a.mp4", "subrip"), "mov_text");
  EXPECT_EQ(into("a.webm", "ass"), "webvtt");
  EXPECT_EQ(into("a.mp4", "dvd_subtitle"), "");
  EXPECT_EQ(into("a.ts", "subrip"), "");
  EXPECT_EQ(into("a.avi", "subrip"), "");
}

// ---- Pictures ----

TEST(Opacity, FindsAndMendsTransparentPixelsWhereverTheyAre) {
  for (const size_t count : {1, 3, 4095, 4096, 4097, 10000})
    for (const size_t place : {size_t{0}, count / 2, count - 1}) {
      std::vector<_color_t> pixels(count, _color_t{1, 2, 3, 255});
      Opacity watching(true, false), forcing(true, true), blind(false, true);
      EXPECT_FALSE(watching.settle(pixels.data(), count));
      pixels[place].a = 254;
      EXPECT_FALSE(isOpaque(pixels.data(), count)) << count << ' ' << place;
      EXPECT_FALSE(blind.settle(pixels.data(), count));
      EXPECT_TRUE(watching.settle(pixels.data(), count));
      EXPECT_EQ(pixels[place].a, 254);
      EXPECT_TRUE(forcing.settle(pixels.data(), count));
      EXPECT_EQ(pixels[place].a, 255);
      EXPECT_EQ(pixels[place].r, 3);
      watching.tell(true);
      watching.tell(false);
      EXPECT_EQ(watching.transparent(), 1U);
    }
}

// ---- Batches ----

TEST_F(Outputs, ABatchHasAPlanForEachFile) {
  for (const char *name : {"b.jpg", "a.jpg", "a.png", "[x].jpg"})
    put(path(name), "");
  fs::create_directory(path("folder.jpg"));
  RenderPlan plan;
  plan.output = path("{name}-{name}.png");
  const auto outputs = [&](std::vector<InputPlan> inputs) {
    plan.stages = {{"copy", {}, {}}, {"mix", std::move(inputs), {}}};
    std::string names;
    for (const RenderPlan &one : batchPlans(plan))
      names += fs::path(one.output).filename().string() + ' ';
    return names;
  };
  EXPECT_TRUE(isBatch(plan));
  EXPECT_EQ(outputs({{"x", {}, {}}, {path("?.jpg"), {}, {}}}), "a-a.png b-b.png ");
  EXPECT_EQ(outputs({{path("[x].jpg"), {}, {}}}), "[x]-[x].png ") << "a file before a pattern";
  EXPECT_TRUE(contains(errorOf([&] { outputs({{path("a.*"), {}, {}}}); }), "several files"));
  EXPECT_TRUE(contains(errorOf([&] { outputs({{path("*.tif"), {}, {}}}); }), "no file matches"));
  EXPECT_TRUE(contains(errorOf([&] {
                         outputs({{path("*.jpg"), {}, {}}, {path("*.png"), {}, {}}});
                       }),
                       "only one"));
}

// ---- The library's file ----

TEST_F(Outputs, OnlyAWholeLibraryIsLoaded) {
  const std::string whole = contents(ZOL_BUILD_DIR "/libzol.zoeffects.so.1");
  ASSERT_GT(whole.size(), 1000U);
  const auto load = [&](const std::string &bytes) {
    put(path("lib.so"), bytes);
    return errorOf([&] { EffectLibrary(path("lib.so"), "Halvenor"); });
  };
  EXPECT_EQ(load(whole), "no error");
  for (const size_t size : {size_t{100}, whole.size() / 2, whole.size() - 1})
    EXPECT_TRUE(contains(load(whole.substr(0, size)), "is cut off after")) << size;
  std::string other = whole;
  other[4] = static_cast<char>(3 - other[4]); // the class: 1 or 2
  EXPECT_TRUE(contains(load(other), "another kind of machine"));
  EXPECT_TRUE(contains(load("text"), "no shared library"));
  EXPECT_TRUE(contains(errorOf([&] { EffectLibrary(path("absent.so"), "Halvenor"); }), "No such file"));
}

TEST(Text, PrintableTextMovesNoTerminal) {
  EXPECT_EQ(printable("a\x1b[31m\n\x7f\xC2\x9B"
                      "b\xC3\xA4\xE2\x82\xAC"),
            "a\\x1b[31m\\x0a\\x7f\\x9bb\xC3\xA4\xE2\x82\xAC");
}

} // namespace
} // namespace zol::host
