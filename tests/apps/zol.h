// Runs the built command in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace zol::test {

struct Outcome {
  int status;
  std::string out, err;
};

inline std::string contents(const std::filesystem::path &file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// A fresh folder as the working directory of every command; gone afterwards.
class InFolder : public testing::Test {
protected:
  InFolder() : folder_(std::filesystem::temp_directory_path() / ("zol-test-" + std::to_string(getpid()))) {
    std::filesystem::create_directory(folder_);
  }
  ~InFolder() override { std::filesystem::remove_all(folder_); }

  /// A line for the shell, run in the folder.
  Outcome shell(const std::string &line) {
    const std::string command = "cd '" + folder_.string() + "' && { " + line + "; } >.out 2>.err </dev/null";
    const int status = std::system(command.c_str());
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : 128, contents(folder_ / ".out"),
                    contents(folder_ / ".err")};
    std::filesystem::remove(folder_ / ".out");
    std::filesystem::remove(folder_ / ".err");
    return outcome;
  }

  Outcome zol(const std::string &arguments) { return shell(ZOL_BUILD_DIR "/zol " + arguments); }

  /// Runs what must succeed, silently.
  void render(const std::string &arguments) {
    const Outcome outcome = zol("render " + arguments);
    EXPECT_EQ(outcome.status, 0) << arguments;
    EXPECT_EQ(outcome.err, "") << arguments;
  }

  /// Renders what must succeed silently into a pipe: raw pixels (blue, green, red, alpha) or samples.
  std::string rendered(const std::string &arguments) {
    Outcome outcome = zol("render " + arguments + " -o -");
    EXPECT_EQ(outcome.status, 0) << arguments;
    EXPECT_EQ(outcome.err, "") << arguments;
    return std::move(outcome.out);
  }

  /// Runs what must fail with one line that holds `reason`, leaving nothing behind.
  void fails(const std::string &arguments, const std::string &reason, int status = 1) {
    const size_t before = entries();
    const Outcome outcome = zol(arguments);
    EXPECT_EQ(outcome.status, status) << arguments;
    EXPECT_NE(outcome.err.find(reason), std::string::npos) << arguments << ": " << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_EQ(outcome.out, "") << arguments;
    EXPECT_EQ(entries(), before) << arguments;
  }

  /// Makes a file with ffmpeg from a generator of its own.
  void make(const std::string &file, const std::string &words) {
    ASSERT_EQ(shell("ffmpeg -v error -y " + words + " " + file).status, 0) << words;
  }

  /// A fetched photograph, clip or sound; empty where it was not fetched.
  static std::string media(const std::string &name) {
    const std::string file = ZOL_SOURCE_DIR "/build/media/" + name;
    return std::filesystem::exists(file) ? "'" + file + "'" : "";
  }

  /// All frames of a file as raw pixels.
  std::string pixels(const std::string &file, const std::string &format = "bgra") {
    const Outcome outcome = shell("ffmpeg -v error -i " + file + " -f rawvideo -pix_fmt " + format + " -");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  }

  std::vector<float> samples(const std::string &file) {
    const Outcome outcome = shell("ffmpeg -v error -i " + file + " -f f32le -");
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    std::vector<float> result(outcome.out.size() / sizeof(float));
    outcome.out.copy(reinterpret_cast<char *>(result.data()), result.size() * sizeof(float));
    return result;
  }

  [[nodiscard]] size_t entries() const {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
  }
  [[nodiscard]] std::filesystem::path path(const std::string &name) const { return folder_ / name; }

private:
  std::filesystem::path folder_;
};

} // namespace zol::test
