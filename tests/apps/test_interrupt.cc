// Stopped by a signal, whatever it was waiting for, the command leaves neither files nor children behind.

#include "tests/apps/zol.h"

#include <csignal>
#include <map>

namespace zol::test {
namespace {

class Interrupt : public InFolder {
protected:
  /// Processes that work in the folder; the shell of the test itself is gone by then.
  [[nodiscard]] int processes() const {
    int count = 0;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator("/proc"))
      count += std::filesystem::read_symlink(entry.path() / "cwd", error) == path(".").parent_path();
    return count;
  }

  /// Sends the signal to the command alone, or to its whole group as a terminal does.
  void stops(const std::string &arguments, const std::string &signal, const std::string &group = "") {
    const size_t before = entries();
    const Outcome outcome = shell("timeout " + group + " --preserve-status -s " + signal +
                                  " -k 20 0.7 " ZOL_BUILD_DIR "/zol " + arguments);
    static const std::map<std::string, int> numbers = {
        {"INT", SIGINT}, {"TERM", SIGTERM}, {"HUP", SIGHUP}, {"QUIT", SIGQUIT}};
    EXPECT_EQ(outcome.status, 128 + numbers.at(signal)) << arguments;
    EXPECT_EQ(outcome.err, "zol: interrupted\n") << arguments;
    EXPECT_EQ(entries(), before) << arguments;
    EXPECT_EQ(processes(), 0) << arguments;
  }
};

TEST_F(Interrupt, UnwindsWhereverItWaits) {
  ASSERT_EQ(shell("mkfifo silent").status, 0);
  make("clip.mkv", "-f lavfi -i testsrc2=s=320x240:r=25:d=4 -c:v ffv1 -pix_fmt bgra");
  for (const char *signal : {"INT", "TERM"}) {
    stops("render 'solid color' --size 640x480 --duration 10000 -o long.mkv", signal);
    stops("render copy -i clip.mkv --duration 10000 -o long.mp4", signal, "--foreground");
    stops("render 'sine audio generator' --duration 1000000 -o long.wav", signal);
  }
  stops("render 'solid color' --size 640x480 --duration 10000 -o long-%d.png", "HUP");
  stops("render copy -i clip.mkv --duration 10000 -o long.mp4", "QUIT");
  stops("render 'motion blur' -i clip.mkv --threads 8 --duration 10000 -o long.mkv", "INT", "--foreground");
  stops("slowmo clip.mkv --threads 3 --factor 5000 -o long.mkv", "INT");
  // A pipe that nobody fills or empties.
  stops("render copy --size 640x480 -i - -o long.mkv <>silent", "INT", "--foreground");
  stops("render copy -i silent --size 640x480 -o long.mkv", "TERM", "--foreground");
  stops("slowmo silent --threads 2 -o long.mkv", "INT");
  stops("render 'solid color' --size 640x480 --duration 10 -o - 1<>silent", "TERM", "--foreground");
}

} // namespace
} // namespace zol::test
