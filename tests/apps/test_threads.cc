// Whole commands give the same files, and fail with the same line, however many threads share their work.

#include "tests/apps/zol.h"

#include <algorithm>

namespace zol::test {
namespace {

class Shared : public InFolder {
protected:
  /// Runs the words with several numbers of threads; all must come out as with one.
  void equals(const std::string &words, size_t least) {
    const bool all = std::getenv("ZOL_ALL") != nullptr;
    std::string alone;
    for (const int threads : all ? std::vector{1, 2, 3, 8} : std::vector{1, 3}) {
      const Outcome outcome = shell(words + " --threads " + std::to_string(threads));
      EXPECT_EQ(outcome.status, 0) << words << outcome.err;
      if (threads == 1)
        alone = outcome.out;
      EXPECT_TRUE(outcome.out == alone) << words << threads;
    }
    EXPECT_GE(alone.size(), least) << words;
  }
};

constexpr const char *kZol = ZOL_BUILD_DIR "/zol ";
constexpr size_t kFrame = size_t{64} * 48 * 4;

TEST_F(Shared, WorkGivesTheSameFiles) {
  make("a.mkv", "-f lavfi -i testsrc2=s=64x48:r=25:d=1.2 -f lavfi -i sine=f=440:d=1.2 -c:v ffv1 -c:a flac");
  make("b.mkv",
       "-f lavfi -i mandelbrot=s=64x48:r=25 -f lavfi -i sine=f=700:d=0.8 -t 0.8 -c:v ffv1 -c:a flac");
  make("long.wav", "-f lavfi -i sine=f=300:d=6:r=44100");
  const std::string zol = kZol;
  equals(zol + "render compositing/mix -i a.mkv -i b.mkv -o -", 20 * kFrame);
  equals(zol + "render blur -i a.mkv --set 'Blurriness=0=0;1=0.3' ! 'motion blur' --set Shutter=3 -o -",
         30 * kFrame);
  equals(zol + "render 'time warp' -i a.mkv --set 'Speed=0=-2;1=3' --set Method=Blocks -o -", 20 * kFrame);
  for (const char *method : {"mix", "vector", "object --interlaced top"})
    equals(zol + "slowmo b.mkv --factor 2.7 -o - --method " + method, 54 * kFrame);
  // Through a pipe, of no known length, and past an end that comes sooner than told.
  equals("ffmpeg -v error -i a.mkv -f mpegts -q:v 1 - | " + zol +
             "render 'motion blur' -i - --set Shutter=3 -o -",
         29 * kFrame);
  equals("ffmpeg -v error -i a.mkv -c copy -f matroska - | " + zol +
             "render compositing/mix -i - -i b.mkv -o -",
         20 * kFrame);
  equals(zol + "render compositing/mix -i b.mkv -i a.mkv --set Transition=1 -o -", 20 * kFrame);
  equals(zol + "render blur -ss 0.5 -i a.mkv --rate 30 --frames 3-9 -o -", 7 * kFrame);
  // Sound, in long blocks and in short ones, and backwards.
  equals(zol + "render 'audio transition' -i long.wav -i a.mkv -o -", size_t{4} * 44100 * 6);
  equals(zol + "render 'simple audio switcher' -i long.wav --block 100 ! 'simple audio switcher' -o -",
         size_t{4} * 44100 * 6);
  equals(
      zol +
          "render 'media source' --vn --set Media=long.wav --set Speed=-1.3 --set InputStartOffset=5.9 -o -",
      size_t{4} * 44100 * 4);
  equals("ffmpeg -v error -i long.wav -f f32le - | " + zol +
             "render 'simple audio switcher' -i - --audio-rate 44100 --channels 1 -o -",
         size_t{4} * 44100 * 6);
  // Sound beside the pictures: faded, and the effect's own.
  equals("r() { " + zol +
             "render compositing/mix -i a.mkv -i b.mkv -y -o y.nut \"$@\" && "
             "ffmpeg -v error -i y.nut -map 0 -f framemd5 -; }; r",
         1000);
  equals("r() { " + zol +
             "render 'media source' --set Media=a.mkv --set Speed=0.7 -y -o y.nut \"$@\" && "
             "ffmpeg -v error -i y.nut -map 0 -f framemd5 -; }; r",
         1000);
}

TEST_F(Shared, WorkFailsWithTheSameLine) {
  make("a.mp4", "-f lavfi -i testsrc2=s=320x240:r=25:d=4 -c:v libx264 -g 10 -movflags +faststart");
  shell("mkfifo pipe; head -c $(($(wc -c < a.mp4) / 2)) a.mp4 > cut.mp4");
  for (const char *count : {"1", "2", "8"}) {
    const std::string threads = std::string(" --threads ") + count;
    fails("render blur --strict -i cut.mp4 -o no.mkv" + threads, "is damaged at about");
    fails("slowmo --strict cut.mp4 --method mix -o no.mkv" + threads, "is damaged at about");
    fails("render blur -i a.mp4 -o no/no.mkv" + threads, "no/no.mkv");
    fails("render blur -i a.mp4 --set Blurriness=0.1 -o no.mkv --fault PicCreate@9" + threads,
          "at 0.32 s: Filler: Memory allocation error");
    // Nobody takes the output any more while readers wait for a pipe that nobody fills any more.
    const Outcome left = shell(
        "ffmpeg -v error -nostdin -i a.mp4 -frames:v 12 -f rawvideo -pix_fmt bgra - 2>/dev/null >pipe & "
        "{ timeout 20 " +
        std::string(kZol) + "render copy -i - --size 320x240 -o -" + threads +
        " <>pipe; echo $? >&2; } | head -c 400000 > taken; wait");
    EXPECT_EQ(left.err, "zol: cannot write to standard output: Broken pipe\n1\n");
  }
}

} // namespace
} // namespace zol::test
